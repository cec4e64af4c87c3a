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

#include <cutils/native_handle.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;

namespace {

bool isOpen(int fd) {
    return fcntl(fd, F_GETFD) != -1;
}

// A native handle holding one freshly opened descriptor, owned by the test.
class HidlHandleTest : public ::testing::Test {
protected:
    void SetUp() override {
        native = native_handle_create(1, 0);
        ASSERT_NE(nullptr, native);
        native->data[0] = open("/dev/null", O_RDONLY | O_CLOEXEC);
        ASSERT_GE(native->data[0], 0);
    }
    void TearDown() override {
        native_handle_close(native);
        native_handle_delete(native);
    }

    int fd() const { return native->data[0]; }

    native_handle_t* native = nullptr;
};

TEST_F(HidlHandleTest, BorrowedHandleIsLeftOpen) {
    {
        hidl_handle borrowed(native);
        hidl_handle assigned;
        assigned = native;
        assigned.setTo(native);
        EXPECT_EQ(native, assigned.getNativeHandle());
    }
    EXPECT_TRUE(isOpen(fd()));
}

TEST_F(HidlHandleTest, CopyOwnsDuplicatedDescriptors) {
    int copiedFd = -1;
    {
        hidl_handle borrowed(native);
        hidl_handle copy(borrowed);
        ASSERT_NE(nullptr, copy.getNativeHandle());
        ASSERT_EQ(1, copy->numFds);
        copiedFd = copy->data[0];
        EXPECT_NE(fd(), copiedFd);

        hidl_handle moved(std::move(copy));
        EXPECT_EQ(nullptr, copy.getNativeHandle());
        EXPECT_EQ(copiedFd, moved->data[0]);
        EXPECT_TRUE(isOpen(copiedFd));
    }
    EXPECT_FALSE(isOpen(copiedFd));  // closed by the handle that ended up owning it
    EXPECT_TRUE(isOpen(fd()));
}

TEST_F(HidlHandleTest, OwnedHandleIsClosedWhenReplaced) {
    native_handle_t* clone = native_handle_clone(native);
    ASSERT_NE(nullptr, clone);
    int clonedFd = clone->data[0];
    hidl_handle owner;
    owner.setTo(clone, true);
    owner = hidl_handle();
    EXPECT_FALSE(isOpen(clonedFd));
    EXPECT_EQ(nullptr, hidl_handle(owner).getNativeHandle());  // a null handle copies as null
}

TEST(HidlVecTest, StringsRoundTripThroughIterators) {
    std::vector<std::string> words{"mdbr0", "", "wanif0 x"};
    hidl_vec<hidl_string> vec(words.begin(), words.end());
    ASSERT_EQ(3u, vec.size());
    EXPECT_EQ("wanif0 x", std::string(vec[2]));
    EXPECT_TRUE(vec.contains(hidl_string("mdbr0")));
    EXPECT_EQ(words, std::vector<std::string>(vec.begin(), vec.end()));
}

}  // namespace
