// tests/bundle/scripted/event_log.h - everything that crosses the bundle's border, in order, and the hook
// that injects faults.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace scripted {

enum class EventKind : std::uint8_t {
  kResolve,     // the resolver was asked for a name
  kService,     // a host service was called
  kMessage,     // a platform message was sent
  kCall,        // a platform C function was called
  kLookup,      // a selector or a class was looked up (allowed to be kept, so never part of an exact order)
  kFrame,       // an exception frame was entered, left, delivered to, read, matched; an exception was thrown
  kAllocation,  // the bundle allocated
  kFree,        // the bundle freed
};

// What the hook may do to an event. Each place applies the faults that make sense there and ignores the
// others.
enum class Fault : std::uint8_t {
  kNone,
  kMissing,           // the resolver does not know the name
  kNull,              // the service, message, call or allocation answers nil, 0, false or null
  kBadAlloc,          // the host's service throws std::bad_alloc
  kRaiseNSException,  // the platform raises an NSException
  kRaiseOther,        // the platform raises an object of another class
};

struct Event {
  EventKind kind;
  std::string name;  // service, selector, function
  std::string text;  // with arguments, as a reader would write it
  std::size_t index = 0;
};

class EventLog {
 public:
  using Hook = std::function<Fault(const Event&)>;

  // Notes an event and asks the hook what shall happen to it.
  Fault Record(EventKind kind, std::string name, std::string text);

  // A broken rule of the contract (an over-release, a message to a freed object, an unbalanced frame, ...).
  void Violation(std::string what) { violations_.push_back(std::move(what)); }

  void SetHook(Hook hook) { hook_ = std::move(hook); }
  // Forgets the events so far; violations stay.
  void Clear() { events_.clear(); }
  // Forgets everything, the hook too.
  void Reset() { *this = EventLog(); }

  [[nodiscard]] const std::vector<Event>& Events() const { return events_; }
  [[nodiscard]] const std::vector<std::string>& Violations() const { return violations_; }

  // The texts of all events of the given kinds, in order. Without kinds: everything whose order is fixed.
  [[nodiscard]] std::vector<std::string> Lines(std::initializer_list<EventKind> kinds) const;
  [[nodiscard]] std::vector<std::string> Lines() const;
  [[nodiscard]] std::vector<std::string> Resolved() const { return Names(EventKind::kResolve); }
  [[nodiscard]] std::vector<std::string> Services() const { return Lines({EventKind::kService}); }
  [[nodiscard]] std::vector<std::string> Messages() const { return Lines({EventKind::kMessage}); }
  [[nodiscard]] std::vector<std::string> Calls() const { return Lines({EventKind::kCall}); }
  [[nodiscard]] std::vector<std::string> Frames() const { return Lines({EventKind::kFrame}); }
  [[nodiscard]] std::vector<std::string> Lookups() const { return Lines({EventKind::kLookup}); }
  [[nodiscard]] std::vector<std::string> Allocations() const { return Lines({EventKind::kAllocation}); }
  [[nodiscard]] std::vector<std::string> Names(EventKind kind) const;

  // How many events of that kind carry the name.
  [[nodiscard]] int Count(EventKind kind, std::string_view name) const;

 private:
  std::vector<Event> events_;
  std::vector<std::string> violations_;
  Hook hook_;
};

EventLog& Log();

// Whether the code that runs belongs to the bundle. Tests enter the bundle through Call (bundle.h); every
// scripted service, message and call steps outside for its own duration. Only allocations made inside are
// events.
bool InsideBundle();
void SetInsideBundle(bool inside);

class Inside {
 public:
  Inside() : before_(InsideBundle()) { SetInsideBundle(true); }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
  ~Inside() { SetInsideBundle(before_); }

 private:
  bool before_;
};

class Outside {
 public:
  Outside() : before_(InsideBundle()) { SetInsideBundle(false); }
  Outside(const Outside&) = delete;
  Outside& operator=(const Outside&) = delete;
  ~Outside() { SetInsideBundle(before_); }

 private:
  bool before_;
};

// A readable text for numbers and pointers in event texts.
std::string Number(double value);
std::string Hexadecimal(std::uint32_t value);
std::string Quoted(std::string_view bytes);

}  // namespace scripted
