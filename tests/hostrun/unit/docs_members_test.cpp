// tests/hostrun/unit/docs_members_test.cpp - which members lack a description, and which descriptions a
// member.
#include "hostrun/commands/docs_members.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

using Lines = std::vector<std::string>;

// A text that describes everything of the registered classes.
std::vector<ClassText> WholeText() {
  std::vector<ClassText> texts;
  int line = 0;
  for (const Class* const cls : BundleClasses()) {
    ClassText text{cls->name, ++line, false, {}, {}};
    GroupText group;
    group.title = "All of it";
    group.said.nil = "nothing";
    for (const Member& member : MembersOf(*cls)) {
      MemberText described{member.Key(), ++line, {}};
      described.said.paragraphs = {"text"};
      described.said.raises = "nothing";
      group.members.push_back(described);
    }
    text.groups.push_back(std::move(group));
    texts.push_back(std::move(text));
  }
  return texts;
}

ClassText& TextOf(std::vector<ClassText>& texts, const std::string& name) {
  return *std::find_if(texts.begin(), texts.end(), [&](const ClassText& text) { return text.name == name; });
}

TEST(Mismatches, AreNoneOfATextThatIsWhole) {
  EXPECT_EQ(Mismatches(WholeText(), "f.txt"), Lines());
}

TEST(Mismatches, AreMembersAndClassesWithoutADescription) {
  std::vector<ClassText> texts = WholeText();
  std::erase_if(TextOf(texts, "NSColorListQVX").groups[0].members,
                [](const MemberText& member) { return member.declaration == "removeFile"; });
  EXPECT_EQ(Mismatches(texts, "f.txt"),
            Lines{"f.txt: NSColorListQVX: no description of the registered member removeFile"});
  texts = WholeText();
  std::erase_if(texts, [](const ClassText& text) { return text.name == "NSColorListQVX"; });
  EXPECT_EQ(Mismatches(texts, "f.txt"),
            Lines{"f.txt: no description of the registered class NSColorListQVX"});
}

TEST(Mismatches, AreDescriptionsOfWhatIsNotRegisteredOrTold) {
  std::vector<ClassText> texts = WholeText();
  GroupText& group = TextOf(texts, "NSColorSpaceQVX").groups[0];
  const MemberText first = group.members.front();
  const std::string place = "f.txt:" + std::to_string(first.line) + ": NSColorSpaceQVX: ";
  group.members.push_back(first);
  group.members.push_back({"nothing as integer", 1234, first.said});
  EXPECT_EQ(
      Mismatches(texts, "f.txt"),
      (Lines{place + "a second description of " + first.declaration,
             "f.txt:1234: NSColorSpaceQVX: a description of nothing as integer, which is not registered"}));
  texts = WholeText();
  MemberText& bare = TextOf(texts, "NSColorSpaceQVX").groups[0].members.front();
  bare.said.paragraphs.clear();
  bare.said.raises.reset();
  EXPECT_EQ(Mismatches(texts, "f.txt"), (Lines{place + "no text for " + first.declaration,
                                               place + "no \"raises:\" for " + first.declaration}));
  TextOf(texts, "NSColorSpaceQVX").groups[0].said.raises = "never";
  EXPECT_EQ(Mismatches(texts, "f.txt"), Lines{place + "no text for " + first.declaration});
  bare.said.paragraphs = {"text"};
  TextOf(texts, "NSColorSpaceQVX").groups[0].said.nil.reset();
  const Lines withoutNil = Mismatches(texts, "f.txt");
  EXPECT_EQ(withoutNil.size(), MembersOf(TheRegistry().ClassNamed("NSColorSpaceQVX")).size());
  EXPECT_EQ(withoutNil.front(), place + "no \"nil:\" for " + first.declaration);
}

TEST(Mismatches, AreClassesThatNobodyRegistered) {
  std::vector<ClassText> texts = WholeText();
  texts.push_back({"NSNothing", 77, false, {}, {}});
  texts.push_back({"NSNothingOfTheHost", 78, true, {}, {}});
  texts.push_back({"MemoryBlock", 79, false, {}, {}});
  EXPECT_EQ(Mismatches(texts, "f.txt"),
            (Lines{"f.txt:77: a description of NSNothing, which is not registered",
                   "f.txt:79: a description of MemoryBlock, which is not registered"}));
  texts = WholeText();
  texts.push_back({"Dictionary", 80, true, {}, {}});
  const Lines found = Mismatches(texts, "f.txt");
  EXPECT_EQ(found.size(), MembersOf(TheRegistry().ClassNamed("Dictionary")).size());
  for (const std::string& line : found)
    EXPECT_TRUE(line.starts_with("f.txt: Dictionary: no description of the registered member ")) << line;
}

TEST(Members, SayWhatTheyAreAndHowTheyAreWritten) {
  const auto told = [](const char* cls, const std::string& key) {
    for (const Member& member : MembersOf(TheRegistry().ClassNamed(cls))) {
      if (member.Key() == key) {
        return Lines{member.Name(), member.Kind(), member.Signature(), member.ParameterNames(),
                     member.Defaults()};
      }
    }
    return Lines{"none"};
  };
  EXPECT_EQ(told("MemoryBlock", "Size"), (Lines{"Size", "property", "Size as integer", "", ""}));
  EXPECT_EQ(told("FolderItem", "Name"), (Lines{"Name", "property, read only", "Name as string", "", ""}));
  const std::string make = "Constructor(message as string = \"\", errorNumber as integer = 0)";
  EXPECT_EQ(told("RuntimeException", make), (Lines{"Constructor", "constructor", make, "message, errorNumber",
                                                   "message is , errorNumber is 0 where left out"}));
  EXPECT_EQ(told("TextFile", "ReadAll as string"), (Lines{"ReadAll", "method", "ReadAll as string", "", ""}));
  EXPECT_EQ(told("SpecialFolder", "Temporary as FolderItem"),
            (Lines{"Temporary", "shared method", "Temporary as FolderItem", "", ""}));
  EXPECT_EQ(told("Encodings", "ASCII"), (Lines{"ASCII", "constant", "ASCII=&h0600", "", ""}));
}

}  // namespace
}  // namespace hostrun
