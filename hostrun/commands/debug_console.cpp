// hostrun/commands/debug_console.cpp - the commands of "hostrun debug", and what they show.
#include "hostrun/commands/debug_console.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string_view>

#include "hostrun/commands/completion.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/output.h"
#include "hostrun/host/suggest.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr std::int32_t kListed = 10;       // lines at a time
constexpr std::int32_t kListedBefore = 4;  // the one that is meant
constexpr std::size_t kShownCalls = 20;    // besides the outermost

void Say(const std::string& line) {
  WriteOutput(line + "\n");
}

std::string Trimmed(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t");
  if (start == std::string_view::npos) return {};
  return std::string(text.substr(start, text.find_last_not_of(" \t") + 1 - start));
}

// A whole number of at least 0.
std::optional<std::int32_t> NumberIn(const std::string& text) {
  std::int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number < 0) return std::nullopt;
  return number;
}

std::string NumberOf(std::int32_t line) {
  const std::string number = std::to_string(line);
  return std::string(number.size() < 5 ? 5 - number.size() : 0, ' ') + number;
}

}  // namespace

struct DebugConsole::Command {
  const char* name;
  const char* others;     // short forms and second names, with blanks between
  const char* arguments;  // as help shows them
  const char* purpose;
  std::optional<Going> (DebugConsole::*run)(const std::string& rest);
  bool running = true;    // wants a program that runs
  bool repeated = false;  // an empty line means it again
};

const std::vector<DebugConsole::Command>& DebugConsole::Commands() {
  using C = DebugConsole;
  static const std::vector<Command> commands = {
      {"break", "b", "[LINE | ROUTINE [if CONDITION]]", "halts there; alone: lists the breakpoints",
       &C::Break, false},
      {"delete", "d", "[NUMBER...]", "takes breakpoints away; alone: all", &C::Delete, false},
      {"step", "s", "", "runs one statement, into a routine that it calls", &C::Step, true, true},
      {"next", "n", "", "runs one statement, with all that it calls", &C::Next, true, true},
      {"finish", "fin out", "", "runs to the statement behind this call", &C::Finish},
      {"continue", "c cont", "", "runs to the next breakpoint", &C::Continue, true, true},
      {"print", "p", "EXPRESSION", "shows a value", &C::Print},
      {"locals", "lo", "", "shows the variables of the routine", &C::Locals},
      {"globals", "g", "", "shows the variables of the program's own level", &C::Globals},
      {"backtrace", "bt stack where", "", "shows the calls, innermost first", &C::Backtrace},
      {"up", "u", "", "looks at the call that led here", &C::Up},
      {"down", "do", "", "goes back by one call", &C::Down},
      {"frame", "f", "[NUMBER]", "looks at that call", &C::Frame},
      {"list", "l", "[LINE | ROUTINE]", "shows the program; again: its next lines", &C::List, false, true},
      {"exceptions", "e", "[raised | uncaught | never]", "which exceptions halt; alone: shows it",
       &C::Exceptions, false},
      {"restart", "r run", "", "runs the program again from its beginning", &C::Restart, false},
      {"help", "h ?", "", "shows this", &C::Help, false},
      {"quit", "q exit", "", "ends", &C::Quit, false},
  };
  return commands;
}

DebugConsole::DebugConsole(const Source& source, Debugger::StopOn stopOn, bool trueColour, ReadLine readLine)
    : source_(source),
      trueColour_(trueColour),
      readLine_(std::move(readLine)),
      debugger_(source, [this](const Debugger::Halt& halt) {
        ShowHalt(halt);
        return Converse();
      }) {
  debugger_.stopOn = stopOn;
}

int DebugConsole::Run() {
  int status = 0;
  do {
    restart_ = false;
    status = debugger_.Run();
    if (restart_ || quit_) continue;
    Say("the program has ended with status " + std::to_string(status));
    Converse();
  } while (restart_);
  return status;
}

DebugConsole::Going DebugConsole::Converse() {
  frame_ = 0;
  nextLine_ = 0;
  for (;;) {
    const std::optional<std::string> line = readLine_();
    const std::optional<Going> going = line ? Take(*line) : Quit({});
    if (going) return *going;
  }
}

