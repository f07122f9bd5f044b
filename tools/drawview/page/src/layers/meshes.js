// The layers of triangle meshes: compact ones and topological ones, which know their edges.

import { drawable, pointAt, subtract, cross, length } from '../numbers.js';
import { nearPoint, TriangleIndex } from '../pick.js';
import { Layer } from './layer.js';

/** Edges are drawn at first when there are no more triangles than this. */
const edgesUpTo = 60_000;
const maxHairs = 60_000;

/** A mesh without what cannot be drawn. */
class DrawnMesh {
  constructor(mesh, index, layer) {
    Object.assign(this, { mesh, index });
    const count = mesh.vertices.length / 3;
    const bad = new Uint8Array(count);
    let badCount = 0;
    for (let i = 0; i < count; ++i) {
      if (drawable(mesh.vertices, 3 * i, 3)) layer.box.addAt(mesh.vertices, 3 * i);
      else {
        bad[i] = 1;
        ++badCount;
        layer.skip(index, `vertex ${i} is not finite`);
      }
    }
    const without = (list, size) => (badCount === 0 ? list : dropGroups(list, size, bad));
    this.vertices = mesh.vertices;
    this.triangles = without(mesh.triangles, 3);
    this.edges = mesh.edges ? without(mesh.edges, 2) : null;
    this.normals = mesh.normals.length > 0 ? mesh.normals : null;
  }

  /** Ends of the edges; those of a compact mesh are the sides of its triangles, each once. */
  edgeSegments() {
    const pairs = this.edges ?? sidesOf(this.triangles, this.vertices.length / 3);
    const out = new Float64Array(3 * pairs.length);
    for (let i = 0; i < pairs.length; ++i) {
      for (let k = 0; k < 3; ++k) out[3 * i + k] = this.vertices[3 * pairs[i] + k];
    }
    return out;
  }

  /** Hairs at vertices, or at the middles of triangles when the mesh has no normals. */
  hairs(size) {
    const count = this.normals ? this.vertices.length / 3 : this.triangles.length / 3;
    const step = Math.ceil(count / maxHairs);
    const out = [];
    for (let i = 0; i < count; i += step) {
      const [point, normal] = this.normals
        ? [pointAt(this.vertices, i), pointAt(this.normals, i)]
        : this.facet(i);
      const long = length(normal);
      if (drawable(point, 0, 3) && long > 0) {
        out.push(...point, ...point.map((x, k) => x + (size * normal[k]) / long));
      }
    }
    return Float64Array.from(out);
  }

  /** The middle and the normal of a triangle. */
  facet(i) {
    const [a, b, c] = this.corners(i);
    const middle = a.map((x, k) => (x + b[k] + c[k]) / 3);
    return [middle, cross(subtract(b, a), subtract(c, a))];
  }

  corners(i) {
    return [0, 1, 2].map((k) => pointAt(this.vertices, this.triangles[3 * i + k]));
  }
}

function dropGroups(list, size, bad) {
  const out = [];
  for (let i = 0; i < list.length; i += size) {
    const group = list.subarray(i, i + size);
    if (!group.some((vertex) => bad[vertex])) out.push(...group);
  }
  return Uint32Array.from(out);
}

/** The sides of triangles, each once, as pairs of vertices. */
function sidesOf(triangles, vertexCount) {
  const keys = new Float64Array(triangles.length);
  for (let i = 0; i < triangles.length; i += 3) {
    for (let k = 0; k < 3; ++k) {
      const a = triangles[i + k];
      const b = triangles[i + ((k + 1) % 3)];
      keys[i + k] = Math.min(a, b) * vertexCount + Math.max(a, b);
    }
  }
  keys.sort();
  const pairs = [];
  keys.forEach((key, i) => {
    if (i === 0 || key !== keys[i - 1]) pairs.push(Math.floor(key / vertexCount), key % vertexCount);
  });
  return Uint32Array.from(pairs);
}

export class MeshLayer extends Layer {
  constructor(type, frame) {
    super(type, frame);
    this.meshes = frame[type.key].map((mesh, index) => new DrawnMesh(mesh, index, this));
    this.build(this.box.centre);
  }

  /** Whether edges are worth drawing when the style does not tell. */
  get edgesAtFirst() {
    return this.meshes.reduce((sum, mesh) => sum + mesh.triangles.length / 3, 0) <= edgesUpTo;
  }

  get edgeOpacity() {
    return 0.4;
  }

  build(anchor) {
    this.anchor = anchor;
    for (const mesh of this.meshes) {
      const { vertices, normals, triangles } = mesh;
      if (triangles.length > 0) this.addTriangles(vertices, normals, triangles, anchor, 'face');
    }
    if (this.style) this.restyle();
  }

  /** Edges and normals are made when they are first shown. */
  restyle() {
    const has = (role) => this.parts.some((part) => part.role === role);
    if (this.style.edges && !has('edge')) {
      for (const mesh of this.meshes) this.addSegments(mesh.edgeSegments(), this.anchor, 'edge');
    }
    if (this.style.normals && !has('normal')) {
      const size = this.box.radius * 0.03;
      for (const mesh of this.meshes) this.addSegments(mesh.hairs(size), this.anchor, 'normal');
    }
  }

  /** The best vertex near a ray that meets no triangle. */
  nearVertex(ray, picker) {
    const hits = this.meshes.map(({ vertices, index }) =>
      nearPoint(ray, vertices, picker.reach, picker, (i) => ({
        index,
        point: pointAt(vertices, i),
        details: [['at', `vertex ${i}`]],
      })),
    );
    return hits.reduce((a, b) => (a && (!b || a.rank <= b.rank) ? a : b), null);
  }

  pick(ray, picker) {
    let best = null;
    for (const mesh of this.meshes) {
      mesh.index3 ??= new TriangleIndex(mesh.vertices, mesh.triangles);
      const hit = mesh.index3.hit(ray, picker);
      if (hit && (!best || hit.t < best.t)) best = { ...hit, mesh };
    }
    if (!best) return this.nearVertex(ray, picker);
    const { mesh, triangle, t } = best;
    const vertices = [0, 1, 2].map((k) => mesh.triangles[3 * triangle + k]);
    const names = vertices.map((vertex) => `vertex ${vertex}`);
    const snapped = picker.snap(ray, mesh.corners(triangle), names, best.point);
    const details = [['triangle', triangle], ...(snapped.details ?? [])];
    return { ...snapped, t, solid: true, index: mesh.index, details };
  }
}
