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

// Defaults for ThreadSanitizer builds of the host executable (an unused hook otherwise). The
// service's event thread is never joined, by design; without a device it ends at start-up, and
// ThreadSanitizer would report that finished, unjoined thread as a leak at exit.

extern "C" const char* __tsan_default_options() {
    return "report_thread_leaks=0";
}
