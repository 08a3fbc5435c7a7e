// hostrun/language/ast.h - a program as written: nothing is looked up yet.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostrun/host/value.h"
#include "hostrun/language/source.h"

namespace hostrun {

struct Expression;
using ExpressionPtr = std::unique_ptr<Expression>;

struct Expression {
  enum class Kind : std::uint8_t {
    Literal,
    Name,    // name
    Member,  // children[0] . name
    Call,    // children[0] ( the other children )
    Unary,   // name = "-", "+" or "not"
    Binary,  // name = the operator, "is" included
    IsA,     // children[0] IsA name
    New,     // New name ( children )
  };
  Kind kind;
  Position at;
  std::string name;
  Value literal;
  std::vector<ExpressionPtr> children;
  std::int32_t depth = 1;  // of the tree below
};

struct TypeName {
  Position at;
  std::string name;  // empty: not given
  bool array = false;
};

struct Statement;
using StatementPtr = std::unique_ptr<Statement>;
using Block = std::vector<StatementPtr>;

struct Declarator {
  Position at;
  std::string name;
  TypeName type;
  ExpressionPtr bound;    // Dim a(bound)
  ExpressionPtr initial;  // null: the type's default
};

struct CaseTest {
  enum class Kind : std::uint8_t { Equal, Range, Compare };
  Kind kind;
  Position at;
  std::string op;  // Compare
  ExpressionPtr low;
  ExpressionPtr high;
};

// If and ElseIf: a condition. Case: tests. Catch: a variable and a class. Else: nothing.
struct Branch {
  Position at;
  ExpressionPtr condition;
  std::vector<CaseTest> tests;
  std::string variable;
  TypeName type;
  Block body;
};

struct Statement {
  enum class Kind : std::uint8_t {
    Declare,   // declarators
    Const,     // declarators
    Assign,    // first = second
    Compound,  // first name second, name = "+", "-", "*", "/" or "\"
    Call,      // first
    Print,     // arguments
    If,        // branches, last without condition: Else
    Select,    // first, branches
    For,       // name, type, first To second Step third
    ForEach,   // name, type, first
    While,     // first
    Do,        // first: at the top; second: at the bottom; until says which of them ends on true
    Exit,      // name = "for", "while", "do", "loop" (the innermost), "routine"
    Continue,  // name likewise
    Return,    // first or nothing
    Try,       // body, branches = Catch, last
    Raise,     // first
    ReDim,     // first is the array, second the bound
    Quit,      // first or nothing
  };
  Kind kind;
  Position at;
  std::string name;
  TypeName type;
  bool until = false;
  bool down = false;
  ExpressionPtr first;
  ExpressionPtr second;
  ExpressionPtr third;
  std::vector<ExpressionPtr> arguments;
  std::vector<Declarator> declarators;
  Block body;
  std::vector<Branch> branches;
  Block last;
};

struct RoutineParameter {
  Position at;
  std::string name;
  TypeName type;
  bool byref = false;
  bool paramArray = false;
  ExpressionPtr initial;
};

struct RoutineDeclaration {
  Position at;
  std::string name;
  bool function = false;
  std::vector<RoutineParameter> parameters;
  TypeName result;
  Block body;
  Position end;
};

struct ProgramText {
  Block body;
  std::vector<RoutineDeclaration> routines;
};

}  // namespace hostrun
