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

#include "AllocationCounter.h"

#include <errno.h>
#include <malloc.h>
#include <stdlib.h>

#include <atomic>

// The C library's own entry points, which these definitions hand every request on to.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace {

// Constant-initialised: the loader allocates before any constructor runs.
std::atomic<uint64_t> gAllocations{0};

void count() {
    gAllocations.fetch_add(1, std::memory_order_relaxed);
}

bool isPowerOfTwo(size_t n) {
    return n != 0 && (n & (n - 1)) == 0;
}

}  // namespace

namespace bench {

uint64_t allocationCount() {
    return gAllocations.load(std::memory_order_relaxed);
}

}  // namespace bench

extern "C" {

void* malloc(size_t size) noexcept {
    count();
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) noexcept {
    ::count();
    return __libc_calloc(count, size);
}

void* realloc(void* old, size_t size) noexcept {
    count();
    return __libc_realloc(old, size);
}

void* memalign(size_t alignment, size_t size) noexcept {
    count();
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) noexcept {
    count();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** out, size_t alignment, size_t size) noexcept {
    count();
    if (!isPowerOfTwo(alignment) || alignment % sizeof(void*) != 0) return EINVAL;
    void* memory = __libc_memalign(alignment, size);
    if (memory == nullptr) return ENOMEM;
    *out = memory;
    return 0;
}

}  // extern "C"
