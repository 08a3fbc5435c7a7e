// hostrun/language/code_calls.cpp - calls: into records and into the program itself.
#include "hostrun/language/code_calls.h"

#include <alloca.h>

#include <memory>

#include "hostrun/host/call.h"
#include "hostrun/language/code_operators.h"

namespace hostrun {
namespace {

// Values in memory that the caller took from its stack, gone with this scope.
class StackValues {
 public:
  StackValues(void* memory, std::size_t count) : values_(static_cast<Value*>(memory)), count_(count) {
    std::uninitialized_default_construct_n(values_, count_);
  }
  StackValues(const StackValues&) = delete;
  StackValues& operator=(const StackValues&) = delete;
  ~StackValues() {
    for (std::size_t i = count_; i > 0; --i) std::destroy_at(values_ + i - 1);
  }
  Value& operator[](std::size_t i) { return values_[i]; }
  Value* data() { return values_; }

 private:
  Value* values_;
  std::size_t count_;
};

// An argument's code where it is evaluated.
struct OfCode {
  const Code& code;
  Activation& activation;
  std::int64_t Whole() const { return code.Whole(activation); }
  double Real() const { return code.Real(activation); }
  Value Eval() const { return code.Eval(activation); }
};

[[noreturn]] void RaiseNil(Position at, const Method& method) {
  RaiseAt(at, "NilObjectException", "The object is nil: can't use its " + method.signature.name + ".");
}

CodePtr ParameterWord(Position at, const Property& property) {
  return std::make_unique<ConstantCode>(at, TypeOf(Kind::Integer),
                                        Value::Integer(static_cast<std::int32_t>(property.parameter)));
}

// A routine on the stack of calls, for the traces of exceptions.
class Entered {
 public:
  Entered(const Routine& routine, Position at) { machine.calls.push_back({&routine, at}); }
  Entered(const Entered&) = delete;
  Entered& operator=(const Entered&) = delete;
  ~Entered() { machine.calls.pop_back(); }
};

}  // namespace

CallPlan::CallPlan(const Method& method, std::vector<Argument> arguments) : method_(method) {
  for (Argument& argument : arguments) {
    if (argument.place) references_.push_back(argument.place.get());
    const Pass pass = PassOf(*argument.type);
    arguments_.push_back({std::move(argument), pass});
  }
}

Value CallPlan::Call(Activation& activation, Object* self, Position at) const {
  CallArguments passed;
  if (self != nullptr) passed.PushSelf(self);
  for (const auto& [argument, pass] : arguments_) {
    if (argument.place) {
      passed.PushReference(*argument.type, argument.place->Eval(activation));
    } else {
      passed.Push(pass, OfCode{*argument.value, activation});
    }
  }
  Note(at);
  return CallFunction(method_, passed, [&](std::size_t i, Value value) {
    references_[i]->Store(activation, std::move(value));
  });
}

NativeCall::NativeCall(Position position, const Method& method, CodePtr self, std::vector<Argument> arguments)
    : Code(position, method.signature.result), self_(std::move(self)), plan_(method, std::move(arguments)) {}

Value NativeCall::Eval(Activation& activation) const {
  if (!self_) return plan_.Call(activation, nullptr, at);
  const Value self = self_->Eval(activation);
  if (self.object() == nullptr) RaiseNil(at, plan_.method());
  return plan_.Call(activation, self.object(), at);
}

PropertyAccess::PropertyAccess(Position position, const Property& property, CodePtr self)
    : Place(position, property.type), self_(std::move(self)), setter_(property.setter) {
  std::vector<Argument> arguments;
  arguments.push_back({TypeOf(Kind::Integer), ParameterWord(at, property), nullptr});
  getter_ = std::make_unique<CallPlan>(property.getter, std::move(arguments));
  leading_.push_back(ParameterWord(at, property));
}

PropertyAccess::PropertyAccess(Position position, const Method& setter, CodePtr self,
                               std::vector<CodePtr> leading)
    : Place(position, setter.signature.parameters.back().type),
      self_(std::move(self)),
      setter_(setter),
      leading_(std::move(leading)) {}

Value PropertyAccess::Eval(Activation& activation) const {
  const Value self = Self(activation);
  return getter_->Call(activation, self.object(), at);
}

void PropertyAccess::Store(Activation& activation, Value value) const {
  const Value self = Self(activation);
  CallArguments passed;
  if (self.object() != nullptr) passed.PushSelf(self.object());
  for (const CodePtr& code : leading_) passed.Push(*code->type, code->Eval(activation));
  passed.Push(*type, value);
  Note(at);
  CallFunction(setter_, passed.words());
}

Value PropertyAccess::Self(Activation& activation) const {
  if (!self_) return Value::Nil();
  Value self = self_->Eval(activation);
  if (self.object() == nullptr) RaiseNil(at, getter_ ? getter_->method() : setter_);
  return self;
}

NewInstance::NewInstance(Position position, Class& cls, const Method* constructor,
                         std::vector<Argument> arguments)
    : Code(position, ObjectType(&cls)), class_(cls) {
  if (constructor != nullptr) plan_ = std::make_unique<CallPlan>(*constructor, std::move(arguments));
}

Value NewInstance::Eval(Activation& activation) const {
  Note(at);
  Value made = Value::Adopt(NewObject(class_));
  ThrowPendingException();
  if (plan_) plan_->Call(activation, made.object(), at);
  return made;
}

UserCall::UserCall(Position position, const Routine& routine, std::vector<Argument> arguments)
    : Code(position, routine.signature.result), routine_(routine), arguments_(std::move(arguments)) {}

Value UserCall::Eval(Activation& activation) const {
  if (static_cast<const char*>(__builtin_frame_address(0)) < machine.stackLimit) {
    RaiseAt(at, "StackOverflowException", "Too many calls inside of calls.");
  }
  const std::size_t count = routine_.locals.size();
  StackValues locals(alloca(sizeof(Value) * count), count);
  StackValues copies(alloca(sizeof(Value) * arguments_.size()), arguments_.size());
  for (std::size_t i = 0; i < arguments_.size(); ++i) {
    const Argument& argument = arguments_[i];
    if (!argument.place) {
      locals[i] = argument.value->Eval(activation);
      continue;
    }
    // What has no fixed place is copied in and, after the call, out.
    Value* place = argument.place->Locate(activation);
    if (place == nullptr) {
      copies[i] = argument.place->Eval(activation);
      place = &copies[i];
    }
    locals[i] = Value::Reference(place);
  }
  for (std::size_t i = arguments_.size(); i < count; ++i) locals[i] = Value::DefaultOf(*routine_.locals[i]);
  const Entered entered(routine_, at);
  Activation inner{locals.data(), activation.globals};
  Value result;
  if (routine_.body.Run(inner) == Flow::Return) {
    result = std::move(machine.result);
  } else if (type->kind != Kind::Nothing) {
    result = Value::DefaultOf(*type);
  }
  for (std::size_t i = 0; i < arguments_.size(); ++i) {
    if (locals[i].kind() == Kind::Reference && locals[i].place() == &copies[i]) {
      arguments_[i].place->Store(activation, std::move(copies[i]));
    }
  }
  return result;
}

}  // namespace hostrun
