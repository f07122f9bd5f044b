// Exported pages, opened from disk: what they show, and what can be done with them.

import assert from 'node:assert/strict';
import { after, before, describe, it } from 'node:test';
import { Browser, pageText } from './browser.mjs';
import * as make from './makeFrames.mjs';

const hostile = '</script><img src=x onerror="window.hacked=1"><b>&amp;';
const square = (z, x = 0) => ({ vertices: [[x, 0, z], [x + 4, 0, z], [x + 4, 4, z], [x, 4, z]], triangles: [[0, 1, 2], [0, 2, 3]] });
const plane = make.heightField([0, 4], [0, 4], 4, 4, () => 0);
const box = [[0, 0, 0], [4, 4, 4]];

/** One frame for each type, and how much of it is drawn. */
const kinds = [
  ['points', { points: [...box, [2, 2, 2]] }, { points: 3 }],
  ['lines', { lines: [[0, 0, 0, 4, 4, 4], [4, 0, 0, -4, 4, 4]] }, { segments: 2 }],
  ['labels', { points: box, labels: [[[2, 2, 2], 'here']] }, { points: 1 }],
  ['curves', { curves: [{ degree: 1, knots: [0, 0, 1, 1], poles: [[0, 0, 0], [4, 4, 4]] }] }, { segments: 1 }],
  ['surfaces', { surfaces: [make.sphere([0, 0, 0], 2)] }, {}],
  ['trimmedSurfaces', { trimmedSurfaces: [{ surface: plane, loops: [[make.circle2(0.5, 0.5, 0.4)]] }] }, {}],
  ['shells', { shells: [[{ surface: plane, loops: [] }, { surface: make.sphere([8, 0, 0], 2), loops: [] }]] }, {}],
  ['compactMeshes', { compactMeshes: [square(0)] }, { triangles: 2, segments: 5 }],
  ['topoMeshes', { topoMeshes: [{ ...square(0), edges: [[0, 1], [1, 2], [2, 3], [3, 0]] }] }, { triangles: 2, segments: 4 }],
];

