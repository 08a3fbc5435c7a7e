// tests/hostrun/commands/classes_test.cpp - "hostrun classes".
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/bundle/unit/declarations.h"
#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

using nlohmann::json;

TEST(Classes, ShowsEachClassOfTheBundleInTheOrderOfRegistration) {
  const Finished finished = RunHostrun({"classes"});
  EXPECT_EQ(finished.status, 0);
  std::vector<std::string> headings;
  std::vector<std::string> groups;
  for (const std::string& line : Lines(finished.out)) {
    if (!line.empty() && line[0] != ' ') headings.push_back(line.substr(0, line.find(',')));
    if (line.starts_with("  ") && line[2] != ' ') groups.push_back(line.substr(2));
  }
  EXPECT_EQ(headings, (std::vector<std::string>{"NSColorQVX", "NSColorListQVX", "NSColorSpaceQVX"}));
  const auto group = [](const char* title, const auto& declarations) {
    return title + (" (" + std::to_string(declarations.size()) + ")");
  };
  EXPECT_EQ(groups,
            (std::vector<std::string>{
                group("Properties", unit::kColorProperties), group("Methods", unit::kColorMethods),
                group("Shared methods", unit::ColorSharedMethods()), group("Methods", unit::kListMethods),
                group("Methods", unit::kSpaceMethods), group("Shared methods", unit::SpaceSharedMethods()),
                group("Constants", unit::kSpaceConstants)}));
}

TEST(Classes, ShowsAllThatIsKnownOfAMember) {
  const Finished finished = RunHostrun({"classes", "nscolorqvx.COLORWITHDEVICEWHITE"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.out,
            "NSColorQVX.colorWithDeviceWhite, shared method\n"
            "  declaration   colorWithDeviceWhite(white as double, alpha as double=1.0) as NSColorQVX\n"
            "  parameters    white       as Double\n"
            "                alpha       as Double, default 1\n"
            "  gives         NSColorQVX\n"
            "  A grey for the device, from 0 (black) to 1 (white).\n"
            "  Nil gives: Nil when the platform makes no colour.\n"
            "  Raises: NSExceptionQVX when the platform raises.\n");
}

TEST(Classes, DescribesAMemberInLinesThatFitATerminal) {
  const std::string shown = RunHostrun({"classes", "NSColorQVX.colorValue"}).out;
  EXPECT_NE(shown.find("\n  Nil gives: Black, &c000000. A colour"), std::string::npos) << shown;
  EXPECT_NE(shown.find("\n  Raises: NSExceptionQVX when"), std::string::npos) << shown;
  EXPECT_NE(shown.find("\n  Mind: The fields are neither"), std::string::npos) << shown;
  for (const std::string& line : Lines(shown)) EXPECT_LE(line.size(), 78U) << line;
}

TEST(Classes, FindsAMemberByItsNameAlone) {
  const std::vector<std::string> lines = Lines(RunHostrun({"classes", "LOCALIZEDNAME"}).out);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "NSColorSpaceQVX.localizedName, method"), 1);
  const json answer = json::parse(RunHostrun({"classes", "setColor", "--json"}).out);
  ASSERT_EQ(answer["classes"].size(), 1U);
  EXPECT_EQ(answer["classes"][0]["name"], "NSColorListQVX");
  EXPECT_EQ(answer["classes"][0]["methods"].size(), 1U);
}

TEST(Classes, ShowsFlagsOnlyWhenAsked) {
  EXPECT_EQ(RunHostrun({"classes"}).out.find("flags"), std::string::npos);
  EXPECT_NE(RunHostrun({"classes", "--flags"}).out.find("flags 132, constructor\n"), std::string::npos);
  EXPECT_EQ(RunHostrun({"classes", "NSColorQVX.colorValue"}).out.find("flags"), std::string::npos);
  EXPECT_NE(RunHostrun({"classes", "NSColorQVX.colorValue", "--flags"}).out.find("\n  flags         6\n"),
            std::string::npos);
}

