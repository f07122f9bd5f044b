#include "tools/drawview/WebServer.h"

#include <array>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/span_body.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <charconv>
#include <chrono>
#include <deque>
#include <set>
#include <thread>
#include <utility>

#include <kilnbase/version.h>
#include <vx/Uuid.h>

#include "tools/drawview/InputError.h"
#include "tools/drawview/System.h"
#include "tools/drawview/Text.h"

namespace drawview {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using asio::awaitable;
using asio::use_awaitable;
using asio::ip::tcp;
using boost::system::error_code;
using Stream = beast::tcp_stream;
using Request = http::request<http::empty_body>;
using Response = http::response<http::span_body<const char>>;
using Text = std::shared_ptr<const std::string>;

constexpr int kMostConnections = 64;
constexpr std::uint32_t kMostHeaderBytes = 16384;
constexpr std::size_t kMostPageMessageBytes = 1024;
constexpr std::size_t kMostWaitingBytes = std::size_t{8} << 20;  // for one page
constexpr std::size_t kMostListedNameBytes = 200;
constexpr std::chrono::seconds kRequestTime(30);
constexpr std::chrono::seconds kSocketIdleTime(60);
constexpr std::uint64_t kSlowestBytesPerSecond = std::uint64_t{1} << 20;
constexpr std::chrono::seconds kEndTime(2);
constexpr int kMostEndReads = 64;
constexpr std::chrono::milliseconds kPause(100);

// 244 random bits, which no other process can guess.
std::string makeToken() {
  std::string token;
  for (int i = 0; i < 2; ++i) token += vxOS::Uuid::generate().asString().c_str();
  std::erase(token, '-');
  return token;
}

// Takes as long for a wrong first character as for a wrong last one.
bool areEqual(std::string_view a, std::string_view b) {
  unsigned difference = a.size() == b.size() ? 0 : 1;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]);
  return difference == 0;
}

std::string_view view(beast::string_view text) {
  return {text.data(), text.size()};
}

// The number of a frame as this server writes it: 1 to 20 digits, the first no 0.
std::uint64_t frameNumber(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber =
      error == std::errc() && end == text.data() + text.size() && text.front() != '0';
  return isNumber ? number : 0;
}

// A part of the name that ends where a character ends.
std::string_view shortened(std::string_view name) {
  if (name.size() <= kMostListedNameBytes) return name;
  std::size_t size = kMostListedNameBytes;
  while (size > 0 && (static_cast<unsigned char>(name[size]) & 0xC0) == 0x80) --size;
  return name.substr(0, size);
}

std::string frameText(const Frame& frame) {
  return "{\"number\":" + std::to_string(frame.number) +
         ",\"name\":" + jsonString(shortened(frame.name)) +
         ",\"bytes\":" + std::to_string(frame.bytes) + "}";
}

template <class Items, class Write>
std::string listText(const Items& items, Write write) {
  std::string text = "[";
  for (const auto& item : items) {
    if (text.size() > 1) text += ',';
    text += write(item);
  }
  return text + "]";
}

const char* boolText(bool value) {
  return value ? "true" : "false";
}

}  // namespace

namespace {

// A page that listens. Texts wait here while the page does not take them; one that falls too far
// behind is cut off, and learns everything anew when it connects again.
class Listener : public std::enable_shared_from_this<Listener> {
 public:
  explicit Listener(Stream&& stream) : socket_(std::move(stream)) {}

  awaitable<void> accept(const Request& request) {
    websocket::stream_base::timeout limits = {};
    limits.handshake_timeout = kRequestTime;
    limits.idle_timeout = kSocketIdleTime;
    limits.keep_alive_pings = true;
    socket_.set_option(limits);
    socket_.read_message_max(kMostPageMessageBytes);
    socket_.text(true);
    co_await socket_.async_accept(request, use_awaitable);
  }

  void send(Text text) {
    if (!waiting_.empty()) waitingBytes_ += text->size();
    if (waitingBytes_ > kMostWaitingBytes) return close();
    waiting_.push_back(std::move(text));
    if (waiting_.size() > 1) return;
    asio::co_spawn(
        socket_.get_executor(), [self = shared_from_this()] { return self->write(); },
        asio::detached);
  }

  // Reads, and forgets, what the page sends, until the connection ends.
  awaitable<void> read() {
    beast::flat_buffer buffer;
    for (;;) {
      co_await socket_.async_read(buffer, use_awaitable);
      buffer.clear();
    }
  }

