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

#include "fakes/Properties.h"

#include <cutils/properties.h>
#include <string.h>

#include <map>
#include <mutex>

#include "fakes/RealLibc.h"

namespace fakes {
namespace {

struct Store {
    std::mutex lock;
    std::map<std::string, std::string> values;
};

Store& store() {
    // Never destroyed: threads may still read properties while the process exits.
    static Store* instance = new Store();
    return *instance;
}

bool lookup(const char* key, std::string* value) {
    if (key == nullptr) return false;
    Store& s = store();
    std::lock_guard<std::mutex> lock(s.lock);
    auto it = s.values.find(key);
    if (it == s.values.end()) return false;
    *value = it->second;
    return true;
}

// At most PROPERTY_VALUE_MAX - 1 characters and a NUL, as libcutils copies them.
int copyValue(const char* from, size_t length, char* to) {
    const size_t n = length < PROPERTY_VALUE_MAX ? length : PROPERTY_VALUE_MAX - 1;
    memcpy(to, from, n);
    to[n] = '\0';
    return static_cast<int>(n);
}

}  // namespace

void Properties::set(const std::string& name, const std::string& value) {
    Store& s = store();
    std::lock_guard<std::mutex> lock(s.lock);
    s.values[name] = value;
}

void Properties::clear() {
    Store& s = store();
    std::lock_guard<std::mutex> lock(s.lock);
    s.values.clear();
}

}  // namespace fakes

extern "C" int property_get(const char* key, char* value, const char* default_value) {
    std::string stored;
    if (fakes::lookup(key, &stored) && !stored.empty()) {
        return fakes::copyValue(stored.data(), stored.size(), value);
    }
    if (fakes::PropertyGetFn platform = fakes::realPropertyGet()) {
        return platform(key, value, default_value);
    }
    if (default_value != nullptr) {
        return fakes::copyValue(default_value, strlen(default_value), value);
    }
    value[0] = '\0';
    return 0;
}
