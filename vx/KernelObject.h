// Objects of the geometry kernel: B-spline curves and surfaces, surfaces trimmed by curves, and
// shells of such.
//
//     const vxgk::Curve line(1, {0, 0, 1, 1}, {{0, 0, 0}, {4, 2, 0}});
//     const vxLinear::Point middle = line.at(0.5);  // (2, 1, 0)
//
// An object is always whole and stays as it was made: what is made of numbers that make no object
// throws a `vxUtil::Error` that tells why. What all splines keep:
// - 1 <= degree <= kMaxDegree, and poles >= degree + 1;
// - knots = poles + degree + 1, all finite; knots[i] <= knots[i + 1]; no more than degree + 1 knots
//   are equal, so knots[i] < knots[i + degree + 1];
// - the parameters lie between knots[degree] and knots[poles], and these two differ;
// - weights: none, or one a pole, finite and above 0.
//
// Poles may be any numbers, NaN and infinity as well. A pole of a rational spline has its place in
// space and is not multiplied by its weight. The format of files is told in docs/mesh-format.md.
#pragma once

#include <cstddef>
#include <cstdio>

#include <vx/Containers.h>
#include <vx/Error.h>
#include <vx/Linear.h>
#include <vx/export.h>

namespace vxgk {

/// The numbers of the kinds of objects, as `vxgk_id_object` answers them.
enum Id {
  kCurve = 11,
  kSurface = 20,
  kTrimmedSurface = 27,
  kShell = 28,
};

/// The highest degree of curves and surfaces.
constexpr int kMaxDegree = 31;

/// One of the objects below.
class VX_API Object {
 public:
  virtual ~Object();
  /// What kind of object this is.
  virtual int id() const = 0;

 protected:
  Object(const Object&) = default;
  Object& operator=(const Object&) = default;

 private:
  friend class Curve;
  friend class Surface;
  friend class TrimmedSurface;
  friend class Shell;
  friend class ForeignObject;
  Object() = default;
};

/// A B-spline curve in space (`vxLinear::Point`) or in the plane of a surface's parameters
/// (`vxLinear::Point2`).
template <class Pole>
class VX_API SplineCurve {
 public:
  /// Throws `vxUtil::Error`.
  SplineCurve(int degree, vx::vector<double> knots, vx::vector<Pole> poles,
              vx::vector<double> weights = {});

  /// As given to the constructor.
  int degree() const { return degree_; }
  const vx::vector<double>& knots() const { return knots_; }
  const vx::vector<Pole>& poles() const { return poles_; }
  /// One weight a pole when the curve is rational; else empty.
  const vx::vector<double>& weights() const { return weights_; }
  /// Whether there are weights.
  bool isRational() const { return !weights_.empty(); }

  /// The first parameter.
  double start() const { return knots_[static_cast<std::size_t>(degree_)]; }
  /// The last parameter.
  double end() const { return knots_[poles_.size()]; }
  /// The point at a parameter, by the recursion of Cox and de Boor. Parameters before the start
  /// count as the start, those beyond the end as the end. O(degree² + log poles).
  Pole at(double t) const;

  friend bool operator==(const SplineCurve&, const SplineCurve&) = default;

 private:
  int degree_;
  vx::vector<double> knots_;
  vx::vector<Pole> poles_;
  vx::vector<double> weights_;
};

/// A curve in the plane of a surface's parameters.
using ParameterCurve = SplineCurve<vxLinear::Point2>;

/// A B-spline curve in space.
class VX_API Curve final : public Object, public SplineCurve<vxLinear::Point> {
 public:
  using SplineCurve::SplineCurve;
  int id() const override;
};

/// A tensor-product B-spline surface. The pole of row i (along u) and column j (along v) is
/// `poles()[i * countV() + j]`, its weight `weights()[i * countV() + j]`.
class VX_API Surface final : public Object {
 public:
  /// How one of the two parameters goes.
  struct Direction {
    /// Degree and knots of one parameter, as of a curve.
    int degree;
    vx::vector<double> knots;

    /// The number of poles along this direction.
    std::size_t count() const { return knots.size() - static_cast<std::size_t>(degree) - 1; }
    /// The first and the last parameter.
    double start() const { return knots[static_cast<std::size_t>(degree)]; }
    double end() const { return knots[count()]; }

