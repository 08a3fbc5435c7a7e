// bundle/classes/NSColorSpace.cpp - the host class NSColorSpaceQVX: instances, shared factories and constants
// of one NSColorSpace.
#include <algorithm>
#include <iterator>
#include <utility>

#include "bundle/bridge/exceptions.h"
#include "bundle/bridge/guard.h"
#include "bundle/bridge/instances.h"
#include "bundle/bridge/memory_blocks.h"
#include "bundle/bridge/strings.h"
#include "bundle/classes/classes.h"
#include "bundle/classes/tables.h"
#include "bundle/classes/text_getters.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

namespace {

void Constructor(REALobject /*self*/) {
  CocoaInit();
}

void Destructor(REALobject self) {
  DestroyInstance(self, kClassDataOffset);
}

id NSColorSpaceClass() {
  return PlatformClass<"NSColorSpace">();
}

// A handle in the host is the value of the pointer.
void* FromHandle(std::int32_t handle) {
  return reinterpret_cast<void*>(handle);
}

// ---- Filling an instance ----

enum class Cache { kEnter, kLeaveAlone };

// Outside of the guard: a platform exception of the host's loses the message and the exception object.
[[gnu::noinline, gnu::cold, gnu::force_align_arg_pointer]] void RefuseToFillAgain() {
  UnguardedHoldings holdings;
  RaiseException("UnsupportedOperationException",
                 "Constructor called too often. Object is already initialized.", holdings);
}

// Guards the three initialisers: the one reference of the new space that `make` answers becomes the
// instance's; nil leaves the instance empty.
template <typename Make>
void Fill(REALobject self, Cache cache, Make make) {
  if (self == nullptr) return;
  if (ClassData(self) != nullptr) {
    RefuseToFillAgain();
    return;
  }
  Guarded<OnNSException::kRaise, &CocoaInit>([=](Holdings& holdings) {
    const id space = make(holdings);
    ClassData(self) = space;
    if (space != nullptr && cache == Cache::kEnter) EnterInCache(space, self);
  });
}

// Deliberate: nil for the data goes to the platform like any other.
void initWithICCProfileData(REALobject self, REALmemoryBlock profile) {
  Fill(self, Cache::kEnter, [profile](Holdings& holdings) {
    const id data = NewNSData(profile, holdings);
    return msg::initWithICCProfileData(msg::alloc(NSColorSpaceClass()), data);
  });
}

void initWithColorSyncProfile(REALobject self, std::int32_t handle) {
  Fill(self, Cache::kEnter, [handle](Holdings&) {
    return msg::initWithColorSyncProfile(msg::alloc(NSColorSpaceClass()), FromHandle(handle));
  });
}

// Deliberately without the cache: a later conversion of the same native space makes a second host object.
void initWithCGColorSpace(REALobject self, std::int32_t handle) {
  Fill(self, Cache::kLeaveAlone, [handle](Holdings&) {
    return msg::initWithCGColorSpace(msg::alloc(NSColorSpaceClass()), FromHandle(handle));
  });
}

// ---- Queries; an empty instance is a message to nil ----

REALmemoryBlock ICCProfileData(REALobject self) {
  return Guarded([self](Holdings& holdings) {
    return self != nullptr ? NSDataRB(msg::ICCProfileData(ClassData(self)), holdings) : nullptr;
  });
}

template <FixedString Name>
REALstring Text(REALobject self) {
  return TextOf(self != nullptr ? &ClassData(self) : nullptr, kSelector<Name>);
}
constexpr auto& localizedName = Text<"localizedName">;
constexpr auto& colorSpaceName = Text<"colorSpaceName">;
constexpr auto& description = Text<"description">;

// A number, or a handle: the value of a pointer that stays the space's own.
template <FixedString Name>
std::int32_t Number(REALobject self) {
  return Guarded(
      [self] { return self != nullptr ? std::int32_t{Message<Name, NSInteger()>()(ClassData(self))} : 0; });
}

constexpr auto& colorSpaceModel = Number<"colorSpaceModel">;
constexpr auto& numberOfColorComponents = Number<"numberOfColorComponents">;
constexpr auto& colorSyncProfile = Number<"colorSyncProfile">;
constexpr auto& CGColorSpace = Number<"CGColorSpace">;

// ---- Shared factories ----

// Guards every factory: the space that `make` answers, as a host object; nil gives null. A space that `make`
// allocates it leaves in the holdings, which give up that reference once the host object has its own. The
// result stays if that raises.
template <typename Make>
REALobject Factory(Make make) {
  return GuardedFill<OnNSException::kRaise, &CocoaInit>(
      REALobject{}, [make](REALobject& result, Holdings& holdings) {
        result = NewNSColorSpaceQVX(make(holdings), holdings);
        holdings.GiveBackAll();
      });
}

// A space that has just been allocated, in the holdings. Borrowed; nil is nil.
id Allocated(id space, Holdings& holdings) {
  return Held(holdings, space).Get();
}

// The URL of an existing item; null if the host or the platform can't tell.
CFURLRef URLOfItem(REALfolderItem item) {
  FSRef reference = {};
  if (REALFSRefFromFolderItem(item, &reference, nullptr) == 0) return nullptr;
  return CFURLCreateFromFSRef(nullptr, &reference);
}

// The URL of an item that may not exist yet: its parent folder's with the item's name, decomposed as file
// names are. Null if any of it can't be had.
CFURLRef URLThroughParent(REALfolderItem item, Holdings& holdings) {
  HFSUniStr255 leafName = {};
  FSRef reference = {};
  if (REALFSRefFromFolderItem(item, &reference, &leafName) == 0) return nullptr;
  const CFURLRef parent = CFURLCreateFromFSRef(nullptr, &reference);
  if (parent == nullptr) return nullptr;
  Held<CFTypeRef> heldParent(holdings, parent);

  const auto length =
      static_cast<CFIndex>(std::min<std::size_t>(leafName.length, std::size(leafName.unicode)));
  CFStringRef name = nullptr;
  if (length != 0) name = CFStringCreateWithCharacters(nullptr, leafName.unicode, length);
  if (name == nullptr) return nullptr;
  Held<CFTypeRef> heldName(holdings, name);
  if (const CFMutableStringRef decomposed = CFStringCreateMutableCopy(nullptr, 0, name)) {
    Held<CFTypeRef> heldDecomposed(holdings, decomposed);
    CFStringNormalize(decomposed, kCFStringNormalizationFormD);
    heldName.Release();
    heldName = std::move(heldDecomposed);
    name = decomposed;
  }
  const CFURLRef url = CFURLCreateCopyAppendingPathComponent(nullptr, parent, name, 0);
  Held<CFTypeRef> heldURL(holdings, url);
  heldParent.Release();
  heldName.Release();
  heldURL.Detach();
  return url;
}

// The POSIX path of a folder item, autoreleased; nil if it can't be told.
id PathOfItem(REALfolderItem item, Holdings& holdings) {
  if (REALFSRefFromFolderItem.Find() == nullptr) return nullptr;
  CFURLRef url = URLOfItem(item);
  if (url == nullptr) url = URLThroughParent(item, holdings);
  if (url == nullptr) return nullptr;
  Autoreleased(url, holdings);
  const CFStringRef path = CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle);
  return path != nullptr ? Autoreleased(path, holdings) : nullptr;
}

