#include <algorithm>
#include <cstddef>

#include <kilnbase/linalg/linpack/dchex.h>
#include <kilnbase/linalg/linpack/drotg.h>

namespace vxKilnBase::linpack {

namespace {

// The factor R and its columns that are shifted, `first` to `last`, counted from 0.
struct Shift {
  double* r;
  int ldr;
  int first;
  int last;

  double* column(int j) const { return r + static_cast<std::ptrdiff_t>(j) * ldr; }
  int rotations() const { return last - first; }
};

void swapRows(const Shift& shift, int rows, int j) {
  std::swap_ranges(shift.column(j), shift.column(j) + rows, shift.column(j + 1));
}

// Makes the rotations of a right shift. Rotation i turns rows last - 1 - i and last - i of the last
// column so that the lower element becomes 0. The element that is left in row `first` is
// `diagonal`.
void makeRightRotations(const Shift& shift, double& diagonal, double* c, double* s) {
  const double* column = shift.column(shift.last);
  diagonal = column[shift.last];
  for (int i = 0; i < shift.rotations(); ++i) {
    double above = column[shift.last - 1 - i];
    drotg(above, diagonal, c[i], s[i]);
    diagonal = above;
  }
}

// Moves column `last` to place `first`, where `diagonal` is its diagonal element.
void moveColumnsRight(const Shift& shift, double diagonal) {
  for (int j = shift.last - 1; j >= shift.first; --j) {
    swapRows(shift, shift.first, j);
    std::copy(shift.column(j) + shift.first, shift.column(j) + j + 1,
              shift.column(j + 1) + shift.first);
    shift.column(j + 1)[j + 1] = 0.0;
  }
  shift.column(shift.first)[shift.first] = diagonal;
}

// Applies the rotations of a right shift whose upper row is above row `end`.
void rotateUpwards(const Shift& shift, double* column, int end, const double* c, const double* s) {
  for (int i = std::min(end, shift.last) - 1; i >= shift.first; --i) {
    const int rotation = shift.last - 1 - i;
    rotate(c[rotation], s[rotation], column[i], column[i + 1]);
  }
}

// Moves column `first` to place `last`. The elements that come to lie below the diagonal go to `s`.
void moveColumnsLeft(const Shift& shift, double* s) {
  for (int j = shift.first; j < shift.last; ++j) {
    swapRows(shift, shift.first + 1, j);
    std::copy(shift.column(j + 1) + shift.first + 1, shift.column(j + 1) + j + 1,
              shift.column(j) + shift.first + 1);
    s[j - shift.first] = shift.column(j + 1)[j + 1];
  }
  std::fill(shift.column(shift.last) + shift.first + 1, shift.column(shift.last) + shift.last + 1,
            0.0);
}

// Applies the rotations of a left shift whose upper row is above row `end`.
void rotateDownwards(const Shift& shift, double* column, int end, const double* c,
                     const double* s) {
  for (int i = shift.first; i < std::min(end, shift.last); ++i) {
    const int rotation = i - shift.first;
    rotate(c[rotation], s[rotation], column[i], column[i + 1]);
  }
}

void shiftRight(const Shift& shift, int p, double* c, double* s) {
  double diagonal = 0.0;
  makeRightRotations(shift, diagonal, c, s);
  moveColumnsRight(shift, diagonal);
  for (int j = shift.first + 1; j < p; ++j) rotateUpwards(shift, shift.column(j), j, c, s);
}

void shiftLeft(const Shift& shift, int p, double* c, double* s) {
  moveColumnsLeft(shift, s);
  for (int j = shift.first; j < p; ++j) {
    double* column = shift.column(j);
    rotateDownwards(shift, column, j, c, s);
    if (j < shift.last) {
      const int rotation = j - shift.first;
      drotg(column[j], s[rotation], c[rotation], s[rotation]);
    }
  }
}

}  // namespace

void dchex(double* r, int ldr, int p, int k, int l, double* z, int ldz, int nz, double* c,
           double* s, int job) {
  const Shift shift{r, ldr, k - 1, l - 1};
  const bool right = job == 1;
  right ? shiftRight(shift, p, c, s) : shiftLeft(shift, p, c, s);
  const auto rotateColumn = right ? rotateUpwards : rotateDownwards;
  for (int j = 0; j < nz; ++j) {
    rotateColumn(shift, z + static_cast<std::ptrdiff_t>(j) * ldz, shift.last, c, s);
  }
}

}  // namespace vxKilnBase::linpack
