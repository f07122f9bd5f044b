#include <algorithm>
#include <new>
#include <thread>

#include <kilnbase/linalg/RWBlock.h>
#include <kilnbase/linalg/detail/SmallObjects.h>
#include <kilnbase/linalg/detail/errors.h>

using vxKilnBase::detail::kBlockSource;
using vxKilnBase::detail::raiseOutOfMemory;
using vxKilnBase::detail::releaseSmallObject;
using vxKilnBase::detail::SmallObjectCache;
using vxKilnBase::detail::takeSmallObject;

namespace {

constexpr std::size_t kAlignedFrom = 512;
constexpr std::size_t kAlignment = 64;

static_assert(sizeof(RWBlock) == 16, "the storage of a joint piece follows a 16-byte header");

// Released pieces of memory, in classes of sizes that are multiples of kPieceStep. They are for the
// thread that loads the library alone, so that nothing is locked; all others use the heap. A sum of
// two short vectors spends most of its time in the heap ("vector a + b 10" of kiln_bench).
constexpr std::size_t kPieceStep = 32;
constexpr std::size_t kPieceClasses = 32;
constinit SmallObjectCache keptPieces[kPieceClasses] = {};
std::thread::id keeper;

#ifdef NDEBUG  // in debug builds nobody keeps pieces, so that checkers of the heap see all
struct Keeping {
  Keeping() { keeper = std::this_thread::get_id(); }
  ~Keeping() {
    keeper = {};
    for (SmallObjectCache& kept : keptPieces) {
      while (void* piece = kept.take()) std::free(piece);
    }
  }
};
const Keeping keeping;
#endif

// The class of a piece of so many bytes; kPieceClasses for a piece that is never kept.
std::size_t classOf(std::size_t bytes) {
  return std::min((bytes - 1) / kPieceStep, kPieceClasses);
}

bool isKept(std::size_t pieceClass) {
  return pieceClass < kPieceClasses && std::this_thread::get_id() == keeper;
}

void* takePiece(std::size_t bytes) {
  const std::size_t pieceClass = classOf(bytes);
  if (pieceClass >= kPieceClasses) return takeSmallObject(bytes);
  void* kept = isKept(pieceClass) ? keptPieces[pieceClass].take() : nullptr;
  return kept != nullptr ? kept : takeSmallObject((pieceClass + 1) * kPieceStep);
}

void releasePiece(void* piece, std::size_t pieceClass) {
  if (isKept(pieceClass) && keptPieces[pieceClass].keep(piece)) return;
  releaseSmallObject(piece, (pieceClass + 1) * kPieceStep);
}

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
  void* piece = total > bytes ? takePiece(total) : nullptr;
  if (piece == nullptr) {
    raiseOutOfMemory(kBlockSource);
    return nullptr;
  }
  const std::size_t offset = headerOffset(piece, bytes);
  block = new (static_cast<std::byte*>(piece) + offset) RWBlock(1);
  block->pieceOffset_ = static_cast<std::uint16_t>(offset + 1);
  block->pieceClass_ = static_cast<std::uint32_t>(classOf(total));
  return block->data = block + 1;
}

void RWBlock::destroy(RWBlock* block) {
  if (block->pieceOffset_ == 1) {  // the usual case; the address of the piece is known at once
    releasePiece(block, block->pieceClass_);
  } else if (block->pieceOffset_ == 0) {
    delete block;
  } else {
    releasePiece(reinterpret_cast<std::byte*>(block) - (block->pieceOffset_ - 1),
                 block->pieceClass_);
  }
}
