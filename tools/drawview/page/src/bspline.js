// B-spline curves and surfaces, rational ones too: values and derivatives.
// The basis functions are those of Piegl and Tiller, The NURBS Book, algorithms A2.1 and A2.3.

import { maxCoordinate } from './numbers.js';

const maxDegree = 31;

/** What is wrong with a knot vector for `count` poles, or ''. */
function knotFault(knots, degree, count) {
  if (degree < 1 || degree > maxDegree) return `degree ${degree}`;
  if (count <= degree) return `${count} poles for degree ${degree}`;
  if (knots.length !== count + degree + 1) return `${knots.length} knots for ${count} poles`;
  for (let i = 0; i < knots.length; ++i) {
    if (!Number.isFinite(knots[i])) return 'a knot that is not finite';
    if (i > 0 && knots[i] < knots[i - 1]) return 'knots that fall';
  }
  return knots[degree] < knots[count] ? '' : 'an empty domain';
}

/** What is wrong with poles of `dimension` coordinates (and a weight, if rational), or ''. */
function poleFault(poles, dimension, rational) {
  const stride = dimension + (rational ? 1 : 0);
  for (let i = 0; i < poles.length; ++i) {
    if (!(Math.abs(poles[i]) <= maxCoordinate)) return 'a pole that is not finite';
    if (rational && i % stride === dimension && poles[i] <= 0) return `weight ${poles[i]}`;
  }
  return '';
}

/** Why a curve cannot be drawn, or ''. @param {import('./format.js').Curve} curve */
export function curveFault(curve) {
  const count = curve.poles.length / (curve.dimension + (curve.rational ? 1 : 0));
  return (
    knotFault(curve.knots, curve.degree, count) ||
    poleFault(curve.poles, curve.dimension, curve.rational)
  );
}

/** Why a surface cannot be drawn, or ''. @param {import('./format.js').Surface} surface */
export function surfaceFault(surface) {
  return (
    knotFault(surface.knotsU, surface.degreeU, surface.countU) ||
    knotFault(surface.knotsV, surface.degreeV, surface.countV) ||
    poleFault(surface.poles, 3, surface.rational)
  );
}

/** The distinct knots of the domain, first to last. */
export function domainKnots(knots, degree) {
  const last = knots.length - degree - 1;
  return [...new Set(knots.subarray(degree, last + 1))];
}

/** The index i with knots[i] <= t < knots[i + 1]; the last span at the end of the domain. */
export function findSpan(knots, degree, t) {
  const last = knots.length - degree - 2;
  if (t >= knots[last + 1]) {
    let span = last;
    while (span > degree && knots[span] === knots[span + 1]) --span;
    return span;
  }
  let low = degree;
  let high = last + 1;
  while (high - low > 1) {
    const middle = (low + high) >> 1;
    if (t < knots[middle]) high = middle;
    else low = middle;
  }
  return low;
}

// Memory for one call of basisAt, which is called for every vertex.
const table = new Float64Array((maxDegree + 1) ** 2);
const left = new Float64Array(maxDegree + 1);
const right = new Float64Array(maxDegree + 1);
const maxOrder = 2;
const rows = Array.from({ length: maxOrder + 1 }, () => new Float64Array(maxOrder + 1));

/** Fills the table with the triangle of basis values and knot differences of A2.3. */
function fillTable(knots, degree, span, t) {
  const width = degree + 1;
  table[0] = 1;
  for (let j = 1; j <= degree; ++j) {
    left[j] = t - knots[span + 1 - j];
    right[j] = knots[span + j] - t;
    let saved = 0;
    for (let r = 0; r < j; ++r) {
      table[j * width + r] = right[r + 1] + left[j - r];
      const value = table[r * width + j - 1] / table[j * width + r];
      table[r * width + j] = saved + right[r + 1] * value;
      saved = left[j - r] * value;
    }
    table[j * width + j] = saved;
  }
}

/** Derivatives 1 to `order` of basis function r of a span, from the table, into rows of `out`. */
function basisDerivatives(degree, r, order, out) {
  const width = degree + 1;
  rows[0][0] = 1;
  for (let k = 1; k <= order; ++k) {
    const previous = rows[k - 1];
    const row = rows[k].fill(0);
    const rest = degree - k;
    let sum = 0;
    for (let j = 0; j <= k; ++j) {
      const column = r - k + j;
      if (column < 0 || column > rest) continue;
      const below = table[(rest + 1) * width + column];
      row[j] = ((j < k ? previous[j] : 0) - (j > 0 ? previous[j - 1] : 0)) / below;
      sum += row[j] * table[column * width + rest];
    }
    out[k * width + r] = sum;
  }
}

