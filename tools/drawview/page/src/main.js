// Puts the page together.

import { App } from './app.js';
import { attachControls } from './controls.js';
import { Cards, updateFigures } from './ui/cards.js';
import { byId } from './ui/dom.js';
import { attachKeys } from './ui/keys.js';
import { Gizmo, Labels, updateMeasure } from './ui/overlay.js';
import { savePicture } from './ui/screenshot.js';
import { attachTheme } from './ui/theme.js';
import { TimeLine } from './ui/timeline.js';
import { Toolbar, updateMessages } from './ui/toolbar.js';
import { Tree } from './ui/tree.js';

const narrow = 760;

function start() {
  const app = new App(byId('picture'));
  const labels = new Labels(app);
  const gizmo = new Gizmo(app);
  const toggleTheme = attachTheme(app);
  const actions = {
    toggleTheme,
    screenshot: () => savePicture(app, labels),
    help: () => (byId('help').open ? byId('help').close() : byId('help').showModal()),
    togglePanel: () => {
      document.body.classList.toggle('wide');
      resize();
    },
  };
  const cards = new Cards(app);
  const parts = [new Tree(app), new TimeLine(app), new Toolbar(app, actions), cards];
  const resize = () => {
    app.stage.resize();
    app.stage.moved();
  };
  app.listeners.changed.push(() => parts.forEach((part) => part.update()), () => updateMessages(app));
  app.listeners.hovered.push(() => cards.updateUnder());
  app.listeners.drawn.push(() => labels.update(), () => gizmo.update(), () => updateMeasure(app), () => updateFigures(app));
  document.body.classList.toggle('wide', innerWidth <= narrow);
  attachControls(byId('picture'), app);
  attachKeys(app, actions);
  new ResizeObserver(resize).observe(byId('stage'));
  resize();
  app.start(document);
  app.changed();
  // For tests: what the page shows, and how long one picture takes.
  window.kilnView = Object.freeze({
    state: () => ({ ...app.state(), labels: labels.placed.map(({ text, mark }) => ({ text, mark: Boolean(mark) })) }),
    measure: () => {
      const begin = performance.now();
      app.stage.drawNow();
      return performance.now() - begin;
    },
    project: (point) => app.stage.camera.project(point),
  });
}

start();
