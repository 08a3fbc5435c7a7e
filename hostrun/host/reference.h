// hostrun/host/reference.h - an owned reference to something that counts its references.
#pragma once

#include <utility>

namespace hostrun {

// Holds one reference, or null. Lock takes a reference and Unlock gives one back; both accept null.
template <class T, void (*Lock)(T*), void (*Unlock)(T*)>
class Reference {
 public:
  Reference() = default;
  // Takes over the caller's reference.
  static Reference Adopt(T* counted) {
    Reference ref;
    ref.counted_ = counted;
    return ref;
  }
  // Takes a reference of its own.
  static Reference Share(T* counted) {
    Lock(counted);
    return Adopt(counted);
  }
  Reference(const Reference& other) : counted_(other.counted_) { Lock(counted_); }
  Reference(Reference&& other) noexcept : counted_(other.Detach()) {}
  Reference& operator=(Reference other) noexcept {
    std::swap(counted_, other.counted_);
    return *this;
  }
  ~Reference() { Unlock(counted_); }

  // Still owned here.
  T* get() const { return counted_; }
  // Lets go without giving back: the reference is the caller's.
  T* Detach() { return std::exchange(counted_, nullptr); }
  explicit operator bool() const { return counted_ != nullptr; }

 private:
  T* counted_ = nullptr;
};

}  // namespace hostrun
