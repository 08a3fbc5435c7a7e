// hostrun/language/parser.h - reads a program's structure.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "hostrun/language/ast.h"
#include "hostrun/language/lexer.h"

namespace hostrun {

// Recursive descent over the words of one program. Every failure is a ProgramError: what was wanted, what was
// found.
class Parser {
 public:
  explicit Parser(const Source& source) : tokens_(Tokenize(source)) {}

  ProgramText ParseProgram();
  // The whole text is one expression.
  ExpressionPtr ParseLoneExpression();

 private:
  // Words.
  const Token& Peek(std::size_t ahead = 0) const;
  const Token& Take();
  bool AtWord(std::string_view word, std::size_t ahead = 0) const;
  bool AtOperator(std::string_view op) const;
  bool TakeWord(std::string_view word);
  bool TakeOperator(std::string_view op);
  void WantWord(std::string_view word, const std::string& where);
  void WantOperator(std::string_view op, const std::string& where);
  static std::string Shown(std::string_view word);  // a word as programs usually write it
  std::string WantName(const std::string& what);
  void WantEndOfStatement(const std::string& after);
  bool AtEndOfStatement() const;
  [[noreturn]] void Fail(const std::string& wanted) const;

  // Expressions, loosest first.
  ExpressionPtr ParseExpression();
  ExpressionPtr ParseBinary(int level);
  ExpressionPtr ParseUnary();
  ExpressionPtr ParsePower();
  ExpressionPtr ParsePostfix();
  ExpressionPtr ParsePrimary();
  ExpressionPtr ParseNew();
  std::vector<ExpressionPtr> ParseArguments();
  static ExpressionPtr Make(Expression::Kind kind, Position at, std::string name = {});
  void Adopt(Expression& parent, ExpressionPtr child) const;

  // Statements.
  Block ParseBlock(std::initializer_list<std::string_view> ends);
  void ParseStatements(Block& into);
  StatementPtr ParseStatement();
  StatementPtr ParseSimple();
  StatementPtr ParseDeclare(Statement::Kind kind);
  StatementPtr ParseIf();
  StatementPtr ParseSelect();
  CaseTest ParseCaseTest();
  StatementPtr ParseFor();
  StatementPtr ParseWhile();
  StatementPtr ParseDo();
  StatementPtr ParseTry();
  StatementPtr ParseExit(Statement::Kind kind);
  StatementPtr ParseReDim();
  StatementPtr ParseCallOrAssign();
  StatementPtr New(Statement::Kind kind) const;
  void WantEnd(std::string_view word, Position opened);
  bool AtEndOf(std::initializer_list<std::string_view> ends) const;
  TypeName ParseType();
  TypeName ParseOptionalType();

  RoutineDeclaration ParseRoutine();
  RoutineParameter ParseParameter();

  std::vector<Token> tokens_;
  std::size_t at_ = 0;
  int depth_ = 0;  // of nested blocks and brackets
};

}  // namespace hostrun
