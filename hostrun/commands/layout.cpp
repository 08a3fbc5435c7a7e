// hostrun/commands/layout.cpp - the words of definition records, as a bundle registered them.
#include "hostrun/commands/layout.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "hostrun/commands/json.h"
#include "hostrun/commands/start.h"
#include "hostrun/host/bundle.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

using Holds = RecordWord::Holds;

constexpr std::array kDefinition = {
    RecordWord{"layout version"},
    RecordWord{"class name", Holds::Text},
    RecordWord{"superclass name", Holds::Text},
    RecordWord{"size of the class data"},
    RecordWord{"place of the class data"},
    RecordWord{"constructor", Holds::Function},
    RecordWord{"destructor", Holds::Function},
    RecordWord{"properties", Holds::Array, RecordKind::Property},
    RecordWord{"property count"},
    RecordWord{"methods", Holds::Array, RecordKind::Method},
    RecordWord{"method count"},
    RecordWord{"events", Holds::Array, RecordKind::Event},
    RecordWord{"event count"},
    RecordWord{"event instances", Holds::Array, RecordKind::Event},
    RecordWord{"event instance count"},
    RecordWord{"interfaces", Holds::Text},
    RecordWord{"zero"},
    RecordWord{"zero"},
    RecordWord{"constants", Holds::Array, RecordKind::Constant},
    RecordWord{"constant count"},
    RecordWord{"class flags"},
    RecordWord{"shared properties", Holds::Array, RecordKind::Property},
    RecordWord{"shared property count"},
    RecordWord{"shared methods", Holds::Array, RecordKind::Method},
    RecordWord{"shared method count"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
};
constexpr std::array kMethod = {
    RecordWord{"function", Holds::Function},
    RecordWord{"second function", Holds::Function},
    RecordWord{"declaration", Holds::Text},
    RecordWord{"method flags"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
};
constexpr std::array kProperty = {
    RecordWord{"group", Holds::Text},
    RecordWord{"property name", Holds::Text},
    RecordWord{"type name", Holds::Text},
    RecordWord{"property flags"},
    RecordWord{"getter", Holds::Function},
    RecordWord{"setter", Holds::Function},
    RecordWord{"parameter"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
};
constexpr std::array kConstant = {
    RecordWord{"declaration", Holds::Text},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
};
constexpr std::array kEvent = {
    RecordWord{"declaration", Holds::Text},
    RecordWord{"implementation"},
    RecordWord{"reserved"},
    RecordWord{"reserved"},
};
static_assert(sizeof kDefinition / sizeof(RecordWord) * 4 == sizeof(qvx::REALclassDefinition));
static_assert(sizeof kMethod / sizeof(RecordWord) * 4 == sizeof(qvx::REALmethodDefinition));
static_assert(sizeof kProperty / sizeof(RecordWord) * 4 == sizeof(qvx::REALproperty));
static_assert(sizeof kConstant / sizeof(RecordWord) * 4 == sizeof(qvx::REALconstant));
static_assert(sizeof kEvent / sizeof(RecordWord) * 4 == sizeof(qvx::REALevent));

constexpr std::int32_t kLastOldLayout = 9;

std::uint32_t WordAt(const void* record, std::size_t word) {
  std::uint32_t value = 0;
  std::memcpy(&value, static_cast<const char*>(record) + word * sizeof value, sizeof value);
  return value;
}

const char* NamePlural(RecordKind kind) {
  switch (kind) {
    case RecordKind::Method:
      return "methods";
    case RecordKind::Property:
      return "properties";
    case RecordKind::Constant:
      return "constants";
    default:
      return "events";
  }
}

std::string FunctionText(std::uint32_t address) {
  if (!TheBundle().Contains(reinterpret_cast<const void*>(address)))
    return "a function outside of the bundle";
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "code at 0x%x", static_cast<unsigned>(address - TheBundle().begin));
  return text.data();
}

std::string WordText(const RecordWord& word, std::uint32_t value, std::uint32_t next, bool old) {
  if (word.holds == Holds::Number) return std::to_string(static_cast<std::int32_t>(value));
  if (value == 0) return "null";
  switch (word.holds) {
    case Holds::Text:
      return '"' + std::string(reinterpret_cast<const char*>(value)) + '"';
    case Holds::Function:
      return FunctionText(value);
    default:
      return std::to_string(next) + " " + NamePlural(word.of) + " of " +
             std::to_string(RecordSize(word.of, old)) + " bytes";
  }
}

ordered_json RecordTexts(RecordKind kind, const void* record, bool old) {
  const std::size_t count = old ? OldWordCount(kind) : WordsOf(kind).size();
  ordered_json texts = ordered_json::array();
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t next = i + 1 < count ? WordAt(record, i + 1) : 0;
    texts.push_back(WordText(WordsOf(kind)[i], WordAt(record, i), next, old));
  }
  return texts;
}

// {"declaration": [words]} of each record that the word at `word` of the definition points to.
ordered_json ArrayTexts(const void* definition, std::size_t word, bool old) {
  const RecordKind kind = WordsOf(RecordKind::Definition)[word].of;
  const auto* const records = reinterpret_cast<const char*>(WordAt(definition, word));
  ordered_json list = ordered_json::array();
  for (std::uint32_t i = 0; records != nullptr && i < WordAt(definition, word + 1); ++i) {
    list.push_back(RecordTexts(kind, records + i * RecordSize(kind, old), old));
  }
  return list;
}

std::string ReadAll(int from) {
  std::string text;
  std::array<char, 4096> part{};
  for (;;) {
    const ssize_t count = read(from, part.data(), part.size());
    if (count <= 0) return text;
    text.append(part.data(), static_cast<std::size_t>(count));
  }
}

void WriteAll(int to, const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t count = write(to, text.data() + at, text.size() - at);
    if (count <= 0) return;
    at += static_cast<std::size_t>(count);
  }
}

}  // namespace

