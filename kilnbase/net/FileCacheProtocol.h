// The requests between an application and the daemon that keeps its file cache, over one TCP
// connection. Applications use `FileCache`; the daemon derives from `FileCacheProtocolServer`.
//
// The bytes are told in docs/cache-protocol.md. Requests and answers alternate strictly. The
// classes are for one thread at a time.
#pragma once

#include <cstdint>

#include <kilnbase/export.h>
#include <vx/Error.h>
#include <vx/String.h>
#include <vx/Tcp.h>

namespace vxKilnBase {

/// What both halves share: the operations and the encoding of their values.
class KILNBASE_API FileCacheProtocol {
 public:
  /// The file in the cache directory that holds the daemon's port as decimal text.
  static const char* const LockFileName;

  FileCacheProtocol() = default;
  FileCacheProtocol(const FileCacheProtocol&) = default;
  FileCacheProtocol& operator=(const FileCacheProtocol&) = default;
  virtual ~FileCacheProtocol();

  /// Chooses the cache directory. `n` and `m` are limits whose meaning is the daemon's.
  virtual vxUtil::Error initialize(const vxString::CString& directory, int n, std::int64_t m) = 0;
  /// Whether the daemon holds the key; if so, the path of the file and the time of the last access
  /// in seconds since 1970-01-01 UTC, and the entry is held until `release`.
  virtual bool acquire(const vxString::CString& key, vxString::CString& path,
                       std::int64_t& accessTime) = 0;
  /// Puts a file that has been written into the cache, and holds the entry. False when the daemon
  /// refuses.
  virtual bool add(const vxString::CString& key, const vxString::CString& path) = 0;
  /// Lets go of an entry. With `remove` the entry is deleted.
  virtual bool release(const vxString::CString& key, bool remove) = 0;
  /// Records an access now.
  virtual void setAccessed(const vxString::CString& key) = 0;

  /// Uses this connection from now on and switches it to throwing mode. The socket is not owned.
  void setSocket(vxTCP::Socket& socket);

 protected:
  /// The connection. Throws `vxUtil::Error` before `setSocket`.
  vxTCP::Socket& socket() const;

  /// Each function sends or receives one value, and throws `vxUtil::Error` when the connection
  /// fails.

  void sendInt(int value);
  int recvInt();
  void sendInt64(std::int64_t value);
  std::int64_t recvInt64();
  void sendBool(bool value);
  bool recvBool();
  void sendString(const vxString::CString& text);
  vxString::CString recvString();
  void sendError(const vxUtil::Error& error);
  vxUtil::Error recvError();

 private:
  vxTCP::Socket* socket_ = nullptr;
};

/// The application's half: each operation sends a request and waits for the answer. An operation
/// takes at most 10 seconds, or what `setLimit` chooses; after a failure the connection is dead and
/// all later operations fail at once.
class KILNBASE_API FileCacheProtocolClient : public FileCacheProtocol {
 public:
  /// The daemon's error, or that of the connection.
  vxUtil::Error initialize(const vxString::CString& directory, int n, std::int64_t m) override;
  /// False also when the connection fails.
  bool acquire(const vxString::CString& key, vxString::CString& path,
               std::int64_t& accessTime) override;
  /// False also when the connection fails.
  bool add(const vxString::CString& key, const vxString::CString& path) override;
  /// False also when the connection fails.
  bool release(const vxString::CString& key, bool remove) override;
  /// A failure of the connection is not told.
  void setAccessed(const vxString::CString& key) override;

  /// The limit of an operation at the start.
  static const int kLimitSeconds = 10;
  /// How long an operation may take from now on.
  void setLimit(vxUtil::Interval limit) { limit_ = limit; }

 private:
  void request(int code);

  vxUtil::Interval limit_{kLimitSeconds};
};

/// The daemon's half: reads requests and answers them by the operations, which the daemon supplies.
class KILNBASE_API FileCacheProtocolServer : public FileCacheProtocol {
 public:
  /// Reads one request and answers it. A request of an unknown code is ignored: nothing more is
  /// read and nothing is answered. Throws `vxUtil::Error` when the connection ends or fails.
  void readRequest();

 private:
  void recvInitialize();
  void recvAcquire();
  void recvAdd();
  void recvRelease();
  void recvSetAccessed();
};

}  // namespace vxKilnBase
