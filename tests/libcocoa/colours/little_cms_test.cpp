// tests/libcocoa/colours/little_cms_test.cpp - what Little CMS may have of memory, to the byte.
#include <gtest/gtest.h>
#include <lcms2_plugin.h>
#include <malloc.h>

#include <thread>

extern "C" {
#include "libcocoa/profiles/little_cms.h"
}

namespace {

class LittleCMSMemory : public testing::Test {
 protected:
  ~LittleCMSMemory() override {
    QVXUnlimitLittleCMS();
    EXPECT_EQ(QVXLittleCMSMemory(), before_);
  }
  const cmsContext context_ = QVXLittleCMS();
  const std::int64_t before_ = QVXLittleCMSMemory();
};

TEST_F(LittleCMSMemory, IsWhatItsBlocksHave) {
  ASSERT_NE(context_, nullptr);
  EXPECT_EQ(QVXLittleCMS(), context_);
  void* const one = _cmsMalloc(context_, 1000);
  const auto size = static_cast<std::int64_t>(malloc_usable_size(one));
  EXPECT_EQ(QVXLittleCMSMemory(), before_ + size);
  void* const larger = _cmsRealloc(context_, one, 5000);
  EXPECT_EQ(QVXLittleCMSMemory(), before_ + static_cast<std::int64_t>(malloc_usable_size(larger)));
  void* const other = _cmsMalloc(context_, 1000);
  EXPECT_GE(QVXLittleCMSMemory(), before_ + 6000);
  _cmsFree(context_, larger);
  EXPECT_EQ(QVXLittleCMSMemory(), before_ + static_cast<std::int64_t>(malloc_usable_size(other)));
  _cmsFree(context_, other);
}

TEST_F(LittleCMSMemory, IsEachThreadsOwn) {
  std::thread([&] {
    EXPECT_EQ(QVXLittleCMSMemory(), 0);
    void* const block = _cmsMalloc(context_, 1000);
    EXPECT_GE(QVXLittleCMSMemory(), 1000);
    _cmsFree(context_, block);
  }).join();
}

TEST_F(LittleCMSMemory, GoesAsFarAsItsLimitAndNoFurther) {
  QVXLimitLittleCMS(5000);
  EXPECT_EQ(_cmsMalloc(context_, 5001), nullptr);
  void* const block = _cmsMalloc(context_, 5000);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(_cmsMalloc(context_, 100), nullptr);
  _cmsFree(context_, block);
}

TEST_F(LittleCMSMemory, GrowsInPlaceAsFarAsItsLimitAndNoFurther) {
  void* const before = _cmsMalloc(context_, 300);  // does not count
  QVXLimitLittleCMS(5000);
  void* const block = _cmsMalloc(context_, 1000);
  EXPECT_EQ(_cmsRealloc(context_, block, 5001), nullptr);
  void* const larger = _cmsRealloc(context_, block, 5000);
  EXPECT_NE(larger, nullptr);
  _cmsFree(context_, larger);
  _cmsFree(context_, before);
}

TEST_F(LittleCMSMemory, HasNoLimitOnceThatIsTakenAway) {
  QVXLimitLittleCMS(100);
  QVXUnlimitLittleCMS();
  void* const block = _cmsMalloc(context_, 1'000'000);
  EXPECT_NE(block, nullptr);
  _cmsFree(context_, block);
}

}  // namespace
