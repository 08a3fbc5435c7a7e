// runner/host/host.cpp - a host's own classes, and the count of what is still alive.
#include "runner/host/host.h"

#include <map>
#include <utility>

#include "runner/host/arrays.h"
#include "runner/host/exceptions.h"
#include "runner/host/folder_items.h"
#include "runner/host/functions.h"
#include "runner/host/memory_blocks.h"
#include "runner/host/objects.h"
#include "runner/host/registry.h"
#include "runner/host/strings.h"

namespace hostrun {
namespace {

constinit std::int32_t stringsAtStart = 0;

}  // namespace

void NoteStarted() {
  stringsAtStart = LiveStrings();
}

void RegisterHostClasses() {
  RegisterExceptionClasses();
  ArrayClass();
  RegisterMemoryBlockClass();
  RegisterFolderItemClass();
  RegisterTextFunctions();
  RegisterNumberFunctions();
}

LiveCounts CountLive() {
  LiveCounts counts;
  std::map<std::pair<std::string, int>, int> byPlace;
  for (const Object* object = FirstLiveObject(); object != nullptr; object = object->next) {
    ++byPlace[{object->cls->name, object->line}];
    if (object->cls->origin != Origin::Host && NativePointerOf(const_cast<Object*>(object)) != nullptr) {
      ++counts.nativeRetains;
    }
  }
  for (const auto& [place, count] : byPlace) counts.objects.push_back({place.first, place.second, count});
  counts.strings = LiveStrings() - stringsAtStart;
  return counts;
}

std::string DescribeLive(const LiveCounts& counts) {
  std::string text;
  for (const LiveCounts::ByPlace& place : counts.objects) {
    const std::string name = place.className == "_Array"     ? "array"
                             : place.className == "_Variant" ? "variant"
                                                             : place.className;
    text += "  " + std::to_string(place.count) + " " + name;
    text += place.line > 0 ? ", made in line " + std::to_string(place.line) + "\n"
                           : ", made outside of the program\n";
  }
  if (counts.strings > 0) text += "  " + std::to_string(counts.strings) + " strings\n";
  if (counts.nativeRetains > 0) {
    text += "  " + std::to_string(counts.nativeRetains) + " native objects retained by wrapper instances\n";
  }
  return text;
}

}  // namespace hostrun
