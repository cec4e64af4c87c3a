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

#include "ClientProxies.h"

#include <android/hardware/tetheroffload/config/1.0/IOffloadConfig.h>
#include <android/hardware/tetheroffload/control/1.1/IOffloadControl.h>
#include <android/log.h>
#include <stdio.h>
#include <stdlib.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

using ::android::sp;
using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
using ::android::hidl::base::V1_0::IBase;
namespace V1_0 = ::android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;

namespace hostinterfaces {
namespace {

// The log tags of the generated stubs, which name the interface and the implementation's class.
constexpr const char* kConfigStub = "android.hardware.tetheroffload.config@1.0::OffloadConfig";
constexpr const char* kControlStub = "android.hardware.tetheroffload.control@1.1::OffloadControl";

// One call through a stub: counts the result callback's calls and checks them and the Return.
class StubCall {
public:
    StubCall(const char* tag, const char* op) : mState(std::make_shared<State>(tag, op)) {}

    // The callback the implementation gets: the client's, counted. A service that kept it and
    // called it later finds the call over.
    template <typename... Results>
    std::function<void(Results...)> wrap(std::function<void(Results...)> client) const {
        std::shared_ptr<State> state = mState;
        return [state, client](Results... results) {
            state->count();
            client(results...);
        };
    }

    Return<void> finish(const Return<void>& ret) const {
        std::lock_guard<std::mutex> guard(mState->lock);
        mState->returned = true;
        if (!ret.isOk()) mState->fatal("the call returned a transport error.");
        if (mState->replies == 0) mState->fatal("_hidl_cb not called, but must be called once.");
        return Void();
    }

private:
    struct State {
        State(const char* t, const char* o) : tag(t), op(o) {}

        void count() {
            std::lock_guard<std::mutex> guard(lock);
            if (returned)
                fatal("_hidl_cb called after the call returned, but must be synchronous.");
            if (replies > 0) fatal("_hidl_cb called a second time, but must be called once.");
            ++replies;
        }

        [[noreturn]] void fatal(const char* what) const {
            __android_log_print(ANDROID_LOG_FATAL, tag, "%s: %s", op, what);
            // The log goes into the trace; a person running the service looks here too.
            fflush(stdout);
            fprintf(stderr, "%s: %s\n", op, what);
            abort();
        }

        const char* tag;
        const char* op;
        std::mutex lock;
        int replies = 0;
        bool returned = false;
    };

    std::shared_ptr<State> mState;
};

class ConfigProxy : public IOffloadConfig {
public:
    explicit ConfigProxy(sp<IOffloadConfig> impl) : mImpl(std::move(impl)) {}

    Return<void> setHandles(const hidl_handle& fd1, const hidl_handle& fd2,
                            setHandles_cb cb) override {
        StubCall call(kConfigStub, "setHandles");
        return call.finish(mImpl->setHandles(fd1, fd2, call.wrap(cb)));
    }
    Return<void> debug(const hidl_handle& fd, const hidl_vec<hidl_string>& options) override {
        return mImpl->debug(fd, options);
    }

private:
    const sp<IOffloadConfig> mImpl;
};

class ControlProxy : public V1_1::IOffloadControl {
public:
    explicit ControlProxy(sp<V1_1::IOffloadControl> impl) : mImpl(std::move(impl)) {}

    Return<void> initOffload(const sp<V1_0::ITetheringOffloadCallback>& cb,
                             initOffload_cb hidlCb) override {
        StubCall call(kControlStub, "initOffload");
        return call.finish(mImpl->initOffload(cb, call.wrap(hidlCb)));
    }
    Return<void> stopOffload(stopOffload_cb hidlCb) override {
        StubCall call(kControlStub, "stopOffload");
        return call.finish(mImpl->stopOffload(call.wrap(hidlCb)));
    }
    Return<void> setLocalPrefixes(const hidl_vec<hidl_string>& prefixes,
                                  setLocalPrefixes_cb hidlCb) override {
        StubCall call(kControlStub, "setLocalPrefixes");
        return call.finish(mImpl->setLocalPrefixes(prefixes, call.wrap(hidlCb)));
    }
    Return<void> getForwardedStats(const hidl_string& upstream,
                                   getForwardedStats_cb hidlCb) override {
        StubCall call(kControlStub, "getForwardedStats");
        return call.finish(mImpl->getForwardedStats(upstream, call.wrap(hidlCb)));
    }
    Return<void> setDataLimit(const hidl_string& upstream, uint64_t limit,
                              setDataLimit_cb hidlCb) override {
        StubCall call(kControlStub, "setDataLimit");
        return call.finish(mImpl->setDataLimit(upstream, limit, call.wrap(hidlCb)));
    }
    Return<void> setUpstreamParameters(const hidl_string& iface, const hidl_string& v4Addr,
                                       const hidl_string& v4Gw, const hidl_vec<hidl_string>& v6Gws,
                                       setUpstreamParameters_cb hidlCb) override {
        StubCall call(kControlStub, "setUpstreamParameters");
        return call.finish(
                mImpl->setUpstreamParameters(iface, v4Addr, v4Gw, v6Gws, call.wrap(hidlCb)));
    }
    Return<void> addDownstream(const hidl_string& iface, const hidl_string& prefix,
                               addDownstream_cb hidlCb) override {
        StubCall call(kControlStub, "addDownstream");
        return call.finish(mImpl->addDownstream(iface, prefix, call.wrap(hidlCb)));
    }
    Return<void> removeDownstream(const hidl_string& iface, const hidl_string& prefix,
                                  removeDownstream_cb hidlCb) override {
        StubCall call(kControlStub, "removeDownstream");
        return call.finish(mImpl->removeDownstream(iface, prefix, call.wrap(hidlCb)));
    }
    Return<void> setDataWarningAndLimit(const hidl_string& upstream, uint64_t warning,
                                        uint64_t limit, setDataWarningAndLimit_cb hidlCb) override {
        StubCall call(kControlStub, "setDataWarningAndLimit");
        return call.finish(
                mImpl->setDataWarningAndLimit(upstream, warning, limit, call.wrap(hidlCb)));
    }
    Return<void> debug(const hidl_handle& fd, const hidl_vec<hidl_string>& options) override {
        return mImpl->debug(fd, options);
    }

private:
    const sp<V1_1::IOffloadControl> mImpl;
};

}  // namespace

sp<IBase> clientView(const sp<IBase>& service) {
    if (service == nullptr) return nullptr;
    std::string descriptor;
    if (!service->interfaceDescriptor([&](const hidl_string& d) { descriptor = d; }).isOk()) {
        return service;
    }
    if (descriptor == IOffloadConfig::descriptor) {
        sp<IOffloadConfig> config = IOffloadConfig::castFrom(service).withDefault(nullptr);
        if (config != nullptr) return sp<IOffloadConfig>(new ConfigProxy(config));
    }
    if (descriptor == V1_1::IOffloadControl::descriptor) {
        sp<V1_1::IOffloadControl> control =
                V1_1::IOffloadControl::castFrom(service).withDefault(nullptr);
        if (control != nullptr) return sp<V1_1::IOffloadControl>(new ControlProxy(control));
    }
    return service;
}

}  // namespace hostinterfaces
