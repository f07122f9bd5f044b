// The program of docs/guide/ownership.md.
#include <algorithm>
#include <span>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/Owned.h>
#include <kilnbase/linalg/Products.h>
#include <kilnbase/linalg/vecmath.h>

#include "examples/guide/expect.h"

namespace {

using guide::expect;

void shortest() {
  //! [shortest]
  DoubleVec v{1, 2, 3, 4};
  DoubleVec view = v;        // a view: no element is copied
  DoubleVec own = v.copy();  // elements of its own
  view(0) = 9.0;
  expect(v(0) == 9.0);  // the view writes into v
  expect(own(0) == 1.0);
  v = own;                 // assignment copies elements, into what v views ...
  expect(view(0) == 1.0);  // ... and so the other view shows them too
  //! [shortest]
}

void views() {
  //! [views]
  DoubleVec v(10, 0.0, 1.0);  // 0 1 2 ... 9
  v.slice(0, 5, 2) = 7.0;     // 7 1 7 3 7 5 7 7 7 9
  expect(v(8) == 7.0 && v(9) == 9.0);

  DoubleGenMat a(3, 2, 0.0);  // 3 rows, 2 columns
  a.row(1) = 5.0;
  a.diagonal() = 1.0;
  DoubleVec column = a.col(1);  // 0 1 0
  column(2) = 4.0;
  expect(a(1, 0) == 5.0 && a(1, 1) == 1.0 && a(2, 1) == 4.0);

  v.vecPick({1, 3, 5}) = 0.0;  // the elements with these indices
  expect(v(3) == 0.0 && v(4) == 7.0);
  //! [views]
}

void ranges() {
  //! [ranges]
  DoubleGenMat a{{3, 1}, {2, 5}, {1, 4}};  // 3 rows, 2 columns
  std::ranges::sort(a.col(0));             // 1 2 3; a row works the same way
  for (double& x : a.row(2)) x = -x;       // the range is a view: it writes into a
  expect(a(0, 0) == 1.0);
  expect(a(2, 1) == -4.0);
  for (DoubleVec row : a.eachRow()) row /= vxKilnBase::sum(row);

  const std::vector<double> numbers = {4, 5, 6};
  const DoubleVec own(numbers);  // copies
  const std::vector<double> back(own.begin(), own.end());
  const std::span<const double> span = own.span();  // for stride 1; no copy, no hold
  expect(back == numbers);
  expect(span.data() == own.data());
  //! [ranges]
}

void overlap() {
  //! [overlap]
  DoubleVec v{1, 2, 3, 4, 5};
  v.slice(1, 4) = v.slice(0, 4);       // the source counts as it was before
  expect(v(1) == 1.0 && v(4) == 4.0);  // 1 1 2 3 4
  //! [overlap]
}

void steps() {
  //! [steps]
  DoubleGenMat a(3, 2, 0.0);
  DoubleVec row = a.row(1);
  expect(row.stride() == 3);  // matrices stand column by column
  row(1) = 2.0;               // element 1 of the row
  expect(a(1, 1) == 2.0);
  expect(&row.sub(1) == &a(2, 0));  // sub() ignores the stride: another element
  row.deepenShallowCopy();          // now elements of its own, side by side
  expect(row.stride() == 1 && row.data()[1] == 2.0);
  //! [steps]
}

//! [lifetime]
DoubleVec middleRow() {
  const DoubleGenMat a(3, 3, 2.5);
  return a.row(1);  // keeps the elements of the whole matrix alive
}
//! [lifetime]

void lifetime() {
  const DoubleVec row = middleRow();
  expect(row(2) == 2.5);
}

void bestSoFar() {
  //! [best]
  DoubleVec trial(2, 1.0);
  const DoubleVec wrong = trial;         // meant to remember this trial
  const DoubleVec right = trial.copy();  // remembers
  trial(0) = -3.0;                       // the next trial
  expect(wrong(0) == -3.0);
  expect(right(0) == 1.0);
  //! [best]
}

//! [const]
void clear(const DoubleVec& v) {
  DoubleVec view = v;  // not const any more, and the elements are those of the caller
  view = 0.0;
}
//! [const]

void constIsNotDeep() {
  const DoubleVec v(2, 1.0);
  clear(v);
  expect(v(0) == 0.0);
}

//! [member]
class Curve {
 public:
  explicit Curve(const DoubleVec& knots) : knots_(knots) {}  // Owned: copies the elements

  void setKnots(const DoubleVec& knots) { knots_ = knots; }  // of any length
  unsigned size() const { return knots_.length(); }
  double knot(int i) const { return knots_(i); }

 private:
  vxKilnBase::Owned<DoubleVec> knots_;
};
//! [member]

void members() {
  DoubleVec knots{0, 1, 2};
  Curve curve(knots);
  knots = -1.0;
  expect(curve.size() == 3 && curve.knot(2) == 2.0);
  curve.setKnots(DoubleVec(5, 4.0));
  expect(curve.size() == 5 && curve.knot(4) == 4.0);
}

void emptyTarget() {
  //! [empty]
  const DoubleVec v(3, 1.0);
  DoubleVec w;            // length 0: `w = v` would be an error, of lengths 0 and 3
  w.reference(v);         // a view of v
  w.reference(v.copy());  // or elements of its own
  w.resize(5);            // the first three elements and two zeros
  expect(w.length() == 5 && w(2) == 1.0 && w(4) == 0.0 && v.length() == 3);
  //! [empty]
}

void lengthsMustAgree() {
  const auto before =
      vxKilnBase::setMathErrorHandler([](const MathErrorRecord& error, std::va_list) -> int {
        throw std::length_error(error.number == vxKilnBase::kVectorLengthsError ? "lengths" : "");
      });
  bool isRaised = false;
  try {
    DoubleVec w;
    w = DoubleVec(3, 1.0);
  } catch (const std::length_error&) {
    isRaised = true;
  }
  vxKilnBase::setMathErrorHandler(before);
  expect(isRaised);
}

void containers() {
  //! [containers]
  std::vector<vxKilnBase::Owned<DoubleVec>> rows;
  rows.push_back(DoubleVec(2, 1.0));
  rows.push_back(DoubleVec(3, 5.0));
  rows.erase(rows.begin());  // of plain vectors: an error, lengths 2 and 3
  expect(rows[0].length() == 3);
  const auto rowsBefore = rows;  // a copy of every element
  rows[0](0) = 0.0;
  expect(rowsBefore[0](0) == 5.0);
  //! [containers]
}

void threads() {
  //! [threads]
  const DoubleVec v(1000, 1.0);
  double total = 0.0;
  DoubleVec ours = v.copy();  // made here, and nobody else views it
  std::thread worker([&total, theirs = std::move(ours)] { total = vxKilnBase::sum(theirs); });
  const double here = vxKilnBase::sum(v);
  worker.join();
  expect(total == here);
  ours = DoubleVec{1, 2};  // moved away, it takes a vector of any length
  expect(ours.length() == 2);
  //! [threads]
}

}  // namespace

int main() {
  shortest();
  views();
  ranges();
  overlap();
  steps();
  lifetime();
  bestSoFar();
  constIsNotDeep();
  members();
  emptyTarget();
  lengthsMustAgree();
  containers();
  threads();
}
