// bench/rows_spaces.cpp - asking colour spaces.
#include "bench/rows.h"

namespace bench {

void AddColourSpaceRows(Bundle& bundle) {
  const Platform& platform = bundle.GetPlatform();
  const PrescribedCalls* const calls = bundle.Calls();
  auto* const sRGB = bundle.Function<qvx::REALobject()>("NSColorSpaceQVX", "sRGBColorSpace as");
  const qvx::REALobject space = sRGB();  // stays wrapped
  AddRow(
      bundle,
      {.name = "predefined space, wrapped",
       .limit = "frame + send + lookup + lock",
       .guard = Guard::kScripted},
      [=, selector = SelectorOf(platform, "sRGBColorSpace")] {
        Unlock(PrescribedOfClass(calls, "NSColorSpace", selector, "NSColorSpaceQVX"));
      },
      [=] { Unlock(sRGB()); });

  auto* const model = bundle.Function<std::int32_t(qvx::REALobject)>("NSColorSpaceQVX", "colorSpaceModel");
  AddRow(
      bundle,
      {.name = "model of a space",
       .limit = "frame + send",
       .pathTarget = Row::kGetter,
       .guard = Guard::kBoth},
      [=, native = NativeOf(space), selector = SelectorOf(platform, "colorSpaceModel")] {
        benchmark::DoNotOptimize(PrescribedInteger(calls, native, selector));
      },
      [=] { benchmark::DoNotOptimize(model(space)); });

  auto* const name = bundle.Function<qvx::REALstring(qvx::REALobject)>("NSColorSpaceQVX", "localizedName");
  AddRow<Pooled::kYes>(
      bundle,
      {.name = "name of a space", .limit = "CFStringGetCString + build, 10 units", .guard = Guard::kScripted},
      [=, native = NativeOf(space), selector = SelectorOf(platform, "localizedName")] {
        Unlock(PrescribedString(calls, native, selector));
      },
      [=] { Unlock(name(space)); });

  using Factory = qvx::REALobject(double, double, double, double);
  const qvx::REALobject colour =
      bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB")(0.25, 0.5, 0.75, 1.0);
  auto* const colorSpace = bundle.Function<qvx::REALobject(qvx::REALobject)>("NSColorQVX", "colorSpace as");
  colorSpace(colour);  // stays wrapped
  AddRow<Pooled::kYes>(
      bundle,
      {.name = "space of a colour", .limit = "frame + send + lookup + lock", .guard = Guard::kScripted},
      [=, native = NativeOf(colour), selector = SelectorOf(platform, "colorSpace")] {
        Unlock(PrescribedWrapper(calls, native, selector, "NSColorSpaceQVX"));
      },
      [=] { Unlock(colorSpace(colour)); });
}

}  // namespace bench
