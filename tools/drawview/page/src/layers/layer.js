// What layers share. A layer draws one list of one frame. Its parts are objects of three.js whose
// vertices are single-precision offsets from an anchor in double precision.

import {
  BufferAttribute, BufferGeometry, Color, Group, InstancedBufferAttribute, InstancedBufferGeometry,
  LineSegments, Mesh, Points, Sphere, Vector3,
} from 'three';
import { lineMaterial, pointMaterial, setPointSize, surfaceMaterial } from '../materials.js';
import { Box, distance } from '../numbers.js';

/** More lines than this are drawn one pixel wide. */
const maxWideSegments = 150_000;
const everything = new Sphere(new Vector3(), Infinity);

/** The numbers of an array as offsets from an anchor. */
export function offsetsFrom(array, anchor) {
  const out = new Float32Array(array.length);
  for (let i = 0; i < array.length; i += 3) {
    out[i] = array[i] - anchor[0];
    out[i + 1] = array[i + 1] - anchor[1];
    out[i + 2] = array[i + 2] - anchor[2];
  }
  return out;
}

/** The ends of segments along rows of vertex indices. */
export function rowSegments(positions, rows) {
  const out = [];
  for (const row of rows) {
    for (let i = 0; i + 1 < row.length; ++i) {
      for (const index of [row[i], row[i + 1]]) {
        out.push(positions[3 * index], positions[3 * index + 1], positions[3 * index + 2]);
      }
    }
  }
  return Float64Array.from(out);
}

/** The ends of segments that join successive points. */
export function pathSegments(points) {
  const row = Array.from({ length: points.length / 3 }, (_, i) => i);
  return rowSegments(points, [row]);
}

/** One list of one frame on the screen. */
export class Layer {
  /** @param {{key: string}} type */
  constructor(type, frame) {
    this.type = type;
    this.frame = frame;
    this.group = new Group();
    this.box = new Box();
    /** Elements (or vertices of meshes) that cannot be drawn, and why. */
    this.skipped = 0;
    this.faults = [];
    this.parts = [];
    this.style = null;
  }

  /** Boxes that hold the layer: of its elements where they are few. */
  get boxes() {
    return [this.box];
  }

  skip(index, reason) {
    ++this.skipped;
    if (this.faults.length < 20) this.faults.push({ index, reason });
  }

  // Parts: an object, its anchor, and its role, which chooses colour and visibility.

  addPart(object, anchor, role) {
    object.frustumCulled = false;
    this.group.add(object);
    const part = { object, anchor, role };
    this.parts.push(part);
    if (this.style) this.stylePart(part);
    return part;
  }

  /** Points, three numbers each. */
  addPoints(array, anchor, role) {
    const geometry = new BufferGeometry();
    geometry.setAttribute('position', new BufferAttribute(offsetsFrom(array, anchor), 3));
    geometry.boundingSphere = everything;
    return this.addPart(new Points(geometry, pointMaterial()), anchor, role);
  }

  /** Segments, six numbers each. */
  addSegments(array, anchor, role) {
    const offsets = offsetsFrom(array, anchor);
    const wide = array.length / 6 <= maxWideSegments;
    const geometry = wide ? wideGeometry(offsets) : new BufferGeometry();
    if (!wide) geometry.setAttribute('position', new BufferAttribute(offsets, 3));
    geometry.boundingSphere = everything;
    const kind = wide ? Mesh : LineSegments;
    return this.addPart(new kind(geometry, lineMaterial(wide)), anchor, role);
  }

  /** Triangles; without normals each is flat. */
  addTriangles(positions, normals, triangles, anchor, role) {
    const geometry = new BufferGeometry();
    geometry.setAttribute('position', new BufferAttribute(offsetsFrom(positions, anchor), 3));
    if (normals) geometry.setAttribute('normal', new BufferAttribute(new Float32Array(normals), 3));
    geometry.setIndex(new BufferAttribute(new Uint32Array(triangles), 1));
    geometry.boundingSphere = everything;
    return this.addPart(new Mesh(geometry, surfaceMaterial(Boolean(normals))), anchor, role);
  }

  /** Leaves out what cannot be seen, for layers of very many points. */
  thin() {}

  removeParts(keep = () => false) {
    const gone = this.parts.filter((part) => !keep(part));
    this.parts = this.parts.filter(keep);
    for (const { object } of gone) {
      this.group.remove(object);
      object.geometry.dispose();
      object.material.dispose();
    }
  }

