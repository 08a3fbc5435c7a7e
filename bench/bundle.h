// bench/bundle.h - a bundle loaded into a host of its own.
#pragma once

#include <memory>
#include <string>

#include "bench/prescribed_calls.h"

namespace bench {

inline constexpr double kNewHost = 2015.01;  // current layout, and arrays can be read
inline constexpr double kOldHost = 2011.03;  // old layout

// One loaded copy of the bundle's file, with its own globals and its own instance cache. A bundle that has
// been started stays loaded.
class Bundle {
 public:
  // Loads a copy of `file`, so that a second one is not taken for the first. A desktop bundle gets its
  // symbols from the process and the platform.
  Bundle(const Platform& platform, const std::string& file);

  // Makes this the bundle whose calls are measured.
  void Activate();

  Host& GetHost() { return host_; }
  const Platform& GetPlatform() const { return *host_.platform; }
  void* Instances() const { return instances_; }
  // The calls of the prescribed paths, on this platform and with this cache.
  const PrescribedCalls* Calls() const { return &calls_; }

  // The function of a property, method or shared method by its name or the start of its declaration.
  template <typename Signature>
  Signature* Function(const char* className, const char* name) const {
    return reinterpret_cast<Signature*>(FunctionOf(className, name));
  }

 private:
  qvx::REALproc FunctionOf(const char* className, const char* name) const;

  Host host_;
  void* instances_;
  PrescribedCalls calls_;
  const void* begin_ = nullptr;
  const void* end_ = nullptr;
};

// A copy of a file below the folder for temporary files, gone with this.
class TemporaryCopy {
 public:
  explicit TemporaryCopy(const std::string& file);
  TemporaryCopy(const TemporaryCopy&) = delete;
  TemporaryCopy& operator=(const TemporaryCopy&) = delete;
  ~TemporaryCopy();
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// Loads the file and runs REALPluginMain in a host of this version. Answers the library, to be closed.
void* LoadAndStart(const std::string& path);

}  // namespace bench
