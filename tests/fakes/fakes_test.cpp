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

// The fakes as the service meets them, on the desktop and on a phone alike: "/dev/vexa" read by
// the real event thread and asked by ioctl, the conntrack files, properties, standard error, the
// agent and the framework's callbacks. The log tap's records are pinned by the golden traces.

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <cutils/properties.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "fakes/ConntrackFiles.h"
#include "fakes/FakeAgent.h"
#include "fakes/FakeFramework.h"
#include "fakes/FakeVexaDevice.h"
#include "fakes/Properties.h"
#include "fakes/StandardError.h"
#include "tests/support/TestSupport.h"

namespace {

using ::android::sp;
using fakes::ConntrackFiles;
using fakes::FakeAgent;
using fakes::FakeFramework;
using fakes::FakeVexaDevice;
using testsupport::observed;
using ::vendor::korvan::hardware::plexd::V1_0::IPlexd;
namespace V1_0 = ::android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;

using Bytes = std::vector<uint8_t>;

// A record of `size` bytes: a header with `dataLen`, then a pattern that tells each byte apart.
Bytes record(uint32_t msg, uint32_t dataLen, size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 7 + 1);
    const vexa_common_hdr_t hdr = {VEXA_MCODE, VEXA_REQ_STATUS, VEXA_APP_TYPE_ALL, msg, dataLen};
    memcpy(bytes.data(), &hdr, sizeof(hdr));
    return bytes;
}

Bytes prefix(const Bytes& bytes, size_t size) {
    Bytes out(size, 0);
    std::copy_n(bytes.begin(), std::min(size, bytes.size()), out.begin());
    return out;
}

class FakeDeviceTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        OffloadEventHandle::createEventThread();
        ASSERT_TRUE(FakeVexaDevice::instance().waitReaderBlocked());
    }
    void SetUp() override { observed().clear(); }
    void TearDown() override { FakeVexaDevice::instance().restoreDefaults(); }
};

// The event thread's reads are the kernel's, one record each; the fake only puts a failure in
// its place among them.
TEST_F(FakeDeviceTest, EachReadTakesOneRecordOfItsSizeOrItsFailureInOrder) {
    FakeVexaDevice& device = FakeVexaDevice::instance();
    const Bytes a = record(VEXA_STARTED, 8, 24), b = record(VEXA_STARTED, 0, 16);
    const Bytes big = record(VEXA_STARTED, 300, 400);
    ASSERT_TRUE(device.queueRecord(a, 16));
    ASSERT_TRUE(device.queueRecord(b, 24));
    ASSERT_TRUE(device.queueReadFailure(EPROTO));
    ASSERT_TRUE(device.queueRecord(big, 400));
    ASSERT_TRUE(device.queueRecord(b, 0));
    ASSERT_TRUE(device.waitUntilDrained());

    const auto reads = observed().of<fakes::ReadRecord>();
    ASSERT_EQ(5u, reads.size());
    EXPECT_EQ(16, reads[0].ret);
    EXPECT_EQ(prefix(a, 16), reads[0].bytes);
    EXPECT_EQ(24, reads[1].ret);
    EXPECT_EQ(prefix(b, 24), reads[1].bytes) << "past its end a record reads as zeros";
    EXPECT_EQ(-1, reads[2].ret);
    EXPECT_EQ(EPROTO, reads[2].errnum);
    EXPECT_EQ(static_cast<long>(FakeVexaDevice::kMaxRead), reads[3].ret);
    EXPECT_EQ(prefix(big, FakeVexaDevice::kMaxRead), reads[3].bytes);
    EXPECT_EQ(0, reads[4].ret);
}

