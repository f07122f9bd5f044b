// Of many points, those that can be seen: where pictures are slow, hidden points are not drawn.

import { dot } from './numbers.js';

/** Finds the nearest point in each cell of the screen. Keeps its memory from picture to picture. */
export class Thinner {
  constructor() {
    this.depths = new Float32Array(0);
    this.owners = new Uint32Array(0);
  }

  /**
   * Writes the indices of the points to draw into `out`, which has room for all, in O(points + cells).
   * @param {Float64Array} points @param {import('./camera.js').Camera} camera
   * @param {number} cell the side of a cell in pixels
   * @param {{normal: number[], offset: number} | null} clip kept is where normal . p <= offset
   * @returns {number} how many there are
   */
  choose(points, camera, cell, clip, out) {
    const columns = Math.ceil(camera.width / cell);
    const cells = columns * Math.ceil(camera.height / cell);
    if (this.depths.length !== cells) {
      this.depths = new Float32Array(cells);
      this.owners = new Uint32Array(cells);
    }
    this.depths.fill(Infinity);
    this.enter(points, camera, cell, clip, columns);
    let count = 0;
    for (let i = 0; i < cells; ++i) if (this.depths[i] < Infinity) out[count++] = this.owners[i];
    return count;
  }

  /** Enters each point into its cell, in front of what is there. */
  enter(points, camera, cell, clip, columns) {
    const { depths, owners } = this;
    const { right, up, back } = camera.axes();
    const { target, width, height, parallel, distance } = camera;
    const unit = 1 / (camera.pixelSize() * cell);
    const [normal, offset] = clip ? [clip.normal, clip.offset - dot(clip.normal, target)] : [[0, 0, 0], 0];
    for (let i = 0; i < points.length; i += 3) {
      const x = points[i] - target[0];
      const y = points[i + 1] - target[1];
      const z = points[i + 2] - target[2];
      if (normal[0] * x + normal[1] * y + normal[2] * z > offset) continue;
      const depth = distance - (x * back[0] + y * back[1] + z * back[2]);
      if (depth <= 0 && !parallel) continue;
      const scale = parallel ? unit : (unit * distance) / depth;
      const across = width / (2 * cell) + (x * right[0] + y * right[1] + z * right[2]) * scale;
      const down = height / (2 * cell) - (x * up[0] + y * up[1] + z * up[2]) * scale;
      if (!(across >= 0 && across < columns && down >= 0)) continue;
      const at = Math.floor(down) * columns + Math.floor(across);
      if (depth < depths[at]) {
        depths[at] = depth;
        owners[at] = i / 3;
      }
    }
  }
}