std::span<const RecordWord> WordsOf(RecordKind kind) {
  switch (kind) {
    case RecordKind::Definition:
      return kDefinition;
    case RecordKind::Method:
      return kMethod;
    case RecordKind::Property:
      return kProperty;
    case RecordKind::Constant:
      return kConstant;
    case RecordKind::Event:
      break;
  }
  return kEvent;
}

std::size_t OldWordCount(RecordKind kind) {
  return RecordSize(kind, true) / sizeof(std::uint32_t);
}

bool IsOldLayout(std::int32_t version) {
  return version <= kLastOldLayout;
}

std::size_t RecordSize(RecordKind kind, bool old) {
  if (!old) return WordsOf(kind).size() * sizeof(std::uint32_t);
  switch (kind) {
    case RecordKind::Definition:
      return qvx::kOldClassSize;
    case RecordKind::Method:
      return qvx::kOldMethodSize;
    case RecordKind::Property:
      return qvx::kOldPropertySize;
    case RecordKind::Constant:
      return qvx::kOldConstantSize;
    case RecordKind::Event:
      break;
  }
  return qvx::kOldEventSize;
}

ordered_json LayoutOfClasses() {
  std::vector<const Class*> registered;
  for (const auto& cls : TheRegistry().classes()) {
    if (cls->origin == Origin::Bundle && cls->defined) registered.push_back(cls.get());
  }
  std::sort(registered.begin(), registered.end(),
            [](const Class* a, const Class* b) { return a->order < b->order; });
  ordered_json classes = ordered_json::array();
  for (const Class* const cls : registered) {
    const bool old = IsOldLayout(cls->layoutVersion);
    ordered_json one = {{"name", cls->name}, {"layout", cls->layoutVersion}};
    one["definition"] = RecordTexts(RecordKind::Definition, cls->definition, old);
    const std::span<const RecordWord> words = WordsOf(RecordKind::Definition);
    for (std::size_t i = 0; i < words.size(); ++i) {
      if (words[i].holds == Holds::Array) one["records"][words[i].name] = ArrayTexts(cls->definition, i, old);
    }
    classes.push_back(std::move(one));
  }
  return classes;
}

ordered_json LayoutOnHost(const HostOptions& options) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) throw std::runtime_error("wanted a pipe, found no more file descriptors");
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    const Problem problem = StartHost(options);
    const ordered_json answer = problem ? ordered_json(*problem) : LayoutOfClasses();
    WriteAll(ends[1], JsonText(answer, -1));
    _exit(0);
  }
  close(ends[1]);
  const std::string text = ReadAll(ends[0]);
  close(ends[0]);
  int status = 0;
  const bool ended = child > 0 && waitpid(child, &status, 0) == child;
  std::optional<ordered_json> answer = ReadJson(text);
  if (!ended || !answer) {
    throw std::runtime_error(
        options.bundle +
        ": wanted a bundle that registers on each host, found one whose process ended early");
  }
  if (answer->is_string()) throw std::runtime_error(answer->get<std::string>());
  return *std::move(answer);
}

}  // namespace hostrun
