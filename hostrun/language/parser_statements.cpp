// hostrun/language/parser_statements.cpp - reads statements, blocks and routines.
#include <algorithm>
#include <array>

#include "hostrun/language/parser.h"

namespace hostrun {
namespace {

constexpr int kDeepestBlock = 200;

std::string LineOf(Position at) {
  return "line " + std::to_string(at.line);
}

}  // namespace

StatementPtr Parser::New(Statement::Kind kind) const {
  auto statement = std::make_unique<Statement>();
  statement->kind = kind;
  statement->at = Peek().at;
  return statement;
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

// One statement with its end, or an empty one.
void Parser::ParseStatements(Block& into) {
  if (AtEndOfStatement()) {
    Take();
    return;
  }
  into.push_back(ParseStatement());
  WantEndOfStatement("it");
}

ProgramText Parser::ParseProgram() {
  ProgramText program;
  while (Peek().kind != TokenKind::EndOfFile) {
    if (AtWord("sub") || AtWord("function")) {
      program.routines.push_back(ParseRoutine());
    } else {
      ParseStatements(program.body);
    }
  }
  return program;
}

ExpressionPtr Parser::ParseLoneExpression() {
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

StatementPtr Parser::ParseStatement() {
  if (AtWord("if")) return ParseIf();
  if (AtWord("select")) return ParseSelect();
  if (AtWord("for")) return ParseFor();
  if (AtWord("while")) return ParseWhile();
  if (AtWord("do")) return ParseDo();
  if (AtWord("try")) return ParseTry();
  if (AtWord("sub") || AtWord("function")) Fail("a routine outside of every block");
  return ParseSimple();
}

// What may also stand behind Then on one line.
StatementPtr Parser::ParseSimple() {
  if (AtWord("dim") || AtWord("var")) return ParseDeclare(Statement::Kind::Declare);
  if (AtWord("const")) return ParseDeclare(Statement::Kind::Const);
  if (AtWord("exit")) return ParseExit(Statement::Kind::Exit);
  if (AtWord("continue")) return ParseExit(Statement::Kind::Continue);
  if (AtWord("redim")) return ParseReDim();
  const bool word = Peek().kind == TokenKind::Name && Peek(1).lower != "=" && Peek(1).lower != ".";
  const auto valued = [this](Statement::Kind kind, bool optional) {
    StatementPtr statement = New(kind);
    Take();
    if (!optional || (!AtEndOfStatement() && !AtWord("else"))) statement->first = ParseExpression();
    return statement;
  };
  if (AtWord("return")) return valued(Statement::Kind::Return, true);
  if (word && AtWord("raise")) return valued(Statement::Kind::Raise, false);
  if (word && AtWord("quit")) return valued(Statement::Kind::Quit, true);
  if (word && AtWord("print")) {
    StatementPtr print = New(Statement::Kind::Print);
    Take();
    if (AtEndOfStatement() || AtWord("else")) return print;
    do {
      print->arguments.push_back(ParseExpression());
    } while (TakeOperator(","));
    return print;
  }
  if (word && AtWord("call")) Take();
  return ParseCallOrAssign();
}

StatementPtr Parser::ParseDeclare(Statement::Kind kind) {
  StatementPtr statement = New(kind);
  Take();
  std::vector<Declarator>& all = statement->declarators;
  std::size_t untyped = 0;  // the first of those that share the next type
  do {
    Declarator declarator;
    declarator.at = Peek().at;
    declarator.name = WantName("a variable's name");
    bool array = false;
    if (TakeOperator("(")) {
      array = true;
      if (!TakeOperator(")")) {
        declarator.bound = ParseExpression();
        if (AtOperator(",")) Fail("one upper bound: arrays have one dimension");
        WantOperator(")", "after the upper bound");
      }
    }
    declarator.type.at = Peek().at;
    if (TakeWord("as")) {
      if (AtWord("new")) {
        declarator.initial = ParseNew();
        declarator.type.name = declarator.initial->name;
        declarator.type.at = declarator.initial->at;
      } else {
        declarator.type = ParseType();
      }
    }
    declarator.type.array = declarator.type.array || array;
    if (!declarator.initial && TakeOperator("=")) declarator.initial = ParseExpression();
    const bool typed = !declarator.type.name.empty();
    const bool complete = typed || declarator.initial;
    const TypeName shared = declarator.type;
    all.push_back(std::move(declarator));
    if (!complete) continue;
    if (!typed && untyped + 1 < all.size()) {  // a value is nobody's type but its own variable's
      throw ProgramError(all[untyped].at,
                         "wanted 'As' and a type, or '=' and a value, for " + all[untyped].name);
    }
    for (; untyped + 1 < all.size(); ++untyped) {
      const bool wasArray = all[untyped].type.array;
      all[untyped].type = shared;
      all[untyped].type.array = wasArray;
    }
    untyped = all.size();
  } while (TakeOperator(","));
  if (untyped != all.size()) Fail("'As' and a type, or '=' and a value, for " + all.back().name);
  return statement;
}

StatementPtr Parser::ParseIf() {
  StatementPtr statement = New(Statement::Kind::If);
  const Position opened = Peek().at;
  Take();
  Branch first{opened, ParseExpression(), {}, {}, {}, {}};
  WantWord("then", "after the condition");
  if (!AtEndOfStatement()) {  // all on one line
    first.body.push_back(ParseStatement());
    while (AtOperator(":") && !AtWord("else", 1)) {
      Take();
      if (!AtEndOfStatement()) first.body.push_back(ParseStatement());
    }
    statement->branches.push_back(std::move(first));
    if (TakeWord("else")) {
      Branch other{Peek().at, nullptr, {}, {}, {}, {}};
      other.body.push_back(ParseStatement());
      statement->branches.push_back(std::move(other));
    }
    return statement;
  }
  first.body = ParseBlock({"elseif", "else", "end if"});
  statement->branches.push_back(std::move(first));
  bool otherwise = false;
  while (AtWord("elseif") || AtWord("else")) {
    if (otherwise) Fail("'End If' after Else");
    Branch branch{Peek().at, nullptr, {}, {}, {}, {}};
    if (Take().lower == "elseif") {
      branch.condition = ParseExpression();
      WantWord("then", "after the condition");
    } else {
      otherwise = true;
    }
    branch.body = ParseBlock({"elseif", "else", "end if"});
    statement->branches.push_back(std::move(branch));
  }
  WantEnd("if", opened);
  return statement;
}

CaseTest Parser::ParseCaseTest() {
  CaseTest test{CaseTest::Kind::Equal, Peek().at, {}, nullptr, nullptr};
  if (TakeWord("is")) {
    static constexpr std::array<std::string_view, 6> kOperators = {"=", "<>", "<", ">", "<=", ">="};
    if (std::none_of(kOperators.begin(), kOperators.end(), [this](auto op) { return AtOperator(op); })) {
      Fail("a comparison after Is");
    }
    test.kind = CaseTest::Kind::Compare;
    test.op = Take().lower;
    test.low = ParseExpression();
    return test;
  }
  test.low = ParseExpression();
  if (TakeWord("to")) {
    test.kind = CaseTest::Kind::Range;
    test.high = ParseExpression();
  }
  return test;
}

StatementPtr Parser::ParseSelect() {
  StatementPtr statement = New(Statement::Kind::Select);
  const Position opened = Peek().at;
  Take();
  WantWord("case", "after Select");
  statement->first = ParseExpression();
  WantEndOfStatement("the value of Select Case");
  while (AtEndOfStatement() && Peek().kind != TokenKind::EndOfFile) Take();
  bool otherwise = false;
  while (AtWord("case") || AtWord("else")) {
    if (otherwise) Fail("'End Select' after Case Else");
    Branch branch{Peek().at, nullptr, {}, {}, {}, {}};
    if (Take().lower == "else" || TakeWord("else")) {
      otherwise = true;
    } else {
      do {
        branch.tests.push_back(ParseCaseTest());
      } while (TakeOperator(","));
    }
    WantEndOfStatement("Case");
    branch.body = ParseBlock({"case", "else", "end select"});
    statement->branches.push_back(std::move(branch));
  }
  WantEnd("select", opened);
  return statement;
}

StatementPtr Parser::ParseFor() {
  StatementPtr statement = New(Statement::Kind::For);
  const Position opened = Peek().at;
  Take();
  if (TakeWord("each")) {
    statement->kind = Statement::Kind::ForEach;
    statement->name = WantName("a variable after For Each");
    statement->type = ParseOptionalType();
    WantWord("in", "after the variable");
    statement->first = ParseExpression();
  } else {
    statement->name = WantName("a variable after For");
    statement->type = ParseOptionalType();
    WantOperator("=", "after the variable");
    statement->first = ParseExpression();
    statement->down = TakeWord("downto");
    if (!statement->down) WantWord("to", "or 'DownTo' after the first value");
    statement->second = ParseExpression();
    if (TakeWord("step")) statement->third = ParseExpression();
  }
  WantEndOfStatement("the head of For");
  statement->body = ParseBlock({"next"});
  if (!TakeWord("next")) Fail("'Next' for " + LineOf(opened));
  if (Peek().kind == TokenKind::Name && !AtEndOfStatement()) {
    const Token& named = Peek();
    std::string wanted = statement->name;
    std::transform(wanted.begin(), wanted.end(), wanted.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    if (named.lower != wanted) Fail("'" + statement->name + "', the variable of For in " + LineOf(opened));
    Take();
  }
  return statement;
}

StatementPtr Parser::ParseWhile() {
  StatementPtr statement = New(Statement::Kind::While);
  const Position opened = Peek().at;
  Take();
  statement->first = ParseExpression();
  WantEndOfStatement("the condition");
  statement->body = ParseBlock({"wend", "end while"});
  if (!TakeWord("wend")) {
    if (!AtWord("end")) Fail("'Wend' for " + LineOf(opened));
    WantEnd("while", opened);
  }
  return statement;
}

StatementPtr Parser::ParseDo() {
  StatementPtr statement = New(Statement::Kind::Do);
  const Position opened = Peek().at;
  Take();
  const auto condition = [&](ExpressionPtr& into) {
    if (!AtWord("while") && !AtWord("until")) return;
    statement->until = Take().lower == "until";
    into = ParseExpression();
  };
  condition(statement->first);
  WantEndOfStatement("the head of Do");
  statement->body = ParseBlock({"loop"});
  if (!TakeWord("loop")) Fail("'Loop' for " + LineOf(opened));
  if (!statement->first) {
    condition(statement->second);
  } else if (AtWord("while") || AtWord("until")) {
    Fail("one condition, at the top or at the bottom");
  }
  return statement;
}

StatementPtr Parser::ParseTry() {
  StatementPtr statement = New(Statement::Kind::Try);
  const Position opened = Peek().at;
  Take();
  WantEndOfStatement("Try");
  statement->body = ParseBlock({"catch", "finally", "end try"});
  while (AtWord("catch")) {
    Branch branch{Peek().at, nullptr, {}, {}, {}, {}};
    Take();
    if (!AtEndOfStatement()) {
      branch.variable = WantName("a variable after Catch");
      branch.type = ParseOptionalType();
    }
    WantEndOfStatement("Catch");
    branch.body = ParseBlock({"catch", "finally", "end try"});
    statement->branches.push_back(std::move(branch));
  }
  if (TakeWord("finally")) {
    WantEndOfStatement("Finally");
    statement->last = ParseBlock({"catch", "finally", "end try"});
  }
  WantEnd("try", opened);
  return statement;
}

StatementPtr Parser::ParseExit(Statement::Kind kind) {
  StatementPtr statement = New(kind);
  const bool leaving = Take().lower == "exit";
  statement->name = "loop";
  for (const std::string_view loop : {"for", "while", "do"}) {
    if (TakeWord(loop)) statement->name = loop;
  }
  if (leaving && (TakeWord("sub") || TakeWord("function"))) statement->name = "routine";
  return statement;
}

StatementPtr Parser::ParseReDim() {
  StatementPtr statement = New(Statement::Kind::ReDim);
  Take();
  ExpressionPtr call = ParsePostfix();
  if (call->kind != Expression::Kind::Call || call->children.size() != 2) {
    throw ProgramError(call->at, "wanted an array and one upper bound after ReDim");
  }
  statement->first = std::move(call->children[0]);
  statement->second = std::move(call->children[1]);
  return statement;
}

StatementPtr Parser::ParseCallOrAssign() {
  StatementPtr statement = New(Statement::Kind::Call);
  if (AtWord("end") || AtWord("next") || AtWord("wend") || AtWord("loop") || AtWord("else") ||
      AtWord("elseif") || AtWord("case") || AtWord("catch") || AtWord("finally")) {
    Fail("a statement, or the beginning of the block that this ends");
  }
  if (Peek().kind != TokenKind::Name && !AtOperator("(")) Fail("a statement");
  statement->first = ParsePostfix();
  if (TakeOperator("=")) {
    statement->kind = Statement::Kind::Assign;
    statement->second = ParseExpression();
    return statement;
  }
  for (const std::string_view op : {"+=", "-=", "*=", "/=", "\\="}) {
    if (!TakeOperator(op)) continue;
    statement->kind = Statement::Kind::Compound;
    statement->name = op.substr(0, 1);
    statement->second = ParseExpression();
    return statement;
  }
  if (AtEndOfStatement() || AtWord("else")) return statement;
  // Arguments without brackets.
  if (statement->first->kind == Expression::Kind::Call) Fail("the end of the statement after the call");
  ExpressionPtr call = Make(Expression::Kind::Call, statement->first->at);
  Adopt(*call, std::move(statement->first));
  do {
    Adopt(*call, ParseExpression());
  } while (TakeOperator(","));
  statement->first = std::move(call);
  return statement;
}

}  // namespace hostrun
