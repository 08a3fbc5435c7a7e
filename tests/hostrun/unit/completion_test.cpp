// tests/hostrun/unit/completion_test.cpp - what a beginning may become where nothing is declared.
#include "hostrun/commands/completion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace hostrun {
namespace {

TEST(Completion, KnowsEachWordOfTheLanguage) {
  std::istringstream words(
      "And As ByRef Case Catch Const Continue Dim Do DownTo Each Else ElseIf End Enum Exit False Finally For "
      "Function If In Is IsA Loop Mod New Next Nil Not Or Print Quit Raise ReDim Return Select Static Step "
      "Sub "
      "Then To True Try Until Var Wend While Xor");
  for (std::string word; words >> word;) {
    const std::vector<std::string> found = CompleteWord(Binder(), word.substr(0, word.size() - 1));
    EXPECT_EQ(std::count(found.begin(), found.end(), word), 1) << word;
  }
}

TEST(Completion, TakesABeginningInEitherCase) {
  EXPECT_EQ(CompleteWord(Binder(), "downt"), std::vector<std::string>{"DownTo"});
  EXPECT_EQ(CompleteWord(Binder(), "DOWNT"), std::vector<std::string>{"DownTo"});
}

}  // namespace
}  // namespace hostrun