/**
 * The basis at t: values in row 0 of `values`, derivatives up to `order` (at most 2) in the rows below, each of
 * degree + 1 numbers, for the poles span - degree to span.
 */
export function basisAt(knots, degree, t, order) {
  const span = findSpan(knots, degree, t);
  const width = degree + 1;
  fillTable(knots, degree, span, t);
  const values = new Array((order + 1) * width).fill(0);
  const orders = Math.min(order, degree);
  for (let r = 0; r <= degree; ++r) {
    values[r] = table[r * width + degree];
    basisDerivatives(degree, r, orders, values);
  }
  for (let k = 1, factor = degree; k <= orders; factor *= degree - k, ++k) {
    for (let r = 0; r <= degree; ++r) values[k * width + r] *= factor;
  }
  return { first: span - degree, width, values };
}

/** The point of a curve at t into `out`. */
export function curvePoint(curve, t, out) {
  const { dimension, rational, poles } = curve;
  const stride = dimension + (rational ? 1 : 0);
  const basis = basisAt(curve.knots, curve.degree, t, 0);
  out.fill(0, 0, dimension);
  let weights = 0;
  for (let i = 0; i < basis.width; ++i) {
    const pole = (basis.first + i) * stride;
    const factor = basis.values[i] * (rational ? poles[pole + dimension] : 1);
    for (let k = 0; k < dimension; ++k) out[k] += factor * poles[pole + k];
    weights += factor;
  }
  if (rational) for (let k = 0; k < dimension; ++k) out[k] /= weights;
  return out;
}

/** Sums one derivative of the surface's numerator (x y z) and weight into `out` at `offset`. */
function sumPoles(surface, basisU, basisV, orderU, orderV, out, offset) {
  const { poles, rational, countV } = surface;
  const stride = rational ? 4 : 3;
  let x = 0;
  let y = 0;
  let z = 0;
  let w = 0;
  for (let i = 0; i < basisU.width; ++i) {
    const factorU = basisU.values[orderU * basisU.width + i];
    if (factorU === 0) continue;
    let pole = ((basisU.first + i) * countV + basisV.first) * stride;
    for (let j = 0; j < basisV.width; ++j, pole += stride) {
      let factor = factorU * basisV.values[orderV * basisV.width + j];
      if (rational) factor *= poles[pole + 3];
      x += factor * poles[pole];
      y += factor * poles[pole + 1];
      z += factor * poles[pole + 2];
      w += factor;
    }
  }
  out[offset] = x;
  out[offset + 1] = y;
  out[offset + 2] = z;
  out[offset + 3] = w;
}

const derivativeOrders = [[0, 0], [1, 0], [0, 1], [2, 0], [1, 1], [0, 2]];
/** For each derivative of a quotient: the terms factor * weight derivative * earlier result. */
const quotientTerms = [
  [],
  [[1, 1, 0]],
  [[1, 2, 0]],
  [[2, 1, 1], [1, 3, 0]],
  [[1, 1, 2], [1, 2, 1], [1, 4, 0]],
  [[2, 2, 2], [1, 5, 0]],
];
const sums = new Float64Array(24);

/**
 * Derivatives of a surface from the bases of its parameters: S Su Sv [Suu Suv Svv], three numbers
 * each, into `out`. `count` tells how many: 1, 3 or 6. Rational ones follow from the quotient rule.
 */
export function surfaceDerivatives(surface, basisU, basisV, count, out) {
  for (let d = 0; d < count; ++d) {
    const [orderU, orderV] = derivativeOrders[d];
    sumPoles(surface, basisU, basisV, orderU, orderV, sums, 4 * d);
    for (let k = 0; k < 3; ++k) {
      let value = sums[4 * d + k];
      if (surface.rational) {
        for (const [factor, weight, earlier] of quotientTerms[d]) {
          value -= factor * sums[4 * weight + 3] * out[3 * earlier + k];
        }
        value /= sums[3];
      }
      out[3 * d + k] = value;
    }
  }
  return out;
}

/** The same at parameters u and v. */
export function surfaceAt(surface, u, v, count, out) {
  const order = count > 3 ? 2 : count > 1 ? 1 : 0;
  const basisU = basisAt(surface.knotsU, surface.degreeU, u, order);
  const basisV = basisAt(surface.knotsV, surface.degreeV, v, order);
  return surfaceDerivatives(surface, basisU, basisV, count, out);
}
