// hostrun/commands/docs.cpp - "hostrun docs": the reference of the bundle's classes as one HTML file.
#include <cstdio>
#include <memory>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/docs_members.h"
#include "hostrun/commands/docs_page.h"
#include "hostrun/commands/output_file.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/registry.h"
#include "hostrun/language/program.h"

namespace hostrun {
namespace {

struct DocsOptions {
  HostOptions host;
  std::string out = "reference.html";
  std::string descriptions;
};

int Write(const DocsOptions& options) {
  const std::vector<ClassText> texts = ReadDescriptions(options.descriptions);
  const std::vector<std::string> mismatches = Mismatches(texts, options.descriptions);
  for (const std::string& line : mismatches) std::fprintf(stderr, "%s\n", line.c_str());
  if (!mismatches.empty()) {
    return Refuse("hostrun docs: wanted one description for each registered member, found the " +
                  std::to_string(mismatches.size()) + " differences above; nothing is written");
  }
  std::size_t count = 0;
  for (const ClassText& text : texts) {
    if (const Class* const cls = ClassOf(text)) count += MembersOf(*cls).size();
  }
  const std::string subtitle =
      "Every member of the bundle's classes and of the host's, from the registered records: " +
      std::to_string(count) + " members. Registered on host version " +
      NumberText(TheHostIdentity().version, 7) + ", layout " + std::to_string(AnnouncedLayout()) + ".";
  WriteFile(options.out, ReferencePage(texts, PredefinedColours(), subtitle));
  std::fprintf(stderr, "hostrun: %zu members described in %s\n", count, options.out.c_str());
  return kExitFine;
}

int Docs(const DocsOptions& options) {
  try {
    const Problem problem = StartHost(options.host);
    return problem ? Refuse(*problem) : Write(options);
  } catch (const HostException& exception) {
    WritePlatformLogOf(exception.object());
    return Refuse("hostrun docs: " + DescribeException(exception.object()));
  } catch (const std::exception& error) {
    return Refuse(error.what());
  }
}

}  // namespace

Action DocsCommand(CommandLine& line) {
  const auto options = std::make_shared<DocsOptions>();
  options->descriptions = FindDescriptions();
  AddHostOptions(line, options->host);
  line.Add("--out,--output", options->out, "The page to write").Takes("FILE.html (reference.html)");
  line.Add("--descriptions", options->descriptions, "The text that describes the members").Takes("FILE.txt");
  line.SetFooter(
      "Example:\n  hostrun docs --out reference.html\n\n"
      "Exit status: 0 written, 2 an error of use, or members and descriptions that do not match.");
  return [options] { return Docs(*options); };
}

}  // namespace hostrun
