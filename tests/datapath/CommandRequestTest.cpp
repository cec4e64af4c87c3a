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

// The control requests as the driver receives them, and every way a command can fail.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/ProcFiles.h>
#include <hostplatform/Recorder.h>
#include <string.h>

#include <functional>
#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "tests/datapath/RecordedLog.h"

using datapath_test::error;
using datapath_test::info;
using datapath_test::logLines;
using datapath_test::logLinesAt;
using hostplatform::IoctlRecord;
using hostplatform::ModemEmulator;
using hostplatform::ProcFiles;
using hostplatform::Recorder;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAreArray;

namespace {

template <typename T>
T valueAt(const std::vector<uint8_t>& bytes, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= bytes.size()) memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

std::vector<uint8_t> nameField(const std::string& name) {
    std::vector<uint8_t> field(16, 0);
    memcpy(field.data(), name.data(), name.size());
    return field;
}

std::vector<uint8_t> slice(const std::vector<uint8_t>& bytes, size_t offset, size_t size) {
    if (offset + size > bytes.size()) return {};
    return std::vector<uint8_t>(bytes.begin() + offset, bytes.begin() + offset + size);
}

char gUp[] = "wanif0";
char gDown[] = "mdbr0";

struct Command {
    const char* name;
    std::function<int(OffloadEventHandle*)> run;
    size_t size;
    uint32_t app;
    uint32_t msg;
    uint32_t dataLen;
    const char* okLine;
    const char* ioctlFailLine;  // with errno 16
};

const std::vector<Command>& allCommands() {
    static const std::vector<Command> commands = {
            {"enable",
             [](OffloadEventHandle* h) { return h->sendCmd2MD(VEXA_APP_TYPE_ALL, VEXA_CMSG_ENABLE); },
             16, 255, 0, 0, "sendCmd2MD (app: 255 cmd: 0) ok \n",
             "sendCmd2MD (app: 255 cmd: 0)  fail errno: 16 \n"},
            {"deactivate wifi",
             [](OffloadEventHandle* h) {
                 return h->sendCmd2MD(VEXA_APP_TYPE_WH, VEXA_CMSG_DEACTIVATE);
             },
             16, 1, 3, 0, "sendCmd2MD (app: 1 cmd: 3) ok \n",
             "sendCmd2MD (app: 1 cmd: 3)  fail errno: 16 \n"},
            {"activate usb",
             [](OffloadEventHandle* h) { return h->activeVexa(VEXA_APP_TYPE_USB, gUp, gDown); }, 48,
             0, 2, 32, "activeVexa (app: 0 ) ok \n", "activeVexa (app: 0 )  fail errno: 16 \n"},
            {"statistics",
             [](OffloadEventHandle* h) {
                 tether_offload_stats_t stats = {};
                 return h->getDataUsage(VEXA_APP_TYPE_ALL, &stats);
             },
             256, 255, 4, 0, "getDataUsage (app: 255 ) ok \n",
             "getDataUsage (app: 255 )  fail errno: 16 \n"},
            {"limit",
             [](OffloadEventHandle* h) { return h->setDataLimit(VEXA_APP_TYPE_ALL, gUp, 5000); },
             40, 255, 5, 24, "setDataLimit (app: 255 ) ok \n",
             "setDataLimit (app: 255 )  fail errno: 16 \n"},
            {"timeouts",
             [](OffloadEventHandle* h) { return h->sendTimeoutValue(VEXA_APP_TYPE_ALL); }, 24, 255,
             6, 8, "sendTimeoutValue (app: 255 ) ok \n",
             "sendTimeoutValue (app: 255 )  fail errno: 16 \n"},
            {"warning and limit",
             [](OffloadEventHandle* h) {
                 return h->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, gUp, 100, 200);
             },
             48, 255, 7, 32, "setDataWarningAndLimit (app: 255 ) ok \n",
             "setDataWarningAndLimit (app: 255 )  fail errno: 16 \n"},
    };
    return commands;
}

