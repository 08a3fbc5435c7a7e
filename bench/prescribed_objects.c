// bench/prescribed_objects.c - the prescribed paths of what makes wrapper instances, and of colour lists.
#include "bench/prescribed.h"
#include "bench/prescribed_frame.h"

enum { kDataOffset = 24, kMostComponents = 20 };

static void** Data(void* instance) {
  return (void**)((char*)instance + kDataOffset);
}

// The wrapper of a native object, with one reference: the one that is there, or a new one.
static inline void* Wrap(const PrescribedCalls* call, void* native, const char* className) {
  if (native == NULL) return NULL;
  void* found = (void*)call->find(call->instances, native);
  if (found) {
    call->lock(found);
    return found;
  }
  void* made = call->newInstance(className);
  if (made == NULL) return NULL;
  *Data(made) = call->send(native, call->retain);
  call->enter(call->instances, native, made);
  return made;
}

// A host string as a platform one, autoreleased.
static inline void* Text(const PrescribedCalls* call, void* string) {
  void* copy = call->copyString(string);
  call->send(copy, call->autorelease);
  return copy;
}

static const PrescribedCalls* used;

void PrescribedUse(const PrescribedCalls* calls) {
  used = calls;
}

void PrescribedConstructor(void* instance) {
  (void)instance;
}

PRESCRIBED void PrescribedDestructor(void* instance) {
  const PrescribedCalls* call = used;
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(used, &frame);
    return;
  }
  void** data = Data(instance);
  if (*data) {
    call->removeEntry(call->instances, *data);
    call->send(*data, call->release);
    *data = NULL;
  }
  call->exitFrame(&frame);
}

PRESCRIBED void* PrescribedWrapper(const PrescribedCalls* call, void* receiver, void* selector,
                                   const char* className) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return NULL;
  }
  void* result = Wrap(call, call->send(receiver, selector), className);
  call->exitFrame(&frame);
  return result;
}

PRESCRIBED void* PrescribedOfClass(const PrescribedCalls* call, const char* receiver, void* selector,
                                   const char* className) {
  return Wrap(call, call->send(call->getClass(receiver), selector), className);
}

PRESCRIBED void* PrescribedFromFour(const PrescribedCalls* call, void* colourClass, void* selector,
                                    double first, double second, double third, double alpha) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return NULL;
  }
  void* (*send)(void*, void*, float, float, float, float) =
      (void* (*)(void*, void*, float, float, float, float))call->send;
  void* colour = send(colourClass, selector, (float)first, (float)second, (float)third, (float)alpha);
  void* result = Wrap(call, colour, "NSColorQVX");
  call->exitFrame(&frame);
  return result;
}

PRESCRIBED void* PrescribedFromOne(const PrescribedCalls* call, void* native, void* selector, double value) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return NULL;
  }
  void* (*send)(void*, void*, float) = (void* (*)(void*, void*, float))call->send;
  void* result = Wrap(call, send(native, selector, (float)value), "NSColorQVX");
  call->exitFrame(&frame);
  return result;
}

PRESCRIBED void* PrescribedFromSpace(const PrescribedCalls* call, void* colourClass, void* selector,
                                     void* space, void* components) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return NULL;
  }
  void* result = NULL;
  int32_t upperBound = call->upperBound(components);
  if (upperBound >= 1 && upperBound < kMostComponents) {
    float values[kMostComponents];
    for (int32_t i = 0; i <= upperBound; ++i) {
      double element = 0.0;
      void (*get)(void*, int32_t, double*) = call->getProcedure(components);
      if (get) get(components, i, &element);
      values[i] = (float)element;
    }
    result = Wrap(call, call->send(colourClass, selector, space, values, upperBound + 1), "NSColorQVX");
  }
  call->exitFrame(&frame);
  return result;
}

PRESCRIBED void* PrescribedFromString(const PrescribedCalls* call, void* receiver, void* selector,
                                      void* string, const char* className) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return NULL;
  }
  void* result = Wrap(call, call->send(receiver, selector, Text(call, string)), className);
  call->exitFrame(&frame);
  return result;
}

PRESCRIBED void* PrescribedFromBlock(const PrescribedCalls* call, void* spaceClass, void* block) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return NULL;
  }
  void* result = NULL;
  call->lock(block);
  int32_t size = call->blockSize(block);
  void* bytes = call->blockPointer(block);
  void* data = bytes && size > 0 ? call->send(call->dataClass, call->dataWithBytes, bytes, size) : NULL;
  call->unlock(block);
  if (data) {
    void* space = call->send(call->send(spaceClass, call->alloc), call->initWithData, data);
    result = Wrap(call, space, "NSColorSpaceQVX");
    call->send(space, call->release);
  }
  call->exitFrame(&frame);
  return result;
}

PRESCRIBED void PrescribedInsert(const PrescribedCalls* call, void* list, void* selector, void* colour,
                                 void* key, uint32_t index) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return;
  }
  call->send(list, selector, colour, Text(call, key), index);
  call->exitFrame(&frame);
}

PRESCRIBED void PrescribedRemove(const PrescribedCalls* call, void* list, void* selector, void* key) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return;
  }
  call->send(list, selector, Text(call, key));
  call->exitFrame(&frame);
}