std::optional<DebugConsole::Going> DebugConsole::Take(const std::string& typed) {
  std::string line = Trimmed(typed);
  if (line.empty()) line = repeated_;
  if (line.empty()) return std::nullopt;
  const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
  const std::string name = line.substr(0, end);
  const std::string rest = Trimmed(line.substr(end));
  repeated_.clear();
  const Command* const command = Find(name);
  if (command == nullptr) return std::nullopt;
  if (command->running && debugger_.frames().empty()) {
    Refuse(name, "wanted a program that runs, found one that has ended; restart runs it again");
    return std::nullopt;
  }
  if (command->repeated) repeated_ = command->name;
  try {
    return (this->*command->run)(rest);
  } catch (const std::exception& error) {
    Refuse(name, error.what());
  }
  return std::nullopt;
}

// A name, one of its other forms, or a beginning that only one name has. Null: it is said that there is none.
const DebugConsole::Command* DebugConsole::Find(const std::string& name) const {
  const std::string lower = LowerName(name);
  std::vector<const Command*> begun;
  std::vector<std::string> names;
  for (const Command& command : Commands()) {
    names.emplace_back(command.name);
    const std::string forms = " " + names.back() + " " + command.others + " ";
    if (forms.find(" " + lower + " ") != std::string::npos) return &command;
    if (names.back().starts_with(lower)) begun.push_back(&command);
  }
  if (begun.size() == 1) return begun.front();
  if (begun.empty()) {
    Refuse(name, "wanted a command, found another word" + DidYouMean(name, names) + "; help lists them");
    return nullptr;
  }
  std::string meant;
  for (const Command* const command : begun)
    meant += (meant.empty() ? "" : " or ") + std::string(command->name);
  Refuse(name, "wanted one command, found the beginning of " + meant);
  return nullptr;
}

std::vector<std::string> DebugConsole::Complete(const std::string& beginning, bool first) {
  std::vector<std::string> found;
  if (first) {
    for (const Command& command : Commands()) {
      if (std::string_view(command.name).starts_with(beginning)) found.emplace_back(command.name);
    }
    return found;
  }
  return debugger_.frames().empty() ? found : CompleteWord(debugger_.BinderAt(frame()), beginning);
}

// --- what is shown

const Debugger::Frame& DebugConsole::frame() const {
  return debugger_.frames()[debugger_.frames().size() - 1 - frame_];
}

// "average.bas:4 in Average"
std::string DebugConsole::PlaceOf(std::size_t stop) const {
  const Stops::Stop& where = debugger_.stops().all()[stop];
  const std::string place = source_.name() + ":" + std::to_string(where.at.line);
  return where.routine == nullptr ? place : place + " in " + where.routine->signature.name;
}

std::string DebugConsole::TextOf(const Debugger::Breakpoint& point) const {
  const std::string place = PlaceOf(point.stop);
  return point.condition.empty() ? place : place + " if " + point.condition;
}

void DebugConsole::ShowHalt(const Debugger::Halt& halt) {
  frame_ = 0;
  if (halt.why == Debugger::kInterrupted) Say("");  // behind the ^C that the terminal shows
  if (halt.elsewhere || !halt.why.empty()) {
    Say(PlaceOf(frame().stop) + (halt.why.empty() ? "" : ": " + halt.why));
  }
  const Position at = debugger_.stops().all()[frame().stop].at;
  ShowLine(at.line);
  // Of several statements in one line, which.
  const std::string_view before = source_.Line(at.line).substr(0, static_cast<std::size_t>(at.column - 1));
  if (before.find_first_not_of(" \t") == std::string_view::npos) return;
  std::string mark = std::string(9, ' ');
  for (const char c : before) {
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80) mark += c == '\t' ? '\t' : ' ';
  }
  Say(mark + "^");
}

