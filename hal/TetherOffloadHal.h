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

// The one object the service registers: it serves IOffloadConfig 1.0 and IOffloadControl 1.1,
// checks every argument, keeps the offload state and decides when offload starts and stops for
// USB and for the Wi-Fi hotspot.

#pragma once

#include <android/hardware/tetheroffload/config/1.0/IOffloadConfig.h>
#include <android/hardware/tetheroffload/control/1.0/ITetheringOffloadCallback.h>
#include <android/hardware/tetheroffload/control/1.1/IOffloadControl.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <stdint.h>
#include <utils/StrongPointer.h>

#include <string>
#include <utility>
#include <vector>

#include "datapath/vexa_protocol.h"

class ConnTimeoutUpdate;
class OffloadEventHandle;

namespace vendor {
namespace tetheroffload {

class TetherOffloadHal : public android::hardware::tetheroffload::control::V1_1::IOffloadControl,
                         public android::hardware::tetheroffload::config::V1_0::IOffloadConfig {
public:
    // Selects the address family of the address and prefix checks.
    enum FAMILY : int32_t {
        FAMILY_IPV4 = 0,
        FAMILY_IPV6 = 1,
        FAMILY_ANY = 2,
    };

    // Creates the object, configures the thread pool and registers both interfaces. The strong
    // reference it returns is held across registration, so the object outlives it whatever the
    // outcome. Null when the object could not be made (errno tells why).
    static android::sp<TetherOffloadHal> makeTetherOffloadHal();
    void registerAsSystemService();

    TetherOffloadHal();
    ~TetherOffloadHal() override;

    // IOffloadControl 1.0
    android::hardware::Return<void> initOffload(
            const android::sp<
                    android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback>& cb,
            initOffload_cb hidl_cb) override;
    android::hardware::Return<void> stopOffload(stopOffload_cb hidl_cb) override;
    android::hardware::Return<void> setLocalPrefixes(
            const android::hardware::hidl_vec<android::hardware::hidl_string>& prefixes,
            setLocalPrefixes_cb hidl_cb) override;
    android::hardware::Return<void> getForwardedStats(const android::hardware::hidl_string& upstream,
                                                      getForwardedStats_cb hidl_cb) override;
    android::hardware::Return<void> setDataLimit(const android::hardware::hidl_string& upstream,
                                                 uint64_t limitBytes,
                                                 setDataLimit_cb hidl_cb) override;
    android::hardware::Return<void> setUpstreamParameters(
            const android::hardware::hidl_string& iface,
            const android::hardware::hidl_string& v4Addr, const android::hardware::hidl_string& v4Gw,
            const android::hardware::hidl_vec<android::hardware::hidl_string>& v6Gws,
            setUpstreamParameters_cb hidl_cb) override;
    android::hardware::Return<void> addDownstream(const android::hardware::hidl_string& iface,
                                                  const android::hardware::hidl_string& prefix,
                                                  addDownstream_cb hidl_cb) override;
    android::hardware::Return<void> removeDownstream(const android::hardware::hidl_string& iface,
                                                     const android::hardware::hidl_string& prefix,
                                                     removeDownstream_cb hidl_cb) override;

    // IOffloadControl 1.1
    android::hardware::Return<void> setDataWarningAndLimit(
            const android::hardware::hidl_string& upstream, uint64_t warningBytes,
            uint64_t limitBytes, setDataWarningAndLimit_cb hidl_cb) override;

    // IOffloadConfig 1.0
    android::hardware::Return<void> setHandles(const android::hardware::hidl_handle& fd1,
                                               const android::hardware::hidl_handle& fd2,
                                               setHandles_cb hidl_cb) override;

    // IBase: `lshal debug` gets a short report of the state on the descriptor it hands over. It
    // logs nothing and changes nothing.
    android::hardware::Return<void> debug(
            const android::hardware::hidl_handle& fd,
            const android::hardware::hidl_vec<android::hardware::hidl_string>& options) override;

    // Argument checks: they answer yes or no and log the reason; they touch no field.
    bool checkInterface(std::string iface);
    bool verifyIpAddress(std::string in, FAMILY fam);
    bool verifyIpAddress(std::vector<std::string> in, FAMILY fam);
    bool checkPrefix(std::string in, FAMILY fam);
    bool checkPrefix(std::vector<std::string> in, FAMILY fam);
    bool isValidMask(int mask, FAMILY fam);
    bool findAddrAndMask(std::string in, std::string& addr, std::string& mask);

private:
    // (success flag, message) as it goes to the result callback.
    using Reply = std::pair<bool, std::string>;

    // Starting and ending offload for one kind (USB or Wi-Fi hotspot); USB also moves the bridge.
    void activateOffload(vexa_app_type_e app, const std::string& upIface,
                         const std::string& downIface);
    void deactivateOffload(vexa_app_type_e app);

    bool upstreamArgsValid(const std::string& iface, const std::string& v4Addr,
                           const std::string& v4Gw, const std::vector<std::string>& v6Gws);
    Reply followModemUpstream(const std::string& iface);
    Reply leaveModemUpstream(const std::string& iface);

    bool downstreamArgsValid(const char* op, const std::string& iface, const std::string& prefix);
    void startDownstream(const std::string& iface);
    void stopDownstream(const std::string& iface);

    // The text `debug` writes.
    std::string stateReport() const;

    // Checks a quota call and fills `name` from the upstream when it may go to the device.
    Reply checkQuotaRequest(const char* op, const std::string& upstream,
                            char (&name)[VEXA_IFNAME_SIZE]);

    android::sp<android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback> mCallback;
    ConnTimeoutUpdate* mTimeoutUpdate;  // owned, from initOffload to stopOffload
    OffloadEventHandle* mCbEvent;       // the process-wide data-path client, not owned
    std::string mUpstreamIface;
    std::string mUsbDownstream;
    std::string mWifiDownstream;
    bool mUsbOffloadActive;
    bool mWifiOffloadActive;
};

}  // namespace tetheroffload
}  // namespace vendor
