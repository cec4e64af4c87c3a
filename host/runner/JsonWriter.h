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

// JSON text written straight into a string, without building a document first: compact, fields
// in the order they are written, strings escaped with the short escapes where JSON has them and
// \u00xx for other control characters, and bytes that are not UTF-8 replaced by U+FFFD (one for
// each maximal ill-formed part). Non-ASCII text that is valid UTF-8 is kept as it is.

#pragma once

#include <charconv>
#include <string>
#include <type_traits>
#include <vector>

namespace hostrunner {

// Appends `text` as a quoted JSON string.
void appendJsonString(const std::string& text, std::string* out);

// One JSON object; nested objects are written by a JsonObject of their own on the same string.
class JsonObject {
public:
    explicit JsonObject(std::string* out) : mOut(out) { mOut->push_back('{'); }

    JsonObject& string(const char* key, const std::string& value);
    JsonObject& strings(const char* key, const std::vector<std::string>& values);
    JsonObject& boolean(const char* key, bool value);

    template <typename Int>
    JsonObject& number(const char* key, Int value) {
        static_assert(std::is_integral_v<Int> && !std::is_same_v<Int, bool>);
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof(digits), value).ptr;
        name(key);
        mOut->append(digits, end);
        return *this;
    }

    // Starts the value of `key` as an object, to be written by the JsonObject returned.
    JsonObject object(const char* key);

    void close() { mOut->push_back('}'); }

private:
    void name(const char* key);

    std::string* mOut;
    bool mEmpty = true;
};

}  // namespace hostrunner
