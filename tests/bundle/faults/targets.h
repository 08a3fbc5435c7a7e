// tests/bundle/faults/targets.h - every function of the bundle that a host can call, and what it takes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace faults {

enum class Kind : std::uint8_t {
  kColor,  // an instance of NSColorQVX, NSColorListQVX, NSColorSpaceQVX
  kColorList,
  kColorSpace,
  kVariant,  // any instance; an image is wanted
  kString,
  kBlock,
  kItem,
  kNumbers,  // an array of doubles
  kInteger,
  kDouble,
  kOutput,     // a double by reference
  kParameter,  // the word that property getters get and ignore
};

struct Parameter {
  Kind kind;
  std::string name;
};

enum class Result : std::uint8_t {
  kNothing,
  kInteger,
  kDouble,
  kBoolean,
  kString,
  kObject,
  kBlock,
  kNumbers,
  kObjects
};

enum class Role : std::uint8_t { kProperty, kMethod, kSharedMethod, kConstructor, kDestructor, kEntry };

struct Target {
  Role role = Role::kEntry;
  std::string className;
  std::string name;         // the property's, or the method's without its parameters
  std::string declaration;  // with the class, as a report names it
  void* function = nullptr;
  std::vector<Parameter> parameters;  // the host object first
  Result result = Result::kNothing;
};

// All functions in the definitions that the scripted host has registered, then the entry itself.
std::vector<Target> AllTargets();

}  // namespace faults
