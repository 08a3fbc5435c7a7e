// hostrun/host/arrays.cpp - the host's one-dimensional arrays.
#include "hostrun/host/arrays.h"

#include "hostrun/host/exceptions.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

constexpr std::int64_t kMostElements = 100'000'000;

[[noreturn]] void OutOfBounds(std::int64_t index, std::int64_t upperBound) {
  RaiseHostException("OutOfBoundsException", "Index " + std::to_string(index) +
                                                 " is outside of an array whose " + "upper bound is " +
                                                 std::to_string(upperBound) + ".");
}

void CheckIndex(Object* array, std::int64_t index, std::int64_t last) {
  if (index < 0 || index > last) OutOfBounds(index, UpperBound(array));
}

}  // namespace

Class& ArrayClass() {
  static constinit qvx::REALclassDefinition record = ClassRecord("_Array");
  static Class& cls = TheRegistry().ClassNamed("_Array");
  if (!cls.defined) TheRegistry().Register(record, Origin::Host, PayloadFor<ArrayData>());
  return cls;
}

Object* NewArray(const Type& element, std::int32_t upperBound) {
  ObjectRef array = ObjectRef::Adopt(NewObject(ArrayClass()));
  ArrayDataOf(array.get()).element = &element;
  ResizeArray(array.get(), upperBound);
  return array.Detach();
}

std::int32_t UpperBound(Object* array) {
  return static_cast<std::int32_t>(ArrayDataOf(array).items.size()) - 1;
}

Value& ElementAt(Object* array, std::int64_t index) {
  CheckIndex(array, index, UpperBound(array));
  return ArrayDataOf(array).items[static_cast<std::size_t>(index)];
}

void InsertElement(Object* array, std::int64_t index, Value value) {
  CheckIndex(array, index, std::int64_t{UpperBound(array)} + 1);
  std::vector<Value>& items = ArrayDataOf(array).items;
  items.insert(items.begin() + static_cast<std::ptrdiff_t>(index), std::move(value));
}

void RemoveElement(Object* array, std::int64_t index) {
  CheckIndex(array, index, UpperBound(array));
  std::vector<Value>& items = ArrayDataOf(array).items;
  const Value last =
      std::move(items[static_cast<std::size_t>(index)]);  // freed when the array is whole again
  items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
}

void ResizeArray(Object* array, std::int64_t upperBound) {
  if (upperBound < -1) OutOfBounds(upperBound, UpperBound(array));
  if (upperBound >= kMostElements) {
    RaiseHostException("OutOfMemoryException",
                       "Not enough memory for an array with upper bound " + std::to_string(upperBound) + ".");
  }
  ArrayData& data = ArrayDataOf(array);
  data.items.resize(static_cast<std::size_t>(upperBound + 1), Value::DefaultOf(*data.element));
}

Value Value::DefaultOf(const Type& type) {
  switch (type.kind) {
    case Kind::Boolean:
      return Boolean(false);
    case Kind::Integer:
      return Integer(0);
    case Kind::Int64:
      return Int64(0);
    case Kind::Single:
    case Kind::Double:
      return Double(0);
    case Kind::Color:
      return Color(0);
    case Kind::String:
      return Adopt(static_cast<HostString*>(nullptr));
    default:
      return Nil();
  }
}

}  // namespace hostrun
