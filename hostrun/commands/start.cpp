// hostrun/commands/start.cpp - starts the host that a command needs.
#include "hostrun/commands/start.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <string_view>

#include "hostrun/host/bundle.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/platform_log.h"
#include "hostrun/host/service_list.h"
#include "hostrun/host/suggest.h"
#include "hostrun/sibling/sibling.h"

namespace hostrun {
namespace {

constexpr const char* kNoPlatform = "none";

// What is wrong with the name of a service that is to be withheld; empty: nothing.
std::string CheckServiceName(const std::string& name) {
  bool known = false;
  std::string meant;
  std::vector<std::string> names;
  ForEachService([&]<class>(std::string_view bundleName, std::string_view hostName) {
    if (std::ranges::find(names, hostName) == names.end()) names.emplace_back(hostName);
    if (hostName == name) known = true;
    if (bundleName == name) meant = hostName;
  });
  if (known) return {};
  const std::string problem = "wanted the name of a service, found " + name;
  if (!meant.empty()) return problem + "; the host's name for it is " + meant;
  std::string list;
  for (const std::string& each : names) list += (list.empty() ? "" : ", ") + each;
  return problem + DidYouMean(name, names) + "; there are " + list;
}

std::string CheckVersion(const std::string& text) {
  double version = 0;
  const char* const end = text.data() + text.size();
  const auto [read, error] = std::from_chars(text.data(), end, version);
  if (error == std::errc() && read == end && std::isfinite(version) && version > 0) return {};
  return "wanted a version such as 2015.0, found " + (text.empty() ? "none" : text);
}

}  // namespace

std::string OwnFile(const char* file) {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return file;
  const auto beside = self.parent_path() / file;
  const auto installed = (self.parent_path() / QVX_PRIVATE_FROM_BIN / file).lexically_normal();
  return std::filesystem::exists(installed, error) && !std::filesystem::exists(beside, error)
             ? installed.native()
             : beside.native();
}

void AddHostOptions(CommandLine& line, HostOptions& options) {
  options.bundle = OwnFile("QVXColor.so");
  options.platform = OwnFile("libcocoa.so");
  const char* const heading = "Host";
  line.Add("--bundle", options.bundle, "The bundle to load").Takes("FILE").Below(heading);
  line.Add("--platform", options.platform,
           "The platform library to load first; none for a bundle that needs none")
      .Takes("FILE")
      .Below(heading);
  line.Add("--host-version", options.identity.version, "Behave as a host of this version")
      .Takes("V (2015.0)")
      .Refusing(&CheckVersion)
      .Below(heading);
  line.Add("--without", options.identity.withheld, "Withhold a service by name; may be repeated")
      .Takes("SERVICE")
      .OneEach()
      .Refusing(&CheckServiceName)
      .Below(heading);
  line.AddFlag(
          "--no-sibling", [&options] { options.sibling = false; },
          "Run without NSExceptionQVX, NSImageQVX and the instance cache")
      .Below(heading);
  line.AddFlag("--platform-log", options.platformLog,
               "Show at once what the platform logs, also of exceptions that are caught")
      .Below(heading);
}

Problem StartWithoutBundle(const HostOptions& options) {
  SetHostIdentity(options.identity);
  RegisterHostClasses();
  if (options.platform == kNoPlatform) return {};
  Problem problem = LoadPlatform(options.platform);
  if (!problem && !options.platformLog) HoldPlatformLog();
  if (!problem && options.sibling) problem = InstallSibling();
  return problem;
}

Problem StartHost(const HostOptions& options) {
  Problem problem = StartWithoutBundle(options);
  if (!problem) problem = LoadBundle(options.bundle);
  NoteStarted();
  return problem;
}

}  // namespace hostrun
