// hostrun/language/binder.h - settles every name, type and call of a program before it runs.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hostrun/language/ast.h"
#include "hostrun/language/code.h"
#include "hostrun/language/make.h"
#include "hostrun/language/steps.h"

namespace hostrun {

// A program that can run.
struct BoundProgram {
  std::vector<std::unique_ptr<Routine>> routines;
  std::vector<const Type*> globals;
  StepBlock body;
};

// Every failure is a ProgramError. Classes and functions come from TheRegistry().
class Binder {
 public:
  BoundProgram Bind(const ProgramText& text);

  // A program that comes in parts: a later part knows the names of those before, and may declare one of them
  // anew. A part that fails leaves no trace.
  StepBlock BindPart(const ProgramText& text);
  // An expression as a part of its own; it may give nothing.
  CodePtr BindPart(const Expression& expression);
  // Of all parts so far: the types of the variables' slots, and the names that are known.
  const std::vector<const Type*>& globals() const { return program_.globals; }
  const Type* TypeOfName(const std::string& name) const;  // null: no such variable
  std::vector<std::string> Names() const;

 private:
  struct Variable {
    enum class Where : std::uint8_t { Local, Global, Reference, Constant };
    Where where;
    const Type* type;
    std::size_t slot;
    Value value;  // Constant
  };
  using Scope = std::map<std::string, Variable>;
  struct Loop {
    int number;
    std::string_view word;  // for, while, do
  };
  struct Callee;    // what a call names
  struct Snapshot;  // of what a part changes

  // Names.
  [[noreturn]] static void Fail(Position at, const std::string& message) { throw ProgramError(at, message); }
  const Variable* FindVariable(const std::string& name) const;
  Variable& Declare(Position at, const std::string& name, const Type* type, Variable::Where where);
  Variable& DeclareVariable(Position at, const std::string& name, const Type* type);
  static CodePtr MakeVariable(Position at, const Variable& variable);
  static const Type* TypeFor(const TypeName& name);
  static Class& WantClass(Position at, const std::string& name);

  // Expressions (bind_expressions.cpp).
  CodePtr BindExpression(const Expression& expression);
  CodePtr BindValue(const Expression& expression);  // also refuses what gives nothing
  CodePtr BindName(const Expression& name);
  CodePtr BindBinary(const Expression& binary);
  CodePtr BindCondition(const Expression& expression);
  CodePtr BindConverted(const Expression& expression, const Type* type, const std::string& what);
  CodePtr Convert(CodePtr code, const Type* type, const std::string& what);
  CodePtr BindConstant(const Expression& expression, const std::string& what);

  // Calls (bind_calls.cpp).
  CodePtr BindCall(const Expression& call);
  CodePtr BindMember(const Expression& member, const std::vector<const Expression*>* arguments);
  CodePtr BindInstanceMember(const Expression& member, CodePtr object,
                             const std::vector<const Expression*>* arguments);
  CodePtr BindSharedMember(const Expression& member, Class& cls,
                           const std::vector<const Expression*>* arguments);
  CodePtr BindArrayMember(const Expression& member, CodePtr array,
                          const std::vector<const Expression*>* arguments);
  CodePtr BindNamedCall(const Expression& name, const std::vector<const Expression*>& arguments);
  CodePtr BindNew(const Expression& made);
  CodePtr IndexInto(Position at, CodePtr array, const std::vector<const Expression*>& arguments);
  CodePtr CallOneOf(const Expression& name, const std::vector<Callee>& candidates, CodePtr selfCode,
                    std::vector<CodePtr> arguments);
  CodePtr CallOrIndex(const Expression& name, const std::vector<Callee>& candidates, CodePtr selfCode,
                      const std::vector<const Expression*>* arguments);
  std::vector<CodePtr> BindArguments(const std::vector<const Expression*>& arguments);
  Class* ClassOf(const Expression& expression) const;  // a name that means a class, else null
  CodePtr BindAssignsCall(
      const Expression& call);  // object.Member(arguments) on the left of "="; null: no such

  // Statements (bind_statements.cpp).
  StepBlock BindBlock(const Block& block);
  void BindInto(StepBlock& into, const Block& block);
  void BindStatement(StepBlock& into, const Statement& statement);
  void BindDeclare(StepBlock& into, const Statement& statement);
  void BindConst(const Statement& statement);
  StepPtr BindAssign(const Statement& statement);
  StepPtr BindCallStatement(const Statement& statement);
  StepPtr BindIf(const Statement& statement);
  StepPtr BindSelect(const Statement& statement);
  void BindSelectInto(StepBlock& whole, const Statement& statement);
  StepPtr BindFor(const Statement& statement);
  StepPtr BindForEach(const Statement& statement);
  StepPtr BindLoop(const Statement& statement);
  StepPtr BindJump(const Statement& statement);
  StepPtr BindReturn(const Statement& statement);
  StepPtr BindTry(const Statement& statement);
  CodePtr BindPlace(const Expression& expression);
  CodePtr LoopVariable(const Statement& statement, const Type* fallback);
  void DeclareRoutine(const RoutineDeclaration& declaration);
  void BindRoutine(const RoutineDeclaration& declaration, Routine& routine);

  // Opens a scope; at its end its counted variables are noted as ending with `block`.
  class ScopeGuard;

  std::vector<Scope> scopes_{1};
  std::multimap<std::string, Routine*> routinesByName_;
  Routine* routine_ = nullptr;  // null: the program's own level
  std::vector<Loop> loops_;
  int loopCount_ = 0;
  BoundProgram program_;
};

}  // namespace hostrun
