// tests/libcocoa/file_reference_table_test.cpp - what file references are made of, and the table behind them:
// who enters what, under which lock, and what it takes of memory.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <pthread.h>
#include <search.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "libcocoa/foundation/FSRef.h"
#include "tests/libcocoa/guarded.h"

namespace {

bool isExhausted = false;  // the table's memory

thread_local const pthread_mutex_t* held = nullptr;   // the one that this thread has locked last, and has
thread_local const pthread_mutex_t* table = nullptr;  // the one that was held when a path was entered
thread_local int tableLocked = 0;                     // how often

template <typename Function>
Function* Own(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Take the places of the C library's own, which they count and call.
extern "C" {
int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static auto* const own = Own<decltype(pthread_mutex_lock)>("pthread_mutex_lock");
  held = mutex;
  if (mutex == table) ++tableLocked;
  return own(mutex);
}
int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  static auto* const own = Own<decltype(pthread_mutex_unlock)>("pthread_mutex_unlock");
  if (mutex == held) held = nullptr;
  return own(mutex);
}
void* tsearch(const void* key, void** root, __compar_fn_t compare) {
  static auto* const own = Own<decltype(tsearch)>("tsearch");
  table = held;
  return isExhausted ? nullptr : own(key, root, compare);
}
}

namespace {

// Another path of the root folder for each number.
std::string Slashes(std::size_t number) {
  return std::string(200 + number, '/');  // NOLINT(modernize-return-braced-init-list): so many of them
}

OSStatus Make(const std::string& path, FSRef* ref) {
  return FSPathMakeRef(reinterpret_cast<const std::uint8_t*>(path.c_str()), ref, nullptr);
}

// A reference that has to be made, in memory that held something else.
FSRef Made(const std::string& path) {
  FSRef ref;
  std::memset(&ref, 0x5A, sizeof ref);
  EXPECT_EQ(Make(path, &ref), noErr);
  return ref;
}

std::string PathOf(const FSRef& ref) {
  std::uint8_t path[1000];
  return FSRefMakePath(&ref, path, sizeof path) == noErr ? reinterpret_cast<const char*>(path) : "none";
}

std::uint32_t IndexOf(const FSRef& ref) {
  std::uint32_t index = 0;
  std::memcpy(&index, ref.hidden + 8, sizeof index);
  return index;
}

TEST(FileReferenceTable, IsToldByATagAnIndexAndZeros) {
  struct {
    FSRef ref;
    std::uint8_t behind = 0x5A;
  } memory;
  ASSERT_EQ(Make(Slashes(0), &memory.ref), noErr);
  EXPECT_EQ(memory.behind, 0x5A);
  EXPECT_EQ(std::memcmp(memory.ref.hidden, "path/ref", 8), 0);
  for (std::size_t i = 12; i < sizeof(FSRef); ++i) EXPECT_EQ(Made(Slashes(0)).hidden[i], 0) << i;
}

TEST(FileReferenceTable, EntersEachPathOnce) {
  const std::uint32_t first = IndexOf(Made(Slashes(1)));
  EXPECT_EQ(IndexOf(Made(Slashes(1))), first);
  EXPECT_EQ(IndexOf(Made(Slashes(2))), first + 1);
  EXPECT_EQ(IndexOf(Made(Slashes(1))), first);
  EXPECT_EQ(IndexOf(Made(Slashes(3))), first + 2);
}

TEST(FileReferenceTable, HasNothingBehindTheLastPath) {
  FSRef ref = Made(Slashes(4));
  const std::uint32_t next = IndexOf(ref) + 1;
  std::memcpy(ref.hidden + 8, &next, sizeof next);
  EXPECT_EQ(PathOf(ref), "none");
}

TEST(FileReferenceTable, TakesNoMemoryForPathsThatItHas) {
  const std::string folder = std::filesystem::current_path();
  std::filesystem::current_path("/");
  const auto makeMany = [&] {
    for (int i = 0; i < 100; ++i) {
      Made(Slashes(5));
      Made("./.");
    }
  };
  makeMany();
  const std::size_t before = ::mallinfo2().uordblks;
  makeMany();
  EXPECT_LT(::mallinfo2().uordblks, before + 1000);
  std::filesystem::current_path(folder);
}

TEST(FileReferenceTable, RefusesANewPathWhenMemoryIsExhausted) {
  const FSRef known = Made(Slashes(6));
  FSRef ref;
  isExhausted = true;
  EXPECT_EQ(Make(Slashes(7), &ref), paramErr);
  isExhausted = false;
  EXPECT_EQ(PathOf(known), Slashes(6));
  EXPECT_EQ(IndexOf(Made(Slashes(7))), IndexOf(known) + 1);
}

TEST(FileReferenceTable, IsLockedWhileItIsLookedAt) {
  const FSRef ref = Made(Slashes(8));
  ASSERT_NE(table, nullptr);
  EXPECT_NE(held, table);
  tableLocked = 0;
  EXPECT_EQ(PathOf(ref), Slashes(8));
  EXPECT_EQ(tableLocked, 1);
  EXPECT_NE(held, table);
}

}  // namespace
