// hostrun/language/session.h - a program that is run while it is being written.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hostrun/language/binder.h"
#include "hostrun/language/source.h"

namespace hostrun {

// Runs parts of a program one after the other. What a part declares stays; what goes wrong in it is reported
// on stderr and ends that part only.
class Session {
 public:
  enum class State : std::uint8_t { Done, Failed, WantsMore, Ended };

  // `name` is what errors call the text; `show` gets the values that stand alone.
  Session(std::string name, std::function<void(const Value&)> show)
      : name_(std::move(name)), show_(std::move(show)) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  // One or more whole lines. WantsMore: a block is open, nothing was run; `more` false takes that as an
  // error. A value that stands alone is shown.
  State Run(const std::string& text, bool more);

  int status() const { return status_; }       // of Quit
  int nextLine() const { return lines_ + 1; }  // the number that errors give the next line
  const Binder& binder() const { return binder_; }

 private:
  State RunText(const ProgramText& text);
  State RunExpression(const Expression& expression);
  void AddGlobals();
  State Guarded(const std::function<State()>& run);

  std::string name_;
  std::function<void(const Value&)> show_;
  Binder binder_;
  std::vector<Value> globals_;  // of all parts, in the binder's slots
  std::string whole_;           // all parts so far
  int lines_ = 0;               // in whole_
  int status_ = 0;
};

}  // namespace hostrun