// The driver reads the header and data_len bytes (at most 256), or the whole statistics buffer,
// and answers statistics in place; a failing request is read but not answered.
TEST_F(FakeDeviceTest, RequestsAreReadAsTheDriverReadsThem) {
    FakeVexaDevice& device = FakeVexaDevice::instance();
    const int fd = device.deviceFd();
    ASSERT_GE(fd, 0);
    device.setStatsAnswer(0x0102030405060708, 0x1112131415161718, 99);
    Bytes limit = record(VEXA_CMSG_SET_DATA_LIMIT, 24, 64), huge = record(0, 1000, 300);
    Bytes stats = record(VEXA_CMSG_GET_DATA_USAGE, 0, VEXA_STATS_BUF_SIZE);
    const Bytes statsSent = stats;
    EXPECT_EQ(0, ioctl(fd, VEXA_IOCTL_REQUEST, limit.data()));
    EXPECT_EQ(0, ioctl(fd, VEXA_IOCTL_REQUEST, huge.data()));
    EXPECT_EQ(0, ioctl(fd, VEXA_IOCTL_REQUEST, stats.data()));
    device.setIoctlError(EBUSY);
    Bytes failing = record(VEXA_CMSG_GET_DATA_USAGE, 0, VEXA_STATS_BUF_SIZE);
    errno = 0;
    EXPECT_EQ(-1, ioctl(fd, VEXA_IOCTL_REQUEST, failing.data()));
    EXPECT_EQ(EBUSY, errno);
    EXPECT_EQ(statsSent, failing) << "a failed request is not answered";
    device.setIoctlError(0);
    EXPECT_EQ(-1, ioctl(fd, 1, limit.data()));
    EXPECT_EQ(ENOTTY, errno);

    const auto requests = observed().of<fakes::IoctlRecord>();
    ASSERT_EQ(5u, requests.size());
    EXPECT_EQ(prefix(limit, 40), requests[0].bytes);
    EXPECT_EQ(prefix(huge, 16 + VEXA_MAX_PAYLOAD), requests[1].bytes);
    EXPECT_EQ(statsSent, requests[2].bytes) << "the request as sent, before the answer";
    EXPECT_EQ(EBUSY, requests[3].errnum);
    Bytes answered = statsSent;
    const uint32_t len = 99;
    const uint64_t rx = 0x0102030405060708, tx = 0x1112131415161718;
    memcpy(answered.data() + offsetof(vexa_common_hdr_t, data_len), &len, sizeof(len));
    memcpy(answered.data() + offsetof(vexa_data_usage_req_t, rx_bytes), &rx, sizeof(rx));
    memcpy(answered.data() + offsetof(vexa_data_usage_req_t, tx_bytes), &tx, sizeof(tx));
    EXPECT_EQ(answered, stats) << "the answer lands at its offsets and nowhere else";

    int pipeFds[2];
    ASSERT_EQ(0, pipe(pipeFds));
    int pending = -1;
    EXPECT_EQ(0, ioctl(pipeFds[0], FIONREAD, &pending)) << "other descriptors go to libc";
    EXPECT_EQ(0, pending);
    close(pipeFds[0]);
    close(pipeFds[1]);
}

std::string readAll(FILE* file) {
    std::string text;
    char buf[7];
    for (size_t n; (n = fread(buf, 1, sizeof(buf), file)) > 0;) text.append(buf, n);
    fclose(file);
    return text;
}

TEST(ConntrackFilesTest, ContentAbsenceOrTheRealFile) {
    const char* tcpPath = "/proc/sys/net/netfilter/nf_conntrack_tcp_timeout_established";
    const char* udpPath = "/proc/sys/net/netfilter/nf_conntrack_udp_timeout_stream";
    const std::string longer = "  42 and more text than one read takes\n";
    ConntrackFiles::setContent(ConntrackFiles::Proto::kTcp, longer);
    ConntrackFiles::setContent(ConntrackFiles::Proto::kUdp, "");
    FILE* tcp = fopen(tcpPath, "r");
    FILE* udp = fopen(udpPath, "r");
    ASSERT_NE(nullptr, tcp);
    ASSERT_NE(nullptr, udp);
    ConntrackFiles::setContent(ConntrackFiles::Proto::kTcp, "999\n");
    EXPECT_EQ(longer, readAll(tcp)) << "an open stream keeps its content";
    EXPECT_EQ("", readAll(udp));

    ConntrackFiles::setAbsent(ConntrackFiles::Proto::kUdp);
    errno = 0;
    EXPECT_EQ(nullptr, fopen(udpPath, "r"));
    EXPECT_EQ(ENOENT, errno);
    FILE* other = fopen(tcpPath, "r");
    ASSERT_NE(nullptr, other);
    EXPECT_EQ("999\n", readAll(other));

    ConntrackFiles::reset();
    FILE* real = fopen(tcpPath, "r");
    FILE* direct = fdopen(open(tcpPath, O_RDONLY), "r");
    EXPECT_EQ(real == nullptr, direct == nullptr);
    if (real != nullptr && direct != nullptr) {
        EXPECT_EQ(readAll(direct), readAll(real));
    }
}

