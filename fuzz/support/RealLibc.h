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

// The libc entry points that the fake device interposes, as the next object in the lookup order
// provides them. Resolved on first use, so they work before static initialisation.

#pragma once

#include <stddef.h>
#include <sys/types.h>

namespace fuzzsupport {

int realOpen(const char* path, int flags, mode_t mode);
int realOpen64(const char* path, int flags, mode_t mode);
int realOpen2(const char* path, int flags);
int realIoctl(int fd, unsigned long request, void* arg);
ssize_t realRead(int fd, void* buf, size_t count);
ssize_t realReadChk(int fd, void* buf, size_t count, size_t bufLen);

}  // namespace fuzzsupport
