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

// System properties that a test or a scenario sets, in front of the platform's: property_get()
// answers with a value set here, else with the platform's own (on a phone), else with the
// default (the desktop's libcutils has no property store).

#pragma once

#include <string>

namespace fakes {

class Properties {
public:
    static void set(const std::string& name, const std::string& value);
    static void clear();
};

}  // namespace fakes
