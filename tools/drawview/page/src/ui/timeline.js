// The time line: play, step, a slider over the frames, and whether new frames are followed.

import { byId, fillSlider, icon, make, press, tool } from './dom.js';

const speeds = [1, 2, 4, 8, 15, 30];

function timeText(milliseconds) {
  if (!milliseconds) return '';
  const date = new Date(milliseconds);
  const two = (value) => String(value).padStart(2, '0');
  return `${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}.${String(date.getMilliseconds()).padStart(3, '0')}`;
}

export class TimeLine {
  /** @param {import('../app.js').App} app */
  constructor(app) {
    this.app = app;
    const step = (name, label, by) => tool(name, label, () => {
      app.play(false);
      app.step(by);
    });
    this.play = tool('play', 'Play (Space)', () => app.play(), { className: 'play' });
    this.steps = [
      step('first', 'First frame (Home)', -Infinity), step('previous', 'Previous frame (Left)', -1),
      this.play, step('next', 'Next frame (Right)', 1), step('last', 'Last frame (End)', Infinity),
    ];
    this.slider = make('input', { type: 'range', min: 0, step: 1, id: 'time-slider', 'aria-label': 'Frame',
      oninput: () => app.stepTo(Number(this.slider.value)) });
    this.ticks = make('canvas', {});
    this.name = make('b');
    this.detail = make('small');
    this.speed = make('select', { title: 'Frames per second', 'aria-label': 'Frames per second',
      onchange: () => (app.framesPerSecond = Number(this.speed.value)) },
      ...speeds.map((value) => make('option', { value, selected: value === app.framesPerSecond }, `${value} / s`)));
    this.live = make('button', { type: 'button', className: 'live', title: 'Follow new frames (.)',
      onclick: () => app.setFollowing(!app.following) }, 'Live');
    byId('time').append(make('div', { className: 'buttons' }, ...this.steps),
      make('div', { className: 'track' }, this.slider, this.ticks),
      make('div', { className: 'now' }, this.name, this.detail), this.speed, this.live);
  }

  update() {
    const { app } = this;
    const { entries } = app.frames;
    const at = app.frames.indexOf(app.current);
    for (const button of [...this.steps, this.slider]) button.disabled = entries.length < 2;
    this.slider.max = Math.max(0, entries.length - 1);
    this.slider.value = Math.max(0, at);
    fillSlider(this.slider);
    if (entries.length === 0) this.slider.style.setProperty('--fill', '0%');
    const frame = app.views.get(app.current)?.frame;
    const entry = entries[at];
    this.name.textContent = entry ? entry.name || 'unnamed' : '';
    this.name.title = entry?.name ?? '';
    this.detail.textContent = entry ? `${at + 1} of ${entries.length}${frame?.time ? `  ·  ${timeText(frame.time)}` : ''}` : '';
    if (this.playing !== app.playing) {
      this.playing = app.playing;
      this.play.replaceChildren(icon(app.playing ? 'pause' : 'play'));
    }
    this.live.hidden = app.connection.kind !== 'server' || app.connection.replay;
    press(this.live, app.following);
    this.drawTicks(entries.length);
  }

  drawTicks(count) {
    const { clientWidth: width, clientHeight: height } = this.ticks;
    const state = `${count} ${width} ${this.app.theme}`;
    if (state === this.tickState) return;
    this.tickState = state;
    Object.assign(this.ticks, { width: width * devicePixelRatio, height: height * devicePixelRatio });
    if (count < 2 || width / count < 4) return;
    const context = this.ticks.getContext('2d');
    context.scale(devicePixelRatio, devicePixelRatio);
    context.fillStyle = getComputedStyle(document.documentElement).getPropertyValue('--faint');
    for (let i = 0; i < count; ++i) context.fillRect(((width - 1) * i) / (count - 1), 2, 1, 4);
  }
}
