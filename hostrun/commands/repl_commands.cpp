// hostrun/commands/repl_commands.cpp - the lines of a repl that begin with a colon: they are for the repl
// itself.
#include "hostrun/commands/repl_commands.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <vector>

#include "hostrun/commands/docs_text.h"
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

void Show(const Said& said) {
  for (const std::string& paragraph : said.paragraphs) std::printf("  %s\n", paragraph.c_str());
  if (said.nil) std::printf("  Nil: %s\n", said.nil->c_str());
  if (said.raises) std::printf("  Raises: %s\n", said.raises->c_str());
  if (said.note) std::printf("  Note: %s\n", said.note->c_str());
}

// "getRGB" of "getRGB(byref red as double, ...)".
std::string NameOf(const MemberText& member) {
  return member.declaration.substr(0, member.declaration.find_first_of("( "));
}

void ShowClass(const ClassText& cls) {
  std::printf("%s\n", cls.name.c_str());
  Show(cls.said);
  for (const GroupText& group : cls.groups) {
    std::printf("  %s:", group.title.c_str());
    std::string before;
    for (const MemberText& member : group.members) {
      const std::string name = NameOf(member);
      if (name != before) std::printf(" %s", name.c_str());
      before = name;
    }
    std::printf("\n");
  }
}

void ShowMember(const ClassText& cls, const std::string& wanted) {
  std::vector<std::string> names;
  bool shown = false;
  for (const GroupText& group : cls.groups) {
    for (const MemberText& member : group.members) {
      names.push_back(NameOf(member));
      if (!SameName(names.back(), wanted)) continue;
      shown = true;
      std::printf("%s.%s\n", cls.name.c_str(), member.declaration.c_str());
      Show(member.said);
    }
  }
  if (!shown) {
    Refuse(":doc: wanted a member of " + cls.name + ", found " + wanted + ", which it does not have" +
           DidYouMean(wanted, names));
  }
}

void Doc(const std::string& wanted) {
  if (wanted.empty()) return Refuse(":doc: wanted a class or CLASS.MEMBER, found nothing");
  const std::vector<ClassText> classes = ReadDescriptions(FindDescriptions());
  const std::size_t dot = wanted.find('.');
  const std::string name = wanted.substr(0, dot);
  std::vector<std::string> names;
  for (const ClassText& cls : classes) {
    names.push_back(cls.name);
    if (!SameName(cls.name, name)) continue;
    return dot == std::string::npos ? ShowClass(cls) : ShowMember(cls, wanted.substr(dot + 1));
  }
  Refuse(":doc: wanted a class of the reference, found " + name + DidYouMean(name, names));
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
