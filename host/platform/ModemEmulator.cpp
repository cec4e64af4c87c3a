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

#include "hostplatform/ModemEmulator.h"

#include <utility>

#include "ModemDevice.h"

namespace hostplatform {

struct ModemEmulator::State {
    ModemDevice& device;
};

ModemEmulator& ModemEmulator::instance() {
    static ModemEmulator* emulator = new ModemEmulator();
    return *emulator;
}

static_assert(ModemEmulator::kMaxRead == EventChannel::kMaxRecord);
static_assert(ModemEmulator::kQueueCapacity == EventChannel::kQueueCapacity);

ModemEmulator::ModemEmulator() : mState(new State{ModemDevice::instance()}) {}

void ModemEmulator::setDevicePresent(bool present) {
    mState->device.setPresent(present);
}

void ModemEmulator::setIoctlError(int errnum) {
    mState->device.setIoctlError(errnum);
}

void ModemEmulator::setStatsAnswer(uint64_t rxBytes, uint64_t txBytes, uint32_t dataLen) {
    mState->device.setStatsAnswer(StatsAnswer{rxBytes, txBytes, dataLen});
}

void ModemEmulator::restoreDefaults() {
    mState->device.restoreDefaults();
}

bool ModemEmulator::deliverEvent(std::vector<uint8_t> record, size_t readSize,
                                 std::chrono::milliseconds timeout) {
    return mState->device.events().deliver(Delivery{std::move(record), readSize, 0}, timeout);
}

bool ModemEmulator::deliverReadFailure(int errnum, std::chrono::milliseconds timeout) {
    return mState->device.events().deliver(Delivery{{}, 0, errnum}, timeout);
}

bool ModemEmulator::queueEvent(const std::vector<uint8_t>& record, size_t readSize,
                               std::chrono::milliseconds timeout) {
    return mState->device.events().enqueue(record, readSize, 0, timeout);
}

bool ModemEmulator::queueReadFailure(int errnum, std::chrono::milliseconds timeout) {
    return mState->device.events().enqueue({}, 0, errnum, timeout);
}

size_t ModemEmulator::queueEvents(const std::vector<uint8_t>& record, size_t readSize,
                                  size_t copies) {
    return mState->device.events().enqueueCopies(record, readSize, copies);
}

bool ModemEmulator::waitQueueDrained(std::chrono::milliseconds timeout) {
    return mState->device.events().waitDrained(timeout);
}

bool ModemEmulator::waitReaderBlocked(std::chrono::milliseconds timeout) {
    if (!mState->device.wasOpened()) return false;
    return mState->device.events().waitBlocked(timeout);
}

int ModemEmulator::deviceFd() const {
    return ModemDevice::deviceFd();
}

}  // namespace hostplatform
