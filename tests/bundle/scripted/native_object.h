// tests/bundle/scripted/native_object.h - the scripted platform's objects: classes, colours, strings, data,
// URLs, exceptions.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "bundle/platform/cocoa.h"

namespace scripted {

// One object of the scripted platform. Who holds it is kept apart, so that the bundle's own balance can be
// read: `held` counts the references that the bundle took (alloc, create, copy, retain) and has not given
// back.
struct NativeObject {
  std::string className;
  std::string name;  // how the log calls it
  bool isClass = false;
  int held = 0;    // the bundle's references
  int pooled = 0;  // references that wait in the autorelease pool
  int kept = 0;    // references of everybody else
  bool freed = false;
  int retains = 0;  // messages received, for tests that count them
  int releases = 0;
  int autoreleases = 0;

  std::u16string text;                         // strings; paths of URLs
  std::vector<std::uint8_t> bytes;             // data
  std::vector<NativeObject*> items;            // arrays; what an enumerator still has to answer
  std::map<const void*, const void*> entries;  // dictionaries
  std::uint32_t claimedLength = 0;             // data that claims to be longer than it is
  bool claims = false;
};

// Whether `pointer` is an object of the scripted platform, alive or freed.
bool IsNative(const void* pointer);
NativeObject* Native(const void* pointer);  // null for nil; aborts the test for anything that is no object

// Makes an object that belongs to "everybody else": it stays alive until the end.
NativeObject* MakeNative(std::string_view className, std::string_view name = {});
NativeObject* MakeText(std::u16string_view text);
NativeObject* MakeText(std::string_view ascii);
NativeObject* MakeData(std::vector<std::uint8_t> bytes);
NativeObject* MakeDictionary(std::string_view name);
// An NSException with name, reason and user info.
NativeObject* MakeException(std::string_view name = "NSTestException", std::string_view reason = "scripted");

// Makes the same kinds, owned by the pool (as a factory answers) or by the caller (as alloc, Create and Copy
// answer).
NativeObject* Autoreleased(NativeObject* object);
NativeObject* Owned(NativeObject* object);

inline id AsId(NativeObject* object) {
  return reinterpret_cast<id>(object);
}

// The class object of that name. Made on first use; Hide makes objc_getClass answer null for it.
NativeObject* ClassNamed(std::string_view name);
void HideClass(std::string_view name);
bool IsHidden(std::string_view name);

SEL SelectorNamed(std::string_view name);
std::string SelectorName(SEL selector);  // "?" for an unknown selector, which is also a violation

// Retain, release, autorelease on behalf of the bundle; a broken balance is a violation.
void TakeReference(NativeObject* object);
void GiveReference(NativeObject* object, std::string_view how);
void MoveReferenceToPool(NativeObject* object);
void DrainPool();

const std::vector<NativeObject*>& AllNatives();

// The objects made so far are there for good; ForgetNatives deletes every later one and clears what those
// hold.
void KeepNatives();
void ForgetNatives();

// How the log writes any pointer: a native object, a host handle, or a number.
std::string Describe(const void* pointer);

}  // namespace scripted
