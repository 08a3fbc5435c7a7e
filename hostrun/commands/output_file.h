// hostrun/commands/output_file.h - a file that appears under its name once all of it is written.
#pragma once

#include <string>
#include <string_view>

namespace hostrun {

// What is written goes into a file beside; Finish gives it the name. Until then a file of that name stays as
// it was, and without Finish for good. A name that belongs to no regular file, such as a pipe, is written to
// directly. The constructor and Finish throw std::runtime_error: the name, what was wanted, the system's
// words.
class OutputFile {
 public:
  explicit OutputFile(std::string path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // Why it failed first is kept for Finish; nothing more is written then.
  void Write(std::string_view bytes);
  // To be called once, after the last Write.
  void Finish();

  // For a crash: the file gets its name with what was written so far. Allocates and throws nothing.
  void Rescue() noexcept;

 private:
  [[noreturn]] void Fail(int error) const;
  void Empty();

  std::string path_;
  std::string target_;  // what the path leads to; the links on the way stay
  std::string beside_;  // empty: there is no such file
  std::string buffer_;
  int file_ = -1;
  int error_ = 0;  // errno's value; 0: none
};

// Writes a whole file.
void WriteFile(const std::string& path, std::string_view bytes);

}  // namespace hostrun
