// Curves and surfaces as chords and triangles, as fine as the view asks for.
//
// A view is a function (centre, radius) => the largest chord error allowed inside that ball. It
// answers a fraction of a pixel's size for what is on the screen, and more for the rest.

import { basisAt, curvePoint, domainKnots, surfaceAt, surfaceDerivatives } from './bspline.js';
import { cross, distance, dot, length, pointAt } from './numbers.js';

/** @typedef {(centre: number[], radius: number) => number} View */

const maxCurveDepth = 16;

/** How far `point` lies from the chord from a to b. */
function chordDistance(a, b, point) {
  const [dx, dy, dz] = [b[0] - a[0], b[1] - a[1], (b[2] ?? 0) - (a[2] ?? 0)];
  const [px, py, pz] = [point[0] - a[0], point[1] - a[1], (point[2] ?? 0) - (a[2] ?? 0)];
  const square = dx * dx + dy * dy + dz * dz;
  const t = square > 0 ? Math.min(1, Math.max(0, (px * dx + py * dy + pz * dz) / square)) : 0;
  return Math.hypot(px - t * dx, py - t * dy, pz - t * dz);
}

/**
 * Halves the interval of `ends` until the chord is near `place(t)`; appends parameters after the
 * first end to `out`.
 */
function halve(place, ends, depth, view, out) {
  const [first, last] = ends;
  const middle = (first.t + last.t) / 2;
  const centre = { t: middle, point: place(middle) };
  const quarters = [place((first.t + middle) / 2), place((middle + last.t) / 2)];
  const error = Math.max(
    chordDistance(first.point, last.point, centre.point),
    ...quarters.map((point) => chordDistance(first.point, last.point, point)),
  );
  const reach = distance(first.point, centre.point) + distance(centre.point, last.point);
  if (depth >= maxCurveDepth || !(error > view(centre.point, reach))) {
    out.push(last.t);
    return;
  }
  halve(place, [first, centre], depth + 1, view, out);
  halve(place, [centre, last], depth + 1, view, out);
}

/**
 * Parameters for chords along a path in space, from `knots[0]` to the last of `knots`.
 * @param {(t: number) => number[]} place a new array for each call
 * @param {View} view
 */
export function chordParameters(place, knots, parts, view) {
  const out = [knots[0]];
  for (let span = 0; span + 1 < knots.length; ++span) {
    for (let part = 0; part < parts; ++part) {
      const at = (k) => knots[span] + ((knots[span + 1] - knots[span]) * k) / parts;
      const ends = [part, part + 1].map((k) => ({ t: at(k), point: place(at(k)) }));
      halve(place, ends, 0, view, out);
    }
  }
  return out;
}

/** Parameters for the chords of a curve. @param {View} view */
export function curveParameters(curve, view) {
  const knots = domainKnots(curve.knots, curve.degree);
  const parts = curve.degree === 1 && !curve.rational ? 1 : 2;
  return chordParameters((t) => curvePoint(curve, t, [0, 0, 0]), knots, parts, view);
}

// Grid lines of a surface lie at knots and at k / 2^gridBits of the way to the next knot; a line's
// key is an integer, so that lines that several cells ask for are one line.
const gridBits = 20;
const gridSteps = 2 ** gridBits;
const maxGridPoints = 120_000;
/** A cell whose curvature asks for more steps than this is looked at in halves. */
const maxStepsPerCell = 8;

/** The length of `vector` without its part along `axis`. */
function lengthAcross(vector, axis) {
  const square = dot(axis, axis);
  return square > 0 ? length(cross(vector, axis)) / Math.sqrt(square) : length(vector);
}

/**
 * What bends chords away from a surface: Suu across Su, Suv along the normal, Svv across Sv. (Along
 * the tangents they only shift points within the surface.)
 */
