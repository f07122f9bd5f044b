#include <functional>
#include <gtest/gtest.h>
#include <string>

#include <kilnbase/services/cursor_procedure.h>

namespace {

std::string called;
std::function<void()> action;  // what B does besides

template <char name>
void procedure(intptr_t argument) {
  called += name + std::to_string(argument);
  if (name == 'B' && action) action();
}

constexpr CursorProcedure kA = procedure<'A'>;
constexpr CursorProcedure kB = procedure<'B'>;
constexpr CursorProcedure kC = procedure<'C'>;

struct Cursor : testing::Test {
  ~Cursor() override {
    action = nullptr;
    set_cursor_procedure(nullptr);
    for (const CursorProcedure each : {kA, kB, kC}) remove_cursor_procedure(each);
  }

  static void add(std::initializer_list<CursorProcedure> added) {
    for (const CursorProcedure each : added) add_cursor_procedure(each);
  }
  static std::string dispatched(intptr_t argument) {
    called.clear();
    get_cursor_procedure()(argument);
    return called;
  }
};

}  // namespace

TEST_F(Cursor, TheListNeverHoldsAProcedureTwiceInARowOnceSomethingIsAdded) {
  add({kA, kA, kB, nullptr, kA});
  EXPECT_EQ("A1B1A1", dispatched(1));
  remove_cursor_procedure(kB);
  EXPECT_EQ("A2A2", dispatched(2));
  add({kB});
  EXPECT_EQ("A3B3", dispatched(3));
  set_cursor_procedure(kC);
  EXPECT_EQ("C-4A-4B-4", dispatched(-4));
  remove_cursor_procedure(kA);
  set_cursor_procedure(nullptr);
  EXPECT_EQ("B5", dispatched(5));
}

// What B does in the list A B C A, once, and what that run and the next one call.
TEST_F(Cursor, ProceduresChangeTheListWhileTheDispatcherRuns) {
  const struct {
    std::function<void()> change;
    const char* first;
    const char* second;
  } cases[] = {{[] { remove_cursor_procedure(kB); }, "A1B1C1A1", "A2C2A2"},
               {[] { remove_cursor_procedure(kC); }, "A1B1A1", "A2B2A2"},
               {[] { remove_cursor_procedure(kA); }, "A1B1C1", "B2C2"},
               {[] { add_cursor_procedure(kB); }, "A1B1C1A1", "A2B2C2A2B2"},
               {[] { get_cursor_procedure()(7); }, "A1B1A7B7C7A7C1A1", "A2B2C2A2"},
               {[] {
                  remove_cursor_procedure(kC);
                  remove_cursor_procedure(kB);
                  add_cursor_procedure(kC);
                },
                "A1B1", "A2C2"}};
  for (const auto& each : cases) {
    add({kA, kB, kC, kA});
    action = [&] {
      action = nullptr;
      each.change();
    };
    EXPECT_EQ(each.first, dispatched(1));
    EXPECT_EQ(each.second, dispatched(2));
    for (const CursorProcedure listed : {kA, kB, kC}) remove_cursor_procedure(listed);
  }
}
