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

// The framework's callback for the fuzz targets: 1.0-only or 1.1, it writes down every call it
// gets, in words, and fails in transport while the framework is dead.

#pragma once

#include <android/hardware/tetheroffload/control/1.0/ITetheringOffloadCallback.h>
#include <utils/StrongPointer.h>

#include <mutex>
#include <string>
#include <vector>

namespace fuzzsupport {

enum class CallbackVersion { kNone, k1_0, k1_1 };

// What the framework heard, e.g. "onEvent 1", "onEvent_1_1 6",
// "updateTimeout 192.168.43.2:80 8.8.8.8:53 17".
class CallbackLog {
public:
    static CallbackLog& instance();

    void add(std::string entry);
    std::vector<std::string> take();  // and forget
    void setAlive(bool alive);
    bool alive();

private:
    CallbackLog() = default;
    std::mutex mLock;
    std::vector<std::string> mEntries;
    bool mAlive = true;
};

// Null for kNone.
android::sp<android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback> makeCallback(
        CallbackVersion version);

}  // namespace fuzzsupport
