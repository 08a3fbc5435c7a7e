// hostrun/commands/check_syntax.cpp - "hostrun check-syntax": what is wrong with programs, without running
// them.
#include <algorithm>
#include <exception>
#include <memory>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/json.h"
#include "hostrun/commands/run.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/output.h"
#include "hostrun/language/lexer.h"
#include "hostrun/language/program.h"

namespace hostrun {
namespace {

constexpr const char* kCheckSyntaxName = "hostrun check-syntax";
constexpr int kExitFindings = 1;

struct CheckSyntaxOptions {
  HostOptions host;
  std::vector<std::string> files;
  std::string name;  // of what comes from standard input; empty: none was given
  bool json = false;
};

// Of UTF-8; a byte that continues a character is none.
std::int64_t CharactersIn(std::string_view text) {
  return std::count_if(text.begin(), text.end(),
                       [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80; });
}

// How many bytes of `line` an error at `at` means: the word that begins there; where the lexer could read
// none, all up to the next blank.
std::size_t LengthAt(Position at, const std::vector<Token>& tokens, std::string_view rest) {
  const auto token = std::find_if(tokens.begin(), tokens.end(), [at](const Token& one) {
    return one.at.line == at.line && one.at.column == at.column;
  });
  if (token != tokens.end()) return std::min(token->text.size(), rest.size());
  if (rest.starts_with('"')) return rest.size();
  return std::min(rest.find_first_of(" \t"), rest.size());
}

// Columns count characters from 1; the last is the one behind, and at least one character is meant.
ordered_json ToJson(const ProgramError& error, const Source& source, const std::vector<Token>& tokens) {
  const std::string_view line = source.Line(error.at().line);
  const std::size_t start =
      std::min(static_cast<std::size_t>(std::max(error.at().column - 1, 0)), line.size());
  const std::string_view rest = line.substr(start);
  const std::int64_t column = CharactersIn(line.substr(0, start)) + 1;
  const std::int64_t length = CharactersIn(rest.substr(0, LengthAt(error.at(), tokens, rest)));
  return {{"file", source.name()}, {"line", error.at().line},
          {"column", column},      {"endColumn", column + std::max<std::int64_t>(length, 1)},
          {"severity", "error"},   {"message", error.what()}};
}

Source SourceOf(const std::string& file, const std::string& name) {
  if (file != kStandardInput) return Source::FromFile(file);
  Source source = Source::FromStandardInput();
  return name.empty() ? source : Source(name, source.text());
}

// Adds what is wrong to `problems`, or prints it. Gives the exit status.
int CheckOne(const Source& source, bool json, ordered_json& problems) {
  try {
    Compile(source);
    return kExitFine;
  } catch (const ProgramErrors& errors) {
    if (!json) {
      WriteOutput(source.Describe(errors) + "\n");
      return kExitFindings;
    }
    std::vector<ProgramError> known;
    const std::vector<Token> tokens = Tokenize(source, known);
    for (const ProgramError& error : errors.all()) problems.push_back(ToJson(error, source, tokens));
    return kExitFindings;
  }
}

int CheckSyntax(const CheckSyntaxOptions& options) {
  const Problem problem = StartHost(options.host);
  if (problem) return Refuse(kCheckSyntaxName, *problem);
  ordered_json problems = ordered_json::array();
  int status = kExitFine;
  for (const std::string& file : options.files) {
    try {
      status = std::max(status, CheckOne(SourceOf(file, options.name), options.json, problems));
    } catch (const std::exception& error) {
      status = Refuse(kCheckSyntaxName, error.what());
    }
  }
  const bool nothingRead = status == kExitUse && options.files.size() == 1;
  if (options.json && !nothingRead) {
    WriteOutput(JsonText({{"problems", std::move(problems)}}, 2) + "\n");
  }
  return status;
}

}  // namespace

Action CheckSyntaxCommand(CommandLine& line) {
  const auto options = std::make_shared<CheckSyntaxOptions>();
  AddHostOptions(line, options->host);
  line.Add("files", options->files, "The programs to check; - reads one from standard input")
      .Takes("PROGRAM.bas...")
      .Required();
  line.Add("--name", options->name, "What to call the program that comes from standard input").Takes("NAME");
  line.AddFlag("--json", options->json,
               "A JSON object, for the problem lists of editors (docs/hostrun.md says what it holds)");
  line.SetFooter(
      "Every name, type and call is settled against the classes of the host and of the bundle; nothing is "
      "run.\n\n"
      "Examples:\n  hostrun check-syntax examples/first-colors.bas\n"
      "  hostrun check-syntax --json --name draft.bas - < draft.bas\n\n"
      "Exit status: 0 nothing is wrong, 1 something is, 2 an error of use, or a program that can't be read.");
  return [options] { return CheckSyntax(*options); };
}

}  // namespace hostrun
