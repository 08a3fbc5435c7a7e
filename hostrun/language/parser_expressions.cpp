// hostrun/language/parser_expressions.cpp - reads expressions, and the words that everything is read from.
#include <algorithm>
#include <array>

#include "hostrun/language/parser.h"

namespace hostrun {
namespace {

// Deeper trees would take the stack of whoever walks them.
constexpr int kDeepest = 400;

// Words that can't begin an expression: their appearance ends one.
constexpr std::array<std::string_view, 31> kReserved = {
    "and",    "or",    "xor",    "mod",    "is",    "isa",  "then",  "to",      "downto", "step", "else",
    "elseif", "end",   "next",   "wend",   "loop",  "case", "catch", "finally", "until",  "as",   "dim",
    "var",    "const", "static", "select", "while", "for",  "do",    "try",     "return"};

// Words that begin an expression, or what could be assigned to no variable of that name.
constexpr std::array<std::string_view, 8> kBeginning = {"if",  "not",  "new",   "nil",
                                                        "sub", "true", "false", "function"};

// Words that end an expression.
bool IsReserved(const std::string& lower) {
  return std::find(kReserved.begin(), kReserved.end(), lower) != kReserved.end();
}

// As errors show what they found.
std::string Describe(const Token& token) {
  switch (token.kind) {
    case TokenKind::EndOfLine:
      return "the end of the line";
    case TokenKind::EndOfFile:
      return "the end of the program";
    default:
      return "'" + token.text + "'";
  }
}

// Binary operators from the loosest to the tightest; those of a level group from the left.
struct Level {
  std::array<std::string_view, 8> operators;
};
constexpr std::array<Level, 5> kLevels = {{
    {{"or", "xor"}},
    {{"and"}},
    {{"=", "<>", "<", ">", "<=", ">=", "is", "isa"}},
    {{"+", "-", "&"}},
    {{"*", "/", "\\", "mod"}},
}};
constexpr int kComparison = 2;

}  // namespace

const Token& Parser::Peek(std::size_t ahead) const {
  return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
}

const Token& Parser::Take() {
  const Token& token = Peek();
  if (at_ + 1 < tokens_.size()) ++at_;
  return token;
}

bool Parser::AtWord(std::string_view word, std::size_t ahead) const {
  return Peek(ahead).kind == TokenKind::Name && Peek(ahead).lower == word;
}

bool Parser::AtOperator(std::string_view op) const {
  return Peek().kind == TokenKind::Operator && Peek().lower == op;
}

bool Parser::TakeWord(std::string_view word) {
  if (!AtWord(word)) return false;
  Take();
  return true;
}

bool Parser::TakeOperator(std::string_view op) {
  if (!AtOperator(op)) return false;
  Take();
  return true;
}

std::string Parser::Shown(std::string_view word) {
  std::string shown(word);
  if (!shown.empty() && shown[0] >= 'a' && shown[0] <= 'z') shown[0] = static_cast<char>(shown[0] - 32);
  return shown;
}

void Parser::WantWord(std::string_view word, const std::string& where) {
  if (!TakeWord(word)) Fail("'" + Shown(word) + "' " + where);
}

void Parser::WantOperator(std::string_view op, const std::string& where) {
  if (!TakeOperator(op)) Fail("'" + std::string(op) + "' " + where);
}

std::string Parser::WantName(const std::string& what) {
  const bool name = Peek().kind == TokenKind::Name && !IsReserved(Peek().lower);
  if (!name || std::ranges::find(kBeginning, Peek().lower) != kBeginning.end()) Fail(what);
  return Take().text;
}

bool Parser::AtEndOfStatement() const {
  return Peek().kind == TokenKind::EndOfLine || Peek().kind == TokenKind::EndOfFile || AtOperator(":");
}

void Parser::WantEndOfStatement(const std::string& after) const {
  if (!AtEndOfStatement()) Fail("the end of the statement after " + after);
}

void Parser::Fail(const std::string& wanted) const {
  throw ProgramError(Peek().at, "wanted " + wanted + ", found " + Describe(Peek()));
}

ExpressionPtr Parser::Make(Expression::Kind kind, Position at, std::string name) {
  auto expression = std::make_unique<Expression>();
  expression->kind = kind;
  expression->at = at;
  expression->name = std::move(name);
  return expression;
}

void Parser::Adopt(Expression& parent, ExpressionPtr child) const {
  parent.depth = std::max(parent.depth, child->depth + 1);
  if (parent.depth > kDeepest) {
    throw ProgramError(parent.at, "wanted an expression of at most " + std::to_string(kDeepest) +
                                      " operators in a row, found a longer one; split it");
  }
  parent.children.push_back(std::move(child));
}

ExpressionPtr Parser::ParseExpression() {
  if (++depth_ > kDeepest) Fail("at most " + std::to_string(kDeepest) + " nested brackets and blocks");
  ExpressionPtr expression = ParseBinary(0);
  --depth_;
  return expression;
}

ExpressionPtr Parser::ParseBinary(int level) {
  if (level == static_cast<int>(kLevels.size())) return ParseUnary();
  const auto& operators = kLevels[static_cast<std::size_t>(level)].operators;
  ExpressionPtr left = ParseBinary(level + 1);
  for (;;) {
    const Token& token = Peek();
    const bool word = token.kind == TokenKind::Name || token.kind == TokenKind::Operator;
    if (!word || token.lower.empty() ||
        std::find(operators.begin(), operators.end(), token.lower) == operators.end()) {
      return left;
    }
    const std::string op = Take().lower;
    if (level == kComparison && op == "isa") {
      ExpressionPtr test = Make(Expression::Kind::IsA, token.at, WantName("a class after IsA"));
      Adopt(*test, std::move(left));
      left = std::move(test);
      continue;
    }
    ExpressionPtr both = Make(Expression::Kind::Binary, token.at, op);
    Adopt(*both, std::move(left));
    Adopt(*both, ParseBinary(level + 1));
    left = std::move(both);
  }
}

ExpressionPtr Parser::ParseUnary() {
  if (AtWord("not") || AtOperator("-") || AtOperator("+")) {
    const Token& token = Take();
    if (++depth_ > kDeepest) Fail("at most " + std::to_string(kDeepest) + " signs in a row");
    ExpressionPtr unary = Make(Expression::Kind::Unary, token.at, token.lower);
    // "Not a = b" is Not (a = b); "-a ^ b" is -(a ^ b).
    Adopt(*unary, token.lower == "not" ? ParseBinary(kComparison) : ParseUnary());
    --depth_;
    return unary;
  }
  return ParsePower();
}

ExpressionPtr Parser::ParsePower() {
  ExpressionPtr left = ParsePostfix();
  while (AtOperator("^")) {
    const Token& token = Take();
    ExpressionPtr power = Make(Expression::Kind::Binary, token.at, "^");
    Adopt(*power, std::move(left));
    Adopt(*power, AtOperator("-") || AtOperator("+") ? ParseUnary() : ParsePostfix());
    left = std::move(power);
  }
  return left;
}

ExpressionPtr Parser::ParsePostfix() {
  ExpressionPtr expression = ParsePrimary();
  for (;;) {
    if (AtOperator(".")) {
      Take();
      if (Peek().kind != TokenKind::Name) Fail("a member's name after '.'");
      const Token& token = Take();
      ExpressionPtr member = Make(Expression::Kind::Member, token.at, token.text);
      Adopt(*member, std::move(expression));
      expression = std::move(member);
    } else if (AtOperator("(")) {
      ExpressionPtr call = Make(Expression::Kind::Call, expression->at);
      Adopt(*call, std::move(expression));
      for (ExpressionPtr& argument : ParseArguments()) Adopt(*call, std::move(argument));
      expression = std::move(call);
    } else {
      return expression;
    }
  }
}

std::vector<ExpressionPtr> Parser::ParseArguments() {
  std::vector<ExpressionPtr> arguments;
  WantOperator("(", "before the arguments");
  if (TakeOperator(")")) return arguments;
  do {
    arguments.push_back(ParseExpression());
  } while (TakeOperator(","));
  WantOperator(")", "or ',' after an argument");
  return arguments;
}

ExpressionPtr Parser::ParsePrimary() {
  const Token& token = Peek();
  if (token.kind == TokenKind::Literal) {
    Take();
    ExpressionPtr literal = Make(Expression::Kind::Literal, token.at);
    literal->literal = token.literal;
    return literal;
  }
  if (TakeOperator("(")) {
    ExpressionPtr inner = ParseExpression();
    WantOperator(")", "to close '('");
    return inner;
  }
  if (AtWord("new")) return ParseNew();
  if (token.kind != TokenKind::Name || IsReserved(token.lower)) Fail("an expression");
  Take();
  if (token.lower == "nil" || token.lower == "true" || token.lower == "false") {
    ExpressionPtr literal = Make(Expression::Kind::Literal, token.at);
    literal->literal = token.lower == "nil" ? Value::Nil() : Value::Boolean(token.lower == "true");
    return literal;
  }
  return Make(Expression::Kind::Name, token.at, token.text);
}

ExpressionPtr Parser::ParseNew() {
  const Token& word = Take();
  ExpressionPtr made = Make(Expression::Kind::New, word.at, WantName("a class after New"));
  if (AtOperator("(")) {
    for (ExpressionPtr& argument : ParseArguments()) Adopt(*made, std::move(argument));
  }
  return made;
}

}  // namespace hostrun
