// tests/hostrun/unit/folder_items_test.cpp - the reference to a file that a plugin asks the host for.
#include "hostrun/host/folder_items.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>

#include "hostrun/host/services.h"
#include "tests/hostrun/unit/temporary_folder.h"

namespace hostrun {
namespace {

// As the contract lays it out.
struct LeafName {
  std::uint16_t length = 77;
  std::array<std::uint16_t, 255> units{};
};

class FileReferences : public testing::Test {
 protected:
  FileReferences() { std::ofstream(folder_.Path("there")) << "text"; }

  ObjectRef Item(const std::string& name) const {
    return ObjectRef::Adopt(NewFolderItem(folder_.Path(name)));
  }
  static bool Ask(Object* item, LeafName* leaf, bool reference = true) {
    using Service = bool (*)(Object*, void*, void*);
    std::array<char, 80> room{};
    return reinterpret_cast<Service>(ResolveService("REALFSRefFromFolderItem"))(
        item, reference ? room.data() : nullptr, leaf);
  }

 private:
  TemporaryFolder folder_;
};

TEST_F(FileReferences, LeadToWhatIsThere) {
  EXPECT_TRUE(Ask(Item("there").get(), nullptr));
  EXPECT_FALSE(Ask(Item("missing").get(), nullptr));
  EXPECT_FALSE(Ask(Item("there").get(), nullptr, false));
  EXPECT_FALSE(Ask(nullptr, nullptr));
}

TEST_F(FileReferences, LeadToTheFolderOfWhatIsToBeMadeBesideItsName) {
  LeafName leaf;
  ASSERT_TRUE(Ask(Item("gr\u00FCn\U0001F600").get(), &leaf));
  const std::u16string wanted = u"gr\u00FCn\U0001F600";
  ASSERT_EQ(leaf.length, wanted.size());
  EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), leaf.units.begin()));
  EXPECT_TRUE(Ask(Item("there").get(), &leaf));
  EXPECT_EQ(leaf.length, 5);
}

TEST_F(FileReferences, AreNoneWithoutAFolderOrWithANameThatIsNone) {
  LeafName leaf;
  EXPECT_FALSE(Ask(Item("missing/file").get(), &leaf));
  EXPECT_FALSE(Ask(Item("there/file").get(), &leaf));
  EXPECT_FALSE(Ask(Item("\xFF").get(), &leaf));
  EXPECT_EQ(leaf.length, 77);
}

TEST_F(FileReferences, HaveNamesOf255UnitsAtMost) {
  LeafName leaf;
  EXPECT_TRUE(Ask(Item(std::string(255, 'x')).get(), &leaf));
  EXPECT_EQ(leaf.length, 255);
  EXPECT_FALSE(Ask(Item(std::string(256, 'x')).get(), &leaf));
}

}  // namespace
}  // namespace hostrun
