// bench/prescribed.h - the prescribed paths: exactly the calls that a bundle's function has to make, in order
// and in one frame, without anything of the bundle around them. Services are looked up once.
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
  void* (*send)(void*, void*, ...);
  float (*sendForFloat)(void*, void*, ...);
  void (*enterFrame)(void*);
  void (*exitFrame)(void*);
  int32_t (*stringLength)(const void*);
  uint8_t (*stringBytes)(const void*, char*, int32_t, uint32_t);
  void* (*buildString)(const void*, int32_t);
  void (*setStringEncoding)(void*, uint32_t);
  void* (*newBlock)(int32_t);
  void* (*blockPointer)(void*);
} PrescribedCalls;

// A component of a colour, as a double.
double PrescribedDouble(const PrescribedCalls*, void* native, void* selector);

// A text of an object, as a host string with one reference; null if it is empty.
void* PrescribedString(const PrescribedCalls*, void* native, void* selector);

// The bytes of an object's data, as a host memory block with one reference; null if there are none.
void* PrescribedBlock(const PrescribedCalls*, void* native, void* selector, void* bytes, void* length);

#ifdef __cplusplus
}
#endif