// Answers null, and raises nothing, if the item, its path, the file or a profile in it can't be found.
REALobject ColorSpaceWithICCProfileFile(REALfolderItem file) {
  return Factory([file](Holdings& holdings) -> id {
    if (file == nullptr) return nullptr;
    const id path = PathOfItem(file, holdings);
    if (path == nullptr) return nullptr;
    const id data = msg::dataWithContentsOfFile(PlatformClass<"NSData">(), path);
    if (data == nullptr) return nullptr;
    return Allocated(msg::initWithICCProfileData(msg::alloc(NSColorSpaceClass()), data), holdings);
  });
}

REALobject ColorSpaceWithICCProfileData(REALmemoryBlock profile) {
  return Factory([profile](Holdings& holdings) -> id {
    const id data = NewNSData(profile, holdings);
    if (data == nullptr) return nullptr;
    return Allocated(msg::initWithICCProfileData(msg::alloc(NSColorSpaceClass()), data), holdings);
  });
}

// The two factories from a handle; the message names its kind.
template <const auto& initialize>
REALobject FromNativeHandle(std::int32_t handle) {
  return Factory([handle](Holdings& holdings) -> id {
    if (handle == 0) return nullptr;
    return Allocated(initialize(msg::alloc(NSColorSpaceClass()), FromHandle(handle)), holdings);
  });
}
constexpr auto& ColorSpaceWithColorSyncProfile = FromNativeHandle<msg::initWithColorSyncProfile>;
constexpr auto& ColorSpaceWithCGColorSpace = FromNativeHandle<msg::initWithCGColorSpace>;

