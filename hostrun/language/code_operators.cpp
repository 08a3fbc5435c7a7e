// hostrun/language/code_operators.cpp - constants and operators.
#include "hostrun/language/code_operators.h"

#include <array>
#include <cmath>
#include <optional>

namespace hostrun {
namespace {

// A whole number as a value of a type that Whole() serves.
Value WholeValue(const Type& type, std::int64_t n) {
  switch (type.kind) {
    case Kind::Boolean:
      return Value::Boolean(n != 0);
    case Kind::Int64:
      return Value::Int64(n);
    case Kind::Color:
      return Value::Color(static_cast<std::uint32_t>(n));
    default:
      return Value::Integer(static_cast<std::int32_t>(n));
  }
}

class Binary : public Code {
 public:
  Binary(Position position, const Type* t, CodePtr l, CodePtr r)
      : Code(position, t), left(std::move(l)), right(std::move(r)) {}
  bool IsConstant() const override { return left->IsConstant() && right->IsConstant(); }

 protected:
  CodePtr left;
  CodePtr right;
};

// Results that are whole numbers or truth values. Op::Apply evaluates both sides, or only the left.
template <class Op>
class WholeBinary final : public Binary {
 public:
  using Binary::Binary;
  Value Eval(Activation& activation) const override { return WholeValue(*type, Whole(activation)); }
  double Real(Activation& activation) const override { return static_cast<double>(Whole(activation)); }
  std::int64_t Whole(Activation& activation) const override {
    const std::int64_t n = Op::Apply(activation, *left, *right, at);
    return type->kind == Kind::Integer ? static_cast<std::int32_t>(n) : n;
  }
};

// Results that are Doubles. Op::Apply gets both sides evaluated.
template <class Op>
class RealBinary final : public Binary {
 public:
  using Binary::Binary;
  Value Eval(Activation& activation) const override { return Value::Double(Real(activation)); }
  double Real(Activation& activation) const override {
    const double l = left->Real(activation);
    return Op::Apply(l, right->Real(activation));
  }
  std::int64_t Whole(Activation& activation) const override { return Value::Truncate(Real(activation)); }
};

std::int64_t Wrap(std::uint64_t n) {
  return static_cast<std::int64_t>(n);
}
std::uint64_t Bits(std::int64_t n) {
  return static_cast<std::uint64_t>(n);
}

// Whole numbers wrap around.
template <class F>
struct OnWholes {
  static std::int64_t Apply(Activation& activation, const Code& left, const Code& right, Position at) {
    const std::int64_t l = left.Whole(activation);
    return F::Apply(l, right.Whole(activation), at);
  }
};
struct AddWhole {
  static std::int64_t Apply(std::int64_t l, std::int64_t r, Position) { return Wrap(Bits(l) + Bits(r)); }
};
struct SubtractWhole {
  static std::int64_t Apply(std::int64_t l, std::int64_t r, Position) { return Wrap(Bits(l) - Bits(r)); }
};
struct MultiplyWhole {
  static std::int64_t Apply(std::int64_t l, std::int64_t r, Position) { return Wrap(Bits(l) * Bits(r)); }
};
struct DivideWhole {
  static std::int64_t Apply(std::int64_t l, std::int64_t r, Position at) {
    if (r == 0) RaiseAt(at, "DivisionByZeroException", "Division by zero.");
    return r == -1 ? Wrap(0 - Bits(l)) : l / r;
  }
};
struct Remainder {
  static std::int64_t Apply(std::int64_t l, std::int64_t r, Position at) {
    if (r == 0) RaiseAt(at, "DivisionByZeroException", "Division by zero.");
    return r == -1 ? 0 : l % r;
  }
};
struct AndBits {
  static std::int64_t Apply(std::int64_t l, std::int64_t r, Position) { return l & r; }
};
struct OrBits {
  static std::int64_t Apply(std::int64_t l, std::int64_t r, Position) { return l | r; }
};
struct XorBits {
  static std::int64_t Apply(std::int64_t l, std::int64_t r, Position) { return l ^ r; }
};
// The right side of And and Or is evaluated only when the left does not decide.
struct AndTruth {
  static std::int64_t Apply(Activation& activation, const Code& left, const Code& right, Position) {
    return left.Whole(activation) != 0 && right.Whole(activation) != 0 ? 1 : 0;
  }
};
struct OrTruth {
  static std::int64_t Apply(Activation& activation, const Code& left, const Code& right, Position) {
    return left.Whole(activation) != 0 || right.Whole(activation) != 0 ? 1 : 0;
  }
};

struct AddReal {
  static double Apply(double l, double r) { return l + r; }
};
struct SubtractReal {
  static double Apply(double l, double r) { return l - r; }
};
struct MultiplyReal {
  static double Apply(double l, double r) { return l * r; }
};
struct DivideReal {
  static double Apply(double l, double r) { return l / r; }
};
struct PowerReal {
  static double Apply(double l, double r) { return std::pow(l, r); }
};

enum class Relation : std::uint8_t { Equal, Unequal, Less, Greater, LessOrEqual, GreaterOrEqual };

std::optional<Relation> RelationOf(const std::string& op) {
  static constexpr std::array<std::string_view, 6> kNames = {"=", "<>", "<", ">", "<=", ">="};
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (op == kNames[i]) return static_cast<Relation>(i);
  }
  return std::nullopt;
}

template <class T>
bool Holds(Relation relation, const T& l, const T& r) {
  switch (relation) {
    case Relation::Equal:
      return l == r;
    case Relation::Unequal:
      return !(l == r);
    case Relation::Less:
      return l < r;
    case Relation::Greater:
      return l > r;
    case Relation::LessOrEqual:
      return l <= r;
    case Relation::GreaterOrEqual:
      return l >= r;
  }
  return false;
}

// What two sides are compared as.
enum class Comparand : std::uint8_t { Wholes, Reals, Strings, Objects };

template <Comparand C>
class Comparison final : public Binary {
 public:
  Comparison(Position position, Relation relation, CodePtr l, CodePtr r)
      : Binary(position, TypeOf(Kind::Boolean), std::move(l), std::move(r)), relation_(relation) {}
  Value Eval(Activation& activation) const override { return Value::Boolean(Whole(activation) != 0); }
  std::int64_t Whole(Activation& activation) const override {
    if constexpr (C == Comparand::Wholes) {
      const std::int64_t l = left->Whole(activation);
      return Holds(relation_, l, right->Whole(activation)) ? 1 : 0;
    } else if constexpr (C == Comparand::Reals) {
      const double l = left->Real(activation);
      return Holds(relation_, l, right->Real(activation)) ? 1 : 0;
    } else {
      const Value l = left->Eval(activation);
      const Value r = right->Eval(activation);
      if constexpr (C == Comparand::Strings)
        return Holds(relation_, CompareStrings(l.string(), r.string()), 0) ? 1 : 0;
      return Holds(relation_, l.object(), r.object()) ? 1 : 0;
    }
  }

