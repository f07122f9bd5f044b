#include <cstdlib>

#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/detail/messages.h>
#include <vx/Report.h>

namespace vxKilnBase {

namespace {

// A catalogue that is registered while instances of its start-up class live.
struct CountedCatalog {
  MathMessageCatalog catalog;
  std::uint16_t instances;

  void acquire() {
    if (instances++ == 0) addMathCatalog(catalog);
  }
  void release() {
    if (instances-- == 1) removeMathCatalog(catalog.id);
  }
};

template <std::uint32_t size>
constexpr CountedCatalog makeCatalog(std::uint32_t id, const MathCatalogEntry (&entries)[size]) {
  return {{id, entries, size, nullptr}, 0};
}

constinit CountedCatalog generalCatalog = makeCatalog(3, detail::kGeneralMessages);
constinit CountedCatalog matrixCatalog = makeCatalog(4, detail::kMatrixMessages);
constinit CountedCatalog factorizationCatalog = makeCatalog(5, detail::kFactorizationMessages);

constinit MathMessageCatalog* firstCatalog = nullptr;

int terminateProcess() {
  rptError("** Processing terminated.\n");
  std::abort();
}

int reportMathError(const MathErrorRecord& record, std::va_list arguments) {
  if (record.number == 0) return 0;
  rptError("** ");
  const MathCatalogEntry* entry = findMathMessage(record.number);
  if (entry == nullptr) {
    rptError("Error number 0x%hx.", record.number);
    return terminateProcess();
  }
  rptVError(entry->message, arguments);
  rptError(".\n");
  const std::uint32_t severity =
      record.severity == detail::kDefault ? entry->severity : record.severity;
  if (severity != detail::kWarning) return terminateProcess();
  rptError("** Processing continues.\n");
  return 0;
}

constinit MathErrorHandler currentHandler = reportMathError;

// The library holds its catalogues from load to unload.
const RWMATHInit generalInit;
const RWMATXInit matrixInit;
const RWFACTInit factorizationInit;

}  // namespace

MathErrorHandler setMathErrorHandler(MathErrorHandler handler) {
  const MathErrorHandler previous = currentHandler;
  currentHandler = handler != nullptr ? handler : reportMathError;
  return previous;
}

void addMathCatalog(MathMessageCatalog& catalog) {
  MathMessageCatalog** link = &firstCatalog;
  for (; *link != nullptr; link = &(*link)->next) {
    if (*link == &catalog) return;
  }
  *link = &catalog;
  catalog.next = nullptr;
}

void removeMathCatalog(std::uint32_t id) {
  for (MathMessageCatalog** link = &firstCatalog; *link != nullptr; link = &(*link)->next) {
    if ((*link)->id == id) {
      *link = (*link)->next;
      return;
    }
  }
}

const MathCatalogEntry* findMathMessage(std::uint16_t number) {
  const std::uint32_t id = number >> 12U;
  for (const MathMessageCatalog* catalog = firstCatalog; catalog != nullptr;
       catalog = catalog->next) {
    if (catalog->id == id) return catalog->entries + (number & 0x0FFFU);
  }
  return nullptr;
}

namespace detail {

int raiseMathErrorArguments(MathErrorRecord record, ...) {
  std::va_list arguments;
  va_start(arguments, record);
  const int answer = currentHandler(record, arguments);
  va_end(arguments);
  return answer;
}

}  // namespace detail

}  // namespace vxKilnBase

RWMATHInit::RWMATHInit() {
  vxKilnBase::generalCatalog.acquire();
}
RWMATHInit::~RWMATHInit() {
  vxKilnBase::generalCatalog.release();
}
RWMATXInit::RWMATXInit() {
  vxKilnBase::matrixCatalog.acquire();
}
RWMATXInit::~RWMATXInit() {
  vxKilnBase::matrixCatalog.release();
}
RWFACTInit::RWFACTInit() {
  vxKilnBase::factorizationCatalog.acquire();
}
RWFACTInit::~RWFACTInit() {
  vxKilnBase::factorizationCatalog.release();
}
