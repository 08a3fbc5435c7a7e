// hostrun/language/binder.h - settles every name, type and call of a program before it runs.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "hostrun/language/ast.h"
#include "hostrun/language/code.h"

namespace hostrun {

class Stops;

// A program that can run. It refers to classes and functions of TheRegistry().
struct BoundProgram {
  std::vector<std::unique_ptr<Routine>> routines;
  std::vector<const Type*> globals;
  StepBlock body;
};

// Settles one program: which variable, method or type each name means, which form of a method each call
// takes, how each value is converted. Every failure is a ProgramError; of a whole program, ProgramErrors.
// Classes and functions come from TheRegistry().
class Binder {
 public:
  // `stops` is filled with the statements of a whole program, for a debugger; null: nobody halts it.
  explicit Binder(Stops* stops = nullptr) : stops_(stops) {}

  // The whole program, once. What it gives refers to nothing of `text`.
  BoundProgram Bind(const ProgramText& text);

  // A program that comes in parts: a later part knows the names of those before, and may declare one of them
  // anew. A part that fails leaves no trace.
  StepBlock BindPart(const ProgramText& text);
  // An expression as a part of its own; it may give nothing.
  CodePtr BindPart(const Expression& expression);
  // From here on, the names that are known are those of a stop of the program that this has bound, which
  // still lives; expressions are to be run with the variables of a call that stands there.
  void StandAt(const Stops& stops, std::size_t stop);
  // Of all parts so far: the types of the variables' slots, and the names that are known.
  const std::vector<const Type*>& globals() const { return program_.globals; }
  const Type* TypeOfName(const std::string& name) const;  // null: no such variable
  std::vector<std::string> Names() const;

  // What statements are settled with (statements/).

  // What a name of the program stands for.
  struct Variable {
    // Static: among the globals, where it outlives its block. Enumeration: no value, its members are
    // constants named "enumeration.member".
    enum class Where : std::uint8_t { Local, Global, Static, Reference, Constant, Enumeration };
    Where where;
    const Type* type;
    std::size_t slot;  // among the locals or the globals; a constant has none
    Value value;       // Constant
    std::string name;  // as declared
    // What declares it; null: the program's own level.
    const Routine* routine = nullptr;
    std::size_t from = 0;  // the first stop where it can be used
  };
  // Opens a scope; at its end its counted variables are noted as ending with `block`. Null: they end
  // otherwise.
  class ScopeGuard {
   public:
    ScopeGuard(Binder& binder, StepBlock* block) : binder_(binder), block_(block) {
      binder_.scopes_.emplace_back();
    }
    ScopeGuard(const ScopeGuard&) = delete;
    ScopeGuard& operator=(const ScopeGuard&) = delete;
    ~ScopeGuard();

   private:
    Binder& binder_;
    StepBlock* block_;
  };
  // The body of a loop, which Exit and Continue may mean by `word`: for, while, do.
  class LoopGuard {
   public:
    LoopGuard(Binder& binder, std::string_view word) : binder_(binder) {
      binder_.loops_.push_back({++binder_.loopCount_, word});
    }
    LoopGuard(const LoopGuard&) = delete;
    LoopGuard& operator=(const LoopGuard&) = delete;
    ~LoopGuard() { binder_.loops_.pop_back(); }
    int number() const { return binder_.loops_.back().number; }

   private:
    Binder& binder_;
  };

  [[noreturn]] static void Fail(Position at, const std::string& message) { throw ProgramError(at, message); }

  // No such operator between values of these types.
  [[noreturn]] static void FailOperator(Position at, const std::string& op, const std::string& left,
                                        const std::string& right);

  // Thrown where a name is used whose declaration was refused: that was reported already.
  struct Consequence {};
  // Runs `bind`; while a whole program is settled, an error in it is noted and lets the next part be looked
  // at.
  // `declared`: the names that it would have declared.
  void Collecting(const std::function<void()>& bind, const std::vector<std::string>& declared = {});

  // Null: no variable, constant or parameter of that name. Valid until the next declaration. May throw
  // Consequence.
  const Variable* FindVariable(const std::string& name) const;
  // A new name in the innermost scope, with a slot of its own; refused where the scope has that name.
  Variable& DeclareVariable(Position at, const std::string& name, const Type* type);
  // The same, among the globals also in a routine: it keeps its value from one call to the next.
  Variable& DeclareStatic(Position at, const std::string& name, const Type* type);
  // A slot among the globals that no name means.
  std::size_t NewGlobal(const Type* type);
  // `value` is constant code.
  void DeclareConstant(Position at, const std::string& name, const Code& value);
  // Code that reads it.
  static CodePtr MakeVariable(Position at, const Variable& variable);
  // The same as a place. Precondition: no constant.
  static PlacePtr MakePlace(Position at, const Variable& variable);
  // The type or class that is named; refused where this host has none of that name.
  const Type* TypeFor(const TypeName& name) const;
  Class& WantClass(Position at, const std::string& name) const;
  // The number of the innermost loop of that word, or of any with "loop"; 0: there is none.
  int FindLoop(std::string_view word) const;
  // Null: the program's own level.
  const Routine* routine() const { return routine_; }
  // Of a loop, which is looked at again after its body.
  CodePtr BindLoopCondition(const Expression& expression);
  // So many stops are known; 0 where nobody asks for them.
  std::size_t CountStops() const;
  // The statements from stop `first` up to `last` are the body of a Try that catches exceptions of those
  // classes.
  void NoteTry(std::size_t first, std::size_t last, const std::vector<const Class*>& caught);

