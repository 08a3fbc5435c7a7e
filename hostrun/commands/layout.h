// hostrun/commands/layout.h - the words of definition records, as a bundle registered them.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <span>
#include <string>

#include "bundle/host/records.h"
#include "hostrun/host/host.h"

namespace hostrun {

enum class RecordKind : std::uint8_t { Definition, Method, Property, Constant, Event };

// What one word of a record holds.
struct RecordWord {
  enum class Holds : std::uint8_t { Number, Text, Function, Array };
  const char* name;
  Holds holds = Holds::Number;
  RecordKind of =
      RecordKind::Definition;  // of an Array: the kind of its records; the next word is their count
};

// The words of the current layout; the old layout has the first OldWordCount of them.
std::span<const RecordWord> WordsOf(RecordKind kind);
std::size_t OldWordCount(RecordKind kind);

// True up to version 9.
bool IsOldLayout(std::int32_t version);
std::size_t RecordSize(RecordKind kind, bool old);

// The words of every class that the bundle registered on this host, as texts. A function is shown as its
// place in the bundle's file, so that the answer is the same in every process.
nlohmann::ordered_json LayoutOfClasses();

// LayoutOfClasses of a host with those options, asked in a process of its own. Throws std::runtime_error.
nlohmann::ordered_json LayoutOnHost(const HostOptions& options);

}  // namespace hostrun
