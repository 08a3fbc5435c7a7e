// hostrun/host/declaration.h - reads declarations of the host language, such as
// "colorWithDeviceRGB(red as double, green as double, blue as double, alpha as double=1.0) as NSColorQVX".
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "hostrun/host/types.h"
#include "hostrun/host/value.h"

namespace hostrun {

struct Parameter {
  std::string name;
  const Type* type = nullptr;
  bool byref = false;
  bool paramArray = false;  // `type` is then the array's
  bool assigns = false;     // takes the right side of an assignment
  std::optional<Value> defaultValue;
};

struct Signature {
  std::string name;
  std::vector<Parameter> parameters;
  const Type* result = nullptr;  // Kind::Nothing for none

  std::size_t RequiredCount() const;
  bool TakesAnyCount() const { return !parameters.empty() && parameters.back().paramArray; }
  bool Assigns() const { return !parameters.empty() && parameters.back().assigns; }
  // As a program would write it.
  std::string Text() const;
};

struct ConstantDeclaration {
  std::string name;
  const Type* type = nullptr;
  Value value;
};

class DeclarationError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Both throw DeclarationError: what was wanted, what was found, where.
Signature ParseSignature(std::string_view declaration);
ConstantDeclaration ParseConstant(std::string_view declaration);

// Same name, same types in the same order, same result: what a host looks a global method up by.
bool SameSignature(const Signature& a, const Signature& b);

}  // namespace hostrun
