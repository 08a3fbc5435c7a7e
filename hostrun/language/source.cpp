// hostrun/language/source.cpp - a program's text, and errors that point into it.
#include "hostrun/language/source.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace hostrun {
namespace {

constexpr std::size_t kLargestProgram = 16U << 20U;
constexpr std::size_t kLongestShownLine = 200;

// The whole text; `refuse` makes the error for what is found instead.
template <class Refuse>
std::string Read(std::istream& in, Refuse refuse) {
  std::string text;
  char part[4096];
  while (text.size() <= kLargestProgram && in.read(part, sizeof part).gcount() > 0) {
    text.append(part, static_cast<std::size_t>(in.gcount()));
  }
  if (in.bad()) throw refuse(std::strerror(errno));
  if (text.size() > kLargestProgram) throw refuse("more than " + std::to_string(kLargestProgram) + " bytes");
  return text;
}

// In the order of the text; of each line the first alone, as what follows is often a consequence.
std::vector<ProgramError> Tidied(std::vector<ProgramError> errors) {
  std::stable_sort(errors.begin(), errors.end(), [](const ProgramError& a, const ProgramError& b) {
    return std::pair(a.at().line, a.at().column) < std::pair(b.at().line, b.at().column);
  });
  const auto end =
      std::unique(errors.begin(), errors.end(),
                  [](const ProgramError& a, const ProgramError& b) { return a.at().line == b.at().line; });
  errors.erase(end, errors.end());
  return errors;
}

}  // namespace

ProgramErrors::ProgramErrors(std::vector<ProgramError> errors)
    : ProgramError(*std::min_element(errors.begin(), errors.end(),
                                     [](const ProgramError& a, const ProgramError& b) {
                                       return std::pair(a.at().line, a.at().column) <
                                              std::pair(b.at().line, b.at().column);
                                     })),
      all_(Tidied(std::move(errors))) {}

Source::Source(std::string name, std::string text) : name_(std::move(name)), text_(std::move(text)) {
  if (text_.starts_with("\xEF\xBB\xBF")) text_.erase(0, 3);
  starts_.push_back(0);
  for (std::size_t i = 0; i < text_.size(); ++i) {
    if (text_[i] == '\r') {
      const bool pair = i + 1 < text_.size() && text_[i + 1] == '\n';
      text_[i] = pair ? ' ' : '\n';
    }
    if (text_[i] == '\n') starts_.push_back(i + 1);
  }
}

Source Source::FromFile(const std::string& path) {
  const auto refuse = [&path](const std::string& found) -> std::runtime_error {
    return std::runtime_error(path + ": wanted a program file, found " + found);
  };
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) throw refuse("a folder");
  std::ifstream in(path, std::ios::binary);
  if (!in) throw refuse(errno == ENOENT ? "no such file" : std::strerror(errno));
  return {path, Read(in, refuse)};
}

Source Source::FromStandardInput() {
  constexpr const char* kName = "standard input";
  const auto refuse = [](const std::string& found) {
    return std::runtime_error(std::string(kName) + ": wanted a program, found " + found);
  };
  errno = 0;
  std::string text = Read(std::cin, refuse);
  // The stream over C's stdin takes an error for the end.
  if (std::ferror(stdin) != 0) throw refuse(std::strerror(errno));
  return {kName, std::move(text)};
}

std::string_view Source::Line(std::int32_t number) const {
  if (number < 1 || static_cast<std::size_t>(number) > starts_.size()) return {};
  const std::size_t start = starts_[static_cast<std::size_t>(number) - 1];
  const std::size_t end = std::min(text_.find('\n', start), text_.size());
  return std::string_view(text_).substr(start, end - start);
}

std::string Source::Describe(Position at, std::string_view message) const {
  std::string out = name_;
  if (at.line > 0) out += ":" + std::to_string(at.line) + ":" + std::to_string(at.column);
  out += ": ";
  out += message;
  const std::string_view line = Line(at.line);
  const auto before = static_cast<std::size_t>(at.column > 0 ? at.column - 1 : 0);
  if (line.empty() || line.size() > kLongestShownLine || before > line.size()) return out;
  out += "\n  ";
  out += line;
  out += "\n  ";
  for (const char c : line.substr(0, before)) {
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80) out += c == '\t' ? '\t' : ' ';
  }
  return out + '^';
}

std::string Source::Describe(const ProgramErrors& errors) const {
  constexpr std::size_t kMostShown = 20;
  std::string text;
  for (std::size_t i = 0; i < errors.all().size() && i < kMostShown; ++i) {
    text += (i == 0 ? "" : "\n") + Describe(errors.all()[i].at(), errors.all()[i].what());
  }
  if (errors.all().size() > kMostShown) {
    text += "\nand " + std::to_string(errors.all().size() - kMostShown) + " more errors";
  }
  return text;
}

}  // namespace hostrun
