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

  qvx::REALobject& Next() {
    if (next == wrappers.size()) next = 0;
    return wrappers[next++];
  }
};

// The two ways of making a colour: the bundle's and the prescribed one.
struct Factories {
  Factory* make;
  const PrescribedCalls* calls;
  void* colourClass;
  void* selector;

  explicit Factories(const Bundle& bundle)
      : make(bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB")),
        calls(bundle.Calls()),
        colourClass(bundle.GetPlatform().objc_getClass("NSColor")),
        selector(SelectorOf(bundle.GetPlatform(), "colorWithDeviceRed:green:blue:alpha:")) {}

  qvx::REALobject Made() const { return make(0.1, 0.2, 0.3, 1.0); }
  qvx::REALobject Prescribed() const {
    return static_cast<qvx::REALobject>(PrescribedFromFour(calls, colourClass, selector, 0.1, 0.2, 0.3, 1.0));
  }
};

// Half of the wrappers that live are the bundle's, half those of the prescribed path, because a wrapper is
// destroyed as it was made.
struct Live {
  Walk made;
  Walk prescribed;
};

std::shared_ptr<Live> MakeLive(Bundle& bundle, long count) {
  bundle.Activate();
  Pool pool(bundle.GetPlatform());
  const Factories factories(bundle);
  auto live = std::make_shared<Live>();
  for (long i = 0; i < count / 2; ++i) {
    live->made.wrappers.push_back(factories.Made());
    live->prescribed.wrappers.push_back(factories.Prescribed());
    pool.Turn();
  }
  for (Walk* const walk : {&live->made, &live->prescribed}) {
    std::shuffle(walk->wrappers.begin(), walk->wrappers.end(), std::mt19937(1));
  }
  return live;
}

// A row with that many live wrappers. The rows of a thousand are the limits of those of more.
Row ScaleRow(const char* what, long live) {
  return {.name = Name(what, live),
          .limit = live <= 1'000 ? "" : Name(what, 1'000),
          .counted = live <= 1'000,
          .series = what,
          .size = live};
}

// With its own alpha a colour answers itself: a conversion of a colour that is wrapped already.
void AddConversions(Bundle& bundle, long size, const std::shared_ptr<Live>& live) {
  const Platform& platform = bundle.GetPlatform();
  const PrescribedCalls* const calls = bundle.Calls();
  auto* const convert =
      bundle.Function<qvx::REALobject(qvx::REALobject, double)>("NSColorQVX", "colorWithAlphaComponent");
  const char* const name = "colorWithAlphaComponent:";
  void* const message = SelectorOf(platform, name);

  Row one = ScaleRow("conversion of one colour", size);
  one.target = size == 1'000'000 ? 2.0 : 0.0;
  const qvx::REALobject colour = Factories(bundle).Made();
  AddRow(
      bundle, one, [=] { Unlock(PrescribedFromOne(calls, NativeOf(colour), message, 1.0)); },
      [=] { Unlock(convert(colour, 1.0)); });

  const SEL selector = platform.sel_registerName(name);
  AddRow(bundle, {.name = Name("bare look-up of any colour", size), .counted = false},
         [live, &platform, selector, instances = bundle.Instances()] {
           const void* found = nullptr;
           const id native = NativeOf(live->made.Next());
           auto body = [&] {
             found = platform.CFDictionaryGetValue(instances, platform.Send<id>(native, selector, 1.0F));
             Lock(const_cast<void*>(found));
           };
           benchmark::DoNotOptimize(InBareFrame(platform, body));
           Unlock(const_cast<void*>(found));
         });
  Row any = ScaleRow("conversion of any colour", size);
  any.limit = Name("bare look-up of any colour", size);
  any.counted = false;
  AddRow(
      bundle, any, [=] { Unlock(PrescribedFromOne(calls, NativeOf(live->made.Next()), message, 1.0)); },
      [=] { Unlock(convert(live->made.Next(), 1.0)); });
}

}  // namespace

void AddScaleRows(Bundle& bundle, long size) {
  const std::shared_ptr<Live> live = MakeLive(bundle, size);
  AddConversions(bundle, size, live);

  const Factories factories(bundle);
  AddRow<Pooled::kYes>(
      bundle, ScaleRow("colour made and freed", size), [factories] { Unlock(factories.Prescribed()); },
      [factories] { Unlock(factories.Made()); });

  // The oldest go and new ones come, so that as many live as before.
  const auto replace = [](Walk& walk, auto make) {
    qvx::REALobject& wrapper = walk.Next();
    Unlock(wrapper);
    wrapper = make();
  };
  AddRow<Pooled::kYes>(
      bundle, ScaleRow("any colour replaced", size),
      [=] { replace(live->prescribed, [&] { return factories.Prescribed(); }); },
      [=] { replace(live->made, [&] { return factories.Made(); }); });
}

}  // namespace bench
