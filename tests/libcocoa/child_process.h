// tests/libcocoa/child_process.h - runs a program and keeps what it wrote.
#pragma once

#include <sys/types.h>
#include <string>
#include <vector>

struct Outcome {
  int status;  // as from wait
  std::string output;
  std::string errors;
};

// Runs the program with exactly these arguments and this environment. With a user other than 0, as that user.
Outcome RunProgram(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                   uid_t user = 0);

// Starts it, waits for its first line, and ends it when the object goes.
class Background {
 public:
  Background(const std::vector<std::string>& arguments, const std::vector<std::string>& environment);
  Background(const Background&) = delete;
  Background& operator=(const Background&) = delete;
  ~Background();
  const std::string& FirstLine() const { return first_line_; }

 private:
  pid_t process_ = -1;
  std::string first_line_;
};
