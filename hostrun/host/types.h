// hostrun/host/types.h - the types of the host language. Each type is one object: equal types have equal
// addresses.
#pragma once

#include <cstdint>
#include <string>

namespace hostrun {

struct Class;

enum class Kind : std::uint8_t {
  Nothing,  // no value; as a type: what a Sub gives
  Nil,
  Boolean,
  Integer,  // 32 bits, wraps around
  Int64,
  Single,
  Double,
  Color,  // 0x00RRGGBB
  String,
  Object,
  Array,
  Variant,
  Reference,  // values only: a by-reference parameter's place
};

struct Type {
  Kind kind;
  Class* cls = nullptr;           // Object
  const Type* element = nullptr;  // Array
  std::string name;               // as a program writes it

  bool IsInteger() const { return kind == Kind::Integer || kind == Kind::Int64; }
  bool IsReal() const { return kind == Kind::Double || kind == Kind::Single; }
  bool IsNumber() const { return IsInteger() || IsReal(); }
  // Values of these types are handles, and count references.
  bool IsCounted() const {
    return kind == Kind::String || kind == Kind::Object || kind == Kind::Array || kind == Kind::Variant;
  }
};

// The type of a kind that needs nothing more (everything but Object and Array).
const Type* TypeOf(Kind kind);
const Type* ObjectType(Class* cls);
const Type* ArrayOf(const Type* element);

// The type that a program or a declaration names; a name that is no basic type names a class, defined or not.
const Type* TypeNamed(std::string_view name);

}  // namespace hostrun
