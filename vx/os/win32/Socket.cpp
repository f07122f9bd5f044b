// The header of the sockets comes before those that include the system's own.
// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
// clang-format on
#include <cstring>
#include <iphlpapi.h>
#include <memory>
#include <string>
#include <vector>

#include <vx/os/Socket.h>

namespace vxOS::socket {

namespace {

using vxString::CString;

// The system's sockets are to be started once and run until the end of the process.
void start() {
  static const int kStarted = [] {
    WSADATA data;
    return WSAStartup(MAKEWORD(2, 2), &data);
  }();
  static_cast<void>(kStarted);
}

SOCKET system(Handle socket) {
  return static_cast<SOCKET>(socket);
}

const sockaddr* address(const Endpoint& endpoint) {
  return reinterpret_cast<const sockaddr*>(endpoint.bytes.data());
}

Endpoint endpoint(const sockaddr* given, std::size_t length) {
  Endpoint copy;
  std::memcpy(copy.bytes.data(), given, length);
  copy.length = static_cast<int>(length);
  return copy;
}

void setOption(Handle socket, int level, int option, int value) {
  setsockopt(system(socket), level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

Result failure() {
  return WSAGetLastError() == WSAEWOULDBLOCK ? Result::kWait : Result::kFailed;
}

void prepare(Handle socket) {
  unsigned long nonBlocking = 1;
  ioctlsocket(system(socket), FIONBIO, &nonBlocking);
  setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
}

void addEndpoints(vx::vector<Endpoint>& endpoints, const wchar_t* host, int port, int family) {
  start();
  ADDRINFOW wanted = {};
  wanted.ai_family = family;
  wanted.ai_socktype = SOCK_STREAM;
  wanted.ai_flags = host == nullptr ? AI_PASSIVE : 0;
  ADDRINFOW* found = nullptr;
  if (GetAddrInfoW(host, std::to_wstring(port).c_str(), &wanted, &found) != 0) return;
  const std::unique_ptr<ADDRINFOW, decltype(&FreeAddrInfoW)> owned(found, &FreeAddrInfoW);
  for (const ADDRINFOW* each = found; each != nullptr; each = each->ai_next)
    endpoints.push_back(endpoint(each->ai_addr, each->ai_addrlen));
}

}  // namespace

vx::vector<Endpoint> resolve(const CString& host, int port) {
  vx::vector<Endpoint> endpoints;
  if (!host.isEmpty()) {
    addEndpoints(endpoints, host.asWide().c_str(), port, AF_UNSPEC);
  } else {
    addEndpoints(endpoints, nullptr, port, AF_INET6);
    addEndpoints(endpoints, nullptr, port, AF_INET);
  }
  return endpoints;
}

Handle open(const Endpoint& endpoint) {
  start();
  const SOCKET made = WSASocketW(address(endpoint)->sa_family, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                                 WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
  if (made == INVALID_SOCKET) return kNone;
  const auto handle = static_cast<Handle>(made);
  prepare(handle);
  return handle;
}

void close(Handle socket) noexcept {
  closesocket(system(socket));
}

void shutdown(Handle socket) noexcept {
  ::shutdown(system(socket), SD_BOTH);
}

Result startConnect(Handle socket, const Endpoint& peer) {
  return ::connect(system(socket), address(peer), peer.length) == 0 ? Result::kDone : failure();
}

Result finishConnect(Handle socket) {
  int error = 0;
  int size = sizeof error;
  getsockopt(system(socket), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
  if (error == 0) return Result::kDone;
  WSASetLastError(error);
  return Result::kFailed;
}

const int kLongestWait = 100;

// A connect that fails is told in the set of exceptions.
bool wait(Handle socket, Event event, int milliseconds) {
  fd_set watched, failing;
  FD_ZERO(&watched);
  FD_ZERO(&failing);
  FD_SET(system(socket), &watched);
  FD_SET(system(socket), &failing);
  timeval limit = {};
  limit.tv_sec = milliseconds / 1000;
  limit.tv_usec = milliseconds % 1000 * 1000;
  fd_set* readable = event == Event::kRead ? &watched : nullptr;
  fd_set* writable = event == Event::kRead ? nullptr : &watched;
  return select(0, readable, writable, &failing, milliseconds < 0 ? nullptr : &limit) != 0;
}

Result send(Handle socket, Piece first, Piece second, std::size_t& sent) {
  const auto piece = [](Piece given) {
    constexpr std::size_t kMost = std::size_t{1} << 30;
    char* data = const_cast<char*>(reinterpret_cast<const char*>(given.data));
    return WSABUF{static_cast<ULONG>(given.size < kMost ? given.size : kMost), data};
  };
  WSABUF pieces[] = {piece(first), piece(second)};
  DWORD count = 0;
  const int outcome = WSASend(system(socket), pieces, 2, &count, 0, nullptr, nullptr);
  sent = outcome == 0 ? count : 0;
  return outcome == 0 ? Result::kDone : failure();
}

Result receive(Handle socket, std::byte* data, std::size_t size, std::size_t& received) {
  constexpr std::size_t kMost = std::size_t{1} << 30;
  const int wanted = static_cast<int>(size < kMost ? size : kMost);
  const int count = recv(system(socket), reinterpret_cast<char*>(data), wanted, 0);
  received = count > 0 ? static_cast<std::size_t>(count) : 0;
  return count >= 0 ? Result::kDone : failure();
}

Result receiveSoon(Handle socket, std::byte* data, std::size_t size, std::size_t& received) {
  return receive(socket, data, size, received);
}

// No other process may take over the port.
Result listen(Handle socket, const Endpoint& endpoint, int pending) {
  setOption(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, 1);
  if (address(endpoint)->sa_family == AF_INET6) setOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, 0);
  const bool isDone = bind(system(socket), address(endpoint), endpoint.length) == 0 &&
                      ::listen(system(socket), pending) == 0;
  return isDone ? Result::kDone : Result::kFailed;
}

int port(Handle socket) {
  sockaddr_storage own = {};
  int length = sizeof own;
  if (getsockname(system(socket), reinterpret_cast<sockaddr*>(&own), &length) != 0) return 0;
  return ntohs(own.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6&>(own).sin6_port
                                         : reinterpret_cast<const sockaddr_in&>(own).sin_port);
}

Result accept(Handle listener, Handle& connection) {
  const SOCKET made = ::accept(system(listener), nullptr, nullptr);
  connection = made == INVALID_SOCKET ? kNone : static_cast<Handle>(made);
  if (made == INVALID_SOCKET) return WSAGetLastError() == WSAECONNRESET ? Result::kWait : failure();
  SetHandleInformation(reinterpret_cast<HANDLE>(made), HANDLE_FLAG_INHERIT, 0);
  prepare(connection);
  return Result::kDone;
}

CString lastError() {
  const auto number = static_cast<DWORD>(WSAGetLastError());
  wchar_t text[256] = L"";
  FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, number, 0,
                 text, sizeof text / sizeof *text, nullptr);
  const CString words = vxString::IString(text).asMultibyte().trimmed();
  return words.isEmpty() ? CString::format("error %lu", number) : words;
}

namespace {

class Owned {
 public:
  explicit Owned(HANDLE handle) : handle_(handle) {}
  ~Owned() {
    if (handle_ != nullptr) CloseHandle(handle_);
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_;
};

// The user of a process as the system identifies it; empty when the system does not tell.
std::vector<char> userOf(HANDLE process) {
  HANDLE opened = nullptr;
  if (process == nullptr || OpenProcessToken(process, TOKEN_QUERY, &opened) == 0) return {};
  const Owned token(opened);
  DWORD size = 0;
  GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
  std::vector<char> information(size);
  if (GetTokenInformation(token.get(), TokenUser, information.data(), size, &size) == 0) return {};
  const auto* user = reinterpret_cast<const TOKEN_USER*>(information.data())->User.Sid;
  const auto* bytes = static_cast<const char*>(static_cast<const void*>(user));
  return {bytes, bytes + GetLengthSid(const_cast<void*>(static_cast<const void*>(user)))};
}

// The process that owns the end `local` of the IPv4 connection to `remote`; 0 when there is none.
DWORD ownerOf(const sockaddr_in& local, const sockaddr_in& remote) {
  ULONG size = 0;
  std::vector<char> memory;
  DWORD outcome;
  do {
    memory.resize(size);
    outcome = GetExtendedTcpTable(memory.data(), &size, FALSE, AF_INET,
                                  TCP_TABLE_OWNER_PID_CONNECTIONS, 0);
  } while (outcome == ERROR_INSUFFICIENT_BUFFER);
  if (outcome != NO_ERROR) return 0;
  const auto& table = *reinterpret_cast<const MIB_TCPTABLE_OWNER_PID*>(memory.data());
  for (DWORD i = 0; i < table.dwNumEntries; ++i) {
    const MIB_TCPROW_OWNER_PID& row = table.table[i];
    if (row.dwLocalAddr == local.sin_addr.s_addr && row.dwLocalPort == local.sin_port &&
        row.dwRemoteAddr == remote.sin_addr.s_addr && row.dwRemotePort == remote.sin_port)
      return row.dwOwningPid;
  }
  return 0;
}

// Wine does not tell which process owns a socket. It runs the processes of one user only.
bool runsOnWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

// An IPv4 address, also one that a socket for both kinds of addresses tells.
bool asFour(const sockaddr_storage& given, sockaddr_in& four) {
  four = reinterpret_cast<const sockaddr_in&>(given);
  if (given.ss_family == AF_INET) return true;
  const auto& six = reinterpret_cast<const sockaddr_in6&>(given);
  std::memcpy(&four.sin_addr, six.sin6_addr.s6_addr + 12, sizeof four.sin_addr);
  four.sin_port = six.sin6_port;
  return IN6_IS_ADDR_V4MAPPED(&six.sin6_addr) != 0;
}

}  // namespace

bool peerIsSameUser(Handle socket) {
  sockaddr_storage own = {}, peer = {};
  int ownLength = sizeof own, peerLength = sizeof peer;
  if (getsockname(system(socket), reinterpret_cast<sockaddr*>(&own), &ownLength) != 0 ||
      getpeername(system(socket), reinterpret_cast<sockaddr*>(&peer), &peerLength) != 0)
    return false;
  sockaddr_in here, there;
  if (!asFour(own, here) || !asFour(peer, there)) return false;
  const DWORD owner = ownerOf(there, here);
  if (owner == 0) return runsOnWine();
  const Owned process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, owner));
  const std::vector<char> user = userOf(process.get());
  return !user.empty() && user == userOf(GetCurrentProcess());
}

}  // namespace vxOS::socket
