// The cards on the right: picked points with their distance, and the clipping plane.

import { byId, countText, figure, fillSlider, make, press, tool } from './dom.js';

const axisNames = ['X', 'Y', 'Z', 'View'];

function figures(pairs) {
  return make('dl', { className: 'figures number' }, ...pairs.flatMap(([name, value]) => {
    const text = typeof value === 'number' ? figure(value) : String(value);
    return [make('dt', {}, name), make('dd', { title: String(value) }, text)];
  }));
}

const coordinates = (point) => [['x', point[0]], ['y', point[1]], ['z', point[2]]];

/** An element in words, such as "Curves 12". */
export const elementName = ({ type, index }) => `${type.label} ${index}`;

export class Cards {
  /** @param {import('../app.js').App} app */
  constructor(app) {
    this.app = app;
    this.picks = make('div', { className: 'card', id: 'picks', hidden: true });
    this.clip = this.makeClip();
    byId('cards').append(this.clip, this.picks);
  }

  update() {
    this.updatePicks();
    this.updateClip();
    this.updateUnder();
  }

  updatePicks() {
    const { app } = this;
    const { picks } = app;
    this.picks.hidden = picks.length === 0;
    if (picks === this.shownPicks && picks.length === this.shownCount) return;
    this.shownPicks = picks;
    this.shownCount = picks.length;
    const close = tool('close', 'Clear (Esc)', () => app.clearPicks());
    const copy = tool('copy', 'Copy the coordinates', () =>
      navigator.clipboard?.writeText(picks.map(({ point }) => point.join(' ')).join('\n')).catch(() => {}));
    this.picks.replaceChildren(
      make('header', {}, make('h2', {}, picks.length === 2 ? 'Measure' : 'Picked'), make('div', {}, copy, close)),
      ...picks.map((pick, i) => this.pickRow(pick, i)), this.distance() ?? '');
  }

  pickRow(pick, i) {
    return make('div', { className: 'pick' },
      make('div', { className: 'what' }, make('b', {}, 'AB'[i]), make('span', { title: elementName(pick) }, elementName(pick))),
      figures([...coordinates(pick.point), ...pick.details]));
  }

  distance() {
    const { app } = this;
    if (app.measured === null) return null;
    const [a, b] = app.picks.map(({ point }) => point);
    return make('div', { className: 'distance' }, make('strong', { title: String(app.measured) }, figure(app.measured)),
      figures(['\u0394x', '\u0394y', '\u0394z'].map((name, k) => [name, b[k] - a[k]])));
  }

  makeClip() {
    const { app } = this;
    this.axes = axisNames.map((name, axis) =>
      make('button', { type: 'button', onclick: () => app.setClip({ axis }) }, name));
    this.slider = make('input', { type: 'range', min: 0, max: 1, step: 0.001, 'aria-label': 'Position of the clipping plane',
      oninput: () => app.setClip({ position: Number(this.slider.value) }) });
    this.offset = make('dd');
    return make('div', { className: 'card', id: 'clip', hidden: true },
      make('header', {}, make('h2', {}, 'Clipping plane'), make('div', {},
        tool('flip', 'Keep the other side', () => app.setClip({ flipped: !app.clip.flipped })),
        tool('close', 'Switch off (C)', () => app.setClip({ on: false })))),
      make('div', { className: 'segments' }, ...this.axes), this.slider,
      make('dl', { className: 'figures' }, make('dt', {}, 'at'), this.offset));
  }

  updateClip() {
    const { clip } = this.app;
    this.clip.hidden = !clip.on;
    if (!clip.on) return;
    this.axes.forEach((button, axis) => press(button, axis === clip.axis));
    this.slider.value = clip.position;
    fillSlider(this.slider);
    this.offset.textContent = clip.offset === undefined ? '' : figure(clip.offset, 7);
  }

  updateUnder() {
    const { hover } = this.app;
    byId('under').textContent = hover
      ? `${elementName(hover)}   ${hover.point.map((x) => figure(x, 7)).join('  ')}` : '';
  }
}

/** The figures below the picture: the grid, and how much is drawn. */
export function updateFigures(app) {
  const { stage } = app;
  const parts = [];
  if (stage.grid.object.visible && app.frames.entries.length > 0) parts.push(`grid ${figure(stage.grid.cell, 3)}`);
  const { points, segments, triangles } = stage.drawn;
  for (const [count, name] of [[points, 'points'], [segments, 'segments'], [triangles, 'triangles']]) {
    if (count > 0) parts.push(`${countText(count)} ${name}`);
  }
  const skipped = stage.views.reduce((sum, view) => sum + view.skipped, 0);
  if (skipped > 0) parts.push(`${countText(skipped)} skipped`);
  byId('figures').textContent = parts.join('   \u00b7   ');
}
