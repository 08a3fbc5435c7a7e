// hostrun/commands/trace.cpp - "hostrun trace": runs a program and shows each call as it crosses into the
// bundle.
#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/describe.h"
#include "hostrun/commands/messages.h"
#include "hostrun/commands/run.h"
#include "hostrun/commands/shim/shim.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/arrays.h"
#include "hostrun/host/bundle.h"
#include "hostrun/host/call.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/position.h"
#include "hostrun/host/service_list.h"
#include "hostrun/host/words.h"
#include "hostrun/language/program.h"
#include "hostrun/language/source.h"

namespace hostrun {
namespace {

struct TraceOptions {
  RunOptions run;
  std::string output;  // file; empty: stderr
  bool all = false;    // also look-ups and exception frames
};

constexpr const char* kCommand = "hostrun trace";
constexpr const char* kShim = "libhostrun-trace.so";

using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::nanoseconds;

std::string ObjectText(const Object* object) {
  if (object == nullptr) return "Nil";
  if (object->cls != &ArrayClass()) return object->cls->name;
  const std::vector<Value>& items = ArrayDataOf(const_cast<Object*>(object)).items;
  return "array of " + std::to_string(items.size());
}

std::string ValueText(const Value& value) {
  return value.kind() == Kind::Object ? ObjectText(value.object()) : LiteralText(value);
}

// The argument at `words` as text; moves `words` past it. `after` the call, what stands in a by-reference
// argument.
std::string WordsText(const Parameter& parameter, const std::uint32_t*& words, bool after) {
  const std::uint32_t* at = words;
  words += parameter.byref ? 1 : WordCount(*parameter.type);
  if (parameter.byref) at = reinterpret_cast<const std::uint32_t*>(*at);
  const std::string text = ValueText(ShareWords(*parameter.type, at));
  return parameter.byref && !after ? "byref " + text : text;
}

// A service's argument; empty for one that can't be shown: a pointer, an encoding.
template <class T>
std::string ServiceArgument(std::uint32_t word) {
  if constexpr (std::is_same_v<T, std::int32_t> || std::is_same_v<T, qvx::REALArrayType>) {
    return std::to_string(static_cast<std::int32_t>(word));
  } else if constexpr (std::is_same_v<T, Object*>) {
    return ObjectText(reinterpret_cast<const Object*>(word));
  } else if constexpr (std::is_same_v<T, HostString*>) {
    return LiteralText(Value::Share(reinterpret_cast<HostString*>(word)));
  } else if constexpr (std::is_same_v<T, const char*>) {
    return word == 0 ? "null" : '"' + std::string(reinterpret_cast<const char*>(word)) + '"';
  } else {
    return {};
  }
}

// A service's arguments up to the first that can't be shown. Each takes one word.
template <class Function>
struct ServiceArguments;
template <class R, class... A>
struct ServiceArguments<R(A...)> {
  static std::string Text(const std::uint32_t* words) {
    std::string text;
    [[maybe_unused]] const auto add = [&text](const std::string& argument) {
      text += (text.empty() || argument.empty() ? "" : ", ") + argument;
      return !argument.empty();
    };
    static_cast<void>((add(ServiceArgument<A>(*words++)) && ...));
    return text.empty() ? text : "(" + text + ")";
  }
};

// The use of a service with its arguments; empty when there is no service of that name.
std::string ServiceText(std::string_view name, const std::uint32_t* words) {
  std::string text;
  ForEachService([&]<class Kind>(const char*, std::string_view hostName) {
    if (text.empty() && hostName == name)
      text = std::string(name) + ServiceArguments<typename Kind::Function>::Text(words);
  });
  return text;
}

std::string TimeText(Nanoseconds time) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f µs", static_cast<double>(time.count()) / 1000);
  return text;
}

// Writes the trace. The times do not contain what the trace itself takes.
class Tracer final : public CallObserver {
 public:
  Tracer(std::FILE* out, const Source& source, bool all)
      : out_(out), source_(source), all_(all), paint_(TakesColour(out)) {}

  void Enter(const Method& method, const ArgumentWords& words) override {
    ShowCall(method, words);
    Begin();
  }

  void Leave(const Method& method, const ArgumentWords& words, const Value* result,
             Object* exception) override {
    const Nanoseconds time = End();
    const Busy busy(*this);
    std::string text;
    if (exception != nullptr) {
      text = paint_(Style::Bad, "raises " + DescribeException(exception));
    } else {
      text = method.signature.result->kind == Kind::Nothing ? "returns" : "gives " + ValueText(*result);
    }
    const std::uint32_t* at = words.data() + (method.shared ? 0 : 1);
    for (const Parameter& parameter : method.signature.parameters) {
      const std::string after = WordsText(parameter, at, true);
      if (parameter.byref) text += ", " + parameter.name + " = " + after;
    }
    Line("< ", text + paint_(Style::Faint, ", " + TimeText(time)));
  }

  void EnterLife(const Class& cls, bool constructor) override {
    {
      const Busy busy(*this);
      ShowPlace();
      Line("> ", paint_(Style::Strong, cls.name + (constructor ? ": its constructor" : ": its destructor")));
    }
    Begin();
  }

  void LeaveLife(const Class&, bool) override {
    const Nanoseconds time = End();
    const Busy busy(*this);
    Line("< ", "returns" + paint_(Style::Faint, ", " + TimeText(time)));
  }

