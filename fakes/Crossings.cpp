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

#include "fakes/Crossings.h"

#include <map>
#include <mutex>
#include <utility>

namespace fakes {
namespace {

struct Registry {
    std::mutex lock;
    std::map<int, Observers::Observer> observers;
    int nextId = 1;
};

Registry& registry() {
    // Never destroyed: the event thread may still cross while the process exits.
    static Registry* instance = new Registry();
    return *instance;
}

}  // namespace

std::atomic<int> Observers::sCount{0};

int Observers::add(Observer observer) {
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.lock);
    const int id = r.nextId++;
    r.observers.emplace(id, std::move(observer));
    sCount.store(static_cast<int>(r.observers.size()), std::memory_order_relaxed);
    return id;
}

void Observers::remove(int id) {
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.lock);
    r.observers.erase(id);
    sCount.store(static_cast<int>(r.observers.size()), std::memory_order_relaxed);
}

void Observers::report(const Crossing& crossing) {
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.lock);
    for (const auto& entry : r.observers) entry.second(crossing);
}

}  // namespace fakes
