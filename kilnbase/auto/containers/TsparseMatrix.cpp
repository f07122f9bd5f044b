#include <algorithm>
#include <climits>
#include <cstddef>
#include <numeric>

#include <kilnbase/auto/containers/TsparseMatrix.h>
#include <kilnbase/linalg/MathError.h>

namespace {

constexpr const char* kClassName = "TsparseMatrix";

unsigned asLength(int n) {
  return static_cast<unsigned>(std::max(n, 0));
}

// The product of two capacities, 0 where no int holds it.
int elementCapacity(int maxRows, int maxCols) {
  const long long product = static_cast<long long>(asLength(maxRows)) * asLength(maxCols);
  return product <= INT_MAX ? static_cast<int>(product) : 0;
}

long long nonzeros(const DoubleVec& v) {
  return v.length() - v.countValue(0.0, 0.0);
}

// Whether the rows ascend strictly and lie in [0, limit).
bool areAscending(const int* rows, int count, int limit) {
  if (count == 0) return true;
  int falls = 0;
  for (int k = 1; k < count; ++k) falls |= static_cast<int>(rows[k] <= rows[k - 1]);
  return falls == 0 && rows[0] >= 0 && rows[count - 1] < limit;
}

}  // namespace

// --- Making and rebinding

TsparseMatrix::TsparseMatrix(int maxRows, int maxCols)
    : TsparseMatrix(maxRows, maxCols, elementCapacity(maxRows, maxCols)) {}

TsparseMatrix::TsparseMatrix(int maxRows, int maxCols, int maxElements)
    : maxNumberOfRows_(std::max(maxRows, 0)),
      maxNumberOfCols_(std::max(maxCols, 0)),
      maxNumberOfElements_(std::max(maxElements, 0)),
      beginnings_(asLength(maxCols), 0),
      counts_(asLength(maxCols), 0),
      indices_(asLength(maxElements)),
      data_(asLength(maxElements)) {
  emptyUnlessStored();
}

TsparseMatrix::TsparseMatrix(const DoubleGenMat& dense)
    : rows_(static_cast<int>(dense.rows())), maxNumberOfRows_(rows_) {
  add(dense, 1);
}

TsparseMatrix& TsparseMatrix::operator=(const TsparseMatrix& other) {
  reference(other);
  deepenShallowCopy();
  return *this;
}

void TsparseMatrix::reference(const TsparseMatrix& other) {
  rows_ = other.rows_;
  cols_ = other.cols_;
  numberOfElements_ = other.numberOfElements_;
  maxNumberOfRows_ = other.maxNumberOfRows_;
  maxNumberOfCols_ = other.maxNumberOfCols_;
  maxNumberOfElements_ = other.maxNumberOfElements_;
  beginnings_.reference(other.beginnings_);
  counts_.reference(other.counts_);
  indices_.reference(other.indices_);
  data_.reference(other.data_);
}

void TsparseMatrix::deepenShallowCopy() {
  beginnings_.deepenShallowCopy();
  counts_.deepenShallowCopy();
  indices_.deepenShallowCopy();
  data_.deepenShallowCopy();
  emptyUnlessStored();
}

// Empties the matrix if one of its vectors did not get its storage.
void TsparseMatrix::emptyUnlessStored() {
  if (beginnings_.length() != asLength(maxNumberOfCols_) ||
      counts_.length() != asLength(maxNumberOfCols_) ||
      indices_.length() != asLength(maxNumberOfElements_) ||
      data_.length() != asLength(maxNumberOfElements_)) {
    reference(TsparseMatrix());
  }
}

// --- Reading and changing elements

// The number of columns that have a place in `beginnings_` and `counts_`.
int TsparseMatrix::storedCols() const {
  return std::clamp(cols_, 0, maxNumberOfCols_);
}

// Where column c stands: inside the storage, whatever was written to the vectors.
TsparseMatrix::Span TsparseMatrix::span(int c) const {
  if (c < 0 || c >= storedCols()) return {0, 0};
  const int first = std::clamp(beginnings_.sub(c), 0, maxNumberOfElements_);
  return {first, std::clamp(counts_.sub(c), 0, maxNumberOfElements_ - first)};
}

