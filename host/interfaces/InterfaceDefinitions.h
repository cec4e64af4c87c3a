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

// Host only, private to this folder. The member definitions that hidl-gen writes into every
// interface's generated source, written once: Interfaces.cpp names each interface's descriptor,
// chain and castFrom overloads, and these macros supply the bodies.

#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <hidl/HidlTransportSupport.h>
#include <hidl/Status.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include <functional>
#include <initializer_list>
#include <string>

namespace hostinterfaces {

using DescriptorChain = std::initializer_list<const char*>;

// The shared bodies of the IBase operations.
::android::hardware::Return<void> sendInterfaceChain(
        DescriptorChain chain,
        const std::function<
                void(const ::android::hardware::hidl_vec<::android::hardware::hidl_string>&)>& cb);
::android::hardware::Return<void> sendHashChain(
        size_t chainLength,
        const std::function<void(const ::android::hardware::hidl_vec<
                                 ::android::hardware::hidl_array<uint8_t, 32>>&)>& cb);
::android::hardware::Return<void> sendDebugInfo(
        const std::function<void(const ::android::hidl::base::V1_0::DebugInfo&)>& cb);
::android::hardware::Return<void> notifySyspropsChanged();

// The registry side of getService and registerAsService.
::android::sp<::android::hidl::base::V1_0::IBase> lookUpService(const char* descriptor,
                                                                const std::string& name);
::android::status_t registerService(const ::android::sp<::android::hidl::base::V1_0::IBase>& self,
                                    const std::string& name);

}  // namespace hostinterfaces

// The IBase operations of interface I, whose chain is the descriptor list that follows.
#define HOST_HIDL_DEFINE_IBASE_OPERATIONS(I, ...)                                                  \
    ::android::hardware::Return<void> I::interfaceChain(interfaceChain_cb _hidl_cb) {              \
        return ::hostinterfaces::sendInterfaceChain({__VA_ARGS__}, _hidl_cb);                      \
    }                                                                                              \
    ::android::hardware::Return<void> I::interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) {    \
        _hidl_cb(I::descriptor);                                                                   \
        return ::android::hardware::Void();                                                        \
    }                                                                                              \
    ::android::hardware::Return<void> I::getHashChain(getHashChain_cb _hidl_cb) {                  \
        return ::hostinterfaces::sendHashChain(                                                    \
                ::hostinterfaces::DescriptorChain{__VA_ARGS__}.size(), _hidl_cb);                  \
    }                                                                                              \
    ::android::hardware::Return<void> I::debug(                                                    \
            const ::android::hardware::hidl_handle&,                                               \
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>&) {              \
        return ::android::hardware::Void();                                                        \
    }                                                                                              \
    ::android::hardware::Return<void> I::setHALInstrumentation() {                                 \
        return ::android::hardware::Void();                                                        \
    }                                                                                              \
    ::android::hardware::Return<void> I::ping() {                                                  \
        return ::android::hardware::Void();                                                        \
    }                                                                                              \
    ::android::hardware::Return<void> I::getDebugInfo(getDebugInfo_cb _hidl_cb) {                  \
        return ::hostinterfaces::sendDebugInfo(_hidl_cb);                                          \
    }                                                                                              \
    ::android::hardware::Return<void> I::notifySyspropsChanged() {                                 \
        return ::hostinterfaces::notifySyspropsChanged();                                          \
    }                                                                                              \
    ::android::hardware::Return<bool> I::linkToDeath(                                              \
            const ::android::sp<::android::hardware::hidl_death_recipient>& recipient, uint64_t) { \
        return recipient != nullptr;                                                               \
    }                                                                                              \
    ::android::hardware::Return<bool> I::unlinkToDeath(                                            \
            const ::android::sp<::android::hardware::hidl_death_recipient>& recipient) {           \
        return recipient != nullptr;                                                               \
    }

// castFrom(sp<I>): the object is already of the target type.
#define HOST_HIDL_DEFINE_CAST_FROM_SELF(I)                                                    \
    ::android::hardware::Return<::android::sp<I>> I::castFrom(const ::android::sp<I>& parent, \
                                                              bool) {                         \
        return parent;                                                                        \
    }

// castFrom(sp<Parent>) for one ancestor Parent of I: a cast that asks the object's chain.
#define HOST_HIDL_DEFINE_CAST_FROM(I, Parent)                                                      \
    ::android::hardware::Return<::android::sp<I>> I::castFrom(const ::android::sp<Parent>& parent, \
                                                              bool emitError) {                    \
        return ::android::hardware::details::castInterface<I, Parent>(parent, I::descriptor,       \
                                                                      emitError);                  \
    }

// getService, tryGetService, registerAsService and registerForNotifications of interface I.
// Lookups never wait: on the host a service is either registered or absent.
#define HOST_HIDL_DEFINE_SERVICE_STATICS(I)                                               \
    ::android::sp<I> I::tryGetService(const std::string& serviceName, bool) {             \
        ::android::sp<::android::hidl::base::V1_0::IBase> base =                          \
                ::hostinterfaces::lookUpService(I::descriptor, serviceName);              \
        if (base == nullptr) return nullptr;                                              \
        return I::castFrom(base).withDefault(nullptr);                                    \
    }                                                                                     \
    ::android::sp<I> I::getService(const std::string& serviceName, bool getStub) {        \
        return tryGetService(serviceName, getStub);                                       \
    }                                                                                     \
    ::android::status_t I::registerAsService(const std::string& serviceName) {            \
        return ::hostinterfaces::registerService(this, serviceName);                      \
    }                                                                                     \
    bool I::registerForNotifications(                                                     \
            const std::string&,                                                           \
            const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>&) { \
        return false;                                                                     \
    }

// Everything of an interface I but the castFrom from its ancestors: its descriptor `name`, the
// IBase operations answering with its chain (I, then the ancestors' descriptors that follow),
// castFrom(sp<I>) and the service statics.
#define HOST_HIDL_DEFINE_INTERFACE(I, name, ...)                     \
    const char* I::descriptor = name;                                \
    HOST_HIDL_DEFINE_IBASE_OPERATIONS(I, I::descriptor, __VA_ARGS__) \
    HOST_HIDL_DEFINE_CAST_FROM_SELF(I)                               \
    HOST_HIDL_DEFINE_SERVICE_STATICS(I)
