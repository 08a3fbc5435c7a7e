// tests/whole/editors/grammar_test.cpp - the editors' grammar colours every example as hostrun reads it.
//
// The grammar is run by a small engine of the kind that editors have: at each place of a line the pattern
// that matches first wins, of several the one that stands first. It knows what the grammar uses, and refuses
// anything else.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "hostrun/language/lexer.h"

namespace {

using nlohmann::json;

constexpr const char* kGrammar = SOURCE_FOLDER "/editors/host-language.tmLanguage.json";

struct Pattern {
  std::regex regex;
  std::string notAfter;  // a class of characters; empty: after any
  std::string scope;
  std::map<int, std::string> captures;
};

// Part of a line, in bytes from its start, and what it is.
struct Span {
  std::size_t start;
  std::size_t length;
  std::string scope;
};

class Grammar {
 public:
  Grammar() {
    const json whole = json::parse(std::ifstream(kGrammar));
    Add(whole, whole["repository"]);
  }

  std::vector<Span> Line(const std::string& line) const {
    std::vector<Span> spans;
    std::size_t at = 0;
    while (at < line.size()) {
      const Pattern* first = nullptr;
      std::smatch found;
      for (const Pattern& pattern : patterns_) {
        std::smatch match;
        if (!Find(pattern, line, at, match)) continue;
        if (first != nullptr && match[0].first >= found[0].first) continue;
        first = &pattern;
        found = match;
      }
      if (first == nullptr) break;
      const auto placeOf = [&](std::size_t group) {
        return static_cast<std::size_t>(found[group].first - line.begin());
      };
      const std::size_t start = placeOf(0);
      if (!first->scope.empty())
        spans.push_back({start, static_cast<std::size_t>(found.length()), first->scope});
      for (const auto& [group, scope] : first->captures) {
        const auto index = static_cast<std::size_t>(group);
        spans.push_back({placeOf(index), static_cast<std::size_t>(found.length(index)), scope});
      }
      at = start + static_cast<std::size_t>(std::max<std::ptrdiff_t>(found.length(), 1));
    }
    return spans;
  }

 private:
  // The first match from `at` on.
  static bool Find(const Pattern& pattern, const std::string& line, std::size_t at, std::smatch& match) {
    for (auto from = line.begin() + static_cast<std::ptrdiff_t>(at); from <= line.end(); ++from) {
      const auto flags =
          from == line.begin() ? std::regex_constants::match_default : std::regex_constants::match_prev_avail;
      if (!std::regex_search(from, line.end(), match, pattern.regex, flags)) return false;
      from = match[0].first;
      const bool refused = !pattern.notAfter.empty() && from != line.begin() &&
                           std::regex_match(std::string(1, from[-1]), std::regex(pattern.notAfter));
      if (!refused) return true;
    }
    return false;
  }

  void Add(const json& rule, const json& repository) {
    if (rule.contains("include")) {
      Add(repository.at(rule["include"].get<std::string>().substr(1)), repository);
      return;
    }
    if (rule.contains("patterns")) {
      for (const json& inner : rule["patterns"]) Add(inner, repository);
      return;
    }
    for (const auto& [key, value] : rule.items())
      ASSERT_TRUE(key == "match" || key == "name" || key == "captures") << key;
    std::string text = rule.at("match");
    auto flags = std::regex::ECMAScript | std::regex::optimize;
    if (text.starts_with("(?i)")) {
      text.erase(0, 4);
      flags |= std::regex::icase;
    }
    std::string notAfter;
    if (text.starts_with("(?<!")) {
      const std::size_t end = text.find("])") + 1;
      notAfter = text.substr(4, end - 4);
      text.erase(0, end + 1);
    }
    Pattern pattern{std::regex(text, flags), notAfter, rule.value("name", ""), {}};
    if (rule.contains("captures")) {
      for (const auto& [group, capture] : rule["captures"].items())
        pattern.captures[std::stoi(group)] = capture.at("name");
    }
    patterns_.push_back(std::move(pattern));
  }

  std::vector<Pattern> patterns_;
};

const Grammar& TheGrammar() {
  static const Grammar grammar;
  return grammar;
}

std::string ScopeAt(const std::vector<Span>& spans, std::size_t at) {
  for (const Span& span : spans) {
    if (at >= span.start && at < span.start + span.length) return span.scope;
  }
  return {};
}

std::string ScopeOf(const std::string& line, const std::string& part) {
  return ScopeAt(TheGrammar().Line(line), line.find(part));
}

std::vector<std::filesystem::path> Programs(const char* folder) {
  std::vector<std::filesystem::path> programs;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".bas") programs.push_back(entry.path());
  }
  std::sort(programs.begin(), programs.end());
  return programs;
}