 private:
  void close() { beast::get_lowest_layer(socket_).close(); }

  awaitable<void> write() {
    try {
      while (!waiting_.empty()) {
        const Text text = waiting_.front();
        co_await socket_.async_write(asio::buffer(*text), use_awaitable);
        waiting_.pop_front();
        if (!waiting_.empty()) waitingBytes_ -= waiting_.front()->size();
      }
    } catch (const boost::system::system_error&) {
      close();
    }
  }

  websocket::stream<Stream, false> socket_;  // without compression
  std::deque<Text> waiting_;                 // the first one is being sent
  std::size_t waitingBytes_ = 0;  // without the first one, which may tell of any number of frames
};

}  // namespace

class WebServer::Service {
 public:
  Service(const WebSettings& settings, FrameStore store)
      : settings_(settings), store_(std::move(store)), acceptor_(context_) {
    listen();
    host_ = "127.0.0.1:" + std::to_string(acceptor_.local_endpoint().port());
    path_ = "/" + makeToken() + "/";
    address_ = "http://" + host_ + path_;
    asio::co_spawn(
        context_, [this] { return acceptAll(); }, asio::detached);
    thread_ = std::thread([this] { context_.run(); });
  }

  ~Service() {
    context_.stop();
    thread_.join();
    listeners_.clear();  // their sockets end before the context
  }

  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  const std::string& address() const { return address_; }

  template <class Action>
  void post(Action&& action) {
    asio::post(context_, std::forward<Action>(action));
  }

  void add(Frame frame) {
    frame.name.resize(shortened(frame.name).size());
    frame.name.shrink_to_fit();
    const std::string text = frameText(frame);
    const auto dropped = store_.add(std::move(frame));
    const auto write = [](std::uint64_t number) { return std::to_string(number); };
    tellAll("{\"type\":\"added\",\"frame\":" + text + ",\"dropped\":" + listText(dropped, write) +
            "}");
  }

  void setSender(bool isConnected) {
    isConnected_ = isConnected;
    tellAll(senderText());
  }
  void setListenAddress(std::string address) { listenAddress_ = std::move(address); }

 private:
  void listen();
  awaitable<void> acceptAll();
  void start(tcp::socket socket);
  awaitable<void> serve(Stream stream);
  awaitable<void> serveListener(Stream stream, const Request& request);
  awaitable<bool> refuse(Stream& stream, error_code error);
  awaitable<bool> respond(Stream& stream, const Request& request);
  awaitable<bool> send(Stream& stream, Response response, bool isHead);
  static awaitable<void> end(Stream& stream);

  http::status check(const Request& request) const;
  bool isSocket(const Request& request) const { return rest(request) == "socket"; }
  std::string_view rest(const Request& request) const {
    return view(request.target()).substr(path_.size());
  }
  bool find(std::string_view what, Response& response, Message& message) const;
  Response makeResponse(http::status status, const Request& request) const;

  std::string stateText() const;
  std::string senderText() const {
    return std::string("{\"type\":\"sender\",\"connected\":") + boolText(isConnected_) + "}";
  }
  void tellAll(std::string text) {
    const auto shared = std::make_shared<const std::string>(std::move(text));
    for (const auto& listener : listeners_) listener->send(shared);
  }

  WebSettings settings_;
  FrameStore store_;
  std::string host_, path_, address_;
  std::string listenAddress_;  // empty in a replay
  bool isConnected_ = false;
  int connections_ = 0;
  std::set<std::shared_ptr<Listener>> listeners_;
  asio::io_context context_{1};  // its end destroys the connections, which know the members above
  tcp::acceptor acceptor_;
  std::thread thread_;
};

void WebServer::Service::listen() {
  try {
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(),
                                 static_cast<std::uint16_t>(settings_.port));
    acceptor_.open(endpoint.protocol());
    if (kPortsNeedReuse) acceptor_.set_option(tcp::acceptor::reuse_address(true));
    acceptor_.bind(endpoint);
    acceptor_.listen();
  } catch (const boost::system::system_error& error) {
    throw InputError("cannot serve the page on port " + std::to_string(settings_.port) + ": " +
                     error.code().message());
  }
}

