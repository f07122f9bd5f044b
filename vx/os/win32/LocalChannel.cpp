#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <windows.h>

#include <vx/LocalChannel.h>
#include <vx/os/File.h>
#include <vx/os/win32/Handle.h>
#include <vx/os/win32/OwnerOnly.h>

namespace vxOS {

namespace {

using vxString::CString;
using vxUtil::Error;

constexpr DWORD kAnswerMilliseconds = 5000;
constexpr ULONGLONG kAskMilliseconds = 10000;
constexpr std::size_t kMostAnswerBytes = std::size_t{1} << 30;
constexpr DWORD kBufferBytes = 65536;
constexpr int kLengthDigits = 16;

HANDLE system(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

Error failure(const char* action) {
  const auto error = static_cast<int>(GetLastError());
  return {error, CString("cannot ") + action + ": " + file::errorText(error)};
}

// The numbers of the folder stand for its path in the name of the pipe.
std::wstring pipeOf(std::intptr_t directory, const CString& name) {
  BY_HANDLE_FILE_INFORMATION facts = {};
  GetFileInformationByHandle(system(directory), &facts);
  return CString::format("\\\\.\\pipe\\vx-%08lx-%08lx%08lx-%s", facts.dwVolumeSerialNumber,
                         facts.nFileIndexHigh, facts.nFileIndexLow, name.c_str())
      .asWide()
      .c_str();
}

// An operation on a pipe that is waited for, but not for longer than the limit.
class Operation {
 public:
  Operation() : event_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    overlapped_.hEvent = event_.get();
  }
  OVERLAPPED* get() { return &overlapped_; }
  /// `isStarted` is the result of the call that has begun the operation.
  bool finish(HANDLE pipe, BOOL isStarted, DWORD milliseconds, DWORD& bytes) {
    if (isStarted == 0 && GetLastError() != ERROR_IO_PENDING)
      return GetLastError() == ERROR_PIPE_CONNECTED;
    if (WaitForSingleObject(event_.get(), milliseconds) != WAIT_OBJECT_0) CancelIo(pipe);
    return GetOverlappedResult(pipe, &overlapped_, &bytes, TRUE) != 0;
  }

 private:
  Handle event_;
  OVERLAPPED overlapped_ = {};
};

bool send(HANDLE pipe, std::string_view bytes) {
  do {
    Operation writing;
    const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), kBufferBytes));
    DWORD written = 0;
    if (!writing.finish(pipe, WriteFile(pipe, bytes.data(), size, nullptr, writing.get()),
                        kAnswerMilliseconds, written))
      return false;
    bytes.remove_prefix(written);
  } while (!bytes.empty());
  return true;
}

// What has arrived, at least a byte. False at the end of the pipe.
bool receive(HANDLE pipe, std::string& bytes) {
  const auto piece = std::make_unique<char[]>(kBufferBytes);
  Operation reading;
  DWORD size = 0;
  if (!reading.finish(pipe, ReadFile(pipe, piece.get(), kBufferBytes, nullptr, reading.get()),
                      kAnswerMilliseconds, size))
    return false;
  bytes.append(piece.get(), size);
  return true;
}

// An answer begins with its length in hexadecimal digits.
std::string withLength(std::string_view answer) {
  const CString length = CString::format("%0*zx", kLengthDigits, answer.size());
  return std::string(length.view()) += answer;
}

bool isWhole(const std::string& bytes) {
  return bytes.size() >= kLengthDigits &&
         bytes.size() - kLengthDigits >=
             std::strtoull(bytes.substr(0, kLengthDigits).c_str(), nullptr, 16);
}

// The process at the other end learns who asks, but cannot act as the asker.
constexpr DWORD kAskerFlags =
    FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

bool serverIsSameUser(HANDLE pipe) {
  ULONG server = 0;
  if (GetNamedPipeServerProcessId(pipe, &server) == 0) return false;
  const Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, server));
  const auto there = process ? userOf(process.get()) : nullptr;
  const auto here = currentUser();
  return there != nullptr && here != nullptr &&
         EqualSid(reinterpret_cast<const TOKEN_USER*>(there.get())->User.Sid,
                  reinterpret_cast<const TOKEN_USER*>(here.get())->User.Sid) != 0;
}

}  // namespace

Error LocalChannel::listen(const Directory& directory, const CString& name) {
  close();
  OwnerOnly owner;
  const HANDLE pipe =
      CreateNamedPipeW(pipeOf(directory.handle_, name).c_str(),
                       PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
                       PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1,
                       kBufferBytes, kBufferBytes, 0, owner.get());
  if (pipe == INVALID_HANDLE_VALUE) return failure("open the private channel");
  handle_ = reinterpret_cast<std::intptr_t>(pipe);
  directory_ = &directory;
  name_ = name;
  return {};
}

void LocalChannel::serve(int milliseconds, const std::function<CString(const CString&)>& answer) {
  const HANDLE pipe = system(handle_);
  Operation connecting;
  DWORD none = 0;
  std::string question, rest;
  if (connecting.finish(pipe, ConnectNamedPipe(pipe, connecting.get()),
                        static_cast<DWORD>(milliseconds), none) &&
      receive(pipe, question) &&
      send(pipe, withLength(answer(CString(std::string_view(question))).view())))
    receive(pipe, rest);  // until the asker, who has read the answer, is gone
  DisconnectNamedPipe(pipe);
}

// A wait that begins later ends by its own limit.
void LocalChannel::interrupt() noexcept {
  if (handle_ != Directory::kNone) CancelIoEx(system(handle_), nullptr);
}

void LocalChannel::close() noexcept {
  if (const auto handle = std::exchange(handle_, Directory::kNone); handle != Directory::kNone)
    CloseHandle(system(handle));
}

Error LocalChannel::ask(const Directory& directory, const CString& name, const CString& question,
                        CString& answer) {
  const std::wstring path = pipeOf(directory.handle_, name);
  WaitNamedPipeW(path.c_str(), kAnswerMilliseconds);
  const Handle pipe(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                OPEN_EXISTING, kAskerFlags, nullptr));
  if (!pipe) return failure("reach the process that serves the folder");
  if (!serverIsSameUser(pipe.get())) return {1, "the folder is served by another user"};
  const ULONGLONG end = GetTickCount64() + kAskMilliseconds;
  if (!send(pipe.get(), question.view())) return failure("ask");
  std::string bytes;
  while (!isWhole(bytes)) {
    if (!receive(pipe.get(), bytes)) return failure("get an answer");
    if (bytes.size() > kMostAnswerBytes || GetTickCount64() > end)
      return {1, "the process that serves the folder does not end its answer"};
  }
  answer = CString(std::string_view(bytes).substr(kLengthDigits));
  return {};
}

}  // namespace vxOS
