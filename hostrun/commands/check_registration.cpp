// hostrun/commands/check_registration.cpp - checks of what a bundle says while it is entered: the version
// that it announces, the order of its registrations, each word of its records, each declaration.

#include <cctype>
#include <cstring>
#include <fstream>
#include <set>

#include "hostrun/commands/check_parts.h"
#include "hostrun/commands/layout.h"
#include "hostrun/commands/start.h"
#include "hostrun/host/bundle.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/service_list.h"
#include "hostrun/host/services.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

// One use of the two services of registration.
struct Event {
  std::int32_t version = 0;
  std::vector<std::uint32_t> definition;  // its words before the host wrote into them; empty: a version
};

// What the bundle did while it was entered, in order. The services have no other place to record it in.
std::vector<Event> events;

// --- memory that may not be there

struct Mapping {
  std::uint32_t begin;
  std::uint32_t end;
  bool executable;
};

std::vector<Mapping> ReadMappings() {
  std::vector<Mapping> mappings;
  std::ifstream in("/proc/self/maps");
  for (std::string line; std::getline(in, line);) {
    unsigned begin = 0;
    unsigned end = 0;
    char rights[5] = {};
    if (std::sscanf(line.c_str(), "%x-%x %4s", &begin, &end, rights) == 3 && rights[0] == 'r') {
      mappings.push_back({begin, end, rights[2] == 'x'});
    }
  }
  return mappings;
}

// What of this process may be read or run, as it was when the object was made. A bundle's pointers are looked
// up here before anything follows them.
class Memory {
 public:
  bool IsReadable(std::uint32_t address, std::uint32_t size) const {
    std::uint32_t at = address;
    for (const Mapping& mapping : mappings_) {
      if (at >= mapping.begin && at < mapping.end) {
        if (size <= mapping.end - at) return true;
        size -= mapping.end - at;
        at = mapping.end;
      }
    }
    return false;
  }

  bool IsCode(std::uint32_t address) const {
    for (const Mapping& mapping : mappings_) {
      if (address >= mapping.begin && address < mapping.end) return mapping.executable;
    }
    return false;
  }

  // A text with its terminator, not longer than a declaration could be.
  bool IsText(std::uint32_t address) const {
    constexpr std::uint32_t kLongest = 4096;
    for (std::uint32_t i = 0; i < kLongest; ++i) {
      if ((i == 0 || (address + i) % 4096 == 0) && !IsReadable(address + i, 1)) return false;
      if (*reinterpret_cast<const char*>(address + i) == 0) return true;
    }
    return false;
  }

 private:
  std::vector<Mapping> mappings_ = ReadMappings();
};

// --- recording

std::vector<std::uint32_t> CopyWords(const void* at, std::size_t bytes) {
  std::vector<std::uint32_t> words(bytes / sizeof(std::uint32_t));
  std::memcpy(words.data(), at, bytes);
  return words;
}

// --- version and order

// The layouts by the host version that they begin with, newest first.
struct Threshold {
  double host;
  std::int32_t layout;
};
constexpr Threshold kThresholds[] = {{2013.04, 13}, {2013.03, 12}, {2013.0, 11}, {2012.0, 10}, {0, 9}};

bool IsWithheld(const char* service) {
  return TheHostIdentity().withheld.contains(service);
}

// The layout that this host negotiates. A bundle that can't ask for the version takes the host for the
// oldest.
std::int32_t WantedLayout() {
  if (IsWithheld("REALGetRBVersion")) return std::end(kThresholds)[-1].layout;
  for (const Threshold& threshold : kThresholds) {
    if (TheHostIdentity().version >= threshold.host) return threshold.layout;
  }
  return 0;
}

Problem CheckVersion() {
  if (IsWithheld("RegisterPluginVersion")) return {};
  std::vector<std::int32_t> versions;
  for (const Event& event : events) {
    if (event.definition.empty()) versions.push_back(event.version);
  }
  const std::string wanted =
      "wanted RegisterPluginVersion to be called once with " + std::to_string(WantedLayout()) + ", found ";
  if (versions.size() != 1) return wanted + std::to_string(versions.size()) + " calls";
  if (versions[0] == WantedLayout()) return {};
  return wanted + std::to_string(versions[0]);
}

const char* TextAt(std::uint32_t address) {
  return reinterpret_cast<const char*>(address);
}

