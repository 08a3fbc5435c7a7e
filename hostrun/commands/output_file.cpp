// hostrun/commands/output_file.cpp - a file that appears under its name once all of it is written.
#include "hostrun/commands/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace hostrun {
namespace {

constexpr std::size_t kBufferSize = 64U << 10U;

// The mode of a file that is replaced, or that of a new one.
mode_t ModeFor(const struct stat* replaced) {
  if (replaced != nullptr) return replaced->st_mode & 07777U;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666U & ~mask;
}

// Writes all of it. Gives errno's value, or 0.
int WriteAll(int file, const char* bytes, std::size_t size) noexcept {
  while (size > 0) {
    const ssize_t count = write(file, bytes, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return 0;
}

}  // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)), target_(path_) {
  std::error_code ignored;
  const auto followed = std::filesystem::canonical(path_, ignored);
  if (!ignored) target_ = followed.native();
  struct stat found {};
  const bool exists = stat(target_.c_str(), &found) == 0;
  if (exists && S_ISDIR(found.st_mode)) Fail(EISDIR);
  if (exists && access(target_.c_str(), W_OK) != 0) Fail(errno);
  if (exists && !S_ISREG(found.st_mode)) {
    file_ = open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (file_ < 0) Fail(errno);
    return;
  }
  beside_ = target_ + ".XXXXXX";
  file_ = mkostemp(beside_.data(), O_CLOEXEC);
  if (file_ < 0) {
    const int error = errno;
    beside_.clear();
    Fail(error);
  }
  fchmod(file_, ModeFor(exists ? &found : nullptr));
  buffer_.reserve(kBufferSize);
}

OutputFile::~OutputFile() {
  if (file_ >= 0) close(file_);
  if (!beside_.empty()) unlink(beside_.c_str());
}

void OutputFile::Write(std::string_view bytes) {
  if (buffer_.size() + bytes.size() > kBufferSize) Empty();
  buffer_ += bytes;
}

void OutputFile::Finish() {
  Empty();
  if (error_ != 0) Fail(error_);
  const int file = file_;
  file_ = -1;
  if (close(file) != 0) Fail(errno);
  if (beside_.empty()) return;
  if (std::rename(beside_.c_str(), target_.c_str()) != 0) Fail(errno);
  beside_.clear();
}

void OutputFile::Rescue() noexcept {
  if (file_ < 0) return;
  WriteAll(file_, buffer_.data(), buffer_.size());
  if (!beside_.empty()) std::rename(beside_.c_str(), target_.c_str());
}

void OutputFile::Fail(int error) const {
  throw std::runtime_error(path_ + ": wanted a file to write to, found: " + std::strerror(error));
}

void OutputFile::Empty() {
  if (error_ == 0) error_ = WriteAll(file_, buffer_.data(), buffer_.size());
  buffer_.clear();
}

void WriteFile(const std::string& path, std::string_view bytes) {
  OutputFile file(path);
  file.Write(bytes);
  file.Finish();
}

}  // namespace hostrun
