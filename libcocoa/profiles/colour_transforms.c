// libcocoa/profiles/colour_transforms.c - the cache of Little CMS transforms, and conversion through it.
#include "libcocoa/profiles/colour_transforms.h"

#include <math.h>
#include <pthread.h>

#include "libcocoa/profiles/little_cms.h"

enum { kEntries = 64 };

typedef struct {
  cmsHTRANSFORM transform;  // NULL: the entry is free
  uint64_t from, to;        // profile numbers
  uint64_t lastUse;
  unsigned users;  // conversions under way
  int forgotten;   // freed when the last user leaves
} Entry;

// Guards the entries, and every use of a profile's handle. Not held while a colour is converted.
static pthread_mutex_t transformsLock = PTHREAD_MUTEX_INITIALIZER;
static Entry entries[kEntries];
static uint64_t clockOfUses;

// Doubles, every channel 0 to 1; Lab in its own units. Little CMS would count inks from 0 to 100 if it were
// told that they are inks.
static cmsUInt32Number FormatOf(const QVXProfile* profile) {
  cmsUInt32Number space = QVXProfileModel(profile) == QVXLabModel ? PT_Lab : PT_ANY;
  return FLOAT_SH(1) | COLORSPACE_SH(space) | CHANNELS_SH(QVXProfileChannels(profile)) | BYTES_SH(0);
}

static void Free(Entry* entry) {
  cmsDeleteTransform(entry->transform);
  *entry = (Entry){0};
}

// With the lock held: an entry to put a transform in, or NULL if every one is in use.
static Entry* FreeEntry(void) {
  Entry* oldest = NULL;
  for (Entry* each = entries; each < entries + kEntries; each++) {
    if (!each->transform) return each;
    if (each->users == 0 && (!oldest || each->lastUse < oldest->lastUse)) oldest = each;
  }
  if (oldest) Free(oldest);
  return oldest;
}

// With the lock held: the entry of a pair, made if needed; NULL if there is no transform for it.
static Entry* EntryFor(const QVXProfile* from, const QVXProfile* to) {
  uint64_t fromNumber = QVXProfileNumber(from);
  uint64_t toNumber = QVXProfileNumber(to);
  for (Entry* each = entries; each < entries + kEntries; each++)
    if (each->from == fromNumber && each->to == toNumber && each->transform && !each->forgotten) return each;
  Entry* entry = FreeEntry();
  if (!entry) return NULL;
  entry->transform = cmsCreateTransformTHR(QVXLittleCMS(), QVXProfileHandle(from), FormatOf(from),
                                           QVXProfileHandle(to), FormatOf(to), INTENT_RELATIVE_COLORIMETRIC,
                                           cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
  if (!entry->transform) return NULL;
  entry->from = fromNumber;
  entry->to = toNumber;
  return entry;
}

static Entry* Enter(const QVXProfile* from, const QVXProfile* to) {
  pthread_mutex_lock(&transformsLock);
  Entry* entry = EntryFor(from, to);
  if (entry) {
    entry->users++;
    entry->lastUse = ++clockOfUses;
  }
  pthread_mutex_unlock(&transformsLock);
  return entry;
}

static void Leave(Entry* entry) {
  pthread_mutex_lock(&transformsLock);
  if (--entry->users == 0 && entry->forgotten) Free(entry);
  pthread_mutex_unlock(&transformsLock);
}

static double Clip(double value) {
  return value > 0 ? (value < 1 ? value : 1) : 0;
}  // not a number: 0

static double Sane(const QVXProfile* profile, double value) {
  if (QVXProfileModel(profile) != QVXLabModel) return Clip(value);
  return isfinite(value) ? value : 0;
}

int QVXConvert(QVXProfile* from, const double* in, QVXProfile* to, double* out) {
  double source[QVXMostChannels];
  double result[QVXMostChannels];
  Entry* entry = Enter(from, to);
  if (!entry) return 0;
  for (unsigned i = 0; i < QVXProfileChannels(from); i++) source[i] = Sane(from, in[i]);
  cmsDoTransform(entry->transform, source, result, 1);
  Leave(entry);
  for (unsigned i = 0; i < QVXProfileChannels(to); i++) out[i] = Sane(to, result[i]);
  return 1;
}

int QVXCanConvert(QVXProfile* from, QVXProfile* to) {
  pthread_mutex_lock(&transformsLock);
  int can = EntryFor(from, to) != NULL;
  pthread_mutex_unlock(&transformsLock);
  return can;
}

void QVXForgetTransforms(uint64_t profileNumber) {
  pthread_mutex_lock(&transformsLock);
  for (Entry* each = entries; each < entries + kEntries; each++) {
    if (!each->transform || (each->from != profileNumber && each->to != profileNumber)) continue;
    if (each->users == 0)
      Free(each);
    else
      each->forgotten = 1;
  }
  pthread_mutex_unlock(&transformsLock);
}

unsigned QVXCachedTransforms(void) {
  unsigned count = 0;
  pthread_mutex_lock(&transformsLock);
  for (const Entry* each = entries; each < entries + kEntries; each++) count += each->transform != NULL;
  pthread_mutex_unlock(&transformsLock);
  return count;
}
