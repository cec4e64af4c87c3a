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

// The emulated driver's side of open and ioctl: what it reads from each request, what it writes
// back, and how it fails.

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

#include "datapath/vexa_protocol.h"
#include "hostplatform/ModemEmulator.h"
#include "hostplatform/Recorder.h"

namespace hostplatform {
namespace {

// A request buffer of `size` bytes: the header, then a pattern that tells each byte apart.
std::vector<uint8_t> requestBuffer(uint32_t app, uint32_t msg, uint32_t dataLen, size_t size) {
    std::vector<uint8_t> buf(size);
    for (size_t i = 0; i < size; ++i) buf[i] = static_cast<uint8_t>(i * 7 + 1);
    const vexa_common_hdr_t hdr = {VEXA_MCODE, VEXA_REQ_STATUS, app, msg, dataLen};
    memcpy(buf.data(), &hdr, sizeof(hdr));
    return buf;
}

template <typename T>
T at(const std::vector<uint8_t>& buf, size_t offset) {
    T value;
    memcpy(&value, buf.data() + offset, sizeof(value));
    return value;
}

class ModemRequestTest : public testing::Test {
protected:
    void SetUp() override {
        ModemEmulator::instance().restoreDefaults();
        if (sFd < 0) sFd = open(VEXA_DEV_PATH, O_RDWR);
        ASSERT_GE(sFd, 0);
        Recorder::instance().clear();
    }

    IoctlRecord send(std::vector<uint8_t>& buf, int* ret, int* errnum) {
        errno = 0;
        *ret = ioctl(sFd, VEXA_IOCTL_REQUEST, buf.data());
        *errnum = errno;
        const std::vector<IoctlRecord> records = Recorder::instance().all<IoctlRecord>();
        EXPECT_EQ(1u, records.size());
        return records.empty() ? IoctlRecord{} : records.back();
    }