describe('an exported page', () => {
  let browser;
  const open = (frames, options) => browser.openText(make.exportedPage(pageText(), frames), options);
  const close = async (view) => {
    assert.deepEqual(view.errors, []);
    await view.page.close();
  };
  before(async () => (browser = await Browser.start()));
  after(() => browser.stop());

  it('asks for nothing, holds no address, and shows names and labels as texts', async () => {
    const text = make.exportedPage(pageText(), [{ name: hostile, points: box, labels: [[[2, 2, 2], hostile]] }]);
    assert.doesNotMatch(text, /(https?|wss?):\/\//);
    const view = await browser.openText(text);
    const state = await view.until(({ labels }) => labels.length === 1);
    assert.deepEqual(view.requests.filter((url) => !url.startsWith('file:') && !url.startsWith('data:')), []);
    assert.deepEqual(state.frames, [{ number: 1, name: hostile }]);
    assert.equal(state.labels[0].text, hostile);
    assert.equal(await view.text('#labels div'), hostile);
    assert.equal(await view.text('#time b'), hostile);
    assert.ok((await view.text('#tree')).includes(hostile));
    assert.equal(await view.page.evaluate(() => window.hacked), undefined);
    await close(view);
  });

  it('draws every type, and hides it', async () => {
    const view = await open(kinds.map(([name, frame]) => ({ name, ...frame })));
    await view.press('g', 'f');
    for (const [key, , drawn] of kinds) {
      const { counts } = await view.until((state) => state.counts[key], key);
      assert.equal(counts[key].skipped, 0);
      for (const [what, count] of Object.entries(drawn)) assert.equal(counts[key][what], count, `${what} of ${key}`);
      await view.press('f');
      const pixels = await view.changed(() => view.toggle(key));
      assert.ok(pixels > (key === 'points' || key === 'labels' ? 10 : 300), `${pixels} pixels of ${key}`);
      await view.toggle(key);
      await view.press('ArrowRight');
    }
    await close(view);
  });

  it('steps along the time line and plays it', async () => {
    const frames = [0, 1, 2, 3].map((z) => ({ name: `pass ${z}`, compactMeshes: [square(z, z)] }));
    const view = await open(frames);
    const moved = await view.changed(() => view.press('ArrowRight'));
    assert.ok(moved > 2000, `${moved} pixels`);
    assert.equal((await view.state()).current, 2);
    assert.equal((await view.press('End')).current, 4);
    assert.equal((await view.press('ArrowRight')).current, 4);
    assert.equal((await view.press('Home')).current, 1);
    await view.page.select('#time select', '30');
    await view.press('Space');
    assert.equal((await view.until((state) => !state.playing && state.current === 4)).playing, false);
    assert.equal(await view.text('#time b'), 'pass 3');
    await view.page.click('.frame[data-number="2"] .name');
    assert.deepEqual((await view.until((state) => state.current === 2)).shown, [2]);
    await view.press('i', 'ArrowRight');
    assert.deepEqual((await view.until((state) => state.current === 3)).shown, [2, 3]);
    await close(view);
  });

  it('picks points, curves, surfaces and vertices exactly, and measures', async () => {
    const far = [123456.5, -7000.25, 0.125];
    const shifted = (x, y, z) => [far[0] + x, far[1] + y, far[2] + z];
    const view = await open([{
      name: 'picks', points: [shifted(0, 0, 0), shifted(3, 4, 0)], curves: [make.circle(shifted(0, 0, 4), 2)],
      surfaces: [make.sphere(shifted(8, 0, 0), 2)],
      compactMeshes: [{ vertices: [shifted(-8, 0, 0), shifted(-4, 0, 0), shifted(-4, 4, 0)], triangles: [[0, 1, 2]] }],
    }]);
    await view.click(shifted(0, 0, 0));
    const { picks, measured } = await view.click(shifted(3, 4, 0));
    assert.deepEqual(picks.map(({ type, index, point }) => [type, index, point]),
      [['points', 0, shifted(0, 0, 0)], ['points', 1, shifted(3, 4, 0)]]);
    assert.equal(measured, 5);
    assert.match(await view.text('#picks'), /Measure.*123456\.5.*-7000\.25.*5/s);

    await view.press('Escape');
    const [onCurve] = (await view.click(shifted(0, -2, 4))).picks;
    assert.equal(onCurve.type, 'curves');
    assert.ok(Math.abs(Math.hypot(onCurve.point[0] - far[0], onCurve.point[1] - far[1]) - 2) < 1e-9);
    await view.press('Escape');
    const [onSphere] = (await view.click(shifted(8.5, -1.5, 1.2))).picks;
    assert.equal(onSphere.type, 'surfaces');
    const radius = Math.hypot(...onSphere.point.map((x, k) => x - shifted(8, 0, 0)[k]));
    assert.ok(Math.abs(radius - 2) < 1e-9, `${radius}`);
    await view.press('Escape');
    const [vertex] = (await view.click(shifted(-4, 4, 0))).picks;
    assert.deepEqual([vertex.point, vertex.details.at(-1)], [shifted(-4, 4, 0), ['at', 'vertex 2']]);
    await close(view);
  });

  it('stays smooth when it zooms in, to the pointer', async () => {
    const view = await open([{ name: 'circle', curves: [make.circle([0, 0, 0], 1)] }]);
    await view.press('5');
    const edge = [-Math.SQRT1_2, Math.SQRT1_2, 0];
    const { x, y } = await view.placeOf(edge);
    await view.page.mouse.move(x, y);
    for (let i = 0; i < 40; ++i) await view.page.mouse.wheel({ deltaY: -240 });
    const { camera } = await view.until((state) => state.camera.distance < 1e-3);
    const ink = await view.pixels({ x: Math.round(x) - 100, y: Math.round(y) - 100, width: 200, height: 200 });
    const orange = [];
    for (let i = 0; i < ink.data.length; i += 4) {
      if (ink.data[i] > 180 && ink.data[i + 2] < 100) orange.push([(i / 4) % ink.width, Math.floor(i / 4 / ink.width)]);
    }
    assert.ok(orange.length > 150, `${orange.length} pixels of a line`);
    const off = orange.map(([px, py]) => Math.abs(px + py - 200) / Math.SQRT2);
    assert.ok(Math.max(...off) < 6, `a straight line through the pointer: ${Math.max(...off)} at ${camera.pixelSize}`);
    await close(view);
  });

  it('skips and counts what is not finite', async () => {
    const broken = square(0);
    broken.vertices = [...broken.vertices, [NaN, 0, 0]];
    broken.triangles = [...broken.triangles, [0, 1, 4]];
    const view = await open([{
      name: 'faults', points: [[0, 0, 0], [NaN, 0, 0], [0, Infinity, 0], [1, 1, 1e200]], lines: [[0, 0, 0, Infinity, 0, 0], [0, 0, 0, 1, 1, 1]],
      curves: [{ degree: 1, knots: [0, 0, 1, 1], poles: [[0, 0, 0], [0, -Infinity, 0]] }], compactMeshes: [broken],
    }]);
    const { counts } = await view.state();
    const figures = Object.entries(counts).map(([key, { skipped, points, triangles }]) => [key, skipped, points + triangles]);
    assert.deepEqual(figures, [['points', 3, 1], ['lines', 1, 1], ['curves', 1, 0], ['compactMeshes', 1, 2]]);
    assert.match(await view.text('[data-type="points"]'), /3 skipped/);
    await close(view);
  });

  it('shows standard views, parallel ones, the clipping plane and both themes, and saves a picture', async () => {
    const view = await open([{ name: 'one', compactMeshes: [square(0)] }]);
    const turned = await view.press('5', 'p');
    assert.deepEqual([turned.camera.pitch, turned.camera.parallel], [Math.PI / 2, true]);
    const corners = await Promise.all([[0, 0, 0], [4, 0, 0], [0, 4, 0]].map((p) => view.placeOf(p)));
    assert.ok(Math.abs(corners[0].y - corners[1].y) < 1e-6, 'x goes to the right');
    assert.ok(Math.abs(corners[0].x - corners[2].x) < 1e-6, 'y goes up');
    assert.ok(corners[2].y < corners[0].y, 'y goes up');
    const area = (corners[1].x - corners[0].x) ** 2;
    const cut = await view.changed(() => view.press('c'), { x: corners[2].x + 2, y: corners[2].y + 2, width: corners[1].x - corners[0].x - 4, height: corners[0].y - corners[2].y - 4 });
    assert.ok(Math.abs(cut / area - 0.5) < 0.1, `${cut} of ${area} pixels are cut off`);
    const middle = (corners[0].x + corners[1].x) / 2;
    await view.page.mouse.click(middle + 40, (corners[0].y + corners[2].y) / 2);
    assert.deepEqual((await view.press()).picks, []);
    const dark = (await view.pixels({ x: 300, y: 600, width: 1, height: 1 })).data;
    const { theme } = await view.press('t');
    const light = (await view.pixels({ x: 300, y: 600, width: 1, height: 1 })).data;
    assert.equal(theme, 'light');
    assert.ok(light[0] - dark[0] > 100, `${light} after ${dark}`);
    assert.deepEqual([...(await view.download('s')).subarray(1, 4)], [...Buffer.from('PNG')]);
    await view.press('?');
    assert.ok(await view.page.$eval('#help', (dialog) => dialog.open));
    await close(view);
  });

  it('draws a million points and a million triangles, and picks among them', async () => {
    const place = (u, v) => [10 * u, 10 * v, Math.sin(7 * u) * Math.cos(5 * v)];
    const mesh = make.gridMesh(708, 708, place);
    const random = make.randoms(3);
    const points = Float64Array.from({ length: 3e6 }, (_, i) => 10 * random() + (i % 3 === 2 ? 1.5 : 0));
    const view = await open([{ name: 'large', points, compactMeshes: [mesh] }]);
    const { drawn } = await view.until((state) => state.current === 1);
    assert.equal(drawn.points, 1e6);
    assert.equal(drawn.triangles, 2 * 707 * 707);
    console.log(`one picture takes ${Math.round(await view.page.evaluate(() => window.kilnView.measure()))} ms`);
    await view.toggle('points');
    const [pick] = (await view.click(place(0.5, 0.25))).picks;
    assert.equal(pick.type, 'compactMeshes');
    await close(view);
  });

  it('fits a phone, where fingers turn and zoom it', async () => {
    const view = await open([{ name: 'phone', compactMeshes: [square(0)], labels: [[[2, 2, 0], 'middle']] }], { width: 390, height: 844, touch: true });
    const width = await view.page.evaluate(() => document.documentElement.scrollWidth);
    assert.equal(width, 390);
    const { camera: first } = await view.state();
    const one = await view.page.touchscreen.touchStart(150, 400);
    await one.move(200, 420);
    const { camera: turned } = await view.press();
    assert.notEqual(turned.yaw, first.yaw);
    const two = await view.page.touchscreen.touchStart(250, 500);
    await two.move(320, 640);
    await two.end();
    await one.end();
    assert.ok((await view.press()).camera.distance < first.distance);
    assert.deepEqual((await view.state()).picks, []);
    await view.page.touchscreen.tap(...Object.values(await view.placeOf([1, 2, 0])));
    assert.equal((await view.until((state) => state.picks.length === 1)).picks[0].type, 'compactMeshes');
    await view.page.tap('#panel-button');
    await view.page.waitForFunction(() => document.getElementById('tree').getBoundingClientRect().left >= 0);
    await close(view);
  });
});
