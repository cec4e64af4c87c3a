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

// Host stand-in for the platform's <hidl/HidlSupport.h>: the HIDL value types.

#pragma once

#include <cutils/native_handle.h>
#include <hidl/Status.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <ostream>
#include <string>
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

namespace details {
// Tag that the generated interfaces carry in `_hidl_tag`.
struct i_tag {};
}  // namespace details

struct hidl_death_recipient : virtual public RefBase {
    virtual void serviceDied(uint64_t cookie,
                             const ::android::wp<::android::hidl::base::V1_0::IBase>& who) = 0;
};

class hidl_string {
public:
    hidl_string() = default;
    hidl_string(const hidl_string&) = default;
    hidl_string(hidl_string&&) noexcept = default;
    hidl_string(const char* s) : mBuffer(s == nullptr ? "" : s) {}
    hidl_string(const char* s, size_t length)
        : mBuffer(s == nullptr ? "" : std::string(s, length)) {}
    hidl_string(const std::string& s) : mBuffer(s) {}
    ~hidl_string() = default;

    hidl_string& operator=(const hidl_string&) = default;
    hidl_string& operator=(hidl_string&&) noexcept = default;
    hidl_string& operator=(const char* s) {
        mBuffer = s == nullptr ? "" : s;
        return *this;
    }
    hidl_string& operator=(const std::string& s) {
        mBuffer = s;
        return *this;
    }

    const char* c_str() const { return mBuffer.c_str(); }
    size_t size() const { return mBuffer.size(); }
    bool empty() const { return mBuffer.empty(); }
    void clear() { mBuffer.clear(); }
    operator std::string() const { return mBuffer; }

    // The device keeps a pointer to the caller's text; a copy behaves the same for every reader.
    void setToExternal(const char* data, size_t size) { mBuffer.assign(data, size); }

private:
    std::string mBuffer;
};

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

inline std::ostream& operator<<(std::ostream& os, const hidl_string& str) {
    return os << str.c_str();
}

template <typename T>
class hidl_vec {
public:
    using value_type = T;

    hidl_vec() = default;
    hidl_vec(size_t size) : mBuffer(size) {}
    hidl_vec(const hidl_vec&) = default;
    hidl_vec(hidl_vec&&) noexcept = default;
    hidl_vec(std::initializer_list<T> list) : mBuffer(list) {}
    hidl_vec(const std::vector<T>& other) : mBuffer(other) {}
    template <typename InputIterator,
              typename = typename std::iterator_traits<InputIterator>::iterator_category>
    hidl_vec(InputIterator first, InputIterator last) {
        for (; first != last; ++first) mBuffer.push_back(static_cast<T>(*first));
    }
    ~hidl_vec() = default;

    hidl_vec& operator=(const hidl_vec&) = default;
    hidl_vec& operator=(hidl_vec&&) noexcept = default;
    hidl_vec& operator=(const std::vector<T>& other) {
        mBuffer = other;
        return *this;
    }
    hidl_vec& operator=(std::initializer_list<T> list) {
        mBuffer = list;
        return *this;
    }

    operator std::vector<T>() const { return mBuffer; }

    size_t size() const { return mBuffer.size(); }
    T& operator[](size_t index) { return mBuffer.data()[index]; }
    const T& operator[](size_t index) const { return mBuffer.data()[index]; }
    T* data() { return mBuffer.data(); }
    const T* data() const { return mBuffer.data(); }
    void resize(size_t size) { mBuffer.resize(size); }

    T* begin() { return mBuffer.data(); }
    T* end() { return mBuffer.data() + mBuffer.size(); }
    const T* begin() const { return mBuffer.data(); }
    const T* end() const { return mBuffer.data() + mBuffer.size(); }

    template <typename U>
    const T* find(const U& value) const {
        return std::find(begin(), end(), value);
    }
    template <typename U>
    bool contains(const U& value) const {
        return find(value) != end();
    }

    bool operator==(const hidl_vec& other) const { return mBuffer == other.mBuffer; }
    bool operator!=(const hidl_vec& other) const { return !(*this == other); }

private:
    std::vector<T> mBuffer;
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

}  // namespace hardware
}  // namespace android
