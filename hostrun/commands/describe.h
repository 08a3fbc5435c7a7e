// hostrun/commands/describe.h - registered classes and values as JSON and as short texts.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

#include "hostrun/host/functions.h"  // LiteralText
#include "hostrun/host/registry.h"

namespace hostrun {

// "bundle", "sibling" or "host".
const char* NameOf(Origin origin);
std::string KindOf(const Method& method);  // "method", "shared method", "constructor"

// The keys are those that docs/hostrun.md names. Members keep the order of registration.
nlohmann::ordered_json ToJson(const Value& value);
nlohmann::ordered_json ToJson(const Method& method);
nlohmann::ordered_json ToJson(const Property& property);
nlohmann::ordered_json ToJson(const Constant& constant);
nlohmann::ordered_json ToJson(const Class& cls);

}  // namespace hostrun
