// hostrun/language/statements/print.cpp - Print.
#include "hostrun/language/statements/print.h"

#include "hostrun/host/arrays.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/output.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/show.h"
#include "hostrun/language/binder.h"
#include "hostrun/language/parser.h"
#include "hostrun/language/program.h"
#include "hostrun/language/statements/statements.h"

namespace hostrun {
namespace {

std::function<void(const std::vector<Value>&)> printObserver;

bool IsArray(const Value& value) {
  return value.object() != nullptr && value.object()->cls == &ArrayClass();
}

class PrintStep final : public Step {
 public:
  PrintStep(Position position, std::vector<CodePtr> items) : Step(position), items_(std::move(items)) {}
  Flow Run(Activation& activation) const override {
    std::string line;
    std::vector<Value> observed;
    for (const CodePtr& item : items_) {
      if (&item != &items_.front()) line += ' ';
      const Value value = item->Eval(activation);
      line += IsArray(value) ? ReadableText(value, false) : DisplayText(value);
      if (printObserver) observed.push_back(value);
    }
    line += '\n';
    if (printObserver) printObserver(observed);
    WriteOutput(line);
    if (OutputAbandoned()) throw QuitRequest{kExitUse};
    return Flow::Next;
  }

 private:
  std::vector<CodePtr> items_;
};

struct Print final : Statement {
  using Statement::Statement;
  std::vector<ExpressionPtr> items;

  void Bind(Binder& binder, StepBlock& into) const override {
    std::vector<CodePtr> bound;
    for (const ExpressionPtr& item : items) bound.push_back(binder.BindValue(*item));
    into.Add<PrintStep>(at, std::move(bound));
  }
};

StatementPtr ParsePrint(Parser& parser) {
  auto print = parser.Begin<Print>();
  if (parser.AtEndOfStatement() || parser.AtWord("else")) return print;
  do {
    print->items.push_back(parser.ParseExpression());
  } while (parser.TakeOperator(","));
  return print;
}

constexpr StatementForm kPrintForms[] = {
    {"print", &ParsePrint, true},
};

}  // namespace

void SetPrintObserver(std::function<void(const std::vector<Value>&)> observer) {
  printObserver = std::move(observer);
}

std::span<const StatementForm> PrintStatements() {
  return kPrintForms;
}

}  // namespace hostrun
