// Signals: an object tells others that something has happened, without knowing them.
#pragma once

#include <utility>

#include <vx/export.h>

namespace vxRTB {

class SignalClient;

namespace detail {

class Cut;
class SignalCore;

// The tie between a signal and a client.
struct VX_API Connection {
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  virtual ~Connection() = default;

  SignalCore* signal = nullptr;
  SignalClient* client = nullptr;
  Connection* previous = nullptr;  // of the signal, in the order of connecting
  Connection* next = nullptr;
  Connection* previousOfClient = nullptr;
  Connection* nextOfClient = nullptr;
  int calls = 0;  // that are running: the last of them deletes a connection that has been cut
  bool isCut = false;
};

// A walk over the connections that a signal has at the start of the walk. The walk goes on safely
// while connections are made and cut, and ends when the signal dies.
class VX_API Emission {
 public:
  explicit Emission(SignalCore& signal);
  Emission(const Emission&) = delete;
  Emission& operator=(const Emission&) = delete;
  ~Emission();

  // The next connection, kept alive until the next call; null at the end.
  Connection* advance();

 private:
  friend class SignalCore;
  void skip(const Connection& connection);
  void release();

  SignalCore* signal_;  // null once the signal has died
  Emission* outer_;
  Connection* current_ = nullptr;
  Connection* next_;
  Connection* last_;
};

// What signals of all types share.
class VX_API SignalCore {
 public:
  SignalCore() = default;
  SignalCore(const SignalCore&) {}
  SignalCore& operator=(const SignalCore&) { return *this; }
  ~SignalCore();

  bool isConnected() const { return first_ != nullptr; }
  void attach(SignalClient& client, Connection* connection);
  void disconnect(SignalClient& client);

 private:
  friend class Cut;
  friend class Emission;
  void unlink(Connection& connection);

  Connection* first_ = nullptr;
  Connection* last_ = nullptr;
  Emission* emissions_ = nullptr;  // the innermost that is running
};

}  // namespace detail

/// The receiving side of signals. The connections are cut when the client dies. A copy of a client
/// has no connections, and assignment leaves those of both sides as they are.
class VX_API SignalClient {
 public:
  SignalClient() = default;
  SignalClient(const SignalClient&) {}
  SignalClient& operator=(const SignalClient&) { return *this; }
  ~SignalClient() { disconnectAll(); }

  /// Cuts all connections with signals.
  void disconnectAll();

 private:
  friend class detail::Cut;
  friend class detail::SignalCore;
  void link(detail::Connection& connection);
  void unlink(detail::Connection& connection);

  detail::Connection* first_ = nullptr;
};

/// A signal that carries values of the types `Args`. A connection lasts until either side dies or
/// cuts the connection. A copy of a signal has no connections, and assignment leaves those of both
/// sides as they are.
///
///     vxRTB::SignalBase<int> moved;
///     int sum = 0;
///     {
///       vxRTB::SignalClient client;
///       moved.connect(client, [&sum](int distance) { sum += distance; });
///       moved.emit(3);
///     }
///     moved.emit(4);  // nobody listens any more: sum stays 3
///
/// A callback may connect, disconnect, emit, and destroy everything, also the signal that is being
/// emitted and the callback's own client. A connection that is cut during an emission is not called
/// any more. A connection that is made during an emission is not called by that emission, but by
/// those that start later. An emission whose signal dies ends with the callback that is running.
///
/// `emit` takes no memory and costs one comparison without connections. Signals and clients belong
/// to one thread.
template <class... Args>
class SignalBase {
 public:
  /// Has `callback` called with the values of each emission, after the callbacks that were
  /// connected before. Its result is ignored. A client may connect any number of callbacks.
  template <class Callback>
  void connect(SignalClient& client, Callback callback) {
    core_.attach(client, new Call<Callback>(std::move(callback)));
  }

  /// Cuts all connections with this client.
  void disconnect(SignalClient& client) { core_.disconnect(client); }

  /// Calls the callbacks. An exception of one ends the emission and passes to the caller. The
  /// values are the emission's own, so that they outlive an object that a callback destroys.
  void emit(Args... values) {  // NOLINT(performance-unnecessary-value-param)
    if (!core_.isConnected()) return;
    detail::Emission emission(core_);
    while (detail::Connection* connection = emission.advance()) {
      static_cast<Slot*>(connection)->call(values...);
    }
  }

 private:
  struct Slot : detail::Connection {
    virtual void call(const Args&... values) = 0;
  };

  template <class Callback>
  struct Call final : Slot {
    explicit Call(Callback aCallback) : callback(std::move(aCallback)) {}
    void call(const Args&... values) override { callback(values...); }
    Callback callback;
  };

  detail::SignalCore core_;
};

}  // namespace vxRTB
