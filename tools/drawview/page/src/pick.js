// Picking: what lies under a pixel, found from the coordinates themselves in double precision.

import { along, Box, distance, dot, subtract } from './numbers.js';

const trianglesPerChunk = 512;

/** Triangles in chunks with boxes, so that a ray looks at few of them. */
export class TriangleIndex {
  constructor(positions, triangles) {
    Object.assign(this, { positions, triangles });
    this.chunks = [];
    const step = 3 * trianglesPerChunk;
    for (let first = 0; first < triangles.length; first += step) {
      const last = Math.min(first + step, triangles.length);
      const box = new Box();
      for (let i = first; i < last; ++i) box.addAt(positions, 3 * triangles[i]);
      this.chunks.push({ first, last, box });
    }
  }

  /** The nearest triangle that a ray meets where the picker's clipping plane keeps it, or null. */
  hit(ray, picker) {
    let best = null;
    for (const { first, last, box } of this.chunks) {
      if (!meetsBox(ray, box)) continue;
      for (let i = first; i < last; i += 3) {
        const hit = this.meet(ray, i);
        if (!hit || (best && hit.t >= best.t)) continue;
        const point = along(ray.origin, ray.direction, hit.t);
        if (picker.keeps(point)) best = { ...hit, point, triangle: i / 3 };
      }
    }
    return best;
  }

  /** Where a ray meets the triangle at i: distance and barycentric weights (Moeller and Trumbore). */
  meet({ origin: o, direction: d }, i) {
    const { positions: p, triangles } = this;
    const a = 3 * triangles[i];
    const b = 3 * triangles[i + 1];
    const c = 3 * triangles[i + 2];
    const [x1, y1, z1] = [p[b] - p[a], p[b + 1] - p[a + 1], p[b + 2] - p[a + 2]];
    const [x2, y2, z2] = [p[c] - p[a], p[c + 1] - p[a + 1], p[c + 2] - p[a + 2]];
    const qx = d[1] * z2 - d[2] * y2;
    const qy = d[2] * x2 - d[0] * z2;
    const qz = d[0] * y2 - d[1] * x2;
    const determinant = x1 * qx + y1 * qy + z1 * qz;
    if (determinant === 0) return null;
    const [sx, sy, sz] = [o[0] - p[a], o[1] - p[a + 1], o[2] - p[a + 2]];
    const u = (sx * qx + sy * qy + sz * qz) / determinant;
    if (!(u >= -1e-9 && u <= 1 + 1e-9)) return null;
    const rx = sy * z1 - sz * y1;
    const ry = sz * x1 - sx * z1;
    const rz = sx * y1 - sy * x1;
    const v = (d[0] * rx + d[1] * ry + d[2] * rz) / determinant;
    if (!(v >= -1e-9 && u + v <= 1 + 1e-9)) return null;
    const t = (x2 * rx + y2 * ry + z2 * rz) / determinant;
    return t > 0 ? { t, weights: [1 - u - v, u, v] } : null;
  }
}

function meetsBox({ origin, direction }, { low, high }) {
  let near = 0;
  let far = Infinity;
  for (let k = 0; k < 3; ++k) {
    if (direction[k] === 0) {
      if (origin[k] < low[k] || origin[k] > high[k]) return false;
      continue;
    }
    const first = (low[k] - origin[k]) / direction[k];
    const second = (high[k] - origin[k]) / direction[k];
    near = Math.max(near, Math.min(first, second));
    far = Math.min(far, Math.max(first, second));
  }
  const slack = 1e-9 * (Math.abs(near) + 1);
  return near <= far + slack;
}

/** How many pixels off and how deep a near hit lies, as one number: in front and exact wins. */
const rank = (t, pixels, pixel) => t + 3 * pixels * pixel;

