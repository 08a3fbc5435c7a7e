// hostrun/language/statements/statements.cpp - all statements of the language, in one list.
#include "hostrun/language/statements/statements.h"

#include "hostrun/language/parser.h"

namespace hostrun {

StatementPtr ParseAnyStatement(Parser& parser) {
  const bool named = parser.Peek(1).lower == "=" || parser.Peek(1).lower == ".";
  for (const auto& forms : {BranchStatements(), LoopStatements(), ExceptionStatements(), VariableStatements(),
                            JumpStatements(), PrintStatements(), AssignmentStatements()}) {
    for (const StatementForm& form : forms) {
      if (parser.AtWord(form.word) && !(form.alsoName && named)) return form.parse(parser);
    }
  }
  RefuseLackingStatement(parser);
  return ParseCallOrAssignment(parser);
}

}  // namespace hostrun
