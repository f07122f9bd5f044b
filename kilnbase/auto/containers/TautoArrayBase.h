// Scratch arrays that end with their scope, out of one shared buffer.
#pragma once

#include <cstddef>

#include <kilnbase/auto/containers/TcharPtrArray.h>
#include <kilnbase/export.h>

/// A scratch array: uninitialised storage for a number of elements. The constructor takes the
/// storage from a buffer that all scratch arrays of the process share, the destructor gives it
/// back. The buffer grows where it must and is never freed, so a scratch array usually allocates
/// nothing.
///
/// The buffer is a stack: **arrays must end in the reverse order of their creation**. Asserted in
/// debug builds; in release builds later arrays may overlap the ones that are still in use.
///
///     class Weights : public TautoArrayBase {
///      public:
///       explicit Weights(std::size_t n) : TautoArrayBase(sizeof(double), n) {}
///       double& operator[](std::size_t i) { return static_cast<double*>(base())[i]; }
///     };
///     Weights weights(100);
///     weights[0] = 0.5;
///
/// The storage begins at a multiple of the element size in a block that is aligned to 64 bytes. So
/// elements of every type with an alignment of at most 64 are aligned. Nothing is locked: scratch
/// arrays are for a single thread.
class KILNBASE_API TautoArrayBase {
 public:
  TautoArrayBase(const TautoArrayBase&) = delete;
  TautoArrayBase& operator=(const TautoArrayBase&) = delete;
  virtual ~TautoArrayBase();

  /// Bytes of the shared buffer.
  static std::size_t bufferSize();
  /// Bytes of the shared buffer that are in use.
  static std::size_t currentUse();
  /// The growth step in bytes: the buffer grows by multiples of it. The first step is 8192.
  static std::size_t incrementalSize();
  /// Sets the growth step, which must not be 0. Asserted in debug builds; in release builds 0
  /// counts as 1.
  static void setIncrementSize(std::size_t bytes);

 protected:
  /// Takes storage for `count` elements of `size` bytes. For a `count` of 0, and without memory,
  /// nothing is taken: `base()` is null and `count()` is 0. The size must be from 1 to 65535.
  /// Asserted in debug builds; in release builds nothing is taken for other sizes.
  TautoArrayBase(std::size_t size, std::size_t count);

  /// The first element. The elements stay in place while other scratch arrays make the buffer grow.
  void* base() const { return base_; }
  /// The number of elements that there is storage for.
  std::size_t count() const { return count_; }

 private:
  static bool makeRoom(std::size_t bytes);
  std::size_t bytes() const { return size_ * count_ + padding_; }

  char* base_ = nullptr;
  unsigned short size_;
  std::size_t count_ = 0;
  std::size_t padding_ = 0;

  static char* fsBuffer;
  static std::size_t fsBufferSize;
  static std::size_t fsCurrentUse;
  static std::size_t fsBufIncSize;
  static TcharPtrArray fsToBeCleared;
};
