// libcocoa/profiles/colour_transforms.c - the cache of Little CMS transforms, and conversion through it.
#define _GNU_SOURCE
#include "libcocoa/profiles/colour_transforms.h"

#include <pthread.h>
#include <stddef.h>
#include <stdlib.h>

#include "libcocoa/profiles/components.h"
#include "libcocoa/profiles/little_cms.h"

enum { kShards = 16, kChains = 64 };

// How much memory the transforms may take together. One between RGB profiles takes 51 KiB.
static const int64_t kMostMemory = 128 << 20;

typedef struct Entry {
  struct Entry* next;
  uint64_t from, to;  // profile numbers
  cmsHTRANSFORM transform;
  int64_t size;  // in memory
  bool used;     // since it was last looked at for removal
} Entry;

// A colour is converted under the shard's lock, held for reading: so conversions do not wait for each other,
// and no transform goes away under one. Whoever makes or removes a transform is let in first.
typedef struct {
  _Alignas(64) pthread_rwlock_t lock;
  Entry* chains[kChains];
} Shard;

static Shard shards[kShards] = {
    [0 ... kShards - 1] = {.lock = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP}};

// Guards every use of a profile's handle. Taken before a shard's lock.
static pthread_mutex_t making = PTHREAD_MUTEX_INITIALIZER;
static unsigned nextToClear;  // the shard that is next to give memory back; guarded by `making`
static int64_t memory;        // of all transforms; atomic

static uint32_t HashOf(uint64_t from, uint64_t to) {
  return (uint32_t)from * 2654435761u ^ (uint32_t)to * 2246822519u;
}

static Shard* ShardOf(uint32_t hash) {
  return &shards[(hash >> 28) % kShards];
}

static Entry** ChainOf(Shard* shard, uint32_t hash) {
  return &shard->chains[(hash >> 20) % kChains];
}

// With the shard's lock held.
static Entry* Find(Shard* shard, uint32_t hash, uint64_t from, uint64_t to) {
  Entry* each = *ChainOf(shard, hash);
  while (each && (each->from != from || each->to != to)) each = each->next;
  return each;
}

// Frees the transforms of the shard that are not wanted.
static void Clear(Shard* shard, bool (*isWanted)(Entry*, uint64_t), uint64_t number) {
  pthread_rwlock_wrlock(&shard->lock);
  for (Entry** chain = shard->chains; chain < shard->chains + kChains; ++chain)
    for (Entry** link = chain; *link;) {
      Entry* each = *link;
      if (isWanted(each, number)) {
        link = &each->next;
        continue;
      }
      *link = each->next;
      __atomic_sub_fetch(&memory, each->size, __ATOMIC_RELAXED);
      cmsDeleteTransform(each->transform);
      free(each);
    }
  pthread_rwlock_unlock(&shard->lock);
}

static bool WasUsed(Entry* entry, uint64_t number) {
  bool used = entry->used;
  entry->used = false;
  return used;
}

static bool IsOfOthers(Entry* entry, uint64_t number) {
  return entry->from != number && entry->to != number;
}

// Doubles, every channel 0 to 1; Lab in its own units. Little CMS would count inks from 0 to 100 if it were
// told that they are inks.
static cmsUInt32Number FormatOf(const QVXTransformEnd* end) {
  cmsUInt32Number space = end->isLab ? PT_Lab : PT_ANY;
  return FLOAT_SH(1) | COLORSPACE_SH(space) | CHANNELS_SH(end->channels) | BYTES_SH(0);
}

// With `making` held: a new entry for the pair, or NULL if there is no transform for it.
static Entry* NewEntry(const QVXTransformEnd* from, const QVXTransformEnd* to) {
  Entry* entry = calloc(1, sizeof *entry);
  if (!entry) return NULL;
  int64_t before = QVXLittleCMSMemory();
  entry->transform =
      cmsCreateTransformTHR(QVXLittleCMS(), from->handle, FormatOf(from), to->handle, FormatOf(to),
                            INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
  if (!entry->transform) {
    free(entry);
    return NULL;
  }
  entry->from = from->number;
  entry->to = to->number;
  entry->size = QVXLittleCMSMemory() - before;
  entry->used = true;
  return entry;
}

// Sees to it that the pair has a transform in the cache. False if there is none for it.
static bool Provide(const QVXTransformEnd* from, const QVXTransformEnd* to) {
  uint32_t hash = HashOf(from->number, to->number);
  Shard* shard = ShardOf(hash);
  pthread_mutex_lock(&making);
  pthread_rwlock_rdlock(&shard->lock);
  bool isThere = Find(shard, hash, from->number, to->number) != NULL;
  pthread_rwlock_unlock(&shard->lock);
  Entry* entry = isThere ? NULL : NewEntry(from, to);
  if (entry) {
    // Twice round at most: on the second nothing counts as used any more.
    for (int i = 0; i < 2 * kShards && __atomic_load_n(&memory, __ATOMIC_RELAXED) + entry->size > kMostMemory;
         ++i)
      Clear(&shards[nextToClear++ % kShards], WasUsed, 0);
    pthread_rwlock_wrlock(&shard->lock);
    Entry** chain = ChainOf(shard, hash);
    entry->next = *chain;
    *chain = entry;
    __atomic_add_fetch(&memory, entry->size, __ATOMIC_RELAXED);
    pthread_rwlock_unlock(&shard->lock);
  }
  pthread_mutex_unlock(&making);
  return isThere || entry;
}

// Converts through the pair's transform. False if there is none in the cache.
static bool Convert(const QVXTransformEnd* from, const double* source, const QVXTransformEnd* to,
                    double* result) {
  uint32_t hash = HashOf(from->number, to->number);
  Shard* shard = ShardOf(hash);
  pthread_rwlock_rdlock(&shard->lock);
  Entry* entry = Find(shard, hash, from->number, to->number);
  if (entry) {
    if (!__atomic_load_n(&entry->used, __ATOMIC_RELAXED))
      __atomic_store_n(&entry->used, true, __ATOMIC_RELAXED);
    cmsDoTransform(entry->transform, source, result, 1);
  }
  pthread_rwlock_unlock(&shard->lock);
  return entry;
}

bool QVXTransform(const QVXTransformEnd* from, const double* in, const QVXTransformEnd* to, double* out) {
  double source[QVXMostChannels];
  double result[QVXMostChannels];
  for (unsigned i = 0; i < from->channels; ++i) source[i] = QVXHeldComponent(in[i], from->isLab);
  // Another thread may need the memory before the new transform is used.
  while (!Convert(from, source, to, result))
    if (!Provide(from, to)) return false;
  for (unsigned i = 0; i < to->channels; ++i) out[i] = QVXHeldComponent(result[i], to->isLab);
  return true;
}

bool QVXCanTransform(const QVXTransformEnd* from, const QVXTransformEnd* to) {
  return Provide(from, to);
}

void QVXForgetTransforms(uint64_t profileNumber) {
  for (Shard* each = shards; each < shards + kShards; ++each) Clear(each, IsOfOthers, profileNumber);
}