// "*> " before its number: a breakpoint, and where the frame stands.
void DebugConsole::ShowLine(std::int32_t line) const {
  const std::vector<Stops::Stop>& stops = debugger_.stops().all();
  const auto& points = debugger_.breakpoints();
  const bool halts = std::any_of(points.begin(), points.end(), [&](const Debugger::Breakpoint& point) {
    return stops[point.stop].at.line == line;
  });
  const bool here = !debugger_.frames().empty() && stops[frame().stop].at.line == line;
  std::string shown = std::string(halts ? "*" : " ") + (here ? ">" : " ") + NumberOf(line) + "  ";
  shown += source_.Line(line);
  Say(shown.substr(0, shown.find_last_not_of(" \t") + 1));
}

void DebugConsole::ShowFrame() {
  nextLine_ = 0;
  Say("#" + std::to_string(frame_) + " " + PlaceOf(frame().stop));
  ShowLine(debugger_.stops().all()[frame().stop].at.line);
}

void DebugConsole::ShowVariables(bool ofRoutine) {
  const std::vector<Debugger::Shown> variables = debugger_.Variables(frame(), ofRoutine, trueColour_);
  for (const Debugger::Shown& one : variables) Say(one.name + " As " + one.type + " = " + one.value);
  if (variables.empty()) Say("no variables here");
}

void DebugConsole::ListBreakpoints() const {
  for (const Debugger::Breakpoint& point : debugger_.breakpoints()) {
    Say(NumberOf(point.number) + "  " + TextOf(point));
  }
  if (debugger_.breakpoints().empty()) Say("no breakpoints");
}

// --- the commands

