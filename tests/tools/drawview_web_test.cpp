#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include <kilnbase/version.h>
#include <vx/Tcp.h>

#include "tests/support/SocketPair.h"
#include "tools/drawview/InputError.h"
#include "tools/drawview/WebServer.h"

namespace {

using drawview::FrameStore;
using drawview::WebServer;
using testing::HasSubstr;
using testing::StartsWith;

drawview::Frame frameOf(std::uint64_t number, const std::string& name, const std::string& content) {
  const drawview::Message message = std::make_shared<const std::string>(content);
  return {number, name, content.size(),
          [message]() -> const drawview::Message& { return message; }};
}

// A browser's side of a connection.
class Client {
 public:
  explicit Client(const WebServer& server) : address_(server.address()), socket_(peer()) {
    EXPECT_EQ(socket_.connect(kilntest::kLong).code(), 0);
    socket_.setTimeout(kilntest::kLong);
  }

  std::string host() const { return address_.substr(7, address_.find('/', 7) - 7); }
  std::string token() const { return address_.substr(address_.find('/', 7)); }

  void send(const std::string& text) {
    if (!socket_.write(text.data(), text.size())) socket_.flush();
  }
  std::string read(std::size_t size) { return kilntest::readBytes(socket_, size); }
  std::string readUntil(const std::string& end) {
    std::string text;
    for (char c = 0; !text.ends_with(end) && !socket_.read(&c, 1);) text += c;
    return text;
  }
  bool isAtEnd() {
    char c = 0;
    const int code = socket_.read(&c, 1).code();
    return code != 0 && code != vxTCP::kTimedOut;
  }

  // The answer's status line and headers; the body when `size` tells its length.
  std::string ask(const std::string& target, const std::string& headers,
                  const char* method = "GET") {
    send(std::string(method) + " " + target + " HTTP/1.1\r\n" + headers + "\r\n");
    return readUntil("\r\n\r\n");
  }

  // A whole text of a WebSocket.
  // A text message, which may come in several frames (RFC 6455, 5.2).
  std::string readMessage() {
    std::string message;
    for (bool isLast = false; !isLast;) {
      const std::string head = read(2);
      isLast = (head[0] & '\x80') != 0;
      std::uint64_t size = static_cast<unsigned char>(head[1]);
      if (size > 125) {
        const std::string digits = read(size == 126 ? 2 : 8);
        size = 0;
        for (const char digit : digits) size = size << 8 | static_cast<unsigned char>(digit);
      }
      message += read(size);
    }
    return message;
  }
  std::string handshake() const {
    return "Host: " + host() + "\r\nConnection: Upgrade\r\nUpgrade: websocket\r\n" +
           "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n";
  }

 private:
  vxTCP::Address peer() const {
    return vxTCP::Address::localhost(std::atoi(host().substr(host().find(':') + 1).c_str()));
  }

  std::string address_;
  vxTCP::Socket socket_;
};

class DrawviewWeb : public testing::Test {
 protected:
  DrawviewWeb() : server_({0, "<p>page</p>", false}, makeStore()) {}

  static FrameStore makeStore() {
    FrameStore store(3 * FrameStore::kBytesPerFrame);
    store.add(frameOf(1, "one", "message 1"));
    return store;
  }

