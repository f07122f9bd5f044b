// What answers the requests of one client: the cache of this process, or the daemon of another
// process to which the requests are passed on.
#pragma once

#include <memory>

#include <kilnbase/net/FileCacheProtocol.h>
#include <vx/Tcp.h>

#include "tools/vxcached/Cache.h"

namespace vxcached {

class Service : public vxKilnBase::FileCacheProtocol {
 public:
  /// Ends a wait for another process, from another thread, for good.
  virtual void interrupt() noexcept {}
};

/// Answers from the cache, which outlives the service. What the client holds is released at the
/// end.
class LocalService : public Service {
 public:
  /// `directory` is how the client names the cache's directory; paths are answered in this form.
  LocalService(Cache& cache, const vxString::CString& directory)
      : cache_(cache), directory_(directory) {}
  LocalService(const LocalService&) = delete;
  LocalService& operator=(const LocalService&) = delete;
  ~LocalService() override { cache_.releaseAll(client_); }

  vxUtil::Error initialize(const vxString::CString& directory, int n, std::int64_t m) override;
  bool acquire(const vxString::CString& key, vxString::CString& path,
               std::int64_t& accessTime) override;
  bool add(const vxString::CString& key, const vxString::CString& path) override;
  bool release(const vxString::CString& key, bool remove) override;
  void setAccessed(const vxString::CString& key) override;

 private:
  bool isHere(const vxString::CString& folder) const;

  Cache& cache_;
  Cache::Client client_;
  vxString::CString directory_;
  vxString::CString start_;  // of paths
};

/// Passes requests on. A failure of the connection is thrown as a `vxUtil::Error`, so that the
/// client's connection ends as well.
class RemoteService : public Service {
 public:
  explicit RemoteService(std::unique_ptr<vxTCP::Socket> socket);

  /// How long the other daemon may take to answer from now on.
  void setLimit(vxUtil::Interval limit) { client_.setLimit(limit); }
  void interrupt() noexcept override { socket_->interrupt(); }

  /// `directory` is how the client names the cache's directory. A relative name is passed on as the
  /// complete one, because the other daemon may run in another folder.
  vxUtil::Error initialize(const vxString::CString& directory, int n, std::int64_t m) override;
  bool acquire(const vxString::CString& key, vxString::CString& path,
               std::int64_t& accessTime) override;
  bool add(const vxString::CString& key, const vxString::CString& path) override;
  bool release(const vxString::CString& key, bool remove) override;
  void setAccessed(const vxString::CString& key) override;

 private:
  std::unique_ptr<vxTCP::Socket> socket_;
  vxKilnBase::FileCacheProtocolClient client_;
  vxString::CString directory_;  // as the client has named it last
  vxString::CString complete_;
};

}  // namespace vxcached
