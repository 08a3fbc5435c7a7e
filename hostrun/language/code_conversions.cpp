// hostrun/language/code_conversions.cpp - from one type to another.
#include "hostrun/language/code_conversions.h"

#include <algorithm>
#include <cmath>

#include "hostrun/host/arrays.h"
#include "hostrun/host/functions.h"
#include "hostrun/language/code_arrays.h"
#include "hostrun/language/code_operators.h"
#include "hostrun/language/source.h"

namespace hostrun {
namespace {

// Its position is that of what it converts.
class Conversion : public Code {
 public:
  Conversion(CodePtr from, const Type* to) : Code(from->at, to), from_(std::move(from)) {}
  bool IsConstant() const override { return from_->IsConstant(); }

 protected:
  CodePtr from_;
};

// To Double, or to Single: rounded to what a Single can hold.
class ToReal final : public Conversion {
 public:
  using Conversion::Conversion;
  Value Eval(Activation& activation) const override { return Value::Double(Real(activation)); }
  double Real(Activation& activation) const override {
    const double number = from_->Real(activation);
    return type->kind == Kind::Single ? static_cast<double>(static_cast<float>(number)) : number;
  }
};

// A real number is cut toward zero, and to the nearest number that the type has.
class ToWhole final : public Conversion {
 public:
  using Conversion::Conversion;
  Value Eval(Activation& activation) const override {
    const std::int64_t n = Whole(activation);
    return type->kind == Kind::Int64 ? Value::Int64(n) : Value::Integer(static_cast<std::int32_t>(n));
  }
  std::int64_t Whole(Activation& activation) const override {
    if (from_->type->IsInteger()) {
      const std::int64_t n = from_->Whole(activation);
      return type->kind == Kind::Int64 ? n : static_cast<std::int32_t>(n);
    }
    const std::int64_t n = Value::Truncate(from_->Real(activation));
    return type->kind == Kind::Int64 ? n : std::clamp<std::int64_t>(n, INT32_MIN, INT32_MAX);
  }
  double Real(Activation& activation) const override { return static_cast<double>(Whole(activation)); }
};

// Nothing happens to the value, only its type is seen differently.
class Seen final : public Conversion {
 public:
  using Conversion::Conversion;
  Value Eval(Activation& activation) const override { return from_->Eval(activation); }
};

// As a program writes the type of a value that it has.
std::string TypeNameOf(const Value& value) {
  if (value.kind() != Kind::Object || value.object() == nullptr) return TypeOf(value.kind())->name;
  if (IsKindOf(value.object(), ArrayClass())) return ArrayDataOf(value.object()).element->name + "()";
  return value.object()->cls->name;
}

// Settled when it runs: the value as that type, or TypeMismatchException.
class FromVariant final : public Conversion {
 public:
  using Conversion::Conversion;
  Value Eval(Activation& activation) const override {
    Value value = from_->Eval(activation);
    switch (type->kind) {
      case Kind::Double:
        if (IsNumber(value)) return Value::Double(value.AsReal());
        break;
      case Kind::Single:
        if (IsNumber(value)) return Value::Double(static_cast<double>(static_cast<float>(value.AsReal())));
        break;
      case Kind::Integer:
        if (IsNumber(value)) {
          return Value::Integer(
              static_cast<std::int32_t>(std::clamp<std::int64_t>(value.AsInt64(), INT32_MIN, INT32_MAX)));
        }
        break;
      case Kind::Int64:
        if (IsNumber(value)) return Value::Int64(value.AsInt64());
        break;
      case Kind::Object:
        if (value.IsNil() || IsKindOf(value.object(), *type->cls)) return value;
        break;
      case Kind::Array:
        if (value.IsNil()) return value;
        if (IsKindOf(value.object(), ArrayClass()) && Holds(*ArrayDataOf(value.object()).element))
          return value;
        break;
      default:
        if (value.kind() == type->kind) return value;
        if (value.IsNil()) return Value::DefaultOf(*type);  // an empty Variant
    }
    RaiseAt(at, "TypeMismatchException", "Wanted " + type->name + ", found " + TypeNameOf(value) + ".");
  }

