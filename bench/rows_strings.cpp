// bench/rows_strings.cpp - strings of all lengths, from the platform to the host and back.
#include <cstring>
#include <memory>

#include "bench/rows.h"

namespace bench {

namespace {

constexpr std::size_t kLongestOnStack = 99;

std::string Units(std::size_t count) {
  return std::to_string(count) + " units";
}

// The bytes of a platform string as a host string: into a buffer that is there already, then built.
void AddLimit(Bundle& bundle, std::size_t count, const void* string) {
  const Platform& platform = bundle.GetPlatform();
  const std::size_t size = count <= kLongestOnStack ? 600 : count * 6;
  const auto buffer = std::make_shared<std::vector<char>>(size);
  qvx::REALstring (*volatile build)(const void*, std::int32_t) = &BuildString;
  void (*volatile setEncoding)(qvx::REALstring, std::uint32_t) = &SetStringEncoding;
  AddRow(bundle, {.name = "CFStringGetCString + build, " + Units(count), .counted = count <= 10'000},
         [=, &platform] {
           platform.CFStringGetCString(string, buffer->data(), static_cast<CFIndex>(size),
                                       qvx::kEncodingUTF8);
           const qvx::REALstring built =
               build(buffer->data(), static_cast<std::int32_t>(std::strlen(buffer->data())));
           setEncoding(built, qvx::kEncodingUTF8);
           Unlock(built);
         });
}

// A list gives back the name that it was made with.
void AddOut(Bundle& bundle, std::size_t count) {
  const Platform& platform = bundle.GetPlatform();
  const std::string text(count, 'n');
  const void* const string = platform.CFStringCreateWithCString(nullptr, text.c_str(), qvx::kEncodingUTF8);
  AddLimit(bundle, count, string);

  const qvx::REALobject list = NewInstance("NSColorListQVX");
  const qvx::REALstring name = NewString(text);
  bundle.Function<qvx::REALboolean(qvx::REALobject, qvx::REALstring)>("NSColorListQVX",
                                                                      "Create(name as string) ")(list, name);
  Unlock(name);
  auto* const getName = bundle.Function<qvx::REALstring(qvx::REALobject)>("NSColorListQVX", "name as string");
  AddRow(
      bundle,
      {.name = "string result, " + Units(count),
       .limit = "CFStringGetCString + build, " + Units(count),
       .counted = count <= 10'000,
       // A longer text's buffer comes from calloc, whose cost depends on what the heap has been through.
       .guard = count <= kLongestOnStack ? Guard::kBoth : Guard::kNo,
       .series = "string result",
       .size = static_cast<long>(count)},
      [calls = bundle.Calls(), native = NativeOf(list), selector = SelectorOf(platform, "name")] {
        Unlock(PrescribedString(calls, native, selector));
      },
      [=] { Unlock(getName(list)); });
}

// A name that is no colour space's, so that what is measured is its way in.
void AddIn(Bundle& bundle, std::size_t count) {
  const std::string text(count, 'n');
  const Platform& platform = bundle.GetPlatform();
  AddRow(bundle, {.name = "CFStringCreateWithCString, " + Units(count), .counted = count <= 10'000},
         [&platform, text] {
           platform.CFRelease(platform.CFStringCreateWithCString(nullptr, text.c_str(), qvx::kEncodingUTF8));
         });
  auto* const find =
      bundle.Function<qvx::REALobject(qvx::REALstring)>("NSColorSpaceQVX", "colorSpaceForColorSpaceName");
  const qvx::REALstring name = NewString(text);
  const char* const message = "colorSpaceForColorSpaceName:";
  AddRow<Pooled::kYes>(
      bundle,
      {.name = "string argument, " + Units(count),
       .limit = "CFStringCreateWithCString, " + Units(count),
       .counted = count <= 10'000,
       .series = "string argument",
       .size = static_cast<long>(count)},
      [=, calls = bundle.Calls(), selector = SelectorOf(platform, message),
       spaces = platform.objc_getClass("NSColorSpace")] {
        Unlock(PrescribedFromString(calls, spaces, selector, name, "NSColorSpaceQVX"));
      },
      [=] { Unlock(find(name)); });
}

}  // namespace

void AddStringRows(Bundle& bundle) {
  for (const std::size_t count : {10U, 99U, 100U, 1'000U, 10'000U}) AddOut(bundle, count);
  for (const std::size_t count : {10U, 1'000U, 10'000U}) AddIn(bundle, count);

  using Factory = qvx::REALobject(double, double, double, double);
  const qvx::REALobject colour =
      bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB")(0.25, 0.5, 0.75, 1.0);
  auto* const spaceName =
      bundle.Function<qvx::REALstring(qvx::REALobject, std::int32_t)>("NSColorQVX", "colorSpaceName");
  AddRow(
      bundle,
      {.name = "string getter", .limit = "CFStringGetCString + build, 10 units", .guard = Guard::kScripted},
      [calls = bundle.Calls(), native = NativeOf(colour),
       selector = SelectorOf(bundle.GetPlatform(), "colorSpaceName")] {
        Unlock(PrescribedString(calls, native, selector));
      },
      [=] { Unlock(spaceName(colour, 0)); });
}

void AddLargeStringRows(Bundle& bundle) {
  for (const std::size_t count : {100'000U, 1'000'000U}) {
    AddOut(bundle, count);
    AddIn(bundle, count);
  }
}

}  // namespace bench
