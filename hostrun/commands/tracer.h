// hostrun/commands/tracer.h - watches the calls into the bundle and what the bundle does in them.
#pragma once

#include <string>
#include <vector>

#include "hostrun/commands/trace_report.h"
#include "hostrun/commands/trace_words.h"
#include "hostrun/host/call.h"
#include "hostrun/language/source.h"

namespace hostrun {

// Which calls a trace tells of, with all that happens in them.
struct TraceFilter {
  std::string cls;     // empty: every call
  std::string member;  // empty: every one of the class, and the life of its instances

  bool Takes(const Class& owner, std::string_view name) const;
};

// Tells `report` of each call. The times do not contain what the trace itself takes. What is kept does not
// grow with the number of calls.
class Tracer final : public CallObserver {
 public:
  // All of them outlive it. `quiet` leaves out look-ups and exception frames, which are part of every call.
  Tracer(TraceReport& report, const Source& source, const TraceFilter& filter, bool quiet)
      : report_(report), source_(source), filter_(filter), quiet_(quiet) {}

  void Enter(const Method& method, const ArgumentWords& words) override;
  void Leave(const Method& method, const ArgumentWords& words, const Value* result,
             Object* exception) override;
  void EnterLife(Object* object, const Class& cls, bool constructor) override;
  void LeaveLife(Object* object, const Class& cls, bool constructor) override;

  // A function of the platform or a service was reached from `from`, with its arguments at `words`.
  void Arrived(std::string_view name, const void* from, const std::uint32_t* words);

 private:
  using Clock = std::chrono::steady_clock;

  struct Call {
    bool told;
    Clock::time_point start;
    std::chrono::nanoseconds busyAtStart;
  };

  // The time that passes meanwhile goes into the trace, and is no call's.
  class Busy {
   public:
    explicit Busy(Tracer& tracer) : tracer_(tracer), start_(Clock::now()) {}
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;
    ~Busy() { tracer_.busy_ += Clock::now() - start_; }

   private:
    Tracer& tracer_;
    Clock::time_point start_;
  };

  bool Telling() const { return !calls_.empty() && calls_.back().told; }
  void Begin(bool told) { calls_.push_back({told, Clock::now(), busy_}); }
  // Gives the call with the time that it took.
  std::pair<Call, std::chrono::nanoseconds> End();
  void AddPlace(EnteredCall& call);

  TraceReport& report_;
  const Source& source_;
  const TraceFilter& filter_;
  bool quiet_;
  ObjectNames names_;
  std::vector<Call> calls_;  // innermost last
  std::chrono::nanoseconds busy_{};
  std::int32_t lastLine_ = 0;
};

}  // namespace hostrun