// The position of element (r, c), or -1.
int TsparseMatrix::position(int r, int c) const {
  if (r < 0 || r >= rows_) return -1;
  const auto [first, count] = span(c);
  const int* const begin = indices_.data() + first;
  const int* const place = std::find(begin, begin + count, r);
  return place == begin + count ? -1 : static_cast<int>(place - indices_.data());
}

double TsparseMatrix::element(int r, int c) const {
  const int k = position(r, c);
  return k < 0 ? 0.0 : data_.sub(k);
}

int TsparseMatrix::setElement(int r, int c, double v) {
  const int k = position(r, c);
  if (k < 0) return 0;
  data_.sub(k) = v;
  return 1;
}

DoubleVec TsparseMatrix::row(int r) const {
  DoubleVec dense(asLength(cols_), 0.0);
  for (int c = 0; c < static_cast<int>(dense.length()); ++c) dense.sub(c) = element(r, c);
  return dense;
}

DoubleVec TsparseMatrix::col(int c) const {
  DoubleVec dense(asLength(rows_), 0.0);
  scatter(c, dense);
  return dense;
}

// Writes the elements of column c to their rows, backwards: of equal rows the first one stays.
void TsparseMatrix::scatter(int c, DoubleVec& column) const {
  const auto [first, count] = span(c);
  for (int k = first + count - 1; k >= first; --k) {
    const int r = indices_.sub(k);
    if (r >= 0 && static_cast<unsigned>(r) < column.length()) column(r) = data_.sub(k);
  }
}

int TsparseMatrix::storedCol(int c, DoubleVec& values, IntVec& rows) const {
  if (c < 0 || c >= cols_) return 0;
  const auto [first, count] = span(c);
  values.reference(data_.slice(first, asLength(count)).copy());
  rows.reference(indices_.slice(first, asLength(count)).copy());
  return 1;
}

DoubleGenMat TsparseMatrix::convert() const {
  DoubleGenMat dense(asLength(rows_), asLength(cols_), 0.0);
  for (int c = 0; c < static_cast<int>(dense.cols()); ++c) {
    DoubleVec column = dense.col(c);
    scatter(c, column);
  }
  return dense;
}

// --- Appending

int TsparseMatrix::addCol(const IntVec& rowIndices, const DoubleVec& values, int grow) {
  const unsigned n = values.length();
  if (n == 0 || rowIndices.length() != n || !makeRoom(1, n, grow)) return 0;
  append(rowIndices, values);
  return 1;
}

int TsparseMatrix::addCol(const DoubleVec& column, int grow) {
  if (!makeRoom(1, nonzeros(column), grow)) return 0;
  append(column);
  return 1;
}

int TsparseMatrix::add(const TsparseMatrix& other, int grow) {
  const int columns = other.storedCols();
  long long elements = 0;
  for (int c = 0; c < columns; ++c) elements += other.span(c).count;
  if (!makeRoom(columns, elements, grow)) return 0;
  for (int c = 0; c < columns; ++c) {
    const auto [first, count] = other.span(c);
    append(other.indices_.slice(first, asLength(count)), other.data_.slice(first, asLength(count)));
  }
  return 1;
}

int TsparseMatrix::add(const DoubleGenMat& dense, int grow) {
  if (!makeRoom(dense.cols(), nonzeros(dense), grow)) return 0;
  for (int c = 0; c < static_cast<int>(dense.cols()); ++c) append(dense.col(c));
  return 1;
}

int TsparseMatrix::set(const DoubleGenMat& dense, int maxRows, int maxCols) {
  const int rows = static_cast<int>(dense.rows());
  TsparseMatrix result(std::max(maxRows, rows), std::max(maxCols, static_cast<int>(dense.cols())));
  result.rows_ = rows;
  if (result.add(dense, 1) == 0) return 0;
  reference(result);
  return 1;
}