class CommandTest : public testing::Test {
protected:
    void SetUp() override {
        ModemEmulator::instance().setIoctlError(0);
        ModemEmulator::instance().setStatsAnswer(0, 0);
        ProcFiles::instance().setContent(ProcFiles::Proto::kTcp, "7200\n");
        ProcFiles::instance().setContent(ProcFiles::Proto::kUdp, "120\n");
        mHandle = OffloadEventHandle::getInstance();
        ASSERT_NE(mHandle, nullptr);
        Recorder::instance().clear();
    }

    void TearDown() override {
        ModemEmulator::instance().setIoctlError(0);
        ModemEmulator::instance().setStatsAnswer(0, 0);
        ProcFiles::instance().reset();
    }

    // The one request the last command sent.
    std::vector<uint8_t> onlyRequest() {
        auto ioctls = Recorder::instance().all<IoctlRecord>();
        EXPECT_EQ(ioctls.size(), 1u);
        return ioctls.empty() ? std::vector<uint8_t>{} : ioctls.back().bytes;
    }

    OffloadEventHandle* mHandle = nullptr;
};

TEST_F(CommandTest, EveryRequestHasTheCommonHeaderAndItsSize) {
    for (const Command& command : allCommands()) {
        SCOPED_TRACE(command.name);
        Recorder::instance().clear();
        EXPECT_EQ(command.run(mHandle), 0);
        auto ioctls = Recorder::instance().all<IoctlRecord>();
        ASSERT_EQ(ioctls.size(), 1u);
        const IoctlRecord& request = ioctls[0];
        EXPECT_EQ(request.fd, ModemEmulator::instance().deviceFd());
        EXPECT_EQ(request.req, 0u);
        ASSERT_EQ(request.bytes.size(), command.size);
        EXPECT_THAT(slice(request.bytes, 0, 4), ElementsAre(0x54, 0x24, 0x02, 0x00));
        EXPECT_EQ(valueAt<uint32_t>(request.bytes, 4), command.app);
        EXPECT_EQ(valueAt<uint32_t>(request.bytes, 8), command.msg);
        EXPECT_EQ(valueAt<uint32_t>(request.bytes, 12), command.dataLen);
        EXPECT_THAT(logLines(), Contains(info(command.okLine)));
        EXPECT_THAT(logLinesAt(ANDROID_LOG_ERROR), IsEmpty());
    }
}

TEST_F(CommandTest, WifiActivationCarriesBothNamesZeroFilled) {
    char up[16] = "wanif0";
    char down[16] = "ap0";
    ASSERT_EQ(mHandle->activeVexa(VEXA_APP_TYPE_WH, up, down), 0);
    std::vector<uint8_t> expected = {0x54, 0x24, 2, 0, 1, 0, 0, 0, 2, 0, 0, 0, 32, 0, 0, 0};
    for (uint8_t b : nameField("wanif0")) expected.push_back(b);
    for (uint8_t b : nameField("ap0")) expected.push_back(b);
    EXPECT_THAT(onlyRequest(), ElementsAreArray(expected));
}

TEST_F(CommandTest, NamesAreCutToFifteenCharactersAndANul) {
    char fifteen[] = "abcdefghijklmno";
    char twenty[] = "ABCDEFGHIJKLMNOPQRST";
    struct Case {
        const char* what;
        std::function<int()> run;
        std::vector<size_t> fieldOffsets;
    };
    const std::vector<Case> cases = {
            {"activate",
             [&] { return mHandle->activeVexa(VEXA_APP_TYPE_USB, twenty, fifteen); },
             {16, 32}},
            {"limit", [&] { return mHandle->setDataLimit(VEXA_APP_TYPE_ALL, twenty, 1); }, {16}},
            {"warning",
             [&] { return mHandle->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, twenty, 1, 2); },
             {16}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Recorder::instance().clear();
        ASSERT_EQ(c.run(), 0);
        std::vector<uint8_t> request = onlyRequest();
        EXPECT_THAT(slice(request, c.fieldOffsets[0], 16),
                    ElementsAreArray(nameField("ABCDEFGHIJKLMNO")));
        if (c.fieldOffsets.size() > 1) {
            EXPECT_THAT(slice(request, c.fieldOffsets[1], 16),
                        ElementsAreArray(nameField("abcdefghijklmno")));
        }
    }
}

