// hostrun/sibling/pasteboard_types.cpp - "Pasteboard": declares what a program is going to write to the
// platform's general pasteboard, which takes nothing that was not declared.
#include <array>
#include <string>

#include "hostrun/host/arrays.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"
#include "hostrun/sibling/sibling.h"

namespace hostrun {
namespace {

constexpr const char* kColorType = "NSColorPboardType";

PlatformId GeneralPasteboard() {
  auto* const board = Send<PlatformId>(TheObjectRuntime().getClass("NSPasteboard"), "generalPasteboard");
  if (board == nullptr)
    RaiseHostException("UnsupportedOperationException", "The platform has no pasteboard.");
  return board;
}

// What was there before is gone.
void Declare(const std::vector<std::string>& types) {
  PlatformId const board = GeneralPasteboard();
  auto* const list = Send<PlatformId>(TheObjectRuntime().getClass("NSMutableArray"), "array");
  for (const std::string& type : types) {
    PlatformId const name = NewPlatformString(type);
    if (name == nullptr)
      RaiseHostException("InvalidArgumentException", "Wanted a type in UTF-8, found other bytes.");
    Send<void>(list, "addObject:", name);
    ReleasePlatformObject(name);
  }
  Send<std::int32_t>(board, "declareTypes:owner:", list, static_cast<PlatformId>(nullptr));
}

void DeclareColor() {
  Declare({kColorType});
}

void DeclareTypes(Object* types) {
  std::vector<std::string> names;
  if (types != nullptr) {
    for (const Value& type : ArrayDataOf(types).items) names.push_back(Utf8Of(type.string()));
  }
  Declare(names);
}

Object* Types() {
  ObjectRef array = ObjectRef::Adopt(NewArray(*TypeOf(Kind::String), -1));
  auto* const types = Send<PlatformId>(GeneralPasteboard(), "types");
  const auto count = Send<std::uint32_t>(types, "count");
  for (std::uint32_t i = 0; i < count; ++i) {
    ArrayDataOf(array.get())
        .items.push_back(Value::Adopt(HostStringOf(Send<PlatformId>(types, "objectAtIndex:", i))));
  }
  return array.Detach();
}

std::array sharedMethods = {
    MethodRecord("DeclareColor", &DeclareColor),
    MethodRecord("DeclareTypes(paramarray types as string)", &DeclareTypes),
    MethodRecord("Types as string()", &Types),
};

constinit qvx::REALclassDefinition record = ClassRecord("Pasteboard");

}  // namespace

void RegisterPasteboardTypes() {
  SetSharedMethods(record, sharedMethods);
  TheRegistry().Register(record, Origin::Sibling);
}

}  // namespace hostrun
