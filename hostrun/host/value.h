// hostrun/host/value.h - one value of the host language: a number, or an owned reference to a string or an
// object.
#pragma once

#include <bit>
#include <cstdint>
#include <utility>

#include "hostrun/host/objects.h"
#include "hostrun/host/strings.h"
#include "hostrun/host/types.h"

namespace hostrun {

class Value {
 public:
  Value() = default;
  static Value Nil() { return {Kind::Nil, std::int64_t{0}}; }
  static Value Boolean(bool b) { return {Kind::Boolean, std::int64_t{b}}; }
  static Value Integer(std::int32_t i) { return {Kind::Integer, std::int64_t{i}}; }
  static Value Int64(std::int64_t i) { return {Kind::Int64, i}; }
  static Value Color(std::uint32_t rgb) { return {Kind::Color, std::int64_t{rgb}}; }
  static Value Double(double d) { return {Kind::Double, std::bit_cast<std::int64_t>(d)}; }
  // Takes over the caller's reference; a null object is Nil, a null string the empty one.
  static Value Adopt(HostString* s) { return {Kind::String, BitsOf(s)}; }
  static Value Adopt(Object* o) { return o == nullptr ? Nil() : Value(Kind::Object, BitsOf(o)); }
  static Value Share(HostString* s) {
    LockString(s);
    return Adopt(s);
  }
  static Value Share(Object* o) {
    LockObject(o);
    return Adopt(o);
  }
  static Value Text(std::string_view utf8) { return Adopt(NewString(utf8)); }
  static Value Reference(Value* place) { return {Kind::Reference, BitsOf(place)}; }
  // What a variable of the type holds before anything is assigned.
  static Value DefaultOf(const Type& type);

  Value(const Value& other) : kind_(other.kind_), bits_(other.bits_) { Lock(); }
  // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.Assign): every constructor gives bits
  Value(Value&& other) noexcept : kind_(other.kind_), bits_(other.bits_) { other.kind_ = Kind::Nothing; }
  Value& operator=(const Value& other) {
    Value copy(other);
    return *this = std::move(copy);
  }
  // The old value goes last: what it frees may look at this variable again.
  Value& operator=(Value&& other) noexcept {
    std::swap(kind_, other.kind_);
    std::swap(bits_, other.bits_);
    Value gone(std::move(other));
    return *this;
  }
  ~Value() { Unlock(); }

  Kind kind() const { return kind_; }
  bool IsNil() const { return kind_ == Kind::Nil || kind_ == Kind::Nothing; }
  bool boolean() const { return bits_ != 0; }
  std::int32_t integer() const { return static_cast<std::int32_t>(bits_); }
  std::int64_t int64() const { return bits_; }
  double real() const { return std::bit_cast<double>(bits_); }
  std::uint32_t color() const { return static_cast<std::uint32_t>(bits_); }
  HostString* string() const { return kind_ == Kind::String ? Pointer<HostString>() : nullptr; }
  Object* object() const { return kind_ == Kind::Object ? Pointer<Object>() : nullptr; }
  Value* place() const { return Pointer<Value>(); }
  void SetReal(double d) { bits_ = std::bit_cast<std::int64_t>(d); }  // of a value that is a Double already

  // A numeric value as the other kind; 0 for what is no number.
  double AsReal() const { return kind_ == Kind::Double ? real() : static_cast<double>(bits_); }
  std::int64_t AsInt64() const { return kind_ == Kind::Double ? Truncate(real()) : bits_; }

  // Toward zero; the largest or smallest number for what lies outside, 0 for NaN.
  static std::int64_t Truncate(double d) {
    if (d >= 9223372036854775807.0) return INT64_MAX;
    if (d <= -9223372036854775808.0) return INT64_MIN;
    return d == d ? static_cast<std::int64_t>(d) : 0;
  }

 private:
  Value(Kind kind, std::int64_t bits) : kind_(kind), bits_(bits) {}
  static std::int64_t BitsOf(const void* pointer) {
    return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(pointer));
  }
  template <class T>
  T* Pointer() const {
    return reinterpret_cast<T*>(static_cast<std::uintptr_t>(bits_));
  }
  void Lock() const {
    if (kind_ == Kind::String) LockString(Pointer<HostString>());
    if (kind_ == Kind::Object) LockObject(Pointer<Object>());
  }
  void Unlock() {
    if (kind_ == Kind::String) UnlockString(Pointer<HostString>());
    if (kind_ == Kind::Object) UnlockObject(Pointer<Object>());
  }

  Kind kind_ = Kind::Nothing;
  std::int64_t bits_ = 0;  // the number, the bits of the Double, or the pointer
};

}  // namespace hostrun