function bends(values) {
  const [su, sv, suu, suv, svv] = [1, 2, 3, 4, 5].map((k) => pointAt(values, k));
  const normal = cross(su, sv);
  const size = length(normal);
  const twist = size > 1e-12 * length(su) * length(sv) ? Math.abs(dot(suv, normal)) / size : length(suv);
  return [lengthAcross(suu, su), twist, lengthAcross(svv, sv)];
}

/** The largest bends and a ball of a surface's cell, from 3 x 3 samples. */
function sampleCell(surface, u, v) {
  const second = [0, 0, 0];
  const points = [];
  const values = new Float64Array(18);
  for (const fractionU of [0, 0.5, 1]) {
    for (const fractionV of [0, 0.5, 1]) {
      surfaceAt(surface, u[0] + (u[1] - u[0]) * fractionU, v[0] + (v[1] - v[0]) * fractionV, 6, values);
      points.push(pointAt(values, 0));
      bends(values).forEach((value, k) => (second[k] = Math.max(second[k], value)));
    }
  }
  const centre = points[4];
  return { second, centre, radius: 1.3 * Math.max(...points.map((p) => distance(p, centre))) };
}

/** Steps in u and v, powers of two, for chord errors of about `tolerance` in a cell, at most twice that. */
function cellSteps(second, sizeU, sizeV, tolerance) {
  const steps = (size, value) => Math.sqrt((size * size * value) / (4 * tolerance));
  let stepsU = Math.max(1, steps(sizeU, second[0]));
  let stepsV = Math.max(1, steps(sizeV, second[2]));
  const twist = (sizeU * sizeV * second[1]) / (4 * tolerance * stepsU * stepsV);
  if (twist > 1) {
    stepsU *= Math.sqrt(twist);
    stepsV *= Math.sqrt(twist);
  }
  const power = (count) => 2 ** Math.ceil(Math.log2(Math.min(count, gridSteps)));
  return [power(stepsU), power(stepsV)];
}

/** The grid of one surface while it is being found: distinct knots and the keys of lines. */
class Grid {
  constructor(surface, view) {
    this.surface = surface;
    this.view = view;
    this.knots = [
      domainKnots(surface.knotsU, surface.degreeU),
      domainKnots(surface.knotsV, surface.degreeV),
    ];
    this.keys = this.knots.map((knots) => new Set(knots.map((_, i) => i * gridSteps)));
  }

  parameter(direction, key) {
    const knots = this.knots[direction];
    const span = Math.min(Math.floor(key / gridSteps), knots.length - 2);
    const fraction = (key - span * gridSteps) / gridSteps;
    return knots[span] + (knots[span + 1] - knots[span]) * fraction;
  }

  refineAll() {
    const [countU, countV] = this.knots.map((knots) => knots.length - 1);
    for (let i = 0; i < countU; ++i) {
      for (let j = 0; j < countV; ++j) this.refine([i * gridSteps, j * gridSteps], [gridSteps, gridSteps]);
    }
  }

  get size() {
    return this.keys[0].size * this.keys[1].size;
  }

  /** Adds the lines that the cell at keys `start` needs, looking at its halves when it is large. */
  refine(start, size) {
    if (this.size > maxGridPoints) return;
    const ends = [0, 1].map((d) => [
      this.parameter(d, start[d]),
      this.parameter(d, start[d] + size[d]),
    ]);
    const { second, centre, radius } = sampleCell(this.surface, ...ends);
    const tolerance = this.view(centre, radius);
    const spans = ends.map(([low, high]) => high - low);
    const steps = cellSteps(second, ...spans, tolerance);
    const direction = steps[0] >= steps[1] ? 0 : 1;
    if (steps[direction] > maxStepsPerCell && size[direction] > 2) {
      const half = [...size];
      half[direction] /= 2;
      this.refine(start, half);
      const next = [...start];
      next[direction] += half[direction];
      this.refine(next, half);
      return;
    }
    for (const d of [0, 1]) {
      const count = Math.min(steps[d], size[d]);
      for (let k = 0; k <= count; ++k) this.keys[d].add(start[d] + (k * size[d]) / count);
    }
  }

