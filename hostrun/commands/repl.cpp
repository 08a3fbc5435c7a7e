// hostrun/commands/repl.cpp - "hostrun repl": runs statements as they are typed and shows values.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <set>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/line_editor.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/call.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/show.h"
#include "hostrun/host/text.h"
#include "hostrun/language/program.h"
#include "hostrun/language/session.h"

namespace hostrun {
namespace {

constexpr const char* kCommand = "hostrun repl";
constexpr const char* kPrompt = "> ";
constexpr const char* kMorePrompt = "... ";

// --- completion

void AddMembers(std::set<std::string>& names, const Class& cls, bool shared) {
  for (const Class* c = &cls; c != nullptr; c = c->super) {
    for (const Property& property : c->properties) {
      if (property.shared == shared) names.insert(property.name);
    }
    for (const Method& method : shared ? c->sharedMethods : c->methods) {
      const bool hidden =
          method.signature.name.starts_with('_') || SameName(method.signature.name, "Constructor");
      if (!hidden) names.insert(method.signature.name);
    }
    if (!shared) continue;
    for (const Constant& constant : c->constants) names.insert(constant.name);
  }
}

// Whole words, with what stands before a dot, in alphabetical order.
std::vector<std::string> Complete(const Binder& binder, const std::string& beginning) {
  std::set<std::string> names;
  const std::size_t dot = beginning.rfind('.');
  const std::string owner = dot == std::string::npos ? "" : beginning.substr(0, dot);
  if (dot == std::string::npos) {
    for (const auto& cls : TheRegistry().classes()) {
      if (cls->defined && !cls->name.starts_with('_')) names.insert(cls->name);
    }
    for (const Method& function : TheRegistry().functions()) names.insert(function.signature.name);
    for (const std::string& name : binder.Names()) names.insert(name);
  } else if (const Type* const type = binder.TypeOfName(owner); type != nullptr) {
    if (type->kind == Kind::Object) AddMembers(names, *type->cls, false);
  } else if (const Class* const cls = TheRegistry().FindClass(owner); cls != nullptr) {
    AddMembers(names, *cls, true);
  }
  const std::string prefix = dot == std::string::npos ? "" : owner + ".";
  std::vector<std::string> found;
  for (const std::string& name : names) {
    const std::string whole = prefix + name;
    if (SameName(whole.substr(0, beginning.size()), beginning)) found.push_back(whole);
  }
  return found;
}

// --- input

// Takes lines and runs what they complete, and shows the value of what stands alone.
class Loop {
 public:
  explicit Loop(bool trueColour)
      : session_("input", [trueColour](const Value& value) {
          std::printf("%s\n", ReadableText(value, trueColour).c_str());
        }) {}

  const Binder& binder() const { return session_.binder(); }
  const char* prompt() const { return open_.empty() ? kPrompt : kMorePrompt; }
  int status() const { return session_.status(); }

  // False: the program asked to end.
  bool Take(const std::string& line) {
    open_ += line + "\n";
    // An empty line gives up on a block that is not closed.
    return Run(!line.empty() || open_ == "\n");
  }
  void Drop() { open_.clear(); }
  // At the end of the input: a block that is still open is run as it stands, so that its error is shown.
  void Finish() {
    if (!open_.empty()) Run(false);
  }

 private:
  bool Run(bool more) {
    const PoolScope pool;
    const Session::State state = session_.Run(open_, more);
    TurnRunLoop();
    std::fflush(stdout);
    if (state != Session::State::WantsMore) open_.clear();
    return state != Session::State::Ended;
  }

  Session session_;
  std::string open_;  // lines of a block that is not closed
};

int ReadTerminal(Loop& loop) {
  LineEditor editor([&loop](const std::string& beginning) { return Complete(loop.binder(), beginning); });
  std::printf("hostrun on a host of version %g. Tab completes, Ctrl-D ends.\n", TheHostIdentity().version);
  for (;;) {
    std::fflush(stdout);
    const LineEditor::Input input = editor.Read(loop.prompt());
    if (input.end == LineEditor::End::EndOfInput) break;
    if (input.end == LineEditor::End::Cancelled) {
      std::printf("\n");
      loop.Drop();
    } else if (!loop.Take(input.line)) {
      return loop.status();
    }
  }
  std::printf("\n");
  loop.Finish();
  return loop.status();
}

int ReadPipe(Loop& loop) {
  for (std::string line; std::getline(std::cin, line);) {
    // Blocks in a file may hold empty lines.
    if (line.empty()) line = " ";
    if (!loop.Take(line)) return loop.status();
  }
  loop.Finish();
  return loop.status();
}

int Repl(const HostOptions& options) {
  const Problem problem = StartHost(options);
  if (problem) return Refuse(kCommand, *problem);
  Loop loop(TakesTrueColour(stdout));
  return isatty(STDIN_FILENO) != 0 ? ReadTerminal(loop) : ReadPipe(loop);
}

}  // namespace

Action ReplCommand(CLI::App& app) {
  const auto options = std::make_shared<HostOptions>();
  AddHostOptions(app, *options);
  app.footer(
      "Type statements or expressions; a value that stands alone is shown. What is declared stays, and may "
      "be declared\n"
      "anew. Blocks go over several lines; at a terminal an empty line gives one up. Errors do not end the "
      "session.\n"
      "Without a terminal, lines are read from stdin and there is no prompt.\n\n"
      "Example:\n  echo 'NSColorQVX.orangeColor' | hostrun repl\n\n"
      "Exit status: 0, or what Quit gives; 2 an error of use.");
  return [options] { return Repl(*options); };
}

}  // namespace hostrun