// The array is there before anything can fail, and is what the caller gets, as far as it is filled. A
// platform exception in the preparation, before the guard, loses it.
[[gnu::force_align_arg_pointer]] REALarray availableColorSpacesWithModel(std::int32_t model) {
  UnguardedHoldings beforeGuard;
  Held array(beforeGuard, REALCreateArray(REALArrayType::kObject, -1));
  CocoaInit();
  return GuardedFill(array.Detach(), [model](REALarray& result, Holdings& holdings) {
    const id spaces = msg::availableColorSpacesWithModel(NSColorSpaceClass(), model);
    if (spaces == nullptr) return;
    const id enumerator = msg::objectEnumerator(spaces);
    std::int32_t index = 0;
    while (const id space = msg::nextObject(enumerator)) {
      Held object(holdings, NewNSColorSpaceQVX(space, holdings));
      if (result != nullptr) REALInsertArrayValueObject(result, index, object.Get());
      object.Release();
      ++index;
    }
  });
}

// The getters of the platform's shared spaces, one per name (getsRGBColorSpace and so on). Deliberately
// without the guard, so that a platform exception loses the new wrapper; and the class is looked up on every
// call.
[[gnu::noinline, gnu::force_align_arg_pointer]] REALobject PredefinedSpaceOf(Selector& selector) {
  CocoaInit();
  const auto spaceClass = reinterpret_cast<id>(objc_getClass("NSColorSpace"));
  if (spaceClass == nullptr) return nullptr;
  UnguardedHoldings holdings;
  return NewNSColorSpaceQVX(Send<id>(spaceClass, selector), holdings);
}

template <FixedString Name>
REALobject PredefinedSpace() {
  return PredefinedSpaceOf(kSelector<Name>);
}

template <FixedString... Names>
constexpr auto PredefinedSpaces() {
  return Rows(Method(&PredefinedSpace<Names>, kJoined<Names, " as NSColorSpaceQVX">.text)...);
}

REALobject colorSpaceForColorSpaceName(REALstring name) {
  return Factory([name](Holdings& holdings) {
    return msg::colorSpaceForColorSpaceName(NSColorSpaceClass(), NewNSString(name, holdings));
  });
}

// ---- Tables ----

// One row per line.
// clang-format off
constinit auto NSColorSpaceMethods = MakeTable<REALmethodDefinition>(
    Method(&initWithICCProfileData, "Constructor(ICCProfileData as Memoryblock)"),
    Method(&initWithColorSyncProfile, "initWithColorSyncProfile(ColorSyncProfileHandle as integer)"),
    Method(&initWithCGColorSpace, "initWithCGColorSpace(CGColorSpaceHandle as integer)"),
    Method(&ICCProfileData, "ICCProfileData as Memoryblock"),
    Method(&localizedName, "localizedName as string"),
    Method(&colorSpaceName, "colorSpaceName as string"),
    Method(&description, "description as string"),
    Method(&colorSpaceModel, "colorSpaceModel as integer"),
    Method(&numberOfColorComponents, "numberOfColorComponents as integer"),
    Method(&colorSyncProfile, "colorSyncProfileHandle as integer"),
    Method(&CGColorSpace, "CGColorSpaceHandle as integer"));
