// hostrun/language/code_arrays.cpp - arrays: making them, their elements, their members.
#include "hostrun/language/code_arrays.h"

#include <algorithm>
#include <array>

#include "hostrun/host/arrays.h"
#include "hostrun/host/text.h"
#include "hostrun/language/code_conversions.h"

namespace hostrun {
namespace {

// The array, or NilObjectException.
Object* WantArray(const Value& value, Position at) {
  Note(at);
  if (value.object() == nullptr) RaiseHostException("NilObjectException", "The array is nil.");
  return value.object();
}

// The type that fits all items.
const Type* CommonType(const std::vector<CodePtr>& items) {
  const Type* common = TypeOf(Kind::Nil);
  for (const CodePtr& item : items) common = CommonType(*common, *item->type);
  return common->kind == Kind::Nil ? TypeOf(Kind::Variant) : common;
}

using Op = ArrayMember::Operation;
constexpr std::array<ArrayMember, 15> kMembers = {{
    {"ubound", Op::UpperBound, "", Kind::Integer},
    {"lastindex", Op::UpperBound, "", Kind::Integer},
    {"lastrowindex", Op::UpperBound, "", Kind::Integer},
    {"count", Op::Count, "", Kind::Integer},
    {"length", Op::Count, "", Kind::Integer},
    {"append", Op::Append, "e", Kind::Nothing},
    {"add", Op::Append, "e", Kind::Nothing},
    {"insert", Op::Insert, "ie", Kind::Nothing},
    {"addat", Op::Insert, "ie", Kind::Nothing},
    {"remove", Op::Remove, "i", Kind::Nothing},
    {"removeat", Op::Remove, "i", Kind::Nothing},
    {"removeall", Op::RemoveAll, "", Kind::Nothing},
    {"indexof", Op::IndexOf, "e", Kind::Integer},
    {"pop", Op::Pop, "", Kind::Variant},
    {"sort", Op::Sort, "", Kind::Nothing},
}};

// What the member gives for an array of that type.
const Type* ResultType(const ArrayMember& member, const Type& array) {
  return member.result == Kind::Variant ? array.element : TypeOf(member.result);
}

// As IndexOf finds: numbers by value, strings without regard to case, objects by identity.
bool SameElement(const Value& a, const Value& b) {
  if (a.kind() == Kind::Double || b.kind() == Kind::Double) return a.AsReal() == b.AsReal();
  if (a.kind() == Kind::String && b.kind() == Kind::String)
    return CompareStrings(a.string(), b.string()) == 0;
  if (a.kind() == Kind::Object || b.kind() == Kind::Object) return a.object() == b.object();
  return a.int64() == b.int64();
}

// The order of Sort.
bool Before(const Value& a, const Value& b) {
  if (a.kind() == Kind::String && b.kind() == Kind::String) return CompareStrings(a.string(), b.string()) < 0;
  return a.AsReal() < b.AsReal();
}

}  // namespace

Value Element::Eval(Activation& activation) const {
  const Value array = array_->Eval(activation);
  const std::int64_t index = index_->Whole(activation);
  return ElementAt(WantArray(array, at), index);
}

double Element::Real(Activation& activation) const {
  const Value array = array_->Eval(activation);
  const std::int64_t index = index_->Whole(activation);
  return ElementAt(WantArray(array, at), index).AsReal();
}

void Element::Store(Activation& activation, Value value) const {
  const Value array = array_->Eval(activation);
  const std::int64_t index = index_->Whole(activation);
  ElementAt(WantArray(array, at), index) = std::move(value);
}

Value NewArrayCode::Eval(Activation& activation) const {
  const std::int64_t bound = upperBound_->Whole(activation);
  Note(at);
  Value array = Value::Adopt(NewArray(*type->element, -1));
  ResizeArray(array.object(), bound);
  return array;
}

ArrayLiteral::ArrayLiteral(Position position, std::vector<CodePtr> items)
    : Code(position, ArrayOf(CommonType(items))), items_(std::move(items)) {
  Become(type->element);
}

int ArrayLiteral::CostAs(const Type& element) const {
  int dearest = 0;
  for (const CodePtr& item : items_) {
    const int cost = ConversionCost(*item, element);
    if (cost < 0) return -1;
    dearest = std::max(dearest, cost);
  }
  return dearest;
}

void ArrayLiteral::Become(const Type* element) {
  for (CodePtr& item : items_) item = MakeConversion(std::move(item), element);
  type = ArrayOf(element);
}

Value ArrayLiteral::Eval(Activation& activation) const {
  Note(at);
  Value array = Value::Adopt(NewArray(*type->element, -1));
  std::vector<Value>& into = ArrayDataOf(array.object()).items;
  into.reserve(items_.size());
  for (const CodePtr& item : items_) into.push_back(item->Eval(activation));
  return array;
}

const Type* ArrayMember::ArgumentType(const Type& array, std::size_t index) const {
  return arguments[index] == 'i' ? TypeOf(Kind::Integer) : array.element;
}

const ArrayMember* FindArrayMember(std::string_view name) {
  const auto* const found = std::find_if(kMembers.begin(), kMembers.end(),
                                         [name](const ArrayMember& m) { return SameName(m.name, name); });
  return found == kMembers.end() ? nullptr : found;
}

ArrayCall::ArrayCall(Position position, const ArrayMember& member, CodePtr array,
                     std::vector<CodePtr> arguments)
    : Code(position, ResultType(member, *array->type)),
      operation_(member.operation),
      array_(std::move(array)),
      arguments_(std::move(arguments)) {}

Value ArrayCall::Eval(Activation& activation) const {
  const Value held = array_->Eval(activation);
  Object* const array = held.object();
  if (array == nullptr) RaiseAt(at, "NilObjectException", "The array is nil.");
  switch (operation_) {
    case Op::UpperBound:
      return Value::Integer(UpperBound(array));
    case Op::Count:
      return Value::Integer(UpperBound(array) + 1);
    case Op::Append: {
      Value item = arguments_[0]->Eval(activation);
      ArrayDataOf(array).items.push_back(std::move(item));
      return {};
    }
    case Op::Insert: {
      const std::int64_t index = arguments_[0]->Whole(activation);
      Value item = arguments_[1]->Eval(activation);
      Note(at);
      InsertElement(array, index, std::move(item));
      return {};
    }
    case Op::Remove: {
      const std::int64_t index = arguments_[0]->Whole(activation);
      Note(at);
      RemoveElement(array, index);
      return {};
    }
    case Op::RemoveAll: {
      // Freed when the array is empty already: a destructor may look at it.
      const std::vector<Value> gone = std::move(ArrayDataOf(array).items);
      ArrayDataOf(array).items.clear();
      return {};
    }
    case Op::IndexOf: {
      const Value wanted = arguments_[0]->Eval(activation);
      const std::vector<Value>& items = ArrayDataOf(array).items;
      const auto found =
          std::find_if(items.begin(), items.end(), [&](const Value& v) { return SameElement(v, wanted); });
      return Value::Integer(found == items.end() ? -1 : static_cast<std::int32_t>(found - items.begin()));
    }
    case Op::Pop: {
      Note(at);
      Value last = ElementAt(array, UpperBound(array));
      RemoveElement(array, UpperBound(array));
      return last;
    }
    case Op::Sort:
      std::stable_sort(ArrayDataOf(array).items.begin(), ArrayDataOf(array).items.end(), Before);
      return {};
  }
  return {};
}

}  // namespace hostrun
