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

#define LOG_TAG "HidlSupport"

#include <hidl/HidlSupport.h>
#include <log/log.h>

#include <limits>
#include <utility>

namespace android {
namespace hardware {
namespace details {

void checkHidlSize(size_t size, const char* what) {
    if (size > std::numeric_limits<uint32_t>::max()) {
        LOG_ALWAYS_FATAL("%s size %zu does not fit in 32 bits", what, size);
    }
}

}  // namespace details

namespace {

// What every empty string points at, so that c_str() is never null.
const char kEmptyString[1] = "";

}  // namespace

hidl_string::hidl_string() : mBuffer(kEmptyString), mSize(0), mOwnsBuffer(false) {}

hidl_string::~hidl_string() {
    clear();
}

hidl_string::hidl_string(const hidl_string& other) : hidl_string() {
    copyFrom(other.c_str(), other.size());
}

hidl_string::hidl_string(const char* s) : hidl_string() {
    if (s != nullptr) copyFrom(s, strlen(s));
}

hidl_string::hidl_string(const char* s, size_t length) : hidl_string() {
    if (s != nullptr) copyFrom(s, length);
}

hidl_string::hidl_string(const std::string& s) : hidl_string() {
    copyFrom(s.data(), s.size());
}

hidl_string::hidl_string(hidl_string&& other) noexcept : hidl_string() {
    moveFrom(std::move(other));
}

hidl_string& hidl_string::operator=(const hidl_string& other) {
    if (this != &other) {
        clear();
        copyFrom(other.c_str(), other.size());
    }
    return *this;
}

// Through a copy: `s` may point into this string's own text.
hidl_string& hidl_string::operator=(const char* s) {
    return *this = hidl_string(s);
}

hidl_string& hidl_string::operator=(const std::string& s) {
    clear();
    copyFrom(s.data(), s.size());
    return *this;
}

hidl_string& hidl_string::operator=(hidl_string&& other) noexcept {
    if (this != &other) {
        clear();
        moveFrom(std::move(other));
    }
    return *this;
}

void hidl_string::clear() {
    if (mOwnsBuffer) delete[] static_cast<const char*>(mBuffer);
    mBuffer = kEmptyString;
    mSize = 0;
    mOwnsBuffer = false;
}

void hidl_string::setToExternal(const char* data, size_t size) {
    details::checkHidlSize(size, "hidl_string");
    clear();
    if (data == nullptr) return;
    mBuffer = data;
    mSize = static_cast<uint32_t>(size);
}

// Expects an empty string: the callers clear it first.
void hidl_string::copyFrom(const char* data, size_t size) {
    details::checkHidlSize(size, "hidl_string");
    char* buffer = new char[size + 1];
    memcpy(buffer, data, size);
    buffer[size] = '\0';
    mBuffer = buffer;
    mSize = static_cast<uint32_t>(size);
    mOwnsBuffer = true;
}

// Expects an empty string: the callers clear it first. An external text stays external.
void hidl_string::moveFrom(hidl_string&& other) {
    mBuffer = other.mBuffer;
    mSize = other.mSize;
    mOwnsBuffer = other.mOwnsBuffer;
    other.mOwnsBuffer = false;
    other.clear();
}

std::ostream& operator<<(std::ostream& os, const hidl_string& str) {
    return os << str.c_str();
}

std::string toString(const hidl_string& str) {
    return "\"" + std::string(str) + "\"";
}

hidl_handle& hidl_handle::operator=(const hidl_handle& other) {
    if (this == &other) return *this;
    freeHandle();
    if (other.mHandle != nullptr) {
        // A copy must stay valid after the original closes its descriptors.
        mHandle = native_handle_clone(other.mHandle);
        mOwnsHandle = mHandle != nullptr;
    }
    return *this;
}

hidl_handle& hidl_handle::operator=(hidl_handle&& other) noexcept {
    if (this == &other) return *this;
    freeHandle();
    mHandle = other.mHandle;
    mOwnsHandle = other.mOwnsHandle;
    other.mHandle = nullptr;
    other.mOwnsHandle = false;
    return *this;
}

hidl_handle& hidl_handle::operator=(const native_handle_t* native_handle) {
    freeHandle();
    mHandle = native_handle;
    return *this;
}

void hidl_handle::setTo(native_handle_t* handle, bool shouldOwn) {
    freeHandle();
    mHandle = handle;
    mOwnsHandle = shouldOwn;
}

void hidl_handle::freeHandle() {
    if (mOwnsHandle && mHandle != nullptr) {
        native_handle_t* handle = const_cast<native_handle_t*>(mHandle);
        native_handle_close(handle);
        native_handle_delete(handle);
    }
    mHandle = nullptr;
    mOwnsHandle = false;
}

}  // namespace hardware
}  // namespace android
