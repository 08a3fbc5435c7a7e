// hostrun/language/code_values.cpp - variables, arrays and colours.
#include <algorithm>
#include <array>
#include <cmath>

#include "hostrun/host/arrays.h"
#include "hostrun/host/text.h"
#include "hostrun/language/array_literal.h"
#include "hostrun/language/make.h"

namespace hostrun {
namespace {

// Where: how a variable is found in a frame.
template <class Where>
class Variable final : public Place {
 public:
  Variable(Position position, const Type* t, std::size_t slot) : Place(position, t), slot_(slot) {}
  Value Eval(Frame& frame) const override { return Where::Find(frame, slot_); }
  double Real(Frame& frame) const override { return Where::Find(frame, slot_).AsReal(); }
  std::int64_t Whole(Frame& frame) const override { return Where::Find(frame, slot_).AsInt64(); }
  bool StaysInPlace() const override { return true; }
  Value* Locate(Frame& frame) const override { return &Where::Find(frame, slot_); }
  void Store(Frame& frame, Value value) const override { Where::Find(frame, slot_) = std::move(value); }

 private:
  std::size_t slot_;
};
struct InLocals {
  static Value& Find(Frame& frame, std::size_t slot) { return frame.locals[slot]; }
};
struct InGlobals {
  static Value& Find(Frame& frame, std::size_t slot) { return frame.globals[slot]; }
};
struct BehindReference {
  static Value& Find(Frame& frame, std::size_t slot) { return *frame.locals[slot].place(); }
};

Object* WantArray(const Value& value, Position at) {
  Note(at);
  if (value.object() == nullptr) RaiseHostException("NilObjectException", "The array is nil.");
  return value.object();
}

class Element final : public Place {
 public:
  Element(Position position, CodePtr array, CodePtr index)
      : Place(position, array->type->element), array_(std::move(array)), index_(std::move(index)) {}
  Value Eval(Frame& frame) const override {
    const Value array = array_->Eval(frame);
    const std::int64_t index = index_->Whole(frame);
    return ElementAt(WantArray(array, at), index);
  }
  double Real(Frame& frame) const override {
    const Value array = array_->Eval(frame);
    const std::int64_t index = index_->Whole(frame);
    return ElementAt(WantArray(array, at), index).AsReal();
  }
  void Store(Frame& frame, Value value) const override {
    const Value array = array_->Eval(frame);
    const std::int64_t index = index_->Whole(frame);
    ElementAt(WantArray(array, at), index) = std::move(value);
  }

 private:
  CodePtr array_;
  CodePtr index_;
};

class NewArrayCode final : public Code {
 public:
  NewArrayCode(Position position, const Type* element, CodePtr bound)
      : Code(position, ArrayOf(element)), bound_(std::move(bound)) {}
  Value Eval(Frame& frame) const override {
    const std::int64_t bound = bound_->Whole(frame);
    Note(at);
    Value array = Value::Adopt(NewArray(*type->element, -1));
    ResizeArray(array.object(), bound);
    return array;
  }

