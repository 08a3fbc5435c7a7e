// hostrun/commands/docs_text.cpp - reads the text file that describes the members of the registered classes.
#include "hostrun/commands/docs_text.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace hostrun {
namespace {

constexpr std::string_view kIndent = "  ";
constexpr std::string_view kClass = "class ";
constexpr std::string_view kFirstSteps = "[first steps]";
constexpr std::string_view kExample = "[example]";

std::string Paragraph(const char* label, const std::string& text) {
  constexpr std::size_t kWidth = 78;
  std::string lines;
  std::string line(kIndent);
  std::istringstream words(label + text);
  for (std::string word; words >> word;) {
    std::erase(word, '`');
    if (line.size() + word.size() >= kWidth) lines += std::exchange(line, std::string(kIndent)) + "\n";
    line += (line.size() > kIndent.size() ? " " : "") + word;
  }
  return lines + line + "\n";
}

class Reader {
 public:
  explicit Reader(const std::string& fileName) : fileName_(fileName) {}

  void Line(const std::string& line) {
    ++number_;
    if (line.starts_with('[')) return Heading(line);
    if (inProgram_) {
      said_->program += line + '\n';
      return;
    }
    if (line.starts_with('#')) return;
    if (line.empty()) {
      open_ = nullptr;
      openIsField_ = false;
      return;
    }
    if (said_ == nullptr) Fail("a [class NAME] before any text", line);
    if (line.starts_with(kIndent)) {
      if (!openIsField_) Fail(R"(an indented line only below a "nil:", "raises:" or "note:")", line);
      *open_ += ' ' + line.substr(kIndent.size());
      return;
    }
    if (Field(line, "nil: ", said_->nil) || Field(line, "raises: ", said_->raises) ||
        Field(line, "note: ", said_->note))
      return;
    if (openIsField_) Fail("a blank line, another field, or a line indented by two blanks", line);
    if (open_ == nullptr) {
      open_ = &said_->paragraphs.emplace_back(line);
    } else {
      *open_ += ' ' + line;
    }
  }

  std::vector<ClassText> Take() {
    for (ClassText& cls : classes_) {
      TrimProgram(cls.said);
      for (GroupText& group : cls.groups) TrimProgram(group.said);
    }
    return std::move(classes_);
  }

 private:
  [[noreturn]] void Fail(const std::string& wanted, const std::string& found) const {
    throw std::runtime_error(fileName_ + ":" + std::to_string(number_) + ": wanted " + wanted +
                             ", found: " + found);
  }

  void Heading(const std::string& line) {
    open_ = nullptr;
    openIsField_ = false;
    inProgram_ = line == kFirstSteps || line == kExample;
    if (inProgram_) return Program(line);
    const auto blank = line.find(' ');
    if (!line.ends_with(']') || blank == std::string::npos || blank + 2 >= line.size()) {
      Fail("[class NAME], [group TITLE] or [member DECLARATION]", line);
    }
    const std::string kind = line.substr(1, blank - 1);
    const std::string rest = line.substr(blank + 1, line.size() - blank - 2);
    if (kind == "class") {
      said_ = &classes_.emplace_back(ClassText{rest, number_, false, {}, {}}).said;
    } else if (kind == "host" && rest.starts_with(kClass)) {
      said_ = &classes_.emplace_back(ClassText{rest.substr(kClass.size()), number_, true, {}, {}}).said;
    } else if (kind == "group") {
      if (classes_.empty()) Fail("a [class NAME] before a group", line);
      said_ = &classes_.back().groups.emplace_back(GroupText{rest, {}, {}}).said;
    } else if (kind == "member") {
      if (classes_.empty() || classes_.back().groups.empty()) Fail("a [group TITLE] before a member", line);
      said_ = &classes_.back().groups.back().members.emplace_back(MemberText{rest, number_, {}}).said;
    } else {
      Fail("[class NAME], [group TITLE] or [member DECLARATION]", line);
    }
  }

  // Belongs to the class or the group that it stands in.
  void Program(const std::string& line) {
    const bool inGroup = !classes_.empty() && !classes_.back().groups.empty();
    if (line == kExample && (!inGroup || said_ != &classes_.back().groups.back().said))
      Fail("[example] after the text of a group and before its members", line);
    if (line == kFirstSteps && (classes_.empty() || said_ != &classes_.back().said))
      Fail("[first steps] after the text of a class and before its groups", line);
    if (!said_->program.empty()) Fail("one program", line);
  }

  bool Field(const std::string& line, std::string_view label, std::optional<std::string>& field) {
    if (!line.starts_with(label)) return false;
    if (field) Fail("one \"" + std::string(label) + "\" for one member", line);
    open_ = &field.emplace(line.substr(label.size()));
    openIsField_ = true;
    return true;
  }

  // The blank lines before the next heading are no part of it.
  static void TrimProgram(Said& said) {
    while (said.program.ends_with("\n\n") || said.program == "\n") said.program.pop_back();
  }

  const std::string& fileName_;
  int number_ = 0;
  std::vector<ClassText> classes_;
  Said* said_ = nullptr;         // of the last heading
  std::string* open_ = nullptr;  // what the next line continues
  bool openIsField_ = false;
  bool inProgram_ = false;
};

}  // namespace

std::vector<ClassText> ParseDescriptions(const std::string& fileName, const std::string& text) {
  Reader reader(fileName);
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) reader.Line(line);
  return reader.Take();
}

std::string FindDescriptions() {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto folder = self.parent_path();
  const auto installed = (folder / QVX_DOC_FROM_BIN / "reference.txt").lexically_normal();
  if (!error && std::filesystem::exists(installed, error)) return installed.native();
  return (folder / "../docs/reference.txt").lexically_normal().native();
}

std::vector<ClassText> ReadDescriptions(const std::string& fileName) {
  std::ifstream file(fileName, std::ios::binary);
  std::ostringstream text;
  if (!file || !(text << file.rdbuf())) {
    throw std::runtime_error(
        fileName +
        ": wanted the descriptions of the members, found no such file; name it with --descriptions");
  }
  return ParseDescriptions(fileName, text.str());
}

std::string TerminalText(const Said& member, const Said& group) {
  std::string text;
  for (const std::string& paragraph : member.paragraphs) text += Paragraph("", paragraph);
  const auto field = [&](const char* label, const std::optional<std::string>& own,
                         const std::optional<std::string>& groups) {
    if (own || groups) text += Paragraph(label, own ? *own : *groups);
  };
  field("Nil gives: ", member.nil, group.nil);
  field("Raises: ", member.raises, group.raises);
  field("Mind: ", member.note, group.note);
  return text;
}

}  // namespace hostrun
