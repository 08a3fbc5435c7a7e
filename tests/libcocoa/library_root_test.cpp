// tests/libcocoa/library_root_test.cpp - where GNUstep's libraries were unpacked, told by the path of one.
#include <gtest/gtest.h>

#include <string>

extern "C" {
#include "libcocoa/runtime/library_root.h"
}

namespace {

std::string RootOf(const std::string& library) {
  return library.substr(0, QVXRootOfLibrary(library.c_str()));
}

TEST(RootOfLibrary, IsTheFolderThatTheSystemsFoldersLieIn) {
  EXPECT_EQ(RootOf("/opt/here/usr/lib/libgnustep-base.so.1.28"), "/opt/here");
  EXPECT_EQ(RootOf("/a/usr/lib/libgnustep-base.so"), "/a");
}

TEST(RootOfLibrary, IsTheInnermostOfSeveral) {
  EXPECT_EQ(RootOf("/usr/lib/libgnustep-base.so.copies/b/usr/lib/libgnustep-base.so.1.28"),
            "/usr/lib/libgnustep-base.so.copies/b");
}

TEST(RootOfLibrary, IsNoneInTheSystemItselfOrElsewhere) {
  EXPECT_EQ(RootOf("/usr/lib/libgnustep-base.so.1.28"), "");
  EXPECT_EQ(RootOf("/opt/lib/libgnustep-base.so.1.28"), "");
  EXPECT_EQ(RootOf("/opt/usr/lib/libgnustep-gui.so.0.29"), "");
  EXPECT_EQ(RootOf(""), "");
}

}  // namespace