 private:
  CodePtr bound_;
};

// The type that fits all items.
const Type* CommonType(const std::vector<CodePtr>& items) {
  const Type* common = nullptr;
  for (const CodePtr& item : items) {
    const Type* const type = item->type;
    if (common == nullptr || common->kind == Kind::Nil) {
      common = type;
    } else if (type != common && type->kind != Kind::Nil) {
      if (type->IsNumber() && common->IsNumber()) {
        const bool whole = type->IsInteger() && common->IsInteger();
        common = TypeOf(whole ? Kind::Int64 : Kind::Double);
      } else if (type->kind == Kind::Object && common->kind == Kind::Object) {
        if (common->cls->IsA(*type->cls))
          common = type;
        else if (!type->cls->IsA(*common->cls))
          common = TypeOf(Kind::Variant);
      } else {
        common = TypeOf(Kind::Variant);
      }
    }
  }
  return common == nullptr || common->kind == Kind::Nil ? TypeOf(Kind::Variant) : common;
}

class ColorMember final : public Code {
 public:
  enum class Part : std::uint8_t { Red, Green, Blue, Alpha, Hue, Saturation, Brightness };
  ColorMember(Position position, Part part, CodePtr color)
      : Code(position, TypeOf(part < Part::Hue ? Kind::Integer : Kind::Double)),
        part_(part),
        color_(std::move(color)) {}
  Value Eval(Frame& frame) const override {
    const auto rgb = static_cast<std::uint32_t>(color_->Whole(frame));
    const auto channel = [rgb](unsigned shift) { return static_cast<std::int32_t>((rgb >> shift) & 0xFFU); };
    switch (part_) {
      case Part::Red:
        return Value::Integer(channel(16));
      case Part::Green:
        return Value::Integer(channel(8));
      case Part::Blue:
        return Value::Integer(channel(0));
      case Part::Alpha:
        return Value::Integer(channel(24));
      default:
        return Value::Double(Hsv(channel(16) / 255.0, channel(8) / 255.0, channel(0) / 255.0));
    }
  }

 private:
  double Hsv(double red, double green, double blue) const {
    const double most = std::max({red, green, blue});
    const double spread = most - std::min({red, green, blue});
    if (part_ == Part::Brightness) return most;
    if (part_ == Part::Saturation) return most == 0 ? 0 : spread / most;
    if (spread == 0) return 0;
    const double sector = most == red     ? std::fmod((green - blue) / spread + 6, 6)
                          : most == green ? (blue - red) / spread + 2
                                          : (red - green) / spread + 4;
    return sector / 6;
  }

  Part part_;
  CodePtr color_;
};

}  // namespace

CodePtr MakeLocal(Position at, const Type* type, std::size_t slot) {
  return std::make_unique<Variable<InLocals>>(at, type, slot);
}
CodePtr MakeGlobal(Position at, const Type* type, std::size_t slot) {
  return std::make_unique<Variable<InGlobals>>(at, type, slot);
}
CodePtr MakeReference(Position at, const Type* type, std::size_t slot) {
  return std::make_unique<Variable<BehindReference>>(at, type, slot);
}
CodePtr MakeElement(Position at, CodePtr array, CodePtr index) {
  return std::make_unique<Element>(at, std::move(array), std::move(index));
}
CodePtr MakeNewArray(Position at, const Type* element, CodePtr upperBound) {
  return std::make_unique<NewArrayCode>(at, element, std::move(upperBound));
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

Value ArrayLiteral::Eval(Frame& frame) const {
  Note(at);
  Value array = Value::Adopt(NewArray(*type->element, -1));
  std::vector<Value>& into = ArrayDataOf(array.object()).items;
  into.reserve(items_.size());
  for (const CodePtr& item : items_) into.push_back(item->Eval(frame));
  return array;
}

CodePtr MakeArrayLiteral(Position at, std::vector<CodePtr> items) {
  return std::make_unique<ArrayLiteral>(at, std::move(items));
}

CodePtr MakeArrayOf(Position at, const Type* element, std::vector<CodePtr> items) {
  auto literal = std::make_unique<ArrayLiteral>(at, std::move(items));
  literal->Become(element);
  return literal;
}

CodePtr MakeColorMember(Position at, const std::string& name, CodePtr color) {
  using Part = ColorMember::Part;
  struct Named {
    std::string_view name;
    Part part;
  };
  static constexpr std::array<Named, 8> kMembers = {{{"red", Part::Red},
                                                     {"green", Part::Green},
                                                     {"blue", Part::Blue},
                                                     {"alpha", Part::Alpha},
                                                     {"hue", Part::Hue},
                                                     {"saturation", Part::Saturation},
                                                     {"value", Part::Brightness},
                                                     {"brightness", Part::Brightness}}};
  for (const Named& member : kMembers) {
    if (SameName(member.name, name)) return std::make_unique<ColorMember>(at, member.part, std::move(color));
  }
  return nullptr;
}

}  // namespace hostrun
