// hostrun/language/source.h - a program's text, and errors that point into it.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "hostrun/host/position.h"

namespace hostrun {

// A program that can't run: its text, its names or its types are wrong.
class ProgramError : public std::runtime_error {
 public:
  ProgramError(Position at, const std::string& message) : std::runtime_error(message), at_(at) {}
  Position at() const { return at_; }

 private:
  Position at_;
};

// All that is wrong with a program, in the order of its text. As a ProgramError it is the first of them.
class ProgramErrors : public ProgramError {
 public:
  // At least one; of each line only the first is kept.
  explicit ProgramErrors(std::vector<ProgramError> errors);
  const std::vector<ProgramError>& all() const { return all_; }

 private:
  std::vector<ProgramError> all_;
};

// A program's text with its name. Line ends of any kind become "\n", a byte order mark goes.
class Source {
 public:
  // `name` is what errors call it: its path, or what stands for one.
  Source(std::string name, std::string text);
  // Throws std::runtime_error with one clear line when the file can't be read.
  static Source FromFile(const std::string& path);
  // The same of all that standard input gives.
  static Source FromStandardInput();

  const std::string& name() const { return name_; }
  const std::string& text() const { return text_; }
  // Line `number`, from 1, without its end; empty when there is none. Valid as long as this.
  std::string_view Line(std::int32_t number) const;

  // "file:line:column: message", the line, and a caret below the column.
  std::string Describe(Position at, std::string_view message) const;
  // The same of every error, up to 20 of them.
  std::string Describe(const ProgramErrors& errors) const;

 private:
  std::string name_;
  std::string text_;
  std::vector<std::size_t> starts_;  // of each line
};

}  // namespace hostrun
