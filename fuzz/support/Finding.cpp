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

#include "fuzz/support/Finding.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

namespace fuzzsupport {
namespace {

int& reportFd() {
    static int fd = STDERR_FILENO;
    return fd;
}

}  // namespace

void keepReportChannel() {
    const int copy = dup(STDERR_FILENO);
    if (copy >= 0) reportFd() = copy;
}

void finding(const std::string& what) {
    dprintf(reportFd(), "==FINDING== %s\n", what.c_str());
    abort();
}

}  // namespace fuzzsupport
