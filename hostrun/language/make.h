// hostrun/language/make.h - makes the expressions of a running program out of settled parts.
#pragma once

#include <string>
#include <vector>

#include "hostrun/host/registry.h"
#include "hostrun/language/code.h"

namespace hostrun {

// --- constants and operators (code_operators.cpp)
CodePtr MakeConstant(Position at, const Type* type, Value value);
// Null when the operator does not take these types.
CodePtr MakeUnary(Position at, const std::string& op, CodePtr operand);
CodePtr MakeBinary(Position at, const std::string& op, CodePtr left, CodePtr right);
// The operator on values whose types are known only now.
Value ApplyDynamically(Position at, const std::string& op, const Value& left, const Value& right);

// --- conversions (code_conversions.cpp)
// How badly a value of type `from` fits where `to` is wanted: 0 exactly, larger is worse, -1 not at all.
int ConversionCost(const Code& from, const Type& to);
// Precondition: ConversionCost is not -1.
CodePtr MakeConversion(CodePtr from, const Type* to);
// Class(value): the same object, or IllegalCastException. Null when it can never succeed.
CodePtr MakeCast(Position at, CodePtr from, const Type* to);
CodePtr MakeIsA(Position at, CodePtr from, const Class& cls);

// --- variables and arrays (code_values.cpp)
CodePtr MakeLocal(Position at, const Type* type, std::size_t slot);
CodePtr MakeGlobal(Position at, const Type* type, std::size_t slot);
CodePtr MakeReference(Position at, const Type* type, std::size_t slot);  // a by-reference parameter
CodePtr MakeElement(Position at, CodePtr array, CodePtr index);
CodePtr MakeArrayLiteral(Position at, std::vector<CodePtr> items);
// A literal of that element type; the items are converted. For Array(...) and parameter arrays.
CodePtr MakeArrayOf(Position at, const Type* element, std::vector<CodePtr> items);
CodePtr MakeNewArray(Position at, const Type* element, CodePtr upperBound);
// Null when an array has no such member.
struct ArrayMember;
const ArrayMember* FindArrayMember(std::string_view name);
std::size_t ArgumentCount(const ArrayMember& member);
// The type that argument `index` must have.
const Type* ArgumentType(const ArrayMember& member, const Type& array, std::size_t index);
CodePtr MakeArrayCall(Position at, const ArrayMember& member, CodePtr array, std::vector<CodePtr> arguments);
// Null when a Color has no such member.
CodePtr MakeColorMember(Position at, const std::string& name, CodePtr color);

// --- calls (code_calls.cpp)
// One argument, already of the parameter's type; by reference it is a Place of exactly that type.
struct Argument {
  CodePtr code;
  const Type* type;
  bool byref;
};
// `self` is null for shared methods and global functions.
CodePtr MakeNativeCall(Position at, const Method& method, CodePtr self, std::vector<Argument> arguments);
CodePtr MakeProperty(Position at, const Property& property, CodePtr self);
// A place that can only be assigned to: `setter` takes `leading`, already converted, and then the value.
CodePtr MakeIndexedSetter(Position at, const Method& setter, CodePtr self, std::vector<CodePtr> leading);
CodePtr MakeUserCall(Position at, const Routine& routine, std::vector<Argument> arguments);
// A new instance; `constructor` may be null.
CodePtr MakeNew(Position at, Class& cls, const Method* constructor, std::vector<Argument> arguments);

}  // namespace hostrun
