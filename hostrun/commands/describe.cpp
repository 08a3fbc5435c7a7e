// hostrun/commands/describe.cpp - registered classes and values as JSON and as short texts.
#include "hostrun/commands/describe.h"

#include <cmath>

#include "hostrun/commands/json.h"
#include "hostrun/host/text.h"

namespace hostrun {

const char* NameOf(Origin origin) {
  switch (origin) {
    case Origin::Host:
      return "host";
    case Origin::Sibling:
      return "sibling";
    case Origin::Bundle:
      return "bundle";
  }
  return "";
}

std::string KindOf(const Method& method) {
  if (method.shared) return "shared method";
  return SameName(method.signature.name, "Constructor") ? "constructor" : "method";
}

ordered_json ToJson(const Value& value) {
  switch (value.kind()) {
    case Kind::Boolean:
      return value.boolean();
    case Kind::Integer:
    case Kind::Int64:
      return value.int64();
    case Kind::Single:
    case Kind::Double:
      // JSON has no other numbers.
      if (std::isfinite(value.real())) return value.real();
      return DisplayText(value);
    case Kind::String:
      return Utf8Of(value.string());
    case Kind::Color:
      return DisplayText(value);
    default:
      return nullptr;
  }
}

ordered_json ToJson(const Method& method) {
  ordered_json parameters = ordered_json::array();
  for (const Parameter& parameter : method.signature.parameters) {
    ordered_json one = {{"name", parameter.name}, {"type", parameter.type->name}};
    if (parameter.byref) one["byref"] = true;
    if (parameter.paramArray) one["paramArray"] = true;
    if (parameter.assigns) one["assigns"] = true;
    if (parameter.defaultValue) one["default"] = ToJson(*parameter.defaultValue);
    parameters.push_back(std::move(one));
  }
  ordered_json json = {{"name", method.signature.name},
                       {"kind", KindOf(method)},
                       {"declaration", method.declaration},
                       {"flags", method.flags},
                       {"parameters", std::move(parameters)}};
  const Type& result = *method.signature.result;
  json["result"] = result.kind == Kind::Nothing ? ordered_json() : ordered_json(result.name);
  return json;
}

ordered_json ToJson(const Property& property) {
  return {{"name", property.name},           {"kind", property.shared ? "shared property" : "property"},
          {"type", property.typeName},       {"flags", property.flags},
          {"parameter", property.parameter}, {"readOnly", property.setter.function == nullptr}};
}

ordered_json ToJson(const Constant& constant) {
  return {{"name", constant.name},
          {"kind", "constant"},
          {"declaration", constant.declaration},
          {"type", constant.type->name},
          {"value", ToJson(constant.value)}};
}

namespace {

template <class Members>
ordered_json ListOf(const Members& members) {
  ordered_json list = ordered_json::array();
  for (const auto& member : members) list.push_back(ToJson(member));
  return list;
}

}  // namespace

ordered_json ToJson(const Class& cls) {
  ordered_json json = {{"name", cls.name},
                       {"kind", "class"},
                       {"origin", NameOf(cls.origin)},
                       {"super", cls.super == nullptr ? ordered_json() : ordered_json(cls.super->name)},
                       {"layout", cls.layoutVersion},
                       {"flags", cls.flags},
                       {"dataSize", cls.dataSize},
                       {"dataOffset", cls.dataOffset}};
  json["properties"] = ListOf(cls.properties);
  json["methods"] = ListOf(cls.methods);
  json["sharedMethods"] = ListOf(cls.sharedMethods);
  json["constants"] = ListOf(cls.constants);
  return json;
}

}  // namespace hostrun
