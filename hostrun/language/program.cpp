// hostrun/language/program.cpp - a program from its text to its end.
#include "hostrun/language/program.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/output.h"
#include "hostrun/language/parser.h"

namespace hostrun {
namespace {

// What a call of a routine may need below the limit: its own variables, the platform, a destructor.
constexpr std::size_t kStackReserve = 512U << 10U;
constexpr std::size_t kLargestStack = 64U << 20U;
constexpr std::size_t kSmallestStack = 2U << 20U;
constexpr std::size_t kShownTrace = 20;

// The lowest address that may still be entered, from where the stack stands now.
const char* StackLimit() {
  rlimit limit{};
  std::size_t size = kLargestStack;
  if (getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
    size = std::clamp<std::size_t>(limit.rlim_cur, kSmallestStack, kLargestStack);
  }
  return static_cast<const char*>(__builtin_frame_address(0)) - (size - kStackReserve);
}

// The lines that the program stands on, innermost first.
void FillTrace(std::vector<TraceLine>& trace) {
  Position at = currentPosition;
  // NOLINTNEXTLINE(modernize-loop-convert): clang 14 knows no reversed view of this library
  for (auto call = machine.calls.rbegin(); call != machine.calls.rend(); ++call) {
    trace.push_back({call->routine->signature.name, at.line, at.column});
    at = call->at;
  }
  trace.push_back({"", at.line, at.column});
}

// The exit status. Whatever the program throws ends here.
int RunBody(const BoundProgram& program, Activation& activation, const Source& source) {
  try {
    try {
      program.body.Run(activation);
      return kExitFine;
    } catch (const std::exception& error) {
      if (!LacksMemory(error)) throw;
      RaiseHostException("OutOfMemoryException", "Not enough memory.");
    }
  } catch (const QuitRequest& request) {
    return request.status;
  } catch (const HostException& exception) {
    ReportUncaught(source, exception.object());
    return kExitException;
  }
}

}  // namespace

BoundProgram Compile(const Source& source) {
  Binder binder;
  return Compile(source, binder);
}

BoundProgram Compile(const Source& source, Binder& binder) {
  const ProgramText text = Parser(source).ParseProgram();
  return binder.Bind(text);
}

void ReportUncaught(const Source& source, Object* exception) {
  const auto& data = PayloadOf<ExceptionData>(exception);
  const std::vector<TraceLine>& trace = data.trace;
  const TraceLine where = trace.empty() ? TraceLine() : trace.front();
  std::string what = "uncaught " + DescribeException(exception);
  if (data.errorNumber != 0) what += " (error " + std::to_string(data.errorNumber) + ")";
  std::string text = source.Describe({where.line, where.column}, what) + "\n";
  for (std::size_t i = 0; i + 1 < trace.size(); ++i) {
    if (i == kShownTrace) {
      text += "  and " + std::to_string(trace.size() - 1 - i) + " more calls\n";
      break;
    }
    text += "  in " + trace[i].routine + ", called from line " + std::to_string(trace[i + 1].line) + "\n";
  }
  WritePlatformLogOf(exception);
  std::fputs(text.c_str(), stderr);
}

void BeginRunning() {
  interruptAsked = 0;
  machine.stackLimit = StackLimit();
  SetTraceSource(&FillTrace);
}

void EndRunning() {
  machine.result = Value();
  machine.calls.clear();
  SetTraceSource(nullptr);
  FlushOutput();
}

int RunProgram(const BoundProgram& program, const Source& source) {
  BeginRunning();
  std::vector<Value> globals;
  globals.reserve(program.globals.size());
  for (const Type* const type : program.globals) globals.push_back(Value::DefaultOf(*type));
  Activation activation{nullptr, globals.data()};
  const int status = RunBody(program, activation, source);
  currentPosition = {};
  while (!globals.empty()) globals.pop_back();
  EndRunning();
  return status;
}

}  // namespace hostrun
