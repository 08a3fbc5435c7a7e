// hostrun/commands/manual.cpp - the manual page hostrun(1).
#include <algorithm>
#include <sstream>

#include "hostrun/commands/guides.h"

namespace hostrun {
namespace {

// A text that stands as it is in a line of its own.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '\\') {
      escaped += "\\e";
    } else if (letter == '-') {
      escaped += "\\-";
    } else {
      escaped += letter;
    }
  }
  return escaped.starts_with('.') || escaped.starts_with('\'') ? "\\&" + escaped : escaped;
}

class Page {
 public:
  void Line(const std::string& text) { text_ << text << '\n'; }
  void Text(const std::string& text) { Line(Escaped(text)); }
  void Section(const std::string& title) { Line(".SH " + title); }

  void Option(const OptionGuide& option) {
    Line(".TP");
    std::string names;
    for (const std::string& name : option.names)
      names += (names.empty() ? "\\fB" : ", \\fB") + Escaped(name) + "\\fR";
    if (!option.value.text.empty())
      names += (names.empty() ? "\\fI" : " \\fI") + Escaped(option.value.text) + "\\fR";
    Line(names);
    Text(option.description + ".");
  }

  // The end of a command's help: paragraphs, with indented lines that stand as they are.
  void Footer(const std::string& footer) {
    std::istringstream lines(footer);
    bool literal = false;
    for (std::string line; std::getline(lines, line);) {
      const bool indented = line.starts_with("  ");
      if (indented != literal) Line(indented ? ".nf" : ".fi");
      literal = indented;
      if (line.empty()) {
        Line(".PP");
      } else {
        Text(line);
      }
    }
    if (literal) Line(".fi");
  }

  std::string Take() const { return text_.str(); }

 private:
  std::ostringstream text_;
};

// "hostrun check [OPTION...] [BUNDLE]"
std::string Usage(const Guide& guide) {
  std::string usage =
      "\\fBhostrun" + (guide.name.empty() ? "" : " " + Escaped(guide.name)) + "\\fR [\\fIOPTION\\fR...]";
  for (const OptionGuide& option : OptionsOf(guide)) {
    if (!option.names.empty()) continue;
    const std::string text = Escaped(option.value.text);
    usage += text.starts_with('[') ? " " + text : " [" + text + "]";
  }
  return usage;
}

}  // namespace

std::string ManualPage(const std::vector<Guide>& guides, const std::string& version) {
  const Guide& hostrun = guides.front();
  Page page;
  page.Line(".TH HOSTRUN 1 \"\" \"hostrun " + version + "\" \"User Commands\"");
  page.Section("NAME");
  page.Line("hostrun \\- runs programs of the host language through a plugin bundle");
  page.Section("SYNOPSIS");
  page.Line(Usage(hostrun));
  page.Line(".br");
  page.Line("\\fBhostrun\\fR \\fICOMMAND\\fR [\\fIARGUMENT\\fR...]");
  page.Line(".br");
  page.Line("\\fBhostrun help\\fR [\\fICOMMAND\\fR]");
  page.Section("DESCRIPTION");
  page.Text(hostrun.purpose);
  page.Line(".PP");
  page.Footer(hostrun.line->Footer());

  // What every host of hostrun's understands is told once.
  constexpr const char* kHostHeading = "Host";
  page.Section("OPTIONS");
  for (const OptionGuide& option : OptionsOf(hostrun)) {
    if (option.heading != kHostHeading) page.Option(option);
  }
  page.Section("\"OPTIONS OF THE HOST\"");
  page.Line("Without a command, and with each command whose help lists them:");
  for (const OptionGuide& option : OptionsOf(hostrun)) {
    if (option.heading == kHostHeading) page.Option(option);
  }
  page.Section("COMMANDS");
  for (std::size_t i = 1; i < guides.size(); ++i) {
    page.Line(".SS " + Usage(guides[i]));
    page.Text(guides[i].purpose);
    for (const OptionGuide& option : OptionsOf(guides[i])) {
      if (option.heading != kHostHeading) page.Option(option);
    }
    page.Line(".PP");
    page.Footer(guides[i].line->Footer());
  }
  return page.Take();
}

}  // namespace hostrun
