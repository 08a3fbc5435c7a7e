// libcocoa/profiles/colour_transforms.c - the cache of Little CMS transforms, and conversion through it.
#include "libcocoa/profiles/colour_transforms.h"

#include <pthread.h>

#include "libcocoa/profiles/components.h"
#include "libcocoa/profiles/little_cms.h"

enum { kEntries = 64 };

typedef struct {
  cmsHTRANSFORM transform;  // NULL: the entry is free
  uint64_t from, to;        // profile numbers
  uint64_t lastUse;
  unsigned users;  // conversions under way
  bool forgotten;  // freed when the last user leaves
} Entry;

// Guards the entries, and every use of a profile's handle. Not held while a colour is converted.
static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static Entry entries[kEntries];
static uint64_t clockOfUses;

// Doubles, every channel 0 to 1; Lab in its own units. Little CMS would count inks from 0 to 100 if it were
// told that they are inks.
static cmsUInt32Number FormatOf(const QVXTransformEnd* end) {
  cmsUInt32Number space = end->isLab ? PT_Lab : PT_ANY;
  return FLOAT_SH(1) | COLORSPACE_SH(space) | CHANNELS_SH(end->channels) | BYTES_SH(0);
}

static void Free(Entry* entry) {
  cmsDeleteTransform(entry->transform);
  *entry = (Entry){0};
}

// With the lock held: an entry to put a transform in, or NULL if every one is in use.
static Entry* FreeEntry(void) {
  Entry* oldest = NULL;
  for (Entry* each = entries; each < entries + kEntries; ++each) {
    if (!each->transform) return each;
    if (each->users == 0 && (!oldest || each->lastUse < oldest->lastUse)) oldest = each;
  }
  if (oldest) Free(oldest);
  return oldest;
}

// With the lock held: the entry of a pair, made if needed; NULL if there is no transform for it.
static Entry* EntryFor(const QVXTransformEnd* from, const QVXTransformEnd* to) {
  for (Entry* each = entries; each < entries + kEntries; ++each)
    if (each->from == from->number && each->to == to->number && each->transform && !each->forgotten)
      return each;
  Entry* entry = FreeEntry();
  if (!entry) return NULL;
  entry->transform =
      cmsCreateTransformTHR(QVXLittleCMS(), from->handle, FormatOf(from), to->handle, FormatOf(to),
                            INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
  if (!entry->transform) return NULL;
  entry->from = from->number;
  entry->to = to->number;
  return entry;
}

static Entry* Enter(const QVXTransformEnd* from, const QVXTransformEnd* to) {
  pthread_mutex_lock(&lock);
  Entry* entry = EntryFor(from, to);
  if (entry) {
    ++entry->users;
    entry->lastUse = ++clockOfUses;
  }
  pthread_mutex_unlock(&lock);
  return entry;
}

static void Leave(Entry* entry) {
  pthread_mutex_lock(&lock);
  if (--entry->users == 0 && entry->forgotten) Free(entry);
  pthread_mutex_unlock(&lock);
}

bool QVXTransform(const QVXTransformEnd* from, const double* in, const QVXTransformEnd* to, double* out) {
  double source[QVXMostChannels];
  double result[QVXMostChannels];
  Entry* entry = Enter(from, to);
  if (!entry) return false;
  for (unsigned i = 0; i < from->channels; ++i) source[i] = QVXHeldComponent(in[i], from->isLab);
  cmsDoTransform(entry->transform, source, result, 1);
  Leave(entry);
  for (unsigned i = 0; i < to->channels; ++i) out[i] = QVXHeldComponent(result[i], to->isLab);
  return true;
}

bool QVXCanTransform(const QVXTransformEnd* from, const QVXTransformEnd* to) {
  pthread_mutex_lock(&lock);
  bool can = EntryFor(from, to) != NULL;
  pthread_mutex_unlock(&lock);
  return can;
}

void QVXForgetTransforms(uint64_t profileNumber) {
  pthread_mutex_lock(&lock);
  for (Entry* each = entries; each < entries + kEntries; ++each) {
    if (!each->transform || (each->from != profileNumber && each->to != profileNumber)) continue;
    if (each->users == 0)
      Free(each);
    else
      each->forgotten = true;
  }
  pthread_mutex_unlock(&lock);
}