TEST_F(CommandTest, QuotasCarryTheLimitBeforeTheWarning) {
    ASSERT_EQ(mHandle->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, gUp, 100, 200), 0);
    std::vector<uint8_t> request = onlyRequest();
    EXPECT_EQ(valueAt<uint64_t>(request, 32), 200u);
    EXPECT_EQ(valueAt<uint64_t>(request, 40), 100u);

    Recorder::instance().clear();
    ASSERT_EQ(mHandle->setDataLimit(VEXA_APP_TYPE_ALL, gUp, 0x1122334455667788ull), 0);
    request = onlyRequest();
    EXPECT_THAT(slice(request, 16, 16), ElementsAreArray(nameField("wanif0")));
    EXPECT_EQ(valueAt<uint64_t>(request, 32), 0x1122334455667788ull);
}

TEST_F(CommandTest, StatisticsAreReadFromTheAnswer) {
    ModemEmulator::instance().setStatsAnswer(0x0102030405060708ull, 0x1112131415161718ull);
    tether_offload_stats_t stats = {};
    ASSERT_EQ(mHandle->getDataUsage(VEXA_APP_TYPE_ALL, &stats), 0);
    EXPECT_EQ(stats.rx_bytes, 0x0102030405060708ull);
    EXPECT_EQ(stats.tx_bytes, 0x1112131415161718ull);
    // The driver saw a 256-byte buffer with an empty payload.
    std::vector<uint8_t> request = onlyRequest();
    ASSERT_EQ(request.size(), 256u);
    EXPECT_EQ(valueAt<uint32_t>(request, 12), 0u);
    EXPECT_THAT(slice(request, 16, 240), ElementsAreArray(std::vector<uint8_t>(240, 0)));
}

TEST_F(CommandTest, StatisticsAnswerOfTheWrongLengthLeavesTheRecordUntouched) {
    for (uint32_t len : {0u, 64u, 120u, 127u, 136u}) {
        SCOPED_TRACE(len);
        Recorder::instance().clear();
        ModemEmulator::instance().setStatsAnswer(1000, 2000, len);
        tether_offload_stats_t stats = {7, 9};
        EXPECT_EQ(mHandle->getDataUsage(VEXA_APP_TYPE_ALL, &stats), -1);
        EXPECT_EQ(stats.rx_bytes, 7u);
        EXPECT_EQ(stats.tx_bytes, 9u);
        EXPECT_THAT(logLines(), Contains(info("getDataUsage : response length is not right \n")));
        EXPECT_THAT(logLines(), Not(Contains(info("getDataUsage (app: 255 ) ok \n"))));
    }
}

TEST_F(CommandTest, IoctlFailureIsLoggedWithAppAndErrno) {
    ModemEmulator::instance().setIoctlError(EBUSY);
    for (const Command& command : allCommands()) {
        SCOPED_TRACE(command.name);
        Recorder::instance().clear();
        EXPECT_EQ(command.run(mHandle), -1);
        EXPECT_THAT(logLines(), Contains(error(command.ioctlFailLine)));
        EXPECT_THAT(logLines(), Not(Contains(info(command.okLine))));
    }
    tether_offload_stats_t stats = {7, 9};
    EXPECT_EQ(mHandle->getDataUsage(VEXA_APP_TYPE_ALL, &stats), -1);
    EXPECT_EQ(stats.rx_bytes, 7u);
    EXPECT_EQ(stats.tx_bytes, 9u);
}

TEST_F(CommandTest, NullNamesSendNothing) {
    struct Case {
        std::function<int()> run;
        const char* line;
    };
    const std::vector<Case> cases = {
            {[&] { return mHandle->activeVexa(VEXA_APP_TYPE_USB, gUp, nullptr); },
             "activeVexa: interface is null \n"},
            {[&] { return mHandle->activeVexa(VEXA_APP_TYPE_WH, nullptr, gDown); },
             "activeVexa: interface is null \n"},
            {[&] { return mHandle->setDataLimit(VEXA_APP_TYPE_ALL, nullptr, 1); },
             "setDataLimit: interface is null \n"},
            {[&] { return mHandle->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, nullptr, 1, 2); },
             "setDataWarningAndLimit: interface is null \n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        Recorder::instance().clear();
        EXPECT_EQ(c.run(), -1);
        EXPECT_THAT(logLines(), ElementsAre(error(c.line)));
        EXPECT_THAT(Recorder::instance().all<IoctlRecord>(), IsEmpty());
    }
}

