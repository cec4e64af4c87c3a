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

// The kernel's conntrack timeout files. By default fopen() reads the real files; a test or
// scenario can give either file a content of its own, or make it absent.

#pragma once

#include <string>

namespace hostplatform {

class ProcFiles {
public:
    enum class Proto { kTcp, kUdp };

    static constexpr const char* kTcpPath =
            "/proc/sys/net/netfilter/nf_conntrack_tcp_timeout_established";
    static constexpr const char* kUdpPath =
            "/proc/sys/net/netfilter/nf_conntrack_udp_timeout_stream";

    static ProcFiles& instance();

    void setContent(Proto proto, const std::string& content);
    void setAbsent(Proto proto);
    void useRealFile(Proto proto);
    void reset();  // both files real again

private:
    ProcFiles() = default;
};

}  // namespace hostplatform
