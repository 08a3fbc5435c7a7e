// hostrun/language/code_operators.h - constants and operators.
#pragma once

#include <string>

#include "hostrun/language/code.h"

namespace hostrun {

class ConstantCode final : public Code {
 public:
  // `value` is of type `t`.
  ConstantCode(Position position, const Type* t, Value value) : Code(position, t), value_(std::move(value)) {}
  Value Eval(Activation&) const override { return value_; }
  double Real(Activation&) const override { return value_.AsReal(); }
  std::int64_t Whole(Activation&) const override { return value_.AsInt64(); }
  bool IsConstant() const override { return true; }

 private:
  Value value_;
};

// The value of code that is constant: it looks at no variable. Throws the HostException that it raises.
Value ConstantValue(const Code& code);

// `op` is an operator as the program writes it, in lower case. Null when it does not take these types; the
// operands are gone then. Constant operands make a constant.
CodePtr MakeUnary(Position at, const std::string& op, CodePtr operand);
CodePtr MakeBinary(Position at, const std::string& op, CodePtr left, CodePtr right);

}  // namespace hostrun
