// Scratch arrays that end with their scope, out of one shared buffer.
#pragma once

#include <cstddef>

#include <kilnbase/auto/containers/TcharPtrArray.h>
#include <kilnbase/export.h>

/// A scratch array: uninitialised storage for a number of elements, taken from a buffer that all
/// scratch arrays of the process share and given back by the destructor. The buffer is a stack:
/// **arrays must end in the reverse order of their creation**. It grows where it must and is never
/// given up, so that a scratch array usually costs no allocation.
///
///     class Weights : public TautoArrayBase {
///      public:
///       explicit Weights(std::size_t n) : TautoArrayBase(sizeof(double), n) {}
///       double& operator[](std::size_t i) { return static_cast<double*>(base())[i]; }
///     };
///
/// The storage begins at a multiple of the element size from the start of a block that is aligned
/// to 64 bytes, which aligns elements of any type of at most that alignment. Nothing is locked:
/// scratch arrays are for a single thread.
class KILNBASE_API TautoArrayBase {
 public:
  TautoArrayBase(const TautoArrayBase&) = delete;
  TautoArrayBase& operator=(const TautoArrayBase&) = delete;
  virtual ~TautoArrayBase();

  /// Bytes of the shared buffer.
  static std::size_t bufferSize();
  /// Bytes of it that are in use.
  static std::size_t currentUse();
  /// The buffer grows by a multiple of so many bytes; 8192 at the start.
  static std::size_t incrementalSize();
  /// Sets it; it must not be 0.
  static void setIncrementSize(std::size_t bytes);

 protected:
  /// Storage for `count` elements of `size` bytes, which must be from 1 to 65535. Nothing is
  /// reserved for 0 elements or another size, nor when there is no memory: `base()` is then null
  /// and `count()` 0.
  TautoArrayBase(std::size_t size, std::size_t count);

  /// The first element. It stays where it is while other scratch arrays make the buffer grow.
  void* base() const { return base_; }
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
