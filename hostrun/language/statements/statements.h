// hostrun/language/statements/statements.h - all statements of the language, in one list.
//
// Each file of this folder holds statements of one theme: for each its syntax node, how it is read, how its
// names are settled, and the step that runs; the words that it begins with stand in the table at the file's
// end.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "hostrun/language/ast.h"

namespace hostrun {

class Parser;

struct StatementForm {
  // Lower case.
  std::string_view word;
  // Reads the statement; the word is the next to be taken. Throws ProgramError.
  StatementPtr (*parse)(Parser& parser);
  // A variable may have this name: "=" or "." behind it makes it one.
  bool alsoName = false;
};

std::span<const StatementForm> VariableStatements();
std::span<const StatementForm> AssignmentStatements();
std::span<const StatementForm> BranchStatements();
std::span<const StatementForm> LoopStatements();
std::span<const StatementForm> JumpStatements();
std::span<const StatementForm> ExceptionStatements();
std::span<const StatementForm> PrintStatements();

// What statements begin with, as programs usually write it.
std::vector<std::string> StatementWords();

// Fails where a statement begins that other dialects have and this one lacks, and says what to use instead.
void RefuseLackingStatement(Parser& parser);

// The statement that begins where the parser stands. What begins with no word of the tables is an assignment
// or a call. Throws ProgramError.
StatementPtr ParseAnyStatement(Parser& parser);
StatementPtr ParseCallOrAssignment(Parser& parser);

}  // namespace hostrun
