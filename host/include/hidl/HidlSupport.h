/*
 * Copyright (C) 2026 The Tether Offload Project
 *
 * Licensed under the Apache License, Version 2.0 (the "License");
 * you may not use this file except in compliance with the License.
 * You may obtain a copy of the License at
 *
 *      http://www.apache.org/licenses/LICENSE-2.0
 *
 * Unless required by applicable law or agreed to in writing, software
 * distributed under the License is distributed on an "AS IS" BASIS,
 * WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
 * See the License for the specific language governing permissions and
 * limitations under the License.
 */

// Host stand-in for the platform's <hidl/HidlSupport.h>: the HIDL value types, with the
// platform's layouts, and the helpers that generated headers use.

#pragma once

#include <cutils/native_handle.h>
#include <hidl/HidlInternal.h>
#include <hidl/Status.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace android {

namespace hidl {
namespace base {
namespace V1_0 {
struct IBase;
}  // namespace V1_0
}  // namespace base
}  // namespace hidl

namespace hardware {

struct hidl_death_recipient : virtual public RefBase {
    virtual void serviceDied(uint64_t cookie,
                             const ::android::wp<::android::hidl::base::V1_0::IBase>& who) = 0;
};

// Sixteen bytes: the text, its length, and whether this string owns the text. A copy owns its
// own text; setToExternal only points at the caller's, which must outlive it.
class hidl_string {
public:
    hidl_string();
    ~hidl_string();

    hidl_string(const hidl_string& other);
    hidl_string(const char* s);
    hidl_string(const char* s, size_t length);
    hidl_string(const std::string& s);
    hidl_string(hidl_string&& other) noexcept;

    hidl_string& operator=(const hidl_string& other);
    hidl_string& operator=(const char* s);
    hidl_string& operator=(const std::string& s);
    hidl_string& operator=(hidl_string&& other) noexcept;

    const char* c_str() const { return mBuffer; }
    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    void clear();
    operator std::string() const { return std::string(mBuffer, mSize); }

    void setToExternal(const char* data, size_t size);

private:
    void copyFrom(const char* data, size_t size);
    void moveFrom(hidl_string&& other);

    details::hidl_pointer<const char> mBuffer;
    uint32_t mSize;
    bool mOwnsBuffer;
};

static_assert(sizeof(hidl_string) == 16 && alignof(hidl_string) == 8, "hidl_string layout");

#define HIDL_STRING_OPERATOR(OP)                                          \
    inline bool operator OP(const hidl_string& a, const hidl_string& b) { \
        return strcmp(a.c_str(), b.c_str()) OP 0;                         \
    }                                                                     \
    inline bool operator OP(const hidl_string& a, const char* b) {        \
        return strcmp(a.c_str(), b == nullptr ? "" : b) OP 0;             \
    }                                                                     \
    inline bool operator OP(const char* a, const hidl_string& b) {        \
        return strcmp(a == nullptr ? "" : a, b.c_str()) OP 0;             \
    }

HIDL_STRING_OPERATOR(==)
HIDL_STRING_OPERATOR(!=)
HIDL_STRING_OPERATOR(<)
HIDL_STRING_OPERATOR(<=)
HIDL_STRING_OPERATOR(>)
HIDL_STRING_OPERATOR(>=)

#undef HIDL_STRING_OPERATOR

std::ostream& operator<<(std::ostream& os, const hidl_string& str);

// Sixteen bytes, like hidl_string: the elements, their count, and whether this vector owns
// them. Elements are value-initialised, copies are deep.
template <typename T>
class hidl_vec {
public:
    using value_type = T;

    hidl_vec() : mBuffer(nullptr), mSize(0), mOwnsBuffer(true) {}
    hidl_vec(size_t size) : hidl_vec() { resize(size); }
    hidl_vec(const hidl_vec& other) : hidl_vec() { assign(other.begin(), other.size()); }
    hidl_vec(hidl_vec&& other) noexcept : hidl_vec() { moveFrom(std::move(other)); }
    hidl_vec(std::initializer_list<T> list) : hidl_vec() { assign(list.begin(), list.size()); }
    hidl_vec(const std::vector<T>& other) : hidl_vec() { assign(other.data(), other.size()); }
    template <typename InputIterator,
              typename = typename std::iterator_traits<InputIterator>::iterator_category>
    hidl_vec(InputIterator first, InputIterator last) : hidl_vec() {
        resize(static_cast<size_t>(std::distance(first, last)));
        for (size_t i = 0; first != last; ++first, ++i) mBuffer[i] = static_cast<T>(*first);
    }
    ~hidl_vec() { release(); }

    hidl_vec& operator=(const hidl_vec& other) {
        if (this != &other) assign(other.begin(), other.size());
        return *this;
    }
    hidl_vec& operator=(hidl_vec&& other) noexcept {
        if (this != &other) moveFrom(std::move(other));
        return *this;
    }
    hidl_vec& operator=(const std::vector<T>& other) {
        assign(other.data(), other.size());
        return *this;
    }
    hidl_vec& operator=(std::initializer_list<T> list) {
        assign(list.begin(), list.size());
        return *this;
    }

    operator std::vector<T>() const { return std::vector<T>(begin(), end()); }

