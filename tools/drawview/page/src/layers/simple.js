// The layers of points, lines and labels.

import { BufferAttribute, DynamicDrawUsage } from 'three';
import { drawable, pointAt } from '../numbers.js';
import { nearSegment, nearPoint } from '../pick.js';
import { setPointSize } from '../materials.js';
import { Layer } from './layer.js';

/** Fewer points than this are always all drawn. */
const thinnedFrom = 100_000;

/** Copies the groups of `size` numbers that can be drawn, and their indices. */
function keepDrawable(layer, array, size) {
  const count = array.length / size;
  const indices = new Uint32Array(count);
  const out = new Float64Array(array.length);
  let kept = 0;
  for (let i = 0; i < count; ++i) {
    if (drawable(array, size * i, size)) {
      for (let k = 0; k < size; ++k) out[size * kept + k] = array[size * i + k];
      indices[kept++] = i;
    } else {
      layer.skip(i, 'a coordinate that is not finite');
    }
  }
  for (let i = 0; i < size * kept; i += 3) layer.box.addAt(out, i);
  return { values: out.subarray(0, size * kept), indices: indices.subarray(0, kept) };
}

export class PointLayer extends Layer {
  constructor(type, frame) {
    super(type, frame);
    const array = type.key === 'labels' ? frame.labels.at : frame.points;
    ({ values: this.values, indices: this.indices } = keepDrawable(this, array, 3));
    this.build(this.box.centre);
  }

  /** The size of points when the style does not tell: smaller, the more there are. */
  get sizeAtFirst() {
    const count = this.indices.length;
    return count > 200_000 ? 2 : count > 20_000 ? 3 : 5;
  }

  build(anchor) {
    if (this.indices.length > 0) this.addPoints(this.values, anchor, 'point');
  }

  thin(thinner, camera, clip) {
    const [part] = this.parts;
    if (!part || this.indices.length < thinnedFrom) return;
    const { geometry } = part.object;
    if (!geometry.index) {
      const index = new BufferAttribute(new Uint32Array(this.indices.length), 1);
      geometry.setIndex(index.setUsage(DynamicDrawUsage));
    }
    const cell = Math.max(1, 0.5 * this.style.size);
    const count = thinner.choose(this.values, camera, cell, clip, geometry.index.array);
    geometry.index.clearUpdateRanges();
    geometry.index.addUpdateRange(0, count);
    geometry.index.needsUpdate = true;
    geometry.setDrawRange(0, count);
  }

  pick(ray, picker) {
    const reach = this.style.size / 2 + picker.reach;
    return nearPoint(ray, this.values, reach, picker, (i) => ({
      index: this.indices[i],
      point: pointAt(this.values, i),
    }));
  }
}

/** Labels: a small dot each; the texts are laid over the picture by ui/labels.js. */
export class LabelLayer extends PointLayer {
  constructor(type, frame) {
    super(type, frame);
    this.entries = Array.from(this.indices, (index, i) => ({
      point: pointAt(this.values, i),
      text: frame.labels.texts[index],
    }));
  }

  stylePart(part) {
    super.stylePart(part);
    setPointSize(part.object.material, 5);
  }

  pick(ray, picker) {
    const hit = super.pick(ray, picker);
    if (hit) hit.details = [['text', this.frame.labels.texts[hit.index]]];
    return hit;
  }
}

/** Lines from an origin to origin + direction; a dot stands at the origin. */
export class LineLayer extends Layer {
  constructor(type, frame) {
    super(type, frame);
    const ends = Float64Array.from(frame.lines);
    for (let i = 0; i < ends.length; i += 6) for (let k = 3; k < 6; ++k) ends[i + k] += ends[i + k - 3];
    ({ values: this.values, indices: this.indices } = keepDrawable(this, ends, 6));
    this.build(this.box.centre);
  }

  build(anchor) {
    if (this.indices.length === 0) return;
    this.addSegments(this.values, anchor, 'line');
    const origins = new Float64Array(3 * this.indices.length);
    this.indices.forEach((_, i) => origins.set(this.values.subarray(6 * i, 6 * i + 3), 3 * i));
    this.addPoints(origins, anchor, 'end');
  }

  pick(ray, picker) {
    return nearSegment(ray, this.values, this.style.size / 2 + picker.reach, picker, (i, t) => {
      const ends = [pointAt(this.values, 2 * i), pointAt(this.values, 2 * i + 1)];
      const point = ends[0].map((x, k) => x + t * (ends[1][k] - x));
      return { ...picker.snap(ray, ends, ['origin', 'end'], point), index: this.indices[i] };
    });
  }
}
