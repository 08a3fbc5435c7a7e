// hostrun/commands/trace_report.h - what "hostrun trace" tells of a run, and the forms in which it does.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hostrun {

using NamedTexts = std::vector<std::pair<std::string, std::string>>;

// A call that crosses into the bundle.
struct EnteredCall {
  std::string member;       // "NSColorQVX.getRGB"
  std::string heading;      // for people: with the declaration
  std::string declaration;  // empty: a constructor or destructor of a definition
  NamedTexts arguments;
  std::int32_t line = 0;   // of the program; 0: none
  std::string sourceLine;  // "program.bas:3: ..." where it is another than the last one's; else empty
};

struct LeftCall {
  std::string member;
  bool raised = false;
  std::string outcome;  // the result, empty for none, or the exception
  NamedTexts outputs;   // by-reference arguments afterwards
  std::chrono::nanoseconds time{};
};

enum class ActionKind : std::uint8_t { Message, Service, Function };

// Gets what happens, in order. Calls nest: Leave belongs to the last Enter without one.
class TraceReport {
 public:
  TraceReport() = default;
  TraceReport(const TraceReport&) = delete;
  TraceReport& operator=(const TraceReport&) = delete;
  virtual ~TraceReport() = default;
  virtual void Enter(const EnteredCall& call) = 0;
  // What the bundle does within the innermost call.
  virtual void Act(ActionKind kind, const std::string& text) = 0;
  virtual void Leave(const LeftCall& call) = 0;
  virtual void Finish() {}
};

// Takes a line without its end.
using TakeLine = std::function<void(const std::string& line)>;

// A line for each thing that happens, indented by the depth of calls.
std::unique_ptr<TraceReport> TextReport(TakeLine take, bool colour);
// The same as one JSON object a line.
std::unique_ptr<TraceReport> JsonReport(TakeLine take);
// At the end a line for each member: calls, time, messages, services. The member that took longest comes
// first.
std::unique_ptr<TraceReport> SummaryReport(TakeLine take, bool json);

}  // namespace hostrun
