// hostrun/commands/classes.cpp - "hostrun classes": the class browser.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <memory>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/describe.h"
#include "hostrun/commands/docs_text.h"
#include "hostrun/commands/json.h"
#include "hostrun/commands/layout.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/output.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/suggest.h"
#include "hostrun/host/text.h"
#include "hostrun/language/program.h"

namespace hostrun {
namespace {

struct ClassesOptions {
  HostOptions host;
  std::string wanted;  // CLASS, CLASS.MEMBER or MEMBER; empty: every class of the bundle
  bool all = false;    // also the classes that are not the bundle's
  bool json = false;
  bool layout = false;
  bool flags = false;
  std::string descriptions;  // file
};

constexpr const char* kClassesName = "hostrun classes";
constexpr double kNewestHost = 2015.0;
constexpr double kOldestHost = 2011.0;

// What was asked for: classes, or a member of each of them.
struct Selection {
  std::vector<const Class*> classes;
  std::string member;
};

// What was meant, or else the first names.
std::string Suggest(const std::string& wanted, const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 8;
  std::string meant = DidYouMean(wanted, names);
  if (!meant.empty()) return meant;
  std::string text = "; there are ";
  for (std::size_t i = 0; i < names.size() && i < kMost; ++i) text += (i == 0 ? "" : ", ") + names[i];
  return text + (names.size() > kMost ? ", ..." : "");
}

// Those that programs call by name.
std::vector<std::string> MemberNames(const Class& cls) {
  std::vector<std::string> names = OwnMemberNamesOf(cls, false);
  std::ranges::copy(OwnMemberNamesOf(cls, true), std::back_inserter(names));
  return names;
}

bool HasMember(const Class& cls, const std::string& wanted) {
  const auto isMeant = [&](const std::string& name) { return SameName(name, wanted); };
  const auto method = [](const Method& each) { return each.signature.name; };
  return std::ranges::any_of(cls.properties, isMeant, &Property::name) ||
         std::ranges::any_of(cls.methods, isMeant, method) ||
         std::ranges::any_of(cls.sharedMethods, isMeant, method) ||
         std::ranges::any_of(cls.constants, isMeant, &Constant::name);
}

// Throws std::runtime_error for a class or member that does not exist.
Selection Select(const ClassesOptions& options) {
  Selection selection;
  const std::size_t dot = options.wanted.find('.');
  const std::string wanted = options.wanted.substr(0, dot);
  std::vector<const Class*> known;
  for (const auto& cls : TheRegistry().classes()) {
    if (cls->defined && !cls->name.starts_with('_')) known.push_back(cls.get());
  }
  // The bundle's first; each part's in the order of registration.
  std::sort(known.begin(), known.end(), [](const Class* a, const Class* b) {
    return std::pair(-static_cast<int>(a->origin), a->order) <
           std::pair(-static_cast<int>(b->origin), b->order);
  });
  std::vector<std::string> names;
  for (const Class* const cls : known) {
    names.push_back(cls->name);
    const bool meant =
        wanted.empty() ? options.all || cls->origin == Origin::Bundle : SameName(cls->name, wanted);
    if (meant) selection.classes.push_back(cls);
  }
  // What is no class may be a member of some.
  if (selection.classes.empty() && dot == std::string::npos) {
    std::copy_if(known.begin(), known.end(), std::back_inserter(selection.classes),
                 [&](const Class* cls) { return HasMember(*cls, wanted); });
    if (!selection.classes.empty()) selection.member = wanted;
  }
  if (selection.classes.empty() && !wanted.empty()) {
    throw std::runtime_error("wanted a class or a member, found " + wanted +
                             ", which this host does not know" + Suggest(wanted, names));
  }
  if (dot != std::string::npos) {
    selection.member = options.wanted.substr(dot + 1);
    const Class& cls = *selection.classes.front();
    if (!HasMember(cls, selection.member)) {
      throw std::runtime_error("wanted a member of " + cls.name + ", found " + selection.member +
                               ", which it does not have" + Suggest(selection.member, MemberNames(cls)));
    }
  }
  return selection;
}

// --- the browser

// What the reference says about a member, to be read below its declaration.
class Descriptions {
 public:
  // A file that can't be read gives no descriptions: the browser works without.
  explicit Descriptions(const std::string& file) {
    try {
      classes_ = ReadDescriptions(file);
    } catch (const std::exception&) {
      classes_.clear();
    }
  }

