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

// The libc entry points that the fakes interpose, as the next object in the lookup order provides
// them: libc itself, or a sanitizer runtime in front of it. Resolved on first use, so they work
// even before static initialisation.

#pragma once

#include <stddef.h>
#include <stdio.h>
#include <sys/types.h>

namespace fakes {

int realOpen(const char* path, int flags, mode_t mode);
int realOpen64(const char* path, int flags, mode_t mode);
int realOpen2(const char* path, int flags);
int realIoctl(int fd, unsigned long request, void* arg);
ssize_t realRead(int fd, void* buf, size_t count);
ssize_t realReadChk(int fd, void* buf, size_t count, size_t bufLen);
FILE* realFopen(const char* path, const char* mode);
FILE* realFopen64(const char* path, const char* mode);
int realUsleep(useconds_t micros);
// Null where the platform has no property_get of its own (the desktop's libcutils).
using PropertyGetFn = int (*)(const char* key, char* value, const char* defaultValue);
PropertyGetFn realPropertyGet();

}  // namespace fakes