  WebServer server_;
};

TEST_F(DrawviewWeb, AnswersItsOwnPageOnly) {
  const Client names(server_);
  const std::string own = "Host: " + names.host() + "\r\n";
  const std::string token = names.token();
  std::string wrong = token;
  wrong[5] = wrong[5] == '0' ? '1' : '0';
  const struct {
    std::string method, target, headers, status;
  } cases[] = {
      {"GET", token, own, "200"},
      {"HEAD", token, own, "200"},
      {"GET", token, own + "Origin: http://" + names.host() + "\r\n", "200"},
      {"GET", token + "frames/1", own, "200"},
      {"GET", token + "frames/2", own, "404"},
      {"GET", token + "frames/01", own, "404"},
      {"GET", token + "frames/1/", own, "404"},
      {"GET", token + "frames/", own, "404"},
      {"GET", token + "frames/99999999999999999999999", own, "404"},
      {"GET", token + "../" + token.substr(1), own, "404"},
      {"GET", token + "%66rames/1", own, "404"},
      {"GET", token.substr(0, token.size() - 1), own, "404"},
      {"GET", wrong, own, "404"},
      {"GET", "/", own, "404"},
      {"GET", "/" + token, own, "404"},
      {"GET", "http://" + names.host() + token, own, "404"},
      {"POST", token, own, "405"},
      {"GET", token, "Host: evil.example" + names.host().substr(9) + "\r\n", "421"},
      {"GET", token, "Host: 127.0.0.1\r\n", "421"},
      {"GET", token, "", "421"},
      {"GET", token, own + "Origin: http://evil.example\r\n", "403"},
      {"GET", token, own + "Origin: null\r\n", "403"},
      {"GET", token + "frames/1", own + "Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: no-cors\r\n",
       "403"},
      {"GET", token + "socket", own, "426"},
      {"GET", token + "socket", names.handshake(), "403"},
      {"GET", token + "socket", names.handshake() + "Origin: http://evil.example\r\n", "403"},
      {"GET", token, own + "X: " + std::string(20000, 'x') + "\r\n", "431"},
      {"GET", token, own + "Content-Length: 5\r\n", "413"},
      {"nonsense", "\1", "", "400"},
  };
  for (const auto& [method, target, headers, status] : cases) {
    Client client(server_);
    EXPECT_THAT(client.ask(target, headers, method.c_str()), StartsWith("HTTP/1.1 " + status + " "))
        << method << " " << target << "\n"
        << headers.substr(0, 200);
  }
}

TEST_F(DrawviewWeb, ServesOneRequestAfterTheOther) {
  Client client(server_);
  const std::string own = "Host: " + client.host() + "\r\n";
  for (int i = 0; i < 2; ++i) {
    const std::string page = client.ask(client.token(), own);
    EXPECT_THAT(page, HasSubstr("\r\nContent-Length: 11\r\n"));
    EXPECT_THAT(page, HasSubstr("\r\nContent-Type: text/html; charset=utf-8\r\n"));
    EXPECT_THAT(page, HasSubstr("\r\nContent-Security-Policy: default-src 'none';"));
    EXPECT_THAT(page, HasSubstr("\r\nReferrer-Policy: no-referrer\r\n"));
    EXPECT_EQ(client.read(11), "<p>page</p>");
    EXPECT_THAT(client.ask(client.token() + "frames/1", own),
                HasSubstr("\r\nContent-Type: application/octet-stream\r\n"));
    EXPECT_EQ(client.read(9), "message 1");
  }
  client.ask(client.token(), own + "Connection: close\r\n");
  client.read(11);
  EXPECT_TRUE(client.isAtEnd());
}

TEST_F(DrawviewWeb, TellsPagesWhatComesAndGoes) {
  Client client(server_);
  server_.setListenAddress("127.0.0.1:5");
  const std::string origin = "Origin: http://" + client.host() + "\r\n";
  EXPECT_THAT(client.ask(client.token() + "socket", client.handshake() + origin),
              StartsWith("HTTP/1.1 101 "));
  EXPECT_EQ(client.readMessage(),
            R"({"type":"state","version":")" KILNBASE_VERSION_STRING R"(","replay":false,)"
            R"("listen":"127.0.0.1:5","frames":[{"number":1,"name":"one","bytes":9}]})");
  EXPECT_EQ(client.readMessage(), R"({"type":"sender","connected":false})");
  server_.setSender(true);
  EXPECT_EQ(client.readMessage(), R"({"type":"sender","connected":true})");
  server_.add(frameOf(2, "</script>" + std::string(300, 'x'), "message 2"));
  EXPECT_EQ(client.readMessage(), R"({"type":"added","frame":{"number":2,"name":")"
                                  R"(\u003c/script\u003e)" +
                                      std::string(191, 'x') + R"(","bytes":9},"dropped":[]})");
  server_.add(frameOf(3, "", std::string(5000, 'x')));
  EXPECT_THAT(client.readMessage(), testing::EndsWith(R"("dropped":[1,2]})"));
  Client other(server_);
  EXPECT_THAT(other.ask(other.token() + "frames/2", "Host: " + other.host() + "\r\n"),
              StartsWith("HTTP/1.1 404 "));
}

