#include <vx/Signal.h>

namespace vxRTB {

namespace detail {

// Cuts connections, and deletes them at the end of its life: the end of a callback may destroy
// whatever the callback held.
class Cut {
 public:
  Cut() = default;
  Cut(const Cut&) = delete;
  Cut& operator=(const Cut&) = delete;
  ~Cut() {
    while (Connection* connection = first_) {
      first_ = connection->next;
      delete connection;
    }
  }

  void add(Connection& connection) {
    connection.signal->unlink(connection);
    connection.client->unlink(connection);
    connection.isCut = true;
    if (connection.calls > 0) return;  // the end of the call deletes the connection
    connection.next = first_;
    first_ = &connection;
  }

 private:
  Connection* first_ = nullptr;
};

}  // namespace detail

void SignalClient::disconnectAll() {
  detail::Cut cut;
  while (first_ != nullptr) cut.add(*first_);
}

void SignalClient::link(detail::Connection& connection) {
  connection.client = this;
  connection.nextOfClient = first_;
  if (first_ != nullptr) first_->previousOfClient = &connection;
  first_ = &connection;
}

void SignalClient::unlink(detail::Connection& connection) {
  detail::Connection* const previous = connection.previousOfClient;
  detail::Connection* const next = connection.nextOfClient;
  (previous != nullptr ? previous->nextOfClient : first_) = next;
  if (next != nullptr) next->previousOfClient = previous;
}

namespace detail {

SignalCore::~SignalCore() {
  for (Emission* emission = emissions_; emission != nullptr; emission = emission->outer_) {
    emission->signal_ = nullptr;
  }
  Cut cut;
  while (first_ != nullptr) cut.add(*first_);
}

void SignalCore::attach(SignalClient& client, Connection* connection) {
  client.link(*connection);
  connection->signal = this;
  connection->previous = last_;
  (last_ != nullptr ? last_->next : first_) = connection;
  last_ = connection;
}

void SignalCore::disconnect(SignalClient& client) {
  Cut cut;
  for (Connection* connection = first_; connection != nullptr;) {
    Connection* const next = connection->next;
    if (connection->client == &client) cut.add(*connection);
    connection = next;
  }
}

void SignalCore::unlink(Connection& connection) {
  for (Emission* emission = emissions_; emission != nullptr; emission = emission->outer_) {
    emission->skip(connection);
  }
  Connection* const previous = connection.previous;
  Connection* const next = connection.next;
  (previous != nullptr ? previous->next : first_) = next;
  (next != nullptr ? next->previous : last_) = previous;
}

Emission::Emission(SignalCore& signal)
    : signal_(&signal), outer_(signal.emissions_), next_(signal.first_), last_(signal.last_) {
  signal.emissions_ = this;
}

Emission::~Emission() {
  release();
  if (signal_ != nullptr) signal_->emissions_ = outer_;
}

Connection* Emission::advance() {
  release();
  current_ = next_;
  if (current_ == nullptr) return nullptr;
  ++current_->calls;
  next_ = current_ == last_ ? nullptr : current_->next;
  return current_;
}

// Takes a connection that is being cut out of what is still to be called.
void Emission::skip(const Connection& connection) {
  if (next_ == &connection) next_ = next_ == last_ ? nullptr : connection.next;
  if (last_ == &connection) last_ = connection.previous;
}

void Emission::release() {
  Connection* const connection = std::exchange(current_, nullptr);
  if (connection == nullptr) return;
  if (--connection->calls == 0 && connection->isCut) delete connection;
}

}  // namespace detail

}  // namespace vxRTB
