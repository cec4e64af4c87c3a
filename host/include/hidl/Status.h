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

// Host stand-in for the platform's <hidl/Status.h>: transport status and the checked Return.

#pragma once

#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include <cstdint>
#include <string>
#include <utility>

namespace android {
namespace hardware {

class Status final {
public:
    enum Exception {
        EX_NONE = 0,
        EX_SECURITY = -1,
        EX_BAD_PARCELABLE = -2,
        EX_ILLEGAL_ARGUMENT = -3,
        EX_NULL_POINTER = -4,
        EX_ILLEGAL_STATE = -5,
        EX_NETWORK_MAIN_THREAD = -6,
        EX_UNSUPPORTED_OPERATION = -7,
        EX_HAS_REPLY_HEADER = -128,
        EX_TRANSACTION_FAILED = -129,
    };

    static Status ok();
    static Status fromExceptionCode(int32_t exceptionCode);
    static Status fromExceptionCode(int32_t exceptionCode, const char* message);
    static Status fromStatusT(status_t status);

    Status() = default;
    ~Status() = default;
    Status(const Status&) = default;
    Status(Status&&) = default;
    Status& operator=(const Status&) = default;
    Status& operator=(Status&&) = default;

    int32_t exceptionCode() const { return mException; }
    const char* exceptionMessage() const { return mMessage.c_str(); }
    status_t transactionError() const {
        return mException == EX_TRANSACTION_FAILED ? mErrorCode : OK;
    }
    bool isOk() const { return mException == EX_NONE; }
    std::string description() const;

private:
    Status(int32_t exceptionCode, int32_t errorCode, const char* message);

    int32_t mException = EX_NONE;
    int32_t mErrorCode = 0;
    std::string mMessage;
};

namespace details {

// Base of every Return: a failed status that nobody looked at aborts the process, as on the
// device, so that a lost transport error can never pass silently.
class return_status {
public:
    return_status() {}
    return_status(const Status& s) : mStatus(s) {}

    return_status(const return_status&) = delete;
    return_status& operator=(const return_status&) = delete;

    return_status(return_status&& other) noexcept { *this = std::move(other); }
    return_status& operator=(return_status&& other) noexcept;

    ~return_status();

    void assertOk() const;

    bool isOkUnchecked() const { return mStatus.isOk(); }

    bool isOk() const {
        mCheckedStatus = true;
        return mStatus.isOk();
    }

    // Only a positive answer counts as having checked the status.
    bool isDeadObject() const {
        bool dead = mStatus.transactionError() == DEAD_OBJECT;
        if (dead) mCheckedStatus = true;
        return dead;
    }

    std::string description() const { return mStatus.description(); }

private:
    Status mStatus{};
    mutable bool mCheckedStatus = false;
};

}  // namespace details

template <typename T>
class Return : public details::return_status {
public:
    Return(T v) : details::return_status(), mVal{v} {}
    Return(Status s) : details::return_status(s) {}

    Return(Return&& other) = default;
    Return& operator=(Return&&) = default;
    ~Return() = default;

    operator T() const {
        assertOk();
        return mVal;
    }

    T withDefault(T t) { return isOk() ? mVal : t; }

private:
    T mVal{};
};

template <typename T>
class Return<sp<T>> : public details::return_status {
public:
    Return(sp<T> v) : details::return_status(), mVal{v} {}
    Return(T* v) : details::return_status(), mVal{v} {}
    template <typename U>
    Return(sp<U> v) : details::return_status(), mVal{v} {}
    template <typename U>
    Return(U* v) : details::return_status(), mVal{v} {}
    Return(Status s) : details::return_status(s) {}

    Return(Return&& other) = default;
    Return& operator=(Return&&) = default;
    ~Return() = default;

    operator sp<T>() const {
        assertOk();
        return mVal;
    }

    sp<T> withDefault(sp<T> t) { return isOk() ? mVal : t; }

private:
    sp<T> mVal{};
};

template <>
class Return<void> : public details::return_status {
public:
    Return() : details::return_status() {}
    Return(const Status& s) : details::return_status(s) {}

    Return(Return&& other) = default;
    Return& operator=(Return&&) = default;
    ~Return() = default;
};

static inline Return<void> Void() {
    return Return<void>();
}

}  // namespace hardware
}  // namespace android
