// libcocoa/colours/NSColorSpace+Predefined.m - the nine predefined spaces: one object each, made once, and
// found by name.
#import "libcocoa/colours/NSColorSpace+Predefined.h"

#include <pthread.h>
#include <stdlib.h>

#include "libcocoa/files/regular_file.h"

@interface NSColorSpace (StockInitialiser)
- (id)_initWithColorSpaceModel:(NSColorSpaceModel)model;
@end

typedef struct {
  NSString* name;
  NSString** stockName;  // GNUstep's own, of its colours that live in the space; NULL without such
  NSColorSpaceModel model;
  int builtIn;         // the profile that the space carries, or kNoProfile
  int workingBuiltIn;  // the profile for arithmetic, or kNoProfile
} Predefined;

enum { kNoProfile = -1 };

// By QVXSpaceKind.
// clang-format off
static const Predefined predefined[QVXSpaceKinds] = {
    {nil, NULL, NSUnknownColorSpaceModel, kNoProfile, kNoProfile},
    {@"Device RGB", &NSDeviceRGBColorSpace, NSRGBColorSpaceModel, kNoProfile, QVXBuiltInSRGB},
    {@"Device Gray", &NSDeviceWhiteColorSpace, NSGrayColorSpaceModel, kNoProfile, QVXBuiltInGamma22Gray},
    {@"Device CMYK", &NSDeviceCMYKColorSpace, NSCMYKColorSpaceModel, kNoProfile, kNoProfile},
    {@"Generic RGB", &NSCalibratedRGBColorSpace, NSRGBColorSpaceModel, QVXBuiltInGenericRGB, QVXBuiltInGenericRGB},
    {@"Generic Gray", &NSCalibratedWhiteColorSpace, NSGrayColorSpaceModel, QVXBuiltInGenericGray, QVXBuiltInGenericGray},
    {@"Generic CMYK", NULL, NSCMYKColorSpaceModel, kNoProfile, kNoProfile},
    {@"sRGB IEC61966-2.1", NULL, NSRGBColorSpaceModel, QVXBuiltInSRGB, QVXBuiltInSRGB},
    {@"Adobe RGB (1998)", NULL, NSRGBColorSpaceModel, QVXBuiltInAdobeRGB, QVXBuiltInAdobeRGB},
    {@"Generic Gray Gamma 2.2 Profile", NULL, NSGrayColorSpaceModel, QVXBuiltInGamma22Gray, QVXBuiltInGamma22Gray},
};
// clang-format on

static NSString* StockNameOfKind(int kind) {
  return predefined[kind].stockName ? *predefined[kind].stockName : nil;
}

// Filled once, read without a lock: a stored object never changes.
static NSColorSpace* spaces[QVXSpaceKinds];

NSColorSpace* QVXSpaceOfKind(int kind) {
  if (kind <= QVXOtherSpace || kind >= QVXSpaceKinds) return nil;
  NSColorSpace* space = __atomic_load_n(&spaces[kind], __ATOMIC_ACQUIRE);
  if (space) return space;
  NSColorSpace* made = [[NSColorSpace alloc] _initWithColorSpaceModel:predefined[kind].model];
  if (__atomic_compare_exchange_n(&spaces[kind], &space, made, NO, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE))
    return made;
  [made release];  // another thread was first
  return space;
}

NSString* QVXAskedName(NSString* name, NSDictionary* device) {
  if (!name) name = [device objectForKey:NSDeviceColorSpaceName];
  return name ? name : NSCalibratedRGBColorSpace;
}

// No message is sent here: it runs once, and whoever else wants the profile waits for it.
static QVXProfile* installedCMYK;
static void FindInstalledCMYK(void) {
  const char* path = getenv("QVX_CMYK_PROFILE");
  size_t size = 0;
  void* bytes = QVXReadRegularFile(path ? path : QVX_CMYK_PROFILE, QVXLargestProfile, &size);
  QVXProfile* profile = QVXProfileOpen(bytes, size);
  free(bytes);
  if (profile && (QVXProfileModel(profile) != QVXCMYKModel || !QVXProfileLeadsBothWays(profile))) {
    QVXProfileRelease(profile);
    profile = NULL;
  }
  installedCMYK = profile;
}

// The CMYK profile of the machine, or the one that the environment names instead; NULL if there is none.
static QVXProfile* InstalledCMYK(void) {
  static pthread_once_t once = PTHREAD_ONCE_INIT;
  pthread_once(&once, FindInstalledCMYK);
  return installedCMYK;
}

@implementation NSColorSpace (QVXPredefined)

// clang-format off
+ (NSColorSpace*)deviceRGBColorSpace { return QVXSpaceOfKind(QVXDeviceRGBSpace); }
+ (NSColorSpace*)deviceGrayColorSpace { return QVXSpaceOfKind(QVXDeviceGraySpace); }
+ (NSColorSpace*)deviceCMYKColorSpace { return QVXSpaceOfKind(QVXDeviceCMYKSpace); }
+ (NSColorSpace*)genericRGBColorSpace { return QVXSpaceOfKind(QVXGenericRGBSpace); }
+ (NSColorSpace*)genericGrayColorSpace { return QVXSpaceOfKind(QVXGenericGraySpace); }
+ (NSColorSpace*)genericCMYKColorSpace { return QVXSpaceOfKind(QVXGenericCMYKSpace); }
+ (NSColorSpace*)sRGBColorSpace { return QVXSpaceOfKind(QVXSRGBSpace); }
+ (NSColorSpace*)adobeRGB1998ColorSpace { return QVXSpaceOfKind(QVXAdobeRGBSpace); }
+ (NSColorSpace*)genericGamma22GrayColorSpace { return QVXSpaceOfKind(QVXGamma22GraySpace); }
// clang-format on

