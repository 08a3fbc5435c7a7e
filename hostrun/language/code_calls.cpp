// hostrun/language/code_calls.cpp - calls: into records and into the program itself.
#include <alloca.h>

#include <new>

#include "hostrun/host/call.h"
#include "hostrun/language/make.h"

namespace hostrun {
namespace {

// Values in memory that the caller took from its stack, gone with this scope.
class StackValues {
 public:
  StackValues(void* memory, std::size_t count) : values_(static_cast<Value*>(memory)), count_(count) {
    for (std::size_t i = 0; i < count_; ++i) new (values_ + i) Value();
  }
  StackValues(const StackValues&) = delete;
  StackValues& operator=(const StackValues&) = delete;
  ~StackValues() {
    for (std::size_t i = count_; i > 0; --i) values_[i - 1].~Value();
  }
  Value& operator[](std::size_t i) { return values_[i]; }
  Value* data() { return values_; }

 private:
  Value* values_;
  std::size_t count_;
};

enum class Pass : std::uint8_t { Whole, Wide, Single, Real, Handle, Boxed, Byref };

struct PlannedArgument {
  CodePtr code;
  const Type* type;
  Pass pass;
  const Place* place;  // Byref
};

Pass PassFor(const Argument& argument) {
  if (argument.byref) return Pass::Byref;
  switch (argument.type->kind) {
    case Kind::Boolean:
    case Kind::Integer:
    case Kind::Color:
      return Pass::Whole;
    case Kind::Int64:
      return Pass::Wide;
    case Kind::Single:
      return Pass::Single;
    case Kind::Double:
      return Pass::Real;
    case Kind::Variant:
      return Pass::Boxed;
    default:
      return Pass::Handle;
  }
}

// The arguments of one call site: how each is passed is settled once.
class CallPlan {
 public:
  CallPlan(const Method& method, std::vector<Argument> arguments) : method_(method) {
    for (Argument& argument : arguments) {
      const Pass pass = PassFor(argument);
      const Place* const place = argument.byref ? static_cast<const Place*>(argument.code.get()) : nullptr;
      if (pass == Pass::Handle || pass == Pass::Boxed) ++handles_;
      if (pass == Pass::Byref) ++references_;
      arguments_.push_back({std::move(argument.code), argument.type, pass, place});
    }
  }

  Value Call(Frame& frame, Object* self, Position at) const {
    ArgumentWords words;
    if (self != nullptr) words.PushPointer(self);
    if (handles_ == 0 && references_ == 0) {
      for (const PlannedArgument& argument : arguments_) PushPlain(words, argument, frame);
      Note(at);
      return CallFunction(method_, words);
    }
    StackValues handles(alloca(sizeof(Value) * handles_), handles_);
    auto* const places = static_cast<ReferencePlace*>(alloca(sizeof(ReferencePlace) * references_));
    std::size_t handle = 0;
    std::size_t place = 0;
    for (const PlannedArgument& argument : arguments_) {
      switch (argument.pass) {
        case Pass::Handle:
          handles[handle] = argument.code->Eval(frame);
          words.PushHandle(handles[handle++]);
          break;
        case Pass::Boxed:
          handles[handle] = BoxedVariant(argument.code->Eval(frame));
          words.PushHandle(handles[handle++]);
          break;
        case Pass::Byref:
          new (places + place) ReferencePlace(*argument.type, argument.code->Eval(frame));
          words.PushPointer(places[place++].address());
          break;
        default:
          PushPlain(words, argument, frame);
      }
    }
    Note(at);
    if (references_ == 0) return CallFunction(method_, words);
    try {
      Value result = CallFunction(method_, words);
      StoreReferences(frame, places);
      return result;
    } catch (const HostException&) {
      StoreReferences(frame, places);
      throw;
    }
  }

  const Method& method() const { return method_; }

 private:
  static void PushPlain(ArgumentWords& words, const PlannedArgument& argument, Frame& frame) {
    switch (argument.pass) {
      case Pass::Real:
        return words.PushDouble(argument.code->Real(frame));
      case Pass::Single:
        return words.PushSingle(static_cast<float>(argument.code->Real(frame)));
      case Pass::Wide:
        return words.PushInt64(argument.code->Whole(frame));
      default:
        return words.PushWord(static_cast<std::uint32_t>(argument.code->Whole(frame)));
    }
  }

  void StoreReferences(Frame& frame, const ReferencePlace* places) const {
    for (const PlannedArgument& argument : arguments_) {
      if (argument.pass == Pass::Byref) argument.place->Store(frame, (places++)->Take());
    }
  }

  const Method& method_;
  std::vector<PlannedArgument> arguments_;
  std::size_t handles_ = 0;
  std::size_t references_ = 0;
};

[[noreturn]] void RaiseNil(Position at, const std::string& member) {
  RaiseAt(at, "NilObjectException", "The object is nil: can't use its " + member + ".");
}

class NativeCall final : public Code {
 public:
  NativeCall(Position position, const Method& method, CodePtr self, std::vector<Argument> arguments)
      : Code(position, method.signature.result),
        self_(std::move(self)),
        plan_(method, std::move(arguments)) {}
  Value Eval(Frame& frame) const override {
    if (!self_) return plan_.Call(frame, nullptr, at);
    const Value self = self_->Eval(frame);
    if (self.object() == nullptr) RaiseNil(at, plan_.method().signature.name);
    return plan_.Call(frame, self.object(), at);
  }

 private:
  CodePtr self_;
  CallPlan plan_;
};

// Reads through one method and writes through another.
class PropertyCode final : public Place {
 public:
  PropertyCode(Position position, const Type* t, CodePtr self, std::unique_ptr<CallPlan> getter,
               const Method* setter, std::vector<CodePtr> leading)
      : Place(position, t),
        self_(std::move(self)),
        getter_(std::move(getter)),
        setter_(setter),
        leading_(std::move(leading)) {}

