// libcocoa/profiles/colour_profiles.c - opening, checking, sharing and releasing ICC profiles.
#include "libcocoa/profiles/colour_profiles.h"

#include <pthread.h>
#include <stdlib.h>
#include <string.h>

#include "libcocoa/profiles/colour_transforms.h"
#include "libcocoa/profiles/little_cms.h"

struct QVXProfile {
  QVXProfile* next;  // in its bucket
  unsigned references;
  uint32_t hash;
  uint64_t number;
  cmsHPROFILE handle;
  unsigned char* bytes;
  size_t size;
  char* description;
  int model;
  unsigned channels;
};

enum { kHeaderSize = 128, kSmallestProfile = 132, kBuckets = 64 };

// Guards the buckets, every reference count and the numbers. Never held while Little CMS works.
static pthread_mutex_t profilesLock = PTHREAD_MUTEX_INITIALIZER;
static QVXProfile* buckets[kBuckets];
static uint64_t lastNumber;

static void IgnoreError(cmsContext context, cmsUInt32Number code, const char* text) {
  (void)context, (void)code, (void)text;
}

static cmsContext theContext;
static void MakeContext(void) {
  theContext = cmsCreateContext(NULL, NULL);
  if (theContext) cmsSetLogErrorHandlerTHR(theContext, IgnoreError);
}

cmsContext QVXLittleCMS(void) {
  static pthread_once_t once = PTHREAD_ONCE_INIT;
  pthread_once(&once, MakeContext);
  return theContext;
}

static uint32_t ReadWord(const unsigned char* bytes) {
  return (uint32_t)bytes[0] << 24 | (uint32_t)bytes[1] << 16 | (uint32_t)bytes[2] << 8 | bytes[3];
}

// Whether a header byte says nothing about colour: date, flags, rendering intent, identifier.
static int IsIgnored(size_t at) {
  return (at >= 24 && at < 36) || (at >= 44 && at < 48) || (at >= 64 && at < 68) || (at >= 84 && at < 100);
}

static uint32_t HashOf(const unsigned char* bytes, size_t size) {
  uint32_t hash = 2166136261u;
  for (size_t i = 0; i < size; i++) {
    if (i < kHeaderSize && IsIgnored(i)) continue;
    hash = (hash ^ bytes[i]) * 16777619u;
  }
  return hash;
}

static int SameColours(const QVXProfile* profile, const unsigned char* bytes, size_t size) {
  if (profile->size != size) return 0;
  for (size_t i = 0; i < kHeaderSize; i++)
    if (profile->bytes[i] != bytes[i] && !IsIgnored(i)) return 0;
  return memcmp(profile->bytes + kHeaderSize, bytes + kHeaderSize, size - kHeaderSize) == 0;
}

// With profilesLock held: the live profile of these bytes, with one more reference, or NULL.
static QVXProfile* Find(const unsigned char* bytes, size_t size, uint32_t hash) {
  for (QVXProfile* each = buckets[hash % kBuckets]; each; each = each->next) {
    if (each->hash == hash && SameColours(each, bytes, size)) {
      each->references++;
      return each;
    }
  }
  return NULL;
}

