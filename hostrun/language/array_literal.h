// hostrun/language/array_literal.h - Array(...): its type settles where it is used.
#pragma once

#include <vector>

#include "hostrun/language/code.h"

namespace hostrun {

class ArrayLiteral final : public Code {
 public:
  ArrayLiteral(Position position, std::vector<CodePtr> items);
  Value Eval(Frame& frame) const override;

  // The dearest conversion of an item to `element`; -1 when one can't be converted.
  int CostAs(const Type& element) const;
  // Converts the items. Precondition: CostAs is not -1.
  void Become(const Type* element);

 private:
  std::vector<CodePtr> items_;
};

}  // namespace hostrun