/** The best point of an array within `reach` pixels of a ray, as `describe(index)` tells it. */
export function nearPoint({ origin: o, direction: d, pixelAt }, array, reach, picker, describe) {
  let best = -1;
  let bestRank = Infinity;
  let bestT = 0;
  for (let i = 0; i < array.length; i += 3) {
    const x = array[i] - o[0];
    const y = array[i + 1] - o[1];
    const z = array[i + 2] - o[2];
    const t = x * d[0] + y * d[1] + z * d[2];
    if (t <= 0) continue;
    const limit = reach * pixelAt(t);
    const square = (x - t * d[0]) ** 2 + (y - t * d[1]) ** 2 + (z - t * d[2]) ** 2;
    if (square > limit * limit) continue;
    const value = rank(t, Math.sqrt(square) / pixelAt(t), pixelAt(t));
    if (value < bestRank && picker.keeps([array[i], array[i + 1], array[i + 2]])) {
      [best, bestRank, bestT] = [i / 3, value, t];
    }
  }
  return best < 0 ? null : { ...describe(best), t: bestT, rank: bestRank };
}

/** Where on a segment (0 to 1) a ray passes nearest. */
function nearestOnSegment({ origin, direction }, a, b) {
  const along1 = subtract(b, a);
  const offset = subtract(a, origin);
  const square = dot(along1, along1);
  const slant = dot(along1, direction);
  const determinant = square - slant * slant;
  if (!(determinant > 1e-14 * square)) return 0;
  const s = (slant * dot(direction, offset) - dot(along1, offset)) / determinant;
  return Math.min(1, Math.max(0, s));
}

/** The best segment within `reach` pixels of a ray, as `describe(index, fraction)` tells it. */
export function nearSegment(ray, array, reach, picker, describe) {
  let best = null;
  for (let i = 0; i < array.length; i += 6) {
    const a = [array[i], array[i + 1], array[i + 2]];
    const b = [array[i + 3], array[i + 4], array[i + 5]];
    const s = nearestOnSegment(ray, a, b);
    const point = a.map((x, k) => x + s * (b[k] - x));
    const t = dot(subtract(point, ray.origin), ray.direction);
    if (t <= 0) continue;
    const pixel = ray.pixelAt(t);
    const pixels = distance(point, along(ray.origin, ray.direction, t)) / pixel;
    const value = rank(t, pixels, pixel);
    if (pixels > reach || (best && value >= best.rank) || !picker.keeps(point)) continue;
    best = { i: i / 6, s, t, rank: value };
  }
  return best && { ...describe(best.i, best.s), t: best.t, rank: best.rank };
}

/** What a pick may take: how near, and on which side of the clipping plane. */
export class Picker {
  /** @param {number} reach in pixels @param {(point: number[]) => boolean} keeps */
  constructor(reach, keeps) {
    this.reach = reach;
    this.keeps = keeps;
  }

  /** The one of `points` within reach of the ray, with its name as a detail, else `otherwise`. */
  snap(ray, points, names, otherwise) {
    for (let i = 0; i < points.length; ++i) {
      const offset = subtract(points[i], ray.origin);
      const t = dot(offset, ray.direction);
      const off = distance(points[i], along(ray.origin, ray.direction, t));
      if (off <= this.reach * ray.pixelAt(t) && this.keeps(points[i])) {
        return { point: points[i], details: [['at', names[i]]] };
      }
    }
    return { point: otherwise };
  }

  /** The best hit of several layers: thin things win over faces unless they lie behind them. */
  choose(ray, layers) {
    const hits = [];
    for (const layer of layers) {
      const hit = layer.pick(ray, this);
      if (hit) hits.push({ ...hit, layer });
    }
    const nearest = (list, key) => list.reduce((a, b) => (a && a[key] <= b[key] ? a : b), null);
    const face = nearest(hits.filter((hit) => hit.solid), 't');
    const slack = face ? 2 * this.reach * ray.pixelAt(face.t) : 0;
    const thin = hits.filter((hit) => !hit.solid && (!face || hit.t <= face.t + slack));
    return nearest(thin, 'rank') ?? face;
  }
}
