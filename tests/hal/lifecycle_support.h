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

// Runs one HAL operation and collects what it did: its reply, the HAL's own log lines before
// and after the reply, and the requests that reached the device.

#pragma once

#include <android/log.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <hostplatform/Recorder.h>
#include <string.h>

#include <functional>
#include <string>
#include <vector>

#include "datapath/vexa_protocol.h"

namespace lifecycle_test {

using Lines = std::vector<std::string>;
using ResultCallback = std::function<void(bool, const android::hardware::hidl_string&)>;

struct Request {
    uint32_t app;
    uint32_t msg;
    bool operator==(const Request& o) const { return app == o.app && msg == o.msg; }
};

inline void PrintTo(const Request& r, std::ostream* os) {
    *os << "{app " << r.app << ", msg " << r.msg << "}";
}

// Enable and disable for all apps, as the driver receives them.
constexpr Request kEnableAll{VEXA_APP_TYPE_ALL, VEXA_CMSG_ENABLE};
constexpr Request kDisableAll{VEXA_APP_TYPE_ALL, VEXA_CMSG_DISABLE};

struct Outcome {
    int replies = 0;
    bool ok = false;
    std::string msg;
    Lines before;  // the HAL's lines before the reply
    Lines after;   // and after it
    std::vector<Request> requests;
};

// Lines that the data-path client writes for its own steps; they are tested with it.
inline bool isDataPathLine(const std::string& msg) {
    static const char* const kPrefixes[] = {
            " GetInstance p=",
            "open dev ++",
            "open /dev/vexa",
            " registerTimeoutCallback",
            "already have registerTimeoutCallback",
            " unregisterTimeoutCallback",
            "already have unregisterTimeoutCallback",
            "sendCmd2MD",
    };
    for (const char* prefix : kPrefixes) {
        if (msg.compare(0, strlen(prefix), prefix) == 0) return true;
    }
    return false;
}

inline std::vector<Request> deviceRequests() {
    std::vector<Request> requests;
    for (const auto& ioctl : hostplatform::Recorder::instance().all<hostplatform::IoctlRecord>()) {
        vexa_common_hdr_t hdr{};
        if (ioctl.bytes.size() >= sizeof(hdr)) memcpy(&hdr, ioctl.bytes.data(), sizeof(hdr));
        requests.push_back({hdr.app_type, hdr.msg});
    }
    return requests;
}

// `op` gets a result callback to pass on and returns the operation's Return<void>.
template <typename Op>
Outcome run(Op op) {
    hostplatform::Recorder& recorder = hostplatform::Recorder::instance();
    recorder.clear();
    Outcome out;
    size_t logsAtReply = 0;
    ResultCallback cb = [&](bool ok, const android::hardware::hidl_string& msg) {
        ++out.replies;
        out.ok = ok;
        out.msg = msg;
        logsAtReply = recorder.all<hostplatform::LogRecord>().size();
    };
    android::hardware::Return<void> ret = op(cb);
    EXPECT_TRUE(ret.isOk());
    std::vector<hostplatform::LogRecord> logs = recorder.all<hostplatform::LogRecord>();
    for (size_t i = 0; i < logs.size(); ++i) {
        if (isDataPathLine(logs[i].msg)) continue;
        EXPECT_EQ(ANDROID_LOG_INFO, logs[i].prio) << logs[i].msg;
        EXPECT_EQ("TetherOffload", logs[i].tag) << logs[i].msg;
        (i < logsAtReply ? out.before : out.after).push_back(logs[i].msg);
    }
    out.requests = deviceRequests();
    return out;
}

inline std::string pointerText(const void* p) {
    char text[32];
    snprintf(text, sizeof(text), "%p", p);
    return text;
}

}  // namespace lifecycle_test