Problem CheckOrder() {
  const Memory memory;
  std::set<std::string> names;
  bool announced = IsWithheld("RegisterPluginVersion");
  for (const Event& event : events) {
    if (event.definition.empty()) {
      announced = true;
      continue;
    }
    if (!announced) return "wanted RegisterPluginVersion before the first class, found a class before it";
    if (event.definition.size() < 3 || !memory.IsText(event.definition[1]))
      continue;  // the records' check says so
    const std::string name = TextAt(event.definition[1]);
    if (!names.insert(LowerName(name)).second)
      return "wanted each class once, found " + name + " a second time";
    const std::uint32_t super = event.definition[2];
    if (super == 0 || !memory.IsText(super)) continue;
    const bool known =
        names.contains(LowerName(TextAt(super))) || TheRegistry().FindClass(TextAt(super)) != nullptr;
    if (!known)
      return "wanted the class that " + name + " descends from before it, found no " + TextAt(super);
  }
  if (names.empty() && !IsWithheld("PluginRegisterClass")) return "wanted a registered class, found none";
  return {};
}

// --- record words

// Compares records with their layout, and follows no pointer before it has been looked up.
class RecordReader {
 public:
  // Everything, or only whether the pointers to texts and records lead anywhere.
  enum class What : std::uint8_t { Everything, Pointers };
  explicit RecordReader(bool old, What what = What::Everything) : old_(old), what_(what) {}

  // The first thing that is wrong with the words of one record, and of the records that it points to. `which`
  // says in the message what record it is.
  Problem Check(RecordKind kind, const std::vector<std::uint32_t>& words, const std::string& which) const {
    const std::span<const RecordWord> fields = WordsOf(kind);
    for (std::size_t i = 0; i < words.size(); ++i) {
      Problem problem = CheckWord(fields[i], words[i], i + 1 < words.size() ? words[i + 1] : 0);
      if (!problem && what_ == What::Everything && IsRequired(kind, i) && words[i] == 0)
        problem = "wanted a pointer, found null";
      if (problem) {
        return std::string(which)
            .append(", word ")
            .append(std::to_string(i))
            .append(" (")
            .append(fields[i].name)
            .append("): ")
            .append(*problem);
      }
      if (fields[i].holds != RecordWord::Holds::Array || words[i] == 0) continue;
      const std::string array = std::string(which).append(", ").append(fields[i].name);
      Problem inside = CheckRecords(fields[i].of, words[i], words[i + 1], array);
      if (inside) return inside;
    }
    return {};
  }

 private:
  static bool IsRequired(RecordKind kind, std::size_t word) {
    switch (kind) {
      case RecordKind::Definition:
        return word == 1;
      case RecordKind::Method:
        return word == 0 || word == 2;
      case RecordKind::Property:
        return word == 1 || word == 2 || word == 4;
      default:
        return word == 0;
    }
  }

  Problem CheckWord(const RecordWord& field, std::uint32_t word, std::uint32_t next) const {
    constexpr std::uint32_t kMostRecords = 10000;
    const std::string_view name = field.name;
    const bool pointer = field.holds == RecordWord::Holds::Text || field.holds == RecordWord::Holds::Array;
    if (what_ == What::Pointers && !pointer) return {};
    switch (field.holds) {
      case RecordWord::Holds::Number:
        if ((name == "reserved" || name == "zero") && word != 0)
          return "wanted 0, found " + std::to_string(word);
        if (name == "layout version" && static_cast<std::int32_t>(word) != WantedLayout()) {
          return "wanted " + std::to_string(WantedLayout()) + ", found " +
                 std::to_string(static_cast<std::int32_t>(word));
        }
        if (name == "size of the class data" && (word == 0 || word % 16 != 0)) {
          return "wanted a multiple of 16, found " + std::to_string(word);
        }
        break;
      case RecordWord::Holds::Text:
        if (word != 0 && !memory_.IsText(word)) return "wanted a text, found a pointer to none";
        break;
      case RecordWord::Holds::Function:
        if (word != 0 && !memory_.IsCode(word)) return "wanted a function, found a pointer to no code";
        break;
      case RecordWord::Holds::Array:
        if (next > kMostRecords)
          return "wanted a count from 0 to 10000, found " + std::to_string(static_cast<std::int32_t>(next));
        if (word == 0 && next != 0) return "wanted " + std::to_string(next) + " records, found null";
        if (word != 0 &&
            !memory_.IsReadable(word, next * static_cast<std::uint32_t>(RecordSize(field.of, old_)))) {
          return "wanted " + std::to_string(next) + " records, found memory that can't be read";
        }
        break;
    }
    return {};
  }

  Problem CheckRecords(RecordKind kind, std::uint32_t at, std::uint32_t count,
                       const std::string& which) const {
    const auto size = static_cast<std::uint32_t>(RecordSize(kind, old_));
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::vector<std::uint32_t> words = CopyWords(reinterpret_cast<const void*>(at + i * size), size);
      Problem problem = Check(kind, words, which + " [" + std::to_string(i) + "]");
      if (problem) return problem;
    }
    return {};
  }

  bool old_;
  What what_;
  Memory memory_;
};

