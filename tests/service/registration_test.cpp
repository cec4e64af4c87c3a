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

// Registration of the one HAL object, and the device files that must name exactly what it
// registers: the init script starts the process for every interface a client may ask for, and
// the manifest declares what registration needs.

#include <cutils/native_handle.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/Framework.h>
#include <hostplatform/Recorder.h>
#include <hostplatform/ServiceRegistry.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "hal/TetherOffloadHal.h"
#include "tests/service/DeviceFiles.h"

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
using android::hidl::base::V1_0::IBase;
using hostplatform::Framework;
using hostplatform::Recorder;
using hostplatform::RegisterRecord;
using hostplatform::ServiceRegistry;
using hostplatform::ThreadpoolRecord;
using service_test::Instance;
using testing::Contains;
using testing::ElementsAre;
using vendor::tetheroffload::TetherOffloadHal;

namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

namespace {

constexpr char kConfig[] = "android.hardware.tetheroffload.config@1.0::IOffloadConfig";
constexpr char kControl10[] = "android.hardware.tetheroffload.control@1.0::IOffloadControl";
constexpr char kControl11[] = "android.hardware.tetheroffload.control@1.1::IOffloadControl";
constexpr char kIBase[] = "android.hidl.base@1.0::IBase";

class RegistrationTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        Recorder::instance().clear();
        sHal = TetherOffloadHal::makeTetherOffloadHal();
        sStartRecords = Recorder::instance().records();
        sModule = service_test::parseBinaryModule(service_test::readSourceFile("Android.bp"));
    }

    template <typename T>
    static std::vector<T> startRecords() {
        std::vector<T> out;
        for (const auto& r : sStartRecords) {
            if (const T* body = std::get_if<T>(&r.body)) out.push_back(*body);
        }
        return out;
    }

    static std::set<Instance> registered() {
        std::set<Instance> out;
        for (const RegisterRecord& r : startRecords<RegisterRecord>()) {
            out.insert({r.interface, r.name});
        }
        return out;
    }

    static sp<TetherOffloadHal> sHal;
    static std::vector<hostplatform::Record> sStartRecords;
    static service_test::BinaryModule sModule;
};

sp<TetherOffloadHal> RegistrationTest::sHal;
std::vector<hostplatform::Record> RegistrationTest::sStartRecords;
service_test::BinaryModule RegistrationTest::sModule;

TEST_F(RegistrationTest, OneThreadIsConfiguredThenConfigAndControlAreRegistered) {
    ASSERT_NE(nullptr, sHal);
    ASSERT_EQ(3u, sStartRecords.size());
    const auto* pool = std::get_if<ThreadpoolRecord>(&sStartRecords[0].body);
    ASSERT_NE(nullptr, pool);
    EXPECT_EQ(1u, pool->max);
    EXPECT_FALSE(pool->callerWillJoin);
    std::vector<Instance> order;
    for (const RegisterRecord& r : startRecords<RegisterRecord>()) {
        order.push_back({r.interface, r.name});
    }
    EXPECT_THAT(order, ElementsAre(Instance{kConfig, "default"}, Instance{kControl11, "default"}));
}

TEST_F(RegistrationTest, InitScriptListsEveryRegisteredInterfaceButIBase) {
    // The registry also holds the host's peers: keep what resolves to the HAL object.
    const sp<IBase> views[] = {sp<IOffloadConfig>(sHal), sp<V1_1::IOffloadControl>(sHal)};
    std::set<Instance> served;
    for (const auto& entry : ServiceRegistry::instance().entries()) {
        sp<IBase> service = ServiceRegistry::instance().get(entry.first, entry.second);
        bool isHal = service == views[0] || service == views[1];
        if (isHal && entry.first != kIBase) served.insert(entry);
    }
    ASSERT_EQ((std::set<Instance>{
                      {kConfig, "default"}, {kControl10, "default"}, {kControl11, "default"}}),
              served);

    service_test::InitService rc =
            service_test::parseInitService(service_test::readSourceFile(sModule.initRc));
    EXPECT_EQ(served, rc.interfaces);
}

TEST_F(RegistrationTest, ManifestDeclaresWhatRegistrationRegisters) {
    std::set<Instance> declared =
            service_test::parseManifest(service_test::readSourceFile(sModule.vintfFragment));
    EXPECT_EQ(registered(), declared);
}

TEST_F(RegistrationTest, InitScriptStartsTheInstalledBinaryOnDemandWithoutPrivileges) {
    service_test::InitService rc =
            service_test::parseInitService(service_test::readSourceFile(sModule.initRc));
    ASSERT_FALSE(sModule.name.empty());
    EXPECT_THAT(rc.header, ElementsAre("service", "vendor.tetheroffload-1-1",
                                       "/vendor/bin/hw/" + sModule.name));
    for (const char* option : {"oneshot", "disabled", "class hal", "user system"}) {
        EXPECT_THAT(rc.options, Contains(option));
    }
    for (const std::string& option : rc.options) {
        EXPECT_NE(0u, option.rfind("capabilities", 0)) << option;
        EXPECT_NE("critical", option);
    }
}

TEST_F(RegistrationTest, PolicyLabelsTheInstalledBinaryAndTheDevice) {
    std::map<std::string, std::string> labelByPath;
    std::istringstream in(service_test::readSourceFile("sepolicy/file_contexts"));
    std::string pattern;
    std::string label;
    while (in >> pattern) {
        if (pattern[0] == '#') {
            std::getline(in, label);
            continue;
        }
        in >> label;
        labelByPath[pattern] = label;
    }
    auto labelOf = [&](const std::string& path) {
        for (const auto& [re, context] : labelByPath) {
            if (std::regex_match(path, std::regex(re))) return context;
        }
        return std::string();
    };
    EXPECT_EQ("u:object_r:hal_tetheroffload_default_exec:s0",
              labelOf("/vendor/bin/hw/" + sModule.name));
    EXPECT_EQ("u:object_r:vexa_device:s0", labelOf("/dev/vexa"));
}

TEST_F(RegistrationTest, BothInterfacesReachTheOneObject) {
    sp<IOffloadConfig> config = IOffloadConfig::getService("default");
    sp<V1_1::IOffloadControl> control = V1_1::IOffloadControl::getService("default");
    ASSERT_NE(nullptr, config);
    ASSERT_NE(nullptr, control);
    EXPECT_EQ(static_cast<IOffloadConfig*>(sHal.get()), config.get());
    EXPECT_EQ(static_cast<V1_1::IOffloadControl*>(sHal.get()), control.get());

    std::vector<std::string> replies;
    auto record = [&](bool ok, const hidl_string& msg) {
        replies.push_back((ok ? "true " : "false ") + std::string(msg));
    };
    native_handle_t* one = native_handle_create(1, 0);
    one->data[0] = 0;
    EXPECT_TRUE(config->setHandles(hidl_handle(one), hidl_handle(one), record).isOk());
    native_handle_delete(one);
    auto cb = Framework::makeCallback(Framework::Version::k1_1);
    EXPECT_TRUE(control->initOffload(cb, record).isOk());
    // The object held by the process sees the session opened through the registry.
    EXPECT_TRUE(sHal->initOffload(cb, record).isOk());
    EXPECT_TRUE(control->stopOffload(record).isOk());
    EXPECT_THAT(replies, ElementsAre("true Successful", "true Successful",
                                     "false already  initialized", "true Successful"));
}

}  // namespace