TEST(PropertiesTest, ValueSetHereOrThePlatformsOrTheDefaultCutToTheLimit) {
    const char* key = "vendor.tetheroffload.test.value";  // set nowhere on a phone either
    const std::string longest(PROPERTY_VALUE_MAX - 1, 'v'), tooLong(PROPERTY_VALUE_MAX + 10, 'w');
    struct Case {
        const char* stored;  // nothing set when null
        const char* defaultValue;
        std::string expected;
    } const cases[] = {
            {"userdebug", "user", "userdebug"},
            {nullptr, "user", "user"},
            {"", "user", "user"},  // empty reads as unset
            {nullptr, nullptr, ""},
            {longest.c_str(), nullptr, longest},
            {tooLong.c_str(), nullptr, tooLong.substr(0, PROPERTY_VALUE_MAX - 1)},
            {nullptr, tooLong.c_str(), tooLong.substr(0, PROPERTY_VALUE_MAX - 1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        fakes::Properties::clear();
        if (c.stored != nullptr) fakes::Properties::set(key, c.stored);
        char value[PROPERTY_VALUE_MAX];
        memset(value, 'x', sizeof(value));
        EXPECT_EQ(static_cast<int>(c.expected.size()), property_get(key, value, c.defaultValue));
        EXPECT_EQ(c.expected, std::string(value));
    }
    fakes::Properties::clear();
}

TEST(StandardErrorTest, ClosedMakesWritesFailAndOpenRestoresThem) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(7, fprintf(stderr, "before|"));
    fakes::StandardError::setClosed(true);
    fakes::StandardError::setClosed(true);  // twice: the original must still come back
    EXPECT_LT(fprintf(stderr, "lost|"), 0);
    fakes::StandardError::setClosed(false);
    EXPECT_FALSE(ferror(stderr)) << "the error flag is cleared when reopened";
    EXPECT_EQ(5, fprintf(stderr, "after"));
    EXPECT_EQ("before|after", testing::internal::GetCapturedStderr());
}

TEST(PeersTest, AgentModes) {
    struct Case {
        FakeAgent::Mode mode;
        bool found;
        bool callOk;
    } const cases[] = {{FakeAgent::Mode::kAbsent, false, false},
                       {FakeAgent::Mode::kFailing, true, false},
                       {FakeAgent::Mode::kUp, true, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.mode));
        observed().clear();
        FakeAgent::setMode(c.mode);
        sp<IPlexd> agent = IPlexd::getService("default", false);
        ASSERT_EQ(c.found, agent != nullptr);
        EXPECT_EQ(nullptr, IPlexd::getService("other", false));
        if (!agent) continue;
        EXPECT_EQ(c.callOk, agent->runCmd("plexd bridge delif mdbr0 wanif-lan ").isOk());
        const auto records = observed().of<fakes::AgentRecord>();
        ASSERT_EQ(1u, records.size());
        EXPECT_EQ("plexd bridge delif mdbr0 wanif-lan ", records[0].cmd);
        EXPECT_EQ(c.callOk, records[0].ok);
    }
}

// A dead framework fails every call in transport, its interface chain included, so that a cast
// to 1.1 fails as it would over binder.
TEST(PeersTest, DeadFrameworkFailsEveryCallAndEveryCast) {
    sp<V1_0::ITetheringOffloadCallback> cb10 =
            FakeFramework::makeCallback(FakeFramework::Version::k1_0);
    sp<V1_0::ITetheringOffloadCallback> cb11 =
            FakeFramework::makeCallback(FakeFramework::Version::k1_1);
    EXPECT_EQ(nullptr, V1_1::ITetheringOffloadCallback::castFrom(cb10).withDefault(nullptr));
    sp<V1_1::ITetheringOffloadCallback> cb =
            V1_1::ITetheringOffloadCallback::castFrom(cb11).withDefault(nullptr);
    ASSERT_NE(nullptr, cb);
    V1_0::NatTimeoutUpdate update{{"192.168.43.2", 80}, {"8.8.8.8", 53}, V1_0::NetworkProtocol::UDP};
    for (bool alive : {false, true}) {
        FakeFramework::setAlive(alive);
        observed().clear();
        EXPECT_EQ(alive, V1_1::ITetheringOffloadCallback::castFrom(cb11, true).isOk());
        android::hardware::Return<void> calls[] = {
                cb->onEvent(V1_0::OffloadCallbackEvent::OFFLOAD_STARTED),
                cb->onEvent_1_1(V1_1::OffloadCallbackEvent::OFFLOAD_WARNING_REACHED),
                cb->updateTimeout(update)};
        for (auto& ret : calls) EXPECT_EQ(!alive, ret.isDeadObject());
        const auto records = observed().of<fakes::CallbackRecord>();
        ASSERT_EQ(3u, records.size());
        for (const auto& r : records) EXPECT_EQ(alive, r.ok) << r.op;
        EXPECT_EQ("192.168.43.2", records[2].src.addr);
        EXPECT_EQ(53, records[2].dst.port);
        EXPECT_EQ(17u, records[2].proto);
    }
}

}  // namespace
