// hostrun/language/code_arrays.cpp - the members of arrays.
#include <algorithm>
#include <array>

#include "hostrun/host/arrays.h"
#include "hostrun/host/text.h"
#include "hostrun/language/make.h"

namespace hostrun {

enum class ArrayOperation : std::uint8_t {
  UpperBound,
  Count,
  Append,
  Insert,
  Remove,
  RemoveAll,
  IndexOf,
  Pop,
  Sort
};

struct ArrayMember {
  std::string_view name;
  ArrayOperation operation;
  std::string_view arguments;  // i: an index, e: an element
  Kind result;                 // Variant: an element
};

namespace {

using Op = ArrayOperation;
constexpr std::array<ArrayMember, 14> kMembers = {{
    {"ubound", Op::UpperBound, "", Kind::Integer},
    {"lastindex", Op::UpperBound, "", Kind::Integer},
    {"lastrowindex", Op::UpperBound, "", Kind::Integer},
    {"count", Op::Count, "", Kind::Integer},
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

const Type* ResultType(const ArrayMember& member, const Type& array) {
  return member.result == Kind::Variant ? array.element : TypeOf(member.result);
}

bool SameElement(const Value& a, const Value& b) {
  if (a.kind() == Kind::Double || b.kind() == Kind::Double) return a.AsReal() == b.AsReal();
  if (a.kind() == Kind::String && b.kind() == Kind::String)
    return CompareStrings(a.string(), b.string()) == 0;
  if (a.kind() == Kind::Object || b.kind() == Kind::Object) return a.object() == b.object();
  return a.int64() == b.int64();
}

bool Before(const Value& a, const Value& b) {
  if (a.kind() == Kind::String && b.kind() == Kind::String) return CompareStrings(a.string(), b.string()) < 0;
  return a.AsReal() < b.AsReal();
}

class ArrayCall final : public Code {
 public:
  ArrayCall(Position position, const ArrayMember& member, CodePtr array, std::vector<CodePtr> arguments)
      : Code(position, ResultType(member, *array->type)),
        operation_(member.operation),
        array_(std::move(array)),
        arguments_(std::move(arguments)) {}

  Value Eval(Frame& frame) const override {
    const Value held = array_->Eval(frame);
    Object* const array = held.object();
    if (array == nullptr) RaiseAt(at, "NilObjectException", "The array is nil.");
    switch (operation_) {
      case Op::UpperBound:
        return Value::Integer(UpperBound(array));
      case Op::Count:
        return Value::Integer(UpperBound(array) + 1);
      case Op::Append: {
        Value item = arguments_[0]->Eval(frame);
        ArrayDataOf(array).items.push_back(std::move(item));
        return {};
      }
      case Op::Insert: {
        const std::int64_t index = arguments_[0]->Whole(frame);
        Value item = arguments_[1]->Eval(frame);
        Note(at);
        InsertElement(array, index, std::move(item));
        return {};
      }
      case Op::Remove: {
        const std::int64_t index = arguments_[0]->Whole(frame);
        Note(at);
        RemoveElement(array, index);
        return {};
      }
      case Op::RemoveAll: {
        const std::vector<Value> gone = std::move(ArrayDataOf(array).items);
        ArrayDataOf(array).items.clear();
        return {};
      }
      case Op::IndexOf: {
        const Value wanted = arguments_[0]->Eval(frame);
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

 private:
  ArrayOperation operation_;
  CodePtr array_;
  std::vector<CodePtr> arguments_;
};

}  // namespace

const ArrayMember* FindArrayMember(std::string_view name) {
  const auto* const found = std::find_if(kMembers.begin(), kMembers.end(),
                                         [name](const ArrayMember& m) { return SameName(m.name, name); });
  return found == kMembers.end() ? nullptr : found;
}

std::size_t ArgumentCount(const ArrayMember& member) {
  return member.arguments.size();
}

const Type* ArgumentType(const ArrayMember& member, const Type& array, std::size_t index) {
  return member.arguments[index] == 'i' ? TypeOf(Kind::Integer) : array.element;
}

CodePtr MakeArrayCall(Position at, const ArrayMember& member, CodePtr array, std::vector<CodePtr> arguments) {
  return std::make_unique<ArrayCall>(at, member, std::move(array), std::move(arguments));
}

}  // namespace hostrun