    static int sFd;
};

int ModemRequestTest::sFd = -1;

struct RequestCase {
    const char* name;
    uint32_t app;
    uint32_t msg;
    uint32_t dataLen;
    size_t bufferSize;
    size_t expectedRead;
};

TEST_F(ModemRequestTest, DriverReadsHeaderAndDataLenBytesOfEveryKind) {
    const RequestCase cases[] = {
            {"enable", 255, VEXA_CMSG_ENABLE, 0, 16, 16},
            {"disable", 255, VEXA_CMSG_DISABLE, 0, 16, 16},
            {"activate", 1, VEXA_CMSG_ACTIVATE, 32, 48, 48},
            {"deactivate", 0, VEXA_CMSG_DEACTIVATE, 0, 16, 16},
            {"statistics", 255, VEXA_CMSG_GET_DATA_USAGE, 0, 256, 256},
            {"statistics with odd data_len", 255, VEXA_CMSG_GET_DATA_USAGE, 999, 256, 256},
            {"data limit", 255, VEXA_CMSG_SET_DATA_LIMIT, 24, 40, 40},
            {"timeouts", 255, VEXA_CMSG_SET_CT_TIMEOUT, 8, 24, 24},
            {"warning and limit", 255, VEXA_CMSG_SET_WARNING_AND_LIMIT, 32, 48, 48},
            {"data_len beyond 256", 255, VEXA_CMSG_SET_DATA_LIMIT, 300, 316, 272},
    };
    for (const RequestCase& c : cases) {
        SCOPED_TRACE(c.name);
        Recorder::instance().clear();
        std::vector<uint8_t> buf = requestBuffer(c.app, c.msg, c.dataLen, c.bufferSize);
        const std::vector<uint8_t> sent = buf;
        int ret, errnum;
        const IoctlRecord record = send(buf, &ret, &errnum);
        EXPECT_EQ(0, ret);
        EXPECT_EQ(sFd, record.fd);
        EXPECT_EQ(0ul, record.req);
        EXPECT_EQ(0, record.ret);
        EXPECT_EQ(std::vector<uint8_t>(sent.begin(), sent.begin() + c.expectedRead), record.bytes);
        if (c.msg != VEXA_CMSG_GET_DATA_USAGE) {
            EXPECT_EQ(sent, buf) << "request was written to";
        }
    }
}

TEST_F(ModemRequestTest, StatisticsAnswerLandsAtItsOffsetsAndNowhereElse) {
    struct Answer {
        uint64_t rx, tx;
        uint32_t dataLen;
    };
    const Answer defaults = {0, 0, 128};
    const Answer chosen = {0x1122334455667788ull, 0x99aabbccddeeff00ull, 64};
    for (const Answer& answer : {defaults, chosen}) {
        SCOPED_TRACE(answer.dataLen);
        Recorder::instance().clear();
        if (answer.dataLen != 128) {
            ModemEmulator::instance().setStatsAnswer(answer.rx, answer.tx, answer.dataLen);
        }
        std::vector<uint8_t> buf = requestBuffer(255, VEXA_CMSG_GET_DATA_USAGE, 0, 256);
        const std::vector<uint8_t> sent = buf;
        int ret, errnum;
        EXPECT_EQ(sent, send(buf, &ret, &errnum).bytes) << "recorded before the answer";
        ASSERT_EQ(0, ret);
        EXPECT_EQ(answer.dataLen, at<uint32_t>(buf, 12));
        EXPECT_EQ(answer.rx, at<uint64_t>(buf, 16));
        EXPECT_EQ(answer.tx, at<uint64_t>(buf, 80));
        for (size_t i : {size_t{11}, size_t{24}, size_t{79}, size_t{88}, size_t{255}}) {
            EXPECT_EQ(sent[i], buf[i]) << "byte " << i;
        }
    }
}

TEST_F(ModemRequestTest, ChosenErrorFailsAfterTheDriverReadTheRequest) {
    ModemEmulator::instance().setIoctlError(EIO);
    std::vector<uint8_t> buf = requestBuffer(255, VEXA_CMSG_GET_DATA_USAGE, 0, 256);
    const std::vector<uint8_t> sent = buf;
    int ret, errnum;
    const IoctlRecord record = send(buf, &ret, &errnum);
    EXPECT_EQ(-1, ret);
    EXPECT_EQ(EIO, errnum);
    EXPECT_EQ(-1, record.ret);
    EXPECT_EQ(EIO, record.errnum);
    EXPECT_EQ(sent, record.bytes);
    EXPECT_EQ(sent, buf) << "a failed statistics request gets no answer";
}

TEST_F(ModemRequestTest, OtherRequestNumberIsRejectedUnread) {
    std::vector<uint8_t> buf = requestBuffer(255, VEXA_CMSG_ENABLE, 0, 16);
    EXPECT_EQ(-1, ioctl(sFd, 0x5401, buf.data()));
    EXPECT_EQ(ENOTTY, errno);
    const std::vector<IoctlRecord> records = Recorder::instance().all<IoctlRecord>();
    ASSERT_EQ(1u, records.size());
    EXPECT_EQ(0x5401ul, records[0].req);
    EXPECT_TRUE(records[0].bytes.empty());
}

TEST_F(ModemRequestTest, OpenRecordsPresenceAndAbsence) {
    Recorder::instance().clear();
    ModemEmulator::instance().setDevicePresent(false);
    errno = 0;
    EXPECT_EQ(-1, open(VEXA_DEV_PATH, O_RDWR));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(-1, open64(VEXA_DEV_PATH, O_RDWR));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(sFd, ModemEmulator::instance().deviceFd()) << "a failed open keeps the device";

    ModemEmulator::instance().setDevicePresent(true);
    const int fd = open(VEXA_DEV_PATH, O_RDWR);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(fd, ModemEmulator::instance().deviceFd());
    sFd = fd;

    const std::vector<OpenRecord> opens = Recorder::instance().all<OpenRecord>();
    ASSERT_EQ(3u, opens.size());
    EXPECT_EQ(VEXA_DEV_PATH, opens[0].path);
    EXPECT_EQ(-1, opens[1].fd);
    EXPECT_EQ(ENOENT, opens[1].errnum);
    EXPECT_EQ(VEXA_DEV_PATH, opens[2].path);
    EXPECT_EQ(fd, opens[2].fd);
    EXPECT_EQ(0, opens[2].errnum);
}

TEST_F(ModemRequestTest, OtherDescriptorsAndPathsGoToLibc) {
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    ASSERT_EQ(3, write(fds[1], "abc", 3));
    int pending = 0;
    EXPECT_EQ(0, ioctl(fds[0], FIONREAD, &pending));
    EXPECT_EQ(3, pending);
    char buf[8] = {};
    EXPECT_EQ(3, read(fds[0], buf, sizeof(buf)));
    EXPECT_STREQ("abc", buf);
    close(fds[0]);
    close(fds[1]);

    const int null = open("/dev/null", O_RDONLY);
    EXPECT_GE(null, 0);
    close(null);
    EXPECT_EQ(-1, open("/dev/vexa0", O_RDWR));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_TRUE(Recorder::instance().records().empty());
}

}  // namespace
}  // namespace hostplatform
