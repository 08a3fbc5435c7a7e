// bench/rows_colours.cpp - the platform library's own colours, without the bundle.
#include "bench/rows.h"

namespace bench {

namespace {

constexpr double kMicrosecond = 1e3;

// From components in a space, beside the factory of GNUstep's that ends in the same or a similar colour.
void AddComponents(Bundle& bundle, id colourClass, id spaceClass) {
  const Platform& platform = bundle.GetPlatform();
  const SEL calibrated = platform.sel_registerName("colorWithCalibratedRed:green:blue:alpha:");
  AddRow<Pooled::kYes>(bundle, {.name = "GNUstep's factory"}, [=, &platform] {
    benchmark::DoNotOptimize(platform.Send<id>(colourClass, calibrated, 0.1F, 0.2F, 0.3F, 1.0F));
  });
  const SEL selector = platform.sel_registerName("colorWithColorSpace:components:count:");
  for (const char* const name : {"genericRGBColorSpace", "sRGBColorSpace"}) {
    const id space = platform.Send<id>(spaceClass, platform.sel_registerName(name));
    AddRow<Pooled::kYes>(
        bundle, {.name = std::string("components in ") + name, .limit = "GNUstep's factory"}, [=, &platform] {
          static constexpr float kComponents[] = {0.1F, 0.2F, 0.3F, 1.0F};
          benchmark::DoNotOptimize(platform.Send<id>(colourClass, selector, space, &kComponents[0], 4L));
        });
  }
}

// Between two spaces with profiles, whose transform is there already.
void AddConversion(Bundle& bundle, id colourClass, id spaceClass) {
  const Platform& platform = bundle.GetPlatform();
  const id from = platform.Send<id>(
      colourClass, platform.sel_registerName("colorWithSRGBRed:green:blue:alpha:"), 0.1F, 0.2F, 0.3F, 1.0F);
  platform.Send<id>(from, platform.sel_registerName("retain"));
  const id to = platform.Send<id>(spaceClass, platform.sel_registerName("adobeRGB1998ColorSpace"));
  const SEL convert = platform.sel_registerName("colorUsingColorSpace:");
  AddRow<Pooled::kYes>(bundle, {.name = "sRGB to Adobe RGB", .nanoseconds = kMicrosecond},
                       [=, &platform] { benchmark::DoNotOptimize(platform.Send<id>(from, convert, to)); });
}

}  // namespace

void AddColourRows(Bundle& bundle) {
  if (bundle.GetPlatform().name != "real") return;
  const id colourClass = bundle.GetPlatform().objc_getClass("NSColor");
  const id spaceClass = bundle.GetPlatform().objc_getClass("NSColorSpace");
  AddComponents(bundle, colourClass, spaceClass);
  AddConversion(bundle, colourClass, spaceClass);
}

}  // namespace bench
