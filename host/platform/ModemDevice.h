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

// The emulated "/dev/vexa" and its driver: the side that the interposed open, ioctl and read
// reach. Settings come from ModemEmulator; every call that reaches the device is recorded.

#pragma once

#include <sys/types.h>

#include <mutex>

#include "DriverRequest.h"
#include "EventChannel.h"

namespace hostplatform {

class ModemDevice {
public:
    // Never destroyed: the event thread stays blocked in read() while the process exits.
    static ModemDevice& instance();

    // Cheap and safe at any time, even before static initialisation: every open and read of the
    // process asks them.
    static bool isDevicePath(const char* path);
    static bool isDeviceFd(int fd);
    static int deviceFd();

    int open(const char* path);
    int ioctl(int fd, unsigned long request, void* arg);
    ssize_t read(int fd, void* buf, size_t count);

    void setPresent(bool present);
    void setIoctlError(int errnum);
    void setStatsAnswer(const StatsAnswer& answer);
    void restoreDefaults();
    bool wasOpened() const;

    EventChannel& events() { return mEvents; }

private:
    struct Settings {
        bool present = true;
        int ioctlError = 0;
        StatsAnswer stats;
    };

    ModemDevice() = default;
    Settings settings() const;
    int answer(unsigned long request, void* arg, std::vector<uint8_t>* requestBytes);
    static void recordRead(const TakenRead& taken, const uint8_t* bytes);

    mutable std::mutex mLock;
    Settings mSettings;
    bool mOpened = false;
    EventChannel mEvents;
};

}  // namespace hostplatform