// What hostrun reads as a literal is coloured as one from its first byte to its last, what it reads as a name
// never, and what it does not read at all is white space, a comment or the mark of a line that goes on.
void ExpectColouredAsRead(const std::filesystem::path& program) {
  const hostrun::Source source = hostrun::Source::FromFile(program.string());
  std::map<std::int32_t, std::vector<hostrun::Token>> lines;
  std::vector<hostrun::ProgramError> errors;
  for (hostrun::Token& token : hostrun::Tokenize(source, errors))
    lines[token.at.line].push_back(std::move(token));
  ASSERT_TRUE(errors.empty()) << program << ": " << errors.front().what();
  for (auto& [number, tokens] : lines) {
    const std::string line(source.Line(number));
    const std::vector<Span> spans = TheGrammar().Line(line);
    std::vector<bool> read(line.size(), false);
    for (const hostrun::Token& token : tokens) {
      const auto start = static_cast<std::size_t>(token.at.column) - 1;
      for (std::size_t i = start; i < start + token.text.size(); ++i) {
        read[i] = true;
        const std::string scope = ScopeAt(spans, i);
        const bool literal = scope.starts_with("string.") || scope.starts_with("constant.numeric") ||
                             scope.starts_with("constant.other.color");
        EXPECT_EQ(literal, token.kind == hostrun::TokenKind::Literal)
            << program << ":" << number << ": " << token.text << " is " << scope;
        EXPECT_FALSE(scope.starts_with("comment.")) << program << ":" << number << ": " << token.text;
      }
    }
    for (std::size_t i = 0; i < line.size(); ++i) {
      if (read[i] || line[i] == ' ' || line[i] == '\t' || line[i] == '_') continue;
      EXPECT_TRUE(ScopeAt(spans, i).starts_with("comment.")) << program << ":" << number << ":" << i + 1;
    }
  }
}

TEST(EditorGrammar, ColoursEveryExampleAsHostrunReadsIt) {
  const auto programs = Programs(SOURCE_FOLDER "/examples");
  ASSERT_GE(programs.size(), 5U);
  for (const auto& program : programs) ExpectColouredAsRead(program);
}

TEST(EditorGrammar, ColoursEveryTestProgramAsHostrunReadsIt) {
  const auto programs = Programs(SOURCE_FOLDER "/tests/hostrun/programs");
  ASSERT_GE(programs.size(), 10U);
  for (const auto& program : programs) ExpectColouredAsRead(program);
}

TEST(EditorGrammar, TellsKeywordsFromMembersOfTheSameName) {
  EXPECT_EQ(ScopeOf("If a Then b.End", "If"), "keyword.control.hostlanguage");
  EXPECT_EQ(ScopeOf("If a Then b.End", ".End"), "variable.other.member.hostlanguage");
  EXPECT_EQ(ScopeOf("Dim ending As Integer", "ending"), "");
}

TEST(EditorGrammar, NamesTheRoutineThatADeclarationBegins) {
  EXPECT_EQ(ScopeOf("Function Mixed(a As Double) As Double", "Function"), "keyword.declaration.hostlanguage");
  EXPECT_EQ(ScopeOf("Function Mixed(a As Double) As Double", "Mixed"), "entity.name.function.hostlanguage");
  EXPECT_EQ(ScopeOf("Function Mixed(a As Double) As Double", "Double"), "storage.type.hostlanguage");
}

TEST(EditorGrammar, KnowsTheBundlesClasses) {
  EXPECT_EQ(ScopeOf("Dim c As NSColorQVX", "NSColorQVX"), "support.class.hostlanguage");
  EXPECT_EQ(ScopeOf("Dim l As New nscolorlistqvx", "nscolorlistqvx"), "support.class.hostlanguage");
}

TEST(EditorGrammar, MarksATextThatTheLineDoesNotClose) {
  EXPECT_EQ(ScopeOf("Print \"a\"\"b", "\"a"), "string.quoted.double.hostlanguage");
  EXPECT_EQ(ScopeOf("Print \"open", "\"open"), "invalid.illegal.unclosed-string.hostlanguage");
}

TEST(EditorGrammar, ReadsAnAmpersandThatTouchesTheEndOfAValueAsTheOperator) {
  for (const char* const line : {"\"a\"&b1", "f(x)&b1", "a&b1", "7&hFF", "\"a\"&cFF0000"})
    EXPECT_EQ(ScopeOf(line, "&"), "keyword.operator.hostlanguage") << line;
  EXPECT_EQ(ScopeOf("a = &b1", "&b1"), "constant.numeric.radix.hostlanguage");
  EXPECT_EQ(ScopeOf("f(&hFF)", "&hFF"), "constant.numeric.radix.hostlanguage");
  EXPECT_EQ(ScopeOf("&cFF0000", "&"), "constant.other.color.hostlanguage");
  EXPECT_EQ(ScopeOf("\"a\"&&hFF", "&hFF"), "constant.numeric.radix.hostlanguage");
}

TEST(EditorGrammar, LeavesRemInsideANameAlone) {
  EXPECT_EQ(ScopeOf("Rem a note", "a note"), "comment.line.rem.hostlanguage");
  EXPECT_EQ(ScopeOf("remainder = 1", "remainder"), "");
  EXPECT_EQ(ScopeOf("a.Rem", "Rem"), "variable.other.member.hostlanguage");
}

}  // namespace
