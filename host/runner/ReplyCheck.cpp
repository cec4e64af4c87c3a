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

#include "ReplyCheck.h"

#include <android/log.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "hostplatform/Recorder.h"

namespace hostrunner {

struct ReplyCheck::State {
    std::string tag;
    std::string op;
    std::mutex lock;
    int replies = 0;
    bool returned = false;
};

namespace {

[[noreturn]] void fatal(const ReplyCheck::State& s, const char* what) {
    __android_log_print(ANDROID_LOG_FATAL, s.tag.c_str(), "%s: %s", s.op.c_str(), what);
    // The log goes into the trace; say it where a person running the scenario looks too.
    fflush(stdout);
    fprintf(stderr, "%s: %s\n", s.op.c_str(), what);
    abort();
}

// Counts one reply, or ends the process when this one is not allowed.
void countReply(ReplyCheck::State* s) {
    std::lock_guard<std::mutex> guard(s->lock);
    if (s->returned) fatal(*s, "_hidl_cb called after the call returned, but must be synchronous.");
    if (s->replies > 0) fatal(*s, "_hidl_cb called a second time, but must be called once.");
    ++s->replies;
}

}  // namespace

ReplyCheck::ReplyCheck(std::string stubTag, std::string op) : mState(std::make_shared<State>()) {
    mState->tag = std::move(stubTag);
    mState->op = std::move(op);
}

std::function<void(bool, const android::hardware::hidl_string&)> ReplyCheck::statusCallback() const {
    std::shared_ptr<State> state = mState;
    return [state](bool success, const android::hardware::hidl_string& msg) {
        countReply(state.get());
        hostplatform::ReplyRecord reply;
        reply.op = state->op;
        reply.ok = success;
        reply.msg = std::string(msg);
        hostplatform::Recorder::instance().add(reply);
    };
}

std::function<void(uint64_t, uint64_t)> ReplyCheck::statsCallback() const {
    std::shared_ptr<State> state = mState;
    return [state](uint64_t rx, uint64_t tx) {
        countReply(state.get());
        hostplatform::ReplyRecord reply;
        reply.op = state->op;
        reply.isStats = true;
        reply.rx = rx;
        reply.tx = tx;
        hostplatform::Recorder::instance().add(reply);
    };
}

void ReplyCheck::finish(const android::hardware::Return<void>& ret) const {
    std::lock_guard<std::mutex> guard(mState->lock);
    mState->returned = true;
    if (!ret.isOk()) fatal(*mState, "the call returned a transport error.");
    if (mState->replies == 0) fatal(*mState, "_hidl_cb not called, but must be called once.");
}

}  // namespace hostrunner
