// std::format of vectors, matrices and geometry values, where the standard library has <format>.
//
// The text is that of `<<`. The options in braces are those of the element type and count for
// every number: std::format("{:.2f}", T3dDblPoint(1, 2, 3)) is "(1.00, 2.00, 3.00)", and
// std::format("{}", DoubleVec{1, 2.5}) is "[ 1 2.5 ]". The shortest text of a number that reads
// back as the same number is the default, unlike in streams, which round to six digits.
//
// <format> takes long to compile: of the other headers only kilnbase.h includes this one.
#pragma once

#include <version>

#ifdef __cpp_lib_format

#include <algorithm>
#include <concepts>
#include <format>
#include <string_view>

#include <kilnbase/geometry/Tangle.h>
#include <kilnbase/geometry/TboundingBox.h>
#include <kilnbase/geometry/TpostXformMatrix.h>
#include <kilnbase/geometry/detail/numbers.h>
#include <kilnbase/linalg/GenMat.h>
#include <kilnbase/linalg/Owned.h>
#include <kilnbase/linalg/PackedMat.h>
#include <kilnbase/linalg/Vec.h>

namespace vxKilnBase::detail {

/// The values that print as a list of numbers in parentheses.
template <class Value>
concept Tuple = std::derived_from<Value, T3dDblPoint> || std::derived_from<Value, T4dDblPoint> ||
    std::derived_from<Value, T4dDblVector> || std::derived_from<Value, Tscale> ||
    std::derived_from<Value, Tplane> || std::derived_from<Value, Tquaternion>;

/// Writes numbers by the same options, and the text around them.
template <class T>
class NumbersFormatter : public std::formatter<T> {
 protected:
  void write(auto& context, std::string_view text) const {
    context.advance_to(std::ranges::copy(text, context.out()).out);
  }
  void number(auto& context, T x) const {
    context.advance_to(std::formatter<T>::format(x, context));
  }
  void tuple(auto& context, const auto& numbers) const {
    std::string_view separator = "(";
    for (const T& x : numbers) {
      write(context, separator);
      number(context, x);
      separator = ", ";
    }
    write(context, numbers.begin() == numbers.end() ? "()" : ")");
  }
};

/// Matrices with a line for each row.
template <class Matrix>
class MatrixFormatter : public NumbersFormatter<typename Matrix::Element> {
 public:
  auto format(const Matrix& a, auto& context) const {
    this->write(context, std::format("{}x{} [\n", a.rows(), a.cols()));
    for (unsigned i = 0; i < a.rows(); ++i) {
      for (unsigned j = 0; j < a.cols(); ++j) {
        this->number(context, a(static_cast<int>(i), static_cast<int>(j)));
        this->write(context, " ");
      }
      this->write(context, "\n");
    }
    this->write(context, "]");
    return context.out();
  }
};

}  // namespace vxKilnBase::detail

template <class T>
struct std::formatter<vxKilnBase::Vec<T>> : vxKilnBase::detail::NumbersFormatter<T> {
  auto format(const vxKilnBase::Vec<T>& v, auto& context) const {
    const int perLine = v.numberPerLine < 1 ? 5 : v.numberPerLine;
    const bool oneLine = static_cast<unsigned>(perLine) >= v.length();
    this->write(context, oneLine ? "[ " : "[\n");
    for (auto at = v.begin(); at != v.end(); ++at) {
      if (at != v.begin()) this->write(context, at.place() % perLine == 0 ? "\n" : " ");
      this->number(context, *at);
    }
    this->write(context, oneLine ? " ]" : "\n]");
    return context.out();
  }
};

template <class T>
struct std::formatter<vxKilnBase::GenMat<T>>
    : vxKilnBase::detail::MatrixFormatter<vxKilnBase::GenMat<T>> {};

template <class Packing>
struct std::formatter<vxKilnBase::PackedMat<Packing>>
    : vxKilnBase::detail::MatrixFormatter<vxKilnBase::PackedMat<Packing>> {};

template <class View>
struct std::formatter<vxKilnBase::Owned<View>> : std::formatter<View> {};

template <vxKilnBase::detail::Tuple Value>
struct std::formatter<Value> : vxKilnBase::detail::NumbersFormatter<double> {
  auto format(const Value& value, auto& context) const {
    this->tuple(context, vxKilnBase::detail::numbersOf(value));
    return context.out();
  }
};

template <>
struct std::formatter<Tangle> : vxKilnBase::detail::NumbersFormatter<double> {
  auto format(const Tangle& angle, auto& context) const {
    number(context, angle.degrees());
    write(context, " degrees");
    return context.out();
  }
};

template <std::derived_from<T4dDblMatrix> Matrix>
struct std::formatter<Matrix> : vxKilnBase::detail::NumbersFormatter<double> {
  auto format(const T4dDblMatrix& m, auto& context) const {
    for (std::size_t i = 0; i < 16; ++i) {
      this->number(context, m[i / 4][i % 4]);
      this->write(context, i % 4 == 3 ? "\n" : " ");
    }
    return context.out();
  }
};

template <>
struct std::formatter<TpostXformMatrix> : vxKilnBase::detail::NumbersFormatter<double> {
  auto format(const TpostXformMatrix& xform, auto& context) const {
    write(context, "translation ");
    tuple(context, vxKilnBase::detail::numbersOf(xform.translation()));
    write(context, ", rotation ");
    tuple(context, vxKilnBase::detail::numbersOf(xform.rotation()));
    write(context, ", scale ");
    tuple(context, vxKilnBase::detail::numbersOf(xform.scale()));
    return context.out();
  }
};

template <>
struct std::formatter<TboundingBox> : vxKilnBase::detail::NumbersFormatter<double> {
  auto format(const TboundingBox& box, auto& context) const {
    tuple(context, box.minCorner());
    write(context, " to ");
    tuple(context, box.maxCorner());
    return context.out();
  }
};

#endif
