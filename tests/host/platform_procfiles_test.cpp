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

// fopen of the two conntrack files: a content of our own, no file at all, or the real file; and
// every other path untouched.

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "hostplatform/ProcFiles.h"

namespace hostplatform {
namespace {

using Proto = ProcFiles::Proto;

// Reads a stream to its end the way the service does, with fread, then closes it.
std::string readAll(FILE* file) {
    std::string text;
    char buf[7];  // smaller than most contents, so that reads continue where they stopped
    size_t n;
    while ((n = fread(buf, 1, sizeof(buf), file)) > 0) text.append(buf, n);
    EXPECT_TRUE(feof(file));
    EXPECT_EQ(0, fclose(file));
    return text;
}

// The file as libc sees it, bypassing fopen.
std::string readDirectly(const char* path) {
    const int fd = open(path, O_RDONLY);
    if (fd < 0) return "";
    std::string text;
    char buf[64];
    ssize_t n;
    while ((n = read(fd, buf, sizeof(buf))) > 0) text.append(buf, n);
    close(fd);
    return text;
}

class ProcFilesTest : public testing::Test {
protected:
    void TearDown() override { ProcFiles::instance().reset(); }
};

TEST_F(ProcFilesTest, ContentIsReadBackExactly) {
    const std::string contents[] = {"600\n", "", "  42 and more text than one read takes\n"};
    for (const std::string& content : contents) {
        SCOPED_TRACE(content);
        ProcFiles::instance().setContent(Proto::kTcp, content);
        ProcFiles::instance().setContent(Proto::kUdp, content + "udp");
        FILE* tcp = fopen(ProcFiles::kTcpPath, "r");
        FILE* udp = fopen64(ProcFiles::kUdpPath, "r");
        ASSERT_NE(nullptr, tcp);
        ASSERT_NE(nullptr, udp);
        EXPECT_EQ(content, readAll(tcp));
        EXPECT_EQ(content + "udp", readAll(udp));
    }
}

TEST_F(ProcFilesTest, StreamKeepsItsContentWhenTheSettingChanges) {
    ProcFiles::instance().setContent(Proto::kUdp, "60\n");
    FILE* udp = fopen(ProcFiles::kUdpPath, "r");
    ASSERT_NE(nullptr, udp);
    ProcFiles::instance().setContent(Proto::kUdp, "999999\n");
    EXPECT_EQ("60\n", readAll(udp));
}

TEST_F(ProcFilesTest, AbsentFileFailsWithEnoent) {
    ProcFiles::instance().setAbsent(Proto::kUdp);
    ProcFiles::instance().setContent(Proto::kTcp, "600\n");
    errno = 0;
    EXPECT_EQ(nullptr, fopen(ProcFiles::kUdpPath, "r"));
    EXPECT_EQ(ENOENT, errno);
    errno = 0;
    EXPECT_EQ(nullptr, fopen64(ProcFiles::kUdpPath, "r"));
    EXPECT_EQ(ENOENT, errno);
    FILE* tcp = fopen(ProcFiles::kTcpPath, "r");
    ASSERT_NE(nullptr, tcp) << "the other file is not affected";
    EXPECT_EQ("600\n", readAll(tcp));
}

TEST_F(ProcFilesTest, RealFilesAnswerWhenNothingIsSet) {
    ProcFiles::instance().setContent(Proto::kTcp, "1\n");
    ProcFiles::instance().setAbsent(Proto::kUdp);
    ProcFiles::instance().reset();
    for (const char* path : {ProcFiles::kTcpPath, ProcFiles::kUdpPath}) {
        SCOPED_TRACE(path);
        FILE* file = fopen(path, "r");
        if (access(path, R_OK) != 0) {
            EXPECT_EQ(nullptr, file);
            continue;
        }
        ASSERT_NE(nullptr, file);
        EXPECT_EQ(readDirectly(path), readAll(file));
    }
}

TEST_F(ProcFilesTest, OtherPathsAreUntouched) {
    ProcFiles::instance().setContent(Proto::kTcp, "stand-in\n");
    char path[] = "/tmp/procfiles_testXXXXXX";
    const int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(5, write(fd, "real\n", 5));
    close(fd);
    FILE* file = fopen(path, "r");
    ASSERT_NE(nullptr, file);
    EXPECT_EQ("real\n", readAll(file));
    unlink(path);

    // Close to the conntrack path is not the conntrack path.
    const std::string near = std::string(ProcFiles::kTcpPath) + "x";
    EXPECT_EQ(nullptr, fopen(near.c_str(), "r"));
}

}  // namespace
}  // namespace hostplatform
