// Objects that live as long as somebody refers to them.
#pragma once

#include <type_traits>
#include <utility>

namespace vx {

/// The base of objects that count their references. The count starts at 0 and belongs to one
/// thread; a copy of an object has a count of its own.
class ReferenceCount {
 public:
  virtual ~ReferenceCount() = default;

  /// One reference more. `Reference` calls this.
  void addReference() const { ++count_; }
  /// Deletes the object when this was the last reference.
  void removeReference() const {
    if (--count_ == 0) delete this;
  }
  /// How many references there are now.
  int references() const { return count_; }

 protected:
  ReferenceCount() = default;
  ReferenceCount(const ReferenceCount&) {}
  ReferenceCount& operator=(const ReferenceCount&) { return *this; }

 private:
  mutable int count_ = 0;
};

/// A reference to a `ReferenceCount`, or null. The object is deleted with its last reference.
///
///     struct Snapshot : vx::ReferenceCount { int value = 7; };
///     vx::Reference<Snapshot> first(new Snapshot);
///     vx::Reference<Snapshot> second = first;
///     first = nullptr;
///     second->value = 8;  // still there
template <class T>
class Reference {
 public:
  Reference() = default;
  /// Takes part in the counting of the object; null is allowed.
  Reference(T* object) : object_(object) {  // NOLINT(google-explicit-constructor): a pointer is one
    if (object_ != nullptr) object_->addReference();
  }
  Reference(const Reference& other) : Reference(other.object_) {}
  Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  /// A reference to the same object, as a base class of it.
  template <class Derived>
  requires std::is_convertible_v<Derived*, T*> Reference(
      const Reference<Derived>& other)  // NOLINT(google-explicit-constructor): as pointers do
      : Reference(other.get()) {}
  ~Reference() {
    if (object_ != nullptr) object_->removeReference();
  }
  /// The object that was referred to before is deleted when this was its last reference.
  Reference& operator=(Reference other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  /// The object, or null. `*` and `->` need one.
  T* get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  /// Whether this refers to an object.
  explicit operator bool() const { return object_ != nullptr; }
  /// Whether both refer to the same object, or to none.
  friend bool operator==(const Reference& a, const Reference& b) { return a.object_ == b.object_; }

 private:
  T* object_ = nullptr;
};

}  // namespace vx
