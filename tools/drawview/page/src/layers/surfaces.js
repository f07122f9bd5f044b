// The layers of B-spline surfaces: whole, trimmed, and shells of trimmed ones.

import { curveFault, surfaceAt, surfaceFault } from '../bspline.js';
import { Box, cross, dot, pointAt, subtract } from '../numbers.js';
import { TriangleIndex } from '../pick.js';
import { knotRows, surfaceLines, tessellateSurface } from '../tessellate.js';
import { loopPolygon, trimSurface } from '../trim.js';
import { polesOf } from './curves.js';
import { Layer, rowSegments } from './layer.js';

/** The hairs of normals along each parameter direction of a face. */
const normalsPerSide = 8;

/** A surface of the frame with its loops (null: the whole surface) and its present triangles. */
class Face {
  constructor(surface, loops, index, face) {
    Object.assign(this, { surface, loops, index, face });
    this.poles = polesOf(surface.poles, surface.rational);
    this.box = new Box();
    for (let i = 0; i < this.poles.length; i += 3) this.box.addAt(this.poles, i);
    this.anchor = this.box.centre;
    this.parts = [];
  }

  /** Finds the triangles that a view asks for. @returns {boolean} whether they changed */
  tessellate(view, isCoarse) {
    const lines = surfaceLines(this.surface, view.chord);
    const polygons = this.loops?.map((loop) => loopPolygon(this.surface, loop, view.chord));
    const key = [lines.u, lines.v, ...(polygons ?? [])].map((list) => list.length + ':' + list.join());
    const state = key.join(';');
    if (state === this.state && !isCoarse) return false;
    this.state = state;
    if (isCoarse) this.anchor = view.target;
    const { vertices, triangles } = polygons
      ? trimSurface(this.surface, lines, polygons)
      : tessellateSurface(this.surface, lines);
    this.vertices = vertices;
    this.triangles = triangles;
    this.index3 = null;
    this.segments = polygons
      ? this.loopSegments(polygons)
      : rowSegments(vertices.positions, knotRows(lines));
    return true;
  }

  loopSegments(polygons) {
    const { knotsU, knotsV, degreeU, degreeV } = this.surface;
    const clamp = (x, knots, degree) =>
      Math.min(Math.max(x, knots[degree]), knots[knots.length - degree - 1]);
    const values = new Float64Array(3);
    const place = ([u, v]) => [
      ...surfaceAt(this.surface, clamp(u, knotsU, degreeU), clamp(v, knotsV, degreeV), 1, values),
    ];
    const out = [];
    for (const polygon of polygons) {
      const points = polygon.map(place);
      points.forEach((point, i) => out.push(...point, ...points[(i + 1) % points.length]));
    }
    return Float64Array.from(out);
  }

  hairs(length) {
    const { count, positions, normals } = this.vertices;
    const step = Math.max(1, Math.floor(count / normalsPerSide ** 2));
    const out = [];
    for (let i = 0; i < count; i += step) {
      const point = pointAt(positions, i);
      out.push(...point, ...point.map((x, k) => x + length * normals[3 * i + k]));
    }
    return Float64Array.from(out);
  }

  net() {
    const { countU, countV } = this.surface;
    const rows = Array.from({ length: countU }, (_, i) =>
      Array.from({ length: countV }, (_, j) => i * countV + j),
    );
    const columns = Array.from({ length: countV }, (_, j) => rows.map((row) => row[j]));
    return rowSegments(this.poles, [...rows, ...columns]);
  }