  lines(direction) {
    const keys = [...this.keys[direction]].sort((a, b) => a - b);
    return Float64Array.from(keys, (key) => this.parameter(direction, key));
  }
}

/**
 * The parameters of grid lines for a surface: ascending u and v.
 * @param {View} view
 */
export function surfaceLines(surface, view) {
  for (let factor = 1; ; factor *= 4) {
    const grid = new Grid(surface, (centre, radius) => factor * view(centre, radius));
    grid.refineAll();
    if (grid.size <= maxGridPoints || factor > 1e6) {
      return { u: grid.lines(0), v: grid.lines(1), knots: grid.knots };
    }
  }
}

const derivatives = new Float64Array(9);

/** A unit normal at u, v: beside a point where the derivatives are parallel when they are. */
function unitNormal(surface, u, v, knots) {
  let normal = cross(pointAt(derivatives, 1), pointAt(derivatives, 2));
  let size = length(normal);
  const middle = knots.map((list) => (list[0] + list[list.length - 1]) / 2);
  for (let step = 1e-6; step < 1e-2; step *= 10) {
    const flat = length(pointAt(derivatives, 1)) * length(pointAt(derivatives, 2));
    if (size > 1e-9 * flat && size > 0) break;
    surfaceAt(surface, u + (middle[0] - u) * step, v + (middle[1] - v) * step, 3, derivatives);
    normal = cross(pointAt(derivatives, 1), pointAt(derivatives, 2));
    size = length(normal);
  }
  return size > 0 ? normal.map((x) => x / size) : [0, 0, 1];
}

/** Collects vertices on a surface: positions and normals in double precision. */
export class SurfaceVertices {
  constructor(surface, knots) {
    this.surface = surface;
    this.knots = knots;
    this.positions = [];
    this.normals = [];
    this.parameters = [];
  }

  get count() {
    return this.positions.length / 3;
  }

  addAt(basisU, basisV, u, v) {
    surfaceDerivatives(this.surface, basisU, basisV, 3, derivatives);
    this.positions.push(derivatives[0], derivatives[1], derivatives[2]);
    this.normals.push(...unitNormal(this.surface, u, v, this.knots));
    this.parameters.push(u, v);
    return this.count - 1;
  }

  /** The basis in direction 0 (u) or 1 (v) that `addAt` takes. */
  basis(direction, t) {
    const { knotsU, degreeU, knotsV, degreeV } = this.surface;
    return direction === 0 ? basisAt(knotsU, degreeU, t, 1) : basisAt(knotsV, degreeV, t, 1);
  }
}

/** Triangles of a whole surface on its grid lines; vertex (i, j) has the index i * lines.v.length + j. */
export function tessellateSurface(surface, lines) {
  const vertices = new SurfaceVertices(surface, lines.knots);
  const [basesU, basesV] = [lines.u, lines.v].map((list, d) => Array.from(list, (t) => vertices.basis(d, t)));
  const triangles = [];
  const width = lines.v.length;
  basesU.forEach((basisU, i) =>
    basesV.forEach((basisV, j) => {
      vertices.addAt(basisU, basisV, lines.u[i], lines.v[j]);
      if (i === 0 || j === 0) return;
      const corner = i * width + j;
      triangles.push(corner - width - 1, corner - 1, corner);
      triangles.push(corner - width - 1, corner, corner - width);
    }),
  );
  return { vertices, triangles };
}

/** The rows of grid vertices along knots, borders included: lists of vertex indices. */
export function knotRows(lines) {
  const width = lines.v.length;
  const rows = [];
  lines.u.forEach((u, i) => {
    if (lines.knots[0].includes(u)) rows.push(Array.from(lines.v, (_, j) => i * width + j));
  });
  lines.v.forEach((v, j) => {
    if (lines.knots[1].includes(v)) rows.push(Array.from(lines.u, (_, i) => i * width + j));
  });
  return rows;
}
