// hostrun/sibling/exception_wrapper.cpp - "NSExceptionQVX": a host exception that carries a platform
// exception.
#include <array>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"
#include "hostrun/sibling/sibling.h"

namespace hostrun {
namespace {

HostString* Read(Object* self, const char* selector) {
  return HostStringOf(Send<PlatformId>(NativePointerOf(self), selector));
}
HostString* Name(Object* self, std::int32_t) {
  return Read(self, "name");
}
HostString* Reason(Object* self, std::int32_t) {
  return Read(self, "reason");
}
HostString* Description(Object* self, std::int32_t) {
  return Read(self, "description");
}

void Destroy(qvx::REALobject self) {
  Unwrap(reinterpret_cast<Object*>(self));
}

std::array properties = {
    ReadOnly("name", "string", &Name),
    ReadOnly("reason", "string", &Reason),
    ReadOnly("description", "string", &Description),
};
std::array<qvx::REALmethodDefinition, 0> methods;

constinit qvx::REALclassDefinition record = ClassRecord("NSExceptionQVX", "RuntimeException");

}  // namespace

void RegisterExceptionWrapper() {
  SetMembers(record, methods, properties);
  record.dataSize = 16;
  record.destructor = &Destroy;
  TheRegistry().Register(record, Origin::Sibling);
}

Object* NewExceptionWrapper(PlatformId exception) {
  if (exception == nullptr) return nullptr;
  if (Object* const known = CachedInstance(exception)) {
    LockObject(known);
    return known;
  }
  try {
    Object* const wrapper = NewObject(TheRegistry().ClassNamed("NSExceptionQVX"));
    Wrap(wrapper, Send<PlatformId>(exception, "retain"));
    PayloadOf<ExceptionData>(wrapper).message = StringRef::Adopt(Reason(wrapper, 0));
    return wrapper;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace hostrun