awaitable<void> WebServer::Service::acceptAll() {
  asio::steady_timer timer(context_);
  for (;;) {
    error_code error;
    tcp::socket socket =
        co_await acceptor_.async_accept(asio::redirect_error(use_awaitable, error));
    if (!error && connections_ < kMostConnections) start(std::move(socket));
    if (!error) continue;
    timer.expires_after(kPause);  // the system may be short of descriptors
    co_await timer.async_wait(use_awaitable);
  }
}

void WebServer::Service::start(tcp::socket socket) {
  const auto counter = std::shared_ptr<int>(&++connections_, [](int* count) { --*count; });
  asio::co_spawn(
      context_,
      [this, counter, stream = Stream(std::move(socket))]() mutable {
        return serve(std::move(stream));
      },
      [counter](const std::exception_ptr&) {});
}

// Serves one request after the other until the peer ends or breaks a rule.
awaitable<void> WebServer::Service::serve(Stream stream) {
  beast::flat_buffer buffer(kMostHeaderBytes);
  for (;;) {
    http::request_parser<http::empty_body> parser;
    parser.header_limit(kMostHeaderBytes);
    parser.body_limit(std::uint64_t{0});
    stream.expires_after(kRequestTime);
    error_code error;
    co_await http::async_read(stream, buffer, parser, asio::redirect_error(use_awaitable, error));
    if (error) {
      co_await refuse(stream, error);
      co_return;
    }
    const Request request = parser.release();
    if (check(request) == http::status::ok && isSocket(request)) {
      co_await serveListener(std::move(stream), request);
      co_return;
    }
    const bool goesOn = co_await respond(stream, request);
    if (!goesOn) co_return;
  }
}

// Answers what is no request of ours, as far as there is anybody to answer.
awaitable<bool> WebServer::Service::refuse(Stream& stream, error_code error) {
  if (error == http::error::end_of_stream || error == beast::error::timeout ||
      error.category() != http::make_error_code(http::error::bad_method).category())
    co_return false;
  http::status status = http::status::bad_request;
  if (error == http::error::header_limit || error == http::error::buffer_overflow)
    status = http::status::request_header_fields_too_large;
  if (error == http::error::body_limit || error == http::error::unexpected_body)
    status = http::status::payload_too_large;
  Request none;
  none.keep_alive(false);
  co_return co_await send(stream, makeResponse(status, none), false);
}

// Pages of other origins, and those that reach this server under a name of their own, are told
// nothing. A browser names the origin of every WebSocket.
http::status WebServer::Service::check(const Request& request) const {
  const std::string_view host = view(request[http::field::host]);
  const std::string_view target = view(request.target());
  const auto origin = request.find(http::field::origin);
  const bool hasOrigin = origin != request.end();
  if (request.count(http::field::host) > 1 || request.count(http::field::origin) > 1)
    return http::status::bad_request;
  if (host != host_) return http::status::misdirected_request;
  if (hasOrigin && view(origin->value()) != "http://" + host_) return http::status::forbidden;
  const std::string_view site = view(request["Sec-Fetch-Site"]);
  const bool isForeign = !site.empty() && site != "same-origin" && site != "none";
  if (isForeign && view(request["Sec-Fetch-Mode"]) != "navigate") return http::status::forbidden;
  if (request.method() != http::verb::get && request.method() != http::verb::head)
    return http::status::method_not_allowed;
  if (!areEqual(target.substr(0, path_.size()), path_)) return http::status::not_found;
  if (!isSocket(request)) return http::status::ok;
  if (!websocket::is_upgrade(request)) return http::status::upgrade_required;
  return hasOrigin ? http::status::ok : http::status::forbidden;
}

