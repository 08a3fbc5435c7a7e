// hostrun/commands/docs_text.h - reads the text file that describes the members of the registered classes.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace hostrun {

// What the file says about a class, a group or a member. Paragraphs are plain text with `code`.
struct Said {
  std::vector<std::string> paragraphs;
  std::optional<std::string> nil;     // what an empty instance or nil gives
  std::optional<std::string> raises;  // which host exceptions
  std::optional<std::string> note;    // what a reader would not expect
  std::string program;                // that shows it; lines with their ends, empty for none
};

struct MemberText {
  std::string declaration;  // of a method as registered; the name of a property or constant
  int line = 0;
  Said said;
};

struct GroupText {
  std::string title;
  Said said;  // its nil and raises hold for the members that have none of their own
  std::vector<MemberText> members;
};

struct ClassText {
  std::string name;
  int line = 0;
  bool ofHost = false;  // the host brings it, and may not
  Said said;
  std::vector<GroupText> groups;
};

// Both throw std::runtime_error: file, line, what was wanted and what was found.
std::vector<ClassText> ParseDescriptions(const std::string& fileName, const std::string& text);
// The file that comes with hostrun: beside the build folder of a source tree, or where an installation puts
// documents.
std::string FindDescriptions();
std::vector<ClassText> ReadDescriptions(const std::string& fileName);

// For a terminal: what is said of a member, and of its group where the member leaves something out, in
// indented lines of at most 78 characters, without the marks of code.
std::string TerminalText(const Said& member, const Said& group);

}  // namespace hostrun
