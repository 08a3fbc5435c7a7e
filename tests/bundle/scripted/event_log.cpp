// tests/bundle/scripted/event_log.cpp - everything that crosses the bundle's border, in order.
#include "tests/bundle/scripted/event_log.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace scripted {
namespace {

bool insideBundle = false;

}  // namespace

EventLog& Log() {
  static auto* const log = new EventLog;  // outlives every static destructor
  return *log;
}

bool InsideBundle() {
  return insideBundle;
}
void SetInsideBundle(bool inside) {
  insideBundle = inside;
}

Fault EventLog::Record(EventKind kind, std::string name, std::string text) {
  const Outside outside;
  events_.push_back({kind, std::move(name), std::move(text), events_.size()});
  if (!hook_) return Fault::kNone;
  const Event event = events_.back();
  return hook_(event);
}

std::vector<std::string> EventLog::Lines(std::initializer_list<EventKind> kinds) const {
  std::vector<std::string> lines;
  for (const Event& event : events_) {
    if (std::ranges::find(kinds, event.kind) != kinds.end()) lines.push_back(event.text);
  }
  return lines;
}

std::vector<std::string> EventLog::Lines() const {
  return Lines(
      {EventKind::kResolve, EventKind::kService, EventKind::kMessage, EventKind::kCall, EventKind::kFrame});
}

std::vector<std::string> EventLog::Names(EventKind kind) const {
  std::vector<std::string> names;
  for (const Event& event : events_) {
    if (event.kind == kind) names.push_back(event.name);
  }
  return names;
}

int EventLog::Count(EventKind kind, std::string_view name) const {
  return static_cast<int>(std::ranges::count_if(
      events_, [&](const Event& event) { return event.kind == kind && event.name == name; }));
}

std::string Number(double value) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%.9g", value);
  return text.data();
}

std::string Hexadecimal(std::uint32_t value) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "0x%x", value);
  return text.data();
}

std::string Quoted(std::string_view bytes) {
  std::string text = "\"";
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte < 0x7F) {
      text += character;
    } else {
      constexpr std::string_view kDigits = "0123456789ABCDEF";
      text += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
    }
  }
  return text + "\"";
}

}  // namespace scripted
