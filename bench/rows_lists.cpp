// bench/rows_lists.cpp - colour lists of few and of many colours.
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
  const qvx::REALstring middle = NewString("key " + std::to_string(colours / 2));
  const qvx::REALobject kept = look(list, middle);  // stays wrapped
  AddRow<Pooled::kYes>(bundle,
                       {.name = "look-up in a list of " + size,
                        .limit = colours == 1 ? "" : "look-up in a list of 1 colour",
                        .guard = colours == 1 ? Guard::kScripted : Guard::kNo},
                       [=] { Unlock(look(list, middle)); });
  const qvx::REALstring key = NewString("another key");
  AddRow<Pooled::kYes>(bundle,
                       {.name = "insert and remove at the end of " + size,
                        .limit = colours == 1 ? "" : "insert and remove at the end of 1 colour",
                        .guard = colours == 1 ? Guard::kScripted : Guard::kNo},
                       [=] {
                         insert(list, kept, key, static_cast<std::int32_t>(colours));
                         remove(list, key);
                       });
}

}  // namespace bench