static_assert(NSColorSpaceMethods.kCount == 11);

constinit auto NSColorSpaceSharedMethods = MakeTable<REALmethodDefinition>(
    Method(&ColorSpaceWithICCProfileFile, "ColorSpaceWithICCProfileData(File as Folderitem) as NSColorSpaceQVX"),
    Method(&ColorSpaceWithICCProfileData, "ColorSpaceWithICCProfileData(ICCProfileData as Memoryblock) as NSColorSpaceQVX"),
    Method(&ColorSpaceWithColorSyncProfile, "ColorSpaceWithColorSyncProfile(ColorSyncProfileHandle as integer) as NSColorSpaceQVX"),
    Method(&ColorSpaceWithCGColorSpace, "ColorSpaceWithCGColorSpace(CGColorSpaceHandle as integer) as NSColorSpaceQVX"),
    Method(&availableColorSpacesWithModel, "availableColorSpacesWithModel(Model as integer) as NSColorSpaceQVX()"),
    PredefinedSpaces<
        "genericRGBColorSpace",
        "genericGrayColorSpace",
        "genericCMYKColorSpace",
        "deviceRGBColorSpace",
        "deviceGrayColorSpace",
        "deviceCMYKColorSpace",
        "sRGBColorSpace",
        "adobeRGB1998ColorSpace",
        "genericGamma22GrayColorSpace">(),
    Method(&colorSpaceForColorSpaceName, "colorSpaceForColorSpaceName(name as string) as NSColorSpaceQVX"));
static_assert(NSColorSpaceSharedMethods.kCount == 15);

// The two ways of writing "=" are deliberate: the host is shown the texts as they are.
constinit REALconstant NSColorSpaceConstants[] = {
    Constant("NSUnknownColorSpaceModel=-1"),
    Constant("NSGrayColorSpaceModel=0"),
    Constant("NSRGBColorSpaceModel=1"),
    Constant("NSCMYKColorSpaceModel=2"),
    Constant("NSLABColorSpaceModel=3"),
    Constant("NSDeviceNColorSpaceModel=4"),
    Constant("NSIndexedColorSpaceModel=5"),
    Constant("NSPatternColorSpaceModel=6"),
    Constant(R"(NSCalibratedWhiteColorSpace = "NSCalibratedWhiteColorSpace")"),
    Constant(R"(NSCalibratedBlackColorSpace = "NSCalibratedBlackColorSpace")"),
    Constant(R"(NSCalibratedRGBColorSpace = "NSCalibratedRGBColorSpace")"),
    Constant(R"(NSDeviceWhiteColorSpace = "NSDeviceWhiteColorSpace")"),
    Constant(R"(NSDeviceBlackColorSpace = "NSDeviceBlackColorSpace")"),
    Constant(R"(NSDeviceRGBColorSpace = "NSDeviceRGBColorSpace")"),
    Constant(R"(NSDeviceCMYKColorSpace = "NSDeviceCMYKColorSpace")"),
    Constant(R"(NSNamedColorSpace = "NSNamedColorSpace")"),
    Constant(R"(NSPatternColorSpace = "NSPatternColorSpace")"),
    Constant(R"(NSCustomColorSpace = "NSCustomColorSpace")"),
};
static_assert(std::size(NSColorSpaceConstants) == 18);
// clang-format on

}  // namespace

constinit REALclassDefinition NSColorSpaceDefinition = {
    .version = kCurrentLayout,
    .name = "NSColorSpaceQVX",
    .dataSize = sizeof(id),
    .constructor = &Constructor,
    .destructor = &Destructor,
    .methods = NSColorSpaceMethods.records,
    .methodCount = NSColorSpaceMethods.kCount,
    .constants = NSColorSpaceConstants,
    .constantCount = std::size(NSColorSpaceConstants),
    .flags = kClassFlags,
    .sharedMethods = NSColorSpaceSharedMethods.records,
    .sharedMethodCount = NSColorSpaceSharedMethods.kCount,
};

}  // namespace qvx