  /** How many points, lines and triangles are drawn. */
  get drawn() {
    const sum = { points: 0, segments: 0, triangles: 0 };
    for (const { object } of this.parts) {
      if (!object.visible) continue;
      const { geometry } = object;
      if (object.isPoints) sum.points += geometry.attributes.position.count;
      else if (object.isLineSegments) sum.segments += geometry.attributes.position.count / 2;
      else if (geometry.isInstancedBufferGeometry) sum.segments += geometry.instanceCount;
      else sum.triangles += geometry.index.count / 3;
    }
    return sum;
  }

  // Looks.

  get edgeOpacity() {
    return 0.8;
  }

  applyStyle(style, theme) {
    this.style = style;
    this.theme = theme;
    this.group.visible = style.visible;
    this.restyle();
    for (const part of this.parts) this.stylePart(part);
  }

  /** For layers that build parts when a style asks for them. */
  restyle() {}

  stylePart({ object, role }) {
    const { style, theme } = this;
    const base = new Color(style.color);
    const { uniforms } = object.material;
    uniforms.color.value.copy(roleColor(role, base, theme));
    if (uniforms.backColor) uniforms.backColor.value.copy(backOf(base));
    const pointSizes = { point: style.size, end: style.size + 3, pole: 5 };
    if (role in pointSizes) setPointSize(object.material, pointSizes[role]);
    if (role === 'line' || role === 'edge') uniforms.size.value = style.size;
    if (role === 'hull' || role === 'normal') uniforms.size.value = 1;
    if (role === 'face') {
      uniforms.opacity.value = style.opacity;
      object.material.transparent = style.opacity < 1;
      object.material.depthWrite = style.opacity >= 1;
    }
    const shown = { edge: style.edges, normal: style.normals, hull: style.poles, pole: style.poles };
    object.visible = shown[role] ?? true;
    if (role === 'edge') uniforms.opacity.value = this.edgeOpacity;
    if (role === 'hull') uniforms.opacity.value = 0.6;
  }

  // The view.

  /** Puts parts in place: the target is the origin of three.js's coordinates. */
  place(target) {
    for (const { object, anchor } of this.parts) {
      object.position.set(anchor[0] - target[0], anchor[1] - target[1], anchor[2] - target[2]);
    }
  }

  /** Whether the target is in a box but too far from an anchor for single precision. */
  isCoarse(anchor, box, view) {
    const isFar = distance(anchor, view.target) > 2 ** 21 * view.pixelSize;
    return isFar && box.holds(view.target, 2000 * view.pixelSize);
  }

  /**
   * Makes the layer as fine as the view asks, in steps.
   * @yields {boolean} whether the step changed anything
   */
  *refine(view) {
    if (!this.parts.some(({ anchor }) => this.isCoarse(anchor, this.box, view))) return;
    this.removeParts();
    this.build(view.target);
    yield true;
  }

  dispose() {
    this.removeParts();
  }
}

const segmentCorners = new BufferAttribute(
  new Float32Array([0, -1, 0, 1, -1, 0, 1, 1, 0, 0, 1, 0]), 3);
const segmentIndex = new BufferAttribute(new Uint16Array([0, 1, 2, 0, 2, 3]), 1);

function wideGeometry(offsets) {
  const geometry = new InstancedBufferGeometry();
  const count = offsets.length / 6;
  const starts = new Float32Array(3 * count);
  const ends = new Float32Array(3 * count);
  for (let i = 0; i < count; ++i) {
    starts.set(offsets.subarray(6 * i, 6 * i + 3), 3 * i);
    ends.set(offsets.subarray(6 * i + 3, 6 * i + 6), 3 * i);
  }
  geometry.setAttribute('position', segmentCorners);
  geometry.setAttribute('start', new InstancedBufferAttribute(starts, 3));
  geometry.setAttribute('end', new InstancedBufferAttribute(ends, 3));
  geometry.setIndex(segmentIndex);
  geometry.instanceCount = count;
  return geometry;
}

const black = new Color(0, 0, 0);
const warm = new Color('#b9685c');

/** The colour of the side that normals point away from. */
const backOf = (base) => base.clone().lerp(warm, 0.55).lerp(black, 0.08);

function roleColor(role, base, theme) {
  if (role === 'edge') return base.clone().lerp(black, theme === 'dark' ? 0.72 : 0.62);
  if (role === 'normal') return new Color(theme === 'dark' ? '#6ad1c4' : '#0f8579');
  if (role === 'hull' || role === 'pole') return new Color(theme === 'dark' ? '#d9a3e8' : '#9b4fb3');
  return base;
}
