#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <vx/Signal.h>

using vxRTB::SignalBase;
using vxRTB::SignalClient;

namespace {

// Three clients of one signal, "a", "b", "c", connected in this order, that write down their calls.
// What a callback does besides stands in `actions`.
struct Party {
  Party() {
    for (const char* name : {"a", "b", "c"}) connect(name);
  }

  void connect(const std::string& name) {
    auto& client = clients[name];
    if (!client) client = std::make_unique<SignalClient>();
    signal->connect(*client, [this, name](int value) {
      log += name + std::to_string(value);
      if (const auto action = actions.find(name); action != actions.end()) action->second(value);
    });
  }

  std::string emitted(int value) {
    log.clear();
    if (signal) signal->emit(value);
    return log;
  }

  std::unique_ptr<SignalBase<int>> signal = std::make_unique<SignalBase<int>>();
  std::map<std::string, std::unique_ptr<SignalClient>> clients;
  std::map<std::string, std::function<void(int)>> actions;
  std::string log;
};

struct Signal : testing::Test, Party {};

}  // namespace

// The action of "b" during the first emission, and what the first and a second emission call.
TEST_F(Signal, CallbacksChangeEverythingDuringTheEmission) {
  struct {
    const char* what;
    std::function<void(Party&)> action;
    const char* first;
    const char* second;
  } const cases[] = {
      {"connects", [](Party& s) { s.connect("d"); }, "a1b1c1", "a2b2c2d2"},
      {"replaces the next and last",
       [](Party& s) {
         s.clients["c"].reset();
         s.connect("c");
       },
       "a1b1", "a2b2c2"},
      {"replaces everything",
       [](Party& s) {
         s.clients.clear();
         s.connect("d");
       },
       "a1b1", "d2"},
      {"destroys its own client", [](Party& s) { s.clients["b"].reset(); }, "a1b1c1", "a2c2"},
      {"destroys the signal", [](Party& s) { s.signal.reset(); }, "a1b1", ""},
      {"destroys signal and clients",
       [](Party& s) {
         s.signal.reset();
         s.clients.clear();
       },
       "a1b1", ""},
      {"throws", [](Party&) { throw std::runtime_error("!"); }, "a1b1!", "a2b2c2"},
      {"connects and emits",
       [](Party& s) {
         s.connect("d");
         s.signal->emit(5);
       },
       "a1b1a5b5c5d5c1", "a2b2c2d2"}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    Party fixture;
    fixture.actions["b"] = [&](int value) {
      if (value == 1) each.action(fixture);
    };
    try {
      fixture.emitted(1);
    } catch (const std::runtime_error& error) {
      fixture.log += error.what();
    }
    EXPECT_EQ(each.first, fixture.log);
    EXPECT_EQ(each.second, fixture.emitted(2));
  }
}

TEST_F(Signal, ANestedEmissionMayDestroyWhatTheOuterOneIsCalling) {
  actions["b"] = [this](int value) {
    if (value == 1) signal->emit(2);
    log += "!";  // this callback is still whole
  };
  actions["c"] = [this](int) { clients["b"].reset(), signal.reset(); };
  EXPECT_EQ("a1b1a2b2!c2!", emitted(1));
}

TEST_F(Signal, CopiesHaveNoConnectionsAndAssignmentKeepsThem) {
  SignalBase<int> copy = *signal;
  SignalClient copiedClient = *clients["a"];
  copiedClient.disconnectAll();
  copy.emit(1);
  EXPECT_EQ("", log);
  *signal = copy;
  *clients["a"] = copiedClient;
  EXPECT_EQ("a2b2c2", emitted(2));
}

// The callback of "b" holds the last reference to the signal: cutting it destroys the signal.
TEST_F(Signal, TheEndOfACallbackMayDestroyTheSignalAndTheClient) {
  const std::shared_ptr<SignalBase<int>> shared = std::move(signal);
  clients["a"]->disconnectAll();
  auto holder = std::make_shared<SignalClient>();
  SignalBase<int> other;
  other.connect(*clients["a"], [shared, holder](int) {});
  other.connect(*holder, [shared](int) {});
  std::weak_ptr<SignalClient> watched = holder;
  holder.reset();
  clients["a"]->disconnectAll();
  EXPECT_TRUE(watched.expired());
}

TEST_F(Signal, CarriesReferencesAndValuesThatOutliveTheirOwner) {
  SignalBase<int&, std::string> both;
  auto text = std::make_unique<std::string>("a text that is longer than the string itself");
  const std::string expected = *text;
  both.connect(*clients["a"], [&](int& count, const std::string&) { ++count, text.reset(); });
  both.connect(*clients["b"],
               [&](int& count, const std::string& got) { count += got == expected; });
  int count = 0;
  both.emit(count, *text);
  EXPECT_EQ(2, count);
}

// Connects, disconnects, destroys and emits at random, also from within callbacks.
TEST(SignalModel, RandomOperationsKeepTheOrderOfConnecting) {
  std::mt19937 random(8);
  SignalBase<int> signal;
  std::vector<std::optional<SignalClient>> clients(6, SignalClient());
  std::vector<std::pair<int, std::size_t>> expected;  // serial number and client of a connection
  std::vector<int> called;
  int serial = 0, newestAtStart = 0;
  std::function<void()> change = [&] {
    const std::size_t i = random() % clients.size();
    const auto what = random() % 6;
    if (what < 3) {
      const int number = ++serial;
      expected.emplace_back(number, i);
      signal.connect(*clients[i], [&, number](int depth) {
        called.push_back(number);
        if (depth == 0) return;
        EXPECT_LE(number, newestAtStart);
        change();
      });
      return;
    }
    if (what == 3) return signal.emit(0);
    std::erase_if(expected, [&](const auto& each) { return each.second == i; });
    if (what == 4) signal.disconnect(*clients[i]);
    if (what == 5) clients[i].emplace();
  };
  for (int step = 0; step < 3000; ++step) {
    if (expected.size() > 30) {
      for (auto& client : clients) client.emplace();
      expected.clear();
    }
    newestAtStart = serial;
    signal.emit(1);
    called.clear();
    signal.emit(0);
    std::vector<int> numbers;
    for (const auto& each : expected) numbers.push_back(each.first);
    ASSERT_EQ(numbers, called);
    change();
  }
}