  /** The point of the surface on a ray near the parameters of a hit, by Newton's method. */
  exactHit(ray, hit) {
    const corner = (k) => this.triangles[3 * hit.triangle + k];
    const at = (d) =>
      [0, 1, 2].reduce((sum, k) => sum + hit.weights[k] * this.vertices.parameters[2 * corner(k) + d], 0);
    let [u, v] = [at(0), at(1)];
    const across = perpendiculars(ray.direction);
    const values = new Float64Array(9);
    for (let round = 0; round < 4; ++round) {
      surfaceAt(this.surface, u, v, 3, values);
      const offset = subtract(pointAt(values, 0), ray.origin);
      const [a, b] = across.map((axis) => dot(offset, axis));
      const [[au, av], [bu, bv]] = across.map((axis) => [1, 2].map((k) => dot(pointAt(values, k), axis)));
      const determinant = au * bv - av * bu;
      if (!(Math.abs(determinant) > 1e-14 * (Math.abs(au * bv) + Math.abs(av * bu)))) break;
      u -= (a * bv - av * b) / determinant;
      v -= (au * b - a * bu) / determinant;
      const inside = (x, knots, degree) =>
        Math.min(Math.max(x, knots[degree]), knots[knots.length - degree - 1]);
      u = inside(u, this.surface.knotsU, this.surface.degreeU);
      v = inside(v, this.surface.knotsV, this.surface.degreeV);
    }
    return { u, v, point: pointAt(surfaceAt(this.surface, u, v, 1, values), 0) };
  }
}

function perpendiculars(direction) {
  const helper = Math.abs(direction[0]) < 0.7 ? [1, 0, 0] : [0, 1, 0];
  const first = cross(direction, helper);
  const size = Math.hypot(...first);
  const unit = first.map((x) => x / size);
  return [unit, cross(direction, unit)];
}

/** The faces of a list's element, as [surface, loops]; null for a whole surface. */
function facesOf(type, element) {
  if (type.key === 'surfaces') return [[element, null]];
  const trimmed = type.key === 'shells' ? element : [element];
  return trimmed.map(({ surface, loops }) => [surface, loops.length > 0 ? loops : null]);
}

export class SurfaceLayer extends Layer {
  constructor(type, frame) {
    super(type, frame);
    this.faces = [];
    frame[type.key].forEach((element, index) =>
      facesOf(type, element).forEach(([surface, loops], face) => this.addFace(surface, loops, index, face)),
    );
  }

  addFace(surface, loops, index, face) {
    const fault =
      surfaceFault(surface) || (loops ?? []).flat().map(curveFault).find((text) => text !== '');
    if (fault) {
      this.skip(index, fault);
      return;
    }
    const entry = new Face(surface, loops, index, face);
    this.faces.push(entry);
    this.box.addBox(entry.box);
  }

  get boxes() {
    return this.faces.length > 500 ? [this.box] : this.faces.map((face) => face.box);
  }

  *refine(view) {
    for (const face of this.faces) {
      const changed = face.tessellate(view, this.isCoarse(face.anchor, face.box, view));
      if (changed) {
        this.removeParts((part) => !face.parts.includes(part));
        face.parts = this.buildFace(face);
      }
      yield changed;
    }
  }

  buildFace(face) {
    const { vertices, triangles, anchor } = face;
    const parts = [
      this.addTriangles(vertices.positions, vertices.normals, triangles, anchor, 'face'),
      this.addSegments(face.segments, anchor, 'edge'),
    ];
    if (this.style?.normals) {
      parts.push(this.addSegments(face.hairs(this.box.radius * 0.04), anchor, 'normal'));
    }
    if (this.style?.poles) {
      parts.push(this.addSegments(face.net(), anchor, 'hull'), this.addPoints(face.poles, anchor, 'pole'));
    }
    this.built = this.extras;
    return parts;
  }

  get extras() {
    return `${Boolean(this.style?.normals)} ${Boolean(this.style?.poles)}`;
  }

  restyle() {
    if (this.built === undefined || this.built === this.extras) return;
    this.removeParts();
    for (const face of this.faces) face.parts = this.buildFace(face);
  }

  pick(ray, picker) {
    let best = null;
    for (const face of this.faces) {
      if (!face.vertices) continue;
      face.index3 ??= new TriangleIndex(face.vertices.positions, face.triangles);
      const hit = face.index3.hit(ray, picker);
      if (hit && (!best || hit.t < best.t)) best = { ...hit, face };
    }
    if (!best) return null;
    const { u, v, point } = best.face.exactHit(ray, best);
    const details = [['u', u], ['v', v]];
    if (this.type.key === 'shells') details.unshift(['face', best.face.face]);
    return { t: best.t, solid: true, index: best.face.index, point, details };
  }
}
