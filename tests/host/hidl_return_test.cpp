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

#include <gtest/gtest.h>
#include <hidl/Status.h>
#include <signal.h>

#include <utility>

using ::android::DEAD_OBJECT;
using ::android::FAILED_TRANSACTION;
using ::android::OK;
using ::android::status_t;
using ::android::hardware::Return;
using ::android::hardware::Status;
using ::android::hardware::Void;

namespace {

// The runtime ends the process with abort(), not with any other crash.
#define EXPECT_ABORTS(statement) EXPECT_EXIT(statement, ::testing::KilledBySignal(SIGABRT), "")

Return<int> failed(status_t error = DEAD_OBJECT) {
    return Status::fromStatusT(error);
}

TEST(HidlStatusTest, TransportErrorIsTransactionFailedWithItsCode) {
    Status status = Status::fromStatusT(DEAD_OBJECT);
    EXPECT_FALSE(status.isOk());
    EXPECT_EQ(Status::EX_TRANSACTION_FAILED, status.exceptionCode());
    EXPECT_EQ(DEAD_OBJECT, status.transactionError());
    EXPECT_NE(std::string::npos, status.description().find("DEAD_OBJECT"));

    EXPECT_TRUE(Status::fromStatusT(OK).isOk());
    EXPECT_EQ(FAILED_TRANSACTION,
              Status::fromExceptionCode(Status::EX_TRANSACTION_FAILED).transactionError());
    Status illegal = Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "no init");
    EXPECT_EQ(OK, illegal.transactionError());
    EXPECT_STREQ("no init", illegal.exceptionMessage());
}

using HidlReturnDeathTest = ::testing::Test;

TEST_F(HidlReturnDeathTest, UncheckedErrorAbortsWhenDestroyed) {
    EXPECT_ABORTS({ Return<void> ret = Status::fromStatusT(DEAD_OBJECT); });
    EXPECT_ABORTS({ failed(); });
    // Neither reading the text nor the unchecked probe counts as looking at the status.
    EXPECT_ABORTS({
        Return<int> ret = failed();
        ret.description();
        ret.isOkUnchecked();
    });
    // A negative answer to isDeadObject says nothing about other failures.
    EXPECT_ABORTS({
        Return<int> ret = failed(FAILED_TRANSACTION);
        EXPECT_FALSE(ret.isDeadObject());
    });
}

TEST_F(HidlReturnDeathTest, ErrorAbortsWhenItsValueIsTaken) {
    EXPECT_ABORTS({
        int value = failed();
        (void)value;
    });
    EXPECT_ABORTS(failed().assertOk());
}

TEST_F(HidlReturnDeathTest, MoveAssigningOntoUncheckedErrorAborts) {
    EXPECT_ABORTS({
        Return<int> ret = failed();
        ret = Return<int>(1);
    });
}

TEST_F(HidlReturnDeathTest, CheckObligationMovesWithTheError) {
    EXPECT_ABORTS({
        Return<int> source = failed();
        Return<int> target = std::move(source);
    });
    EXPECT_ABORTS({
        Return<int> target = 1;
        target = failed();
    });
}

TEST(HidlReturnTest, CheckedErrorsDoNotAbort) {
    EXPECT_FALSE(failed().isOk());
    EXPECT_EQ(7, failed().withDefault(7));
    EXPECT_TRUE(failed(DEAD_OBJECT).isDeadObject());

    Return<int> target = 1;
    target = failed();  // the moved-from temporary no longer answers for the error
    EXPECT_FALSE(target.isOk());
}

TEST(HidlReturnTest, OkReturnsNeverAbort) {
    Return<int> value = 5;
    EXPECT_EQ(5, static_cast<int>(value));
    Return<void> unchecked = Void();
    Return<int> overwritten = 1;
    overwritten = Return<int>(2);
    EXPECT_EQ(2, overwritten.withDefault(0));
}

}  // namespace
