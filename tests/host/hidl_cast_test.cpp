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

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <gtest/gtest.h>

#include "hostplatform/Framework.h"

using ::android::sp;
using ::android::hardware::Return;
using ::android::hidl::base::V1_0::IBase;
using ::hostplatform::Framework;
namespace V1_0 = ::android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;

namespace {

class HidlCastTest : public ::testing::Test {
protected:
    void TearDown() override { Framework::setAlive(true); }

    sp<V1_0::ITetheringOffloadCallback> cb10 = Framework::makeCallback(Framework::Version::k1_0);
    sp<V1_0::ITetheringOffloadCallback> cb11 = Framework::makeCallback(Framework::Version::k1_1);
};

TEST_F(HidlCastTest, OnlyA11CallbackCastsTo11) {
    sp<V1_1::ITetheringOffloadCallback> from10 = V1_1::ITetheringOffloadCallback::castFrom(cb10);
    EXPECT_EQ(nullptr, from10);

    sp<V1_1::ITetheringOffloadCallback> from11 = V1_1::ITetheringOffloadCallback::castFrom(cb11);
    ASSERT_NE(nullptr, from11);
    EXPECT_EQ(cb11, sp<V1_0::ITetheringOffloadCallback>(from11));
}

TEST_F(HidlCastTest, CastsThroughIBaseFindTheSameObject) {
    sp<IBase> base = cb11;
    sp<V1_0::ITetheringOffloadCallback> as10 = V1_0::ITetheringOffloadCallback::castFrom(base);
    EXPECT_EQ(cb11, as10);
    sp<IBase> self = IBase::castFrom(base);
    EXPECT_EQ(base, self);
}

TEST_F(HidlCastTest, DeadFrameworkGivesNullOrTheErrorOnRequest) {
    Framework::setAlive(false);
    sp<V1_1::ITetheringOffloadCallback> quiet =
            V1_1::ITetheringOffloadCallback::castFrom(cb11, false);
    EXPECT_EQ(nullptr, quiet);

    Return<sp<V1_1::ITetheringOffloadCallback>> loud =
            V1_1::ITetheringOffloadCallback::castFrom(cb11, true);
    EXPECT_FALSE(loud.isOk());
    EXPECT_TRUE(loud.isDeadObject());
}

TEST_F(HidlCastTest, CastToOwnTypeNeedsNoTransaction) {
    Framework::setAlive(false);
    Return<sp<V1_0::ITetheringOffloadCallback>> same =
            V1_0::ITetheringOffloadCallback::castFrom(cb10, true);
    ASSERT_TRUE(same.isOk());
    EXPECT_EQ(cb10, static_cast<sp<V1_0::ITetheringOffloadCallback>>(same));
}

TEST_F(HidlCastTest, NullParentIsAnOkNull) {
    for (bool emitError : {false, true}) {
        Return<sp<V1_1::ITetheringOffloadCallback>> cast =
                V1_1::ITetheringOffloadCallback::castFrom(sp<IBase>(), emitError);
        ASSERT_TRUE(cast.isOk());
        EXPECT_EQ(nullptr, static_cast<sp<V1_1::ITetheringOffloadCallback>>(cast));
    }
}

}  // namespace
