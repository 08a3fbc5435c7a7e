// bundle/host/services.h - the bundle's side of every service: one wrapper for each line of services.inc.
//
// A wrapper has a slot of its own: the resolver is asked on first use; a found function is kept and never
// asked for again, a missing one is asked for again on every use. Only an UnkeptService keeps nothing. A
// missing service does nothing and yields the neutral result of its type (null, 0, false).
#pragma once

#include "bundle/host/types.h"

namespace qvx {

using REALresolver = void* (*)(const char* name);

// The host's resolver, kept for the life of the process. Written once by REALPluginMain.
inline constinit REALresolver gResolver = nullptr;

// The host's version, e.g. 2013.04; 0.0 while unknown. Written once by REALPluginMain.
inline constinit double rbversion = 0.0;

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

// A service that is asked for on every use. To be called through Find: nothing stands in for a missing one.
template <typename Signature>
class UnkeptService {
 public:
  constexpr explicit UnkeptService(const char* name) : name_(name) {}

  // The host's function, or null while the host does not know it.
  Signature* Find() const { return reinterpret_cast<Signature*>(AskResolver(name_)); }

 private:
  const char* name_;
};

// A service of two stages: it answers the procedure for one array, and that procedure does the work. Without
// the service or the procedure nothing is done.
template <typename Signature>
class ArrayService;

template <typename... Arguments>
class ArrayService<void(REALarray, Arguments...)> {
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

// A method of the host's global module, found through "REALLoadGlobalMethod" by its declaration. The same
// rules as for a service hold.
template <typename Signature>
class GlobalMethod;

template <typename Result, typename... Arguments>
class GlobalMethod<Result(Arguments...)> {
 public:
  using Procedure = Result (*)(Arguments...);

  constexpr explicit GlobalMethod(const char* declaration) : declaration_(declaration) {}

  Procedure Find();

  Result operator()(Arguments... arguments) {
    const Procedure procedure = Find();
    return procedure != nullptr ? procedure(arguments...) : Result();
  }

 private:
  const char* declaration_;
  Procedure procedure_ = nullptr;
};

#define SERVICE(name, hostName, ...) inline constinit __VA_ARGS__ name{hostName};
#include "bundle/host/services.inc"

template <typename Result, typename... Arguments>
auto GlobalMethod<Result(Arguments...)>::Find() -> Procedure {
  if (procedure_ == nullptr) procedure_ = reinterpret_cast<Procedure>(REALLoadFrameworkMethod(declaration_));
  return procedure_;
}

}  // namespace qvx
