// tests/hostrun/unit/functions_test.cpp - what the language's functions and operators give, at their edges.
#include <gtest/gtest.h>

#include "hostrun/host/show.h"
#include "hostrun/language/session.h"

namespace hostrun {
namespace {

struct Expression {
  const char* text;
  const char* shown;
};

void PrintTo(const Expression& expression, std::ostream* out) {
  *out << expression.text;
}

class Shows : public testing::TestWithParam<Expression> {};

TEST_P(Shows, TheValue) {
  std::string shown;
  Session session("test", [&](const Value& value) { shown = ReadableText(value, false); });
  EXPECT_EQ(session.Run(std::string(GetParam().text) + "\n", false), Session::State::Done);
  EXPECT_EQ(shown, GetParam().shown);
}

const Expression kTexts[] = {
    {"Mid(\"abcd\", 0, 2)", "\"ab\""},
    {"Mid(\"abcd\", -5)", "\"abcd\""},
    {"Mid(\"abcd\", 4)", "\"d\""},
    {"Mid(\"abcd\", 5)", "\"\""},
    {"Mid(\"abcd\", 2, 0)", "\"\""},
    {"Mid(\"abcd\", 2, -1)", "\"\""},
    {"Left(\"abc\", 0)", "\"\""},
    {"Left(\"abc\", 9)", "\"abc\""},
    {"Right(\"abc\", 1)", "\"c\""},
    {"Right(\"abc\", 9)", "\"abc\""},
    {"Right(\"abc\", 0)", "\"\""},
    {"Right(\"abc\", -1)", "\"\""},
    {"Trim(Chr(160) + \"x\" + Chr(9))", "\"x\""},
    {"Trim(\"!x!\")", "\"!x!\""},
    {"Trim(\"   \")", "\"\""},
    {"LTrim(\" x \")", "\"x \""},
    {"RTrim(\" x \")", "\" x\""},
    {"InStr(\"abab\", \"B\")", "2"},
    {"InStr(2, \"ababab\", \"ab\")", "3"},
    {"InStr(3, \"ababab\", \"ab\")", "3"},
    {"InStr(0, \"abc\", \"a\")", "1"},
    {"InStr(-3, \"abc\", \"c\")", "3"},
    {"InStr(9, \"abc\", \"c\")", "0"},
    {"InStr(\"abc\", \"abcd\")", "0"},
    {"Replace(\"aaa\", \"A\", \"b\")", "\"baa\""},
    {"Replace(\"abc\", \"\", \"x\")", "\"abc\""},
    {"ReplaceAll(\"aaa\", \"a\", \"aa\")", "\"aaaaaa\""},
    {"ReplaceAll(\"aaa\", \"aa\", \"b\")", "\"ba\""},
    {"ReplaceAll(\"\u00C4a\u00C4\", \"\u00E4\", \"oe\")", "\"oeaoe\""},
    {"NthField(\"a,b,c\", \",\", 0)", "\"\""},
    {"NthField(\"a,b,c\", \",\", 1)", "\"a\""},
    {"NthField(\"a,b,c\", \",\", 3)", "\"c\""},
    {"NthField(\"a,b,c\", \",\", 4)", "\"\""},
    {"NthField(\"\u00E4bc\", \"\", 1)", "\"\u00E4\""},
    {"CountFields(\"a--b--\", \"--\")", "3"},
    {"CountFields(\"\", \",\")", "0"},
    {"CountFields(\"abc\", \"\")", "3"},
    {"Join(Array(\"a\"), \",\")", "\"a\""},
    {"Join(Array(\"a\", \"\", \"b\"), \", \")", "\"a, , b\""},
    {"Hex(0)", "\"0\""},
    {"Hex(171)", "\"AB\""},
    {"Hex(-2)", "\"FFFFFFFE\""},
    {"Hex(-2147483648)", "\"80000000\""},
    {"Hex(-2147483649)", "\"FFFFFFFF7FFFFFFF\""},
    {"Hex(4294967296)", "\"100000000\""},
    {"Bin(6)", "\"110\""},
    {"Oct(64)", "\"100\""},
    {"Asc(Chr(1114111))", "1114111"},
    {"Asc(Chr(55295))", "55295"},
    {"Asc(Chr(57344))", "57344"},
    {"StrComp(\"b\", \"A\")", "1"},
    {"StrComp(\"a\", \"B\")", "-1"},
    {"StrComp(\"a\", \"A\")", "0"},
    {"StrComp(\"a\", \"A\", 0)", "1"},
    {"StrComp(\"a\", \"A\", 1)", "0"},
};
INSTANTIATE_TEST_SUITE_P(Texts, Shows, testing::ValuesIn(kTexts));

const Expression kNumbers[] = {
    {"Val(\"&b101\")", "5"},
    {"Val(\"&o17\")", "15"},
    {"Val(\" &HfF\")", "255"},
    {"Val(\"&hFg\")", "15"},
    {"Val(\"&h0x10\")", "0"},
    {"Val(\"&h-1\")", "0"},
    {"Val(\"&h 1\")", "0"},
    {"Val(\"&hFFFFFFFFFFFFFFFFF\")", "0"},
    {"Val(\"&x1\")", "0"},
    {"Val(\"&\")", "0"},
    {"Val(\"+5\")", "5"},
    {"Val(\"+\")", "0"},
    {"Val(\"-0.5x\")", "-0.5"},
    {"Val(\"1e400\")", "0"},
    {"Val(\"inf\")", "0"},
    {"Val(\"  \")", "0"},
    {"Format(1234567, \"#,##0\")", "\"1,234,567\""},
    {"Format(123, \"#,##0\")", "\"123\""},
    {"Format(1000, \"#,###\")", "\"1,000\""},
    {"Format(0, \"#\")", "\"\""},
    {"Format(0, \"0.##\")", "\"0\""},
    {"Format(0.5, \"#.0\")", "\".5\""},
    {"Format(1.001, \"0.0#\")", "\"1.0\""},
    {"Format(2.25, \"0.0#\")", "\"2.25\""},
    {"Format(2.5, \"0.#0\")", "\"2.50\""},
    {"Format(12, \"0000\")", "\"0012\""},
    {"Len(Format(0.5, \"0.\" + ReplaceAll(\"----------\", \"-\", \"0000000000\")))", "102"},
    {"Len(Format(0.5, \"0.\" + ReplaceAll(\"-----------\", \"-\", \"0000000000\")))", "102"},
    {"Format(-1, \"0\")", "\"-1\""},
    {"Format(-1, \"+0\")", "\"-1\""},
    {"Format(1, \"-0\")", "\"1\""},
    {"Format(-0.001, \"0.0\")", "\"0.0\""},
    {"Format(5, \"$0.00 each\")", "\"$5.00 each\""},
    {"Format(-5, \"$0\")", "\"-$5\""},
    {"Format(0.5, \"0%\")", "\"50%\""},
    {"Format(7, \"abc\")", "\"7abc\""},
    {"Format(0 / 0, \"0.0\")", "\"NaN\""},
    {"Format(-1 / 0, \"$#,##0\")", "\"-INF\""},
    {"Format(9007199254740993, \"0\")", "\"9007199254740993\""},
    {"Str(1e15)", "\"1e+15\""},
    {"Str(1e14 + 0.0)", "\"100000000000000\""},
    {"Str(123456.789)", "\"123456.8\""},
    {"Str(-1.5)", "\"-1.5\""},
    {"Round(2.4)", "2"},
    {"Round(-2.4)", "-2"},
    {"Floor(1.5)", "1"},
    {"Ceil(-1.2)", "-1"},
    {"Truncate(1.7)", "1"},
    {"Sign(3)", "1"},
    {"Sign(0)", "0"},
    {"Sign(-0.5)", "-1"},
    {"Abs(3)", "3"},
    {"Max(3, 1, 2)", "3"},
    {"Max(-3, -1)", "-1"},
    {"Min(-1, -2)", "-2"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, Shows, testing::ValuesIn(kNumbers));

const Expression kOperators[] = {
    {"7 \\ 2", "3"},
    {"0 - 7 \\ 2", "-3"},
    {"7 Mod 3", "1"},
    {"(0 - 7) Mod 3", "-1"},
    {"2 ^ 3", "8"},
    {"5 / 2", "2.5"},
    {"1 - 2 - 3", "-4"},
    {"2 + 3 * 4", "14"},
    {"(2 + 3) * 4", "20"},
    {"6 And 3", "2"},
    {"6 Or 3", "7"},
    {"6 Xor 3", "5"},
    {"0 + Not 5", "-6"},
    {"True And False", "False"},
    {"True Or False", "True"},
    {"True Xor True", "False"},
    {"0.5 - 0.25", "0.25"},
    {"2147483647 + 0", "2147483647"},
    {"\"a\" + \"b\"", "\"ab\""},
};
INSTANTIATE_TEST_SUITE_P(Operators, Shows, testing::ValuesIn(kOperators));

// Pairs of operands of each kind: less, equal, greater.
TEST(Comparisons, HoldForLessEqualAndGreater) {
  const struct {
    const char* sign;
    bool holds[3];
  } operators[] = {{"<", {true, false, false}}, {"<=", {true, true, false}}, {"=", {false, true, false}},
                   {"<>", {true, false, true}}, {">=", {false, true, true}}, {">", {false, false, true}}};
  const char* const operands[][3][2] = {
      {{"1", "2"}, {"2", "2"}, {"3", "2"}},
      {{"-3000000000", "1"}, {"3000000000", "3000000000"}, {"3000000000", "1"}},
      {{"0.25", "0.5"}, {"0.5", "0.5"}, {"0.75", "0.5"}},
      {{"1", "1.5"}, {"2", "2.0"}, {"2", "1.5"}},
      {{"\"a\"", "\"B\""}, {"\"b\"", "\"B\""}, {"\"c\"", "\"B\""}},
      {{"\"a\"", "\"\u00E4\""}, {"\"\u00E4\"", "\"\u00C4\""}, {"\"\u00E4\"", "\"z\""}}};
  for (const auto& [sign, holds] : operators) {
    for (const auto& pairs : operands) {
      for (int i = 0; i < 3; ++i) {
        const std::string condition = std::string(pairs[i][0]) + " " + sign + " " + pairs[i][1];
        std::string shown;
        Session session("test", [&](const Value& value) { shown = ReadableText(value, false); });
        session.Run("If(" + condition + ", \"holds\", \"does not\")\n", false);
        EXPECT_EQ(shown, holds[i] ? "\"holds\"" : "\"does not\"") << condition;
      }
    }
  }
}

}  // namespace
}  // namespace hostrun
