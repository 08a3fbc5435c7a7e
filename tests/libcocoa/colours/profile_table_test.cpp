// tests/libcocoa/colours/profile_table_test.cpp - the table of open profiles and the cache of transforms:
// locked while somebody looks, and in order when two open the same.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>

#include "tests/libcocoa/colours/damage.h"

extern "C" {
#include "libcocoa/profiles/colour_profiles.h"
#include "libcocoa/profiles/hash.h"
#include "libcocoa/profiles/little_cms.h"
}

namespace {

// What this thread does with mutexes and with read-write locks.
struct Locks {
  const void* first = nullptr;  // the mutex that was locked or unlocked first
  const void* last = nullptr;   // and last
  int locked = 0;               // how often the first one
  int unlocked = 0;
  int read = 0;  // how often any read-write lock
  int written = 0;
  int left = 0;
};
thread_local Locks* locks = nullptr;                // for who wants to know
thread_local std::function<void()> whileOpening{};  // is run once, when Little CMS opens a profile

template <typename Function>
Function* Own(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void Note(const void* mutex, int Locks::*number) {
  if (locks == nullptr) return;
  if (locks->first == nullptr) locks->first = mutex;
  locks->last = mutex;
  if (mutex == locks->first) ++(locks->*number);
}

void Note(int Locks::*number) {
  if (locks != nullptr) ++(locks->*number);
}

}  // namespace

// Take the places of the C library's own and of Little CMS's, which they count and call.
extern "C" {
int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static auto* const own = Own<decltype(pthread_mutex_lock)>("pthread_mutex_lock");
  Note(mutex, &Locks::locked);
  return own(mutex);
}
int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  static auto* const own = Own<decltype(pthread_mutex_unlock)>("pthread_mutex_unlock");
  Note(mutex, &Locks::unlocked);
  return own(mutex);
}
int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept {
  static auto* const own = Own<decltype(pthread_rwlock_rdlock)>("pthread_rwlock_rdlock");
  Note(&Locks::read);
  return own(lock);
}
int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
  static auto* const own = Own<decltype(pthread_rwlock_wrlock)>("pthread_rwlock_wrlock");
  Note(&Locks::written);
  return own(lock);
}
int pthread_rwlock_unlock(pthread_rwlock_t* lock) noexcept {
  static auto* const own = Own<decltype(pthread_rwlock_unlock)>("pthread_rwlock_unlock");
  Note(&Locks::left);
  return own(lock);
}
cmsHPROFILE cmsOpenProfileFromMemTHR(cmsContext context, const void* bytes, cmsUInt32Number size) {
  static auto* const own = Own<decltype(cmsOpenProfileFromMemTHR)>("cmsOpenProfileFromMemTHR");
  if (const auto run = std::exchange(whileOpening, nullptr)) run();
  return own(context, bytes, size);
}
}

