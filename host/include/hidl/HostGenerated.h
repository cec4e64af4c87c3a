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

// Host only. The declarations that hidl-gen writes out in every interface header, written once
// here so that the hand-written interface headers keep the generated shape without repeating it.
// Service code never includes this header.

#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/HidlTransportSupport.h>
#include <hidl/Status.h>

#include <string>

// The IBase operations, re-declared with `override` as every generated interface does.
#define HOST_HIDL_IBASE_OVERRIDES                                                                  \
    using interfaceChain_cb = std::function<void(                                                  \
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& descriptors)>;  \
    virtual ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override; \
    virtual ::android::hardware::Return<void> debug(                                               \
            const ::android::hardware::hidl_handle& fd,                                            \
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& options)        \
            override;                                                                              \
    using interfaceDescriptor_cb =                                                                 \
            std::function<void(const ::android::hardware::hidl_string& descriptor)>;               \
    virtual ::android::hardware::Return<void> interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) \
            override;                                                                              \
    using getHashChain_cb =                                                                        \
            std::function<void(const ::android::hardware::hidl_vec<                                \
                               ::android::hardware::hidl_array<uint8_t, 32>>& hashchain)>;         \
    virtual ::android::hardware::Return<void> getHashChain(getHashChain_cb _hidl_cb) override;     \
    virtual ::android::hardware::Return<void> setHALInstrumentation() override;                    \
    virtual ::android::hardware::Return<bool> linkToDeath(                                         \
            const ::android::sp<::android::hardware::hidl_death_recipient>& recipient,             \
            uint64_t cookie) override;                                                             \
    virtual ::android::hardware::Return<void> ping() override;                                     \
    using getDebugInfo_cb =                                                                        \
            std::function<void(const ::android::hidl::base::V1_0::DebugInfo& info)>;               \
    virtual ::android::hardware::Return<void> getDebugInfo(getDebugInfo_cb _hidl_cb) override;     \
    virtual ::android::hardware::Return<void> notifySyspropsChanged() override;                    \
    virtual ::android::hardware::Return<bool> unlinkToDeath(                                       \
            const ::android::sp<::android::hardware::hidl_death_recipient>& recipient) override;

// The service-manager statics of an interface I (castFrom overloads are declared per interface,
// one per entry of its chain).
#define HOST_HIDL_SERVICE_STATICS(I)                                                           \
    static ::android::sp<I> tryGetService(const std::string& serviceName = "default",          \
                                          bool getStub = false);                               \
    static ::android::sp<I> tryGetService(const char serviceName[], bool getStub = false) {    \
        std::string str(serviceName ? serviceName : "");                                       \
        return tryGetService(str, getStub);                                                    \
    }                                                                                          \
    static ::android::sp<I> tryGetService(const ::android::hardware::hidl_string& serviceName, \
                                          bool getStub = false) {                              \
        std::string str(serviceName.c_str());                                                  \
        return tryGetService(str, getStub);                                                    \
    }                                                                                          \
    static ::android::sp<I> tryGetService(bool getStub) {                                      \
        return tryGetService("default", getStub);                                              \
    }                                                                                          \
    static ::android::sp<I> getService(const std::string& serviceName = "default",             \
                                       bool getStub = false);                                  \
    static ::android::sp<I> getService(const char serviceName[], bool getStub = false) {       \
        std::string str(serviceName ? serviceName : "");                                       \
        return getService(str, getStub);                                                       \
    }                                                                                          \
    static ::android::sp<I> getService(const ::android::hardware::hidl_string& serviceName,    \
                                       bool getStub = false) {                                 \
        std::string str(serviceName.c_str());                                                  \
        return getService(str, getStub);                                                       \
    }                                                                                          \
    static ::android::sp<I> getService(bool getStub) {                                         \
        return getService("default", getStub);                                                 \
    }                                                                                          \
    __attribute__((warn_unused_result)) ::android::status_t registerAsService(                 \
            const std::string& serviceName = "default");                                       \
    static bool registerForNotifications(                                                      \
            const std::string& serviceName,                                                    \
            const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& notification);

// `static inline std::string toString(const sp<I>&)`, which follows every generated interface.
#define HOST_HIDL_TO_STRING(I)                                      \
    static inline std::string toString(const ::android::sp<I>& o) { \
        std::string os = "[class or subclass of ";                  \
        os += I::descriptor;                                        \
        os += "]";                                                  \
        os += o->isRemote() ? "@remote" : "@local";                 \
        return os;                                                  \
    }
