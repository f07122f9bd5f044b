// What the page shows, and every action on it. The parts of the surface (ui/) call these actions and
// redraw themselves after each change.

import { blendPoses, standardViews } from './camera.js';
import { connect } from './connection.js';
import { embeddedFrames, FrameStore } from './frames.js';
import { distance, dot } from './numbers.js';
import { FrameView, Stage } from './stage.js';
import { Styles } from './styles.js';

const turnMilliseconds = 260;

export class App {
  constructor(canvas) {
    this.frames = new FrameStore();
    this.styles = new Styles();
    this.stage = new Stage(canvas, () => this.listeners.drawn.forEach((listen) => listen()));
    this.listeners = { changed: [], drawn: [], hovered: [] };
    /** The number of the frame under the time line, or null. */
    this.current = null;
    this.following = true;
    this.playing = false;
    this.framesPerSecond = 4;
    this.hidden = new Set();
    this.views = new Map();
    this.problems = new Map();
    this.showMarks = true;
    this.picks = [];
    this.hover = null;
    this.clip = { on: false, axis: 0, position: 0.5, flipped: false };
    this.connection = { kind: 'none', open: false, sender: false, replay: false, version: '' };
  }

  changed() {
    if (this.pending) return;
    this.pending = true;
    queueMicrotask(() => {
      this.pending = false;
      this.listeners.changed.forEach((listen) => listen());
    });
  }

  // Where frames come from.

  start(document) {
    const embedded = embeddedFrames(document);
    if (embedded.length > 0 || location.protocol === 'file:') {
      this.connection.kind = 'export';
      this.following = false;
      this.frames.replaceAll(embedded);
      if (embedded.length > 0) this.show(this.frames.entries[0].number);
      this.changed();
      return;
    }
    this.connection.kind = 'server';
    connect({
      onOpen: () => this.setConnection({ open: true }),
      onClose: () => this.setConnection({ open: false, sender: false }),
      onMessage: (message) => this.receive(message),
    });
  }

  setConnection(news) {
    Object.assign(this.connection, news);
    this.changed();
  }

  receive(message) {
    if (message.type === 'state') this.receiveState(message);
    if (message.type === 'sender') this.setConnection({ sender: message.connected });
    if (message.type === 'added') {
      this.frames.add(message.frame);
      this.drop(message.dropped ?? []);
      if (this.following) this.show(message.frame.number);
      else if (this.current === null) this.show(this.frames.entries[0].number);
    }
    this.changed();
  }

  receiveState({ version, replay, frames, sender, listen }) {
    Object.assign(this.connection, { version, replay, listen, sender: sender ?? this.connection.sender });
    if (replay) this.following = false;
    this.frames.replaceAll(frames);
    for (const number of [...this.views.keys()]) this.forget(number);
    if (frames.length === 0) {
      this.current = null;
      this.updateStage();
    } else if (this.following) {
      this.show(this.frames.entries[frames.length - 1].number);
    } else {
      this.show(this.frames.find(this.current) ? this.current : this.frames.entries[0].number);
    }
  }

  /** Frames that the program has given up. */
  drop(numbers) {
    this.frames.remove(numbers);
    const shown = numbers.filter((number) => this.views.has(number));
    for (const number of numbers) this.forget(number);
    if (shown.length > 0) this.updateStage();
  }

  forget(number) {
    this.views.get(number)?.dispose();
    this.views.delete(number);
    this.styles.unpin(number);
    this.hidden.delete(number);
    this.problems.delete(number);
    if (this.current === number) this.current = null;
  }

  // Which frames are shown.

  isPinned(number) {
    return this.styles.pinned.has(number);
  }

  isShown(number) {
    return (number === this.current || this.isPinned(number)) && !this.hidden.has(number);
  }

  /** Makes a frame the one under the time line; of several asked for meanwhile, the last. */
  show(number) {
    this.wanted = number;
    this.showing ??= this.showWanted().finally(() => (this.showing = null));
    return this.showing;
  }

  async showWanted() {
    let number;
    do {
      number = this.wanted;
      await this.load(number, () => number === this.wanted);
    } while (number !== this.wanted);
    this.current = this.frames.find(number) ? number : null;
    this.picks = [];
    this.hover = null;
    this.updateStage();
    if (!this.fitted && this.stage.corners.length > 0) {
      this.fitted = true;
      this.fit(false);
    }
    this.loadNext(number);
  }

  /** Loads a frame for the stage, if it is still wanted then. @returns {Promise<boolean>} */
  async load(number, isWanted = () => true) {
    if (this.views.has(number)) return true;
    try {
      const frame = await this.frames.get(number);
      if (isWanted() && !this.views.has(number)) this.views.set(number, new FrameView(frame));
      this.problems.delete(number);
      return true;
    } catch (error) {
      this.problems.set(number, error.message);
      this.changed();
      return false;
    }
  }