namespace {

using damage::Bytes;

// The profile of sRGB's colours or another's, by another maker for each number: none is open already.
Bytes ByMaker(const char* name, std::uint8_t maker) {
  Bytes bytes = damage::readFile(std::filesystem::path(QVX_ICC_FOLDER) / name);
  bytes.at(50) = maker;
  return bytes;
}

QVXProfile* Opened(const Bytes& bytes) {
  return QVXProfileOpen(bytes.data(), bytes.size());
}

template <typename Body>
Locks LocksOf(const Body& body, const void* first = nullptr) {
  Locks found;
  found.first = first;
  locks = &found;
  body();
  locks = nullptr;
  return found;
}

class ProfileTable : public testing::Test {
 protected:
  ProfileTable() {
    for (int which = 0; which < QVXBuiltInCount; ++which) QVXProfileBuiltIn(static_cast<QVXBuiltIn>(which));
  }
  // How often the table is locked, which has to be as often as it is unlocked.
  template <typename Body>
  int TimesLocked(const Body& body) const {
    const Locks found = LocksOf(body, table_);
    EXPECT_EQ(found.locked, found.unlocked);
    return found.locked;
  }
  const void* const table_ = LocksOf([] { QVXProfileFromHandle(nullptr); }).first;
};

TEST_F(ProfileTable, IsLockedWhileItIsLookedAt) {
  const Bytes bytes = ByMaker("a98.icc", 1);
  QVXProfile* profile = nullptr;
  ASSERT_NE(table_, nullptr);
  EXPECT_EQ(TimesLocked([&] { profile = Opened(bytes); }), 3) << "to look, for a number, to enter it";
  EXPECT_EQ(TimesLocked([&] { Opened(bytes); }), 1);
  EXPECT_EQ(TimesLocked([&] { QVXProfileFromHandle(profile); }), 1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(TimesLocked([&] { QVXProfileRelease(profile); }), 1);
}

TEST_F(ProfileTable, SharesWhatAnotherHasOpenedMeanwhile) {
  const Bytes bytes = ByMaker("a98.icc", 2);
  const std::int64_t before = QVXLittleCMSMemory();
  QVXProfile* other = nullptr;
  whileOpening = [&] { other = Opened(bytes); };
  QVXProfile* const one = Opened(bytes);
  ASSERT_NE(one, nullptr);
  EXPECT_EQ(other, one);
  const std::int64_t ofBoth = QVXLittleCMSMemory();
  QVXProfileRelease(one);
  EXPECT_EQ(QVXLittleCMSMemory(), ofBoth);
  QVXProfileRelease(other);
  EXPECT_EQ(QVXProfileFromHandle(one), nullptr);
  EXPECT_EQ(QVXLittleCMSMemory(), before);
}

TEST_F(ProfileTable, IgnoresWhatLiesBehindAProfile) {
  const Bytes bytes = ByMaker("sgray.icc", 5);
  QVXProfile* const one = Opened(bytes);
  for (const int behind : {1, 2}) {
    Bytes longer = bytes;
    longer.push_back(static_cast<std::uint8_t>(behind));
    EXPECT_EQ(Opened(longer), one) << behind;
    QVXProfileRelease(one);
  }
  QVXProfileRelease(one);
}

// Pieces of four bytes after which a hash that began with `before` is the same.
std::pair<std::uint32_t, std::uint32_t> PiecesOfOneHash(std::uint32_t before) {
  std::unordered_map<std::uint32_t, std::uint32_t> pieces;
  for (std::uint32_t i = 0; i < 1'000'000; ++i) {
    const std::uint32_t piece = i * 2654435761U;
    std::uint32_t hash = before;
    for (unsigned shift = 0; shift < 32; shift += 8) hash = QVXHashWith(hash, (piece >> shift) & 0xFFU);
    if (const auto [place, isNew] = pieces.emplace(hash, piece); !isNew) return {place->second, piece};
  }
  return {};
}

// The bytes with others from `at` on.
Bytes With(Bytes bytes, std::size_t at, std::uint32_t piece) {
  std::memcpy(&bytes.at(at), &piece, sizeof piece);
  return bytes;
}

TEST_F(ProfileTable, TellsProfilesOfOneHashApart) {
  Bytes bytes = ByMaker("sgray.icc", 6);
  const std::size_t end = bytes.size();
  bytes.resize(end + 4);  // which belong to the profile, and say nothing
  bytes.at(2) = static_cast<std::uint8_t>(bytes.size() >> 8U);
  bytes.at(3) = static_cast<std::uint8_t>(bytes.size());
  constexpr std::size_t kMaker = 48;
  for (const std::size_t at : {kMaker, end}) {
    std::uint32_t before = QVXHashOfNothing;
    for (std::size_t i = 0; i < at; ++i) {
      if ((i < 24 || i >= 36) && (i < 44 || i >= 48) && (i < 64 || i >= 68) && (i < 84 || i >= 100))
        before = QVXHashWith(before, bytes[i]);
    }
    const auto [piece, otherPiece] = PiecesOfOneHash(before);
    QVXProfile* const one = Opened(With(bytes, at, piece));
    QVXProfile* const other = Opened(With(bytes, at, otherPiece));
    ASSERT_NE(one, nullptr);
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(QVXProfileHash(one), QVXProfileHash(other)) << at;
    EXPECT_NE(one, other) << at;
    QVXProfileRelease(one);
    QVXProfileRelease(other);
  }
}

TEST_F(ProfileTable, TakesProfilesOf32MiBAtMost) {
  constexpr std::size_t kMost = std::size_t{32} << 20U;
  const Bytes bytes = ByMaker("sgray.icc", 3);
  const std::unique_ptr<void, decltype(&std::free)> memory(std::calloc(kMost + 1, 1), &std::free);
  ASSERT_NE(memory, nullptr);
  std::copy(bytes.begin(), bytes.end(), static_cast<std::uint8_t*>(memory.get()));
  EXPECT_EQ(QVXProfileOpen(memory.get(), kMost + 1), nullptr);
  QVXProfile* const profile = QVXProfileOpen(memory.get(), kMost);
  EXPECT_NE(profile, nullptr);
  QVXProfileRelease(profile);
}

TEST_F(ProfileTable, HasTransformsThatAreLockedWhileTheyAreLookedFor) {
  const QVXProfile* const adobe = QVXProfileBuiltIn(QVXBuiltInAdobeRGB);
  QVXProfile* const profile = Opened(ByMaker("a98.icc", 4));
  const double in[3] = {0.5, 0.5, 0.5};
  double out[3] = {};
  const auto convert = [&] { EXPECT_TRUE(QVXConvert(profile, in, adobe, out)); };

  const Locks made = LocksOf(convert);
  EXPECT_EQ(made.read, 3) << "it is not there, it still isn't, it is used";
  EXPECT_EQ(made.written, 1);
  EXPECT_EQ(made.left, 4);
  EXPECT_NE(made.first, nullptr);
  EXPECT_EQ(made.last, made.first) << "one at a time makes them";

  const Locks used = LocksOf(convert);
  EXPECT_EQ(used.read, 1);
  EXPECT_EQ(used.written, 0);
  EXPECT_EQ(used.left, 1);
  EXPECT_EQ(used.first, nullptr);

  const Locks forgotten = LocksOf([&] { QVXProfileRelease(profile); });
  EXPECT_EQ(forgotten.read, 0);
  EXPECT_EQ(forgotten.left, forgotten.written);
  EXPECT_GT(forgotten.written, 0);
}

}  // namespace
