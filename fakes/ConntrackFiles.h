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

// The kernel's two conntrack timeout files. By default fopen() reads the real files; a test or a
// scenario gives either file a content of its own, or makes it absent.

#pragma once

#include <stdio.h>

#include <string>

namespace fakes {

class ConntrackFiles {
public:
    enum class Proto { kTcp, kUdp };

    static void setContent(Proto proto, const std::string& content);
    static void setAbsent(Proto proto);
    static void useRealFile(Proto proto);
    static void reset();  // both files real again

    // For the interposed fopen: answers for a file whose content or absence has been set (the
    // stream in `*file`, or null with errno set) and returns true; false when the real file is
    // to be opened. Safe before static initialisation.
    static bool open(const char* path, const char* mode, FILE** file);
};

}  // namespace fakes
