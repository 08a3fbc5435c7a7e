// tests/hostrun/unit/session_test.cpp - statements run as they come, without a platform.
#include "hostrun/language/session.h"

#include <gtest/gtest.h>

#include "hostrun/host/registry.h"
#include "hostrun/host/services.h"
#include "hostrun/host/show.h"

extern "C" void REALPluginMain(void* (*resolver)(const char*));

namespace hostrun {
namespace {

class Statements : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (TheRegistry().FindClass("Fixture") == nullptr) REALPluginMain(&ResolveService);
  }

  // What the values that stand alone among these lines are shown as.
  static std::vector<std::string> ShownBy(const std::vector<std::string>& lines) {
    std::vector<std::string> shown;
    Session session("test", [&](const Value& value) { shown.push_back(ReadableText(value, false)); });
    for (const std::string& line : lines) {
      EXPECT_EQ(session.Run(line + "\n", false), Session::State::Done) << line;
    }
    return shown;
  }
};

using Shown = std::vector<std::string>;

// Both take a Variant at the same cost.
TEST_F(Statements, NewTakesTheFirstOfTwoConstructorsThatFitAlike) {
  EXPECT_EQ(ShownBy({"Dim v As Variant = 5", "(New Fixture(v)).Number"}), Shown{"5"});
}

TEST_F(Statements, NewTakesTheConstructorThatFitsBetter) {
  EXPECT_EQ(ShownBy({"(New Fixture(\"four\")).Number", "(New Fixture(5)).Number"}), (Shown{"-4", "5"}));
}

TEST_F(Statements, ACallTakesTheFirstOfTwoFormsThatFitAlike) {
  EXPECT_EQ(ShownBy({"Dim v As Variant = \"text\"", "(New Fixture(5)).Echo(v)"}), Shown{"\"text\""});
}

TEST_F(Statements, NotOfABooleanIsTheOtherOne) {
  EXPECT_EQ(ShownBy({"Dim no As Boolean", "If((Not no) = True, 1, 2)", "If(Not Not no, 1, 2)", "0 + Not 5"}),
            (Shown{"1", "2", "-6"}));
}

}  // namespace
}  // namespace hostrun
