// bundle/host/services.h - the whole host on one page: every service the bundle calls, one line each.
//
// A service is a function of the host that its resolver finds by name. Each line below is one wrapper with
// one slot: the resolver is asked on first use; a found function is kept and never asked for again, a missing
// one is asked for again on every use. A missing service does nothing and yields the neutral result of its
// type (null, 0, false). No call takes ownership of its arguments.
#pragma once

#include "bundle/host/types.h"

namespace qvx {

using REALresolver = void* (*)(const char* name);

// The host's resolver, kept for the life of the process. Written once by REALPluginMain.
extern constinit REALresolver gResolver;

// The host's version, e.g. 2013.04; 0.0 while unknown. Written once by REALPluginMain.
extern constinit double rbversion;

// What the resolver knows under `name`, or null.
void* AskResolver(const char* name);

// A service by its name, without its type: asked for on first use and kept.
class ServiceSlot {
 public:
  constexpr explicit ServiceSlot(const char* name) : name_(name) {}
  void* Find() { return found_ != nullptr ? found_ : Ask(); }

 private:
  void* Ask();  // out of the way of every call

  const char* name_;
  void* found_ = nullptr;
};

template <typename Signature>
class Service;

template <typename Result, typename... Arguments>
class Service<Result(Arguments...)> {
 public:
  using Procedure = Result (*)(Arguments...);

  constexpr explicit Service(const char* name) : slot_(name) {}

  // The host's function, or null while the host does not know it.
  Procedure Find() { return reinterpret_cast<Procedure>(slot_.Find()); }

  Result operator()(Arguments... arguments) {
    const Procedure procedure = Find();
    if (procedure == nullptr) return Result();
    return procedure(arguments...);
  }

 private:
  ServiceSlot slot_;
};

// A service of two stages: it answers the procedure for one array, and that procedure does the work. Without
// the service or the procedure nothing is done.
template <typename... Arguments>
class ArrayService {
 public:
  using Procedure = void (*)(REALarray, Arguments...);

  constexpr explicit ArrayService(const char* name) : service_(name) {}

  void operator()(REALarray array, Arguments... arguments) {
    const Procedure procedure = service_(array);
    if (procedure != nullptr) procedure(array, arguments...);
  }

 private:
  Service<Procedure(REALarray)> service_;
};

struct REALclassDefinition;

// Registration.
inline constinit Service<void(REALclassDefinition*)> REALRegisterClass{"PluginRegisterClass"};

// Objects. A new instance comes with one reference.
inline constinit Service<REALobject(const char* className)> REALnewInstance{"PluginNewInstance"};
inline constinit Service<void(REALobject)> REALLockObject{"REALLockObject"};
inline constinit Service<void(REALobject)> REALUnlockObject{"REALUnlockObject"};
inline constinit Service<REALboolean(REALobject, const char* property, std::int32_t)> REALSetPropValueInt32{
    "REALSetPropValueInt"};
inline constinit Service<REALboolean(REALobject, const char* property, REALstring)> REALSetPropValueString{
    "REALSetPropValueString"};

// Hands over an exception object; the host raises it once the bundle's function has returned.
inline constinit Service<void(REALobject)> REALRaiseException{"RuntimeRaiseException"};

// Strings. What builds, converts or copies gives one reference.
inline constinit Service<void(REALstring)> REALLockString{"REALLockString"};
inline constinit Service<void(REALstring)> REALUnlockString{"REALUnlockString"};
inline constinit Service<REALstring(const void* bytes, std::int32_t length)> originalREALBuildString{
    "REALBuildString"};
inline constinit Service<REALstring(const void* bytes, std::int32_t length, std::uint32_t encoding)>
    REALBuildStringWithEncoding{"REALBuildStringWithEncoding"};
inline constinit Service<REALstring(REALstring, std::uint32_t encoding)> REALConvertString{
    "REALConvertString"};
inline constinit Service<std::uint32_t(REALstring)> REALGetStringEncoding{"REALGetStringEncoding"};
inline constinit Service<void(REALstring, std::uint32_t encoding)> REALSetStringEncoding{
    "REALSetStringEncoding"};
// Two wrappers of one name, on purpose: each keeps its own slot.
inline constinit Service<const void*(REALstring)> REALCopyStringCFString{"REALGetStringCFString"};
inline constinit Service<const void*(REALstring, char flag)> REALGetStringCFString{"REALGetStringCFString"};
// Behind REALGetStringData (bundle/bridge/strings.h), which falls back on the two after it and on LenB.
inline constinit Service<REALboolean(REALstring, std::uint32_t encoding, REALstringData* out)>
    PluginGetStringData{"PluginGetStringData"};
inline constinit Service<void(REALstringData*)> REALDisposeStringData{"PluginDisposeStringData"};
inline constinit Service<const char*(REALstring)> StringGetCString{"StringGetCString"};
inline constinit Service<void*(const char* declaration)> REALLoadFrameworkMethod{"REALLoadGlobalMethod"};

// Memory blocks. A new block comes with one reference.
inline constinit Service<REALmemoryBlock(std::int32_t size)> REALNewMemoryBlockOriginal{"newMemoryBlock"};
inline constinit Service<void*(REALmemoryBlock)> REALMemoryBlockGetPtr{"memoryBlockGetPtr"};
inline constinit Service<std::int32_t(REALmemoryBlock)> REALMemoryBlockGetSize{"memoryBlockGetSize"};

// Arrays. A new array comes with one reference; an inserted object is locked by the array.
inline constinit Service<REALarray(REALArrayType, std::int32_t upperBound)> REALCreateArray{
    "RuntimeArrayCreateSingleDimBoundedArray"};
inline constinit Service<std::int32_t(REALarray)> REALGetArrayUBound{"RuntimeUBound"};
inline constinit ArrayService<std::int32_t, double> REALInsertArrayValueDouble{
    "RuntimeArrayDirectGetInsertProc"};
inline constinit ArrayService<std::int32_t, REALobject> REALInsertArrayValueObject{
    "RuntimeArrayDirectGetInsertProc"};
inline constinit ArrayService<std::int32_t, double*> REALGetArrayValueDouble{"RuntimeArrayDirectGetGetProc"};

// Folder items. Without `leafName` the item itself must exist; with it, the reference is the parent folder's.
inline constinit Service<REALboolean(REALfolderItem, FSRef*, HFSUniStr255* leafName)> REALFSRefFromFolderItem{
    "REALFSRefFromFolderItem"};

// A method of the host's global module, found through "REALLoadGlobalMethod" by its declaration. The same
// rules as for a service hold.
template <typename Signature>
class GlobalMethod;

template <typename Result, typename... Arguments>
class GlobalMethod<Result(Arguments...)> {
 public:
  using Procedure = Result (*)(Arguments...);

  constexpr explicit GlobalMethod(const char* declaration) : declaration_(declaration) {}

  Procedure Find() {
    if (procedure_ == nullptr)
      procedure_ = reinterpret_cast<Procedure>(REALLoadFrameworkMethod(declaration_));
    return procedure_;
  }

  Result operator()(Arguments... arguments) {
    const Procedure procedure = Find();
    return procedure != nullptr ? procedure(arguments...) : Result();
  }

 private:
  const char* declaration_;
  Procedure procedure_ = nullptr;
};

// The length of a string in bytes.
inline constinit GlobalMethod<std::int32_t(REALstring)> LenB{"LenB( s as string ) as integer"};

}  // namespace qvx