TEST(Classes, ShowsEachFormOfAnOverloadedMember) {
  const std::vector<std::string> lines = Lines(RunHostrun({"classes", "NSColorQVX.getWhite"}).out);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "NSColorQVX.getWhite, method"), 2);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "                alpha       as Double, by reference"), 1);
}

TEST(Classes, ShowsConstantsAndProperties) {
  EXPECT_TRUE(RunHostrun({"classes", "NSColorSpaceQVX.NSCMYKColorSpaceModel"})
                  .out.starts_with("NSColorSpaceQVX.NSCMYKColorSpaceModel, constant\n"
                                   "  declaration   NSCMYKColorSpaceModel=2\n  type          Integer\n"
                                   "  value         2\n"));
  EXPECT_TRUE(RunHostrun({"classes", "NSColorQVX.colorValue"})
                  .out.starts_with("NSColorQVX.colorValue, property\n  declaration   colorValue as Color\n"
                                   "  access        read only\n"));
}

TEST(Classes, AnswersToolsInJson) {
  const json answer = json::parse(RunHostrun({"classes", "--json", "--host-version", "2013.0"}).out);
  EXPECT_EQ(answer["hostVersion"], 2013.0);
  EXPECT_EQ(answer["layout"], 11);
  ASSERT_EQ(answer["classes"].size(), 3U);
  const json& color = answer["classes"][0];
  EXPECT_EQ(color["name"], "NSColorQVX");
  EXPECT_EQ(color["dataSize"], 16);
  EXPECT_EQ(color["methods"][1], (json{{"name", "Constructor"},
                                       {"kind", "constructor"},
                                       {"declaration", "Constructor"},
                                       {"flags", 132},
                                       {"parameters", json::array()},
                                       {"result", nullptr}}));
  EXPECT_EQ(color["sharedMethods"][0]["parameters"][1],
            (json{{"name", "components"}, {"type", "Double()"}, {"paramArray", true}}));
  EXPECT_EQ(answer["classes"][2]["constants"][0]["value"], -1);
}

TEST(Classes, AnswersToolsInJsonWhateverBytesNamesHold) {
  for (const char* const option : {"--json", "--layout"}) {
    const Finished finished = RunHostrun(
        {"classes", "--json", option, "--platform", "none", "--bundle", BuiltFile("broken/Any.so")}, {},
        {"BROKEN_BUNDLE_FAULT=NameIsNoText"});
    const json answer = json::parse(finished.out, nullptr, false);
    ASSERT_FALSE(answer.is_discarded()) << option << ": " << finished.err;
    EXPECT_EQ((answer.is_array() ? answer : answer["classes"])[0]["name"], "Sou\uFFFDnd") << option;
  }
}

std::vector<std::string> KeysOf(const json& object) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : object.items()) keys.push_back(key);
  return keys;
}

TEST(Classes, GivesToolsTheKeysThatAreDocumented) {
  const json answer = json::parse(RunHostrun({"classes", "--all", "--json"}).out);
  for (json cls : answer["classes"]) {
    for (const char* const list : {"properties", "methods", "sharedMethods", "constants"}) cls.erase(list);
    EXPECT_EQ(KeysOf(cls), (std::vector<std::string>{"dataOffset", "dataSize", "flags", "kind", "layout",
                                                     "name", "origin", "super"}));
    EXPECT_EQ(cls["kind"], "class");
  }
  json list = answer["classes"][1];
  ASSERT_EQ(list["origin"], "bundle");
  EXPECT_EQ(list["methods"].size(), 11U);
  list.erase("methods");
  EXPECT_EQ(list, (json{{"name", "NSColorListQVX"},
                        {"kind", "class"},
                        {"origin", "bundle"},
                        {"super", nullptr},
                        {"layout", 13},
                        {"flags", 4},
                        {"dataSize", 16},
                        {"dataOffset", 24},
                        {"properties", json::array()},
                        {"sharedMethods", json::array()},
                        {"constants", json::array()}}));
  EXPECT_EQ(answer["classes"][0]["properties"][1], (json{{"name", "blackComponent"},
                                                         {"kind", "property"},
                                                         {"type", "double"},
                                                         {"flags", 6},
                                                         {"parameter", 0},
                                                         {"readOnly", true}}));
  EXPECT_EQ(answer["classes"][2]["constants"][0], (json{{"name", "NSUnknownColorSpaceModel"},
                                                        {"kind", "constant"},
                                                        {"declaration", "NSUnknownColorSpaceModel=-1"},
                                                        {"type", "Integer"},
                                                        {"value", -1}}));
}

