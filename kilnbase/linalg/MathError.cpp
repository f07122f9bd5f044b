#include <cstdlib>
#include <iterator>

#include <kilnbase/linalg/MathError.h>
#include <vx/Report.h>

namespace vxKilnBase {

namespace {

constexpr std::uint32_t kWarning = 0;
constexpr std::uint32_t kDefault = 1;
constexpr std::uint32_t kFatal = 2;

constexpr MathCatalogEntry kGeneralMessages[] = {
    {kFatal, "[BADORDER: %s]: Mismatch of function (%u) and rhs (%u) order"},
    {kFatal, "[BADPARITY: %s]: Length (%u) of a real series must be %s"},
    {kFatal, "[BADVERNO: %s]: Bad formatting version number.  Expected %d; got %d"},
    {kFatal, "[DIVZERO: %s]: Divide by zero."},
    {kFatal, "[GENERIC: %s]: Generic error number %d; %s"},
    {kFatal, "[INDEX: %s]: Index (%d) out of range [0->%u]"},
    {kFatal, "[LUNDEF: %s]: Undefined LU factorization"},
    {kFatal, "[MNMATCH: %s]: Rows or columns do not match: (%u, %u) vs (%u, %u)"},
    {kFatal, "[NOMEM: %s]: Out of memory"},
    {kFatal, "[NPOINTS: %s]: Vector (%u) %s %d"},
    {kFatal, "[NSQUARE: %s]: Matrix (%u, %u) is not square"},
    {kFatal, "[RWBREQ: %s]: RWBlock new request of size %d != correct: %d"},
    {kFatal, "[SLICE: %s]: slice (%d, %u, %d) cannot be made from vector (%u)"},
    {kFatal, "[STRIDE: %s]: Stride must be 1"},
    {kFatal, "[VMNMATCH: %s]: %s Vector (%u) does not match matrix: (%u, %u)"},
    {kFatal, "[VNMATCH: %s]: Vector lengths do not match (%u vs %u)"},
    {kWarning, "[ZEROSD: %s]: Series has zero standard deviation"},
    {kWarning, "[ZEROVEC: %s]: %s: vector is empty"},
    {kFatal, "[ZPIVOT: %s]: Pivot number %d is zero"},
    {kFatal, "[BADROOT: %s]: Zero'th root of 1 requested"},
};

constexpr MathCatalogEntry kMatrixMessages[] = {
    {kWarning, "Internal error, you've found a bug"},
    {kFatal, "Matrix pick out of range: index %d not in 0->%d"},
    {kFatal, "Constant reference was changed from %g to %g"},
    {kFatal, "Complex constant reference was changed from %g+i%g to %g+i%g"},
    {kFatal, "Matrix sizes don't match (%dx%d) vs (%dx%d)"},
    {kFatal, "Element (%dx%d) not in matrix of size (%ux%u)"},
    {kFatal, "Row (%d) not in matrix with %u rows"},
    {kFatal, "Column (%d) not in matrix with %u columns"},
    {kFatal, "Diagonal %d not in %s matrix of size (%ux%u)"},
    {kFatal, "Can't change element (%d,%d) of %s"},
    {kFatal, "Wrong number of points (%u) for %ux%u %s"},
    {kFatal, "Wrong number of points (%u) for %ux%u %s with bandwidth %u"},
    {kFatal, "Bandwidths don't match: lower: %u & %u, upper: %u & %u"},
    {kFatal, "%dx%d matrix not square"},
    {kWarning, "matrix not symmetric"},
    {kWarning, "matrix not anti-symmetric"},
    {kWarning, "matrix not hermetian"},
    {kWarning, "matrix not banded"},
    {kWarning, "matrix not triangular"},
    {kWarning, "matrix not tri-diagonal"},
    {kFatal, "inner product not possible between %s (%ux%u) and vector (%u)"},
    {kFatal, "inner product not possible vector(%u) and %s (%ux%u)"},
    {kFatal, "inner product not possible %s matrices (%u,%u) and (%ux%u)"},
    {kFatal, "wrong number of elements (%u) for %s (%ux%u)"},
    {kFatal, "cant build order %u leading submatrix of order %u matrix"},
    {kFatal, "Restoring %s, data vector len %d, expected %u"},
};

constexpr MathCatalogEntry kFactorizationMessages[] = {
    {kWarning, "Internal error, you've found a bug"},
    {kWarning, "Condition number not calculated"},
    {kFatal, "b vector length wrong (%u!=%u)"},
    {kWarning, "diagonal of Hermetian matrix being factorized is non-real"},
    {kFatal, "vector wrong length to permute (%u!=%u)"},
    {kFatal, "Invalid Cholesky shift direction"},
    {kFatal, "Invalid Cholesky shift columns (%d,%d)"},
    {kFatal, "Data matrix wrong height (%u!=%u)"},
    {kFatal, "Vector to hold sines or cosines wrong length (%u!=%u)"},
    {kFatal, "Different number of residuals than data columns (%u!=%u)"},
    {kFatal, "Internal error: The normal equations are not positive definite"},
    {kFatal, "Data %d doesn't exist, only %d data columns"},
    {kFatal, "vec pointers must have stride == 1"},
    {kFatal, "Can't factorize, %ux%u matrix not square"},
    {kFatal, "Can't factorize, bandwidth %d too big for %dx%d matrix"},
    {kWarning, "Called factor, but a factorization has already been computed"},
    {kFatal, "Matrix must have more rows than cols to be factorizable, but %d<%d"},
    {kFatal, "Can't solve system of equations, matrix not successfully factorized"},
    {kFatal, "Pivoting position specifier must be INITIAL,FREE, or FINAL, not %d"},
};

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

constinit CountedCatalog generalCatalog = makeCatalog(3, kGeneralMessages);
constinit CountedCatalog matrixCatalog = makeCatalog(4, kMatrixMessages);
constinit CountedCatalog factorizationCatalog = makeCatalog(5, kFactorizationMessages);

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
  const std::uint32_t severity = record.severity == kDefault ? entry->severity : record.severity;
  if (severity != kWarning) return terminateProcess();
  rptError("** Processing continues.\n");
  return 0;
}

constinit MathErrorHandler currentHandler = reportMathError;

// The library's own hold on its catalogues, from load to unload.
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
