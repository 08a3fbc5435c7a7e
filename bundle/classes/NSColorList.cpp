// bundle/classes/NSColorList.cpp - the host class NSColorListQVX: one NSColorList, a named and ordered list
// of colours.
#include "bundle/bridge/guard.h"
#include "bundle/bridge/instances.h"
#include "bundle/bridge/strings.h"
#include "bundle/classes/classes.h"
#include "bundle/classes/tables.h"
#include "bundle/classes/text_getters.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

namespace {

// This class finds its data where the host said at registration.
std::size_t DataOffset() {
  return NSColorListDefinition.dataOffset;
}

id& ListData(REALobject self) {
  return ClassData(self, DataOffset());
}

id ListOf(REALobject self) {
  return self != nullptr ? ListData(self) : nullptr;
}

id NSColorListClass() {
  return PlatformClass<"NSColorList">();
}

void Constructor(REALobject /*self*/) {
  CocoaInit();
}

void Destructor(REALobject self) {
  DestroyInstance(self, DataOffset());
}

// ---- Editing and queries; the queries send to an empty instance's nil ----

// The index goes on unchanged: a negative one is a very large one for the platform, which refuses it.
void insertColor(REALobject self, REALobject color, REALstring key, std::int32_t index) {
  Guarded([=](Holdings& holdings) {
    const id list = ListOf(self);
    if (list == nullptr) return;
    msg::insertColor(list, NativeOf(color), NewNSString(key, holdings), static_cast<NSUInteger>(index));
  });
}

void setColor(REALobject self, REALobject color, REALstring key) {
  Guarded([=](Holdings& holdings) {
    const id list = ListOf(self);
    if (list == nullptr) return;
    msg::setColor(list, NativeOf(color), NewNSString(key, holdings));
  });
}

REALobject colorWithKey(REALobject self, REALstring key) {
  return Guarded([=](Holdings& holdings) -> REALobject {
    const id list = ListOf(self);
    if (list == nullptr) return nullptr;
    return NewNSColorQVX(msg::colorWithKey(list, NewNSString(key, holdings)), holdings);
  });
}

void removeColorWithKey(REALobject self, REALstring key) {
  Guarded([=](Holdings& holdings) {
    const id list = ListOf(self);
    if (list == nullptr) return;
    msg::removeColorWithKey(list, NewNSString(key, holdings));
  });
}

REALboolean writeToFile(REALobject self, REALstring path) {
  return Guarded([=](Holdings& holdings) -> REALboolean {
    const id list = ListOf(self);
    if (list == nullptr) return 0;
    return static_cast<REALboolean>(msg::writeToFile(list, NewNSString(path, holdings)));
  });
}

void removeFile(REALobject self) {
  Guarded([self] {
    if (self != nullptr) msg::removeFile(ListData(self));
  });
}

REALboolean isEditable(REALobject self) {
  return Guarded([self] {
    return self != nullptr ? static_cast<REALboolean>(msg::isEditable(ListData(self))) : REALboolean{0};
  });
}

REALstring name(REALobject self) {
  return TextOf(self != nullptr ? &ListData(self) : nullptr, kSelector<"name">);
}

// ---- Filling the instance ----

// Gives up the held list before a new one is asked for, so that a failure leaves the instance empty. A list
// that can't be released stays.
void GiveUpList(REALobject self) {
  id& list = ListData(self);
  msg::release(list);
  list = nullptr;
}

// Guards both Create methods: `make` answers a new list, whose one reference becomes the instance's. A list
// that is there but can't be entered in the cache has been created all the same.
template <typename Make>
REALboolean Create(REALobject self, Make make) {
  return GuardedFill(REALboolean{0}, [self, make](REALboolean& result, Holdings& holdings) {
    if (self == nullptr) return;
    if (const id old = ListData(self)) {
      RemoveFromCache(old);
      GiveUpList(self);
    }
    const id list = make(holdings);
    if (list == nullptr) return;
    ListData(self) = list;
    result = 1;
    EnterInCache(list, self);
  });
}

REALboolean Create1(REALobject self, REALstring listName) {
  return Create(self, [listName](Holdings& holdings) {
    const id nativeName = NewNSString(listName, holdings);
    return msg::initWithName(msg::alloc(NSColorListClass()), nativeName);
  });
}

REALboolean Create2(REALobject self, REALstring listName, REALstring path) {
  return Create(self, [listName, path](Holdings& holdings) {
    const id nativeName = NewNSString(listName, holdings);
    const id nativePath = NewNSString(path, holdings);
    return msg::initWithNameFromFile(msg::alloc(NSColorListClass()), nativeName, nativePath);
  });
}

// Deliberately without the cache: a loaded list is the platform's shared one and is not entered, and the
// entry of the list that it replaces stays.
REALboolean Load(REALobject self, REALstring listName) {
  return Guarded([self, listName](Holdings& holdings) -> REALboolean {
    if (self == nullptr) return 0;
    if (ListData(self) != nullptr) GiveUpList(self);
    const id list = msg::colorListNamed(NSColorListClass(), NewNSString(listName, holdings));
    if (list == nullptr) return 0;
    ListData(self) = msg::retain(list);
    return ListData(self) != nullptr;
  });
}

// ---- Table ----

// One row per line.
// clang-format off
constinit auto NSColorListMethods = MakeTable<REALmethodDefinition>(
    Method(&insertColor, "insertColor(theColor as NSColorQVX, key as string, index as integer)"),
    Method(&setColor, "setColor(theColor as NSColorQVX, key as string)"),
    Method(&colorWithKey, "colorWithKey(key as string) as NSColorQVX"),
    Method(&removeColorWithKey, "removeColorWithKey(key as string)"),
    Method(&writeToFile, "writeToFile(path as string) as boolean"),
    Method(&removeFile, "removeFile"),
    Method(&isEditable, "isEditable as Boolean"),
    Method(&name, "name as string"),
    Method(&Create1, "Create(name as string) as boolean"),
    Method(&Load, "Load(name as string) as boolean"),
    Method(&Create2, "Create(name as string, path as string) as boolean"));
static_assert(NSColorListMethods.kCount == 11);
// clang-format on

}  // namespace

constinit REALclassDefinition NSColorListDefinition = {
    .version = kCurrentLayout,
    .name = "NSColorListQVX",
    .dataSize = sizeof(id),
    .constructor = &Constructor,
    .destructor = &Destructor,
    .methods = NSColorListMethods.records,
    .methodCount = NSColorListMethods.kCount,
    .flags = kClassFlags,
};

}  // namespace qvx
