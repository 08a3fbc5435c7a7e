// hostrun/host/host.cpp - a host's own classes, and the count of what is still alive.
#include "hostrun/host/host.h"

#include <map>
#include <utility>

#include "hostrun/host/arrays.h"
#include "hostrun/host/dictionaries.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/folder_items.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/memory_blocks.h"
#include "hostrun/host/objects.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/strings.h"
#include "hostrun/host/text_files.h"

namespace hostrun {
namespace {

constexpr const char* kStringName = "_String";

using Places = std::map<std::pair<std::string, int>, int>;

std::vector<LiveCounts::ByPlace> Listed(const Places& places) {
  std::vector<LiveCounts::ByPlace> list;
  for (const auto& [place, count] : places) list.push_back({place.first, place.second, count});
  return list;
}

// "3 strings"; of a class that programs can name, "3 FolderItem".
std::string Counted(const LiveCounts::ByPlace& place) {
  const std::string number = std::to_string(place.count) + " ";
  const std::string plural = place.count == 1 ? "" : "s";
  if (place.className == "_Array") return number + "array" + plural;
  if (place.className == "_Variant") return number + "variant" + plural;
  if (place.className == kStringName) return number + "string" + plural;
  return number + place.className;
}

}  // namespace

void NoteStarted() {
  GiveStringsToHost();
}

void RegisterHostClasses() {
  RegisterExceptionClasses();
  ArrayClass();
  RegisterMemoryBlockClass();
  RegisterFolderItemClass();
  RegisterTextFileClass();
  RegisterDictionaryClass();
  RegisterTextFunctions();
  RegisterNumberFunctions();
}

LiveCounts CountLive() {
  LiveCounts counts;
  Places byPlace;
  for (const Object* object = FirstLiveObject(); object != nullptr; object = object->next) {
    ++byPlace[{object->cls->name, object->line}];
    if (object->cls->origin != Origin::Host && NativePointerOf(const_cast<Object*>(object)) != nullptr) {
      ++counts.nativeRetains;
    }
  }
  counts.objects = Listed(byPlace);
  byPlace.clear();
  for (const HostString* string = FirstLiveString(); string != nullptr; string = string->next) {
    if (string->line != kLineOfHost) ++byPlace[{kStringName, string->line}];
  }
  counts.strings = Listed(byPlace);
  return counts;
}

std::string DescribeLive(const LiveCounts& counts) {
  std::string text;
  for (const auto* places : {&counts.objects, &counts.strings}) {
    for (const LiveCounts::ByPlace& place : *places) {
      text += "  " + Counted(place);
      text += place.line > 0 ? ", made in line " + std::to_string(place.line) + "\n"
                             : ", made outside of the program\n";
    }
  }
  if (counts.nativeRetains > 0) {
    text += "  " + std::to_string(counts.nativeRetains) +
            (counts.nativeRetains == 1 ? " native object" : " native objects") +
            " retained by wrapper instances\n";
  }
  return text;
}

}  // namespace hostrun