TEST_F(DrawviewWeb, PagesLearnOfAnyNumberOfFrames) {
  constexpr std::uint64_t kFrames = 50000;  // more text than may wait for a page
  drawview::FrameStore store;
  for (std::uint64_t number = 1; number <= kFrames; ++number)
    store.add(frameOf(number, std::string(200, 'x'), ""));
  drawview::WebServer server({0, "page", false}, std::move(store));
  Client client(server);
  client.ask(client.token() + "socket",
             client.handshake() + "Origin: http://" + client.host() + "\r\n");
  EXPECT_GT(client.readMessage().size(), kFrames * 200);
  EXPECT_EQ(client.readMessage(), R"({"type":"sender","connected":false})");
}

TEST_F(DrawviewWeb, CutsOffAPageThatSaysTooMuch) {
  Client client(server_);
  client.ask(client.token() + "socket",
             client.handshake() + "Origin: http://" + client.host() + "\r\n");
  client.readMessage();
  client.readMessage();
  client.send(std::string("\x81\xfe\x20\x00\0\0\0\0", 8) + std::string(8192, 'x'));
  EXPECT_EQ(client.read(1), "\x88");
}

TEST_F(DrawviewWeb, HasAPortOfItsOwnAndTokensThatDiffer) {
  const std::string address = server_.address();
  const int port = std::atoi(address.substr(17).c_str());
  EXPECT_THROW(WebServer({port, "", false}, FrameStore()), drawview::InputError);
  const WebServer other({0, "", false}, FrameStore());
  EXPECT_NE(Client(other).token(), Client(server_).token());
  EXPECT_EQ(Client(server_).token().size(), 66u);
}

TEST_F(DrawviewWeb, LeavesRoomForSixtyFourConnections) {
  std::vector<std::unique_ptr<Client>> clients;
  for (int i = 0; i < 64; ++i) {
    clients.push_back(std::make_unique<Client>(server_));
    clients.back()->ask("/", "");
  }
  EXPECT_TRUE(Client(server_).isAtEnd());
  clients.clear();
  int tries = 1000;
  while (Client(server_).ask("/", "").empty() && --tries > 0)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_GT(tries, 0);
}

TEST(DrawviewFrames, GoOldestFirst) {
  constexpr std::uint64_t kOverhead = FrameStore::kBytesPerFrame;
  FrameStore store(2 * kOverhead + 100);
  EXPECT_THAT(store.add(frameOf(1, "", std::string(50, 'x'))), testing::ElementsAre());
  EXPECT_THAT(store.add(frameOf(2, "", std::string(50, 'x'))), testing::ElementsAre());
  EXPECT_THAT(store.add(frameOf(4, "", std::string(51, 'x'))), testing::ElementsAre(1, 2));
  EXPECT_THAT(store.add(frameOf(6, "", std::string(49, 'x'))), testing::ElementsAre());
  EXPECT_THAT(store.add(frameOf(7, "", std::string(kOverhead, 'x'))), testing::ElementsAre(4, 6));
  EXPECT_EQ(store.find(2), nullptr);
  EXPECT_EQ(store.find(3), nullptr);
  EXPECT_EQ(store.find(7)->bytes, kOverhead);
  EXPECT_EQ(store.find(8), nullptr);
}

}  // namespace
