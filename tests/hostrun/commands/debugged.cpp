// tests/hostrun/commands/debugged.cpp - programs under "hostrun debug", with commands from a pipe.
#include "tests/hostrun/commands/debugged.h"

#include <gtest/gtest.h>

namespace command_tests {

Finished Debugged(const std::string& program, const std::string& commands,
                  const std::vector<std::string>& options) {
  std::vector<std::string> arguments = {"debug", TemporaryFile("debugged.bas", program)};
  const std::vector<std::string> platform = PlatformFor(program);
  arguments.insert(arguments.end(), platform.begin(), platform.end());
  arguments.insert(arguments.end(), options.begin(), options.end());
  Finished finished = RunHostrun(arguments, commands);
  // Where the tests keep their files says nothing.
  for (std::string* const text : {&finished.out, &finished.err}) {
    for (std::size_t at = 0; (at = text->find(arguments[1], at)) != std::string::npos;) {
      text->replace(at, arguments[1].size(), "debugged.bas");
    }
  }
  return finished;
}

std::string OutOf(const std::string& program, const std::string& commands) {
  const Finished finished = Debugged(program, commands);
  EXPECT_EQ(finished.err, "");
  return finished.out;
}

std::string ErrorOf(const std::string& program, const std::string& commands) {
  return Debugged(program, commands).err;
}

}  // namespace command_tests
