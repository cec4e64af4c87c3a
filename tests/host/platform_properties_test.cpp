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

// property_get over the host's property store: the rules libcutils callers rely on.

#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "hostplatform/Properties.h"

namespace hostplatform {
namespace {

class PropertiesTest : public testing::Test {
protected:
    void SetUp() override { Properties::clear(); }
    void TearDown() override { Properties::clear(); }
};

struct Case {
    const char* name;
    bool set;
    std::string stored;
    const char* defaultValue;
    std::string expected;
};

TEST_F(PropertiesTest, ValueOrDefaultTruncatedToTheLimit) {
    const std::string longest(PROPERTY_VALUE_MAX - 1, 'v');
    const std::string tooLong(PROPERTY_VALUE_MAX + 10, 'w');
    const Case cases[] = {
            {"set", true, "userdebug", "user", "userdebug"},
            {"unset takes the default", false, "", "user", "user"},
            {"empty takes the default", true, "", "user", "user"},
            {"unset with null default", false, "", nullptr, ""},
            {"empty with empty default", true, "", "", ""},
            {"longest value kept", true, longest, nullptr, longest},
            {"long value cut", true, tooLong, nullptr, tooLong.substr(0, PROPERTY_VALUE_MAX - 1)},
            {"long default cut", false, "", tooLong.c_str(),
             tooLong.substr(0, PROPERTY_VALUE_MAX - 1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Properties::clear();
        if (c.set) Properties::set("ro.build.type", c.stored);
        char value[PROPERTY_VALUE_MAX];
        memset(value, 'x', sizeof(value));
        const int length = property_get("ro.build.type", value, c.defaultValue);
        EXPECT_EQ(c.expected, std::string(value));
        EXPECT_EQ(static_cast<int>(c.expected.size()), length);
    }
}

TEST_F(PropertiesTest, NamesAreKeptApartAndClearForgetsAll) {
    Properties::set("ro.build.type", "eng");
    Properties::set("ro.build.typ", "user");
    Properties::set("ro.build.type", "userdebug");
    char value[PROPERTY_VALUE_MAX];
    EXPECT_EQ(9, property_get("ro.build.type", value, "dflt"));
    EXPECT_STREQ("userdebug", value);
    Properties::clear();
    EXPECT_EQ(4, property_get("ro.build.typ", value, "dflt"));
    EXPECT_STREQ("dflt", value);
}

}  // namespace
}  // namespace hostplatform