TEST_F(CommandTest, EachCommandLooksUpTheOneInstance) {
    ASSERT_EQ(mHandle->sendCmd2MD(VEXA_APP_TYPE_ALL, VEXA_CMSG_ENABLE), 0);
    ASSERT_EQ(mHandle->sendCmd2MD(VEXA_APP_TYPE_ALL, VEXA_CMSG_DISABLE), 0);
    const std::string line = " GetInstance p=" + datapath_test::pointerText(mHandle) + "\n";
    int lookups = 0;
    for (const auto& log : logLines()) {
        if (log.second.find("GetInstance") == std::string::npos) continue;
        EXPECT_EQ(log, info(line));
        ++lookups;
    }
    EXPECT_EQ(lookups, 2);
    EXPECT_THAT(logLines(), Not(Contains(error("open dev ++ g-fd =-1"))));
}

struct ConntrackCase {
    const char* what;
    const char* tcpFile;  // null: no such file
    const char* udpFile;
    int32_t tcp;
    int32_t udp;
    std::vector<const char*> errors;
};

const ConntrackCase kConntrackCases[] = {
        {"values with newlines", "600\n", "60\n", 600, 60, {}},
        {"missing files",
         nullptr,
         nullptr,
         432000,
         180,
         {"open proc (tcp) item fail err: 2", "open proc (udp) item fail err: 2"}},
        {"zero",
         "0\n",
         "0",
         432000,
         180,
         {" tcp timeout atoi fail ,ret = 0", " udp timeout atoi fail ,ret = 0"}},
        {"text",
         "abc\n",
         "x60",
         432000,
         180,
         {" tcp timeout atoi fail ,ret = 0", " udp timeout atoi fail ,ret = 0"}},
        {"negative and trailing words",
         "-5\n",
         "  90 seconds",
         432000,
         90,
         {" tcp timeout atoi fail ,ret = -5"}},
        {"empty tcp file", "", "30", 432000, 30, {" tcp timeout atoi fail ,ret = 0"}},
};

void setProcFile(ProcFiles::Proto proto, const char* content) {
    if (content == nullptr) {
        ProcFiles::instance().setAbsent(proto);
    } else {
        ProcFiles::instance().setContent(proto, content);
    }
}

TEST_F(CommandTest, TimeoutsComeFromTheConntrackFilesWithDefaults) {
    for (const ConntrackCase& c : kConntrackCases) {
        SCOPED_TRACE(c.what);
        setProcFile(ProcFiles::Proto::kTcp, c.tcpFile);
        setProcFile(ProcFiles::Proto::kUdp, c.udpFile);
        Recorder::instance().clear();
        ASSERT_EQ(mHandle->sendTimeoutValue(VEXA_APP_TYPE_ALL), 0);
        std::vector<uint8_t> request = onlyRequest();
        EXPECT_EQ(valueAt<int32_t>(request, 16), c.udp);
        EXPECT_EQ(valueAt<int32_t>(request, 20), c.tcp);
        EXPECT_THAT(logLines(),
                    Contains(info("sendTimeoutValue: timeout tcp " + std::to_string(c.tcp) +
                                  " ,udp " + std::to_string(c.udp) + " \n")));
        std::vector<datapath_test::LogLine> errors;
        for (const char* line : c.errors) errors.push_back(error(line));
        EXPECT_THAT(logLinesAt(ANDROID_LOG_ERROR), UnorderedElementsAreArray(errors));
    }
}

TEST_F(CommandTest, TimeoutsAreReadAgainForEveryRequest) {
    ASSERT_EQ(mHandle->sendTimeoutValue(VEXA_APP_TYPE_ALL), 0);
    EXPECT_EQ(valueAt<int32_t>(onlyRequest(), 20), 7200);
    ProcFiles::instance().setContent(ProcFiles::Proto::kTcp, "3600\n");
    Recorder::instance().clear();
    ASSERT_EQ(mHandle->sendTimeoutValue(VEXA_APP_TYPE_ALL), 0);
    EXPECT_EQ(valueAt<int32_t>(onlyRequest(), 20), 3600);
}

}  // namespace