  // Any expression, also one that gives nothing.
  CodePtr BindExpression(const Expression& expression);
  // One that gives something.
  CodePtr BindValue(const Expression& expression);
  // `what` names it where a conversion is refused.
  CodePtr BindConverted(const Expression& expression, const Type* type, const std::string& what);
  static CodePtr Convert(CodePtr code, const Type* type, const std::string& what);
  // A Boolean.
  CodePtr BindCondition(const Expression& expression);
  // A value that is known without running.
  CodePtr BindConstant(const Expression& expression, const std::string& what);
  // What stands before "=".
  PlacePtr BindPlace(const Expression& expression);

  // With a scope of its own; BindInto without one.
  StepBlock BindBlock(const Block& block);
  void BindInto(StepBlock& into, const Block& block);

 private:
  using Scope = std::map<std::string, Variable>;
  struct Loop {
    int number;
    std::string_view word;
  };
  struct Callee;    // what a call names
  struct Snapshot;  // of what a part changes

  Variable& Declare(Position at, const std::string& name, const Type* type, Variable::Where where);

  // Expressions (bind_expressions.cpp).
  CodePtr BindName(const Expression& name);
  CodePtr BindBinary(const Expression& binary);

  // Calls (bind_calls.cpp). `arguments` is null where none are written, not even brackets.
  CodePtr BindCall(const Expression& call);
  CodePtr BindMember(const Expression& member, const std::vector<const Expression*>* arguments);
  CodePtr BindInstanceMember(const Expression& member, CodePtr object,
                             const std::vector<const Expression*>* arguments);
  CodePtr BindSharedMember(const Expression& member, Class& cls,
                           const std::vector<const Expression*>* arguments);
  CodePtr BindArrayMember(const Expression& member, CodePtr array,
                          const std::vector<const Expression*>* arguments);
  CodePtr BindTextMember(const Expression& member, CodePtr text,
                         const std::vector<const Expression*>* arguments);
  CodePtr BindChoice(const Expression& at, const std::vector<const Expression*>& arguments);  // If(...)
  std::vector<std::string> MembersOf(const std::string& enumeration) const;
  CodePtr BindEnumerationMember(const Expression& member);
  CodePtr BindNamedCall(const Expression& name, const std::vector<const Expression*>& arguments);
  CodePtr BindNew(const Expression& made);
  // array(index): one argument.
  CodePtr IndexInto(Position at, CodePtr array, const std::vector<const Expression*>& arguments);
  // The candidate whose arguments need the least conversion; refused where none takes them.
  CodePtr CallOneOf(const Expression& name, const std::vector<Callee>& candidates, CodePtr selfCode,
                    std::vector<CodePtr> arguments);
  CodePtr CallOrIndex(const Expression& name, const std::vector<Callee>& candidates, CodePtr selfCode,
                      const std::vector<const Expression*>* arguments);
  std::vector<CodePtr> BindArguments(const std::vector<const Expression*>& arguments);
  Class* ClassOf(const Expression& expression) const;  // a name that means a class, else null
  // object.Member(arguments) on the left of "="; null: no such.
  PlacePtr BindAssignsCall(const Expression& call);

  // Routines and enumerations (bind_statements.cpp).
  void DeclareEnumeration(const EnumDeclaration& declaration);
  // One statement, with its stop.
  void BindStatement(StepBlock& into, const Statement& statement);
  // Of the innermost scope, which ends here.
  void NoteNames();
  void ForgetEnumeration(const std::string& lower);  // with its members
  void DeclareRoutine(const RoutineDeclaration& declaration);
  void BindRoutine(const RoutineDeclaration& declaration, Routine& routine);

  // Fails: a name that stands for nothing. While a whole program is settled, once for each name.
  [[noreturn]] void FailUnknown(Position at, const std::string& name, const std::string& message,
                                std::vector<std::string> names = {});
  // All that a name alone can stand for.
  std::vector<std::string> KnownNames() const;
  std::vector<std::string> TypeNames() const;

  Stops* stops_;
  bool collecting_ = false;
  std::vector<ProgramError> errors_;
  std::set<std::string> refused_;  // names that were not declared, or not rightly
  std::vector<Scope> scopes_{1};
  std::multimap<std::string, Routine*> routinesByName_;
  Routine* routine_ = nullptr;  // null: the program's own level
  std::vector<Loop> loops_;
  int loopCount_ = 0;
  BoundProgram program_;
};

}  // namespace hostrun
