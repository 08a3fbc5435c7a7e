// tests/hostrun/unit/temporary_folder.h - a folder of a test's own, gone with all that is in it at its end.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace hostrun {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "hostrun-test-XXXXXX").native();
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    path_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  std::string Path(const std::string& name) const { return (path_ / name).native(); }

 private:
  std::filesystem::path path_;
};

}  // namespace hostrun