// Makes storage that is this matrix's own and has room for so much more. False, with nothing
// changed, where it may not grow or cannot.
bool TsparseMatrix::makeRoom(long long columns, long long elements, int grow) {
  const long long neededCols = cols_ + columns;
  const long long neededElements = numberOfElements_ + elements;
  if (cols_ < 0 || neededCols > INT_MAX || neededElements > INT_MAX) return false;
  if (neededCols > maxNumberOfCols_ || neededElements > maxNumberOfElements_) {
    if (grow == 0) return false;
    if (!growTo(rows_, static_cast<int>(neededCols), static_cast<int>(neededElements)))
      return false;
  }
  deepenShallowCopy();
  return neededElements <= maxNumberOfElements_ && neededCols <= maxNumberOfCols_;
}

bool TsparseMatrix::growTo(int maxRows, int maxCols, int maxElements) {
  const int columns = std::max(maxNumberOfCols_, maxCols);
  const int elements = std::max(maxNumberOfElements_, maxElements);
  TsparseMatrix grown = *this;
  grown.maxNumberOfRows_ = std::max(maxNumberOfRows_, maxRows);
  grown.maxNumberOfCols_ = columns;
  grown.maxNumberOfElements_ = elements;
  grown.beginnings_.resize(asLength(columns));
  grown.counts_.resize(asLength(columns));
  grown.indices_.resize(asLength(elements));
  grown.data_.resize(asLength(elements));
  grown.emptyUnlessStored();
  if (grown.maxNumberOfCols_ != columns || grown.maxNumberOfElements_ != elements) return false;
  reference(grown);
  return true;
}

void TsparseMatrix::append(const IntVec& rowIndices, const DoubleVec& values) {
  const int beginning = numberOfElements_;
  indices_.slice(beginning, values.length()) = rowIndices;
  data_.slice(beginning, values.length()) = values;
  numberOfElements_ += static_cast<int>(values.length());
  endColumn(beginning);
}

void TsparseMatrix::append(const DoubleVec& column) {
  const int beginning = numberOfElements_;
  for (int i = 0; i < static_cast<int>(column.length()); ++i) {
    if (column(i) != 0.0) appendElement(i, column(i));
  }
  endColumn(beginning);
}

void TsparseMatrix::appendElement(int row, double value) {
  indices_.sub(numberOfElements_) = row;
  data_.sub(numberOfElements_) = value;
  ++numberOfElements_;
}

// Ends the column of the elements from this position on.
void TsparseMatrix::endColumn(int beginning) {
  beginnings_.sub(cols_) = beginning;
  counts_.sub(cols_) = numberOfElements_ - beginning;
  ++cols_;
}

void TsparseMatrix::resizeMax(int maxRows, int maxCols) {
  growTo(maxRows, maxCols, maxNumberOfElements_);
}

void TsparseMatrix::resizeMax(int maxRows, int maxCols, int maxElements) {
  growTo(maxRows, maxCols, maxElements);
}

// --- Removing

int TsparseMatrix::removeCol(int c) {
  return removeCols(IntVec(1, c));
}

int TsparseMatrix::removeCols(const IntVec& columns) {
  return keepOrRemove(columns, false);
}

int TsparseMatrix::keepCols(const IntVec& columns) {
  return keepOrRemove(columns, true);
}

int TsparseMatrix::keepOrRemove(const IntVec& columns, bool keepsNamed) {
  std::vector<bool> kept(asLength(storedCols()), !keepsNamed);
  for (int k = 0; k < static_cast<int>(columns.length()); ++k) {
    const int c = columns(k);
    if (c < 0 || c >= storedCols()) return 0;
    kept[asLength(c)] = keepsNamed;
  }
  return reduceTo(kept, true);
}

void TsparseMatrix::removeZeros() {
  reduceTo(std::vector<bool>(asLength(storedCols()), true), false);
}

