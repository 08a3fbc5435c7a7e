// hostrun/language/statements/exceptions.cpp - Raise and Try.
#include <exception>
#include <new>

#include "hostrun/host/registry.h"
#include "hostrun/language/binder.h"
#include "hostrun/language/parser.h"
#include "hostrun/language/statements/statements.h"

namespace hostrun {
namespace {

// Nil raises NilObjectException.
class RaiseStep final : public Step {
 public:
  RaiseStep(Position position, CodePtr exception) : Step(position), exception_(std::move(exception)) {}
  Flow Run(Activation& activation) const override {
    const Value exception = exception_->Eval(activation);
    Note(at);
    if (exception.object() == nullptr)
      RaiseHostException("NilObjectException", "The exception to raise is nil.");
    ThrowException(ObjectRef::Share(exception.object()));
  }

 private:
  CodePtr exception_;
};

struct CatchBranch {
  const Class* cls;
  PlacePtr variable;  // null: none
  StepBlock body;
};

class TryStep final : public Step {
 public:
  TryStep(Position position, StepBlock body, std::vector<CatchBranch> catches, StepBlock last)
      : Step(position), body_(std::move(body)), catches_(std::move(catches)), last_(std::move(last)) {}

  // A Return, Exit, Continue or exception in Finally replaces the one that led there.
  Flow Run(Activation& activation) const override {
    Flow flow = Flow::Next;
    std::exception_ptr thrown;
    try {
      flow = RunCaught(activation);
    } catch (const HostException&) {
      thrown = std::current_exception();
    }
    Value result = std::move(machine.result);
    const int target = machine.target;
    const Flow last = last_.Run(activation);
    if (last != Flow::Next) return last;
    if (thrown) std::rethrow_exception(thrown);
    machine.result = std::move(result);
    machine.target = target;
    return flow;
  }

 private:
  Flow RunCaught(Activation& activation) const {
    ObjectRef caught;
    const CatchBranch* handler = nullptr;
    try {
      try {
        return body_.Run(activation);
      } catch (const std::exception& error) {
        if (!LacksMemory(error)) throw;
        RaiseHostException("OutOfMemoryException", "Not enough memory.");
      }
    } catch (const HostException& exception) {
      for (const CatchBranch& branch : catches_) {
        if (!IsKindOf(exception.object(), *branch.cls)) continue;
        handler = &branch;
        break;
      }
      if (handler == nullptr) throw;
      caught = ObjectRef::Share(exception.object());
    }
    // Outside of the handler: the exception is over, and only the variable holds its object.
    if (handler->variable) {
      handler->variable->Store(activation, Value::Adopt(caught.Detach()));
    }
    return handler->body.Run(activation);
  }

  StepBlock body_;
  std::vector<CatchBranch> catches_;
  StepBlock last_;
};

struct Raise final : Statement {
  using Statement::Statement;
  ExpressionPtr exception;

  void Bind(Binder& binder, StepBlock& into) const override {
    const Type* const base = &binder.WantClass(at, "RuntimeException").type;
    into.Add<RaiseStep>(at, binder.BindConverted(*exception, base, "Raise"));
  }
};

struct Catch {
  Position at;
  std::string variable;  // empty: none
  TypeName type;         // not given: any exception
  Block body;
};

struct Try final : Statement {
  using Statement::Statement;
  Block body;
  std::vector<Catch> catches;
  Block last;  // Finally

  void Bind(Binder& binder, StepBlock& into) const override {
    const std::size_t first = binder.CountStops();
    StepBlock tried = binder.BindBlock(body);
    const std::size_t end = binder.CountStops();
    std::vector<CatchBranch> handlers;
    std::vector<const Class*> caught;
    for (const Catch& branch : catches) {
      handlers.push_back(BindCatch(binder, branch));
      caught.push_back(handlers.back().cls);
    }
    binder.NoteTry(first, end, caught);
    into.Add<TryStep>(at, std::move(tried), std::move(handlers), binder.BindBlock(last));
  }

 private:
  static CatchBranch BindCatch(Binder& binder, const Catch& branch) {
    CatchBranch bound{nullptr, nullptr, {}};
    Class& base = binder.WantClass(branch.at, "RuntimeException");
    Class& cls = branch.type.name.empty() ? base : binder.WantClass(branch.type.at, branch.type.name);
    if (!cls.IsA(base)) Binder::Fail(branch.type.at, "Catch wants an exception's class, found " + cls.name);
    bound.cls = &cls;
    const Binder::ScopeGuard scope(binder, &bound.body);
    if (!branch.variable.empty()) {
      bound.variable =
          Binder::MakePlace(branch.at, binder.DeclareVariable(branch.at, branch.variable, &cls.type));
    }
    binder.BindInto(bound.body, branch.body);
    return bound;
  }
};

StatementPtr ParseRaise(Parser& parser) {
  auto raise = parser.Begin<Raise>();
  raise->exception = parser.ParseExpression();
  return raise;
}

StatementPtr ParseTry(Parser& parser) {
  auto statement = parser.Begin<Try>();
  parser.WantEndOfStatement("Try");
  statement->body = parser.ParseBlock({"catch", "finally", "end try"});
  while (parser.AtWord("catch")) {
    Catch branch{parser.Peek().at, {}, {}, {}};
    parser.Take();
    if (!parser.AtEndOfStatement()) {
      branch.variable = parser.WantName("a variable after Catch");
      branch.type = parser.ParseOptionalType();
    }
    parser.WantEndOfStatement("Catch");
    branch.body = parser.ParseBlock({"catch", "finally", "end try"});
    statement->catches.push_back(std::move(branch));
  }
  if (parser.TakeWord("finally")) {
    parser.WantEndOfStatement("Finally");
    statement->last = parser.ParseBlock({"catch", "finally", "end try"});
  }
  parser.WantEnd("try", statement->at);
  return statement;
}

constexpr StatementForm kExceptionForms[] = {
    {"try", &ParseTry},
    {"raise", &ParseRaise, true},
};

}  // namespace

std::span<const StatementForm> ExceptionStatements() {
  return kExceptionForms;
}

}  // namespace hostrun
