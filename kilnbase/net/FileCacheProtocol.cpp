#include <array>
#include <cstddef>
#include <type_traits>

#include <kilnbase/net/FileCacheProtocol.h>

namespace vxKilnBase {

using vxString::CString;
using vxUtil::Error;

namespace {

enum RequestCode {
  kInitialize = 0,
  kAcquire = 1,
  kAdd = 2,
  kRelease = 3,
  kSetAccessed = 4,
};

template <class Integer>
void sendLittleEndian(vxTCP::Socket& socket, Integer value) {
  std::array<unsigned char, sizeof(Integer)> bytes;
  auto rest = static_cast<std::make_unsigned_t<Integer>>(value);
  for (unsigned char& byte : bytes) {
    byte = static_cast<unsigned char>(rest);
    rest >>= 8;
  }
  socket.write(bytes.data(), bytes.size());
}

template <class Integer>
Integer recvLittleEndian(vxTCP::Socket& socket) {
  std::array<unsigned char, sizeof(Integer)> bytes;
  socket.read(bytes.data(), bytes.size());
  std::make_unsigned_t<Integer> value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) value = value << 8 | bytes[i];
  return static_cast<Integer>(value);
}

// What an exchange results in; `failed` when anything is thrown.
template <class Result, class Exchange>
Result resultOf(Result failed, Exchange exchange) noexcept {
  try {
    return exchange();
  } catch (...) {
    return failed;
  }
}

}  // namespace

const char* const FileCacheProtocol::LockFileName = "@lockfile.lck";

FileCacheProtocol::~FileCacheProtocol() = default;

void FileCacheProtocol::setSocket(vxTCP::Socket& socket) {
  socket_ = &socket;
  socket.setThrowMode(true);
}

vxTCP::Socket& FileCacheProtocol::socket() const {
  if (socket_ == nullptr) throw Error(vxTCP::kFailed, "not connected");
  return *socket_;
}

void FileCacheProtocol::sendInt(int value) {
  sendLittleEndian<std::int32_t>(socket(), value);
}

int FileCacheProtocol::recvInt() {
  return recvLittleEndian<std::int32_t>(socket());
}

void FileCacheProtocol::sendInt64(std::int64_t value) {
  sendLittleEndian(socket(), value);
}

std::int64_t FileCacheProtocol::recvInt64() {
  return recvLittleEndian<std::int64_t>(socket());
}

void FileCacheProtocol::sendBool(bool value) {
  sendInt(value ? 1 : 0);
}

bool FileCacheProtocol::recvBool() {
  return recvInt() != 0;
}

void FileCacheProtocol::sendString(const CString& text) {
  socket().write(text);
}

CString FileCacheProtocol::recvString() {
  CString text;
  socket().read(text);
  return text;
}

void FileCacheProtocol::sendError(const Error& error) {
  sendInt(error.code());
  sendString(error.message());
}

Error FileCacheProtocol::recvError() {
  const int code = recvInt();
  CString message = recvString();
  return code == 0 ? Error() : Error(code, std::move(message));
}

// Programs for Windows that take the address of the constant link with the definition here.
const int FileCacheProtocolClient::kLimitSeconds;

void FileCacheProtocolClient::request(int code) {
  socket().limitExchange(limit_);
  sendInt(code);
}

Error FileCacheProtocolClient::initialize(const CString& directory, int n, std::int64_t m) {
  try {
    request(kInitialize);
    sendString(directory);
    sendInt(n);
    sendInt64(m);
    return recvError();
  } catch (const Error& error) {
    return error;
  }
}

bool FileCacheProtocolClient::acquire(const CString& key, CString& path, std::int64_t& accessTime) {
  return resultOf(false, [&] {
    request(kAcquire);
    sendString(key);
    path = recvString();
    accessTime = recvInt64();
    return recvBool();
  });
}

bool FileCacheProtocolClient::add(const CString& key, const CString& path) {
  return resultOf(false, [&] {
    request(kAdd);
    sendString(key);
    sendString(path);
    return recvBool();
  });
}

bool FileCacheProtocolClient::release(const CString& key, bool remove) {
  return resultOf(false, [&] {
    request(kRelease);
    sendString(key);
    sendBool(remove);
    return recvBool();
  });
}

void FileCacheProtocolClient::setAccessed(const CString& key) {
  resultOf(0, [&] {
    request(kSetAccessed);
    sendString(key);
    return recvInt();
  });
}

void FileCacheProtocolServer::readRequest() {
  switch (recvInt()) {
    case kInitialize:
      recvInitialize();
      break;
    case kAcquire:
      recvAcquire();
      break;
    case kAdd:
      recvAdd();
      break;
    case kRelease:
      recvRelease();
      break;
    case kSetAccessed:
      recvSetAccessed();
      break;
    default:
      return;
  }
  socket().flush();
}

void FileCacheProtocolServer::recvInitialize() {
  const CString directory = recvString();
  const int n = recvInt();
  const std::int64_t m = recvInt64();
  sendError(initialize(directory, n, m));
}

void FileCacheProtocolServer::recvAcquire() {
  const CString key = recvString();
  CString path;
  std::int64_t accessTime = 0;
  const bool isHeld = acquire(key, path, accessTime);
  sendString(path);
  sendInt64(accessTime);
  sendBool(isHeld);
}

void FileCacheProtocolServer::recvAdd() {
  const CString key = recvString();
  const CString path = recvString();
  sendBool(add(key, path));
}

void FileCacheProtocolServer::recvRelease() {
  const CString key = recvString();
  const bool remove = recvBool();
  sendBool(release(key, remove));
}

void FileCacheProtocolServer::recvSetAccessed() {
  setAccessed(recvString());
  sendInt(0);
}

}  // namespace vxKilnBase
