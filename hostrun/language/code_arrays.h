// hostrun/language/code_arrays.h - arrays: making them, their elements, their members.
#pragma once

#include <string_view>
#include <vector>

#include "hostrun/language/code.h"

namespace hostrun {

// array(index): its element, or OutOfBoundsException; NilObjectException without an array.
class Element final : public Place {
 public:
  Element(Position position, CodePtr array, CodePtr index)
      : Place(position, array->type->element), array_(std::move(array)), index_(std::move(index)) {}
  Value Eval(Activation& activation) const override;
  double Real(Activation& activation) const override;
  void Store(Activation& activation, Value value) const override;

 private:
  CodePtr array_;
  CodePtr index_;
};

// An array of default values, up to an upper bound.
class NewArrayCode final : public Code {
 public:
  NewArrayCode(Position position, const Type* element, CodePtr upperBound)
      : Code(position, ArrayOf(element)), upperBound_(std::move(upperBound)) {}
  Value Eval(Activation& activation) const override;

 private:
  CodePtr upperBound_;
};

// Array(...): its type settles where it is used; until then it is the one that fits all items.
class ArrayLiteral final : public Code {
 public:
  ArrayLiteral(Position position, std::vector<CodePtr> items);
  Value Eval(Activation& activation) const override;

  // The dearest conversion of an item to `element`; -1 when one can't be converted.
  int CostAs(const Type& element) const;
  // Converts the items. Precondition: CostAs is not -1.
  void Become(const Type* element);

 private:
  std::vector<CodePtr> items_;
};

// A method of arrays.
struct ArrayMember {
  enum class Operation : std::uint8_t {
    UpperBound,
    Count,
    Append,
    Insert,
    Remove,
    RemoveAll,
    IndexOf,
    Pop,
    Sort,
  };
  std::string_view name;
  Operation operation;
  std::string_view arguments;  // one letter for each; i: an index, e: an element
  Kind result;                 // Variant: an element

  // The type that argument `index` must have.
  const Type* ArgumentType(const Type& array, std::size_t index) const;
};
// Null when an array has no such member. Without regard to case.
const ArrayMember* FindArrayMember(std::string_view name);

// array.member(arguments); the arguments are as many as the member takes, and of its types.
class ArrayCall final : public Code {
 public:
  ArrayCall(Position position, const ArrayMember& member, CodePtr array, std::vector<CodePtr> arguments);
  Value Eval(Activation& activation) const override;

 private:
  ArrayMember::Operation operation_;
  CodePtr array_;
  std::vector<CodePtr> arguments_;
};

}  // namespace hostrun