std::optional<DebugConsole::Going> DebugConsole::Break(const std::string& rest) {
  if (rest.empty()) {
    ListBreakpoints();
    return std::nullopt;
  }
  const std::size_t end = std::min(rest.find_first_of(" \t"), rest.size());
  const std::string place = rest.substr(0, end);
  std::string condition = Trimmed(rest.substr(end));
  if (!condition.empty()) {
    if (!SameName(condition.substr(0, 3), "if ")) {
      throw std::runtime_error("wanted a line or a routine, and 'if' with a condition, found " + rest);
    }
    condition = Trimmed(condition.substr(3));
  }
  std::vector<std::size_t> stops;
  std::string moved;
  if (const std::optional<std::int32_t> line = NumberIn(place)) {
    const std::optional<std::size_t> stop = debugger_.StopAtLine(*line);
    if (!stop) throw std::runtime_error("wanted a line with a statement at or behind it, found " + place);
    if (debugger_.stops().all()[*stop].at.line != *line) moved = "; line " + place + " has no statement";
    stops.push_back(*stop);
  } else {
    stops = debugger_.StopsOfRoutine(place);
    if (stops.empty()) {
      throw std::runtime_error("wanted a line or a routine with statements, found " + place);
    }
  }
  for (const std::size_t stop : stops) {
    const Debugger::Breakpoint& made = debugger_.AddBreakpoint(stop, condition);
    Say("breakpoint " + std::to_string(made.number) + ": " + TextOf(made) + moved);
  }
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::Delete(const std::string& rest) {
  if (rest.empty()) {
    debugger_.RemoveBreakpoints();
    return std::nullopt;
  }
  std::size_t start = 0;
  while (start < rest.size()) {
    const std::size_t end = std::min(rest.find_first_of(" \t,", start), rest.size());
    const std::string word = rest.substr(start, end - start);
    const std::optional<std::int32_t> number = NumberIn(word);
    if (!word.empty() && (!number || !debugger_.RemoveBreakpoint(*number))) {
      throw std::runtime_error("wanted the number of a breakpoint, found " + word + "; break lists them");
    }
    start = end + 1;
  }
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::Step(const std::string&) {
  return Going::Step;
}

std::optional<DebugConsole::Going> DebugConsole::Next(const std::string&) {
  return Going::Next;
}

std::optional<DebugConsole::Going> DebugConsole::Finish(const std::string&) {
  if (debugger_.frames().size() == 1) {
    throw std::runtime_error("wanted a routine to leave, found the program's own level");
  }
  return Going::Finish;
}

std::optional<DebugConsole::Going> DebugConsole::Continue(const std::string&) {
  return Going::Continue;
}

std::optional<DebugConsole::Going> DebugConsole::Print(const std::string& rest) {
  if (rest.empty()) throw std::runtime_error("wanted an expression, found nothing");
  const std::optional<std::string> value = debugger_.Evaluate(frame(), rest, trueColour_);
  if (value) Say(*value);
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::Locals(const std::string&) {
  ShowVariables(true);
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::Globals(const std::string&) {
  ShowVariables(false);
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::Backtrace(const std::string&) {
  const std::vector<Debugger::Frame>& frames = debugger_.frames();
  for (std::size_t i = 0; i < frames.size(); ++i) {
    if (i >= kShownCalls && i + 1 < frames.size()) continue;
    if (i + 1 == frames.size() && i > kShownCalls) {
      Say("  and " + std::to_string(i - kShownCalls) + " more calls, up to");
    }
    Say(std::string(i == frame_ ? ">" : " ") + " #" + std::to_string(i) + " " +
        PlaceOf(frames[frames.size() - 1 - i].stop));
  }
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::Up(const std::string&) {
  return Frame(std::to_string(frame_ + 1));
}

std::optional<DebugConsole::Going> DebugConsole::Down(const std::string&) {
  if (frame_ == 0) throw std::runtime_error("wanted a call below, found the innermost one");
  return Frame(std::to_string(frame_ - 1));
}

std::optional<DebugConsole::Going> DebugConsole::Frame(const std::string& rest) {
  if (!rest.empty()) {
    const std::optional<std::int32_t> number = NumberIn(rest);
    const std::size_t count = debugger_.frames().size();
    if (!number || static_cast<std::size_t>(*number) >= count) {
      throw std::runtime_error("wanted a call from 0 to " + std::to_string(count - 1) + ", found " + rest);
    }
    frame_ = static_cast<std::size_t>(*number);
  }
  ShowFrame();
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::List(const std::string& rest) {
  const auto lines =
      static_cast<std::int32_t>(std::count(source_.text().begin(), source_.text().end(), '\n') +
                                (source_.text().ends_with('\n') ? 0 : 1));
  std::int32_t meant = 0;
  if (const std::optional<std::int32_t> line = NumberIn(rest)) {
    meant = *line;
  } else if (!rest.empty()) {
    const std::vector<std::size_t> stops = debugger_.StopsOfRoutine(rest);
    if (stops.empty()) throw std::runtime_error("wanted a line or a routine with statements, found " + rest);
    meant = debugger_.stops().all()[stops.front()].at.line;
  } else if (nextLine_ == 0 && !debugger_.frames().empty()) {
    meant = debugger_.stops().all()[frame().stop].at.line;
  }
  if (meant > 0) nextLine_ = std::max(1, meant - kListedBefore);
  if (nextLine_ == 0) nextLine_ = 1;
  if (nextLine_ > lines) {
    throw std::runtime_error("wanted a line up to " + std::to_string(lines) + ", the last one; found " +
                             std::to_string(nextLine_));
  }
  for (std::int32_t i = 0; i < kListed && nextLine_ <= lines; ++i) ShowLine(nextLine_++);
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::Exceptions(const std::string& rest) {
  for (const Debugger::StopOnName& one : Debugger::kStopOnNames) {
    if (rest.empty() && one.meant == debugger_.stopOn) Say(one.name);
    if (!SameName(rest, one.name)) continue;
    debugger_.stopOn = one.meant;
    return std::nullopt;
  }
  if (!rest.empty()) throw std::runtime_error("wanted raised, uncaught or never, found " + rest);
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::Restart(const std::string&) {
  restart_ = true;
  return Going::End;
}

std::optional<DebugConsole::Going> DebugConsole::Help(const std::string&) {
  for (const Command& command : Commands()) {
    const std::string form = std::string(command.name) + " " + command.arguments;
    Say("  " + Padded(command.others, 16) + Padded(form, 40) + command.purpose);
  }
  Say("An empty line repeats step, next, continue and list. Ctrl-C halts a program that runs.");
  return std::nullopt;
}

std::optional<DebugConsole::Going> DebugConsole::Quit(const std::string&) {
  quit_ = true;
  return Going::End;
}

}  // namespace hostrun
