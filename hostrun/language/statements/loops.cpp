// hostrun/language/statements/loops.cpp - For, For Each, While and Do.
#include "hostrun/host/arrays.h"
#include "hostrun/host/text.h"
#include "hostrun/language/binder.h"
#include "hostrun/language/code_operators.h"
#include "hostrun/language/parser.h"
#include "hostrun/language/statements/statements.h"
#include "hostrun/language/steps.h"

namespace hostrun {
namespace {

// Whether the loop `number` goes on after its body ended with `flow`; changes `flow` to how the loop itself
// ends.
bool GoesOn(Flow& flow, int number) {
  if (flow == Flow::Next) return true;
  const bool meant = flow != Flow::Return && machine.target == number;
  const bool again = meant && flow == Flow::Continue;
  if (meant) flow = Flow::Next;
  return again;
}

struct ForLoop {
  int number;
  PlacePtr variable;
  CodePtr first;
  CodePtr last;
  CodePtr step;  // null: 1
  bool down;     // DownTo
  StepBlock body;
};

// Number: double, or std::int64_t for whole numbers of either size.
template <class Number>
class ForStep final : public Step {
 public:
  ForStep(Position position, ForLoop loop) : Step(position), loop_(std::move(loop)) {}
  Flow Run(Activation& activation) const override {
    const Place& variable = *loop_.variable;
    Number current = Read(*loop_.first, activation);
    const Number last = Read(*loop_.last, activation);
    Number step = loop_.step ? Read(*loop_.step, activation) : Number{1};
    if (loop_.down) step = -step;
    for (;; current += step) {
      variable.Store(activation, Boxed(current));
      if (step >= 0 ? current > last : current < last) return Flow::Next;
      Flow flow = loop_.body.Run(activation);
      if (!GoesOn(flow, loop_.number)) return flow;
      current = Read(variable, activation);  // the body may have changed it
    }
  }

 private:
  static Number Read(const Code& code, Activation& activation) {
    if constexpr (std::is_same_v<Number, double>) {
      return code.Real(activation);
    } else {
      return code.Whole(activation);
    }
  }
  Value Boxed(Number n) const {
    if constexpr (std::is_same_v<Number, double>) {
      return Value::Double(n);
    } else {
      if (loop_.variable->type->kind == Kind::Int64) return Value::Int64(n);
      return Value::Integer(static_cast<std::int32_t>(n));
    }
  }
  ForLoop loop_;
};

// The variable has the type of the array's elements.
class ForEachStep final : public Step {
 public:
  ForEachStep(Position position, int number, PlacePtr variable, CodePtr array, StepBlock body)
      : Step(position),
        number_(number),
        variable_(std::move(variable)),
        array_(std::move(array)),
        body_(std::move(body)) {}
  Flow Run(Activation& activation) const override {
    const Value held = array_->Eval(activation);
    if (held.object() == nullptr) RaiseAt(array_->at, "NilObjectException", "The array is nil.");
    const std::vector<Value>& items = ArrayDataOf(held.object()).items;
    // By index: the body may change the array.
    for (std::size_t i = 0; i < items.size(); ++i) {  // NOLINT(modernize-loop-convert)
      variable_->Store(activation, items[i]);
      Flow flow = body_.Run(activation);
      if (!GoesOn(flow, number_)) return flow;
    }
    return Flow::Next;
  }

 private:
  int number_;
  PlacePtr variable_;
  CodePtr array_;
  StepBlock body_;
};

// Conditions at the top and at the bottom; one that is null holds.
class ConditionalLoop final : public Step {
 public:
  ConditionalLoop(Position position, int number, CodePtr top, StepBlock body, CodePtr bottom)
      : Step(position),
        number_(number),
        top_(std::move(top)),
        body_(std::move(body)),
        bottom_(std::move(bottom)) {}
  Flow Run(Activation& activation) const override {
    while (!top_ || top_->Whole(activation) != 0) {
      Flow flow = body_.Run(activation);
      if (!GoesOn(flow, number_)) return flow;
      if (bottom_ && bottom_->Whole(activation) == 0) break;
    }
    return Flow::Next;
  }

