// hostrun/host/service_list.h - the list of services as the host reads it: each name, and each type in the
// host's own terms.
#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "bundle/host/records.h"
#include "hostrun/host/objects.h"
#include "hostrun/host/strings.h"

namespace hostrun {

// What the host itself calls a type of the list.
template <class T>
struct OwnType {
  using Type = T;
};
template <>
struct OwnType<qvx::REALobject> {
  using Type = Object*;
};
template <>
struct OwnType<qvx::REALarray> : OwnType<qvx::REALobject> {};
template <>
struct OwnType<qvx::REALmemoryBlock> : OwnType<qvx::REALobject> {};
template <>
struct OwnType<qvx::REALfolderItem> : OwnType<qvx::REALobject> {};
template <>
struct OwnType<qvx::REALstring> {
  using Type = HostString*;
};
template <>
struct OwnType<qvx::REALboolean> {
  using Type = bool;
};

// The kinds of the list. Function is the type of what the resolver answers, Procedure that of what this
// answers in turn.
namespace listed {

template <class Signature>
struct Service;
template <class R, class... A>
struct Service<R(A...)> {
  using Function = typename OwnType<R>::Type(typename OwnType<A>::Type...);
  using Procedure = void;
};

template <class Signature>
using UnkeptService = Service<Signature>;

template <class Signature>
struct ArrayService {
  using Function = void*(Object* array);
  using Procedure = typename Service<Signature>::Function;
};

// No service: the resolver does not know it.
template <class Signature>
struct GlobalMethod {
  using Function = void;
  using Procedure = void;
};

}  // namespace listed

// Calls visit.operator()<Kind>(bundleName, hostName) for each service, in the order of the list. A service
// that the bundle has two names for comes twice.
template <class Visit>
constexpr void ForEachService(Visit visit) {
  const auto visitService = [&]<class Kind>(const char* bundleName, const char* hostName) {
    if constexpr (!std::is_void_v<typename Kind::Function>)
      visit.template operator()<Kind>(bundleName, hostName);
  };
  using namespace qvx;
  using namespace listed;
#define SERVICE(name, hostName, ...) visitService.template operator()<__VA_ARGS__>(#name, hostName);
#include "bundle/host/services.inc"
}

// Whether the list has a service of that name and type.
template <class Function>
consteval bool IsService(std::string_view hostName) {
  bool found = false;
  ForEachService([&]<class Kind>(const char*, std::string_view name) {
    found = found || (name == hostName && std::is_same_v<Function, typename Kind::Function>);
  });
  return found;
}

// Whether the service of that name answers procedures of that type.
template <class Procedure>
consteval bool IsProcedure(std::string_view hostName) {
  bool found = false;
  ForEachService([&]<class Kind>(const char*, std::string_view name) {
    found = found || (name == hostName && std::is_same_v<Procedure, typename Kind::Procedure>);
  });
  return found;
}

}  // namespace hostrun
