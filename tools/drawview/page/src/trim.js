// Trimmed surfaces: the part of the parameter plane that loops enclose by the even-odd rule.
//
// The loops become polygons. Each row of the surface's grid is cut into strips at the heights of
// polygon corners; inside a strip no edge begins or ends, so that the edges, sorted from left to
// right, bound trapezoids. A run of cells that no edge meets stays whole; its sides take up the
// corners of the strips beside it, so that no cracks open between them.

import { curvePoint, domainKnots, surfaceAt } from './bspline.js';
import { chordParameters, SurfaceVertices } from './tessellate.js';

/** The polygon of a loop, u and v in turn; its chords follow the surface as closely as the view asks. */
export function loopPolygon(surface, loop, view) {
  const values = new Float64Array(3);
  const polygon = [];
  for (const curve of loop) {
    const at = (t) => curvePoint(curve, t, [0, 0]);
    const place = (t) => [...surfaceAt(surface, ...clampTo(surface, at(t)), 1, values)];
    const knots = domainKnots(curve.knots, curve.degree);
    const parameters = chordParameters(place, knots, 2, view);
    for (const t of parameters) polygon.push(at(t));
  }
  return polygon.filter((p, i) => i === 0 || p[0] !== polygon[i - 1][0] || p[1] !== polygon[i - 1][1]);
}

function clampTo(surface, [u, v]) {
  const clamp = (x, knots, degree) =>
    Math.min(Math.max(x, knots[degree]), knots[knots.length - degree - 1]);
  return [clamp(u, surface.knotsU, surface.degreeU), clamp(v, surface.knotsV, surface.degreeV)];
}

/** The edges of closed polygons, lower end first. */
function edgesOf(polygons) {
  return polygons.flatMap((polygon) =>
    polygon.map((a, i) => {
      const b = polygon[(i + 1) % polygon.length];
      return a[1] <= b[1] ? [a, b] : [b, a];
    }),
  );
}

const isLevel = ([a, b]) => a[1] === b[1];

/** Where an edge passes the height v: at an end exactly when v is not between them. */
function crossing([a, b], v) {
  if (v <= a[1] || a[0] === b[0]) return a[0];
  if (v >= b[1]) return b[0];
  return a[0] + ((v - a[1]) / (b[1] - a[1])) * (b[0] - a[0]);
}

/** The index of the column that holds u. */
function columnOf(lines, u) {
  let low = 0;
  let high = lines.length - 1;
  while (high - low > 1) {
    const middle = (low + high) >> 1;
    if (u < lines[middle]) high = middle;
    else low = middle;
  }
  return low;
}

/** Builds the triangles of the kept area, row by row. */
class Trimmer {
  constructor(surface, lines) {
    this.lines = lines;
    this.vertices = new SurfaceVertices(surface, lines.knots);
    this.triangles = [];
    this.levels = new Map();
  }

  /** The index of the vertex at u, v; vertices at one v share the basis there. */
  vertex(u, v) {
    let level = this.levels.get(v);
    if (!level) {
      level = { basis: this.vertices.basis(1, v), known: new Map() };
      this.levels.set(v, level);
    }
    let index = level.known.get(u);
    if (index === undefined) {
      index = this.vertices.addAt(this.vertices.basis(0, u), level.basis, u, v);
      level.known.set(u, index);
    }
    return index;
  }

  /** Triangles between two chains of [u, v] that go the same way, left and right. */
  zip(left, right) {
    const a = left.map((p) => this.vertex(...p));
    const b = right.map((p) => this.vertex(...p));
    let i = 0;
    let j = 0;
    while (i + 1 < a.length || j + 1 < b.length) {
      const advanceLeft =
        j + 1 === b.length || (i + 1 < a.length && left[i + 1][1] <= right[j + 1][1]);
      const third = advanceLeft ? a[++i] : b[++j];
      const first = advanceLeft ? a[i - 1] : a[i];
      const second = advanceLeft ? b[j] : b[j - 1];
      if (first === second || first === third || second === third) continue;
      this.triangles.push(first, second, third);
    }
  }

  /** The trapezoid between two edges in a strip, cut at the grid lines that meet it. */
  trapezoid(left, right, bottom, top) {
    const { u: lines } = this.lines;
    const [low, high] = [lines[0], lines[lines.length - 1]];
    const chain = (edge) =>
      [bottom, top].map((v) => [Math.min(Math.max(crossing(edge, v), low), high), v]);
    const [first, last] = [chain(left), chain(right)];
    let before = first;
    const from = columnOf(lines, Math.min(first[0][0], first[1][0])) + 1;
    for (let i = from; i < lines.length && lines[i] < Math.max(last[0][0], last[1][0]); ++i) {
      const cut = [0, 1].map((k) => [
        Math.min(Math.max(lines[i], first[k][0]), last[k][0]),
        first[k][1],
      ]);
      this.zip(before, cut);
      before = cut;
    }
    this.zip(before, last);
  }

