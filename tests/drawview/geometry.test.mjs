// The parts of the page that need no browser: messages, splines, chords and trimming.

import assert from 'node:assert/strict';
import { describe, it } from 'node:test';
import * as bspline from '../../tools/drawview/page/src/bspline.js';
import { FormatError, readFrame } from '../../tools/drawview/page/src/format.js';
import { curveParameters, surfaceLines, tessellateSurface } from '../../tools/drawview/page/src/tessellate.js';
import { loopPolygon, trimSurface } from '../../tools/drawview/page/src/trim.js';
import * as make from './makeFrames.mjs';

const buffer = (bytes) => bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.length);
const everything = {
  name: 'a "name"', points: [[1, 2, 3]], lines: [[0, 0, 0, 1, 1, 1]], labels: [[[1, 1, 1], 'text']],
  curves: [make.circle([0, 0, 0], 2)], surfaces: [make.sphere([0, 0, 0], 1)],
  trimmedSurfaces: [{ surface: make.heightField([0, 1], [0, 1], 4, 4, () => 0), loops: [[make.circle2(0.5, 0.5, 0.3)]] }],
  compactMeshes: [{ vertices: [[0, 0, 0], [1, 0, 0], [0, 1, 0]], triangles: [[0, 1, 2]] }],
  topoMeshes: [make.gridMesh(3, 3, (u, v) => [u, v, 0])], marks: [[0, 0]],
};

/** A surface as the reader tells it. */
const read = (surface) => readFrame(buffer(make.message({ surfaces: [surface] }))).surfaces[0];

describe('message', () => {
  it('is read back', () => {
    const frame = readFrame(buffer(make.message(everything)));
    assert.deepEqual([...frame.points], [1, 2, 3]);
    assert.deepEqual(frame.labels.texts, ['text']);
    assert.equal(frame.curves[0].rational, true);
    assert.equal(frame.trimmedSurfaces[0].loops[0][0].dimension, 2);
    assert.equal(frame.topoMeshes[0].edges.length, 24);
  });

  it('names no vertex that is not there', () => {
    const mesh = (index) => ({ compactMeshes: [{ vertices: [[0, 0, 0], [1, 0, 0], [0, 1, 0]], triangles: [[0, 1, index]] }] });
    assert.equal(readFrame(buffer(make.message(mesh(2)))).compactMeshes.length, 1);
    assert.throws(() => readFrame(buffer(make.message(mesh(3)))), /compactMeshes\[0\]\.triangles: vertex 3 of 3/);
  });

  it('is refused wherever it is cut, and for lying references', () => {
    const whole = make.message(everything);
    for (let size = 0; size < whole.length; size += 7) {
      assert.throws(() => readFrame(buffer(whole.subarray(0, size))), FormatError, `${size} bytes`);
    }
    const lies = [
      { points: { offset: 0, count: 3e9 } }, { points: { offset: 4, count: 0 } }, { points: { offset: -8, count: 3 } },
      { points: { offset: 0, count: 4 } }, { points: { offset: 0, count: 1.5 } }, { points: 7 }, { curves: {} },
      { curves: [{ degree: 'x' }] }, { labels: { texts: ['too many'] } }, { marks: [[1]] }, { number: -1 },
      { compactMeshes: [{ vertices: { offset: 0, count: 3 }, triangles: { offset: 0, count: 3 } }] },
      { surfaces: [{ degreeU: 1, degreeV: 1, countU: 2, countV: 2 }] },
    ];
    for (const lie of lies) {
      let text = JSON.stringify(lie);
      text = text.padEnd(Math.ceil((text.length + 4) / 8) * 8 - 4);
      const bytes = Buffer.concat([Buffer.from([text.length, 0, 0, 0]), Buffer.from(text), Buffer.alloc(64, 1)]);
      assert.throws(() => readFrame(buffer(bytes)), FormatError, text);
    }
  });
});

describe('splines', () => {
  it('have the derivatives that differences show', () => {
    const surface = read(make.sphere([1, 2, 3], 2));
    const at = (u, v, count) => bspline.surfaceAt(surface, u, v, count, new Float64Array(18));
    const h = 1e-5;
    for (const [u, v] of [[0.1, 0.3], [0.6, 0.7], [0.9, 0.45]]) {
      const exact = at(u, v, 6);
      const right = at(u + h, v, 3);
      const left = at(u - h, v, 3);
      const above = at(u, v + h, 3);
      const below = at(u, v - h, 3);
      for (let k = 0; k < 3; ++k) {
        const near = (value, difference, what) =>
          assert.ok(Math.abs(value - difference) < 1e-7 * 100, `${what}: ${value} and ${difference}`);
        near(exact[3 + k], (right[k] - left[k]) / (2 * h), 'Su');
        near(exact[6 + k], (above[k] - below[k]) / (2 * h), 'Sv');
        near(exact[9 + k], (right[3 + k] - left[3 + k]) / (2 * h), 'Suu');
        near(exact[12 + k], (right[6 + k] - left[6 + k]) / (2 * h), 'Suv');
        near(exact[15 + k], (above[6 + k] - below[6 + k]) / (2 * h), 'Svv');
      }
    }
  });

  it('that cannot be drawn are told', () => {
    const curve = { degree: 2, rational: false, dimension: 3, knots: Float64Array.of(0, 0, 0, 1, 1, 1), poles: new Float64Array(9) };
    const faults = [
      [{}, ''], [{ degree: 0 }, 'degree 0'], [{ poles: new Float64Array(6) }, '2 poles for degree 2'],
      [{ knots: new Float64Array(5) }, '5 knots for 3 poles'], [{ knots: Float64Array.of(0, 0, 0, 1, 0, 1) }, 'knots that fall'],
      [{ knots: new Float64Array(6) }, 'an empty domain'], [{ poles: new Float64Array(9).fill(NaN) }, 'a pole that is not finite'],
      [{ rational: true, poles: new Float64Array(12) }, 'weight 0'],
    ];
    for (const [change, fault] of faults) assert.equal(bspline.curveFault({ ...curve, ...change }), fault);
  });
});

