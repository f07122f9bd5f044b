#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

#include <kilnbase/auto/containers/TautoArrayBase.h>
#include <kilnbase/detail/assert.h>

static_assert(sizeof(TautoArrayBase) == 5 * sizeof(void*));

namespace {

constexpr std::align_val_t kAlignment{64};
constexpr std::size_t kMostBytes = PTRDIFF_MAX;

char* newBlock(std::size_t bytes) {
  return static_cast<char*>(::operator new(bytes, kAlignment, std::nothrow));
}

void freeBlock(char* block) {
  ::operator delete(block, kAlignment);
}

}  // namespace

constinit char* TautoArrayBase::fsBuffer = nullptr;
constinit std::size_t TautoArrayBase::fsBufferSize = 0;
constinit std::size_t TautoArrayBase::fsCurrentUse = 0;
constinit std::size_t TautoArrayBase::fsBufIncSize = 8192;
constinit TcharPtrArray TautoArrayBase::fsToBeCleared(8);

std::size_t TautoArrayBase::bufferSize() {
  return fsBufferSize;
}
std::size_t TautoArrayBase::currentUse() {
  return fsCurrentUse;
}
std::size_t TautoArrayBase::incrementalSize() {
  return fsBufIncSize;
}
void TautoArrayBase::setIncrementSize(std::size_t bytes) {
  KILN_ASSERT(bytes > 0);
  fsBufIncSize = std::max<std::size_t>(bytes, 1);
}

TautoArrayBase::TautoArrayBase(std::size_t size, std::size_t count)
    : size_(static_cast<unsigned short>(size)) {
  const bool sizeFits = size > 0 && size <= USHRT_MAX;
  KILN_ASSERT(sizeFits);
  if (!sizeFits || count == 0 || count > (kMostBytes - size) / size) return;
  const std::size_t padding = (size - fsCurrentUse % size) % size;
  if (!makeRoom(size * count + padding)) return;
  count_ = count;
  padding_ = padding;
  base_ = fsBuffer + fsCurrentUse + padding;
  fsCurrentUse += bytes();
}

TautoArrayBase::~TautoArrayBase() {
  KILN_ASSERT(count_ == 0 || fsToBeCleared.length() > 0 ||
              base_ + size_ * count_ == fsBuffer + fsCurrentUse);
  fsCurrentUse -= bytes();
  if (fsCurrentUse > 0) return;
  for (std::size_t i = 0; i < fsToBeCleared.length(); ++i) freeBlock(fsToBeCleared[i]);
  fsToBeCleared.reset();
}

// Arrays in use keep their storage in the old block. The old block is freed when no array is in
// use.
bool TautoArrayBase::makeRoom(std::size_t bytes) {
  const std::size_t free = fsBufferSize - fsCurrentUse;
  if (bytes <= free) return true;
  const std::size_t size = fsBufferSize + ((bytes - free) / fsBufIncSize + 1) * fsBufIncSize;
  const bool fits = size >= fsCurrentUse + bytes && size <= kMostBytes;
  char* const block = fits ? newBlock(size) : nullptr;
  if (block == nullptr) return false;
  if (fsCurrentUse > 0) {
    const std::size_t kept = fsToBeCleared.length();
    fsToBeCleared.addLast(fsBuffer);
    if (fsToBeCleared.length() == kept) {
      freeBlock(block);
      return false;
    }
    std::memcpy(block, fsBuffer, fsCurrentUse);
  } else {
    freeBlock(fsBuffer);
  }
  fsBuffer = block;
  fsBufferSize = size;
  return true;
}
