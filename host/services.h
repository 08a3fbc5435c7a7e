// host/services.h - the whole host on one page: every service the bundle calls, one line each.
//
// A service is a function of the host that its resolver finds by name. Each line below is one wrapper with
// one slot: the resolver is asked on first use; a found function is kept and never asked for again, a missing
// one is asked for again on every use. A missing service does nothing and yields the neutral result of its
// type (null, 0, false). No call takes ownership of its arguments.
#pragma once

#include "host/types.h"

namespace qvx {

using REALresolver = void* (*)(const char* name);

// The host's resolver, kept for the life of the process. Written once by REALPluginMain.
extern constinit REALresolver gResolver;

// The host's version, e.g. 2013.04; 0.0 while unknown. Written once by REALPluginMain.
extern constinit double rbversion;

// What the resolver knows under `name`, or null.
void* AskResolver(const char* name);

template <typename Signature>
class Service;

template <typename Result, typename... Arguments>
class Service<Result(Arguments...)> {
 public:
  using Procedure = Result (*)(Arguments...);

  constexpr explicit Service(const char* name) : name_(name) {}

  // The host's function, or null while the host does not know it.
  Procedure Find() {
    if (procedure_ == nullptr) procedure_ = reinterpret_cast<Procedure>(AskResolver(name_));
    return procedure_;
  }

  Result operator()(Arguments... arguments) {
    const Procedure procedure = Find();
    if (procedure == nullptr) return Result();
    return procedure(arguments...);
  }

 private:
  const char* name_;
  Procedure procedure_ = nullptr;
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

// A method of the host's global module, found through "REALLoadGlobalMethod" by its declaration. The same
// rules as for a service hold.
template <typename Signature>
class GlobalMethod;

struct REALclassDefinition;

using std::int32_t;
using std::uint32_t;

// Registration.
inline constinit Service<void(REALclassDefinition*)> REALRegisterClass{"PluginRegisterClass"};

// Objects. A new instance comes with one reference.
inline constinit Service<REALobject(const char* className)> REALnewInstance{"PluginNewInstance"};
inline constinit Service<void(REALobject)> REALLockObject{"REALLockObject"};
inline constinit Service<void(REALobject)> REALUnlockObject{"REALUnlockObject"};
inline constinit Service<REALboolean(REALobject, const char* property, int32_t)> REALSetPropValueInt32{
    "REALSetPropValueInt"};
inline constinit Service<REALboolean(REALobject, const char* property, REALstring)> REALSetPropValueString{
    "REALSetPropValueString"};

// Hands over an exception object; the host raises it once the bundle's function has returned.
inline constinit Service<void(REALobject)> REALRaiseException{"RuntimeRaiseException"};

// Strings. What builds, converts or copies gives one reference.
inline constinit Service<void(REALstring)> REALLockString{"REALLockString"};
inline constinit Service<void(REALstring)> REALUnlockString{"REALUnlockString"};
inline constinit Service<REALstring(const void* bytes, int32_t length)> originalREALBuildString{
    "REALBuildString"};
inline constinit Service<REALstring(const void* bytes, int32_t length, uint32_t encoding)>
    REALBuildStringWithEncoding{"REALBuildStringWithEncoding"};
inline constinit Service<REALstring(REALstring, uint32_t encoding)> REALConvertString{"REALConvertString"};
inline constinit Service<uint32_t(REALstring)> REALGetStringEncoding{"REALGetStringEncoding"};
inline constinit Service<void(REALstring, uint32_t encoding)> REALSetStringEncoding{"REALSetStringEncoding"};
// Two wrappers of one name, on purpose: each keeps its own slot.
inline constinit Service<const void*(REALstring)> REALCopyStringCFString{"REALGetStringCFString"};
inline constinit Service<const void*(REALstring, char flag)> REALGetStringCFString{"REALGetStringCFString"};
inline constinit Service<REALboolean(REALstring, uint32_t encoding, REALstringData* out)> PluginGetStringData{
    "PluginGetStringData"};
inline constinit Service<void(REALstringData*)> REALDisposeStringData{"PluginDisposeStringData"};
inline constinit Service<const char*(REALstring)> StringGetCString{"StringGetCString"};
inline constinit Service<void*(const char* declaration)> REALLoadFrameworkMethod{"REALLoadGlobalMethod"};

// Memory blocks. A new block comes with one reference.
inline constinit Service<REALmemoryBlock(int32_t size)> REALNewMemoryBlockOriginal{"newMemoryBlock"};
inline constinit Service<void*(REALmemoryBlock)> REALMemoryBlockGetPtr{"memoryBlockGetPtr"};
inline constinit Service<int32_t(REALmemoryBlock)> REALMemoryBlockGetSize{"memoryBlockGetSize"};

// Arrays. A new array comes with one reference; an inserted object is locked by the array.
inline constinit Service<REALarray(REALArrayType, int32_t upperBound)> REALCreateArray{
    "RuntimeArrayCreateSingleDimBoundedArray"};
inline constinit Service<int32_t(REALarray)> REALGetArrayUBound{"RuntimeUBound"};
inline constinit ArrayService<int32_t, double> REALInsertArrayValueDouble{"RuntimeArrayDirectGetInsertProc"};
inline constinit ArrayService<int32_t, REALobject> REALInsertArrayValueObject{
    "RuntimeArrayDirectGetInsertProc"};
inline constinit ArrayService<int32_t, double*> REALGetArrayValueDouble{"RuntimeArrayDirectGetGetProc"};

// Folder items. Without `leafName` the item itself must exist; with it, the reference is the parent folder's.
inline constinit Service<REALboolean(REALfolderItem, FSRef*, HFSUniStr255* leafName)> REALFSRefFromFolderItem{
    "REALFSRefFromFolderItem"};

template <typename Result, typename... Arguments>
class GlobalMethod<Result(Arguments...)> {
 public:
  using Procedure = Result (*)(Arguments...);

  constexpr explicit GlobalMethod(const char* declaration) : declaration_(declaration) {}

  Procedure Find() {
    if (procedure_ == nullptr) {
      procedure_ = reinterpret_cast<Procedure>(REALLoadFrameworkMethod(declaration_));
    }
    return procedure_;
  }

  Result operator()(Arguments... arguments) {
    const Procedure procedure = Find();
    if (procedure == nullptr) return Result();
    return procedure(arguments...);
  }

 private:
  const char* declaration_;
  Procedure procedure_ = nullptr;
};

// The length of a string in bytes.
inline constinit GlobalMethod<int32_t(REALstring)> LenB{"LenB( s as string ) as integer"};

}  // namespace qvx
