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

// The JSON Lines trace's formatting alone, as its writer thread does it: the five records of one
// status event (a read, three log lines, a callback), formatted by the trace (nlohmann's
// ordered_json) and by RapidJSON's Writer, checked first to write the same bytes. The baseline
// appends the same strings unescaped: the least any writer does.

#pragma once

namespace bench {

void registerJsonFormats();

}  // namespace bench