describe('chords', () => {
  const circle = readFrame(buffer(make.message({ curves: [make.circle([0, 0, 0], 2)] }))).curves[0];

  it('of a circle are as near as asked, and not many', () => {
    for (const tolerance of [1e-2, 1e-4, 1e-6]) {
      const points = curveParameters(circle, () => tolerance).map((t) => bspline.curvePoint(circle, t, [0, 0, 0]));
      const sagittas = points.slice(1).map((p, i) => 2 - Math.hypot(p[0] + points[i][0], p[1] + points[i][1]) / 2);
      assert.ok(Math.max(...sagittas) < 1.01 * tolerance, `${Math.max(...sagittas)} for ${tolerance}`);
      assert.ok(points.length < 8 * Math.ceil(Math.PI / Math.sqrt(2 * tolerance / 2)), `${points.length} points`);
    }
  });

  it('of a surface are as near as asked where the view looks, and coarse elsewhere', () => {
    const surface = read(make.sphere([0, 0, 0], 1));
    const near = ([x]) => (x > 0.9 ? 1e-5 : 1e-2);
    const { vertices, triangles } = tessellateSurface(surface, surfaceLines(surface, (c, r) => near([c[0] + r])));
    const uniform = surfaceLines(surface, () => 1e-5);
    assert.ok(vertices.count < uniform.u.length * uniform.v.length, `${vertices.count} vertices`);
    const coordinate = (i, k) => vertices.positions[3 * triangles[i] + k];
    for (let i = 0; i < triangles.length; i += 3) {
      const middle = [0, 1, 2].map((k) => (coordinate(i, k) + coordinate(i + 1, k) + coordinate(i + 2, k)) / 3);
      const gap = 1 - Math.hypot(...middle);
      assert.ok(gap < 2.1 * near(middle), `${gap} at ${middle}`);
    }
    vertices.normals.forEach((x, i) => assert.ok(Math.abs(x - vertices.positions[i]) < 1e-3, 'a normal points outwards'));
  });
});

describe('trimming', () => {
  const flat = read({
    degreeU: 1, degreeV: 1, knotsU: make.clampedKnots(7, 1), knotsV: make.clampedKnots(6, 1),
    poles: make.grid(7, 6, (u, v) => [u, v, 0]),
  });
  const loopOf = (points) => [readFrame(buffer(make.message({
    trimmedSurfaces: [{ surface: make.heightField([0, 1], [0, 1], 4, 4, () => 0), loops: [[make.polygon2(points)]] }],
  }))).trimmedSurfaces[0].loops[0][0]];
  const area = (loops, view = () => 1e-4) => {
    const polygons = loops.map((points) => loopPolygon(flat, loopOf(points), view));
    const { vertices: { positions: p }, triangles } = trimSurface(flat, surfaceLines(flat, view), polygons);
    let sum = 0;
    for (let i = 0; i < triangles.length; i += 3) {
      const [a, b, c] = [0, 1, 2].map((k) => 3 * triangles[i + k]);
      const twice = (p[b] - p[a]) * (p[c + 1] - p[a + 1]) - (p[c] - p[a]) * (p[b + 1] - p[a + 1]);
      assert.ok(twice > -1e-15, 'no triangle is turned over');
      sum += twice / 2;
    }
    return sum;
  };

  it('keeps what an odd number of loops encloses', () => {
    const square = (low, high) => [[low, low], [high, low], [high, high], [low, high]];
    const cases = [
      [[square(0, 1)], 1], [[square(0.1, 0.9)], 0.64], [[square(0.1, 0.9), square(0.3, 0.6)], 0.55],
      [[square(0.1, 0.9), square(0.3, 0.6), square(0.4, 0.5)], 0.56], [[square(-1, 2)], 1], [[square(0.25, 0.5).reverse()], 0.0625],
      [[[[0.2, 0.1], [0.9, 0.5], [0.2, 0.7], [0.4, 0.4]]], 0.15], [[square(0.1, 0.6), square(0.4, 0.9)], 0.42],
    ];
    for (const [loops, expected] of cases) {
      assert.ok(Math.abs(area(loops) - expected) < 1e-9, `${area(loops)} for ${expected}: ${JSON.stringify(loops)}`);
    }
  });
});
