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

#include "tests/service/DeviceFiles.h"

#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace service_test {

namespace {

std::string firstMatch(const std::string& text, const std::regex& re) {
    std::smatch m;
    return std::regex_search(text, m, re) ? m[1].str() : std::string();
}

std::vector<std::string> allMatches(const std::string& text, const std::regex& re) {
    std::vector<std::string> out;
    for (auto it = std::sregex_iterator(text.begin(), text.end(), re); it != std::sregex_iterator();
         ++it) {
        out.push_back((*it)[1].str());
    }
    return out;
}

std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    return std::vector<std::string>(std::istream_iterator<std::string>(in),
                                    std::istream_iterator<std::string>());
}

}  // namespace

std::string readSourceFile(const std::string& relativePath) {
    std::ifstream in(std::string(SOURCE_DIR) + "/" + relativePath);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

BinaryModule parseBinaryModule(const std::string& bp) {
    const std::string binary = firstMatch(bp, std::regex(R"(cc_binary\s*\{([^}]*)\})"));
    BinaryModule module;
    module.name = firstMatch(binary, std::regex(R"(\bname:\s*"([^"]+)\")"));
    module.initRc = firstMatch(binary, std::regex(R"(init_rc:\s*\[\s*"([^"]+)\")"));
    module.vintfFragment = firstMatch(binary, std::regex(R"(vintf_fragments:\s*\[\s*"([^"]+)\")"));
    return module;
}

InitService parseInitService(const std::string& rc) {
    InitService service;
    std::istringstream in(rc);
    std::string line;
    bool inService = false;
    while (std::getline(in, line)) {
        std::vector<std::string> w = words(line);
        if (w.empty() || w[0][0] == '#') continue;
        if (w[0] == "service") {
            inService = service.header.empty();
            if (inService) service.header = w;
            continue;
        }
        if (!inService || line[0] != ' ') continue;
        service.options.push_back(line.substr(line.find_first_not_of(' ')));
        if (w[0] == "interface" && w.size() == 3) service.interfaces.insert({w[1], w[2]});
    }
    return service;
}

std::set<Instance> parseManifest(const std::string& xml) {
    const std::string text = std::regex_replace(xml, std::regex(R"(<!--[\s\S]*?-->)"), "");
    const std::regex interfaceBlock(R"(<interface>([\s\S]*?)</interface>)");
    const std::regex name(R"(<name>\s*([^<\s]+)\s*</name>)");
    const std::regex instance(R"(<instance>\s*([^<\s]+)\s*</instance>)");
    std::set<Instance> declared;
    for (const std::string& hal : allMatches(text, std::regex(R"(<hal[^>]*>([\s\S]*?)</hal>)"))) {
        const std::string outer = std::regex_replace(hal, interfaceBlock, "");
        const std::string package = firstMatch(outer, name);
        const std::string version =
                firstMatch(outer, std::regex(R"(<version>\s*([^<\s]+)\s*</version>)"));
        for (const std::string& iface : allMatches(hal, interfaceBlock)) {
            const std::string fqName = package + "@" + version + "::" + firstMatch(iface, name);
            for (const std::string& inst : allMatches(iface, instance)) {
                declared.insert({fqName, inst});
            }
        }
    }
    return declared;
}

}  // namespace service_test