 private:
  Relation relation_;
};

// "+" and "&" of two Strings.
class Concatenation final : public Binary {
 public:
  using Binary::Binary;
  Value Eval(Activation& activation) const override {
    const Value l = left->Eval(activation);
    const Value r = right->Eval(activation);
    return Value::Adopt(JoinStrings(l.string(), r.string()));
  }
};

// The operator on values whose types are known only when it runs.
Value ApplyDynamically(Position at, const std::string& op, const Value& left, const Value& right);

class Dynamic final : public Binary {
 public:
  Dynamic(Position position, const Type* t, std::string op, CodePtr l, CodePtr r)
      : Binary(position, t, std::move(l), std::move(r)), op_(std::move(op)) {}
  Value Eval(Activation& activation) const override {
    const Value l = left->Eval(activation);
    return ApplyDynamically(at, op_, l, right->Eval(activation));
  }

 private:
  std::string op_;
};

class Unary : public Code {
 public:
  Unary(Position position, const Type* t, CodePtr o) : Code(position, t), operand(std::move(o)) {}
  bool IsConstant() const override { return operand->IsConstant(); }

 protected:
  CodePtr operand;
};

class NegateWhole final : public Unary {
 public:
  using Unary::Unary;
  Value Eval(Activation& activation) const override { return WholeValue(*type, Whole(activation)); }
  std::int64_t Whole(Activation& activation) const override {
    const std::int64_t n = Wrap(0 - Bits(operand->Whole(activation)));
    return type->kind == Kind::Integer ? static_cast<std::int32_t>(n) : n;
  }
  double Real(Activation& activation) const override { return static_cast<double>(Whole(activation)); }
};

class NegateReal final : public Unary {
 public:
  using Unary::Unary;
  Value Eval(Activation& activation) const override { return Value::Double(Real(activation)); }
  double Real(Activation& activation) const override { return -operand->Real(activation); }
};

// Of a Boolean its opposite, of a whole number its bits turned.
class NotCode final : public Unary {
 public:
  using Unary::Unary;
  Value Eval(Activation& activation) const override { return WholeValue(*type, Whole(activation)); }
  std::int64_t Whole(Activation& activation) const override {
    const std::int64_t n = operand->Whole(activation);
    return type->kind == Kind::Boolean ? (n == 0 ? 1 : 0) : ~n;
  }
};

template <class F>
CodePtr Wholes(Position at, const Type* type, CodePtr l, CodePtr r) {
  return std::make_unique<WholeBinary<OnWholes<F>>>(at, type, std::move(l), std::move(r));
}

template <class F>
CodePtr Reals(Position at, CodePtr l, CodePtr r) {
  return std::make_unique<RealBinary<F>>(at, TypeOf(Kind::Double), std::move(l), std::move(r));
}

// Null when values of these types can't be compared.
CodePtr MakeComparison(Position at, Relation relation, CodePtr l, CodePtr r) {
  const Type& a = *l->type;
  const Type& b = *r->type;
  const bool equality = relation == Relation::Equal || relation == Relation::Unequal;
  const auto make = [&]<Comparand C>() {
    return std::make_unique<Comparison<C>>(at, relation, std::move(l), std::move(r));
  };
  if (a.IsInteger() && b.IsInteger()) return make.template operator()<Comparand::Wholes>();
  if (a.IsNumber() && b.IsNumber()) return make.template operator()<Comparand::Reals>();
  if (a.kind == Kind::String && b.kind == Kind::String) return make.template operator()<Comparand::Strings>();
  if (!equality) return nullptr;
  if (a.kind == b.kind && (a.kind == Kind::Boolean || a.kind == Kind::Color)) {
    return make.template operator()<Comparand::Wholes>();
  }
  const auto object = [](const Type& t) {
    return t.kind == Kind::Object || t.kind == Kind::Array || t.kind == Kind::Nil;
  };
  if (object(a) && object(b)) return make.template operator()<Comparand::Objects>();
  return nullptr;
}

// Of two numbers; null for an operator that numbers, or these numbers, do not take.
CodePtr MakeArithmetic(Position at, const std::string& op, CodePtr l, CodePtr r) {
  const bool wide = l->type->kind == Kind::Int64 || r->type->kind == Kind::Int64;
  const Type* const whole = TypeOf(wide ? Kind::Int64 : Kind::Integer);
  if (op == "/") return Reals<DivideReal>(at, std::move(l), std::move(r));
  if (op == "^") return Reals<PowerReal>(at, std::move(l), std::move(r));
  if (op == "\\") return Wholes<DivideWhole>(at, whole, std::move(l), std::move(r));
  if (op == "mod") return Wholes<Remainder>(at, whole, std::move(l), std::move(r));
  const bool wholes = l->type->IsInteger() && r->type->IsInteger();
  if (op == "+")
    return wholes ? Wholes<AddWhole>(at, whole, std::move(l), std::move(r))
                  : Reals<AddReal>(at, std::move(l), std::move(r));
  if (op == "-")
    return wholes ? Wholes<SubtractWhole>(at, whole, std::move(l), std::move(r))
                  : Reals<SubtractReal>(at, std::move(l), std::move(r));
  if (op == "*")
    return wholes ? Wholes<MultiplyWhole>(at, whole, std::move(l), std::move(r))
                  : Reals<MultiplyReal>(at, std::move(l), std::move(r));
  if (!wholes) return nullptr;
  if (op == "and") return Wholes<AndBits>(at, whole, std::move(l), std::move(r));
  if (op == "or") return Wholes<OrBits>(at, whole, std::move(l), std::move(r));
  if (op == "xor") return Wholes<XorBits>(at, whole, std::move(l), std::move(r));
  return nullptr;
}

// A constant expression is evaluated once, here; what it raises, it raises when it is reached.
CodePtr Folded(CodePtr code) {
  if (!code || !code->IsConstant()) return code;
  try {
    return std::make_unique<ConstantCode>(code->at, code->type, ConstantValue(*code));
  } catch (const HostException&) {
    return code;
  }
}

// The operator on operands of these types, not evaluated yet; null when it does not take them.
CodePtr Unfolded(Position at, const std::string& op, CodePtr l, CodePtr r) {
  const Type& a = *l->type;
  const Type& b = *r->type;
  const auto relation = RelationOf(op);
  if (op == "is") {
    const auto object = [](const Type& t) { return t.IsCounted() || t.kind == Kind::Nil; };
    if (!object(a) || !object(b) || a.kind == Kind::String || b.kind == Kind::String) return nullptr;
    return std::make_unique<Comparison<Comparand::Objects>>(at, Relation::Equal, std::move(l), std::move(r));
  }
  if (a.kind == Kind::Variant || b.kind == Kind::Variant) {
    const Type* const type = TypeOf(relation ? Kind::Boolean : Kind::Variant);
    return std::make_unique<Dynamic>(at, type, op, std::move(l), std::move(r));
  }
  if (relation) return MakeComparison(at, *relation, std::move(l), std::move(r));
  // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the caller owns it
  if (a.IsNumber() && b.IsNumber()) return MakeArithmetic(at, op, std::move(l), std::move(r));
  if ((op == "+" || op == "&") && a.kind == Kind::String && b.kind == Kind::String) {
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the caller owns it
    return std::make_unique<Concatenation>(at, TypeOf(Kind::String), std::move(l), std::move(r));
  }
  if (a.kind != Kind::Boolean || b.kind != Kind::Boolean) return nullptr;
  if (op == "and") return std::make_unique<WholeBinary<AndTruth>>(at, &a, std::move(l), std::move(r));
  if (op == "or") return std::make_unique<WholeBinary<OrTruth>>(at, &a, std::move(l), std::move(r));
  if (op == "xor") return Wholes<XorBits>(at, &a, std::move(l), std::move(r));
  return nullptr;
}

Value ApplyDynamically(Position at, const std::string& op, const Value& left, const Value& right) {
  const auto typeOf = [](const Value& v) {
    return v.kind() == Kind::Object ? ObjectType(v.object()->cls) : TypeOf(v.IsNil() ? Kind::Nil : v.kind());
  };
  CodePtr code = Unfolded(at, op, std::make_unique<ConstantCode>(at, typeOf(left), left),
                          std::make_unique<ConstantCode>(at, typeOf(right), right));
  if (!code && (op == "=" || op == "<>")) return Value::Boolean(op == "<>");  // of different kinds: unequal
  if (!code) {
    RaiseAt(at, "TypeMismatchException",
            "'" + op + "' does not work on " + typeOf(left)->name + " and " + typeOf(right)->name + ".");
  }
  return ConstantValue(*code);
}

}  // namespace

Value ConstantValue(const Code& code) {
  Activation none{nullptr, nullptr};
  return code.Eval(none);
}

CodePtr MakeUnary(Position at, const std::string& op, CodePtr operand) {
  const Type* const type = operand->type;
  CodePtr made;
  if (op == "not") {
    if (type->kind == Kind::Boolean || type->IsInteger())
      made = std::make_unique<NotCode>(at, type, std::move(operand));
  } else if (op == "+") {
    if (type->IsNumber()) return operand;
  } else if (type->IsInteger()) {
    made = std::make_unique<NegateWhole>(at, type, std::move(operand));
  } else if (type->IsReal()) {
    made = std::make_unique<NegateReal>(at, TypeOf(Kind::Double), std::move(operand));
  }
  return Folded(std::move(made));
}

CodePtr MakeBinary(Position at, const std::string& op, CodePtr left, CodePtr right) {
  return Folded(Unfolded(at, op, std::move(left), std::move(right)));
}

}  // namespace hostrun