    size_t size() const { return mSize; }
    T& operator[](size_t index) { return mBuffer[index]; }
    const T& operator[](size_t index) const { return mBuffer[index]; }
    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }

    // Keeps the first elements, value-initialises the new ones.
    void resize(size_t size) {
        T* buffer = allocate(size);
        const size_t kept = std::min(size, this->size());
        for (size_t i = 0; i < kept; ++i) buffer[i] = std::move(mBuffer[i]);
        adopt(buffer, size);
    }

    T* begin() { return mBuffer; }
    T* end() { return begin() + mSize; }
    const T* begin() const { return mBuffer; }
    const T* end() const { return begin() + mSize; }

    template <typename U>
    const T* find(const U& value) const {
        return std::find(begin(), end(), value);
    }
    template <typename U>
    bool contains(const U& value) const {
        return find(value) != end();
    }

    bool operator==(const hidl_vec& other) const {
        return size() == other.size() && std::equal(begin(), end(), other.begin());
    }
    bool operator!=(const hidl_vec& other) const { return !(*this == other); }

private:
    static T* allocate(size_t size) {
        details::checkHidlSize(size, "hidl_vec");
        return size == 0 ? nullptr : new T[size]();
    }

    // Copies first, then lets go of the old elements: `source` may be one of them.
    void assign(const T* source, size_t size) {
        T* buffer = allocate(size);
        for (size_t i = 0; i < size; ++i) buffer[i] = source[i];
        adopt(buffer, size);
    }

    void adopt(T* buffer, size_t size) {
        release();
        mBuffer = buffer;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = true;
    }

    void moveFrom(hidl_vec&& other) {
        release();
        mBuffer = other.mBuffer;
        mSize = other.mSize;
        mOwnsBuffer = other.mOwnsBuffer;
        other.mBuffer = nullptr;
        other.mSize = 0;
        other.mOwnsBuffer = true;
    }

    void release() {
        if (mOwnsBuffer) delete[] static_cast<T*>(mBuffer);
        mBuffer = nullptr;
        mSize = 0;
        mOwnsBuffer = true;
    }

    details::hidl_pointer<T> mBuffer;
    uint32_t mSize;
    bool mOwnsBuffer;
};

template <typename T, size_t SIZE1, size_t... SIZES>
class hidl_array;

// One-dimensional arrays are all that the interfaces here use.
template <typename T, size_t SIZE1>
class hidl_array<T, SIZE1> {
public:
    hidl_array() = default;
    hidl_array(const T* source) { std::copy(source, source + SIZE1, mBuffer); }

    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }
    T& operator[](size_t index) { return mBuffer[index]; }
    const T& operator[](size_t index) const { return mBuffer[index]; }
    static constexpr size_t size() { return SIZE1; }

private:
    T mBuffer[SIZE1]{};
};

// A handle given by pointer is borrowed; a copy clones the descriptors and owns the clone.
class hidl_handle {
public:
    hidl_handle() = default;
    hidl_handle(const native_handle_t* handle) : mHandle(handle) {}
    hidl_handle(const hidl_handle& other) { *this = other; }
    hidl_handle(hidl_handle&& other) noexcept { *this = std::move(other); }
    ~hidl_handle() { freeHandle(); }

    hidl_handle& operator=(const hidl_handle& other);
    hidl_handle& operator=(hidl_handle&& other) noexcept;
    hidl_handle& operator=(const native_handle_t* native_handle);

    void setTo(native_handle_t* handle, bool shouldOwn = false);

    const native_handle_t* operator->() const { return mHandle; }
    operator const native_handle_t*() const { return mHandle; }
    const native_handle_t* getNativeHandle() const { return mHandle; }

private:
    void freeHandle();

    const native_handle_t* mHandle = nullptr;
    bool mOwnsHandle = false;
};

// The integer type that holds an OR of flags of enum E.
template <typename E>
using hidl_bitfield = typename std::underlying_type<E>::type;

namespace details {

// Every value of a generated enum, in declaration order; each generated types.h specialises it.
template <typename E>
inline constexpr std::array<E, 0> hidl_enum_values = {};

// "0x" and the value in lowercase hexadecimal (two's complement for a negative one).
template <typename T, typename = std::enable_if_t<std::is_integral<T>::value>>
std::string toHexString(T value, bool prefix = true) {
    auto bits = static_cast<std::make_unsigned_t<T>>(value);
    std::string digits;
    do {
        digits.insert(digits.begin(), "0123456789abcdef"[bits & 0xf]);
        bits = static_cast<decltype(bits)>(bits >> 4);
    } while (bits != 0);
    return prefix ? "0x" + digits : digits;
}

}  // namespace details

// `for (E value : hidl_enum_range<E>())` visits every value of a generated enum.
template <typename E, typename = std::enable_if_t<std::is_enum<E>::value>>
struct hidl_enum_range {
    constexpr auto begin() const { return std::begin(details::hidl_enum_values<E>); }
    constexpr auto end() const { return std::end(details::hidl_enum_values<E>); }
};

// The text that generated toString functions give for the fields of a struct.
template <typename T, typename = std::enable_if_t<std::is_integral<T>::value>>
std::string toString(T value) {
    return std::to_string(value);
}

std::string toString(const hidl_string& str);

}  // namespace hardware
}  // namespace android
