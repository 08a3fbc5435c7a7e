// bench/rows_scale.cpp - conversions and destructions while many wrappers live.
#include <algorithm>
#include <memory>
#include <random>

#include "bench/bare_frame.h"
#include "bench/rows.h"

namespace bench {

namespace {

using Factory = qvx::REALobject(double, double, double, double);

std::string Name(const char* what, long live) {
  return std::string(what) + ", " + std::to_string(live) + " live";
}

// The wrappers in an order that no prefetcher knows.
struct Walk {
  std::vector<qvx::REALobject> wrappers;
  std::size_t next = 0;

  qvx::REALobject Next() {
    if (next == wrappers.size()) next = 0;
    return wrappers[next++];
  }
};

std::shared_ptr<Walk> MakeLive(Bundle& bundle, long live) {
  bundle.Activate();
  Pool pool(bundle.GetPlatform());
  auto* const make = bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB");
  auto walk = std::make_shared<Walk>();
  for (long i = 0; i < live; ++i) {
    walk->wrappers.push_back(make(0.5, 0.25, 0.125, 1.0));
    pool.Turn();
  }
  std::shuffle(walk->wrappers.begin(), walk->wrappers.end(), std::mt19937(1));
  return walk;
}

}  // namespace

void AddScaleRows(Bundle& bundle, long live) {
  const Platform& platform = bundle.GetPlatform();
  const std::shared_ptr<Walk> walk = MakeLive(bundle, live);
  auto* const make = bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB");
  // With its own alpha a colour answers itself: a conversion of a colour that is wrapped already.
  auto* const convert =
      bundle.Function<qvx::REALobject(qvx::REALobject, double)>("NSColorQVX", "colorWithAlphaComponent");

  const bool counted = live <= 1'000;
  const double target = live == 1'000'000 ? 2.0 : 0.0;
  const auto limit = [live](const char* what) { return live <= 1'000 ? "" : Name(what, 1'000); };
  AddRow(bundle,
         {.name = Name("conversion of one colour", live),
          .limit = limit("conversion of one colour"),
          .target = target,
          .counted = counted,
          .series = "conversion of one colour",
          .size = live},
         [convert, one = make(0.5, 0.5, 0.5, 1.0)] { Unlock(convert(one, 1.0)); });

  const SEL selector = platform.sel_registerName("colorWithAlphaComponent:");
  AddRow(bundle, {.name = Name("bare look-up of any colour", live), .counted = false},
         [walk, &platform, selector, instances = bundle.Instances()] {
           const void* found = nullptr;
           const id native = NativeOf(walk->Next());
           auto body = [&] {
             found = platform.CFDictionaryGetValue(instances, platform.Send<id>(native, selector, 1.0F));
             Lock(const_cast<void*>(found));
           };
           benchmark::DoNotOptimize(InBareFrame(platform, body));
           Unlock(const_cast<void*>(found));
         });
  AddRow(bundle,
         {.name = Name("conversion of any colour", live),
          .limit = Name("bare look-up of any colour", live),
          .counted = false,
          .series = "conversion of any colour",
          .size = live},
         [walk, convert] { Unlock(convert(walk->Next(), 1.0)); });

  AddRow<Pooled::kYes>(bundle,
                       {.name = Name("colour made and freed", live),
                        .limit = limit("colour made and freed"),
                        .counted = false,
                        .series = "colour made and freed",
                        .size = live},
                       [make] { Unlock(make(0.1, 0.2, 0.3, 1.0)); });

  // The oldest go and new ones come, so that as many live as before.
  AddRow<Pooled::kYes>(bundle,
                       {.name = Name("any colour replaced", live),
                        .limit = limit("any colour replaced"),
                        .counted = false,
                        .series = "any colour replaced",
                        .size = live},
                       [walk, make] {
                         if (walk->next == walk->wrappers.size()) walk->next = 0;
                         qvx::REALobject& wrapper = walk->wrappers[walk->next++];
                         Unlock(wrapper);
                         wrapper = make(0.1, 0.2, 0.3, 1.0);
                       });
}

}  // namespace bench
