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

// What the generated server stub checks around every call: the result callback runs exactly
// once, before the call returns, and the call's own Return is OK. Any breach ends the process
// with a FATAL log, as it would on the device. Each reply is recorded as it comes.

#pragma once

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace hostrunner {

class ReplyCheck {
public:
    // `stubTag` is the log tag of the interface's stub, `op` the operation's name.
    ReplyCheck(std::string stubTag, std::string op);

    std::function<void(bool, const android::hardware::hidl_string&)> statusCallback() const;
    std::function<void(uint64_t, uint64_t)> statsCallback() const;

    // After the call has returned.
    void finish(const android::hardware::Return<void>& ret) const;

    struct State;

private:
    std::shared_ptr<State> mState;  // shared with callbacks that the service might keep
};

}  // namespace hostrunner