  Value Eval(Frame& frame) const override {
    const Value self = Self(frame);
    return getter_->Call(frame, self.object(), at);
  }

  void Store(Frame& frame, Value value) const override {
    const Value self = Self(frame);
    std::vector<Value> arguments;
    arguments.reserve(leading_.size() + 1);
    for (const CodePtr& code : leading_) arguments.push_back(code->Eval(frame));
    arguments.push_back(std::move(value));
    Note(at);
    Invoke(*setter_, self.object(), arguments);
  }

 private:
  Value Self(Frame& frame) const {
    if (!self_) return Value::Nil();
    Value self = self_->Eval(frame);
    if (self.object() == nullptr) RaiseNil(at, (getter_ ? getter_->method() : *setter_).signature.name);
    return self;
  }

  CodePtr self_;
  std::unique_ptr<CallPlan> getter_;
  const Method* setter_;
  std::vector<CodePtr> leading_;  // what the setter takes before the value
};

class NewCode final : public Code {
 public:
  NewCode(Position position, Class& cls, const Method* constructor, std::vector<Argument> arguments)
      : Code(position, ObjectType(&cls)), class_(cls) {
    if (constructor != nullptr) plan_ = std::make_unique<CallPlan>(*constructor, std::move(arguments));
  }
  Value Eval(Frame& frame) const override {
    Note(at);
    Value made = Value::Adopt(NewObject(class_));
    ThrowPendingException();
    if (plan_) plan_->Call(frame, made.object(), at);
    return made;
  }

 private:
  Class& class_;
  std::unique_ptr<CallPlan> plan_;
};

class UserCall final : public Code {
 public:
  UserCall(Position position, const Routine& routine, std::vector<Argument> arguments)
      : Code(position, routine.signature.result), routine_(routine), arguments_(std::move(arguments)) {}

  Value Eval(Frame& frame) const override {
    if (static_cast<const char*>(__builtin_frame_address(0)) < machine.stackLimit) {
      RaiseAt(at, "StackOverflowException", "Too many calls inside of calls.");
    }
    const std::size_t count = routine_.locals.size();
    StackValues locals(alloca(sizeof(Value) * count), count);
    StackValues copies(alloca(sizeof(Value) * arguments_.size()), arguments_.size());
    for (std::size_t i = 0; i < arguments_.size(); ++i) {
      const Argument& argument = arguments_[i];
      if (!argument.byref) {
        locals[i] = argument.code->Eval(frame);
        continue;
      }
      // What has no fixed place is copied in and, after the call, out.
      Value* place = static_cast<const Place&>(*argument.code).Locate(frame);
      if (place == nullptr) {
        copies[i] = argument.code->Eval(frame);
        place = &copies[i];
      }
      locals[i] = Value::Reference(place);
    }
    for (std::size_t i = arguments_.size(); i < count; ++i) locals[i] = Value::DefaultOf(*routine_.locals[i]);
    const Entered entered(routine_, at);
    Frame inner{locals.data(), frame.globals};
    Value result;
    if (routine_.body.Run(inner) == Flow::Return) {
      result = std::move(machine.result);
    } else if (type->kind != Kind::Nothing) {
      result = Value::DefaultOf(*type);
    }
    for (std::size_t i = 0; i < arguments_.size(); ++i) {
      if (locals[i].kind() == Kind::Reference && locals[i].place() == &copies[i]) {
        static_cast<const Place&>(*arguments_[i].code).Store(frame, std::move(copies[i]));
      }
    }
    return result;
  }

 private:
  class Entered {
   public:
    Entered(const Routine& routine, Position at) { machine.calls.push_back({&routine, at}); }
    Entered(const Entered&) = delete;
    Entered& operator=(const Entered&) = delete;
    ~Entered() { machine.calls.pop_back(); }
  };

  const Routine& routine_;
  std::vector<Argument> arguments_;
};

CodePtr ParameterWord(Position at, const Property& property) {
  return MakeConstant(at, TypeOf(Kind::Integer),
                      Value::Integer(static_cast<std::int32_t>(property.parameter)));
}

}  // namespace

CodePtr MakeNativeCall(Position at, const Method& method, CodePtr self, std::vector<Argument> arguments) {
  return std::make_unique<NativeCall>(at, method, std::move(self), std::move(arguments));
}

CodePtr MakeProperty(Position at, const Property& property, CodePtr self) {
  std::vector<Argument> arguments;
  arguments.push_back({ParameterWord(at, property), TypeOf(Kind::Integer), false});
  std::vector<CodePtr> leading;
  leading.push_back(ParameterWord(at, property));
  return std::make_unique<PropertyCode>(at, property.type, std::move(self),
                                        std::make_unique<CallPlan>(property.getter, std::move(arguments)),
                                        &property.setter, std::move(leading));
}

CodePtr MakeIndexedSetter(Position at, const Method& setter, CodePtr self, std::vector<CodePtr> leading) {
  const Type* const type = setter.signature.parameters.back().type;
  return std::make_unique<PropertyCode>(at, type, std::move(self), nullptr, &setter, std::move(leading));
}

CodePtr MakeUserCall(Position at, const Routine& routine, std::vector<Argument> arguments) {
  return std::make_unique<UserCall>(at, routine, std::move(arguments));
}

CodePtr MakeNew(Position at, Class& cls, const Method* constructor, std::vector<Argument> arguments) {
  return std::make_unique<NewCode>(at, cls, constructor, std::move(arguments));
}

}  // namespace hostrun
