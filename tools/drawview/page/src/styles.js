// How lists are drawn. One style per type holds for every frame; a pinned frame keeps the styles that
// it had when it was pinned, and can then be changed by itself.

import { types } from './types.js';

export class Styles {
  constructor() {
    this.common = freshStyles();
    this.pinned = new Map();
  }

  /** The styles of a frame by type key. */
  of(number) {
    return this.pinned.get(number) ?? this.common;
  }

  pin(number) {
    const copy = {};
    for (const [key, style] of Object.entries(this.common)) copy[key] = { ...style };
    this.pinned.set(number, copy);
  }

  unpin(number) {
    this.pinned.delete(number);
  }
}

function freshStyles() {
  return Object.fromEntries(types.map(({ key, look }) => [key, { visible: true, ...look }]));
}
