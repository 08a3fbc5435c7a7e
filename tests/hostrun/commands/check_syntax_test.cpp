// tests/hostrun/commands/check_syntax_test.cpp - "hostrun check-syntax": what is wrong, without running it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

using nlohmann::json;

Finished Checked(const std::string& text, const std::vector<std::string>& options = {}) {
  std::vector<std::string> arguments = PlatformFor(text);
  arguments.insert(arguments.begin(), {"check-syntax", "-"});
  arguments.insert(arguments.end(), options.begin(), options.end());
  return RunHostrun(arguments, text);
}

json ProblemsOf(const std::string& text) {
  const Finished finished = Checked(text, {"--json"});
  EXPECT_EQ(finished.err, "");
  return json::parse(finished.out).at("problems");
}

// "line:column-endColumn" of the one problem.
std::string PlaceOf(const std::string& text) {
  const json problems = ProblemsOf(text);
  EXPECT_EQ(problems.size(), 1U) << problems;
  const json& only = problems.at(0);
  return std::to_string(only.at("line").get<int>()) + ":" + std::to_string(only.at("column").get<int>()) +
         "-" + std::to_string(only.at("endColumn").get<int>());
}

TEST(CheckSyntax, SaysNothingOfASoundProgram) {
  const Finished finished = Checked("Print NSColorQVX.redColor.redComponent\n");
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(finished.err, "");
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(Checked("", {"--json"}).out, "{\n  \"problems\": []\n}\n");
}

TEST(CheckSyntax, RunsNothing) {
  const std::string made = TemporaryFile("", "") + "made";
  const Finished finished =
      Checked("Print 1\nDim f As TextFile = TextFile.Create(\"" + made + "\")\nQuit 9\n");
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(RunHostrun({made}).status, 2) << "there is no such file";
}

TEST(CheckSyntax, ShowsEachErrorWithItsLine) {
  const Finished finished = Checked("Print missing\nNSColorQVX.redColour\n");
  EXPECT_EQ(
      finished.out,
      "standard input:1:7: wanted a variable, a function or a class, found missing, which is not declared\n"
      "  Print missing\n"
      "        ^\n"
      "standard input:2:12: wanted a shared method or a constant of NSColorQVX, found redColour, "
      "which it does not have; did you mean redColor?\n"
      "  NSColorQVX.redColour\n"
      "             ^\n");
  EXPECT_EQ(finished.err, "");
  EXPECT_EQ(finished.status, 1);
}

TEST(CheckSyntax, GivesEditorsEachErrorAsAnObject) {
  const Finished finished = Checked("Dim x As Missing\nPrint \"fine\"\nPrint x +\n", {"--json"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.err, "");
  const json answer = json::parse(finished.out);
  EXPECT_EQ(answer, (json{{"problems",
                           {{{"file", "standard input"},
                             {"line", 3},
                             {"column", 10},
                             {"endColumn", 11},
                             {"severity", "error"},
                             {"message", "wanted an expression, found the end of the line"}}}}}));
}

TEST(CheckSyntax, MarksTheWordThatIsMeant) {
  EXPECT_EQ(PlaceOf("Print 1, missing, 2\n"), "1:10-17");
  EXPECT_EQ(PlaceOf("Print \"no end\n"), "1:7-14");
  EXPECT_EQ(PlaceOf("Print &hXY + 1\n"), "1:7-11");
  EXPECT_EQ(PlaceOf("If True Then\n  Print 1\n"), "3:1-2");
}

TEST(CheckSyntax, CountsColumnsInCharacters) {
  EXPECT_EQ(PlaceOf("Print \"äöü€\", missing\n"), "1:15-22");
}

TEST(CheckSyntax, GivesEditorsEveryErrorAndPeopleThoseThatTheyCanTakeIn) {
  std::string text;
  for (int i = 0; i < 25; ++i) text += "Print missing" + std::to_string(i) + "\n";
  EXPECT_EQ(ProblemsOf(text).size(), 25U);
  EXPECT_EQ(LastLine(Checked(text).out), "and 5 more errors");
}

TEST(CheckSyntax, TheEndOfABlockWhoseBeginningIsWrongIsNoErrorAndAnotherEndIs) {
  EXPECT_EQ(ProblemsOf("For i As Integer =\nNext\n").size(), 1U);
  const json problems = ProblemsOf("For i As Integer =\nNext\nNext\n");
  ASSERT_EQ(problems.size(), 2U);
  EXPECT_EQ(problems.at(1).at("line"), 3);
}

TEST(CheckSyntax, TakesBytesThatAreNoText) {
  EXPECT_EQ(ProblemsOf("Print \xff\xfe\n").size(), 1U);
}

TEST(CheckSyntax, CallsStandardInputByTheNameThatItIsGiven) {
  const Finished finished = Checked("Print missing\n", {"--name", "draft.bas"});
  EXPECT_EQ(finished.out.rfind("draft.bas:1:7: wanted", 0), 0U) << finished.out;
  const json answer = json::parse(Checked("Print missing\n", {"--name", "draft.bas", "--json"}).out);
  EXPECT_EQ(answer.at("problems").at(0).at("file"), "draft.bas");
}

TEST(CheckSyntax, ChecksSeveralProgramsAndGoesOnBehindOneThatCannotBeRead) {
  const std::string one = TemporaryFile("one.bas", "Print missing\n");
  const std::string two = TemporaryFile("two.bas", "Print 1 +\n");
  std::vector<std::string> arguments = WithoutPlatform();
  arguments.insert(arguments.end(), {one, "nowhere.bas", two});
  arguments.insert(arguments.begin(), {"check-syntax", "--json"});
  const Finished finished = RunHostrun(arguments);
  EXPECT_EQ(finished.status, 2);
  EXPECT_EQ(finished.err, "hostrun check-syntax: nowhere.bas: wanted a program file, found no such file\n");
  const json problems = json::parse(finished.out).at("problems");
  ASSERT_EQ(problems.size(), 2U);
  EXPECT_EQ(problems.at(0).at("file"), one);
  EXPECT_EQ(problems.at(1).at("file"), two);
}

TEST(CheckSyntax, KnowsTheMembersOfTheHostThatIsMeant) {
  const std::string text = "Dim image As NSImageQVX\n";
  EXPECT_EQ(Checked(text).status, 0);
  EXPECT_EQ(Checked(text, {"--no-sibling"}).status, 1);
}

}  // namespace
}  // namespace command_tests