 private:
  int number_;
  CodePtr top_;
  StepBlock body_;
  CodePtr bottom_;
};

// --- For and For Each

// For and For Each alike.
struct LoopOverVariable : Statement {
  using Statement::Statement;
  std::string name;
  TypeName type;
  Block body;

 protected:
  // The variable that is named, or a new one of the type that is given, or else of type `fallback`.
  PlacePtr LoopVariable(Binder& binder, const Type* fallback) const {
    const Binder::Variable* variable = type.name.empty() ? binder.FindVariable(name) : nullptr;
    if (variable != nullptr && (variable->where == Binder::Variable::Where::Constant ||
                                variable->where == Binder::Variable::Where::Enumeration)) {
      Binder::Fail(at, "wanted a variable after For, found the constant " + name);
    }
    if (variable == nullptr) {
      variable = &binder.DeclareVariable(at, name, type.name.empty() ? fallback : binder.TypeFor(type));
    }
    return Binder::MakePlace(at, *variable);
  }
};

struct For final : LoopOverVariable {
  using LoopOverVariable::LoopOverVariable;
  ExpressionPtr first;
  ExpressionPtr last;
  ExpressionPtr step;  // null: 1
  bool down = false;

  void Bind(Binder& binder, StepBlock& into) const override {
    StepBlock whole;
    {
      const Binder::ScopeGuard scope(binder, &whole);
      CodePtr begin = binder.BindValue(*first);
      PlacePtr variable =
          LoopVariable(binder, begin->type->IsReal() ? TypeOf(Kind::Double) : TypeOf(Kind::Integer));
      const Type* const number = variable->type;
      if (!number->IsNumber()) {
        Binder::Fail(at, "wanted a number as the variable of For, found " + number->name);
      }
      begin = Binder::Convert(std::move(begin), number, "the first value of For");
      CodePtr end = binder.BindConverted(*last, number, "the last value of For");
      CodePtr by = step ? binder.BindConverted(*step, number, "Step") : nullptr;
      const Binder::LoopGuard loop(binder, "for");
      ForLoop bound{loop.number(), std::move(variable),   std::move(begin), std::move(end), std::move(by),
                    down,          binder.BindBlock(body)};
      if (number->IsInteger()) {
        whole.Add<ForStep<std::int64_t>>(at, std::move(bound));
      } else {
        whole.Add<ForStep<double>>(at, std::move(bound));
      }
    }
    into.Add<Sequence>(at, std::move(whole));
  }
};

struct ForEach final : LoopOverVariable {
  using LoopOverVariable::LoopOverVariable;
  ExpressionPtr array;

  void Bind(Binder& binder, StepBlock& into) const override {
    StepBlock whole;
    {
      const Binder::ScopeGuard scope(binder, &whole);
      CodePtr items = binder.BindValue(*array);
      if (items->type->kind != Kind::Array) {
        Binder::Fail(array->at, "For Each wants an array, found " + items->type->name);
      }
      const Type* const element = items->type->element;
      PlacePtr variable = LoopVariable(binder, element);
      if (variable->type != element) {
        Binder::Fail(
            at, "For Each wants a variable of type " + element->name + ", found " + variable->type->name);
      }
      const Binder::LoopGuard loop(binder, "for");
      whole.Add<ForEachStep>(at, loop.number(), std::move(variable), std::move(items),
                             binder.BindBlock(body));
    }
    into.Add<Sequence>(at, std::move(whole));
  }
};

// The rest of either: the body up to Next, which may repeat the variable's name.
void ParseForBody(Parser& parser, LoopOverVariable& statement) {
  parser.WantEndOfStatement("the head of For");
  statement.body = parser.ParseBlock({"next"});
  if (!parser.TakeWord("next")) parser.Fail("'Next' for " + Parser::LineOf(statement.at));
  if (parser.Peek().kind != TokenKind::Name) return;
  if (parser.Peek().lower != LowerName(statement.name)) {
    parser.Fail("'" + statement.name + "', the variable of For in " + Parser::LineOf(statement.at));
  }
  parser.Take();
}

StatementPtr ParseForEach(Parser& parser) {
  auto statement = parser.Begin<ForEach>();
  parser.Take();
  statement->name = parser.WantName("a variable after For Each");
  statement->type = parser.ParseOptionalType();
  parser.WantWord("in", "after the variable");
  statement->array = parser.ParseExpression();
  ParseForBody(parser, *statement);
  return statement;
}

StatementPtr ParseFor(Parser& parser) {
  if (parser.AtWord("each", 1)) return ParseForEach(parser);
  auto statement = parser.Begin<For>();
  statement->name = parser.WantName("a variable after For");
  statement->type = parser.ParseOptionalType();
  parser.WantOperator("=", "after the variable");
  statement->first = parser.ParseExpression();
  statement->down = parser.TakeWord("downto");
  if (!statement->down) parser.WantWord("to", "or 'DownTo' after the first value");
  statement->last = parser.ParseExpression();
  if (parser.TakeWord("step")) statement->step = parser.ParseExpression();
  ParseForBody(parser, *statement);
  return statement;
}

// --- While and Do

// Goes on while its condition is true.
struct While final : Statement {
  using Statement::Statement;
  ExpressionPtr condition;
  Block body;

