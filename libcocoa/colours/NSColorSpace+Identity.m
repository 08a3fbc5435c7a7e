// libcocoa/colours/NSColorSpace+Identity.m - equality, copies, description and archives of colour spaces.
#include <objc/runtime.h>

#import "libcocoa/colours/NSColorSpace+Predefined.h"

static NSString* const kKindKey = @"NSID";  // the desktop platform's names of these keys
static NSString* const kDataKey = @"NSICC";

@implementation NSColorSpace (QVXIdentity)

- (BOOL)isEqual:(id)other {
  if (other == self) return YES;
  if (![other isKindOfClass:[NSColorSpace class]]) return NO;
  return QVXSpacesAreEqual(self, other);
}

- (NSUInteger)hash {
  QVXProfile* profile = QVXProfileOfSpace(self);
  return profile ? QVXProfileHash(profile) : (NSUInteger)self >> 3;
}

- (id)copyWithZone:(NSZone*)zone {
  return [self retain];  // immutable
}

- (NSString*)description {
  NSString* name = [self localizedName];
  return [NSString stringWithFormat:@"%@ colorspace", name ? name : @"Unnamed"];
}

// Keyed: a number for a predefined space, else the ICC data. Unkeyed: the number, then the data or nil.
// GNUstep alone writes and reads nothing.
- (void)encodeWithCoder:(NSCoder*)coder {
  int kind = QVXKindOfSpace(self);
  NSData* data = kind == QVXOtherSpace ? [self ICCProfileData] : nil;
  if ([coder allowsKeyedCoding]) {
    if (kind != QVXOtherSpace) [coder encodeInt:kind forKey:kKindKey];
    if (data) [coder encodeObject:data forKey:kDataKey];
  } else {
    [coder encodeValueOfObjCType:@encode(int) at:&kind];
    [coder encodeObject:data];
  }
}

- (id)initWithCoder:(NSCoder*)coder {
  int kind = QVXDeviceGraySpace;  // what GNUstep alone makes of an archive that it wrote
  NSData* data = nil;
  if ([coder allowsKeyedCoding]) {
    if ([coder containsValueForKey:kKindKey] || [coder containsValueForKey:kDataKey]) {
      kind = [coder decodeIntForKey:kKindKey];
      data = [coder decodeObjectForKey:kDataKey];
    }
  } else if ([coder versionForClassName:@"NSColorSpace"] >= 1) {
    [coder decodeValueOfObjCType:@encode(int) at:&kind];
    data = [coder decodeObject];
  }
  if (kind == QVXOtherSpace && [data isKindOfClass:[NSData class]]) return [self initWithICCProfileData:data];
  [self release];
  return [QVXSpaceOfKind(kind) retain];
}

@end

@interface QVXColorSpaceVersion : NSObject
@end

@implementation QVXColorSpaceVersion
+ (void)load {
  class_setVersion(objc_getClass("NSColorSpace"), 1);
}
@end
