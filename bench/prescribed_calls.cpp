// bench/prescribed_calls.cpp - what the prescribed paths call, on a platform and the host.
#include "bench/prescribed_calls.h"

namespace bench {

namespace {

// The paths take every pointer as untyped.
template <typename To, typename From>
void Set(To& to, From from) {
  to = reinterpret_cast<To>(from);
}

template <typename To>
void SetService(To& to, const char* name) {
  Set(to, Resolve(name));
}

void SetPlatform(PrescribedCalls& calls, const Platform& platform) {
  Set(calls.send, platform.objc_msgSend);
  Set(calls.sendForFloat, platform.objc_msgSend_fpret);
  Set(calls.getClass, platform.objc_getClass);
  Set(calls.enterFrame, platform.objc_exception_try_enter);
  Set(calls.exitFrame, platform.objc_exception_try_exit);
  Set(calls.extract, platform.objc_exception_extract);
  Set(calls.match, platform.objc_exception_match);
  Set(calls.stringLength, platform.CFStringGetLength);
  Set(calls.stringBytes, platform.CFStringGetCString);
  Set(calls.createString, platform.CFStringCreateWithCString);
  Set(calls.log, platform.NSLog);
  Set(calls.releaseTemporary, platform.CFRelease);
  Set(calls.find, platform.CFDictionaryGetValue);
  Set(calls.enter, platform.CFDictionarySetValue);
  Set(calls.removeEntry, platform.CFDictionaryRemoveValue);
  Set(calls.exceptionClass, platform.objc_getClass("NSException"));
  Set(calls.dataClass, platform.objc_getClass("NSData"));
}

void SetSelectors(PrescribedCalls& calls, const Platform& platform) {
  calls.retain = SelectorOf(platform, "retain");
  calls.release = SelectorOf(platform, "release");
  calls.autorelease = SelectorOf(platform, "autorelease");
  calls.bytes = SelectorOf(platform, "bytes");
  calls.length = SelectorOf(platform, "length");
  calls.dataWithBytes = SelectorOf(platform, "dataWithBytes:length:");
  calls.alloc = SelectorOf(platform, "alloc");
  calls.initWithData = SelectorOf(platform, "initWithICCProfileData:");
  calls.name = SelectorOf(platform, "name");
  calls.reason = SelectorOf(platform, "reason");
  calls.userInfo = SelectorOf(platform, "userInfo");
  calls.newException = SelectorOf(platform, "NewNSExceptionQVX:");
}

void SetHost(PrescribedCalls& calls) {
  Set(calls.newInstance, &NewPrescribedInstance);
  SetService(calls.lock, "REALLockObject");
  SetService(calls.unlock, "REALUnlockObject");
  SetService(calls.raise, "RuntimeRaiseException");
  SetService(calls.copyString, "REALGetStringCFString");
  SetService(calls.buildString, "REALBuildString");
  SetService(calls.setStringEncoding, "REALSetStringEncoding");
  SetService(calls.newBlock, "newMemoryBlock");
  SetService(calls.blockPointer, "memoryBlockGetPtr");
  SetService(calls.blockSize, "memoryBlockGetSize");
  SetService(calls.newArray, "RuntimeArrayCreateSingleDimBoundedArray");
  SetService(calls.upperBound, "RuntimeUBound");
  SetService(calls.insertProcedure, "RuntimeArrayDirectGetInsertProc");
  SetService(calls.getProcedure, "RuntimeArrayDirectGetGetProc");
}

}  // namespace

void* SelectorOf(const Platform& platform, const char* name) {
  return const_cast<void*>(static_cast<const void*>(platform.sel_registerName(name)));
}

PrescribedCalls CallsFor(const Platform& platform, void* instances) {
  PrescribedCalls calls = {};
  SetPlatform(calls, platform);
  SetSelectors(calls, platform);
  SetHost(calls);
  calls.instances = instances;
  return calls;
}

}  // namespace bench
