// bench/prescribed.h - the prescribed paths: exactly the calls that a bundle's function has to make, in order
// and in one frame, without anything of the bundle around them. Services are looked up once.
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// What the paths call. Pointers of objects and strings, of the platform and of the host, are untyped.
typedef struct {
  // The platform.
  void* (*send)(void*, void*, ...);
  float (*sendForFloat)(void*, void*, ...);
  void* (*getClass)(const char*);
  void (*enterFrame)(void*);
  void (*exitFrame)(void*);
  void* (*extract)(void*);
  int (*match)(void*, void*);
  int32_t (*stringLength)(const void*);
  uint8_t (*stringBytes)(const void*, char*, int32_t, uint32_t);
  void* (*createString)(const void*, const char*, uint32_t);
  void (*log)(void*, ...);
  void (*releaseTemporary)(const void*);
  const void* (*find)(const void*, const void*);
  void (*enter)(void*, const void*, const void*);
  void (*removeEntry)(void*, const void*);
  void* instances;  // the cache of wrapper instances
  void* exceptionClass;
  void* dataClass;
  // Selectors.
  void *retain, *release, *autorelease, *bytes, *length, *dataWithBytes, *alloc, *initWithData;
  void *name, *reason, *userInfo, *newException;

  // The host.
  void* (*newInstance)(const char*);
  void (*lock)(void*);
  void (*unlock)(void*);
  void (*raise)(void*);
  void* (*copyString)(void*);
  void* (*buildString)(const void*, int32_t);
  void (*setStringEncoding)(void*, uint32_t);
  void* (*newBlock)(int32_t);
  void* (*blockPointer)(void*);
  int32_t (*blockSize)(void*);
  void* (*newArray)(int32_t, int32_t);
  int32_t (*upperBound)(void*);
  void (*(*insertProcedure)(void*))(void*, int32_t, double);
  void (*(*getProcedure)(void*))(void*, int32_t, double*);
} PrescribedCalls;

// ---- prescribed.c: reading ----

// A component of a colour, as a double; 0.0 if it has none.
double PrescribedDouble(const PrescribedCalls*, void* native, void* selector);

// A number of an object.
int32_t PrescribedInteger(const PrescribedCalls*, void* native, void* selector);

// A colour that has RGB components, as a host colour.
uint32_t PrescribedColour(const PrescribedCalls*, void* native, void* getRed);

// The first three components by reference.
void PrescribedThree(const PrescribedCalls*, void* native, void* getRed, double* red, double* green,
                     double* blue);

// All components, as a host array with one reference.
void* PrescribedComponents(const PrescribedCalls*, void* native, void* count, void* getComponents);

// White by reference. An exception is logged and handed to the host.
void PrescribedWhite(const PrescribedCalls*, void* native, void* getWhite, double* white);

// A text of an object, as a host string with one reference; null if it is empty.
void* PrescribedString(const PrescribedCalls*, void* native, void* selector);

// The bytes of an object's data, as a host memory block with one reference; null if there are none.
void* PrescribedBlock(const PrescribedCalls*, void* native, void* selector);

// ---- prescribed_objects.c: wrapper instances, with one reference, and what takes strings and data ----

// The constructor and the destructor of the instances that `newInstance` makes, for the calls last named.
void PrescribedUse(const PrescribedCalls*);
void PrescribedConstructor(void* instance);
void PrescribedDestructor(void* instance);

// What a message without arguments answers.
void* PrescribedWrapper(const PrescribedCalls*, void* receiver, void* selector, const char* className);

// The same without a frame; the receiver is a class that is looked up by its name.
void* PrescribedOfClass(const PrescribedCalls*, const char* receiver, void* selector, const char* className);

// A colour of the platform's class from four doubles, or from another one and one double.
void* PrescribedFromFour(const PrescribedCalls*, void* colourClass, void* selector, double first,
                         double second, double third, double alpha);
void* PrescribedFromOne(const PrescribedCalls*, void* native, void* selector, double value);

// A colour of a space, of a host array of components. An exception is logged and handed to the host.
void* PrescribedFromSpace(const PrescribedCalls*, void* colourClass, void* selector, void* space,
                          void* components);

// What a message with a host string answers.
void* PrescribedFromString(const PrescribedCalls*, void* receiver, void* selector, void* string,
                           const char* className);

// A colour space from the bytes of a host memory block.
void* PrescribedFromBlock(const PrescribedCalls*, void* spaceClass, void* block);

// Changes of a colour list.
void PrescribedInsert(const PrescribedCalls*, void* list, void* selector, void* colour, void* key,
                      uint32_t index);
void PrescribedRemove(const PrescribedCalls*, void* list, void* selector, void* key);

#ifdef __cplusplus
}
#endif