+ (NSArray*)availableColorSpacesWithModel:(NSColorSpaceModel)model {
  NSMutableArray* found = [NSMutableArray array];
  for (int kind = QVXOtherSpace + 1; kind < QVXSpaceKinds; ++kind)
    if (model == NSUnknownColorSpaceModel || model == predefined[kind].model)
      [found addObject:QVXSpaceOfKind(kind)];
  return found;
}

+ (NSColorSpace*)colorSpaceForColorSpaceName:(NSString*)name {
  // GNUstep's colours give its own names: those are known without a look at their letters.
  for (int kind = QVXOtherSpace + 1; name && kind < QVXSpaceKinds; ++kind)
    if (StockNameOfKind(kind) == name) return QVXSpaceOfKind(kind);
  if ([name isEqual:NSCalibratedBlackColorSpace]) name = NSCalibratedWhiteColorSpace;
  if ([name isEqual:NSDeviceBlackColorSpace]) name = NSDeviceWhiteColorSpace;
  for (int kind = QVXOtherSpace + 1; name && kind < QVXSpaceKinds; ++kind)
    if ([StockNameOfKind(kind) isEqual:name]) return QVXSpaceOfKind(kind);
  return nil;
}

- (NSString*)colorSpaceName {
  NSString* stockName = QVXStockNameOfSpace(self);
  return stockName ? stockName : NSCustomColorSpace;
}

// These functions stand inside the implementation, where they can read instance variables: a conversion calls
// them several times, and sends would show.
QVXSpaceKind QVXKindOfSpace(NSColorSpace* space) {
  if (!space) return QVXOtherSpace;
#pragma GCC unroll 9
  for (int kind = QVXOtherSpace + 1; kind < QVXSpaceKinds; ++kind)
    if (__atomic_load_n(&spaces[kind], __ATOMIC_ACQUIRE) == space) return kind;
  return QVXOtherSpace;
}

NSString* QVXStockNameOfSpace(NSColorSpace* space) {
  return StockNameOfKind(QVXKindOfSpace(space));
}

static QVXProfile* ProfileOfKind(NSColorSpace* space, QVXSpaceKind kind) {
  if (kind == QVXOtherSpace) return space ? space->_colorSyncProfile : NULL;
  if (kind == QVXGenericCMYKSpace) return InstalledCMYK();
  int builtIn = predefined[kind].builtIn;
  return builtIn == kNoProfile ? NULL : QVXProfileBuiltIn(builtIn);
}

QVXProfile* QVXProfileOfSpace(NSColorSpace* space) {
  return ProfileOfKind(space, QVXKindOfSpace(space));
}

BOOL QVXSpacesAreEqual(NSColorSpace* one, NSColorSpace* other) {
  if (one == other) return YES;
  QVXProfile* profile = QVXProfileOfSpace(one);
  return profile && profile == QVXProfileOfSpace(other);
}

NSColorSpace* QVXSpaceOfBuiltIn(const QVXProfile* profile) {
  for (int kind = QVXOtherSpace + 1; kind < QVXSpaceKinds; ++kind) {
    int builtIn = predefined[kind].builtIn;
    if (builtIn != kNoProfile && QVXProfileBuiltIn(builtIn) == profile) return QVXSpaceOfKind(kind);
  }
  return nil;
}

// The device space of the model, which stands for a space that has nothing but a model.
static QVXSpaceKind DeviceKindOf(NSColorSpaceModel model) {
  switch (model) {
    case NSGrayColorSpaceModel:
      return QVXDeviceGraySpace;
    case NSRGBColorSpaceModel:
      return QVXDeviceRGBSpace;
    default:
      return QVXOtherSpace;
  }
}

QVXProfile* QVXWorkingProfileOfSpace(NSColorSpace* space) {
  QVXSpaceKind kind = QVXKindOfSpace(space);
  if (kind == QVXOtherSpace && space && !space->_colorSyncProfile)
    kind = DeviceKindOf(space->_colorSpaceModel);
  int builtIn = predefined[kind].workingBuiltIn;
  return builtIn == kNoProfile ? ProfileOfKind(space, kind) : QVXProfileBuiltIn(builtIn);
}

- (NSString*)localizedName {
  QVXSpaceKind kind = QVXKindOfSpace(self);
  if (kind != QVXOtherSpace) return predefined[kind].name;
  size_t length = 0;
  const uint16_t* description = _colorSyncProfile ? QVXProfileDescription(_colorSyncProfile, &length) : NULL;
  return length > 0 ? [NSString stringWithCharacters:description length:length] : nil;
}

NSColorSpaceModel QVXModelOfSpace(NSColorSpace* space) {
  return space ? space->_colorSpaceModel : NSUnknownColorSpaceModel;
}

int QVXChannelsOfSpace(NSColorSpace* space) {
  switch (QVXModelOfSpace(space)) {
    case NSGrayColorSpaceModel:
      return 1;
    case NSRGBColorSpaceModel:
    case NSLABColorSpaceModel:
      return 3;
    case NSCMYKColorSpaceModel:
      return 4;
    case NSDeviceNColorSpaceModel:
      return space->_colorSyncProfile ? (int)QVXProfileChannels(space->_colorSyncProfile) : 0;
    default:
      return 0;
  }
}

QVXSpaceFacts QVXFactsOfSpace(NSColorSpace* space) {
  QVXSpaceKind kind = QVXKindOfSpace(space);
  return (QVXSpaceFacts){kind, StockNameOfKind(kind), ProfileOfKind(space, kind), QVXChannelsOfSpace(space)};
}

- (int)numberOfColorComponents {
  return QVXChannelsOfSpace(self);
}

@end