  void Bind(Binder& binder, StepBlock& into) const override {
    CodePtr top = binder.BindLoopCondition(*condition);
    const Binder::LoopGuard loop(binder, "while");
    into.Add<ConditionalLoop>(at, loop.number(), std::move(top), binder.BindBlock(body), nullptr);
  }
};

struct Do final : Statement {
  using Statement::Statement;
  ExpressionPtr top;     // null: none
  ExpressionPtr bottom;  // null: none
  bool until = false;    // the condition ends the loop when it is true
  Block body;

  void Bind(Binder& binder, StepBlock& into) const override {
    CodePtr atTop = BindOptional(binder, top);
    CodePtr atBottom = BindOptional(binder, bottom);
    const Binder::LoopGuard loop(binder, "do");
    into.Add<ConditionalLoop>(at, loop.number(), std::move(atTop), binder.BindBlock(body),
                              std::move(atBottom));
  }

 private:
  CodePtr BindOptional(Binder& binder, const ExpressionPtr& condition) const {
    if (!condition) return nullptr;
    CodePtr code = binder.BindLoopCondition(*condition);
    return until ? MakeUnary(at, "not", std::move(code)) : std::move(code);
  }
};

StatementPtr ParseWhile(Parser& parser) {
  auto statement = parser.Begin<While>();
  statement->condition = parser.ParseExpression();
  parser.WantEndOfStatement("the condition");
  statement->body = parser.ParseBlock({"wend", "end while"});
  if (!parser.TakeWord("wend")) {
    if (!parser.AtWord("end")) parser.Fail("'Wend' for " + Parser::LineOf(statement->at));
    parser.WantEnd("while", statement->at);
  }
  return statement;
}

StatementPtr ParseDo(Parser& parser) {
  auto statement = parser.Begin<Do>();
  const auto condition = [&](ExpressionPtr& into) {
    if (!parser.AtWord("while") && !parser.AtWord("until")) return;
    statement->until = parser.Take().lower == "until";
    into = parser.ParseExpression();
  };
  condition(statement->top);
  parser.WantEndOfStatement("the head of Do");
  statement->body = parser.ParseBlock({"loop"});
  if (!parser.TakeWord("loop")) parser.Fail("'Loop' for " + Parser::LineOf(statement->at));
  if (!statement->top) {
    condition(statement->bottom);
  } else if (parser.AtWord("while") || parser.AtWord("until")) {
    parser.Fail("one condition, at the top or at the bottom");
  }
  return statement;
}

constexpr StatementForm kLoopForms[] = {
    {"for", &ParseFor},
    {"while", &ParseWhile},
    {"do", &ParseDo},
};

}  // namespace

std::span<const StatementForm> LoopStatements() {
  return kLoopForms;
}

}  // namespace hostrun
