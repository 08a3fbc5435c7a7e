// hostrun/host/records.h - makes definition records for the classes that the runner itself brings. They are
// registered like those of a bundle and called in the same way.
#pragma once

#include <array>

#include "bundle/host/records.h"
#include "hostrun/host/objects.h"

namespace hostrun {

// A function as a record holds it. Handles are Object* and HostString* on this side of the border.
template <class R, class... A>
qvx::REALproc Proc(R (*function)(A...)) {
  return reinterpret_cast<qvx::REALproc>(function);
}

template <class R, class... A>
qvx::REALmethodDefinition MethodRecord(const char* declaration, R (*function)(A...)) {
  return {Proc(function), nullptr, declaration, qvx::kMethodFlags, {}};
}

template <class R, class... A>
qvx::REALproperty ReadOnly(const char* name, const char* type, R (*getter)(A...)) {
  return {nullptr, name, type, qvx::kPropertyFlags, Proc(getter), nullptr, 0, {}, {}};
}

template <class R, class... A, class... B>
qvx::REALproperty ReadWrite(const char* name, const char* type, R (*getter)(A...), void (*setter)(B...)) {
  return {nullptr, name, type, 0, Proc(getter), Proc(setter), 0, {}, {}};
}

constexpr qvx::REALclassDefinition ClassRecord(const char* name, const char* superName = nullptr) {
  qvx::REALclassDefinition record{};
  record.version = 13;
  record.name = name;
  record.superName = superName;
  record.flags = qvx::kClassFlags;
  return record;
}

template <std::size_t M, std::size_t P>
void SetMembers(qvx::REALclassDefinition& record, std::array<qvx::REALmethodDefinition, M>& methods,
                std::array<qvx::REALproperty, P>& properties) {
  record.methods = methods.data();
  record.methodCount = M;
  record.properties = properties.data();
  record.propertyCount = P;
}

template <std::size_t M>
void SetSharedMethods(qvx::REALclassDefinition& record, std::array<qvx::REALmethodDefinition, M>& methods) {
  record.sharedMethods = methods.data();
  record.sharedMethodCount = M;
}

template <std::size_t C>
void SetConstants(qvx::REALclassDefinition& record, std::array<qvx::REALconstant, C>& constants) {
  record.constants = constants.data();
  record.constantCount = C;
}

}  // namespace hostrun
