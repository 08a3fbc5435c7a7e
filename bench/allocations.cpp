// bench/allocations.cpp - the C library's allocation functions, counted. Found here before the C library's
// own.
#include "bench/allocations.h"

#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
}

namespace bench {

namespace {

constinit Allocations counted = {};
constinit const void* bundleBegin = nullptr;
constinit const void* bundleEnd = nullptr;

void Count(const void* caller) {
  ++counted.all;
  if (caller >= bundleBegin && caller < bundleEnd) ++counted.bundle;
}

}  // namespace

Allocations CountAllocations() {
  return counted;
}

void SetBundleRange(const void* begin, const void* end) {
  bundleBegin = begin;
  bundleEnd = end;
}

}  // namespace bench

extern "C" {

void* malloc(std::size_t size) {
  bench::Count(__builtin_return_address(0));
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  bench::Count(__builtin_return_address(0));
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  bench::Count(__builtin_return_address(0));
  return __libc_realloc(memory, size);
}

}  // extern "C"
