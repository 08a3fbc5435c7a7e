// bench/rows_factories.cpp - making colours: new native ones and ones that are wrapped already.
#include "bench/bare_frame.h"
#include "bench/rows.h"

namespace bench {

namespace {

using Factory = qvx::REALobject(double, double, double, double);

// What a factory of a wrapped colour can't do without.
template <typename Send>
void AddCachedLimit(Bundle& bundle, const char* name, qvx::REALobject wrapper, Send send) {
  const Platform& platform = bundle.GetPlatform();
  void (*volatile lock)(void*) = &Lock;
  AddRow(bundle, {.name = name}, [=, &platform, instances = bundle.Instances()] {
    const void* found = nullptr;
    auto body = [&] {
      found = platform.CFDictionaryGetValue(instances, send());
      lock(const_cast<void*>(found));
    };
    benchmark::DoNotOptimize(InBareFrame(platform, body));
    Unlock(wrapper);
  });
}

void AddPredefined(Bundle& bundle) {
  const Platform& platform = bundle.GetPlatform();
  const id colourClass = platform.objc_getClass("NSColor");
  const SEL redColor = platform.sel_registerName("redColor");
  auto* const predefined = bundle.Function<qvx::REALobject()>("NSColorQVX", "redColor as");
  const qvx::REALobject wrapper = predefined();  // stays wrapped

  AddCachedLimit(bundle, "frame + send + lookup + lock", wrapper,
                 [&platform, colourClass, redColor] { return platform.Send<id>(colourClass, redColor); });
  AddRow(
      bundle,
      {.name = "predefined colour, wrapped",
       .limit = "frame + send + lookup + lock",
       .target = 1.25,
       .guard = Guard::kScripted},
      [=, calls = bundle.Calls(), selector = SelectorOf(platform, "redColor")] {
        Unlock(PrescribedWrapper(calls, colourClass, selector, "NSColorQVX"));
      },
      [=] { Unlock(predefined()); });
}

void AddNew(Bundle& bundle) {
  const Platform& platform = bundle.GetPlatform();
  const id colourClass = platform.objc_getClass("NSColor");
  const SEL selector = platform.sel_registerName("colorWithDeviceRed:green:blue:alpha:");
  const auto send = [&platform, colourClass, selector] {
    return platform.Send<id>(colourClass, selector, 0.1F, 0.2F, 0.3F, 1.0F);
  };
  AddRow<Pooled::kYes>(bundle, {.name = "new native colour"}, [send] { benchmark::DoNotOptimize(send()); });
  AddRow<Pooled::kYes>(bundle, {.name = "frame + new native colour"}, [&platform, send] {
    id colour = nullptr;
    auto body = [&] { colour = send(); };
    benchmark::DoNotOptimize(InBareFrame(platform, body));
    benchmark::DoNotOptimize(colour);
  });
  auto* const make = bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB");
  const auto prescribed = [calls = bundle.Calls(), colourClass,
                           device = SelectorOf(platform, "colorWithDeviceRed:green:blue:alpha:")] {
    return PrescribedFromFour(calls, colourClass, device, 0.1, 0.2, 0.3, 1.0);
  };
  AddRow<Pooled::kYes>(
      bundle,
      {.name = "new colour, made and freed", .limit = "frame + new native colour", .guard = Guard::kScripted},
      [=] { Unlock(prescribed()); }, [make] { Unlock(make(0.1, 0.2, 0.3, 1.0)); });
  auto* const red = bundle.Function<double(qvx::REALobject, std::int32_t)>("NSColorQVX", "redComponent");
  AddRow<Pooled::kYes>(
      bundle, {.name = "colour made, read and freed"},
      [=, calls = bundle.Calls(), selector = SelectorOf(platform, "redComponent")] {
        void* const colour = prescribed();
        void* const native = NativeOf(static_cast<qvx::REALobject>(colour));
        benchmark::DoNotOptimize(PrescribedDouble(calls, native, selector));
        Unlock(colour);
      },
      [make, red] {
        const qvx::REALobject colour = make(0.1, 0.2, 0.3, 1.0);
        benchmark::DoNotOptimize(red(colour, 0));
        Unlock(colour);
      });
}

// Only the scripted platform answers the same colour for the same components.
void AddWrappedFromDoubles(Bundle& bundle) {
  const Platform& platform = bundle.GetPlatform();
  const id colourClass = platform.objc_getClass("NSColor");
  const SEL selector = platform.sel_registerName("colorWithCalibratedRed:green:blue:alpha:");
  auto* const make = bundle.Function<Factory>("NSColorQVX", "colorWithCalibratedRGB");
  const qvx::REALobject wrapper = make(0.1, 0.2, 0.3, 1.0);
  AddCachedLimit(bundle, "frame + send of four + lookup + lock", wrapper, [&platform, colourClass, selector] {
    return platform.Send<id>(colourClass, selector, 0.1F, 0.2F, 0.3F, 1.0F);
  });
  AddRow(
      bundle,
      {.name = "factory of four doubles, wrapped",
       .limit = "frame + send of four + lookup + lock",
       .target = 1.25,
       .guard = Guard::kScripted},
      [=, calls = bundle.Calls(),
       message = SelectorOf(platform, "colorWithCalibratedRed:green:blue:alpha:")] {
        Unlock(PrescribedFromFour(calls, colourClass, message, 0.1, 0.2, 0.3, 1.0));
      },
      [make] { Unlock(make(0.1, 0.2, 0.3, 1.0)); });
}

void AddFromSpace(Bundle& bundle, std::size_t count) {
  using FromSpace = qvx::REALobject(qvx::REALobject, qvx::REALarray);
  const qvx::REALobject space = bundle.Function<qvx::REALobject()>("NSColorSpaceQVX", "sRGBColorSpace as")();
  const qvx::REALarray components = NewArrayOfDoubles(std::vector<double>(count, 0.5));
  auto* const make = bundle.Function<FromSpace>("NSColorQVX", "colorWithColorSpace(");
  const Platform& platform = bundle.GetPlatform();
  AddRow<Pooled::kYes>(
      bundle,
      {.name = "colorWithColorSpace, " + std::to_string(count) + " components",
       .limit = "frame + new native colour",
       .guard = count == 4 ? Guard::kScripted : Guard::kNo},
      [=, calls = bundle.Calls(), colourClass = platform.objc_getClass("NSColor"), native = NativeOf(space),
       selector = SelectorOf(platform, "colorWithColorSpace:components:count:")] {
        Unlock(PrescribedFromSpace(calls, colourClass, selector, native, components));
      },
      [=] { Unlock(make(space, components)); });
}

}  // namespace

void AddFactoryRows(Bundle& bundle) {
  AddPredefined(bundle);
  if (bundle.GetPlatform().name == "scripted") AddWrappedFromDoubles(bundle);
  AddNew(bundle);
  AddFromSpace(bundle, 4);
  AddFromSpace(bundle, 20);
}

}  // namespace bench