 private:
  static bool IsNumber(const Value& value) { return TypeOf(value.kind())->IsNumber() || value.IsNil(); }
  bool Holds(const Type& element) const {
    return &element == type->element || (element.kind == Kind::Object && type->element->kind == Kind::Object);
  }
};

// Nil, or an instance of the class; else IllegalCastException.
class Cast final : public Conversion {
 public:
  using Conversion::Conversion;
  Value Eval(Activation& activation) const override {
    Value value = from_->Eval(activation);
    if (value.IsNil() || IsKindOf(value.object(), *type->cls)) return value;
    RaiseAt(at, "IllegalCastException", "Wanted " + type->name + ", found " + TypeNameOf(value) + ".");
  }
};

// How many steps of descent lie between them; -1: `from` does not descend from `to`.
int Distance(const Class& from, const Class& to) {
  int steps = 0;
  for (const Class* cls = &from; cls != nullptr; cls = cls->super, ++steps) {
    if (cls == &to) return steps;
  }
  return -1;
}

// What conversions cost: those that lose nothing least, those that may fail when they run most.
constexpr int kWidening = 1;
constexpr int kWideningToReal = 2;
constexpr int kNarrowing = 4;
constexpr int kFromVariant = 8;
constexpr int kToVariant = 10;

int NumberCost(const Type& from, const Type& to) {
  if (from.IsInteger() && to.IsInteger()) return to.kind == Kind::Int64 ? kWidening : kNarrowing;
  if (to.IsReal()) return from.IsReal() ? kWidening : kWideningToReal;
  return kNarrowing + 1;
}

// A number that is known already must be one of the type.
void WantFit(const Code& constant, const Type& to) {
  if (!constant.type->IsNumber() || !to.IsInteger()) return;
  const Value value = ConstantValue(constant);
  const bool narrow = to.kind == Kind::Integer;
  const auto least = static_cast<double>(narrow ? INT32_MIN : INT64_MIN);
  const double most = narrow ? 2147483648.0 : 9223372036854775808.0;  // the first that is too large
  const double number = std::trunc(value.AsReal());
  const bool fits = value.kind() == Kind::Double || narrow ? number >= least && number < most : true;
  if (fits) return;
  throw ProgramError(constant.at, "wanted a number that an " + to.name + " can hold, found " +
                                      ExactText(value) +
                                      (narrow ? "; Int64 and Double hold more" : "; Double holds more"));
}

}  // namespace

int ConversionCost(const Code& from, const Type& to) {
  const Type& type = *from.type;
  if (&type == &to) return 0;
  if (type.kind == Kind::Nothing) return -1;
  if (to.kind == Kind::Variant) return kToVariant;
  if (type.kind == Kind::Variant) return kFromVariant;
  if (type.IsNumber() && to.IsNumber()) return NumberCost(type, to);
  if (type.kind == Kind::Nil) return to.kind == Kind::Object || to.kind == Kind::Array ? kWidening : -1;
  if (type.kind == Kind::Object && to.kind == Kind::Object) return Distance(*type.cls, *to.cls);
  if (to.kind == Kind::Array) {
    const auto* const literal = dynamic_cast<const ArrayLiteral*>(&from);
    return literal == nullptr ? -1 : literal->CostAs(*to.element);
  }
  return -1;
}

CodePtr MakeConversion(CodePtr from, const Type* to) {
  const Type* const type = from->type;
  if (type == to) return from;
  if (auto* const literal = dynamic_cast<ArrayLiteral*>(from.get());
      literal != nullptr && to->kind == Kind::Array) {
    literal->Become(to->element);
    return from;
  }
  const bool constant = from->IsConstant();
  if (constant) WantFit(*from, *to);
  CodePtr made;
  if (type->kind == Kind::Variant) {
    made = std::make_unique<FromVariant>(std::move(from), to);
  } else if (to->IsReal()) {
    made = std::make_unique<ToReal>(std::move(from), to);
  } else if (to->IsInteger()) {
    made = std::make_unique<ToWhole>(std::move(from), to);
  } else {
    made = std::make_unique<Seen>(std::move(from), to);
  }
  if (!constant || type->kind == Kind::Variant) return made;
  return std::make_unique<ConstantCode>(made->at, to, ConstantValue(*made));
}

const Type* CommonType(const Type& a, const Type& b) {
  if (&a == &b || b.kind == Kind::Nil) return &a;
  if (a.kind == Kind::Nil) return &b;
  if (a.IsNumber() && b.IsNumber())
    return TypeOf(a.IsInteger() && b.IsInteger() ? Kind::Int64 : Kind::Double);
  if (a.kind == Kind::Object && b.kind == Kind::Object) {
    if (a.cls->IsA(*b.cls)) return &b;
    if (b.cls->IsA(*a.cls)) return &a;
  }
  return TypeOf(Kind::Variant);
}

CodePtr MakeCast(Position at, CodePtr from, const Type* to) {
  const Type& type = *from->type;
  if (to->kind != Kind::Object) {
    return ConversionCost(*from, *to) < 0 ? nullptr : MakeConversion(std::move(from), to);
  }
  const bool possible = type.kind == Kind::Variant || type.kind == Kind::Nil ||
                        (type.kind == Kind::Object &&
                         (Distance(*type.cls, *to->cls) >= 0 || Distance(*to->cls, *type.cls) >= 0));
  if (!possible) return nullptr;
  CodePtr cast = std::make_unique<Cast>(std::move(from), to);
  cast->at = at;
  return cast;
}

}  // namespace hostrun