    friend bool operator==(const Direction&, const Direction&) = default;
  };

  /// Throws `vxUtil::Error`.
  Surface(Direction u, Direction v, vx::vector<vxLinear::Point> poles,
          vx::vector<double> weights = {});
  int id() const override;

  /// As given to the constructor.
  const Direction& u() const { return u_; }
  const Direction& v() const { return v_; }
  /// The number of rows and of columns of poles.
  std::size_t countU() const { return u_.count(); }
  std::size_t countV() const { return v_.count(); }
  /// Row by row: see above.
  const vx::vector<vxLinear::Point>& poles() const { return poles_; }
  /// One weight a pole when the surface is rational; else empty.
  const vx::vector<double>& weights() const { return weights_; }
  /// Whether there are weights.
  bool isRational() const { return !weights_.empty(); }

  /// The point at two parameters, which count as the nearest ones of the surface.
  vxLinear::Point at(double u, double v) const;

  /// Whether all numbers are the same.
  friend bool operator==(const Surface& a, const Surface& b) {
    return a.u_ == b.u_ && a.v_ == b.v_ && a.poles_ == b.poles_ && a.weights_ == b.weights_;
  }

 private:
  Direction u_;
  Direction v_;
  vx::vector<vxLinear::Point> poles_;
  vx::vector<double> weights_;
};

/// A part of a surface: the parameters (u, v) from which a ray meets the loops an odd number of
/// times (the even-odd rule). Without loops the whole surface.
class VX_API TrimmedSurface final : public Object {
 public:
  /// Curves of which each begins where the one before ends, and the first where the last ends. Ends
  /// that only nearly meet count as joined by a straight line.
  using Loop = vx::vector<ParameterCurve>;

  /// Throws `vxUtil::Error` when a loop has no curve.
  TrimmedSurface(Surface surface, vx::vector<Loop> loops);
  int id() const override;

  /// As given to the constructor.
  const Surface& surface() const { return surface_; }
  const vx::vector<Loop>& loops() const { return loops_; }

  /// Whether all numbers are the same.
  friend bool operator==(const TrimmedSurface& a, const TrimmedSurface& b) {
    return a.surface_ == b.surface_ && a.loops_ == b.loops_;
  }

 private:
  Surface surface_;
  vx::vector<Loop> loops_;
};

/// Trimmed surfaces that belong together.
class VX_API Shell final : public Object {
 public:
  /// Any number of faces; their order stays.
  explicit Shell(vx::vector<TrimmedSurface> faces);
  int id() const override;

  /// As given to the constructor.
  const vx::vector<TrimmedSurface>& faces() const { return faces_; }

  /// Whether all numbers are the same.
  friend bool operator==(const Shell& a, const Shell& b) { return a.faces_ == b.faces_; }

 private:
  vx::vector<TrimmedSurface> faces_;
};

/// An object of a kind that only other programs know. Its bytes go from file to file unchanged.
class VX_API ForeignObject final : public Object {
 public:
  /// Throws `vxUtil::Error` when `id` is below 0 or one of `Id`.
  ForeignObject(int id, vx::vector<std::byte> bytes);
  int id() const override;

  /// As given to the constructor.
  const vx::vector<std::byte>& bytes() const { return bytes_; }

 private:
  int id_;
  vx::vector<std::byte> bytes_;
};

}  // namespace vxgk

/// Writes an object at the place where the file stands; null writes the end of the objects. The
/// file is open for binary writing.
VX_API vxUtil::Error vxgk_write(std::FILE* file, const vxgk::Object* object);

/// Reads the next object, which belongs to the caller (`vxgk_delete`). Null at the end of the
/// objects, in an empty file, and with an error. A file that ends before the end of the objects or
/// goes on behind it, that is damaged or holds something else is an error. Memory is taken as the
/// bytes arrive.
VX_API vxgk::Object* vxgk_read(std::FILE* file, vxUtil::Error& error);

/// Deletes an object. Null is ignored.
VX_API void vxgk_delete(vxgk::Object* object);

/// The number of the object's kind.
VX_API int vxgk_id_object(const vxgk::Object* object);
