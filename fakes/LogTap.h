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

// liblog's lines, handed to the observers as LogRecords with the thread, the process and the wall
// time that logcat shows. Installed before main. On the desktop nothing else sees a line; on a
// phone each line still goes on to logd unless a fuzz target turns that off.

#pragma once

namespace fakes {

class LogTap {
public:
    // Whether lines go on to the platform's own log after the observers (a phone's logd).
    static void setPassThrough(bool passThrough);
};

}  // namespace fakes
