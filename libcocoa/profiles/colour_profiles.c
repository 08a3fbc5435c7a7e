// libcocoa/profiles/colour_profiles.c - opening, checking, sharing and releasing ICC profiles.
#include "libcocoa/profiles/colour_profiles.h"

#include <pthread.h>
#include <stdlib.h>
#include <string.h>

#include "libcocoa/profiles/colour_transforms.h"
#include "libcocoa/profiles/hash.h"
#include "libcocoa/profiles/little_cms.h"

struct QVXProfile {
  QVXProfile* next;  // in its bucket
  unsigned references;
  uint32_t hash;
  unsigned char* bytes;
  size_t size;
  uint16_t* description;
  size_t descriptionLength;
  int model;
  bool leadsBothWays;
  QVXTransformEnd end;
};

enum { kSmallestProfile = 132, kBuckets = 64 };

// What Little CMS may ask for to open a profile and to make its transforms, in bytes. A curve of a few bytes
// takes 8 KiB; every profile of seven Debian packages that describes a space gets by with it.
enum { kMemoryAtLeast = 0x200000, kMemoryPerByte = 32 };

// Guards the buckets, every reference count and the numbers. Never held while Little CMS works.
static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static QVXProfile* buckets[kBuckets];
static uint64_t lastNumber;

static uint32_t ReadWord(const unsigned char* bytes) {
  return (uint32_t)bytes[0] << 24 | (uint32_t)bytes[1] << 16 | (uint32_t)bytes[2] << 8 | bytes[3];
}

// Whether the byte there is one of the header that says nothing about colour: of the date, the flags, the
// rendering intent or the identifier.
static bool IsIgnored(size_t at) {
  return (at >= 24 && at < 36) || (at >= 44 && at < 48) || (at >= 64 && at < 68) || (at >= 84 && at < 100);
}

static uint32_t HashOf(const unsigned char* bytes, size_t size) {
  uint32_t hash = QVXHashOfNothing;
  for (size_t i = 0; i < size; ++i)
    if (!IsIgnored(i)) hash = QVXHashWith(hash, bytes[i]);
  return hash;
}

static bool SameColors(const QVXProfile* profile, const unsigned char* bytes, size_t size) {
  if (profile->size != size) return false;
  for (size_t i = 0; i < size; ++i)
    if (profile->bytes[i] != bytes[i] && !IsIgnored(i)) return false;
  return true;
}

// With the lock held: the live profile of these bytes, with one more reference, or NULL.
static QVXProfile* Find(const unsigned char* bytes, size_t size, uint32_t hash) {
  for (QVXProfile* each = buckets[hash % kBuckets]; each; each = each->next) {
    if (each->hash != hash || !SameColors(each, bytes, size)) continue;
    ++each->references;
    return each;
  }
  return NULL;
}

static bool HasUsableClass(const unsigned char* header) {
  switch (ReadWord(header + 12)) {
    case cmsSigDisplayClass:
    case cmsSigInputClass:
    case cmsSigOutputClass:
    case cmsSigColorSpaceClass:
      return true;
    default:  // links, named colours and abstract profiles describe no space
      return false;
  }
}

// The model and the number of channels that the header's colour space signature stands for; 0 if none of
// ours.
static unsigned ChannelsOf(const unsigned char* header, int* model) {
  uint32_t signature = ReadWord(header + 16);
  switch (signature) {
    case cmsSigGrayData:
      *model = QVXGrayModel;
      return 1;
    case cmsSigRgbData:
      *model = QVXRGBModel;
      return 3;
    case cmsSigCmykData:
      *model = QVXCMYKModel;
      return 4;
    case cmsSigLabData:
      *model = QVXLabModel;
      return 3;
    default:
      break;
  }
  if ((signature & 0xFFFFFF) != 0x434C52) return 0;  // "?CLR"
  *model = QVXDeviceNModel;
  unsigned digit = signature >> 24;
  if (digit >= '2' && digit <= '9') return digit - '0';
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return 0;
}

// Little CMS counts the UTF-16 units of the tag and one for the end mark, but answers with whole characters:
// where some take two units, what it leaves behind the last one is not initialised. What is no character
// becomes U+FFFD.
static uint16_t* CopyDescription(cmsHPROFILE handle, size_t* length) {
  cmsUInt32Number size = cmsGetProfileInfo(handle, cmsInfoDescription, "en", "US", NULL, 0);
  size_t room = size / sizeof(wchar_t);
  wchar_t* text = malloc(size);
  uint16_t* units = malloc(size);  // a character of four bytes has two units at most
  if (!units || !text || !cmsGetProfileInfo(handle, cmsInfoDescription, "en", "US", text, size)) room = 0;
  size_t count = 0;
  for (const wchar_t* next = text; count + 1 < room && *next; ++next) {
    uint32_t character = (uint32_t)*next;
    if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF) || character == 0xFFFE)
      character = 0xFFFD;
    bool isWide = character > 0xFFFF;
    if (isWide) units[count++] = (uint16_t)(0xD7C0 + (character >> 10));
    units[count++] = (uint16_t)(isWide ? 0xDC00 + (character & 0x3FF) : character);
  }
  free(text);
  *length = count;
  return units;
}

static void Destroy(QVXProfile* profile) {
  if (profile->end.handle) cmsCloseProfile(profile->end.handle);
  free(profile->bytes);
  free(profile->description);
  free(profile);
}

