// What is laid over the picture: labels, marks, the picked points and the sign of the axes.

import { axisColors } from '../grid.js';
import { byId, figure, make } from './dom.js';

const maxLabels = 400;
const maxLooked = 20_000;
const axisNames = ['X', 'Y', 'Z'];

/** Texts at points of the scene; near ones first, none over another. */
export class Labels {
  /** @param {import('../app.js').App} app */
  constructor(app) {
    this.app = app;
    this.pool = [];
    /** The texts on the screen now, and where; for screenshots too. */
    this.placed = [];
  }

  entries() {
    const { app } = this;
    const out = [];
    for (const view of app.stage.views) {
      for (const layer of view.layers) {
        if (!layer.entries || !layer.style?.visible) continue;
        for (const { point, text } of layer.entries) out.push({ point, text, size: layer.style.size });
      }
      if (!app.showMarks) continue;
      for (const { point, text } of view.marks) out.push({ point, text, size: 11, mark: true });
    }
    return out.slice(0, maxLooked);
  }

  update() {
    const { camera, keeps } = this.app.stage;
    const seen = [];
    for (const entry of this.entries()) {
      if (!keeps(entry.point)) continue;
      const at = camera.project(entry.point);
      const inside = at.x > -50 && at.x < camera.width && at.y > 0 && at.y < camera.height;
      if (at.depth > 0 && inside) seen.push({ ...entry, ...at });
    }
    seen.sort((a, b) => a.depth - b.depth);
    this.placed = withoutOverlaps(seen);
    this.placed.forEach((entry, i) => this.put(i, entry));
    for (let i = this.placed.length; i < this.pool.length; ++i) this.pool[i].element.hidden = true;
  }

  put(i, entry) {
    const slot = (this.pool[i] ??= this.newSlot());
    const { element } = slot;
    if (slot.text !== entry.text) element.textContent = slot.text = entry.text;
    element.className = entry.mark ? 'mark' : '';
    element.hidden = false;
    element.style.fontSize = `${entry.size}px`;
    element.style.transform = `translate(${Math.round(entry.left)}px, ${Math.round(entry.top)}px)`;
  }

  newSlot() {
    const element = make('div');
    byId('labels').append(element);
    return { element, text: '' };
  }
}

/** Labels right of their points, those that would cover an earlier one left out. */
function withoutOverlaps(entries) {
  const taken = new Set();
  const out = [];
  for (const entry of entries) {
    if (out.length >= maxLabels) break;
    const [left, top] = [entry.x + 8, entry.y - entry.size * (entry.mark ? 2 : 0.75)];
    const width = Math.min(340, 14 + entry.text.length * entry.size * 0.56);
    const cells = [];
    for (let x = left; x < left + width + 24; x += 24) {
      for (let y = top; y < top + 1.5 * entry.size + 6; y += 9) cells.push(`${Math.floor(x / 24)} ${Math.floor(y / 9)}`);
    }
    if (cells.some((cell) => taken.has(cell))) continue;
    for (const cell of cells) taken.add(cell);
    out.push({ ...entry, left, top });
  }
  return out;
}

/** Draws the picked points, the line between them and its length. */
export function updateMeasure(app) {
  const { camera } = app.stage;
  const [line, first, second, nameA, nameB, distance] = byId('measure').children;
  const places = app.picks.map(({ point }) => camera.project(point));
  const show = (element, on) => element.toggleAttribute('hidden', !on);
  [first, second].forEach((dot, i) => {
    const at = places[i];
    const on = Boolean(at && at.depth > 0);
    show(dot, on);
    show([nameA, nameB][i], on);
    if (!on) return;
    dot.setAttribute('cx', at.x);
    dot.setAttribute('cy', at.y);
    put([nameA, nameB][i], at.x + 9, at.y - 8, 'AB'[i]);
  });
  const both = places.length === 2 && places.every((at) => at.depth > 0);
  show(line, both);
  show(distance, both);
  if (!both) return;
  const [a, b] = places;
  for (const [name, value] of [['x1', a.x], ['y1', a.y], ['x2', b.x], ['y2', b.y]]) line.setAttribute(name, value);
  put(distance, (a.x + b.x) / 2 + 8, (a.y + b.y) / 2 - 8, figure(app.measured, 6));
}

function put(text, x, y, content) {
  text.setAttribute('x', x);
  text.setAttribute('y', y);
  text.textContent = content;
}

const positiveViews = ['right', 'back', 'top'];
const negativeViews = ['left', 'front', 'bottom'];

/** The sign of the axes in the corner; a click on an end looks from there. */
export class Gizmo {
  /** @param {import('../app.js').App} app */
  constructor(app) {
    this.app = app;
    const svg = byId('gizmo');
    const element = (name) => document.createElementNS(svg.namespaceURI, name);
    const rest = element('circle');
    rest.setAttribute('class', 'rest');
    rest.setAttribute('r', 49);
    this.group = element('g');
    svg.append(rest, this.group);
    this.ends = [];
    for (const [k, name] of axisNames.entries()) {
      for (const sign of [1, -1]) this.ends.push(this.makeEnd(element, k, sign, name));
    }
  }

  makeEnd(element, axis, sign, name) {
    const group = element('g');
    const line = element('line');
    const ball = element('circle');
    const text = element('text');
    const color = axisColors[axis];
    ball.setAttribute('r', sign > 0 ? 9.5 : 7);
    ball.setAttribute('fill', color);
    ball.setAttribute('stroke', color);
    ball.setAttribute('stroke-width', 1.8);
    if (sign < 0) ball.setAttribute('fill-opacity', 0.18);
    line.setAttribute('stroke', color);
    line.setAttribute('stroke-width', 2.6);
    line.setAttribute('stroke-linecap', 'round');
    if (sign > 0) {
      text.textContent = name;
      group.append(line);
    }
    group.append(ball, text);
    const view = (sign > 0 ? positiveViews : negativeViews)[axis];
    ball.append(Object.assign(element('title'), { textContent: `Look from ${view}` }));
    ball.addEventListener('click', () => this.app.lookFrom(view));
    return { axis, sign, group, line, ball, text };
  }

  update() {
    const { right, up, back } = this.app.stage.camera.axes();
    const placed = this.ends.map((end) => ({
      ...end,
      x: 37 * end.sign * right[end.axis],
      y: -37 * end.sign * up[end.axis],
      depth: end.sign * back[end.axis],
    }));
    placed.sort((a, b) => a.depth - b.depth);
    for (const { group, line, ball, text, x, y, depth } of placed) {
      line.setAttribute('x2', x * 0.76);
      line.setAttribute('y2', y * 0.76);
      for (const [name, value] of [['cx', x], ['cy', y]]) ball.setAttribute(name, value);
      for (const [name, value] of [['x', x], ['y', y]]) text.setAttribute(name, value);
      group.setAttribute('opacity', 0.72 + 0.28 * depth);
    }
    this.group.replaceChildren(...placed.map(({ group }) => group));
  }
}
