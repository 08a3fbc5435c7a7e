// hostrun/host/arrays.h - the host's one-dimensional arrays.
#pragma once

#include <cstdint>
#include <vector>

#include "hostrun/host/objects.h"
#include "hostrun/host/types.h"
#include "hostrun/host/value.h"

namespace hostrun {

struct ArrayData {
  const Type* element = TypeOf(Kind::Variant);
  std::vector<Value> items;
};

// The class of all arrays; its instances are what array handles point to.
Class& ArrayClass();

// Throws OutOfMemoryException when that many elements can't be had.
Object* NewArray(const Type& element, std::int32_t upperBound);
inline ArrayData& ArrayDataOf(Object* array) {
  return PayloadOf<ArrayData>(array);
}
std::int32_t UpperBound(Object* array);

// The element, or OutOfBoundsException.
Value& ElementAt(Object* array, std::int64_t index);
// Between 0 and one past the last element, or OutOfBoundsException.
void InsertElement(Object* array, std::int64_t index, Value value);
void RemoveElement(Object* array, std::int64_t index);
void ResizeArray(Object* array, std::int64_t upperBound);

}  // namespace hostrun
