// hostrun/commands/repl_commands.cpp - the lines of a repl that begin with a colon: they are for the repl
// itself.
#include "hostrun/commands/repl_commands.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <set>
#include <vector>

#include "hostrun/commands/docs_text.h"
#include "hostrun/host/output.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/suggest.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr const char* kHelp =
    "A statement is run, a value is shown. What is declared stays, and may be declared anew.\n"
    "  Tab                 completes classes, members, variables and keywords\n"
    "  Ctrl-C              drops the line, or interrupts what is running\n"
    "  Ctrl-D              ends the session\n"
    "  an empty line       gives up on a block that is not closed\n"
    "  :doc CLASS[.MEMBER] shows what the reference says\n"
    "  :help               shows this\n"
    "  :quit               ends the session\n";

void Refuse(const std::string& message) {
  std::fprintf(stderr, "%s\n", message.c_str());
}

// "getRGB" of "getRGB(byref red as double, ...)".
std::string NameOf(const MemberText& member) {
  return member.declaration.substr(0, member.declaration.find_first_of("( "));
}

void ShowClass(const ClassText& cls) {
  std::printf("%s\n", cls.name.c_str());
  WriteOutput(TerminalText(cls.said, {}));
  for (const GroupText& group : cls.groups) {
    std::printf("  %s:", group.title.c_str());
    std::set<std::string> named;
    for (const MemberText& member : group.members) {
      const std::string name = NameOf(member);
      if (named.insert(name).second) std::printf(" %s", name.c_str());
    }
    std::printf("\n");
  }
}

// False: the class has no such member of its own.
bool ShowMember(const ClassText& cls, const std::string& wanted) {
  bool shown = false;
  for (const GroupText& group : cls.groups) {
    for (const MemberText& member : group.members) {
      if (!SameName(NameOf(member), wanted)) continue;
      shown = true;
      std::printf("%s.%s\n", cls.name.c_str(), member.declaration.c_str());
      WriteOutput(TerminalText(member.said, group.said));
    }
  }
  return shown;
}

// Of the class itself and those it descends from, as far as the reference knows them.
std::vector<const ClassText*> TextsOf(const std::vector<ClassText>& classes, const std::string& name) {
  std::vector<const ClassText*> texts;
  const auto add = [&](const std::string& wanted) {
    for (const ClassText& cls : classes) {
      if (SameName(cls.name, wanted)) texts.push_back(&cls);
    }
  };
  add(name);
  const Class* const cls = TheRegistry().FindClass(name);
  for (const Class* at = cls == nullptr ? nullptr : cls->super; at != nullptr; at = at->super) add(at->name);
  return texts;
}

void Doc(const std::string& wanted) {
  if (wanted.empty()) return Refuse(":doc: wanted a class or CLASS.MEMBER, found nothing");
  const std::vector<ClassText> classes = ReadDescriptions(FindDescriptions());
  const std::size_t dot = wanted.find('.');
  const std::string name = wanted.substr(0, dot);
  const std::vector<const ClassText*> texts = TextsOf(classes, name);
  if (texts.empty()) {
    return Refuse(":doc: wanted a class of the reference, found " + name + DidYouMean(name, ClassNames()));
  }
  if (dot == std::string::npos) {
    if (!SameName(texts.front()->name, name)) std::printf("%s descends from\n", name.c_str());
    return ShowClass(*texts.front());
  }
  const std::string member = wanted.substr(dot + 1);
  std::vector<std::string> names;
  for (const ClassText* const cls : texts) {
    if (ShowMember(*cls, member)) return;
    for (const GroupText& group : cls->groups) {
      for (const MemberText& one : group.members) names.push_back(NameOf(one));
    }
  }
  Refuse(":doc: wanted a member of " + texts.front()->name + ", found " + member +
         ", which it does not have" + DidYouMean(member, names));
}

}  // namespace

bool RunReplCommand(const std::string& line) {
  const std::size_t end = std::min(line.find(' '), line.size());
  const std::string command = line.substr(0, end);
  const std::size_t start = line.find_first_not_of(' ', end);
  const std::string rest =
      start == std::string::npos ? "" : line.substr(start, line.find_last_not_of(' ') + 1 - start);
  if (command == ":quit") return false;
  if (command == ":help") {
    std::fputs(kHelp, stdout);
  } else if (command == ":doc") {
    try {
      Doc(rest);
    } catch (const std::exception& error) {
      Refuse(error.what());
    }
  } else {
    Refuse(command + ": wanted :doc, :help or :quit, found another command" +
           DidYouMean(command, {":doc", ":help", ":quit"}));
  }
  return true;
}

}  // namespace hostrun
