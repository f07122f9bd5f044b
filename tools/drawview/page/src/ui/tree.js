// The tree: frames, and below a frame its types with visibility, colour, size and switches.

import { countOf, types } from '../types.js';
import { byId, countText, fillSlider, icon, make, press, tool } from './dom.js';

const sizeLimits = { points: [1, 20], labels: [8, 28] };
const switchNames = { edges: 'Edges', normals: 'Normals', poles: 'Poles' };

/** @param {import('../app.js').App} app */
export class Tree {
  constructor(app) {
    this.app = app;
    this.rows = new Map();
    this.open = new Set();
    this.closedCurrent = false;
    this.options = new Set();
  }

  update() {
    const { app } = this;
    const { entries } = app.frames;
    byId('frame-count').textContent = entries.length ? countText(entries.length) : '';
    const known = new Set(entries.map((entry) => entry.number));
    for (const [number, row] of this.rows) {
      if (known.has(number)) continue;
      row.element.remove();
      this.rows.delete(number);
    }
    let before = null;
    for (const entry of entries) {
      const row = this.rowFor(entry);
      const place = before ? before.nextSibling : byId('tree').firstChild;
      if (row.element !== place) byId('tree').insertBefore(row.element, place);
      this.updateRow(row, entry);
      before = row.element;
    }
    this.scrollToCurrent();
  }

  scrollToCurrent() {
    const { current } = this.app;
    if (current === this.scrolledTo) return;
    this.scrolledTo = current;
    this.rows.get(current)?.element.scrollIntoView({ block: 'nearest' });
  }

  rowFor(entry) {
    const known = this.rows.get(entry.number);
    if (known) return known;
    const { app } = this;
    const { number } = entry;
    const row = { state: '' };
    row.chevron = tool('right', 'Types of this frame', () => this.toggle(number), { className: 'chevron' });
    row.label = make('button', { type: 'button', className: 'name', onclick: () => {
      app.following = false;
      app.show(number);
    } });
    row.pin = tool('pin', 'Pin: keep this frame and its look while the time line moves',
      () => app.setPinned(number, !app.isPinned(number)), { className: 'quiet' });
    row.eye = make('button', { type: 'button', className: 'tool quiet', onclick: () => this.eye(number) });
    row.types = make('div', { className: 'types', role: 'group' });
    row.element = make('div', { className: 'frame', role: 'treeitem' },
      make('div', { className: 'row' }, row.chevron, row.label, row.pin, row.eye), row.types);
    row.element.dataset.number = number;
    this.rows.set(number, row);
    return row;
  }

  eye(number) {
    const { app } = this;
    if (number === app.current || app.isPinned(number)) app.toggleHidden(number);
    else app.setPinned(number, true);
  }

  isOpen(number) {
    return number === this.app.current ? !this.closedCurrent : this.open.has(number);
  }

  toggle(number) {
    const { app } = this;
    if (number === app.current) this.closedCurrent = !this.closedCurrent;
    else if (!app.views.has(number)) app.show(number);
    else if (!this.open.delete(number)) this.open.add(number);
    this.update();
  }

  updateRow(row, entry) {
    const { app } = this;
    const { number } = entry;
    const view = app.views.get(number);
    const open = this.isOpen(number) && Boolean(view);
    const shown = app.isShown(number);
    const state = JSON.stringify([
      entry.name, open, shown, number === app.current, app.isPinned(number), app.problems.has(number),
      open && app.styles.of(number), open && [...this.options], open && app.showMarks,
    ]);
    if (state === row.state && row.view === view) return;
    row.view = view;
    row.state = state;
    row.element.className = `frame${number === app.current ? ' current' : ''}${app.problems.has(number) ? ' gone' : ''}`;
    row.element.setAttribute('aria-selected', String(number === app.current));
    row.element.setAttribute('aria-expanded', String(open));
    row.label.replaceChildren(make('small', {}, String(number)), entry.name || 'unnamed');
    row.label.title = entry.name;
    row.chevron.classList.toggle('open', open);
    press(row.pin, app.isPinned(number));
    row.eye.replaceChildren(icon(shown ? 'eye' : 'hidden'));
    row.eye.title = shown ? 'Hide this frame' : 'Show this frame';
    row.eye.setAttribute('aria-label', row.eye.title);
    row.eye.classList.toggle('on', shown);
    if (!row.types.contains(document.activeElement) || !row.types.dataset.editing) {
      row.types.replaceChildren(...(open ? this.typeRows(number, view) : []));
    }
  }

