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

// Standard error can be made to fail and work again, and comes back to where it went before.

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <string>

#include "hostplatform/StandardError.h"

namespace hostplatform {
namespace {

TEST(StandardErrorTest, ClosedMakesWritesFailAndOpenRestoresThem) {
    FILE* capture = tmpfile();
    ASSERT_NE(nullptr, capture);
    fflush(stderr);
    const int saved = dup(STDERR_FILENO);
    dup2(fileno(capture), STDERR_FILENO);

    const int before = fprintf(stderr, "before|");
    StandardError::setClosed(true);
    StandardError::setClosed(true);  // twice: the original must still come back
    const int whileClosed = fprintf(stderr, "lost|");
    const bool errorFlag = ferror(stderr) != 0;
    StandardError::setClosed(false);
    const bool errorFlagAfter = ferror(stderr) != 0;
    const int after = fprintf(stderr, "after");
    StandardError::setClosed(false);  // already open: nothing changes
    fflush(stderr);

    dup2(saved, STDERR_FILENO);
    close(saved);
    std::string text(64, '\0');
    rewind(capture);
    text.resize(fread(&text[0], 1, text.size(), capture));
    fclose(capture);

    EXPECT_EQ(7, before);
    EXPECT_LT(whileClosed, 0);
    EXPECT_TRUE(errorFlag);
    EXPECT_FALSE(errorFlagAfter) << "the error flag is cleared when reopened";
    EXPECT_EQ(5, after);
    EXPECT_EQ("before|after", text);
}

}  // namespace
}  // namespace hostplatform