  // `key` is a method's declaration, or the name of anything else. With what holds for the whole group.
  void Print(const Class& cls, const std::string& key) const {
    ForEachMember(cls, [&](const GroupText& group, const MemberText& member) {
      if (member.declaration != key) return;
      WriteOutput(TerminalText(member.said, group.said));
    });
  }

 private:
  template <class Visit>
  void ForEachMember(const Class& cls, Visit visit) const {
    for (const ClassText& text : classes_) {
      if (text.name != cls.name) continue;
      for (const GroupText& group : text.groups) {
        for (const MemberText& member : group.members) visit(group, member);
      }
    }
  }

  std::vector<ClassText> classes_;
};

// Prints classes and members for people. `paint` and `descriptions` outlive it.
class Browser {
 public:
  Browser(const Painter& paint, const Descriptions& descriptions, bool flags)
      : paint_(paint), descriptions_(descriptions), flags_(flags) {}

  void ShowClass(const Class& cls) {
    std::string line = paint_(Style::Strong, cls.name);
    line += cls.super == nullptr ? ", class of the " : " (a " + cls.super->name + "), class of the ";
    line += NameOf(cls.origin);
    if (cls.origin == Origin::Bundle) {
      line += ": layout " + std::to_string(cls.layoutVersion) + ", " + std::to_string(cls.dataSize) +
              " bytes of class data at " + std::to_string(cls.dataOffset);
      if (flags_) line += ", flags " + std::to_string(cls.flags);
    }
    std::printf("%s\n", line.c_str());
    std::vector<Row> rows;
    for (const Property& property : cls.properties) rows.push_back(RowOf(property));
    Group("Properties", rows);
    MethodGroup("Methods", cls.methods);
    MethodGroup("Shared methods", cls.sharedMethods);
    for (const Constant& constant : cls.constants) {
      rows.push_back({constant.name + " = " + LiteralText(constant.value), constant.type->name});
    }
    Group("Constants", rows);
  }

  void ShowMember(const Class& cls, const std::string& name) {
    for (const Property& property : cls.properties) {
      if (SameName(property.name, name)) ShowMember(cls, property);
    }
    for (const auto* methods : {&cls.methods, &cls.sharedMethods}) {
      for (const Method& method : *methods) {
        if (SameName(method.signature.name, name)) ShowMember(cls, method);
      }
    }
    for (const Constant& constant : cls.constants) {
      if (SameName(constant.name, name)) ShowMember(cls, constant);
    }
  }

 private:
  struct Row {
    std::string declaration;
    std::string remark;
  };

  static void Add(std::string& remarks, const std::string& remark) {
    remarks += (remarks.empty() ? "" : ", ") + remark;
  }

  Row RowOf(const Property& property) const {
    std::string remark = flags_ ? "flags " + std::to_string(property.flags) : "";
    if (property.setter.function == nullptr) Add(remark, "read only");
    if (property.shared) Add(remark, "shared");
    return {property.name + " as " + property.typeName, remark};
  }

  Row RowOf(const Method& method) const {
    std::string remark = flags_ ? "flags " + std::to_string(method.flags) : "";
    if (KindOf(method) == "constructor") Add(remark, "constructor");
    return {method.declaration, remark};
  }

  void MethodGroup(const char* title, const std::deque<Method>& methods) {
    std::vector<Row> rows;
    rows.reserve(methods.size());
    for (const Method& method : methods) rows.push_back(RowOf(method));
    Group(title, rows);
  }

  // Empties `rows`.
  void Group(const char* title, std::vector<Row>& rows) {
    constexpr std::size_t kWidest = 60;
    if (rows.empty()) return;
    std::printf("\n  %s (%zu)\n", paint_(Style::Strong, title).c_str(), rows.size());
    std::size_t width = 0;
    for (const Row& row : rows) {
      if (row.declaration.size() < kWidest) width = std::max(width, row.declaration.size() + 2);
    }
    for (const Row& row : rows) {
      const std::size_t padding = row.declaration.size() < kWidest ? width : row.declaration.size() + 2;
      if (row.remark.empty()) {
        std::printf("    %s\n", row.declaration.c_str());
        continue;
      }
      std::printf("    %s%s\n", Padded(row.declaration, padding).c_str(),
                  paint_(Style::Faint, row.remark).c_str());
    }
    rows.clear();
  }

  void Heading(const Class& cls, const std::string& name, const std::string& kind) {
    std::printf("%s, %s\n", paint_(Style::Strong, cls.name + "." + name).c_str(), kind.c_str());
  }
  static void Line(const char* label, const std::string& text) {
    std::printf("  %s%s\n", Padded(label, 14).c_str(), text.c_str());
  }

