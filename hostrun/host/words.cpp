// hostrun/host/words.cpp - values as the words of a call: cdecl, arguments in declared order.
#include "hostrun/host/words.h"

#include "hostrun/host/exceptions.h"
#include "hostrun/host/objects.h"

namespace hostrun {
namespace {

template <class T>
T Read(const std::uint32_t* words) {
  T value;
  std::memcpy(&value, words, sizeof value);
  return value;
}

struct OfValue {
  const Value& value;
  std::int64_t Whole() const { return value.AsInt64(); }
  double Real() const { return value.AsReal(); }
  const Value& Eval() const { return value; }
};

}  // namespace

Pass PassOf(const Type& type) {
  switch (type.kind) {
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

std::size_t WordCount(const Type& type) {
  const Pass pass = PassOf(type);
  return pass == Pass::Wide || pass == Pass::Real ? 2 : 1;
}

Value AdoptWords(const Type& type, const std::uint32_t* words) {
  switch (type.kind) {
    case Kind::Boolean:
      return Value::Boolean((words[0] & 0xFFU) != 0);
    case Kind::Integer:
      return Value::Integer(Read<std::int32_t>(words));
    case Kind::Int64:
      return Value::Int64(Read<std::int64_t>(words));
    case Kind::Single:
      return Value::Double(static_cast<double>(Read<float>(words)));
    case Kind::Double:
      return Value::Double(Read<double>(words));
    case Kind::Color:
      return Value::Color(words[0]);
    case Kind::String:
      return Value::Adopt(Read<HostString*>(words));
    case Kind::Object:
    case Kind::Array:
    case Kind::Variant:
      return Value::Adopt(Read<Object*>(words));
    default:
      return {};
  }
}

Value ShareWords(const Type& type, const std::uint32_t* words) {
  Value value = AdoptWords(type, words);
  LockString(value.string());
  LockObject(value.object());
  return value;
}

Value BoxedVariant(const Value& value) {
  if (value.IsNil() || value.kind() == Kind::Object) return value;
  Object* const box = NewObject(VariantBoxClass());
  PayloadOf<Value>(box) = value;
  return Value::Adopt(box);
}

CallArguments::~CallArguments() {
  for (std::size_t i = 0; i < referenceCount_; ++i) {
    if (references_[i].type != nullptr) TakeReference(i);
  }
  std::destroy_n(held(), heldCount_);
}

const Value& CallArguments::Hold(Value value) {
  return *std::construct_at(held() + heldCount_++, std::move(value));
}

void CallArguments::Push(const Type& type, const Value& value) {
  Push(PassOf(type), OfValue{value});
}

void CallArguments::PushReference(const Type& type, const Value& value) {
  Copy& copy = references_[referenceCount_++];
  copy = {&type, 0};
  const auto store = [&copy](auto bits) { std::memcpy(&copy.bits, &bits, sizeof bits); };
  switch (PassOf(type)) {
    case Pass::Real:
      store(value.AsReal());
      break;
    case Pass::Single:
      store(static_cast<float>(value.AsReal()));
      break;
    case Pass::Whole:
    case Pass::Wide:
      store(value.AsInt64());
      break;
    case Pass::Handle:
    case Pass::Boxed:
      LockString(value.string());
      LockObject(value.object());
      if (type.kind == Kind::String) {
        store(value.string());
      } else {
        store(value.object());
      }
      break;
  }
  words_.PushPointer(&copy.bits);
}

Value CallArguments::TakeReference(std::size_t index) {
  Copy& copy = references_[index];
  std::array<std::uint32_t, 2> words{};
  std::memcpy(words.data(), &copy.bits, sizeof words);
  const Type& type = *std::exchange(copy.type, nullptr);
  Value value = AdoptWords(type, words.data());
  return type.kind == Kind::Variant ? Unboxed(value) : value;
}

}  // namespace hostrun
