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

// Registration of the one HAL object, and the device files that must agree with it: the init
// script starts the process for every interface a client may ask for, the manifest declares
// what registration registers, and the policy labels the installed binary.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/ServiceRegistry.h>

#include <fstream>
#include <regex>
#include <set>

#include "tests/host/Recorded.h"
#include "tests/support/TestSupport.h"

using android::sp;
using android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
using android::hidl::base::V1_0::IBase;
using hostplatform::ServiceRegistry;
using testsupport::Reply;
using testsupport::ResultCallback;
using vendor::tetheroffload::TetherOffloadHal;

namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

namespace {

using Instance = std::pair<std::string, std::string>;  // interface, instance name

constexpr char kConfig[] = "android.hardware.tetheroffload.config@1.0::IOffloadConfig";
constexpr char kControl10[] = "android.hardware.tetheroffload.control@1.0::IOffloadControl";
constexpr char kControl11[] = "android.hardware.tetheroffload.control@1.1::IOffloadControl";

std::string readSource(const std::string& path) {
    std::ifstream in(std::string(SOURCE_DIR) + "/" + path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The capture groups of each match of `re` in `text`.
std::vector<std::vector<std::string>> matches(const std::string& text, const std::string& re) {
    std::vector<std::vector<std::string>> out;
    const std::regex pattern(re);
    for (std::sregex_iterator it(text.begin(), text.end(), pattern), end; it != end; ++it) {
        out.emplace_back(it->begin() + 1, it->end());
    }
    return out;
}

std::string firstMatch(const std::string& text, const std::string& re) {
    std::smatch m;
    return std::regex_search(text, m, std::regex(re)) ? m[1].str() : "<none>";
}

// A file that Android.bp installs with the binary under `key`.
std::string installedFile(const std::string& key) {
    return readSource(firstMatch(readSource("Android.bp"), key + R"(:\s*\[\s*"([^"]+)\")"));
}

class RegistrationTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        hosttest::Recorded::instance();
        sHal = TetherOffloadHal::makeTetherOffloadHal();
        for (const auto& r : hosttest::Recorded::instance().of<hostplatform::RegisterRecord>()) {
            sRegistered.insert({r.interface, r.name});
        }
    }

    static sp<TetherOffloadHal> sHal;
    static std::set<Instance> sRegistered;
};

sp<TetherOffloadHal> RegistrationTest::sHal;
std::set<Instance> RegistrationTest::sRegistered;

TEST_F(RegistrationTest, InitScriptAndManifestNameExactlyWhatIsRegistered) {
    std::set<Instance> served;
    for (const auto& entry : ServiceRegistry::instance().entries()) {
        if (entry.first != "android.hidl.base@1.0::IBase") served.insert(entry);
    }
    ASSERT_EQ((std::set<Instance>{
                      {kConfig, "default"}, {kControl10, "default"}, {kControl11, "default"}}),
              served);

    std::set<Instance> started;
    for (const auto& m : matches(installedFile("init_rc"), R"(\n\s+interface\s+(\S+)\s+(\S+))")) {
        started.insert({m[0], m[1]});
    }
    EXPECT_EQ(served, started);

    std::set<Instance> declared;
    std::string package, version, iface;
    bool inInterface = false;
    for (const auto& t : matches(installedFile("vintf_fragments"),
                                 R"(<(hal|interface|name|version|instance)\b[^>]*>\s*([^<\s]*))")) {
        if (t[0] == "hal" || t[0] == "interface") inInterface = t[0] == "interface";
        if (t[0] == "name") (inInterface ? iface : package) = t[1];
        if (t[0] == "version") version = t[1];
        if (t[0] == "instance") declared.insert({package + "@" + version + "::" + iface, t[1]});
    }
    EXPECT_EQ(sRegistered, declared);
}

TEST_F(RegistrationTest, InitScriptStartsTheInstalledBinaryWhichThePolicyLabels) {
    const std::string name =
            firstMatch(readSource("Android.bp"), R"(cc_binary\s*\{\s*name:\s*"([^"]+)\")");
    const std::string path = "/vendor/bin/hw/" + name;
    EXPECT_EQ(path, firstMatch(installedFile("init_rc"), R"(\nservice\s+\S+\s+(\S+))"));
    std::string label = "<none>";
    for (const auto& m : matches(readSource("sepolicy/file_contexts"), R"(\n(/\S+)\s+(\S+))")) {
        if (std::regex_match(path, std::regex(m[0]))) label = m[1];
    }
    EXPECT_EQ("u:object_r:hal_tetheroffload_default_exec:s0", label);
}

// A session opened through one interface is the object's own session.
TEST_F(RegistrationTest, BothInterfacesReachTheOneObject) {
    sp<IOffloadConfig> config = IOffloadConfig::getService("default");
    sp<V1_1::IOffloadControl> control = V1_1::IOffloadControl::getService("default");
    ASSERT_NE(nullptr, config);
    ASSERT_NE(nullptr, control);
    auto cb = fakes::FakeFramework::makeCallback(fakes::FakeFramework::Version::k1_1);
    auto init = [&](const auto& view) {
        return testsupport::replyOf([&](ResultCallback r) { return view->initOffload(cb, r); });
    };
    EXPECT_EQ(Reply(true, "Successful"), init(control));
    EXPECT_EQ(Reply(false, "already  initialized"), init(sHal));
    fakes::FrameworkHandle one;
    EXPECT_EQ(Reply(true, "Successful"), testsupport::replyOf([&](ResultCallback r) {
                  return config->setHandles(one.get(), one.get(), r);
              }));
    EXPECT_EQ(Reply(true, "Successful"),
              testsupport::replyOf([&](ResultCallback r) { return control->stopOffload(r); }));
}

}  // namespace
