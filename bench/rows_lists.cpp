// bench/rows_lists.cpp - colour lists of few and of many colours.
#include <string>

#include "bench/rows.h"

namespace bench {

namespace {

using Factory = qvx::REALobject(double, double, double, double);
using Insert = void(qvx::REALobject, qvx::REALobject, qvx::REALstring, std::int32_t);
using Key = void(qvx::REALobject, qvx::REALstring);

}  // namespace

void AddListScaleRows(Bundle& bundle, long colours) {
  bundle.Activate();
  Pool pool(bundle.GetPlatform());
  const qvx::REALobject list = NewInstance("NSColorListQVX");
  const qvx::REALstring name = NewString("bench " + std::to_string(colours));
  bundle.Function<qvx::REALboolean(qvx::REALobject, qvx::REALstring)>("NSColorListQVX",
                                                                      "Create(name as string) ")(list, name);
  Unlock(name);

  auto* const make = bundle.Function<Factory>("NSColorQVX", "colorWithDeviceRGB");
  auto* const insert = bundle.Function<Insert>("NSColorListQVX", "insertColor");
  auto* const remove = bundle.Function<Key>("NSColorListQVX", "removeColorWithKey");
  auto* const look =
      bundle.Function<qvx::REALobject(qvx::REALobject, qvx::REALstring)>("NSColorListQVX", "colorWithKey");
  for (long i = 0; i < colours; ++i) {
    const qvx::REALobject colour = make(0.5, 0.25, 0.125, 1.0);
    const qvx::REALstring key = NewString("key " + std::to_string(i));
    insert(list, colour, key, static_cast<std::int32_t>(i));
    Unlock(key);
    Unlock(colour);
    pool.Turn();
  }

  const std::string size = std::to_string(colours) + (colours == 1 ? " colour" : " colours");
  // The rows of a hundred are the limits of longer lists.
  const bool isLonger = colours > 100;
  const auto row = [&](const std::string& what) {
    return Row{.name = what + " of " + size,
               .limit = isLonger ? what + " of 100 colours" : "",
               .target = isLonger ? 3.0 : 0.0,
               .counted = colours <= 100,
               .guard = colours == 1 ? Guard::kScripted : Guard::kNo,
               .series = what,
               .size = colours};
  };
  const auto insertAndRemove = [=](qvx::REALobject colour, qvx::REALstring key, long place) {
    return [=] {
      insert(list, colour, key, static_cast<std::int32_t>(place));
      remove(list, key);
    };
  };
  const Platform& platform = bundle.GetPlatform();
  const PrescribedCalls* const calls = bundle.Calls();
  void* const native = NativeOf(list);
  const auto prescribedInsertAndRemove = [=, insertColor = SelectorOf(platform, "insertColor:key:atIndex:"),
                                          removeColor = SelectorOf(platform, "removeColorWithKey:")](
                                             qvx::REALobject colour, qvx::REALstring key, long place) {
    return [=, nativeColour = NativeOf(colour)] {
      PrescribedInsert(calls, native, insertColor, nativeColour, key, static_cast<std::uint32_t>(place));
      PrescribedRemove(calls, native, removeColor, key);
    };
  };
  const qvx::REALstring middle = NewString("key " + std::to_string(colours / 2));
  const qvx::REALobject kept = look(list, middle);  // stays wrapped
  const qvx::REALstring key = NewString("another key");
  AddRow<Pooled::kYes>(
      bundle, row("look-up in a list"),
      [=, selector = SelectorOf(platform, "colorWithKey:")] {
        Unlock(PrescribedFromString(calls, native, selector, middle, "NSColorQVX"));
      },
      [=] { Unlock(look(list, middle)); });
  AddRow<Pooled::kYes>(bundle, row("insert and remove at the end"),
                       prescribedInsertAndRemove(kept, key, colours), insertAndRemove(kept, key, colours));
  if (bundle.GetPlatform().name == "scripted" || colours == 1) return;

  // Whatever stands behind the place has to move, twice.
  const id array =
      platform.Send<id>(platform.objc_getClass("NSMutableArray"), platform.sel_registerName("new"));
  const SEL insertObject = platform.sel_registerName("insertObject:atIndex:");
  const SEL removeObject = platform.sel_registerName("removeObjectAtIndex:");
  for (long i = 0; i < colours; ++i) {
    platform.Send<void>(array, insertObject, array, static_cast<NSUInteger>(i));
  }
  const Row bare = {.name = "move within an array of " + std::to_string(colours), .counted = row("").counted};
  AddRow(bundle, bare, [=, &platform, place = static_cast<NSUInteger>(colours / 2)] {
    platform.Send<void>(array, insertObject, array, place);
    platform.Send<void>(array, removeObject, place);
  });
  Row inTheMiddle = row("insert and remove in the middle");
  inTheMiddle.limit = colours == 100'000 ? bare.name : "";
  inTheMiddle.target = colours == 100'000 ? 1.15 : 0.0;
  AddRow<Pooled::kYes>(bundle, inTheMiddle, prescribedInsertAndRemove(kept, key, colours / 2),
                       insertAndRemove(kept, key, colours / 2));
}

}  // namespace bench