  /** Has the message after this one at hand while frames play. */
  loadNext(number) {
    const next = this.frames.entries[this.frames.indexOf(number) + 1];
    if (this.playing && next) this.frames.get(next.number).catch(() => {});
  }

  updateStage() {
    const numbers = this.frames.entries.map((entry) => entry.number).filter((n) => this.isShown(n));
    for (const number of [...this.views.keys()]) {
      if (number === this.current || this.isPinned(number)) continue;
      this.views.get(number).dispose();
      this.views.delete(number);
    }
    const views = numbers.map((number) => [number, this.views.get(number)]).filter(([, view]) => view);
    for (const [number, view] of views) this.applyStyles(number, view);
    this.stage.setViews(views.map(([, view]) => view));
    this.updateClip();
    this.stage.invalidate();
    this.changed();
  }

  step(by) {
    const { entries } = this.frames;
    if (entries.length === 0) return Promise.resolve();
    const at = Math.max(0, this.frames.indexOf(this.wanted ?? this.current));
    const next = Math.min(entries.length - 1, Math.max(0, at + by));
    this.following = this.connection.kind === 'server' && !this.connection.replay && next === entries.length - 1 && by > 0;
    return this.show(entries[next].number);
  }

  /** Shows the frame at a position of the time line. */
  stepTo(index) {
    this.following = false;
    const entry = this.frames.entries[index];
    return entry ? this.show(entry.number) : Promise.resolve();
  }

  setFollowing(on) {
    this.following = on;
    if (on) this.step(this.frames.entries.length);
    this.changed();
  }

  async play(on = !this.playing) {
    const { entries } = this.frames;
    this.playing = on && entries.length > 1;
    clearTimeout(this.playTimer);
    this.changed();
    if (!this.playing) return;
    if (this.current === entries[entries.length - 1].number) await this.show(entries[0].number);
    const tick = async () => {
      if (!this.playing) return;
      await this.step(1);
      const atEnd = this.current === this.frames.entries[this.frames.entries.length - 1]?.number;
      if (atEnd) await this.play(false);
      else this.playTimer = setTimeout(tick, 1000 / this.framesPerSecond);
    };
    this.playTimer = setTimeout(tick, 1000 / this.framesPerSecond);
  }

  async setPinned(number, on) {
    if (on) {
      if (!(await this.load(number))) return;
      this.styles.pin(number);
    } else {
      this.styles.unpin(number);
    }
    this.hidden.delete(number);
    this.updateStage();
  }

  toggleHidden(number) {
    if (!this.hidden.delete(number)) this.hidden.add(number);
    this.updateStage();
  }

  // Looks.

  applyStyles(number, view) {
    const styles = this.styles.of(number);
    for (const layer of view.layers) {
      const style = styles[layer.type.key];
      style.edges ??= layer.edgesAtFirst;
      style.size ??= layer.sizeAtFirst;
      layer.applyStyle({ ...style }, this.stage.theme);
    }
  }

  /** Changes the style of a type in a frame, and in all frames that are not pinned if it is not. */
  setStyle(number, key, change) {
    Object.assign(this.styles.of(number)[key], change);
    for (const [shown, view] of this.views) this.applyStyles(shown, view);
    this.stage.refineSoon(0);
    this.stage.invalidate();
    this.changed();
  }

  /** Switches edges, normals or poles of every type that has them. */
  toggleEverywhere(name) {
    const styles = Object.values(this.styles.of(this.current)).filter((style) => name in style);
    const on = !styles.some((style) => style[name] && style.visible);
    for (const style of styles) style[name] = on;
    for (const [number, view] of this.views) this.applyStyles(number, view);
    this.stage.refineSoon(0);
    this.stage.invalidate();
    this.changed();
  }

  /** Whether edges, normals or poles of any type are on. */
  isOn(name) {
    return Object.values(this.styles.of(this.current)).some((style) => style[name]);
  }

  setTheme(theme) {
    this.theme = theme;
    this.stage.setTheme(theme);
    for (const [number, view] of this.views) this.applyStyles(number, view);
    this.changed();
  }

  toggleMarks() {
    this.showMarks = !this.showMarks;
    this.stage.invalidate();
    this.changed();
  }

  toggleGrid() {
    const { object } = this.stage.grid;
    object.visible = !object.visible;
    this.stage.invalidate();
    this.changed();
  }

  // The camera.

