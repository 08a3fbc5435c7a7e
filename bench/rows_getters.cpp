// bench/rows_getters.cpp - reading a colour: the bare send, the bare frame, and the bundle's getters.
#include "bench/bare_frame.h"
#include "bench/rows.h"

namespace bench {

namespace {

using Factory = qvx::REALobject(double, double, double, double);
using DoubleGetter = double(qvx::REALobject, std::int32_t);

[[gnu::noinline]] int PlainFunction(int value) {
  asm volatile("");
  return value;
}

void AddLimits(Bundle& bundle, id colour) {
  const Platform& platform = bundle.GetPlatform();
  const SEL redComponent = platform.sel_registerName("redComponent");
  const SEL getRed = platform.sel_registerName("getRed:green:blue:alpha:");

  int (*volatile plain)(int) = &PlainFunction;
  AddRow(bundle, {.name = "indirect call"}, [plain] { benchmark::DoNotOptimize(plain(1)); });
  AddRow(bundle, {.name = "send"}, [&platform, colour, redComponent] {
    benchmark::DoNotOptimize(platform.Send<float>(colour, redComponent));
  });
  AddRow(bundle, {.name = "empty frame"}, [&platform] {
    auto nothing = [] {};
    benchmark::DoNotOptimize(InBareFrame(platform, nothing));
  });
  AddRow(bundle, {.name = "frame + send"}, [&platform, colour, redComponent] {
    double result = 0.0;
    auto send = [&] { result = double{platform.Send<float>(colour, redComponent)}; };
    benchmark::DoNotOptimize(InBareFrame(platform, send));
    benchmark::DoNotOptimize(result);
  });
  AddRow(bundle, {.name = "frame + send by reference"}, [&platform, colour, getRed] {
    float values[4];
    auto send = [&] { platform.Send<void>(colour, getRed, values, values + 1, values + 2, values + 3); };
    benchmark::DoNotOptimize(InBareFrame(platform, send));
    benchmark::DoNotOptimize(values);
  });
}

}  // namespace

void AddGetterRows(Bundle& bundle) {
  const qvx::REALobject self =
      bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB")(0.25, 0.5, 0.75, 1.0);
  AddLimits(bundle, NativeOf(self));

  const Platform& platform = bundle.GetPlatform();
  const PrescribedCalls* const calls = bundle.Calls();
  void* const native = NativeOf(self);
  const auto selector = [&platform](const char* name) { return SelectorOf(platform, name); };

  auto* const redComponent = bundle.Function<DoubleGetter>("NSColorQVX", "redComponent");
  AddRow(
      bundle,
      {.name = "double getter",
       .limit = "frame + send",
       .target = 1.10,
       .pathTarget = Row::kGetter,
       .guard = Guard::kBoth},
      [=, red = selector("redComponent")] { benchmark::DoNotOptimize(PrescribedDouble(calls, native, red)); },
      [=] { benchmark::DoNotOptimize(redComponent(self, 0)); });

  auto* const numberOfComponents =
      bundle.Function<std::int32_t(qvx::REALobject, std::int32_t)>("NSColorQVX", "numberOfComponents");
  void* const count = selector("numberOfComponents");
  AddRow(
      bundle,
      {.name = "integer getter", .limit = "frame + send", .pathTarget = Row::kGetter, .guard = Guard::kBoth},
      [=] { benchmark::DoNotOptimize(PrescribedInteger(calls, native, count)); },
      [=] { benchmark::DoNotOptimize(numberOfComponents(self, 0)); });

  auto* const colorValue =
      bundle.Function<qvx::REALcolor(qvx::REALobject, std::int32_t)>("NSColorQVX", "colorValue");
  void* const getRed = selector("getRed:green:blue:alpha:");
  AddRow(
      bundle,
      {.name = "colour value",
       .limit = "frame + send by reference",
       .pathTarget = Row::kGetter,
       .guard = Guard::kBoth},
      [=] { benchmark::DoNotOptimize(PrescribedColour(calls, native, getRed)); },
      [=] { benchmark::DoNotOptimize(colorValue(self, 0)); });

  auto* const getRGB =
      bundle.Function<void(qvx::REALobject, double*, double*, double*)>("NSColorQVX", "getRGB");
  AddRow(
      bundle,
      {.name = "three components by reference", .limit = "frame + send by reference", .guard = Guard::kBoth},
      [=] {
        double values[3];
        PrescribedThree(calls, native, getRed, values, values + 1, values + 2);
        benchmark::DoNotOptimize(values);
      },
      [=] {
        double values[3];
        getRGB(self, values, values + 1, values + 2);
        benchmark::DoNotOptimize(values);
      });

  auto* const components = bundle.Function<qvx::REALarray(qvx::REALobject)>("NSColorQVX", "Components");
  AddRow(
      bundle,
      {.name = "array of components", .limit = "frame + send by reference", .guard = Guard::kScripted},
      [=, get = selector("getComponents:")] { Unlock(PrescribedComponents(calls, native, count, get)); },
      [=] { Unlock(components(self)); });
}

}  // namespace bench
