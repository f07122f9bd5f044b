// Coordinates in double precision: arrays of three numbers, and boxes.

/** Coordinates beyond this (or not finite) are not drawn: single precision has to hold them. */
export const maxCoordinate = 1e30;

export const add = (a, b) => [a[0] + b[0], a[1] + b[1], a[2] + b[2]];
export const subtract = (a, b) => [a[0] - b[0], a[1] - b[1], a[2] - b[2]];
export const scale = (a, factor) => [a[0] * factor, a[1] * factor, a[2] * factor];
export const along = (a, direction, t) => [
  a[0] + t * direction[0],
  a[1] + t * direction[1],
  a[2] + t * direction[2],
];
export const dot = (a, b) => a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
export const cross = (a, b) => [
  a[1] * b[2] - a[2] * b[1],
  a[2] * b[0] - a[0] * b[2],
  a[0] * b[1] - a[1] * b[0],
];
export const length = (a) => Math.hypot(a[0], a[1], a[2]);
export const distance = (a, b) => Math.hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);

/** The point of an array at index i. */
export const pointAt = (array, i) => [array[3 * i], array[3 * i + 1], array[3 * i + 2]];

/** Whether `count` numbers from `start` can be drawn. */
export function drawable(array, start, count) {
  for (let i = start; i < start + count; ++i) {
    if (!(Math.abs(array[i]) <= maxCoordinate)) return false;
  }
  return true;
}

/** An axis-parallel box; empty at first. */
export class Box {
  constructor() {
    this.low = [Infinity, Infinity, Infinity];
    this.high = [-Infinity, -Infinity, -Infinity];
  }

  get empty() {
    return this.low[0] > this.high[0];
  }

  /** Adds the point at `start` of an array. */
  addAt(array, start) {
    for (let k = 0; k < 3; ++k) {
      const value = array[start + k];
      if (value < this.low[k]) this.low[k] = value;
      if (value > this.high[k]) this.high[k] = value;
    }
  }

  addBox(other) {
    if (other.empty) return;
    this.addAt(other.low, 0);
    this.addAt(other.high, 0);
  }

  get centre() {
    return this.empty ? [0, 0, 0] : scale(add(this.low, this.high), 0.5);
  }

  /** Half the diagonal; 0 when empty. */
  get radius() {
    return this.empty ? 0 : distance(this.low, this.high) / 2;
  }

  /** Whether a point lies in the box, or outside by no more than `slack`. */
  holds(point, slack) {
    return point.every((x, k) => x >= this.low[k] - slack && x <= this.high[k] + slack);
  }

  corners() {
    const pick = (bit, k, index) => ((index >> bit) & 1 ? this.high[k] : this.low[k]);
    return Array.from({ length: 8 }, (_, i) => [pick(0, 0, i), pick(1, 1, i), pick(2, 2, i)]);
  }
}