  turnTo(pose, animate = true) {
    const { camera } = this.stage;
    cancelAnimationFrame(this.turning);
    const from = camera.pose;
    const to = { ...from, ...pose };
    if (!animate || matchMedia('(prefers-reduced-motion: reduce)').matches) {
      camera.pose = to;
      this.stage.moved();
      return;
    }
    const begin = performance.now();
    const turn = (now) => {
      const t = Math.min(1, Math.max(0, (now - begin) / turnMilliseconds));
      camera.pose = t < 1 ? blendPoses(from, to, t * t * (3 - 2 * t)) : to;
      this.turning = t < 1 ? requestAnimationFrame(turn) : 0;
      this.stage.moved();
    };
    this.turning = requestAnimationFrame(turn);
  }

  fit(animate = true) {
    this.turnTo(this.stage.camera.fitting(this.stage.corners), animate);
  }

  lookFrom(name) {
    const [yaw, pitch] = standardViews[name];
    const { camera } = this.stage;
    const before = camera.pose;
    Object.assign(camera, { yaw, pitch });
    const fitted = camera.fitting(this.stage.corners);
    camera.pose = before;
    this.turnTo({ yaw, pitch, ...fitted });
  }

  toggleParallel() {
    this.stage.camera.parallel = !this.stage.camera.parallel;
    this.stage.moved();
    this.changed();
  }

  // Picking.

  /** Takes the first or the second point of a measurement. */
  pickAt(x, y, reach) {
    const hit = this.stage.pick(x, y, reach);
    if (!hit) return;
    if (this.picks.length >= 2) this.picks = [];
    this.picks.push(this.describe(hit));
    this.stage.invalidate();
    this.changed();
  }

  hoverAt(x, y) {
    const hit = this.stage.pick(x, y, 5);
    this.hover = hit && this.describe(hit);
    this.listeners.hovered.forEach((listen) => listen());
  }

  describe({ layer, index, point, details = [] }) {
    return { type: layer.type, frame: layer.frame.number, index, point, details };
  }

  clearPicks() {
    this.picks = [];
    this.stage.invalidate();
    this.changed();
  }

  /** The distance between two picks, or null. */
  get measured() {
    return this.picks.length === 2 ? distance(this.picks[0].point, this.picks[1].point) : null;
  }

  /** Makes the picked point the centre of the view. */
  centreOn(x, y) {
    const hit = this.stage.pick(x, y, 5);
    if (hit) this.turnTo({ target: hit.point });
  }

  // The clipping plane: axis 0, 1, 2 or 3 (along the view when it was chosen), position 0 to 1.

  setClip(change) {
    Object.assign(this.clip, change);
    if (change.axis === 3) this.clip.normal = this.stage.camera.axes().back;
    this.updateClip();
    this.changed();
  }

  updateClip() {
    const { on, axis, position, flipped, normal } = this.clip;
    const box = this.stage.sceneBox;
    if (!on || !box || box.empty) {
      this.stage.setClip(null);
      return;
    }
    const n = axis === 3 ? normal : [0, 1, 2].map((k) => (k === axis ? 1 : 0));
    const heights = box.corners().map((corner) => dot(corner, n));
    const [low, high] = [Math.min(...heights), Math.max(...heights)];
    const offset = low + (high - low) * position;
    const sign = flipped ? -1 : 1;
    this.stage.setClip({ normal: n.map((x) => sign * x), offset: sign * offset });
    this.clip.offset = offset;
  }

  // For tests.

  /** What the page knows and shows, as plain data. */
  state() {
    const { stage } = this;
    const view = this.views.get(this.current);
    return {
      frames: this.frames.entries.map(({ number, name }) => ({ number, name })),
      current: this.current,
      shown: this.frames.entries.map(({ number }) => number).filter((n) => this.isShown(n) && this.views.has(n)),
      following: this.following,
      playing: this.playing,
      connection: { ...this.connection },
      counts: Object.fromEntries((view?.layers ?? []).map((layer) => [layer.type.key, {
        skipped: layer.skipped, ...layer.drawn,
      }])),
      styles: structuredClone(this.styles.of(this.current)),
      drawn: stage.drawn,
      marks: view?.marks.length ?? 0,
      problems: Object.fromEntries(this.problems),
      camera: { ...stage.camera.pose, parallel: stage.camera.parallel, pixelSize: stage.camera.pixelSize() },
      grid: stage.grid.cell,
      clip: stage.clip && structuredClone(stage.clip),
      picks: this.picks.map(({ type, index, point, details }) => ({ type: type.key, index, point, details })),
      measured: this.measured,
      theme: this.theme,
      pictures: stage.pictures,
      busy: stage.busy || Boolean(this.turning) || Boolean(this.showing),
    };
  }
}
