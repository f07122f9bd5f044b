#include <new>

#include <kilnbase/linalg/RWBlock.h>
#include <kilnbase/linalg/detail/SmallObjects.h>
#include <kilnbase/linalg/detail/errors.h>

using vxKilnBase::detail::kBlockSource;
using vxKilnBase::detail::raiseOutOfMemory;

namespace {

constexpr std::size_t kAlignedFrom = 512;
constexpr std::size_t kAlignment = 64;

static_assert(sizeof(RWBlock) == 16, "the storage of a joint piece follows a 16-byte header");

// The offset of the header in `piece` that aligns the storage behind the header.
std::size_t headerOffset(const void* piece, std::size_t bytes) {
  if (bytes < kAlignedFrom) return 0;
  const auto storage = reinterpret_cast<std::uintptr_t>(piece) + sizeof(RWBlock);
  return (kAlignment - storage % kAlignment) % kAlignment;
}

}  // namespace

constinit RWBlock RWBlock::empty_(kSaturated);
constinit RWBlock RWBlock::movedFrom_(kSaturated);

RWBlock::RWBlock(unsigned count, std::size_t size) : RWBlock(1) {
  if (count == 0) return;
  data = ::operator new(count* size, std::nothrow);
  if (data == nullptr) raiseOutOfMemory(kBlockSource);
}

RWBlock::~RWBlock() {
  if (pieceOffset_ == 0) ::operator delete(data);
}

void* RWBlock::create(unsigned count, std::size_t size, RWBlock*& block) {
  block = &empty_;
  if (count == 0) return nullptr;
  const std::size_t bytes = count * size;
  const std::size_t total = bytes + sizeof(RWBlock) + (bytes < kAlignedFrom ? 0 : kAlignment);
  void* piece = total > bytes ? vxKilnBase::detail::takeSmallObject(total) : nullptr;
  if (piece == nullptr) {
    raiseOutOfMemory(kBlockSource);
    return nullptr;
  }
  const std::size_t offset = headerOffset(piece, bytes);
  block = new (static_cast<std::byte*>(piece) + offset) RWBlock(1);
  block->pieceOffset_ = static_cast<std::uint16_t>(offset + 1);
  return block->data = block + 1;
}

void RWBlock::destroy(RWBlock* block) {
  using vxKilnBase::detail::releaseSmallObject;
  if (block->pieceOffset_ == 1) {  // the usual case; the address of the piece is known at once
    releaseSmallObject(block, sizeof(RWBlock));
  } else if (block->pieceOffset_ == 0) {
    delete block;
  } else {
    releaseSmallObject(reinterpret_cast<std::byte*>(block) - (block->pieceOffset_ - 1),
                       sizeof(RWBlock));
  }
}
