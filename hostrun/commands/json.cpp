// hostrun/commands/json.cpp - JSON as text.
#include "hostrun/commands/json.h"

namespace hostrun {

std::string JsonText(const ordered_json& json, int indent) {
  return json.dump(indent, ' ', false, ordered_json::error_handler_t::replace);
}

std::optional<ordered_json> ReadJson(const std::string& text) {
  ordered_json json = ordered_json::parse(text, nullptr, false);
  if (json.is_discarded()) return std::nullopt;
  return json;
}

}  // namespace hostrun