// A profile that is not yet published, or NULL.
static QVXProfile* Build(const unsigned char* bytes, size_t size, uint32_t hash) {
  int model = 0;
  unsigned channels = ChannelsOf(bytes, &model);
  if (!HasUsableClass(bytes) || channels == 0) return NULL;
  QVXProfile* profile = calloc(1, sizeof *profile);
  if (!profile) return NULL;
  profile->references = 1;
  profile->hash = hash;
  profile->size = size;
  profile->model = model;
  profile->end.channels = channels;
  profile->end.isLab = model == QVXLabModel;
  profile->bytes = malloc(size);
  if (profile->bytes) memcpy(profile->bytes, bytes, size);
  if (profile->bytes)
    profile->end.handle = cmsOpenProfileFromMemTHR(QVXLittleCMS(), profile->bytes, (cmsUInt32Number)size);
  if (profile->end.handle)
    profile->description = CopyDescription(profile->end.handle, &profile->descriptionLength);
  if (!profile->description) {
    Destroy(profile);
    return NULL;
  }
  pthread_mutex_lock(&lock);
  profile->end.number = ++lastNumber;
  pthread_mutex_unlock(&lock);
  return profile;
}

// Takes over an unpublished profile's reference; gives back the one that everybody shares.
static QVXProfile* Publish(QVXProfile* profile) {
  pthread_mutex_lock(&lock);
  QVXProfile* earlier = Find(profile->bytes, profile->size, profile->hash);
  if (!earlier) {
    profile->next = buckets[profile->hash % kBuckets];
    buckets[profile->hash % kBuckets] = profile;
  }
  pthread_mutex_unlock(&lock);
  if (!earlier) return profile;
  QVXForgetTransforms(profile->end.number);
  Destroy(profile);
  return earlier;
}

QVXProfile* QVXProfileOpen(const void* data, size_t size) {
  const unsigned char* bytes = data;
  if (!bytes || size < kSmallestProfile || size > QVXLargestProfile) return NULL;
  if (memcmp(bytes + 36, "acsp", 4) != 0) return NULL;
  size_t declared = ReadWord(bytes);
  if (declared < kSmallestProfile || declared > size)
    return NULL;  // the second test catches every truncation
  uint32_t hash = HashOf(bytes, declared);
  pthread_mutex_lock(&lock);
  QVXProfile* known = Find(bytes, declared, hash);
  pthread_mutex_unlock(&lock);
  if (known) return known;
  // The built-in profiles come first: one of the same colours shares theirs, and leaves them their bytes.
  for (int which = 0; which < QVXBuiltInCount; ++which) QVXProfileBuiltIn((QVXBuiltIn)which);
  const QVXProfile* srgb = QVXProfileBuiltIn(QVXBuiltInSRGB);
  if (!srgb) return NULL;
  QVXLimitLittleCMS(kMemoryAtLeast + kMemoryPerByte * declared);
  QVXProfile* profile = Build(bytes, declared, hash);
  const bool usable = profile && QVXCanTransform(&profile->end, &srgb->end);
  if (usable) profile->leadsBothWays = QVXCanTransform(&srgb->end, &profile->end);
  QVXUnlimitLittleCMS();
  if (usable) return Publish(profile);
  if (profile) {
    QVXForgetTransforms(profile->end.number);
    Destroy(profile);
  }
  return NULL;
}

QVXProfile* QVXProfileBuiltIn(QVXBuiltIn which) {
  static QVXProfile* made[QVXBuiltInCount];
  static pthread_mutex_t making = PTHREAD_MUTEX_INITIALIZER;
  QVXProfile* profile = __atomic_load_n(&made[which], __ATOMIC_ACQUIRE);
  if (profile) return profile;
  pthread_mutex_lock(&making);
  profile = made[which];
  if (!profile) {
    size_t size = 0;
    unsigned char* bytes = QVXMakeBuiltIn(which, &size);
    if (bytes) profile = Build(bytes, size, HashOf(bytes, size));
    free(bytes);
    if (profile) {
      profile->leadsBothWays = true;
      profile = Publish(profile);
    }
    __atomic_store_n(&made[which], profile, __ATOMIC_RELEASE);
  }
  pthread_mutex_unlock(&making);
  return profile;
}

void QVXProfileRelease(QVXProfile* profile) {
  if (!profile) return;
  pthread_mutex_lock(&lock);
  bool last = --profile->references == 0;
  if (last) {
    QVXProfile** link = &buckets[profile->hash % kBuckets];
    while (*link != profile) link = &(*link)->next;
    *link = profile->next;
  }
  pthread_mutex_unlock(&lock);
  if (!last) return;
  QVXForgetTransforms(profile->end.number);
  Destroy(profile);
}

QVXProfile* QVXProfileFromHandle(const void* handle) {
  QVXProfile* found = NULL;
  pthread_mutex_lock(&lock);
  for (unsigned i = 0; handle && !found && i < kBuckets; ++i)
    for (QVXProfile* each = buckets[i]; each && !found; each = each->next)
      if (each == handle) found = each;
  if (found) ++found->references;
  pthread_mutex_unlock(&lock);
  return found;
}

int QVXProfileModel(const QVXProfile* profile) {
  return profile->model;
}

unsigned QVXProfileChannels(const QVXProfile* profile) {
  return profile->end.channels;
}

uint32_t QVXProfileHash(const QVXProfile* profile) {
  return profile->hash;
}

const void* QVXProfileBytes(const QVXProfile* profile, size_t* size) {
  *size = profile->size;
  return profile->bytes;
}

const uint16_t* QVXProfileDescription(const QVXProfile* profile, size_t* length) {
  *length = profile->descriptionLength;
  return profile->description;
}

bool QVXProfileLeadsBothWays(const QVXProfile* profile) {
  return profile->leadsBothWays;
}

// A profile that leads one way is not tried again each time.
bool QVXConvert(const QVXProfile* from, const double* in, const QVXProfile* to, double* out) {
  return to->leadsBothWays && QVXTransform(&from->end, in, &to->end, out);
}
