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

#define LOG_TAG "HidlStatus"

#include <hidl/Status.h>
#include <log/log.h>
#include <stdlib.h>

namespace android {
namespace hardware {
namespace {

const char* exceptionName(int32_t exception) {
    switch (exception) {
        case Status::EX_NONE:
            return "EX_NONE";
        case Status::EX_SECURITY:
            return "EX_SECURITY";
        case Status::EX_BAD_PARCELABLE:
            return "EX_BAD_PARCELABLE";
        case Status::EX_ILLEGAL_ARGUMENT:
            return "EX_ILLEGAL_ARGUMENT";
        case Status::EX_NULL_POINTER:
            return "EX_NULL_POINTER";
        case Status::EX_ILLEGAL_STATE:
            return "EX_ILLEGAL_STATE";
        case Status::EX_NETWORK_MAIN_THREAD:
            return "EX_NETWORK_MAIN_THREAD";
        case Status::EX_UNSUPPORTED_OPERATION:
            return "EX_UNSUPPORTED_OPERATION";
        case Status::EX_HAS_REPLY_HEADER:
            return "EX_HAS_REPLY_HEADER";
        case Status::EX_TRANSACTION_FAILED:
            return "EX_TRANSACTION_FAILED";
    }
    return "EX_UNKNOWN";
}

std::string statusName(status_t status) {
    switch (status) {
        case OK:
            return "OK";
        case UNKNOWN_ERROR:
            return "UNKNOWN_ERROR";
        case NO_MEMORY:
            return "NO_MEMORY";
        case INVALID_OPERATION:
            return "INVALID_OPERATION";
        case BAD_VALUE:
            return "BAD_VALUE";
        case BAD_TYPE:
            return "BAD_TYPE";
        case NAME_NOT_FOUND:
            return "NAME_NOT_FOUND";
        case PERMISSION_DENIED:
            return "PERMISSION_DENIED";
        case NO_INIT:
            return "NO_INIT";
        case ALREADY_EXISTS:
            return "ALREADY_EXISTS";
        case DEAD_OBJECT:
            return "DEAD_OBJECT";
        case FAILED_TRANSACTION:
            return "FAILED_TRANSACTION";
        case TIMED_OUT:
            return "TIMED_OUT";
        case UNEXPECTED_NULL:
            return "UNEXPECTED_NULL";
    }
    return "status_t(" + std::to_string(status) + ")";
}

// The runtime's answer to a lost transport error: log it and end the process.
[[noreturn]] void abortUnchecked(const char* what, const Status& status) {
    LOG_ALWAYS_FATAL("%s: %s", what, status.description().c_str());
    abort();  // in case an aborter hook returned
}

}  // namespace

Status::Status(int32_t exceptionCode, int32_t errorCode, const char* message)
    : mException(exceptionCode),
      mErrorCode(errorCode),
      mMessage(message == nullptr ? "" : message) {}

Status Status::ok() {
    return Status();
}

Status Status::fromExceptionCode(int32_t exceptionCode) {
    return fromExceptionCode(exceptionCode, "");
}

Status Status::fromExceptionCode(int32_t exceptionCode, const char* message) {
    // A transaction failure without a transport code still has to read as one.
    status_t errorCode = exceptionCode == EX_TRANSACTION_FAILED ? FAILED_TRANSACTION : OK;
    return Status(exceptionCode, errorCode, message);
}

Status Status::fromStatusT(status_t status) {
    if (status == OK) return ok();
    return Status(EX_TRANSACTION_FAILED, status, "");
}

std::string Status::description() const {
    if (isOk()) return "No error";
    std::string text = "Status(";
    text += exceptionName(mException);
    text += "): '";
    if (mException == EX_TRANSACTION_FAILED) {
        text += statusName(mErrorCode);
        if (!mMessage.empty()) text += ": ";
    }
    text += mMessage;
    text += "'";
    return text;
}

namespace details {

return_status& return_status::operator=(return_status&& other) noexcept {
    if (!mCheckedStatus && !mStatus.isOk()) {
        abortUnchecked("HIDL return status overwritten before it was checked", mStatus);
    }
    if (this == &other) return *this;
    mStatus = std::move(other.mStatus);
    mCheckedStatus = other.mCheckedStatus;
    // The moved-from Return no longer answers for the status.
    other.mStatus = Status::ok();
    other.mCheckedStatus = true;
    return *this;
}

return_status::~return_status() {
    if (!mCheckedStatus && !mStatus.isOk()) {
        abortUnchecked("Failed HIDL return status never checked", mStatus);
    }
}

void return_status::assertOk() const {
    if (!isOk()) abortUnchecked("Failed HIDL return status asserted OK", mStatus);
}

}  // namespace details
}  // namespace hardware
}  // namespace android
