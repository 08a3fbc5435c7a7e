// hostrun/language/statements/lacking.cpp - statements of other dialects: what to use instead.
#include "hostrun/language/parser.h"
#include "hostrun/language/statements/statements.h"

namespace hostrun {
namespace {

struct Lacking {
  std::string_view word;  // lower case
  bool block;             // goes on up to "End" and the word
  std::string_view instead;
};

constexpr std::string_view kNoClasses =
    "classes can't be declared here; use Subs, Functions and a Dictionary for what belongs together";
constexpr std::string_view kNoStructures =
    "structures can't be declared here; use a Dictionary, or arrays of one length";
constexpr std::string_view kNoScopes =
    "there are no scopes but the program and its routines; leave the word out, a variable begins with Dim";
constexpr std::string_view kNoLabels = "there are no labels; use loops with Exit and Continue, or a Sub";
constexpr std::string_view kNoImports =
    "nothing need be imported: all classes of the host and of its bundle are known";

constexpr Lacking kLacking[] = {
    {"class", true, kNoClasses},
    {"interface", true, kNoClasses},
    {"property", true, "properties can't be declared here; use a variable, or a Function"},
    {"event", true, "events can't be declared here; call a Sub"},
    {"delegate", false, "delegates can't be declared here; call a Sub by its name"},
    {"module", true, "modules can't be declared here; a program is one file, its routines need no module"},
    {"namespace", true, "namespaces can't be declared here; a program is one file"},
    {"structure", true, kNoStructures},
    {"type", true, kNoStructures},
    {"public", false, kNoScopes},
    {"private", false, kNoScopes},
    {"protected", false, kNoScopes},
    {"friend", false, kNoScopes},
    {"global", false, kNoScopes},
    {"shared", false, kNoScopes},
    {"goto", false, kNoLabels},
    {"gosub", false, kNoLabels},
    {"on", false, "errors are exceptions; use Try and Catch"},
    {"resume", false, "errors are exceptions; use Try and Catch"},
    {"throw", false, "use Raise"},
    {"with", true, "write the object before each of its members"},
    {"using", true, "an object is released when its variable ends; use Dim"},
    {"imports", false, kNoImports},
    {"inherits", false, kNoClasses},
    {"declare", false, "functions of libraries can't be called here; use those of the host's classes"},
    {"option", false, "there are no options: every variable is declared, and arrays begin with 0"},
    {"let", false, "leave out Let: write variable = value"},
    {"stop", false, "use Quit"},
    {"line", false, "use text = Input(prompt)"},
    {"data", false, "use Array(...)"},
    {"read", false, "use For Each over Array(...)"},
    {"repeat", false, "use Do ... Loop Until"},
};

}  // namespace

// Variables and routines may have these names: a statement begins only before another name, or alone.
void RefuseLackingStatement(Parser& parser) {
  if (parser.Peek(1).kind == TokenKind::Operator || parser.Peek(1).kind == TokenKind::Literal) return;
  for (const Lacking& lacking : kLacking) {
    if (!parser.AtWord(lacking.word)) continue;
    const bool alone = parser.Peek(1).kind != TokenKind::Name;
    if (alone && lacking.word != "resume" && lacking.word != "stop" && lacking.word != "repeat") return;
    const Token word = parser.Take();
    if (lacking.block) parser.SkipBlock(lacking.word);
    throw ProgramError(word.at,
                       "wanted a statement, found '" + word.text + "': " + std::string(lacking.instead));
  }
}

}  // namespace hostrun
