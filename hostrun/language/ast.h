// hostrun/language/ast.h - a program as written: nothing is looked up yet.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostrun/host/value.h"
#include "hostrun/language/source.h"

namespace hostrun {

class Binder;
class StepBlock;

struct Expression;
using ExpressionPtr = std::unique_ptr<Expression>;

// One node of an expression's tree. Nodes own their children.
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
  bool bare = false;       // of a call that is a statement: written without brackets
};

// A type as the program names it; whether there is one is settled later.
struct TypeName {
  Position at;
  std::string name;  // empty: not given
  bool array = false;
};

// A statement knows how it is settled; its kinds stand in statements/.
struct Statement {
  explicit Statement(Position position) : at(position) {}
  virtual ~Statement() = default;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Settles names and types and adds the steps that run to `into`. Throws ProgramError.
  virtual void Bind(Binder& binder, StepBlock& into) const = 0;
  // What it declares in the block where it stands.
  virtual std::vector<std::string> DeclaredNames() const { return {}; }
  // Of a call that stands alone, else null.
  virtual const Expression* AsExpression() const { return nullptr; }

  Position at;
};

using StatementPtr = std::unique_ptr<Statement>;
using Block = std::vector<StatementPtr>;

struct RoutineParameter {
  Position at;
  std::string name;
  TypeName type;
  bool byref = false;
  bool paramArray = false;
  ExpressionPtr initial;
};

// A Sub or a Function.
struct RoutineDeclaration {
  Position at;
  std::string name;
  bool function = false;
  std::vector<RoutineParameter> parameters;
  TypeName result;
  Block body;
  Position end;
};

// An enumeration: names of whole numbers.
struct EnumDeclaration {
  struct Member {
    Position at;
    std::string name;
    ExpressionPtr value;  // null: one more than the member before it, or 0
  };
  Position at;
  std::string name;
  std::vector<Member> members;
};

// The whole program: the statements of its own level, and its routines and enumerations in the
// order of the text.
struct ProgramText {
  Block body;
  std::vector<EnumDeclaration> enums;
  std::vector<RoutineDeclaration> routines;
};

}  // namespace hostrun
