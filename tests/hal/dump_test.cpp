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

// debug(): the report of the state that `lshal debug` shows, written to the descriptor it is
// given, with nothing logged, sent or changed.

#include <cutils/native_handle.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "fakes/FakeVexaDevice.h"
#include "tests/support/TestSupport.h"

using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using fakes::FakeFramework;
using testsupport::Reply;
using testsupport::ResultCallback;

namespace {

// A native handle whose first descriptor is a memory file the test reads back; the others are
// /dev/null.
class DumpTarget {
public:
    explicit DumpTarget(int fds) : mHandle(native_handle_create(fds, 0)) {
        for (int i = 0; i < fds; ++i) {
            mHandle->data[i] = i == 0 ? memfd_create("dump", MFD_CLOEXEC)
                                      : open("/dev/null", O_WRONLY | O_CLOEXEC);
        }
    }
    ~DumpTarget() {
        native_handle_close(mHandle);
        native_handle_delete(mHandle);
    }
    DumpTarget(const DumpTarget&) = delete;
    DumpTarget& operator=(const DumpTarget&) = delete;

    hidl_handle handle() const { return hidl_handle(mHandle); }

    std::string written() const {
        std::string text(4096, '\0');
        ssize_t n = pread(mHandle->data[0], &text[0], text.size(), 0);
        text.resize(n > 0 ? static_cast<size_t>(n) : 0);
        return text;
    }

private:
    native_handle_t* mHandle;
};

std::string report(const std::string& initialised, const std::string& upstream,
                   const std::string& usb, const std::string& wifi, bool usbActive, bool wifiActive,
                   bool deviceOpen) {
    return "TetherOffloadHal\n"
           "  initialised: " +
           initialised + "\n" + "  upstream: \"" + upstream + "\"\n" + "  USB downstream: \"" +
           usb + "\"\n" + "  Wi-Fi downstream: \"" + wifi + "\"\n" +
           "  USB offload: " + (usbActive ? "active" : "inactive") + "\n" +
           "  Wi-Fi offload: " + (wifiActive ? "active" : "inactive") + "\n" +
           "  data-path device: " + (deviceOpen ? "open" : "not open") + "\n" +
           "  event thread: started\n";
}

class DumpTest : public testsupport::HalTest {
protected:
    // The thread logs its lookup as it starts; once it waits in read() no test sees that line.
    static void SetUpTestSuite() {
        OffloadEventHandle::createEventThread();
        ASSERT_TRUE(fakes::FakeVexaDevice::instance().waitReaderBlocked());
    }

    std::string dump() {
        DumpTarget target(1);
        EXPECT_TRUE(mHal->debug(target.handle(), hidl_vec<hidl_string>{"-a"}).isOk());
        return target.written();
    }

    Reply up(const std::string& iface) {
        return testsupport::replyOf([&](ResultCallback r) {
            return mHal->setUpstreamParameters(iface, "10.0.0.2", "10.0.0.1", {"fe80::1"}, r);
        });
    }
    Reply add(const std::string& iface, const std::string& prefix) {
        return testsupport::replyOf(
                [&](ResultCallback r) { return mHal->addDownstream(iface, prefix, r); });
    }
    Reply remove(const std::string& iface, const std::string& prefix) {
        return testsupport::replyOf(
                [&](ResultCallback r) { return mHal->removeDownstream(iface, prefix, r); });
    }
};

TEST_F(DumpTest, ReportsTheStateEachCallLeaves) {
    const std::string initial = dump();
    EXPECT_NE(std::string::npos, initial.find("  initialised: no\n")) << initial;

    init(FakeFramework::Version::k1_0);
    EXPECT_EQ(report("yes, callback 1.0", "", "", "", false, false, true), dump());
    stop();
    EXPECT_EQ(report("no", "", "", "", false, false, true), dump());

    init(FakeFramework::Version::k1_1);
    add("mdbr1", "192.168.42.0/24");
    EXPECT_EQ(report("yes, callback 1.1", "", "mdbr0", "", false, false, true), dump());
    up("wanif0");
    EXPECT_EQ(report("yes, callback 1.1", "wanif0", "mdbr0", "", true, false, true), dump());
    add("ap0", "192.168.43.0/24");
    EXPECT_EQ(report("yes, callback 1.1", "wanif0", "mdbr0", "ap0", true, true, true), dump());
    up("wlan0");
    EXPECT_EQ(report("yes, callback 1.1", "wlan0", "mdbr0", "ap0", false, true, true), dump());
    remove("ap7", "192.168.43.0/24");
    EXPECT_EQ(report("yes, callback 1.1", "wlan0", "mdbr0", "", false, false, true), dump());
    stop();
    EXPECT_EQ(report("no", "", "", "", false, false, true), dump());
}

TEST_F(DumpTest, LogsNothingSendsNothingAndChangesNothing) {
    init(FakeFramework::Version::k1_1);
    up("wanif0");
    add("mdbr0", "192.168.42.0/24");
    const auto logs = testsupport::logLines();
    const auto requests = testsupport::deviceRequests();
    const auto commands = testsupport::agentCommands();
    const std::string first = dump();
    EXPECT_EQ(first, dump());
    EXPECT_EQ(logs, testsupport::logLines());
    EXPECT_EQ(requests, testsupport::deviceRequests());
    EXPECT_EQ(commands, testsupport::agentCommands());
}

TEST_F(DumpTest, WritesToTheFirstDescriptorAndNowhereWithout) {
    DumpTarget two(2);
    EXPECT_TRUE(mHal->debug(two.handle(), {}).isOk());
    EXPECT_EQ(dump(), two.written());

    DumpTarget none(0);
    EXPECT_TRUE(mHal->debug(none.handle(), {}).isOk());
    EXPECT_TRUE(mHal->debug(hidl_handle(), {}).isOk());
    EXPECT_TRUE(testsupport::logLines().empty());
}

TEST_F(DumpTest, AReaderThatHasGoneCostsNothing) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    close(ends[0]);
    native_handle_t* handle = native_handle_create(1, 0);
    handle->data[0] = ends[1];
    // Without SIGPIPE blocked, as main blocks it, the write would end the test program.
    sigset_t pipeSignal;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    ASSERT_EQ(0, pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr));
    EXPECT_TRUE(mHal->debug(hidl_handle(handle), {}).isOk());
    EXPECT_TRUE(testsupport::logLines().empty());
    native_handle_close(handle);
    native_handle_delete(handle);
}

}  // namespace
