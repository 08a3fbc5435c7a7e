// hostrun/language/parser.h - reads a program's structure.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hostrun/language/ast.h"
#include "hostrun/language/lexer.h"

namespace hostrun {

// Recursive descent over the words of one program, to be used for one Parse only. Every failure is a
// ProgramError: what was wanted, what was found. Nesting is limited, so that no text can take the whole
// stack.
class Parser {
 public:
  explicit Parser(const Source& source) : tokens_(Tokenize(source, errors_)) {}

  // The whole text is a program. Throws ProgramErrors: a statement that can't be read does not keep those
  // behind it from being read.
  ProgramText ParseProgram();
  // The whole text is one expression.
  ExpressionPtr ParseLoneExpression();

  // What statements are read with (statements/).

  // A statement of that kind, which begins at the next word; takes the word.
  template <class S>
  std::unique_ptr<S> Begin() {
    auto statement = std::make_unique<S>(Peek().at);
    Take();
    return statement;
  }

  const Token& Peek(std::size_t ahead = 0) const;
  const Token& Take();
  // Words are asked for in lower case; a word of the text is taken only when it is that one.
  bool AtWord(std::string_view word, std::size_t ahead = 0) const;
  bool AtOperator(std::string_view op) const;
  bool AtEndOfStatement() const;
  bool TakeWord(std::string_view word);
  bool TakeOperator(std::string_view op);
  // Take it, or fail: `where` says behind what it was wanted.
  void WantWord(std::string_view word, const std::string& where);
  void WantOperator(std::string_view op, const std::string& where);
  // Fails where the statement goes on. Its end stays: ParseStatements passes over it as over an empty
  // statement.
  void WantEndOfStatement(const std::string& after) const;
  // "End" and the word; `opened` is where the block begins.
  void WantEnd(std::string_view word, Position opened);
  // To the end of the block that `word` begins: for what is no statement of this language.
  void SkipBlock(std::string_view word);
  // A name that is no word of the language.
  std::string WantName(const std::string& what);
  // Throws ProgramError: `wanted`, and what stands here instead.
  [[noreturn]] void Fail(const std::string& wanted) const;
  static std::string LineOf(Position at);           // "line 12"
  static std::string Shown(std::string_view word);  // a word as programs usually write it

  ExpressionPtr ParseExpression();
  ExpressionPtr ParsePostfix();  // no operators but ".", "(" and ")"
  ExpressionPtr ParseNew();
  // A node without children, and one more child for a node; the tree's depth is limited.
  static ExpressionPtr Make(Expression::Kind kind, Position at, std::string name = {});
  void Adopt(Expression& parent, ExpressionPtr child) const;

  TypeName ParseType();
  TypeName ParseOptionalType();  // with its "As"; no name when there is none
  StatementPtr ParseStatement();
  // One that is part of a statement on the same line.
  StatementPtr ParseNestedStatement();
  // Statements up to one of `ends`, which stays: words, or "end" and a word.
  Block ParseBlock(std::initializer_list<std::string_view> ends);

 private:
  bool AtEndOf(std::initializer_list<std::string_view> ends) const;

  // Expressions, loosest first.
  ExpressionPtr ParseBinary(int level);
  ExpressionPtr ParseUnary();
  ExpressionPtr ParsePower();
  ExpressionPtr ParsePrimary();
  std::vector<ExpressionPtr> ParseArguments();

  void ParseStatements(Block& into);
  // Runs `read`; where it fails, notes the error and goes on with the next line.
  template <class Read>
  void Recovering(Read read);
  bool TakePartOfLostBlock();
  RoutineDeclaration ParseRoutine();
  bool AtEnum() const;
  EnumDeclaration ParseEnum();
  RoutineParameter ParseParameter();

  std::vector<ProgramError> errors_;
  int lostBlocks_ = 0;  // whose beginning could not be read; their ends are still to come
  std::vector<Token> tokens_;
  std::size_t at_ = 0;
  int depth_ = 0;  // of nested blocks and brackets
};

}  // namespace hostrun
