// hostrun/language/session.cpp - a program that is run while it is being written.
#include "hostrun/language/session.h"

#include <algorithm>
#include <cstdio>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/output.h"
#include "hostrun/language/parser.h"
#include "hostrun/language/program.h"

namespace hostrun {
namespace {

// A part that is no program is taken for a lone expression. Where it is none either, the error that lies
// further on says more.
ExpressionPtr ParseAlone(const Source& part, const ProgramError& asProgram) {
  try {
    return Parser(part).ParseLoneExpression();
  } catch (const ProgramError& asExpression) {
    const auto place = [](const ProgramError& error) {
      return std::pair(error.at().line, error.at().column);
    };
    throw place(asExpression) > place(asProgram) ? asExpression : asProgram;
  }
}

}  // namespace

Session::~Session() {
  currentPosition = {};
  while (!globals_.empty()) globals_.pop_back();
}

Session::State Session::Run(const std::string& text, bool more) {
  // Lines are counted through the whole session, those of a part that is refused too.
  const int last = lines_ + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  const Source part(name_, std::string(static_cast<std::size_t>(lines_), '\n') + text);
  const auto keep = [&] {
    whole_ += text;
    lines_ = last;
  };
  try {
    std::optional<ProgramText> program;
    ExpressionPtr alone;
    try {
      program = Parser(part).ParseProgram();
      keep();
    } catch (const ProgramError& error) {
      if (more && error.at().line > last) return State::WantsMore;
      keep();
      alone = ParseAlone(part, error);
    }
    const Expression* expression = alone.get();
    if (program && program->routines.empty() && program->enums.empty() && program->body.size() == 1) {
      expression = program->body.front()->AsExpression();
    }
    BeginRunning();
    const State state =
        Guarded([&] { return expression != nullptr ? RunExpression(*expression) : RunText(*program); });
    EndRunning();
    return state;
  } catch (const ProgramError& error) {
    FlushOutput();
    std::fprintf(stderr, "%s\n", part.Describe(error.at(), error.what()).c_str());
    return State::Failed;
  }
}

Session::State Session::Guarded(const std::function<State()>& run) {
  try {
    try {
      return run();
    } catch (const std::exception& error) {
      if (!LacksMemory(error)) throw;
      RaiseHostException("OutOfMemoryException", "Not enough memory.");
    }
  } catch (const InterruptRequest&) {
    FlushOutput();
    std::fprintf(stderr, "%s\n", Source(name_, whole_).Describe(currentPosition, "interrupted").c_str());
    return State::Failed;
  } catch (const QuitRequest& request) {
    status_ = request.status;
    return State::Ended;
  } catch (const HostException& exception) {
    ReportUncaught(Source(name_, whole_), exception.object());
    return State::Failed;
  }
}

// What the last part has declared begins with the defaults of its types.
void Session::AddGlobals() {
  const std::vector<const Type*>& types = binder_.globals();
  while (globals_.size() < types.size()) globals_.push_back(Value::DefaultOf(*types[globals_.size()]));
}

Session::State Session::RunText(const ProgramText& text) {
  const StepBlock body = binder_.BindPart(text);
  AddGlobals();
  Activation activation{nullptr, globals_.data()};
  body.Run(activation);
  return State::Done;
}

Session::State Session::RunExpression(const Expression& expression) {
  const CodePtr code = binder_.BindPart(expression);
  AddGlobals();
  Activation activation{nullptr, globals_.data()};
  const Value value = code->Eval(activation);
  if (code->type->kind != Kind::Nothing) show_(value);
  return State::Done;
}

}  // namespace hostrun
