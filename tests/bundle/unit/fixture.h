// tests/bundle/unit/fixture.h - what every unit test starts from and is held to at its end.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/bundle/scripted/allocation.h"
#include "tests/bundle/scripted/balance.h"
#include "tests/bundle/scripted/bundle.h"
#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/exception_frames.h"
#include "tests/bundle/scripted/host.h"
#include "tests/bundle/scripted/native_object.h"
#include "tests/bundle/scripted/platform.h"
#include "tests/bundle/scripted/text.h"

namespace unit {

using namespace scripted;  // NOLINT(google-build-using-namespace): the tests' vocabulary
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Eq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsNull;
using testing::Not;
using testing::NotNull;
using testing::SizeIs;

using Lines = std::vector<std::string>;

constexpr const char* kColor = "NSColorQVX";
constexpr const char* kList = "NSColorListQVX";
constexpr const char* kSpace = "NSColorSpaceQVX";

// A bundle in which nothing has run yet. At the end of every test everything must be in balance.
class FreshBundle : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_THAT(Imbalances(), IsEmpty());
    EXPECT_TRUE(FloatingPointStackIsEmpty());
  }

  // How often the service was called.
  static int Calls(const char* service) { return Log().Count(EventKind::kService, service); }
  static int Sends(const char* selector) { return Log().Count(EventKind::kMessage, selector); }
  static int Asked(const char* service) { return Log().Count(EventKind::kResolve, service); }
  // The messages but for those of the once-only preparation.
  static Lines Messages() {
    Lines lines;
    for (const std::string& line : Log().Messages()) {
      if (line.find("respondsToSelector:") == std::string::npos && line.find("QVX]") == std::string::npos) {
        lines.push_back(line);
      }
    }
    return lines;
  }
  // Runs the preparation, so that a test sees only what it is about.
  static void Prepare() {
    host.Construct(kColor);
    Log().Clear();
  }

  static inline Host& host = TheHost();
  static inline Platform& platform = ThePlatform();
};

// The bundle as a host of version 2015.0 has started it.
class NewHost : public FreshBundle {
 protected:
  void SetUp() override { Start(2015.0L); }
};

// The bundle as a host older than 2012.0 has started it.
class OldHost : public FreshBundle {
 protected:
  void SetUp() override { Start(2011.04L); }
};

// A readable name for a parameterised test.
inline std::string Readable(std::string text) {
  for (char& character : text) {
    if (std::isalnum(static_cast<unsigned char>(character)) == 0) character = '_';
  }
  return text;
}

}  // namespace unit
