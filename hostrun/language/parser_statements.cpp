// hostrun/language/parser_statements.cpp - reads blocks and routines.
#include <algorithm>

#include "hostrun/language/parser.h"
#include "hostrun/language/statements/statements.h"

namespace hostrun {
namespace {

// Deeper nesting would take the stack of whoever walks it.
constexpr int kDeepestBlock = 200;

bool BeginsBlock(std::string_view word) {
  constexpr std::string_view kWords[] = {"if",  "for", "while",    "do",  "select",
                                         "try", "sub", "function", "enum"};
  return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
}

bool EndsBlock(std::string_view word) {
  return word == "end" || word == "next" || word == "wend" || word == "loop";
}

// Words between the beginning of a block and its end.
bool DividesBlock(std::string_view word) {
  constexpr std::string_view kWords[] = {"else", "elseif", "case", "catch", "finally"};
  return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
}

}  // namespace

std::string Parser::LineOf(Position at) {
  return "line " + std::to_string(at.line);
}

// "End If" and "End" + any other word are two words; Next, Wend, Loop are one.
bool Parser::AtEndOf(std::initializer_list<std::string_view> ends) const {
  return std::any_of(ends.begin(), ends.end(), [this](std::string_view end) {
    return end.starts_with("end ") ? AtWord("end") && AtWord(end.substr(4), 1) : AtWord(end);
  });
}

void Parser::WantEnd(std::string_view word, Position opened) {
  if (!AtWord("end") || !AtWord(word, 1)) {
    Fail("'End " + Shown(word) + "' for " + LineOf(opened));
  }
  Take();
  Take();
}

Block Parser::ParseBlock(std::initializer_list<std::string_view> ends) {
  if (++depth_ > kDeepestBlock) Fail("at most " + std::to_string(kDeepestBlock) + " nested blocks");
  Block block;
  while (Peek().kind != TokenKind::EndOfFile && !AtEndOf(ends)) ParseStatements(block);
  --depth_;
  return block;
}

template <class Read>
void Parser::Recovering(Read read) {
  const int depth = depth_;
  const std::size_t begin = at_;
  try {
    read();
  } catch (const ProgramError& error) {
    depth_ = depth;
    // At the end of the program a block is open, most likely one whose end was not understood.
    if (Peek().kind != TokenKind::EndOfFile || errors_.empty()) errors_.push_back(error);
    const auto line = std::find_if(tokens_.begin() + static_cast<std::ptrdiff_t>(begin), tokens_.end(),
                                   [&](const Token& token) { return token.at.line == error.at().line; });
    if (BeginsBlock(tokens_[begin].lower) && line != tokens_.end() && !EndsBlock(line->lower)) ++lostBlocks_;
    // A routine is read, where the one before it lacks its end.
    const bool atRoutine = AtWord("sub") || AtWord("function");
    if (atRoutine && at_ > begin && tokens_[at_ - 1].kind == TokenKind::EndOfLine) return;
    while (Peek().kind != TokenKind::EndOfLine && Peek().kind != TokenKind::EndOfFile) Take();
  }
}

// The end of a block whose beginning could not be read says nothing new, nor does what divides it.
bool Parser::TakePartOfLostBlock() {
  const bool ends = Peek().kind == TokenKind::Name && EndsBlock(Peek().lower);
  if (lostBlocks_ == 0 || !(ends || DividesBlock(Peek().lower))) return false;
  if (ends) --lostBlocks_;
  while (!AtEndOfStatement()) Take();
  return true;
}

// One statement up to its end, or such an end.
void Parser::ParseStatements(Block& into) {
  if (AtEndOfStatement()) {
    Take();
    return;
  }
  Recovering([&] {
    if (TakePartOfLostBlock()) return;
    into.push_back(ParseStatement());
    if (!AtEndOfStatement()) Fail("the end of the statement");
  });
}

void Parser::SkipBlock(std::string_view word) {
  while (Peek().kind != TokenKind::EndOfFile && !(AtWord("end") && AtWord(word, 1))) Take();
}

ProgramText Parser::ParseProgram() {
  ProgramText program;
  while (Peek().kind != TokenKind::EndOfFile) {
    if (AtWord("sub") || AtWord("function")) {
      Recovering([&] { program.routines.push_back(ParseRoutine()); });
    } else if (AtEnum()) {
      Recovering([&] { program.enums.push_back(ParseEnum()); });
    } else {
      ParseStatements(program.body);
    }
  }
  if (!errors_.empty()) throw ProgramErrors(std::move(errors_));
  return program;
}

// A variable may have this name.
bool Parser::AtEnum() const {
  return AtWord("enum") && Peek(1).kind == TokenKind::Name;
}

EnumDeclaration Parser::ParseEnum() {
  EnumDeclaration declaration;
  declaration.at = Peek(1).at;
  Take();
  declaration.name = WantName("a name after 'Enum'");
  WantEndOfStatement("the name of an enumeration");
  while (Peek().kind != TokenKind::EndOfFile && !AtEndOf({"end enum"})) {
    if (AtEndOfStatement()) {
      Take();
      continue;
    }
    EnumDeclaration::Member& member = declaration.members.emplace_back();
    member.at = Peek().at;
    member.name = WantName("a member of " + declaration.name + " or 'End Enum'");
    if (TakeOperator("=")) member.value = ParseExpression();
    WantEndOfStatement("a member of an enumeration");
  }
  WantEnd("enum", declaration.at);
  WantEndOfStatement("'End Enum'");
  return declaration;
}

ExpressionPtr Parser::ParseLoneExpression() {
  if (!errors_.empty()) throw ProgramErrors(std::move(errors_));
  while (Peek().kind == TokenKind::EndOfLine) Take();
  ExpressionPtr expression = ParseExpression();
  while (Peek().kind == TokenKind::EndOfLine) Take();
  if (Peek().kind != TokenKind::EndOfFile) Fail("the end of the expression");
  return expression;
}

RoutineDeclaration Parser::ParseRoutine() {
  RoutineDeclaration routine;
  routine.at = Peek(1).at;
  routine.function = Take().lower == "function";
  const std::string word = routine.function ? "function" : "sub";
  routine.name = WantName("a name after '" + Shown(word) + "'");
  if (TakeOperator("(") && !TakeOperator(")")) {
    do {
      if (!routine.parameters.empty() && routine.parameters.back().paramArray) {
        Fail("no parameter after a parameter array");
      }
      routine.parameters.push_back(ParseParameter());
    } while (TakeOperator(","));
    WantOperator(")", "or ',' after a parameter");
  }
  if (routine.function) {
    if (!AtWord("as")) Fail("'As' and the function's type");
    routine.result = ParseOptionalType();
  }
  WantEndOfStatement("the head of a routine");
  routine.body = ParseBlock({"end sub", "end function", "sub", "function"});
  routine.end = Peek().at;
  WantEnd(word, routine.at);
  WantEndOfStatement("'End " + Shown(word) + "'");
  return routine;
}

RoutineParameter Parser::ParseParameter() {
  RoutineParameter parameter;
  for (;;) {
    // A parameter may have the name of a modifier: it is one only before another name.
    if (Peek(1).kind != TokenKind::Name || AtWord("as", 1)) break;
    if (TakeWord("byref")) {
      parameter.byref = true;
    } else if (TakeWord("paramarray")) {
      parameter.paramArray = true;
    } else if (!TakeWord("byval") && !TakeWord("optional")) {
      break;
    }
  }
  parameter.at = Peek().at;
  parameter.name = WantName("a parameter's name");
  bool array = false;
  if (TakeOperator("(")) {
    WantOperator(")", "after '(' of an array parameter");
    array = true;
  }
  if (!AtWord("as")) Fail("'As' and a type for " + parameter.name);
  parameter.type = ParseOptionalType();
  parameter.type.array = parameter.type.array || array || parameter.paramArray;
  if (TakeOperator("=")) parameter.initial = ParseExpression();
  return parameter;
}

TypeName Parser::ParseType() {
  TypeName type{Peek().at, {}, false};
  type.name = WantName("a type");
  if (TakeOperator("(")) {
    WantOperator(")", "after '(' of an array type");
    type.array = true;
  }
  return type;
}

TypeName Parser::ParseOptionalType() {
  return TakeWord("as") ? ParseType() : TypeName{Peek().at, {}, false};
}

StatementPtr Parser::ParseNestedStatement() {
  if (++depth_ > kDeepestBlock) Fail("at most " + std::to_string(kDeepestBlock) + " nested blocks");
  StatementPtr statement = ParseStatement();
  --depth_;
  return statement;
}

StatementPtr Parser::ParseStatement() {
  if (AtWord("sub") || AtWord("function")) Fail("a routine outside of every block");
  if (AtEnum()) Fail("an enumeration outside of every block");
  return ParseAnyStatement(*this);
}

}  // namespace hostrun