static int HasUsableClass(const unsigned char* header) {
  switch (ReadWord(header + 12)) {
    case cmsSigDisplayClass:
    case cmsSigInputClass:
    case cmsSigOutputClass:
    case cmsSigColorSpaceClass:
      return 1;
    default:  // links, named colours and abstract profiles describe no space
      return 0;
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

static char* CopyDescription(cmsHPROFILE handle) {
  cmsUInt32Number size = cmsGetProfileInfo(handle, cmsInfoDescription, "en", "US", NULL, 0);
  size_t characters = size / sizeof(wchar_t);
  wchar_t* wide = characters ? malloc(size) : NULL;
  // Four bytes of UTF-8 per character at most, and the end mark.
  char* text = malloc(characters * 4 + 1);
  char* out = text;
  if (wide && text && cmsGetProfileInfo(handle, cmsInfoDescription, "en", "US", wide, size)) {
    for (size_t i = 0; i < characters && wide[i]; i++) {
      uint32_t c = (uint32_t)wide[i];
      if (c >= 0xD800 && c <= 0xDBFF && i + 1 < characters && wide[i + 1] >= 0xDC00 && wide[i + 1] <= 0xDFFF)
        c = 0x10000 + ((c - 0xD800) << 10) + ((uint32_t)wide[++i] - 0xDC00);
      if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) c = 0xFFFD;
      if (c < 0x80) {
        *out++ = (char)c;
      } else if (c < 0x800) {
        *out++ = (char)(0xC0 | c >> 6);
        *out++ = (char)(0x80 | (c & 0x3F));
      } else if (c < 0x10000) {
        *out++ = (char)(0xE0 | c >> 12);
        *out++ = (char)(0x80 | (c >> 6 & 0x3F));
        *out++ = (char)(0x80 | (c & 0x3F));
      } else {
        *out++ = (char)(0xF0 | c >> 18);
        *out++ = (char)(0x80 | (c >> 12 & 0x3F));
        *out++ = (char)(0x80 | (c >> 6 & 0x3F));
        *out++ = (char)(0x80 | (c & 0x3F));
      }
    }
  }
  if (out) *out = 0;
  free(wide);
  return text;
}

static void Destroy(QVXProfile* profile) {
  if (profile->handle) cmsCloseProfile(profile->handle);
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
  profile->channels = channels;
  profile->bytes = malloc(size);
  if (profile->bytes) memcpy(profile->bytes, bytes, size);
  profile->handle =
      profile->bytes ? cmsOpenProfileFromMemTHR(QVXLittleCMS(), profile->bytes, (cmsUInt32Number)size) : NULL;
  profile->description = profile->handle ? CopyDescription(profile->handle) : NULL;
  if (!profile->description) {
    Destroy(profile);
    return NULL;
  }
  pthread_mutex_lock(&profilesLock);
  profile->number = ++lastNumber;
  pthread_mutex_unlock(&profilesLock);
  return profile;
}

// Takes over an unpublished profile's reference; gives back the one that everybody shares.
static QVXProfile* Publish(QVXProfile* profile) {
  pthread_mutex_lock(&profilesLock);
  QVXProfile* earlier = Find(profile->bytes, profile->size, profile->hash);
  if (!earlier) {
    profile->next = buckets[profile->hash % kBuckets];
    buckets[profile->hash % kBuckets] = profile;
  }
  pthread_mutex_unlock(&profilesLock);
  if (!earlier) return profile;
  QVXForgetTransforms(profile->number);
  Destroy(profile);
  return earlier;
}

QVXProfile* QVXProfileOpen(const void* data, size_t size) {
  const unsigned char* bytes = data;
  if (!bytes || size < kSmallestProfile || size > QVXLargestProfile) return NULL;
  if (memcmp(bytes + 36, "acsp", 4) != 0) return NULL;
  size_t declared = ReadWord(bytes);
  if (declared < kSmallestProfile || declared > size) return NULL;  // the second catches every truncation
  uint32_t hash = HashOf(bytes, declared);
  pthread_mutex_lock(&profilesLock);
  QVXProfile* known = Find(bytes, declared, hash);
  pthread_mutex_unlock(&profilesLock);
  if (known) return known;
  QVXProfile* profile = Build(bytes, declared, hash);
  if (!profile) return NULL;
  QVXProfile* srgb = QVXProfileBuiltIn(QVXBuiltInSRGB);
  if (!srgb || !QVXCanConvert(profile, srgb) || !QVXCanConvert(srgb, profile)) {
    QVXForgetTransforms(profile->number);
    Destroy(profile);
    return NULL;
  }
  return Publish(profile);
}

QVXProfile* QVXProfileBuiltIn(QVXBuiltIn which) {
  static QVXProfile* made[QVXBuiltInCount];
  static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
  QVXProfile* profile = __atomic_load_n(&made[which], __ATOMIC_ACQUIRE);
  if (profile) return profile;
  pthread_mutex_lock(&lock);
  profile = made[which];
  if (!profile) {
    size_t size = 0;
    unsigned char* bytes = QVXMakeBuiltIn(which, &size);
    if (bytes) profile = Build(bytes, size, HashOf(bytes, size));
    free(bytes);
    if (profile) profile = Publish(profile);
    __atomic_store_n(&made[which], profile, __ATOMIC_RELEASE);
  }
  pthread_mutex_unlock(&lock);
  return profile;
}

QVXProfile* QVXProfileRetain(QVXProfile* profile) {
  pthread_mutex_lock(&profilesLock);
  profile->references++;
  pthread_mutex_unlock(&profilesLock);
  return profile;
}

void QVXProfileRelease(QVXProfile* profile) {
  if (!profile) return;
  pthread_mutex_lock(&profilesLock);
  int last = --profile->references == 0;
  if (last) {
    QVXProfile** link = &buckets[profile->hash % kBuckets];
    while (*link != profile) link = &(*link)->next;
    *link = profile->next;
  }
  pthread_mutex_unlock(&profilesLock);
  if (!last) return;
  QVXForgetTransforms(profile->number);
  Destroy(profile);
}

QVXProfile* QVXProfileFromHandle(const void* handle) {
  QVXProfile* found = NULL;
  pthread_mutex_lock(&profilesLock);
  for (unsigned i = 0; handle && !found && i < kBuckets; i++)
    for (QVXProfile* each = buckets[i]; each && !found; each = each->next)
      if (each == handle) found = each;
  if (found) found->references++;
  pthread_mutex_unlock(&profilesLock);
  return found;
}

cmsHPROFILE QVXProfileHandle(const QVXProfile* profile) {
  return profile->handle;
}
int QVXProfileModel(const QVXProfile* profile) {
  return profile->model;
}
unsigned QVXProfileChannels(const QVXProfile* profile) {
  return profile->channels;
}
uint32_t QVXProfileHash(const QVXProfile* profile) {
  return profile->hash;
}
uint64_t QVXProfileNumber(const QVXProfile* profile) {
  return profile->number;
}
const char* QVXProfileDescription(const QVXProfile* profile) {
  return profile->description;
}

const void* QVXProfileBytes(const QVXProfile* profile, size_t* size) {
  *size = profile->size;
  return profile->bytes;
}