// Moves what stays to new storage of the same capacity.
int TsparseMatrix::reduceTo(const std::vector<bool>& keptColumns, bool keepsZeros) {
  TsparseMatrix rest(maxNumberOfRows_, maxNumberOfCols_, maxNumberOfElements_);
  rest.rows_ = rows_;
  for (int c = 0; c < storedCols(); ++c) {
    if (!keptColumns[asLength(c)]) continue;
    const int beginning = rest.numberOfElements_;
    const auto [first, count] = span(c);
    // Columns overlap only where a caller wrote to the vectors.
    if (c >= rest.maxNumberOfCols_ || count > rest.maxNumberOfElements_ - beginning) return 0;
    for (int k = first; k < first + count; ++k) {
      if (keepsZeros || data_.sub(k) != 0.0) rest.appendElement(indices_.sub(k), data_.sub(k));
    }
    rest.endColumn(beginning);
  }
  reference(rest);
  return 1;
}

void TsparseMatrix::printOn(std::ostream&) const {}

// --- Products

// The columns of a matrix as products read them: of equal rows the first one, and rows below a
// limit alone. Columns whose rows ascend are read where they are.
class TsparseMatrix::DistinctRows {
 public:
  struct Column {
    const int* rows;
    const double* values;
    int count;
  };

  DistinctRows(const TsparseMatrix& a, int limit) : a_(a), limit_(limit) {}

  Column column(int c) {
    const auto [first, count] = a_.span(c);
    const Column stored = {a_.indices_.data() + first, a_.data_.data() + first, count};
    return areAscending(stored.rows, count, limit_) ? stored : distinct(stored, c);
  }

 private:
  Column distinct(const Column& stored, int c) {
    lastColumn_.resize(asLength(limit_), -1);
    rows_.clear();
    values_.clear();
    for (int k = 0; k < stored.count; ++k) {
      const int r = stored.rows[k];
      if (r < 0 || r >= limit_ || lastColumn_[asLength(r)] == c) continue;
      lastColumn_[asLength(r)] = c;
      rows_.push_back(r);
      values_.push_back(stored.values[k]);
    }
    return {rows_.data(), values_.data(), static_cast<int>(rows_.size())};
  }

  const TsparseMatrix& a_;
  int limit_;
  std::vector<int> lastColumn_;  // that each row was seen in
  std::vector<int> rows_;
  std::vector<double> values_;
};

namespace {

// y[rows[k]] += factor * values[k], for distinct rows.
void addScattered(double* y, const int* rows, const double* values, int count, double factor) {
  for (int k = 0; k < count; ++k) y[rows[k]] += factor * values[k];
}

// The sum of x[rows[k]] * values[k].
double gatheredDot(const double* x, const int* rows, const double* values, int count) {
  double sums[4] = {};
  int k = 0;
  for (; k + 4 <= count; k += 4) {
    for (int i = 0; i < 4; ++i) sums[i] += x[rows[k + i]] * values[k + i];
  }
  for (; k < count; ++k) sums[0] += x[rows[k]] * values[k];
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

}  // namespace

DoubleVec product(const TsparseMatrix& a, const DoubleVec& v) {
  const unsigned cols = asLength(a.cols_);
  DoubleVec result(asLength(a.rows_), 0.0);
  if (v.length() != cols) {
    vxKilnBase::raiseMathError(0x4014, kClassName, result.length(), cols, v.length());
  }
  TsparseMatrix::DistinctRows columns(a, static_cast<int>(result.length()));
  for (int c = 0; c < static_cast<int>(std::min(v.length(), cols)); ++c) {
    const auto [rows, values, count] = columns.column(c);
    addScattered(result.data(), rows, values, count, v(c));
  }
  return result;
}

DoubleVec product(const DoubleVec& v, const TsparseMatrix& a) {
  const unsigned rows = asLength(a.rows_);
  DoubleVec result(asLength(a.cols_), 0.0);
  if (v.length() != rows) {
    vxKilnBase::raiseMathError(0x4015, v.length(), kClassName, rows, result.length());
  }
  const DoubleVec x = v.stride() == 1 ? v : v.copy();
  TsparseMatrix::DistinctRows columns(a, static_cast<int>(std::min(x.length(), rows)));
  for (int c = 0; c < static_cast<int>(result.length()); ++c) {
    const auto [rowIndices, values, count] = columns.column(c);
    result.sub(c) = gatheredDot(x.data(), rowIndices, values, count);
  }
  return result;
}