  typeRows(number, view) {
    const rows = types
      .filter((type) => countOf(view.frame, type.key) > 0)
      .map((type) => this.typeRow(number, view, type));
    if (view.frame.marks.length > 0) rows.push(this.marksRow(view));
    if (rows.length === 0) rows.push(make('div', { className: 'type' }, make('div', { className: 'row count' }, 'Nothing in this frame')));
    return rows;
  }

  typeRow(number, view, type) {
    const { app } = this;
    const style = app.styles.of(number)[type.key];
    const set = (change) => app.setStyle(number, type.key, change);
    const layer = view.layers.find((candidate) => candidate.type === type);
    const colour = make('input', { type: 'color', className: 'swatch', value: style.color, title: `Colour of ${type.label}`, 'aria-label': `Colour of ${type.label}` });
    this.edit(colour, () => set({ color: colour.value }), number);
    const key = `${number} ${type.key}`;
    const open = this.options.has(key);
    const more = tool('more', 'Size and more', () => {
      if (!this.options.delete(key)) this.options.add(key);
      this.update();
    }, { className: 'quiet', 'aria-pressed': String(open) });
    const eye = tool(style.visible ? 'eye' : 'hidden', `Show ${type.label}`, () => set({ visible: !style.visible }), { 'aria-pressed': 'false' });
    const element = make('div', { className: `type${style.visible ? '' : ' off'}` },
      make('div', { className: 'row' }, eye, colour,
        make('span', { className: 'name' }, type.label), more, this.skippedBadge(layer),
        make('span', { className: 'count' }, countText(countOf(view.frame, type.key)))),
      open ? this.optionsOf(number, type, style, set) : null);
    element.dataset.type = type.key;
    return element;
  }

  skippedBadge(layer) {
    if (layer.skipped === 0) return null;
    const reasons = layer.faults.map(({ index, reason }) => `${index}: ${reason}`);
    return make('span', { className: 'skipped', title: reasons.join('\n') }, `${countText(layer.skipped)} skipped`);
  }

  /** Applies a control while it moves; its row is not built anew under the pointer. */
  edit(control, apply, number) {
    control.addEventListener('input', () => {
      const row = this.rows.get(number);
      row.types.dataset.editing = 'true';
      apply();
    });
    control.addEventListener('change', () => delete this.rows.get(number).types.dataset.editing);
  }

  optionsOf(number, type, style, set) {
    const [low, high] = sizeLimits[type.key] ?? [0.5, 8];
    const parts = this.slider(number, type.key === 'labels' ? 'Text size' : 'opacity' in style ? 'Edge width' : 'Size',
      style.size, [low, high, 0.5], (size) => set({ size }));
    if ('opacity' in style) {
      parts.push(...this.slider(number, 'Opacity', style.opacity, [0.1, 1, 0.05], (opacity) => set({ opacity })));
    }
    const switches = Object.keys(switchNames).filter((name) => name in style).map((name) =>
      make('button', { type: 'button', className: 'chip', 'aria-pressed': String(Boolean(style[name])), onclick: () => set({ [name]: !style[name] }) }, switchNames[name]));
    if (switches.length > 0) parts.push(make('div', { className: 'switches' }, ...switches));
    return make('div', { className: 'options' }, ...parts);
  }

  slider(number, label, value, [min, max, step], apply) {
    const output = make('output', {}, String(value));
    const input = make('input', { type: 'range', min, max, step, 'aria-label': label });
    input.value = value;
    fillSlider(input);
    this.edit(input, () => {
      output.textContent = String(Number(input.value));
      fillSlider(input);
      apply(Number(input.value));
    }, number);
    return [make('span', {}, label), input, output];
  }

  marksRow(view) {
    const { app } = this;
    const eye = tool(app.showMarks ? 'eye' : 'hidden', 'Show marks', () => app.toggleMarks());
    const element = make('div', { className: `type${app.showMarks ? '' : ' off'}` },
      make('div', { className: 'row' }, eye, make('span', { className: 'name' }, 'Marks'),
        make('span', { className: 'count' }, countText(view.frame.marks.length))));
    element.dataset.type = 'marks';
    return element;
  }
}
