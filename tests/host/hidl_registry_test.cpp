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

#include <android/hardware/tetheroffload/config/1.0/IOffloadConfig.h>
#include <android/hardware/tetheroffload/control/1.1/IOffloadControl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlLazyUtils.h>
#include <hidl/HidlTransportSupport.h>

#include <memory>  // the registrar's header does not include it
#include <string>
#include <vector>

#include "hostplatform/Framework.h"
#include "hostplatform/Recorder.h"
#include "hostplatform/ServiceRegistry.h"

using ::android::OK;
using ::android::sp;
using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::LazyServiceRegistrar;
using ::android::hardware::Return;
using ::android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
using ::android::hidl::base::V1_0::IBase;
using ::hostplatform::Recorder;
using ::hostplatform::RegisterRecord;
using ::hostplatform::ServiceRegistry;
using ::hostplatform::ThreadpoolRecord;
namespace V1_0 = ::android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;

namespace {

// One object behind both interfaces, as the service registers it. None of its calls are made.
class DualService : public IOffloadConfig, public V1_1::IOffloadControl {
public:
    using Strings = hidl_vec<hidl_string>;
    MOCK_METHOD(Return<void>, setHandles, (const hidl_handle&, const hidl_handle&, setHandles_cb),
                (override));
    MOCK_METHOD(Return<void>, initOffload,
                (const sp<V1_0::ITetheringOffloadCallback>&, initOffload_cb), (override));
    MOCK_METHOD(Return<void>, stopOffload, (stopOffload_cb), (override));
    MOCK_METHOD(Return<void>, setLocalPrefixes, (const Strings&, setLocalPrefixes_cb), (override));
    MOCK_METHOD(Return<void>, getForwardedStats, (const hidl_string&, getForwardedStats_cb),
                (override));
    MOCK_METHOD(Return<void>, setDataLimit, (const hidl_string&, uint64_t, setDataLimit_cb),
                (override));
    MOCK_METHOD(Return<void>, setUpstreamParameters,
                (const hidl_string&, const hidl_string&, const hidl_string&, const Strings&,
                 setUpstreamParameters_cb),
                (override));
    MOCK_METHOD(Return<void>, addDownstream,
                (const hidl_string&, const hidl_string&, addDownstream_cb), (override));
    MOCK_METHOD(Return<void>, removeDownstream,
                (const hidl_string&, const hidl_string&, removeDownstream_cb), (override));
    MOCK_METHOD(Return<void>, setDataWarningAndLimit,
                (const hidl_string&, uint64_t, uint64_t, setDataWarningAndLimit_cb), (override));
};

class HidlRegistryTest : public ::testing::Test {
protected:
    void SetUp() override {
        ServiceRegistry::instance().clear();  // drops the agent too; not used here
        Recorder::instance().clear();
    }

    sp<DualService> service = new DualService();
    sp<IOffloadConfig> asConfig = service;
    sp<V1_1::IOffloadControl> asControl = service;
};

TEST_F(HidlRegistryTest, LazyRegistrationServesEveryInterfaceOfTheChain) {
    LazyServiceRegistrar& registrar = LazyServiceRegistrar::getInstance();
    ASSERT_EQ(OK, registrar.registerService(asConfig, "default"));
    ASSERT_EQ(OK, registrar.registerService(asControl, "default"));

    EXPECT_EQ(asConfig, IOffloadConfig::getService("default", false));
    EXPECT_EQ(sp<V1_0::IOffloadControl>(asControl), V1_0::IOffloadControl::getService());
    EXPECT_EQ(asControl, V1_1::IOffloadControl::getService("default"));
    EXPECT_EQ(nullptr, V1_1::IOffloadControl::getService("other"));

    std::vector<RegisterRecord> records = Recorder::instance().all<RegisterRecord>();
    ASSERT_EQ(2u, records.size());
    EXPECT_EQ("android.hardware.tetheroffload.config@1.0::IOffloadConfig", records[0].interface);
    EXPECT_EQ("android.hardware.tetheroffload.control@1.1::IOffloadControl", records[1].interface);
    EXPECT_EQ("default", records[1].name);
}

TEST_F(HidlRegistryTest, RegisterAsServiceAndRemove) {
    ASSERT_EQ(OK, asControl->registerAsService("default"));
    EXPECT_EQ(nullptr, IOffloadConfig::getService());  // not registered as config
    EXPECT_EQ(asControl, V1_1::IOffloadControl::tryGetService());

    ServiceRegistry::instance().remove(V1_1::IOffloadControl::descriptor, "default");
    EXPECT_EQ(nullptr, V1_1::IOffloadControl::getService());
    EXPECT_NE(nullptr, V1_0::IOffloadControl::getService());
    EXPECT_NE(OK, LazyServiceRegistrar::getInstance().registerService(nullptr));
}

TEST_F(HidlRegistryTest, ChainsListSelfFirstAndIBaseLast) {
    const char* base = "android.hidl.base@1.0::IBase";
    const char* cb10 = "android.hardware.tetheroffload.control@1.0::ITetheringOffloadCallback";
    struct Case {
        sp<IBase> object;
        std::vector<std::string> chain;
    } cases[] = {
            {asConfig, {"android.hardware.tetheroffload.config@1.0::IOffloadConfig", base}},
            {asControl,
             {"android.hardware.tetheroffload.control@1.1::IOffloadControl",
              "android.hardware.tetheroffload.control@1.0::IOffloadControl", base}},
            {hostplatform::Framework::makeCallback(hostplatform::Framework::Version::k1_0),
             {cb10, base}},
            {hostplatform::Framework::makeCallback(hostplatform::Framework::Version::k1_1),
             {"android.hardware.tetheroffload.control@1.1::ITetheringOffloadCallback", cb10, base}},
    };
    for (Case& c : cases) {
        std::vector<std::string> chain;
        size_t hashes = 0;
        ASSERT_TRUE(c.object->interfaceChain([&](const hidl_vec<hidl_string>& descriptors) {
                                chain.assign(descriptors.begin(), descriptors.end());
                            })
                            .isOk());
        ASSERT_TRUE(c.object->getHashChain([&](const auto& hashChain) { hashes = hashChain.size(); })
                            .isOk());
        EXPECT_EQ(c.chain, chain);
        EXPECT_EQ(c.chain.size(), hashes);
    }
}

TEST_F(HidlRegistryTest, ThreadpoolRecordsItsConfigurationAndRunsTheServer) {
    ::android::hardware::configureRpcThreadpool(1, false);
    std::vector<ThreadpoolRecord> records = Recorder::instance().all<ThreadpoolRecord>();
    ASSERT_EQ(1u, records.size());
    EXPECT_EQ(1u, records[0].max);
    EXPECT_FALSE(records[0].callerWillJoin);

    ::android::hardware::joinRpcThreadpool();  // no server: returns at once
    int served = 0;
    hostplatform::Threadpool::setServer([&] { ++served; });
    ::android::hardware::joinRpcThreadpool();
    hostplatform::Threadpool::setServer(nullptr);
    EXPECT_EQ(1, served);
}

}  // namespace
