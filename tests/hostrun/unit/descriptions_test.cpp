// tests/hostrun/unit/descriptions_test.cpp - the text file that describes members: what is read, what is
// refused.
#include <gtest/gtest.h>

#include <stdexcept>

#include "hostrun/commands/docs_text.h"

namespace hostrun {
namespace {

std::string RefusalOf(const std::string& text) {
  try {
    ParseDescriptions("file.txt", text);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "taken";
}

TEST(Descriptions, AreReadByClassGroupAndMember) {
  const std::vector<ClassText> classes = ParseDescriptions("file.txt",
                                                           "# a remark\n"
                                                           "[class First]\n"
                                                           "One line\n"
                                                           "and its next.\n"
                                                           "\n"
                                                           "A second paragraph.\n"
                                                           "[first steps]\n"
                                                           "Print 1\n"
                                                           "\n"
                                                           "# no remark\n"
                                                           "\n"
                                                           "\n"
                                                           "[group Colours of their own]\n"
                                                           "Of the group.\n"
                                                           "nil: nothing\n"
                                                           "[example]\n"
                                                           "Print 2\n"
                                                           "[member redColor as NSColorQVX]\n"
                                                           "Red.\n"
                                                           "nil: black,\n"
                                                           "  and more\n"
                                                           "  of it\n"
                                                           "raises: never\n"
                                                           "note: mind\n"
                                                           "[host class Second]\n"
                                                           "Of the host.\n");
  ASSERT_EQ(classes.size(), 2U);
  EXPECT_EQ(classes[0].name, "First");
  EXPECT_EQ(classes[0].line, 2);
  EXPECT_FALSE(classes[0].ofHost);
  EXPECT_EQ(classes[0].said.paragraphs,
            (std::vector<std::string>{"One line and its next.", "A second paragraph."}));
  EXPECT_EQ(classes[0].said.program, "Print 1\n\n# no remark\n");
  ASSERT_EQ(classes[0].groups.size(), 1U);
  const GroupText& group = classes[0].groups[0];
  EXPECT_EQ(group.title, "Colours of their own");
  EXPECT_EQ(group.said.paragraphs, std::vector<std::string>{"Of the group."});
  EXPECT_EQ(group.said.nil, "nothing");
  EXPECT_EQ(group.said.raises, std::nullopt);
  EXPECT_EQ(group.said.program, "Print 2\n");
  ASSERT_EQ(group.members.size(), 1U);
  EXPECT_EQ(group.members[0].declaration, "redColor as NSColorQVX");
  EXPECT_EQ(group.members[0].line, 18);
  EXPECT_EQ(group.members[0].said.paragraphs, std::vector<std::string>{"Red."});
  EXPECT_EQ(group.members[0].said.nil, "black, and more of it");
  EXPECT_EQ(group.members[0].said.raises, "never");
  EXPECT_EQ(group.members[0].said.note, "mind");
  EXPECT_EQ(classes[1].name, "Second");
  EXPECT_TRUE(classes[1].ofHost);
}

TEST(Descriptions, AreRefusedByTheirLine) {
  const std::string wantedHeading = "wanted [class NAME], [group TITLE] or [member DECLARATION], found: ";
  const struct {
    const char* text;
    std::string refusal;
  } samples[] = {
      {"text\n", ":1: wanted a [class NAME] before any text, found: text"},
      {"[class]\n", ":1: " + wantedHeading + "[class]"},
      {"[class ]\n", ":1: " + wantedHeading + "[class ]"},
      {"[class A\n", ":1: " + wantedHeading + "[class A"},
      {"[klass A]\n", ":1: " + wantedHeading + "[klass A]"},
      {"[host A]\n", ":1: " + wantedHeading + "[host A]"},
      {"\n[group A]\n", ":2: wanted a [class NAME] before a group, found: [group A]"},
      {"[member A]\n", ":1: wanted a [group TITLE] before a member, found: [member A]"},
      {"[class A]\n[member B]\n", ":2: wanted a [group TITLE] before a member, found: [member B]"},
      {"[class A]\ntext\n  more\n",
       R"(:3: wanted an indented line only below a "nil:", "raises:" or "note:", found:   more)"},
      {"[class A]\nnil: a\nnil: b\n", ":3: wanted one \"nil: \" for one member, found: nil: b"},
      {"[class A]\nraises: a\nraises: b\n", ":3: wanted one \"raises: \" for one member, found: raises: b"},
      {"[class A]\nnote: a\nnote: b\n", ":3: wanted one \"note: \" for one member, found: note: b"},
      {"[class A]\nnil: a\ntext\n",
       ":3: wanted a blank line, another field, or a line indented by two blanks, found: text"},
      {"[example]\n",
       ":1: wanted [example] after the text of a group and before its members, found: [example]"},
      {"[class A]\n[example]\n",
       ":2: wanted [example] after the text of a group and before its members, found: [example]"},
      {"[class A]\n[group B]\n[member C]\n[example]\n",
       ":4: wanted [example] after the text of a group and before its members, found: [example]"},
      {"[first steps]\n",
       ":1: wanted [first steps] after the text of a class and before its groups, found: [first steps]"},
      {"[class A]\n[group B]\n[first steps]\n",
       ":3: wanted [first steps] after the text of a class and before its groups, found: [first steps]"},
      {"[class A]\n[first steps]\nPrint 1\n[first steps]\n", ":4: wanted one program, found: [first steps]"},
  };
  for (const auto& [text, refusal] : samples) EXPECT_EQ(RefusalOf(text), "file.txt" + refusal) << text;
  EXPECT_EQ(RefusalOf("[class A]\nnil: a\n\ntext\n"), "taken");
}

TEST(Descriptions, WantAFile) {
  try {
    ReadDescriptions("/nowhere/file.txt");
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(
        error.what(),
        "/nowhere/file.txt: wanted the descriptions of the members, found no such file; name it with "
        "--descriptions");
  }
}

}  // namespace
}  // namespace hostrun
