// tests/hostrun/unit/lexer_test.cpp - how a program's text is cut into words.
#include "hostrun/language/lexer.h"

#include <gtest/gtest.h>

#include "hostrun/host/show.h"

namespace hostrun {
namespace {

using Words = std::vector<std::string>;

struct Cut {
  std::vector<Token> tokens;
  std::vector<ProgramError> errors;
};

Cut CutUp(const std::string& text) {
  Cut cut;
  cut.tokens = Tokenize(Source("test", text), cut.errors);
  return cut;
}

// The words; "|" for the end of a line. The last line's end and the text's are left out.
Words WordsOf(const std::string& text) {
  Cut cut = CutUp(text);
  EXPECT_TRUE(cut.errors.empty()) << text;
  EXPECT_EQ(cut.tokens.back().kind, TokenKind::EndOfFile);
  cut.tokens.pop_back();
  EXPECT_EQ(cut.tokens.back().kind, TokenKind::EndOfLine);
  cut.tokens.pop_back();
  Words words;
  for (const Token& token : cut.tokens)
    words.push_back(token.kind == TokenKind::EndOfLine ? "|" : token.text);
  return words;
}

// "line:column message" of each.
Words ErrorsOf(const std::string& text) {
  Words errors;
  for (const ProgramError& error : CutUp(text).errors) {
    errors.push_back(std::to_string(error.at().line) + ":" + std::to_string(error.at().column) + " " +
                     error.what());
  }
  return errors;
}

// A literal's kind and value: "Integer 5".
std::string Literal(const std::string& text) {
  const Cut cut = CutUp(text);
  EXPECT_TRUE(cut.errors.empty()) << text;
  EXPECT_EQ(cut.tokens.at(0).kind, TokenKind::Literal) << text;
  EXPECT_EQ(cut.tokens.at(0).text, text);
  EXPECT_EQ(cut.tokens.at(1).kind, TokenKind::EndOfLine) << text;
  const Value& value = cut.tokens.at(0).literal;
  return TypeOf(value.kind())->name + " " + ReadableText(value, false);
}

TEST(Lexer, TellsWhereEachWordStands) {
  const Cut cut = CutUp("ab c\n\td");
  ASSERT_EQ(cut.tokens.size(), 6U);
  const Position wanted[] = {{1, 1}, {1, 4}, {1, 5}, {2, 2}, {2, 3}, {2, 3}};
  for (std::size_t i = 0; i < cut.tokens.size(); ++i) {
    EXPECT_EQ(cut.tokens[i].at.line, wanted[i].line) << i;
    EXPECT_EQ(cut.tokens[i].at.column, wanted[i].column) << i;
  }
}

TEST(Lexer, KeepsAWordAsItIsWrittenAndInLowerCase) {
  const Cut cut = CutUp("_Name9");
  EXPECT_EQ(cut.tokens[0].kind, TokenKind::Name);
  EXPECT_EQ(cut.tokens[0].text, "_Name9");
  EXPECT_EQ(cut.tokens[0].lower, "_name9");
  EXPECT_EQ(WordsOf("Gr\u00FC\u00DFe azAZ"), (Words{"Gr\u00FC\u00DFe", "azAZ"}));
}

TEST(Lexer, LeavesCommentsOut) {
  EXPECT_EQ(WordsOf("a ' b\nc // d\nRem e\nREM\nf"), (Words{"a", "|", "c", "|", "|", "|", "f"}));
  EXPECT_EQ(WordsOf("a.rem remark / b"), (Words{"a", ".", "rem", "remark", "/", "b"}));
}

TEST(Lexer, LeavesOutALineThatMakesTheFileACommand) {
  EXPECT_EQ(WordsOf("#!/usr/bin/env hostrun\na"), (Words{"|", "a"}));
  EXPECT_EQ(ErrorsOf("a\n#If"),
            Words{"2:1 wanted a statement, found '#': all of a program is compiled; write If"});
}

TEST(Lexer, GoesOnInTheNextLineBehindAnUnderscore) {
  EXPECT_EQ(WordsOf("a _\nb"), (Words{"a", "b"}));
  EXPECT_EQ(WordsOf("a _ \t\nb"), (Words{"a", "b"}));
  EXPECT_EQ(WordsOf("a _ ' why\nb"), (Words{"a", "b"}));
  EXPECT_EQ(WordsOf("a _ // why\nb"), (Words{"a", "b"}));
  EXPECT_EQ(WordsOf("a _"), Words{"a"});
  EXPECT_EQ(WordsOf("a _ b\nc"), (Words{"a", "_", "b", "|", "c"}));
  EXPECT_EQ(WordsOf("a _b\nc"), (Words{"a", "_b", "|", "c"}));
  EXPECT_EQ(CutUp("a _\nb").tokens[1].at.line, 2);
}

TEST(Lexer, ReadsTexts) {
  EXPECT_EQ(Literal("\"\""), "String \"\"");
  EXPECT_EQ(Literal("\"' // &\u00E9\""), "String \"' // &\u00E9\"");
  EXPECT_EQ(CutUp("\"a\"\"b\"").tokens[0].literal.string()->length, 3);
  EXPECT_EQ(WordsOf("\"a\" \"b\""), (Words{"\"a\"", "\"b\""}));
}

TEST(Lexer, RefusesTextsThatDoNotEndOrAreNoUtf8) {
  const std::string open = "wanted a closing '\"' on this line, found its end";
  EXPECT_EQ(ErrorsOf("a \"b\nc"), Words{"1:3 " + open});
  EXPECT_EQ(ErrorsOf("\"b\"\""), Words{"1:1 " + open});
  EXPECT_EQ(ErrorsOf("\""), Words{"1:1 " + open});
  EXPECT_EQ(ErrorsOf("\"\xFF\""), Words{"1:1 wanted text in UTF-8, found other bytes"});
}

TEST(Lexer, ReadsNumbersOfEachKind) {
  EXPECT_EQ(Literal("0"), "Integer 0");
  EXPECT_EQ(Literal("0129"), "Integer 129");
  EXPECT_EQ(Literal("2147483647"), "Integer 2147483647");
  EXPECT_EQ(Literal("2147483648"), "Int64 2147483648");
  EXPECT_EQ(Literal("9223372036854775807"), "Int64 9223372036854775807");
  EXPECT_EQ(Literal("1.25"), "Double 1.25");
  EXPECT_EQ(Literal(".5"), "Double 0.5");
  EXPECT_EQ(Literal("9e2"), "Double 900");
  EXPECT_EQ(Literal("1.5E+2"), "Double 150");
  EXPECT_EQ(Literal("25e-2"), "Double 0.25");
}

TEST(Lexer, EndsANumberWhereItCanGoOnNoMore) {
  EXPECT_EQ(WordsOf("1.a 1..2 1.2.3"), (Words{"1", ".", "a", "1", ".", ".2", "1.2", ".3"}));
  EXPECT_EQ(WordsOf("1+2-3"), (Words{"1", "+", "2", "-", "3"}));
  EXPECT_EQ(ErrorsOf("1e"), Words{"1:2 wanted the end of the number, found 'e'"});
  EXPECT_EQ(ErrorsOf("1e+"), Words{"1:2 wanted the end of the number, found 'e'"});
  EXPECT_EQ(ErrorsOf("5_"), Words{"1:2 wanted the end of the number, found '_'"});
}

TEST(Lexer, RefusesNumbersThatNothingHolds) {
  EXPECT_EQ(ErrorsOf("9223372036854775808"),
            Words{"1:1 wanted a whole number of at most 9223372036854775807, found 9223372036854775808; with "
                  ".0 it is "
                  "a Double"});
  EXPECT_EQ(ErrorsOf(" 1e400"), Words{"1:2 wanted a number that a Double can hold, found 1e400"});
}

TEST(Lexer, ReadsNumbersOfOtherBases) {
  EXPECT_EQ(Literal("&hfF"), "Integer 255");
  EXPECT_EQ(Literal("&B101"), "Integer 5");
  EXPECT_EQ(Literal("&o17"), "Integer 15");
  EXPECT_EQ(Literal("&HFFFFFFFF"), "Integer -1");
  EXPECT_EQ(Literal("&h100000000"), "Int64 4294967296");
  EXPECT_EQ(Literal("&hFFFFFFFFFFFFFFFF"), "Int64 -1");
}

TEST(Lexer, ReadsColours) {
  EXPECT_EQ(CutUp("&c010203").tokens[0].literal.color(), 0x010203U);
  EXPECT_EQ(CutUp("&CA1020304").tokens[0].literal.color(), 0xA1020304U);
  for (const std::string text : {"&c01020", "&c0102030", "&c010203040"})
    EXPECT_EQ(ErrorsOf(text), Words{"1:1 wanted &cRRGGBB, found " + text});
}

TEST(Lexer, RefusesWrongDigitsOfABase) {
  const auto wanted = [](int base, const std::string& found) {
    return Words{"1:3 wanted digits of base " + std::to_string(base) + ", found '" + found +
                 "'; to join texts, write a blank behind &"};
  };
  EXPECT_EQ(ErrorsOf("( &h"), wanted(16, "&h"));
  EXPECT_EQ(ErrorsOf("( &b102"), wanted(2, "&b102"));
  EXPECT_EQ(ErrorsOf("( &o8"), wanted(8, "&o8"));
  EXPECT_EQ(ErrorsOf("( &h1FFFFFFFFFFFFFFFF"), wanted(16, "&h1FFFFFFFFFFFFFFFF"));
  EXPECT_EQ(
      ErrorsOf("( &q1"),
      Words{"1:3 wanted &h, &b, &o or &c and digits, found '&q'; to join texts, write a blank behind &"});
}

TEST(Lexer, JoinsTextsWhereTheSignTouchesWhatIsBeforeIt) {
  EXPECT_EQ(WordsOf("a&b"), (Words{"a", "&", "b"}));
  EXPECT_EQ(WordsOf("\"a\"&b"), (Words{"\"a\"", "&", "b"}));
  EXPECT_EQ(WordsOf("f()&b"), (Words{"f", "(", ")", "&", "b"}));
  EXPECT_EQ(WordsOf("1&h5"), (Words{"1", "&", "h5"}));
  EXPECT_EQ(WordsOf("a & b"), (Words{"a", "&", "b"}));
  EXPECT_EQ(WordsOf("a(&h5"), (Words{"a", "(", "&h5"}));
  EXPECT_EQ(WordsOf("&h5"), Words{"&h5"});
}

TEST(Lexer, KnowsTheOperators) {
  const Words all = {"<=", ">=", "<>", "+=", "-=", "*=", "/=", "\\=", "&=", "+", "-", "*",
                     "/",  "\\", "^",  "=",  "<",  ">",  "(",  ")",   ",",  ".", ":", "&"};
  for (const std::string& each : all) {
    EXPECT_EQ(WordsOf(each), Words{each});
    EXPECT_EQ(CutUp(each).tokens[0].kind, TokenKind::Operator) << each;
  }
  EXPECT_EQ(WordsOf("a<-b"), (Words{"a", "<", "-", "b"}));
}

TEST(Lexer, TellsOneErrorOfALineAndGoesOnInTheNext) {
  EXPECT_EQ(ErrorsOf("a ? ! b\n\x1F\n~ \"\n"),
            (Words{"1:3 wanted a statement, found '?'", "2:1 wanted a statement, found a control character",
                   "3:1 wanted a statement, found '~'"}));
}

}  // namespace
}  // namespace hostrun
