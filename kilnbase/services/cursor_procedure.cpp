#include <cstddef>
#include <new>
#include <vector>

#include <kilnbase/services/cursor_procedure.h>

namespace {

// A run of the dispatcher: the elements `next` to `end` - 1 of the list are still to be called.
struct Run {
  std::size_t next;
  std::size_t end;
  Run* outer;
};

constinit CursorProcedure primary = nullptr;
constinit std::vector<CursorProcedure> procedures;
constinit Run* runs = nullptr;  // the innermost

void removeAt(std::size_t i) {
  procedures.erase(procedures.begin() + static_cast<std::ptrdiff_t>(i));
  for (Run* run = runs; run != nullptr; run = run->outer) {
    if (i < run->next) --run->next;
    if (i < run->end) --run->end;
  }
}

void callListed(intptr_t argument) {
  struct Running : Run {
    Running() : Run{0, procedures.size(), runs} { runs = this; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() { runs = outer; }
  } run;
  while (run.next < run.end) procedures[run.next++](argument);
}

void dispatch(intptr_t argument) {
  if (primary != nullptr) primary(argument);
  callListed(argument);
}

}  // namespace

void set_cursor_procedure(CursorProcedure procedure) {
  primary = procedure;
}

void add_cursor_procedure(CursorProcedure procedure) {
  if (procedure == nullptr) return;
  try {
    procedures.push_back(procedure);
  } catch (const std::bad_alloc&) {
    return;
  }
  for (std::size_t i = procedures.size() - 1; i > 0; --i) {
    if (procedures[i] == procedures[i - 1]) removeAt(i);
  }
}

void remove_cursor_procedure(CursorProcedure procedure) {
  for (std::size_t i = procedures.size(); i-- > 0;) {
    if (procedures[i] == procedure) removeAt(i);
  }
}

CursorProcedure get_cursor_procedure() {
  return dispatch;
}
