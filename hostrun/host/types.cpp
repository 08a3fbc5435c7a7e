// hostrun/host/types.cpp - the types of the host language.
#include "hostrun/host/types.h"

#include <array>
#include <map>
#include <memory>

#include "hostrun/host/registry.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

const Type* Basic(Kind kind) {
  static const std::array<Type, 13> types = {{
      {Kind::Nothing, nullptr, nullptr, "nothing"},
      {Kind::Nil, nullptr, nullptr, "Nil"},
      {Kind::Boolean, nullptr, nullptr, "Boolean"},
      {Kind::Integer, nullptr, nullptr, "Integer"},
      {Kind::Int64, nullptr, nullptr, "Int64"},
      {Kind::Single, nullptr, nullptr, "Single"},
      {Kind::Double, nullptr, nullptr, "Double"},
      {Kind::Color, nullptr, nullptr, "Color"},
      {Kind::String, nullptr, nullptr, "String"},
      {Kind::Object, nullptr, nullptr, "Object"},
      {Kind::Array, nullptr, nullptr, "array"},
      {Kind::Variant, nullptr, nullptr, "Variant"},
      {Kind::Reference, nullptr, nullptr, "reference"},
  }};
  return &types[static_cast<std::size_t>(kind)];
}

}  // namespace

const Type* TypeOf(Kind kind) {
  return Basic(kind);
}

const Type* ObjectType(Class* cls) {
  return &cls->type;
}

const Type* ArrayOf(const Type* element) {
  static std::map<const Type*, std::unique_ptr<Type>> arrays;
  std::unique_ptr<Type>& made = arrays[element];
  if (!made) made = std::make_unique<Type>(Type{Kind::Array, nullptr, element, element->name + "()"});
  return made.get();
}

const Type* TypeNamed(std::string_view name) {
  struct Named {
    std::string_view name;
    Kind kind;
  };
  static constexpr std::array<Named, 13> kNamed = {{{"boolean", Kind::Boolean},
                                                    {"integer", Kind::Integer},
                                                    {"int32", Kind::Integer},
                                                    {"uint32", Kind::Integer},
                                                    {"ptr", Kind::Integer},
                                                    {"int64", Kind::Int64},
                                                    {"single", Kind::Single},
                                                    {"double", Kind::Double},
                                                    {"color", Kind::Color},
                                                    {"colour", Kind::Color},
                                                    {"string", Kind::String},
                                                    {"text", Kind::String},
                                                    {"variant", Kind::Variant}}};
  for (const Named& known : kNamed) {
    if (SameName(known.name, name)) return TypeOf(known.kind);
  }
  return ObjectType(&TheRegistry().ClassNamed(name));
}

}  // namespace hostrun
