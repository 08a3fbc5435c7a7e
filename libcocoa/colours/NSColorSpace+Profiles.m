// libcocoa/colours/NSColorSpace+Profiles.m - spaces made from ICC data and from handles, and the way back.
#import "libcocoa/colours/NSColorSpace+Profiles.h"

#include <string.h>

#import "libcocoa/colours/NSColorSpace+Predefined.h"
#import "libcocoa/colours/exported_handles.h"
#import "libcocoa/runtime/stock_methods.h"

@implementation NSColorSpace (QVXProfiles)

// Makes the receiver, just allocated, the space of a profile and takes over the caller's reference to that.
// The bytes are kept as they are, even where they say the same as a predefined space's; nil stands for the
// profile's own.
- (id)qvx_initWithProfile:(QVXProfile*)profile data:(NSData*)data {
  size_t size = 0;
  const void* known = profile ? QVXProfileBytes(profile, &size) : NULL;
  const void* bytes = data ? [data bytes] : known;
  BOOL isKnown = profile && memcmp(bytes, known, size) == 0;
  NSColorSpace* predefined = isKnown ? QVXSpaceOfBuiltIn(profile) : nil;
  if (!profile || predefined) {
    QVXProfileRelease(profile);
    [self release];
    return [predefined retain];
  }
  _colorSpaceModel = QVXProfileModel(profile);
  _iccData = [[NSData alloc] initWithBytes:bytes length:size];
  _colorSyncProfile = profile;
  return self;
}

- (id)initWithICCProfileData:(NSData*)data {
  return [self qvx_initWithProfile:QVXProfileOpen([data bytes], [data length]) data:data];
}

- (id)initWithColorSyncProfile:(void*)handle {
  return [self qvx_initWithProfile:QVXProfileFromHandle(handle) data:nil];
}

- (void*)colorSyncProfile {
  return QVXProfileOfSpace(self);
}

- (NSData*)ICCProfileData {
  NSData* data = __atomic_load_n(&_iccData, __ATOMIC_ACQUIRE);
  QVXProfile* profile = data ? NULL : QVXProfileOfSpace(self);
  if (!profile) return data;
  size_t size = 0;
  const void* bytes = QVXProfileBytes(profile, &size);
  NSData* made = [[NSData alloc] initWithBytes:bytes length:size];
  if (__atomic_compare_exchange_n(&_iccData, &data, made, NO, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE))
    return made;
  [made release];
  return data;
}

- (id)initWithCGColorSpace:(CGColorSpaceRef)handle {
  NSColorSpace* space = QVXIsLiveHandle(handle) ? [(id)handle retain] : nil;
  [self release];
  if ([space isKindOfClass:[NSColorSpace class]]) return space;
  [space release];
  return nil;
}

- (CGColorSpaceRef)CGColorSpace {
  QVXExportHandle(self);
  return (CGColorSpaceRef)self;
}

// GNUstep's own method runs afterwards; it frees the data and knows nothing of the profile.
- (void)dealloc {
  static QVXMethod stock;
  QVXForgetHandle(self);
  QVXProfileRelease(_colorSyncProfile);
  _colorSyncProfile = NULL;
  ((void (*)(id, SEL))QVXStockMethod("NSColorSpace", _cmd, &stock))(self, _cmd);
  return;
  [super dealloc];  // never reached: GNUstep's own does it
}

@end