TEST(Classes, AlsoShowsTheHostsOwnClassesWhenAsked) {
  const json answer = json::parse(RunHostrun({"classes", "--all", "--json"}).out);
  std::vector<std::string> origins;
  for (const json& cls : answer["classes"]) origins.push_back(cls["origin"]);
  EXPECT_EQ(std::count(origins.begin(), origins.end(), "bundle"), 3);
  EXPECT_EQ(std::count(origins.begin(), origins.end(), "sibling"), 3);
  EXPECT_GT(std::count(origins.begin(), origins.end(), "host"), 5);
}

TEST(Classes, ShowsTheWordsOfBothLayoutsSideBySide) {
  const std::vector<std::string> lines = Lines(RunHostrun({"classes", "NSColorQVX", "--layout"}).out);
  ASSERT_EQ(lines.size(), 31U);
  EXPECT_EQ(lines[1], "  word  byte  holds                     layout 13                  layout 9");
  EXPECT_EQ(lines[2], "  0     0     layout version            13                         9");
  EXPECT_EQ(lines[9],
            "  7     28    properties                20 properties of 48 bytes  20 properties of 40 bytes");
  EXPECT_EQ(lines[25],
            "  23    92    shared methods            60 methods of 24 bytes     60 methods of 16 bytes");
  EXPECT_EQ(lines[30], "  28    112   reserved                  0                          -");
}

TEST(Classes, NegotiatesTheLayoutOfTheHostThatIsAskedFor) {
  const json answer =
      json::parse(RunHostrun({"classes", "--layout", "--json", "--host-version", "2012.0"}).out);
  ASSERT_EQ(answer.size(), 3U);
  EXPECT_EQ(answer[0]["current"]["layout"], 10);
  EXPECT_EQ(answer[0]["old"]["layout"], 9);
  const json old = json::parse(RunHostrun({"classes", "--layout", "--json", "--host-version", "2011.0"}).out);
  EXPECT_EQ(old[0]["current"]["layout"], 13);
  EXPECT_EQ(old[0]["old"]["layout"], 9);
}

TEST(Classes, ShowsTheWordsOfOneMembersRecord) {
  const std::vector<std::string> lines =
      Lines(RunHostrun({"classes", "NSColorSpaceQVX.localizedName", "--layout"}).out);
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_EQ(lines[0], "NSColorSpaceQVX, methods[4]");
  EXPECT_NE(lines[4].find("\"localizedName as string\""), std::string::npos) << lines[4];
  EXPECT_EQ(lines[7].substr(lines[7].size() - 1), "-");
}

TEST(Classes, SaysWhichNamesThereAreWhenOneIsUnknown) {
  const Finished cls = RunHostrun({"classes", "Nothing"});
  EXPECT_EQ(cls.status, 2);
  EXPECT_EQ(cls.out, "");
  EXPECT_NE(cls.err.find("wanted a class or a member, found Nothing"), std::string::npos) << cls.err;
  EXPECT_NE(cls.err.find("; there are NSColorQVX, NSColorListQVX"), std::string::npos) << cls.err;
  const Finished member = RunHostrun({"classes", "NSColorQVX.redColour"});
  EXPECT_EQ(member.status, 2);
  EXPECT_NE(member.err.find("; did you mean redColor?"), std::string::npos) << member.err;
}

}  // namespace
}  // namespace command_tests
