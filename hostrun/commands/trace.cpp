// hostrun/commands/trace.cpp - "hostrun trace": runs a program and shows each call as it crosses into the
// bundle.
#include <dlfcn.h>

#include <cstdio>
#include <memory>
#include <optional>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/output_file.h"
#include "hostrun/commands/run.h"
#include "hostrun/commands/shim/shim.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/commands/trace_report.h"
#include "hostrun/commands/tracer.h"
#include "hostrun/host/crash.h"
#include "hostrun/host/output.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/services.h"
#include "hostrun/language/program.h"
#include "hostrun/language/source.h"

namespace hostrun {
namespace {

struct TraceOptions {
  RunOptions run;
  std::string out;     // file; empty: stderr
  std::string filter;  // CLASS or CLASS.MEMBER; empty: everything
  bool all = false;    // also look-ups and exception frames
  bool summary = false;
  bool json = false;
};

constexpr const char* kTraceName = "hostrun trace";
constexpr const char* kShim = "libhostrun-trace.so";

// A process runs one trace, which the thunks and a crash must find without an argument.
constinit Tracer* tracer = nullptr;
constinit std::optional<OutputFile> traceFile;
void Arrived(const char* name, const void* from, const std::uint32_t* words) {
  if (tracer != nullptr) tracer->Arrived(name, from, words);
}

// Loads the library that stands before the platform.
Problem StandBefore(const std::string& platform) {
  const std::string file = OwnFile(kShim);
  void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (library == nullptr) return file + ": wanted the library that watches the platform, found: " + dlerror();
  const auto connect =
      reinterpret_cast<decltype(&hostrun_trace_connect)>(dlsym(library, "hostrun_trace_connect"));
  const auto wrap = reinterpret_cast<decltype(&hostrun_trace_wrap)>(dlsym(library, "hostrun_trace_wrap"));
  if (connect == nullptr || wrap == nullptr)
    return file + ": wanted the library that watches the platform, found another";
  connect(platform.c_str(), &Arrived);
  SetServiceWrapper(wrap);
  return {};
}

// "CLASS" or "CLASS.MEMBER".
TraceFilter FilterOf(const std::string& text) {
  const std::size_t dot = text.find('.');
  return {text.substr(0, dot), dot == std::string::npos ? std::string() : text.substr(dot + 1)};
}

// A filter that nothing passes is most likely spelled wrong.
Problem CheckFilter(const std::string& text, const TraceFilter& filter) {
  if (text.empty()) return {};
  const Class* const cls = TheRegistry().FindClass(filter.cls);
  bool known = cls != nullptr && cls->origin == Origin::Bundle;
  if (known && !filter.member.empty()) {
    known = cls->PropertyNamed(filter.member, false) != nullptr ||
            cls->PropertyNamed(filter.member, true) != nullptr ||
            !cls->MethodsNamed(filter.member, false).empty() ||
            !cls->MethodsNamed(filter.member, true).empty();
  }
  if (known) return {};
  return std::string(kTraceName) + ": --filter: wanted CLASS or CLASS.MEMBER of the bundle, found " + text +
         "; hostrun classes lists them";
}

std::unique_ptr<TraceReport> ReportOf(const TraceOptions& options) {
  if (!options.out.empty()) traceFile.emplace(options.out);
  const TakeLine take = [](const std::string& line) {
    if (traceFile) return traceFile->Write(line + "\n");
    FlushOutput();
    std::fprintf(stderr, "%s\n", line.c_str());
  };
  if (options.summary) return SummaryReport(take, options.json);
  if (options.json) return JsonReport(take);
  return TextReport(take, !traceFile && TakesColour(stderr));
}

int Watch(const TraceOptions& options, const Source& source) {
  const std::unique_ptr<TraceReport> report = ReportOf(options);
  AtCrash([] {
    if (traceFile) traceFile->Rescue();
  });
  const TraceFilter filter = FilterOf(options.filter);
  Tracer watching(*report, source, filter, !options.all);
  RunOptions run = options.run;
  run.started = [&] { return CheckFilter(options.filter, filter); };
  tracer = &watching;
  SetCallObserver(&watching);
  const int status = Run(run, source);
  SetCallObserver(nullptr);
  tracer = nullptr;
  report->Finish();
  if (traceFile) traceFile->Finish();
  // There is nowhere left to say so.
  return !traceFile && std::ferror(stderr) != 0 ? kExitUse : status;
}

int Trace(const TraceOptions& options) {
  int status = kExitUse;
  try {
    const Source source = SourceOf(options.run);
    const Problem problem = StandBefore(options.run.host.platform);
    status = problem ? Refuse(kTraceName, *problem) : Watch(options, source);
  } catch (const std::exception& error) {
    status = Refuse(error.what());
  }
  traceFile.reset();
  return status;
}

}  // namespace

Action TraceCommand(CommandLine& line) {
  const auto options = std::make_shared<TraceOptions>();
  options->run.command = kTraceName;
  AddRunOptions(line, options->run);
  line.Add("--out,--output", options->out, "Write the trace there and not to stderr").Takes("FILE");
  line.AddFlag("--all", options->all, "Also look-ups of classes and selectors, and exception frames");
  line.Add("--filter", options->filter, "Only calls of that class or member, and what happens in them")
      .Takes("CLASS[.MEMBER]");
  line.AddFlag("--summary", options->summary,
               "Instead of the calls, a line for each member: calls, time, messages, services");
  line.AddFlag("--json", options->json,
               "A JSON object a line, for tools (docs/hostrun.md says what it holds)");
  line.SetFooter(
      "Each call shows its declaration, its arguments, the messages that it sends, the services that it "
      "uses, its\n"
      "result, and its time without what the trace itself takes.\n\n"
      "Examples:\n  hostrun trace --out calls.txt examples/first-colors.bas\n"
      "  hostrun trace --summary examples/first-colors.bas\n"
      "  hostrun trace --filter NSColorQVX.getRGB examples/components.bas\n\n"
      "Exit status: that of hostrun; 2 also when the trace can't be written.");
  return [options] { return Trace(*options); };
}

}  // namespace hostrun
