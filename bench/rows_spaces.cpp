// bench/rows_spaces.cpp - asking colour spaces.
#include "bench/rows.h"

namespace bench {

void AddColourSpaceRows(Bundle& bundle) {
  auto* const sRGB = bundle.Function<qvx::REALobject()>("NSColorSpaceQVX", "sRGBColorSpace as");
  const qvx::REALobject space = sRGB();  // stays wrapped
  AddRow(bundle,
         {.name = "predefined space, wrapped",
          .limit = "frame + send + lookup + lock",
          .guard = Guard::kScripted},
         [=] { Unlock(sRGB()); });

  auto* const model = bundle.Function<std::int32_t(qvx::REALobject)>("NSColorSpaceQVX", "colorSpaceModel");
  AddRow(bundle, {.name = "model of a space", .limit = "frame + send", .guard = Guard::kBoth},
         [=] { benchmark::DoNotOptimize(model(space)); });

  auto* const name = bundle.Function<qvx::REALstring(qvx::REALobject)>("NSColorSpaceQVX", "localizedName");
  AddRow<Pooled::kYes>(
      bundle,
      {.name = "name of a space", .limit = "CFStringGetCString + build, 10 units", .guard = Guard::kScripted},
      [=] { Unlock(name(space)); });

  using Factory = qvx::REALobject(double, double, double, double);
  const qvx::REALobject colour =
      bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB")(0.25, 0.5, 0.75, 1.0);
  auto* const colorSpace = bundle.Function<qvx::REALobject(qvx::REALobject)>("NSColorQVX", "colorSpace as");
  colorSpace(colour);  // stays wrapped
  AddRow<Pooled::kYes>(
      bundle,
      {.name = "space of a colour", .limit = "frame + send + lookup + lock", .guard = Guard::kScripted},
      [=] { Unlock(colorSpace(colour)); });
}

}  // namespace bench
