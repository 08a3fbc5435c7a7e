// hostrun/commands/check_parts.h - the checks of "hostrun check", by theme.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "hostrun/host/host.h"
#include "hostrun/host/problem.h"

namespace hostrun {

// What a check is named after, and what a bundle must be or do to pass it.
struct CheckKind {
  std::string_view name;  // VERSION stands for the host's, CLASS and CLASS.MEMBER for what is checked
  std::string_view wants;
};

// Every kind, in the order in which they are checked. docs/hostrun.md shows this table.
inline constexpr CheckKind kCheckKinds[] = {
    {"file/format", "a 32-bit shared object or desktop bundle for i386, with nothing cut off"},
    {"file/entry-point", "`REALPluginMain` among the exported functions"},
    {"file/exports", "no other exported symbol"},
    {"file/undefined-symbols", "no undefined symbol but the platform's and those of the language's run-time"},
    {"file/needed-libraries",
     "no library but those of the language's run-time; for a desktop bundle, of the platform"},
    {"file/text-relocations", "position-independent code"},
    {"file/relro", "tables that are read-only after loading (ELF only)"},
    {"file/stack", "a stack that can't be executed (ELF only)"},
    {"file/protections",
     "no code that can be written to, and the usual rights of each segment (desktop only)"},
    {"file/oldest-system", "an oldest system among those that load 32-bit bundles (desktop only)"},
    {"VERSION/load", "an entry point that comes back"},
    {"VERSION/everything else", "named only when `load` failed: nothing else can be checked on that host"},
    {"VERSION/version", "the layout that this host negotiates, announced once"},
    {"VERSION/order", "the layout announced first; each class once, after the one it descends from"},
    {"VERSION/records/CLASS", "each word of its records as the layout has it"},
    {"VERSION/declarations/CLASS", "declarations that can be parsed, with types that are known"},
    {"VERSION/life/CLASS", "a new instance that is empty, and gone when it is released"},
    {"VERSION/call/CLASS.MEMBER",
     "on and with empty instances: comes back, gives the neutral result, keeps and loses no reference"},
    {"VERSION/host", "named only when it fails: the host outlives the other checks"},
};

// The kind of that name. A name that is not in the table does not compile.
consteval const CheckKind& KindNamed(std::string_view name) {
  for (const CheckKind& kind : kCheckKinds) {
    if (kind.name == name) return kind;
  }
  throw "no such kind of check";
}

struct BundleCheck {
  const CheckKind& kind;
  std::string subject;             // the class or the member; empty for kinds that have none
  std::function<Problem()> check;  // may crash, hang or throw: it runs in a process of its own
};

// Of the file alone: nothing is loaded.
std::vector<BundleCheck> FileChecks(const std::string& bundle);

// Starts a host in this process, once, and enters the bundle. Gives what prevents that; records that can't be
// read prevent nothing.
Problem EnterBundle(const HostOptions& options);

// Of what the entered bundle registered: version, order, record words, declarations.
std::vector<BundleCheck> RegistrationChecks();

// Of each function behind the records.
std::vector<BundleCheck> CallChecks();

}  // namespace hostrun