  void ShowMember(const Class& cls, const Property& property) {
    Heading(cls, property.name, property.shared ? "shared property" : "property");
    Line("declaration", property.name + " as " + property.typeName);
    Line("access", property.setter.function == nullptr ? "read only" : "read and write");
    if (flags_) Line("flags", std::to_string(property.flags));
    descriptions_.Print(cls, property.name);
  }

  void ShowMember(const Class& cls, const Method& method) {
    Heading(cls, method.signature.name, KindOf(method));
    Line("declaration", method.declaration);
    const char* label = "parameters";
    for (const Parameter& parameter : method.signature.parameters) {
      std::string text = Padded(parameter.name, 12) + "as " + parameter.type->name;
      if (parameter.byref) text += ", by reference";
      if (parameter.paramArray) text += ", any number of them";
      if (parameter.assigns) text += ", the right side of an assignment";
      if (parameter.defaultValue) text += ", default " + LiteralText(*parameter.defaultValue);
      Line(label, text);
      label = "";
    }
    const Type& result = *method.signature.result;
    Line("gives", result.kind == Kind::Nothing ? "nothing" : result.name);
    if (flags_) Line("flags", std::to_string(method.flags));
    descriptions_.Print(cls, method.declaration);
  }

  void ShowMember(const Class& cls, const Constant& constant) {
    Heading(cls, constant.name, "constant");
    Line("declaration", constant.declaration);
    Line("type", constant.type->name);
    Line("value", LiteralText(constant.value));
    descriptions_.Print(cls, constant.name);
  }

