// bench/rows_exceptions.cpp - an NSException from its raise to the host: the dropped one and the converted
// one.
#include "bench/bare_frame.h"
#include "bench/rows.h"

namespace bench {

namespace {

// Calls the body with that many functions between.
template <typename Body>
[[gnu::noinline]] void Beneath(long functions, Body& body) {
  if (functions == 0) {
    body();
  } else {
    Beneath(functions - 1, body);
    asm volatile("");  // no tail call
  }
}

}  // namespace

void AddExceptionRows(Bundle& bundle) {
  using Factory = qvx::REALobject(double, double, double, double);
  const Platform& platform = bundle.GetPlatform();
  const qvx::REALobject colour =
      bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB")(0.25, 0.5, 0.75, 1.0);

  const SEL whiteComponent = platform.sel_registerName("whiteComponent");
  AddRow<Pooled::kYes>(bundle, {.name = "raise into a frame"},
                       [&platform, native = NativeOf(colour), whiteComponent] {
                         auto send = [&] { platform.Send<float>(native, whiteComponent); };
                         benchmark::DoNotOptimize(InBareFrame(platform, send));
                       });
  // What each function between costs is the difference, divided by their number.
  for (const long functions : {10L, 1'000L, 100'000L}) {
    AddRow<Pooled::kYes>(bundle,
                         {.name = "raise past " + std::to_string(functions) + " functions into a frame",
                          .counted = functions <= 1'000,
                          .series = "raise past functions",
                          .size = functions},
                         [&platform, native = NativeOf(colour), whiteComponent, functions] {
                           auto send = [&] { platform.Send<float>(native, whiteComponent); };
                           auto deeper = [&] { Beneath(functions - 1, send); };
                           benchmark::DoNotOptimize(InBareFrame(platform, deeper));
                         });
  }
  const PrescribedCalls* const calls = bundle.Calls();
  auto* const white = bundle.Function<double(qvx::REALobject, std::int32_t)>("NSColorQVX", "whiteComponent");
  AddRow<Pooled::kYes>(
      bundle,
      {.name = "exception dropped by a getter",
       .limit = "raise into a frame",
       .pathTarget = Row::kGetter,
       .guard = Guard::kScripted},
      [=, native = NativeOf(colour), selector = SelectorOf(platform, "whiteComponent")] {
        benchmark::DoNotOptimize(PrescribedDouble(calls, native, selector));
      },
      [=] { benchmark::DoNotOptimize(white(colour, 0)); });
  auto* const getWhite = bundle.Function<void(qvx::REALobject, double*)>("NSColorQVX", "getWhite(");
  AddRow<Pooled::kYes>(
      bundle,
      {.name = "exception raised and converted", .limit = "raise into a frame", .guard = Guard::kScripted},
      [=, native = NativeOf(colour), selector = SelectorOf(platform, "getWhite:alpha:")] {
        double result;
        PrescribedWhite(calls, native, selector, &result);
        benchmark::DoNotOptimize(result);
      },
      [=] {
        double result;
        getWhite(colour, &result);
        benchmark::DoNotOptimize(result);
      });
}

}  // namespace bench