  /** A row of the grid from `bottom` to `top` that `edges` meet. */
  row(edges, bottom, top) {
    const heights = new Set([bottom, top]);
    const { u: lines } = this.lines;
    const touched = new Uint8Array(lines.length - 1);
    for (const edge of edges) {
      for (const [, v] of edge) if (v > bottom && v < top) heights.add(v);
      const columns = [bottom, top].map((v) => columnOf(lines, crossing(edge, v)));
      touched.fill(1, Math.min(...columns), Math.max(...columns) + 1);
    }
    const cuts = [...heights].sort((a, b) => a - b);
    const rising = edges.filter((edge) => !isLevel(edge));
    this.strips(rising, cuts, touched);
    this.wholeCells(rising, cuts, touched);
  }

  /** The trapezoids of each strip, without the cells that no edge meets. */
  strips(edges, cuts, touched) {
    for (let k = 0; k + 1 < cuts.length; ++k) {
      const [bottom, top] = [cuts[k], cuts[k + 1]];
      const middle = (bottom + top) / 2;
      const across = edges
        .filter(([a, b]) => a[1] <= bottom && b[1] >= top)
        .sort((a, b) => crossing(a, middle) - crossing(b, middle));
      for (const [from, to] of this.runs(touched, 1)) {
        for (let i = 0; i + 1 < across.length; i += 2) {
          this.clipped(across[i], across[i + 1], bottom, top, from, to);
        }
      }
    }
  }

  /** The part of a trapezoid between the lines `from` and `to`. */
  clipped(left, right, bottom, top, from, to) {
    const wall = (u) => [[u, -Infinity], [u, Infinity]];
    const { u: lines } = this.lines;
    const between = (edge) => [bottom, top].map((v) => crossing(edge, v));
    const [low, high] = [lines[from], lines[to]];
    if (Math.max(...between(right)) <= low || Math.min(...between(left)) >= high) return;
    const start = Math.max(...between(left)) <= low ? wall(low) : left;
    const end = Math.min(...between(right)) >= high ? wall(high) : right;
    this.trapezoid(start, end, bottom, top);
  }

  /** The runs of columns whose flag is `value`, as pairs of line indices. */
  runs(touched, value) {
    const runs = [];
    touched.forEach((flag, i) => {
      if (flag !== value) return;
      const last = runs[runs.length - 1];
      if (last && last[1] === i) last[1] = i + 1;
      else runs.push([i, i + 1]);
    });
    return runs;
  }

  /** The cells of a row that no edge meets, where the even-odd rule keeps them. */
  wholeCells(edges, cuts, touched) {
    const { u: lines } = this.lines;
    const middle = (cuts[0] + cuts[1]) / 2;
    const ends = [cuts[0], cuts[cuts.length - 1]];
    const crossings = edges
      .filter(([a, b]) => a[1] <= cuts[0] && b[1] >= cuts[1])
      .map((edge) => crossing(edge, middle));
    for (let i = 0; i + 1 < lines.length; ++i) {
      if (touched[i]) continue;
      const before = crossings.filter((u) => u < (lines[i] + lines[i + 1]) / 2).length;
      if (before % 2 === 0) continue;
      const chain = (column, u) => (touched[column] ? cuts : ends).map((v) => [u, v]);
      this.zip(chain(i - 1, lines[i]), chain(i + 1, lines[i + 1]));
    }
  }
}

/**
 * Triangles of the part of a surface that polygons of u and v enclose.
 * @param {{u: Float64Array, v: Float64Array, knots: number[][]}} lines
 * @param {number[][][]} polygons
 */
export function trimSurface(surface, lines, polygons) {
  const trimmer = new Trimmer(surface, lines);
  const edges = edgesOf(polygons);
  for (let j = 0; j + 1 < lines.v.length; ++j) {
    const [bottom, top] = [lines.v[j], lines.v[j + 1]];
    const inRow = edges.filter(([a, b]) => a[1] < top && b[1] > bottom);
    if (inRow.length > 0) trimmer.row(inRow, bottom, top);
  }
  return { vertices: trimmer.vertices, triangles: trimmer.triangles };
}