Response WebServer::Service::makeResponse(http::status status, const Request& request) const {
  Response response(status, 11);
  response.keep_alive(request.keep_alive());
  response.set(http::field::cache_control, "no-store");
  response.set(http::field::content_type, "text/plain; charset=utf-8");
  response.set("Content-Security-Policy",
               "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; "
               "img-src data: blob:; font-src data:; worker-src blob:; connect-src 'self' ws://" +
                   host_ + "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
  response.set("Cross-Origin-Opener-Policy", "same-origin");
  response.set("Cross-Origin-Resource-Policy", "same-origin");
  response.set("Referrer-Policy", "no-referrer");
  response.set("X-Content-Type-Options", "nosniff");
  response.set(http::field::x_frame_options, "DENY");
  if (status == http::status::method_not_allowed) response.set(http::field::allow, "GET, HEAD");
  return response;
}

awaitable<bool> WebServer::Service::respond(Stream& stream, const Request& request) {
  http::status status = check(request);
  Response response = makeResponse(status, request);
  Message message;
  if (status == http::status::ok && !find(rest(request), response, message))
    response.result(http::status::not_found);
  co_return co_await send(stream, std::move(response), request.method() == http::verb::head);
}

// Fills in what is there under a path behind the token; `message` keeps the bytes alive.
bool WebServer::Service::find(std::string_view what, Response& response, Message& message) const {
  constexpr std::string_view kFrames = "frames/";
  if (what.empty()) {
    response.set(http::field::content_type, "text/html; charset=utf-8");
    response.body() = {settings_.page.data(), settings_.page.size()};
    return true;
  }
  const Frame* frame = nullptr;
  if (what.size() > kFrames.size() && what.starts_with(kFrames))
    frame = store_.find(frameNumber(what.substr(kFrames.size())));
  if (frame != nullptr) message = frame->message();
  if (!message) return false;
  response.set(http::field::content_type, "application/octet-stream");
  response.body() = {message->data(), message->size()};
  return true;
}

// Sends within the time that the slowest connection may take. False when the connection ends.
awaitable<bool> WebServer::Service::send(Stream& stream, Response response, bool isHead) {
  if (response.result() != http::status::ok) response.keep_alive(false);
  const bool goesOn = response.keep_alive();
  const std::uint64_t size = response.body().size();
  if (size == 0 && response.result() != http::status::ok) {
    const beast::string_view reason = http::obsolete_reason(response.result());
    response.body() = {reason.data(), reason.size()};
  }
  response.prepare_payload();
  stream.expires_after(kRequestTime + std::chrono::seconds(size / kSlowestBytesPerSecond));
  http::response_serializer<http::span_body<const char>> serializer(response);
  error_code error;
  if (isHead)
    co_await http::async_write_header(stream, serializer,
                                      asio::redirect_error(use_awaitable, error));
  else
    co_await http::async_write(stream, serializer, asio::redirect_error(use_awaitable, error));
  if (!error && !goesOn) co_await end(stream);
  co_return !error && goesOn;
}

// Ends a connection so that the peer gets the last answer: the system would drop the answer
// together with bytes that nobody reads.
awaitable<void> WebServer::Service::end(Stream& stream) {
  std::array<char, 4096> unread;
  error_code error;
  stream.socket().shutdown(tcp::socket::shutdown_send);
  stream.expires_after(kEndTime);
  for (int i = 0; i < kMostEndReads && !error; ++i)
    co_await stream.async_read_some(asio::buffer(unread),
                                    asio::redirect_error(use_awaitable, error));
}

awaitable<void> WebServer::Service::serveListener(Stream stream, const Request& request) {
  stream.expires_never();  // the WebSocket has limits of its own
  const auto listener = std::make_shared<Listener>(std::move(stream));
  co_await listener->accept(request);
  for (const std::string& text : {stateText(), senderText()})
    listener->send(std::make_shared<const std::string>(text));
  listeners_.insert(listener);
  try {
    co_await listener->read();
  } catch (const boost::system::system_error&) {
    listeners_.erase(listener);
  }
}

std::string WebServer::Service::stateText() const {
  return std::string("{\"type\":\"state\",\"version\":\"" KILNBASE_VERSION_STRING
                     "\",\"replay\":") +
         boolText(settings_.isReplay) + ",\"listen\":" + jsonString(listenAddress_) +
         ",\"frames\":" + listText(store_.frames(), frameText) + "}";
}

WebServer::WebServer(const WebSettings& settings, FrameStore store)
    : service_(std::make_unique<Service>(settings, std::move(store))) {}

WebServer::~WebServer() = default;

const std::string& WebServer::address() const {
  return service_->address();
}

void WebServer::add(Frame&& frame) {
  service_->post([service = service_.get(), frame = std::move(frame)]() mutable {
    service->add(std::move(frame));
  });
}

void WebServer::setListenAddress(std::string address) {
  service_->post([service = service_.get(), address = std::move(address)]() mutable {
    service->setListenAddress(std::move(address));
  });
}

void WebServer::setSender(bool isConnected) {
  service_->post([service = service_.get(), isConnected] { service->setSender(isConnected); });
}

}  // namespace drawview
