#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <vx/os/posix/BlockedSignals.h>
#include <vx/os/posix/Space.h>

namespace vxOS {

namespace {

// Between two pieces the signals of the thread arrive.
constexpr std::uint64_t kPiece = 64U << 20U;

// Growing a file beyond the limit of the process sends a signal that ends the process.
bool isBeyondLimit(std::uint64_t end, std::uint64_t length) {
  rlimit limit;
  return length > INT64_MAX - end ||
         (getrlimit(RLIMIT_FSIZE, &limit) == 0 && end + length > limit.rlim_cur);
}

// A file system without blocks does not tell its size.
bool isBeyondDisk(int file, std::uint64_t length) {
  struct statvfs disk;
  return fstatvfs(file, &disk) == 0 && disk.f_blocks > 0 && length / disk.f_frsize > disk.f_bfree;
}

int writeZeros(int file, std::uint64_t offset, std::uint64_t length) {
  static constexpr std::array<char, 65536> kZeros = {};
  while (length > 0) {
    const auto count = std::min<std::uint64_t>(length, kZeros.size());
    const ssize_t written = pwrite(file, kZeros.data(), count, static_cast<off_t>(offset));
    if (written == -1 && errno != EINTR) return errno;
    if (written == -1) continue;
    offset += static_cast<std::uint64_t>(written);
    length -= static_cast<std::uint64_t>(written);
  }
  return 0;
}

int takePiece(int file, std::uint64_t offset, std::uint64_t length) {
  const BlockedSignals blocked;  // an interrupted allocation begins again, maybe for ever
  int error;
  do {
    error = posix_fallocate(file, static_cast<off_t>(offset), static_cast<off_t>(length));
  } while (error == EINTR);
  const bool cannot = error == EINVAL || error == EOPNOTSUPP;  // this kind of file system
  return cannot ? writeZeros(file, offset, length) : error;
}

}  // namespace

int takeSpace(int file, std::uint64_t end, std::uint64_t length) {
  if (isBeyondLimit(end, length)) return EFBIG;
  if (isBeyondDisk(file, length)) return ENOSPC;
  int error = 0;
  for (std::uint64_t taken = 0; taken < length && error == 0; taken += kPiece)
    error = takePiece(file, end + taken, std::min(kPiece, length - taken));
  return error;
}

}  // namespace vxOS
