// hostrun/language/statements/statements.cpp - all statements of the language, in one list.
#include "hostrun/language/statements/statements.h"

#include <array>

#include "hostrun/language/parser.h"

namespace hostrun {
namespace {

std::array<std::span<const StatementForm>, 7> AllForms() {
  return {BranchStatements(), LoopStatements(),  ExceptionStatements(), VariableStatements(),
          JumpStatements(),   PrintStatements(), AssignmentStatements()};
}

}  // namespace

std::vector<std::string> StatementWords() {
  std::vector<std::string> words;
  for (const auto& forms : AllForms()) {
    for (const StatementForm& form : forms) words.push_back(Parser::Shown(form.word));
  }
  return words;
}

StatementPtr ParseAnyStatement(Parser& parser) {
  const bool named = parser.Peek(1).lower == "=" || parser.Peek(1).lower == ".";
  for (const auto& forms : AllForms()) {
    for (const StatementForm& form : forms) {
      if (parser.AtWord(form.word) && !(form.alsoName && named)) return form.parse(parser);
    }
  }
  RefuseLackingStatement(parser);
  return ParseCallOrAssignment(parser);
}

}  // namespace hostrun