Problem CheckRecords(const Event& event) {
  if (event.definition.size() < 2) return "wanted a class definition, found a pointer to none";
  const bool old = IsOldLayout(static_cast<std::int32_t>(event.definition[0]));
  return RecordReader(old).Check(RecordKind::Definition, event.definition, "definition");
}

// --- services that record what they are called with, and pass it on

std::int32_t RecordVersion(std::int32_t version) {
  events.push_back({version, {}});
  return reinterpret_cast<decltype(&RecordVersion)>(ResolveService("RegisterPluginVersion"))(version);
}
static_assert(IsService<decltype(RecordVersion)>("RegisterPluginVersion"));

void RecordClass(qvx::REALclassDefinition* definition) {
  const Memory memory;
  const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(definition));
  const bool old = memory.IsReadable(address, qvx::kOldClassSize) && IsOldLayout(definition->version);
  const std::size_t size = RecordSize(RecordKind::Definition, old);
  if (!memory.IsReadable(address, static_cast<std::uint32_t>(size))) {
    events.push_back({0, {0}});
    return;
  }
  events.push_back({0, CopyWords(definition, size)});
  // The registry follows every pointer: it never sees a record in which one leads nowhere.
  const RecordReader reader(old, RecordReader::What::Pointers);
  if (reader.Check(RecordKind::Definition, events.back().definition, {})) return;
  reinterpret_cast<decltype(&RecordClass)>(ResolveService("PluginRegisterClass"))(definition);
}
static_assert(IsService<decltype(RecordClass)>("PluginRegisterClass"));

void* ResolveRecorded(const char* name) {
  void* const service = ResolveService(name);
  if (service == nullptr) return nullptr;
  if (std::strcmp(name, "RegisterPluginVersion") == 0) return reinterpret_cast<void*>(&RecordVersion);
  if (std::strcmp(name, "PluginRegisterClass") == 0) return reinterpret_cast<void*>(&RecordClass);
  return service;
}

// --- declarations

// The class that a type names and nobody registered; null: the type is known.
const Class* UnknownClass(const Type& type) {
  if (type.kind == Kind::Array) return UnknownClass(*type.element);
  return type.kind == Kind::Object && !type.cls->defined ? type.cls : nullptr;
}

Problem CheckTypes(const Method& method) {
  const Class* unknown = UnknownClass(*method.signature.result);
  for (const Parameter& parameter : method.signature.parameters) {
    if (unknown == nullptr) unknown = UnknownClass(*parameter.type);
  }
  if (unknown == nullptr) return {};
  return "\"" + method.declaration + "\": wanted types that are known, found " + unknown->name +
         ", which nobody registered";
}

Problem CheckDeclarations(const std::string& name) {
  for (const std::string& problem : TheRegistry().problems()) {
    if (problem.starts_with(name + ":")) return problem;
  }
  const Class* const cls = TheRegistry().FindClass(name);
  if (cls == nullptr) return "wanted a class " + name + ", found that it was not registered";
  for (const auto* methods : {&cls->methods, &cls->sharedMethods}) {
    for (const Method& method : *methods) {
      Problem problem = CheckTypes(method);
      if (problem) return problem;
    }
  }
  for (const Property& property : cls->properties) {
    Problem problem = CheckTypes(property.getter);
    if (problem) return problem;
  }
  return {};
}

}  // namespace

Problem EnterBundle(const HostOptions& options) {
  Problem problem = StartWithoutBundle(options);
  if (!problem) problem = MapBundle(options.bundle);
  if (problem) return problem;
  TheBundle().enter(&ResolveRecorded);
  return {};
}

std::vector<BundleCheck> RegistrationChecks() {
  std::vector<BundleCheck> checks;
  checks.push_back({KindNamed("VERSION/version"), {}, &CheckVersion});
  checks.push_back({KindNamed("VERSION/order"), {}, &CheckOrder});
  const Memory memory;
  std::set<std::string> names;
  for (std::size_t i = 0; i < events.size(); ++i) {
    const std::vector<std::uint32_t>& words = events[i].definition;
    if (words.empty()) continue;
    const bool named = words.size() > 1 && memory.IsText(words[1]);
    const std::string name = named ? TextAt(words[1]) : "class " + std::to_string(i);
    checks.push_back({KindNamed("VERSION/records/CLASS"), name, [i] { return CheckRecords(events[i]); }});
    if (named && names.insert(name).second)
      checks.push_back(
          {KindNamed("VERSION/declarations/CLASS"), name, [name] { return CheckDeclarations(name); }});
  }
  return checks;
}

}  // namespace hostrun