  void Arrived(std::string_view name, const void* from, const std::uint32_t* words) {
    if (calls_.empty() || !TheBundle().Contains(from)) return;
    const Busy busy(*this);
    if (name == "objc_msgSend" || name == "objc_msgSend_fpret") {
      Line("sends ", MessageText(words));
    } else if (const std::string service = ServiceText(name, words); !service.empty()) {
      Line("uses ", service);
    } else if (all_ || !IsQuiet(name)) {
      Line("calls ", std::string(name) + PlatformArguments(name, words));
    }
  }

 private:
  void ShowCall(const Method& method, const ArgumentWords& words) {
    const Busy busy(*this);
    ShowPlace();
    std::string line = paint_(Style::Strong, method.owner->name + ": " + method.declaration);
    Line("> ", line);
    const std::uint32_t* at = words.data();
    std::string arguments;
    if (!method.shared) arguments = "self = " + ObjectText(reinterpret_cast<const Object*>(*at++));
    for (const Parameter& parameter : method.signature.parameters) {
      if (!arguments.empty()) arguments += ", ";
      arguments += parameter.name + " = " + WordsText(parameter, at, false);
    }
    if (!arguments.empty()) Line("    with ", arguments);
  }

  struct Call {
    Clock::time_point start;
    Nanoseconds busyAtStart;
  };

  // The time that passes meanwhile goes into writing the trace, and is no call's.
  class Busy {
   public:
    explicit Busy(Tracer& tracer) : tracer_(tracer), start_(Clock::now()) {}
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;
    ~Busy() { tracer_.busy_ += Clock::now() - start_; }

   private:
    Tracer& tracer_;
    Clock::time_point start_;
  };

  void Begin() { calls_.push_back({Clock::now(), busy_}); }
  Nanoseconds End() {
    const Clock::time_point now = Clock::now();
    const Call call = calls_.back();
    calls_.pop_back();
    return now - call.start - (busy_ - call.busyAtStart);
  }

  // Look-ups and exception frames are part of every call.
  static bool IsQuiet(std::string_view name) {
    return name == "objc_getClass" || name == "sel_registerName" || name == "objc_exception_try_enter" ||
           name == "objc_exception_try_exit";
  }
  static std::string PlatformArguments(std::string_view name, const std::uint32_t* words) {
    if (name == "objc_getClass" || name == "sel_registerName") {
      return "(\"" + std::string(reinterpret_cast<const char*>(words[0])) + "\")";
    }
    if (name == "CFRelease") return "(" + PlatformObjectText(words[0]) + ")";
    if (name.starts_with("CFDictionary")) return "(..., " + PlatformObjectText(words[1]) + ")";
    return {};
  }

  void ShowPlace() {
    const Position at = currentPosition;
    if (at.line == 0 || at.line == lastLine_ || !calls_.empty()) return;
    lastLine_ = at.line;
    std::fprintf(out_, "%s\n",
                 paint_(Style::Notable, source_.name() + ":" + std::to_string(at.line) + ": " +
                                            std::string(source_.Line(at.line)))
                     .c_str());
  }

  void Line(std::string_view sign, std::string_view text) {
    std::fflush(stdout);
    const std::string indent(2 + 4 * calls_.size(), ' ');
    std::fprintf(out_, "%s%.*s%.*s\n", indent.c_str(), static_cast<int>(sign.size()), sign.data(),
                 static_cast<int>(text.size()), text.data());
    std::fflush(out_);
  }

  std::FILE* out_;
  const Source& source_;
  bool all_;
  Painter paint_;
  std::vector<Call> calls_;
  Nanoseconds busy_{};
  std::int32_t lastLine_ = 0;
};

// A process runs one trace, which the thunks must find without an argument.
constinit Tracer* tracer = nullptr;
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

int Trace(const TraceOptions& options) {
  std::optional<Source> source;
  try {
    source = Source::FromFile(options.run.program);
  } catch (const std::exception& error) {
    return Refuse(kCommand, error.what());
  }
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
      options.output.empty() ? nullptr : std::fopen(options.output.c_str(), "w"), &std::fclose);
  if (!options.output.empty() && file == nullptr) {
    return Refuse(kCommand, options.output + ": wanted a file to write to, found: " + std::strerror(errno));
  }
  const Problem problem = StandBefore(options.run.host.platform);
  if (problem) return Refuse(kCommand, *problem);
  Tracer watching(file == nullptr ? stderr : file.get(), *source, options.all);
  tracer = &watching;
  SetCallObserver(&watching);
  const int status = Run(options.run);
  SetCallObserver(nullptr);
  tracer = nullptr;
  return status;
}

}  // namespace

Action TraceCommand(CLI::App& app) {
  const auto options = std::make_shared<TraceOptions>();
  AddRunOptions(app, options->run);
  app.add_option("--output", options->output, "Write the trace there and not to stderr")->option_text("FILE");
  app.add_flag("--all", options->all, "Also look-ups of classes and selectors, and exception frames");
  app.footer(
      "Each call shows its declaration, its arguments, the messages that it sends, the services that it "
      "uses, its\n"
      "result, and its time without what the trace itself takes.\n\n"
      "Example:\n  hostrun trace --output calls.txt examples/first-colors.bas\n\n"
      "Exit status: that of hostrun; 2 also when the trace can't be written.");
  return [options] { return Trace(*options); };
}

}  // namespace hostrun