  const Painter& paint_;
  const Descriptions& descriptions_;
  bool flags_;
};

// --- record words

// The same thing in the current and in the old layout.
struct Sides {
  ordered_json current;
  ordered_json old;
};

void ShowWords(const Painter& paint, const std::string& title, RecordKind kind, const Sides& sides,
               std::int32_t version) {
  std::size_t width = 24;
  for (const auto& text : sides.current) width = std::max(width, text.get<std::string>().size() + 2);
  const std::string current = "layout " + std::to_string(version);
  std::printf("%s\n  %s%s%s%s%s\n", paint(Style::Strong, title).c_str(), Padded("word", 6).c_str(),
              Padded("byte", 6).c_str(), Padded("holds", 26).c_str(), Padded(current, width).c_str(),
              "layout 9");
  const std::span<const RecordWord> words = WordsOf(kind);
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string old = i < sides.old.size() ? sides.old[i].get<std::string>() : "-";
    std::printf("  %s%s%s%s%s\n", Padded(std::to_string(i), 6).c_str(),
                Padded(std::to_string(4 * i), 6).c_str(), Padded(words[i].name, 26).c_str(),
                Padded(sides.current[i].get<std::string>(), width).c_str(), old.c_str());
  }
}

// The records of `cls` whose declaration or name is that of the member.
void ShowMemberWords(const Painter& paint, const Class& cls, const std::string& member, const Sides& sides,
                     std::int32_t version) {
  for (const RecordWord& array : WordsOf(RecordKind::Definition)) {
    if (array.holds != RecordWord::Holds::Array) continue;
    const ordered_json& records = sides.current["records"][array.name];
    for (std::size_t i = 0; i < records.size(); ++i) {
      const std::size_t named = array.of == RecordKind::Method ? 2 : array.of == RecordKind::Property ? 1 : 0;
      const auto declaration = records[i][named].get<std::string>();
      const std::size_t end = declaration.find_first_of(" (=\"", 1);
      if (!SameName(std::string_view(declaration).substr(1, end - 1), member)) continue;
      ShowWords(paint, cls.name + ", " + array.name + "[" + std::to_string(i) + "]", array.of,
                {records[i], sides.old["records"][array.name][i]}, version);
    }
  }
}

ordered_json ClassNamed(const ordered_json& classes, const std::string& name) {
  for (const auto& cls : classes) {
    if (cls["name"] == name) return cls;
  }
  return nullptr;
}

std::int32_t LayoutVersion(const ordered_json& cls) {
  return cls["layout"].get<std::int32_t>();
}

// Every class of the bundle: in the newer layout, and in the old one.
struct BothLayouts {  // NOLINT(bugprone-exception-escape): the library's moves throw nothing
  ordered_json current;
  ordered_json old;
};

int ShowLayout(const Selection& selection, const BothLayouts& layouts, bool json) {
  const Painter paint(TakesColour(stdout));
  ordered_json list = ordered_json::array();
  bool first = true;
  for (const Class* const cls : selection.classes) {
    if (cls->origin != Origin::Bundle) continue;
    const Sides sides{ClassNamed(layouts.current, cls->name), ClassNamed(layouts.old, cls->name)};
    if (json) {
      list.push_back({{"name", cls->name}, {"current", sides.current}, {"old", sides.old}});
      continue;
    }
    if (!first) std::printf("\n");
    first = false;
    const std::int32_t version = LayoutVersion(sides.current);
    if (selection.member.empty()) {
      ShowWords(paint, cls->name, RecordKind::Definition,
                {sides.current["definition"], sides.old["definition"]}, version);
    } else {
      ShowMemberWords(paint, *cls, selection.member, sides, version);
    }
  }
  if (json) WriteOutput(JsonText(list, 2) + "\n");
  return kExitFine;
}

// On the host that was asked for, and on one that negotiates the layout of the other kind.
BothLayouts AskForLayouts(const HostOptions& host) {
  HostOptions other = host;
  ordered_json negotiated = LayoutOnHost(host);
  const bool old = !negotiated.empty() && IsOldLayout(LayoutVersion(negotiated.front()));
  other.identity.version = old ? kNewestHost : kOldestHost;
  ordered_json opposite = LayoutOnHost(other);
  if (old) return {std::move(opposite), std::move(negotiated)};
  return {std::move(negotiated), std::move(opposite)};
}

int ShowJson(const Selection& selection) {
  ordered_json list = ordered_json::array();
  for (const Class* const cls : selection.classes) {
    ordered_json one = ToJson(*cls);
    if (!selection.member.empty()) {
      for (const char* const group : {"properties", "methods", "sharedMethods", "constants"}) {
        std::erase_if(one[group].get_ref<ordered_json::array_t&>(), [&](const ordered_json& member) {
          return !SameName(member["name"].get<std::string>(), selection.member);
        });
      }
    }
    list.push_back(std::move(one));
  }
  const std::int32_t announced = AnnouncedLayout();
  const ordered_json answer = {{"hostVersion", TheHostIdentity().version},
                               {"layout", announced == 0 ? ordered_json() : ordered_json(announced)},
                               {"classes", std::move(list)}};
  WriteOutput(JsonText(answer, 2) + "\n");
  return kExitFine;
}

int Show(const ClassesOptions& options) {
  BothLayouts layouts;
  if (options.layout) layouts = AskForLayouts(options.host);
  const Problem problem = StartHost(options.host);
  if (problem) return Refuse(kClassesName, *problem);
  const Selection selection = Select(options);
  if (options.layout) return ShowLayout(selection, layouts, options.json);
  if (options.json) return ShowJson(selection);
  const Painter paint(TakesColour(stdout));
  const Descriptions descriptions(options.descriptions);
  Browser browser(paint, descriptions, options.flags);
  for (const Class* const cls : selection.classes) {
    if (cls != selection.classes.front()) std::printf("\n");
    if (selection.member.empty()) {
      browser.ShowClass(*cls);
    } else {
      browser.ShowMember(*cls, selection.member);
    }
  }
  return kExitFine;
}

int Classes(const ClassesOptions& options) {
  try {
    return Show(options);
  } catch (const std::exception& error) {
    return Refuse(kClassesName, error.what());
  }
}

}  // namespace

Action ClassesCommand(CommandLine& line) {
  const auto options = std::make_shared<ClassesOptions>();
  AddHostOptions(line, options->host);
  options->descriptions = FindDescriptions();
  line.Add("class", options->wanted,
           "A class, or a member, of one class or of each that has it, with its description")
      .Takes("CLASS | CLASS.MEMBER | MEMBER");
  line.AddFlag("--flags", options->flags, "Also the flags that are registered");
  line.AddFlag("--all", options->all, "Also the classes that the host and the sibling part bring");
  line.AddFlag("--json", options->json, "Answer in JSON, for tools (docs/hostrun.md says what it holds)");
  line.AddFlag("--layout", options->layout,
               "The words of the definition records, in the current and the old layout");
  line.SetFooter(
      "Examples:\n  hostrun classes\n  hostrun classes NSColorQVX.colorWithDeviceRGB\n  hostrun classes "
      "getRGB\n"
      "  hostrun classes NSColorSpaceQVX --layout --host-version 2013.0\n\n"
      "Exit status: 0 fine, 2 an error of use, no such class or member, or a bundle that does not load.");
  return [options] { return Classes(*options); };
}

}  // namespace hostrun
