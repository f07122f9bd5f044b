// The keyboard, and the overlay that tells the keys.

import { byId, make, tool } from './dom.js';

/** Sections of [what, keys to show, keys as KeyboardEvent.key tells them, action]. */
function keyTable(app, actions) {
  const { camera } = app.stage;
  const orbit = (dx, dy) => () => {
    camera.orbit(dx, dy);
    app.stage.moved();
  };
  const zoom = (factor) => () => {
    camera.zoom(factor);
    app.stage.moved();
  };
  const step = (by) => () => {
    app.play(false);
    app.step(by);
  };
  const look = (view) => () => app.lookFrom(view);
  return [
    ['View', [
      ['Fit to view', 'F', ['f'], () => app.fit()],
      ['Front, back', '1  2', ['1', '2'], (key) => look({ 1: 'front', 2: 'back' }[key])()],
      ['Right, left', '3  4', ['3', '4'], (key) => look({ 3: 'right', 4: 'left' }[key])()],
      ['Top, bottom', '5  6', ['5', '6'], (key) => look({ 5: 'top', 6: 'bottom' }[key])()],
      ['Isometric', '0', ['0'], look('iso')],
      ['Perspective or parallel', 'P', ['p'], () => app.toggleParallel()],
      ['Zoom in, out', '+  \u2212', ['+', '=', '-'], (key) => zoom(key === '-' ? 1.2 : 1 / 1.2)()],
      ['Turn', 'Shift + arrows', ['Shift+ArrowLeft', 'Shift+ArrowRight', 'Shift+ArrowUp', 'Shift+ArrowDown'], (key) =>
        orbit({ ArrowLeft: 12, ArrowRight: -12 }[key.slice(6)] ?? 0, { ArrowUp: 12, ArrowDown: -12 }[key.slice(6)] ?? 0)()],
    ]],
    ['Time line', [
      ['Play, pause', 'Space', [' '], () => app.play()],
      ['Previous, next frame', '\u2190  \u2192', ['ArrowLeft', 'ArrowRight'], (key) => step(key === 'ArrowLeft' ? -1 : 1)()],
      ['First, last frame', 'Home  End', ['Home', 'End'], (key) => step(key === 'Home' ? -Infinity : Infinity)()],
      ['Follow new frames', '.', ['.'], () => app.setFollowing(!app.following)],
      ['Pin this frame', 'I', ['i'], () => app.current !== null && app.setPinned(app.current, !app.isPinned(app.current))],
    ]],
    ['Show', [
      ['Grid', 'G', ['g'], () => app.toggleGrid()],
      ['Edges', 'E', ['e'], () => app.toggleEverywhere('edges')],
      ['Normals', 'N', ['n'], () => app.toggleEverywhere('normals')],
      ['Poles', 'K', ['k'], () => app.toggleEverywhere('poles')],
      ['Clipping plane', 'C', ['c'], () => app.setClip({ on: !app.clip.on })],
      ['Marks', 'M', ['m'], () => app.toggleMarks()],
      ['Frames panel', 'B', ['b'], actions.togglePanel],
      ['Light or dark', 'T', ['t'], actions.toggleTheme],
      ['Save a picture', 'S', ['s'], actions.screenshot],
      ['Clear picks', 'Esc', ['Escape'], () => app.clearPicks()],
      ['This help', '?', ['?'], actions.help],
    ]],
  ];
}

const pointerTable = [
  ['Orbit', 'drag'], ['Pan', 'right or Shift + drag'], ['Zoom to the pointer', 'wheel'],
  ['Pick; pick again to measure', 'click'], ['Centre the view', 'double click'],
  ['Orbit; pan and zoom', 'one, two fingers'],
];

function section(title, rows) {
  return make('section', {}, make('h2', {}, title), make('dl', {}, ...rows.flatMap(([what, keys, isKey]) => [
    make('dt', {}, what),
    make('dd', {}, ...(isKey ? keys.split('  ').flatMap((key) => [make('kbd', {}, key), ' ']) : [keys])),
  ])));
}

/** Fills the help and listens to the keyboard. */
export function attachKeys(app, actions) {
  const table = keyTable(app, actions);
  const help = byId('help');
  help.append(
    make('header', {}, make('h1', {}, 'Keys and mouse'), tool('close', 'Close', () => help.close())),
    make('div', { className: 'columns' }, section('Mouse and touch', pointerTable),
      ...table.map(([title, rows]) => section(title, rows.map(([what, keys]) => [what, keys, true])))));
  help.addEventListener('click', (event) => event.target === help && help.close());
  const byKey = new Map(table.flatMap(([, rows]) => rows.flatMap(([, , keys, action]) => keys.map((key) => [key, action]))));
  document.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || help.open) return;
    if (event.target.matches?.('input:not([type="color"]), select') && event.key !== 'Escape') return;
    if (event.key === ' ' && event.target.matches?.('button')) return;
    const shifted = event.shiftKey && event.key.startsWith('Arrow') ? `Shift+${event.key}` : event.key;
    const key = shifted.length === 1 ? shifted.toLowerCase() : shifted;
    const action = byKey.get(key);
    if (!action) return;
    event.preventDefault();
    action(key);
  });
}
