// hostrun/commands/json.h - JSON as text. What writes and reads it is compiled once, in json.cpp.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace hostrun {

using nlohmann::ordered_json;

// `indent` spaces for each level; -1: all in one line. Bundles and programs name things as they like: bytes
// that are not UTF-8 become replacement characters, as JSON takes nothing else.
std::string JsonText(const ordered_json& json, int indent);

// What such a text says; nothing, where it is not JSON.
std::optional<ordered_json> ReadJson(const std::string& text);

}  // namespace hostrun
