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

// Reads the files that a device build installs beside the binary: the module definition, the
// init script and the manifest fragment.

#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace service_test {

using Instance = std::pair<std::string, std::string>;  // fully qualified interface, instance

// The whole file below the source tree; empty when it cannot be read.
std::string readSourceFile(const std::string& relativePath);

// What Android.bp says about the service binary.
struct BinaryModule {
    std::string name;
    std::string initRc;         // path below the source tree
    std::string vintfFragment;  // path below the source tree
};
BinaryModule parseBinaryModule(const std::string& bp);

// The init script's service: its first line split into words, and the option lines below it.
struct InitService {
    std::vector<std::string> header;  // "service", name, path
    std::vector<std::string> options;
    std::set<Instance> interfaces;  // from the `interface` options
};
InitService parseInitService(const std::string& rc);

// Every interface and instance that the manifest fragment declares, as "package@x.y::IName".
std::set<Instance> parseManifest(const std::string& xml);

}  // namespace service_test
