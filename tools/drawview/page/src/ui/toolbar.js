// The buttons of the top bar, and the words about the connection.

import { byId, icon, make, press, tool } from './dom.js';

const viewKeys = [['front', '1'], ['back', '2'], ['right', '3'], ['left', '4'], ['top', '5'], ['bottom', '6'], ['iso', '0']];
const viewNames = { iso: 'Isometric' };
const viewName = (view) => viewNames[view] ?? view[0].toUpperCase() + view.slice(1);

/** The button that opens the list of standard views. */
function viewsMenu(app) {
  const list = make('div', { hidden: true }, ...viewKeys.map(([view, key]) =>
    make('button', { type: 'button', onclick: () => app.lookFrom(view) }, viewName(view), make('kbd', {}, key))));
  const button = tool('cube', 'Standard views', () => (list.hidden = !list.hidden));
  document.addEventListener('click', (event) => {
    if (!button.contains(event.target)) list.hidden = true;
  });
  return make('div', { className: 'menu' }, button, list);
}

export class Toolbar {
  /** @param {import('../app.js').App} app */
  constructor(app, { screenshot, help, toggleTheme, togglePanel }) {
    this.app = app;
    byId('panel-button').append(icon('panel'));
    byId('panel-button').title = 'Frames panel (B)';
    byId('panel-button').setAttribute('aria-label', 'Frames panel');
    byId('panel-button').addEventListener('click', togglePanel);
    this.projection = tool('perspective', 'Perspective or parallel (P)', () => app.toggleParallel());
    this.switches = {
      grid: tool('grid', 'Grid (G)', () => app.toggleGrid()),
      edges: tool('edges', 'Edges (E)', () => app.toggleEverywhere('edges')),
      normals: tool('normals', 'Normals (N)', () => app.toggleEverywhere('normals')),
      poles: tool('poles', 'Poles (K)', () => app.toggleEverywhere('poles')),
      clip: tool('clip', 'Clipping plane (C)', () => app.setClip({ on: !app.clip.on })),
    };
    this.theme = tool('dark', 'Light or dark (T)', toggleTheme);
    const gap = () => make('span', { className: 'gap' });
    byId('tools').append(
      tool('fit', 'Fit to view (F)', () => app.fit()), viewsMenu(app), this.projection, gap(),
      ...Object.values(this.switches), gap(),
      tool('camera', 'Save a picture (S)', screenshot), this.theme, tool('help', 'Keys and mouse (?)', help),
    );
  }

  update() {
    const { app } = this;
    this.projection.replaceChildren(icon(app.stage.camera.parallel ? 'parallel' : 'perspective'));
    press(this.switches.grid, app.stage.grid.object.visible);
    for (const name of ['edges', 'normals', 'poles']) press(this.switches[name], app.isOn(name));
    press(this.switches.clip, app.clip.on);
    this.theme.replaceChildren(icon(app.theme === 'dark' ? 'light' : 'dark'));
    const [kind, text] = connectionWords(app);
    byId('status').dataset.kind = kind;
    byId('status').lastElementChild.textContent = text;
    byId('status').title = text;
  }
}

function connectionWords({ connection, frames }) {
  if (connection.kind === 'export') return ['', `Saved page, ${frames.entries.length} frames`];
  if (!connection.open) return ['bad', 'Not connected, trying again'];
  if (connection.replay) return ['', 'Recording'];
  return connection.sender ? ['good', 'Sender connected'] : ['wait', 'Waiting for a sender'];
}

/** What stands on the stage when no frame does, and problems with the current one. */
export function updateMessages(app) {
  const empty = byId('empty');
  empty.hidden = app.frames.entries.length > 0;
  if (!empty.hidden) fillEmpty(empty, app.connection);
  const problem = byId('problem');
  const text = app.problems.get(app.wanted);
  problem.hidden = !text;
  problem.textContent = text ? `Frame ${app.wanted} cannot be shown: ${text}` : '';
}

const example = (port) => `KilnDebugDrawProtocol viewer;
if (viewer.connect("localhost", ${port}))
  viewer.sendFrame(frame);`;

function fillEmpty(empty, { kind, open, replay, listen }) {
  const state = `${kind} ${open} ${replay} ${listen}`;
  if (empty.dataset.state === state) return;
  empty.dataset.state = state;
  const port = /:(\d+)$/.exec(listen ?? '')?.[1] ?? 'PORT';
  const parts = kind === 'export' || replay
    ? [make('h1', {}, 'No frames'), make('p', {}, 'Nothing was recorded here.')]
    : !open
      ? [make('h1', {}, 'drawview is not running'), make('p', {}, 'This page shows frames as soon as the program that serves it answers again.')]
      : [make('h1', {}, 'Waiting for a sender'),
        make('p', {}, listen ? `drawview listens on ${listen}. Connect to it from your program:` : 'Connect your program to the port given to drawview --listen:'),
        make('pre', {}, example(port)),
        make('p', { className: 'hint' }, 'Frames appear here as they arrive. Press ', make('kbd', {}, '?'), ' for keys and mouse.')];
  empty.replaceChildren(make('div', {}, ...parts));
}
