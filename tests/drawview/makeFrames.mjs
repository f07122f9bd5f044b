// Frames for the tests of the page: messages in the format that the page reads, and exported pages.

/** Builds one message: arrays are placed at multiples of 8 and referred to. */
class Message {
  constructor() {
    this.arrays = [];
    this.size = 0;
  }

  add(array) {
    const reference = { offset: this.size, count: array.length };
    this.arrays.push([this.size, array]);
    this.size += Math.ceil(array.byteLength / 8) * 8;
    return reference;
  }

  doubles = (values) => this.add(values instanceof Float64Array ? values : Float64Array.from(values.flat(3)));
  indices = (values) => this.add(values instanceof Uint32Array ? values : Uint32Array.from(values.flat()));

  bytes(header) {
    let text = Buffer.from(JSON.stringify(header));
    const blanks = (((4 - text.length) % 8) + 8) % 8;
    text = Buffer.concat([text, Buffer.alloc(blanks, ' ')]);
    const out = Buffer.alloc(4 + text.length + this.size);
    out.writeUInt32LE(text.length, 0);
    text.copy(out, 4);
    for (const [offset, array] of this.arrays) {
      Buffer.from(array.buffer, array.byteOffset, array.byteLength).copy(out, 4 + text.length + offset);
    }
    return out;
  }
}

/** The message of a frame whose lists hold plain arrays. */
export function message(frame) {
  const out = new Message();
  const { doubles, indices } = out;
  const curve = (c) => ({ degree: c.degree, rational: Boolean(c.rational), knots: doubles(c.knots), poles: doubles(c.poles) });
  const surface = (s) => ({
    degreeU: s.degreeU, degreeV: s.degreeV, countU: s.poles.length, countV: s.poles[0].length,
    rational: Boolean(s.rational), knotsU: doubles(s.knotsU), knotsV: doubles(s.knotsV), poles: doubles(s.poles),
  });
  const trimmed = (t) => ({ surface: surface(t.surface), loops: t.loops.map((loop) => loop.map(curve)) });
  const mesh = (m) => ({
    vertices: doubles(m.vertices), normals: doubles(m.normals ?? []), triangles: indices(m.triangles),
    ...(m.edges ? { edges: indices(m.edges) } : {}),
  });
  const labels = frame.labels ?? [];
  const each = (name, convert) => (frame[name] ?? []).map(convert);
  return out.bytes({
    name: frame.name ?? '', number: frame.number ?? 1, time: frame.time ?? 1790000000000, marks: frame.marks ?? [],
    points: doubles(frame.points ?? []), lines: doubles(frame.lines ?? []),
    labels: { at: doubles(labels.map(([at]) => at)), texts: labels.map(([, text]) => text) },
    curves: each('curves', curve), surfaces: each('surfaces', surface), trimmedSurfaces: each('trimmedSurfaces', trimmed),
    shells: each('shells', (faces) => faces.map(trimmed)),
    compactMeshes: each('compactMeshes', mesh), topoMeshes: each('topoMeshes', mesh),
  });
}

const escaped = (text) =>
  text.replace(/[&<>"]/g, (c) => ({ '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;' })[c]);

/** An exported page with frames. */
export function exportedPage(page, frames) {
  const names = frames.map((frame) => `<li>${escaped(frame.name ?? '')}</li>`).join('');
  const scripts = frames.map((frame, i) =>
    `<script type="application/x-kiln-frame" data-number="${frame.number ?? i + 1}" data-name="${escaped(frame.name ?? '')}">` +
    `${message({ number: i + 1, ...frame }).toString('base64')}</script>`);
  const inserted = `<ol id="kiln-frame-names" hidden>${names}</ol>\n${scripts.join('\n')}`;
  return page.replace('<!--KILN-FRAMES-->', () => inserted);
}

/** Knots with full ends for `count` poles. */
export function clampedKnots(count, degree) {
  const inner = count - degree - 1;
  const middle = Array.from({ length: inner }, (_, i) => (i + 1) / (inner + 1));
  return [...Array(degree + 1).fill(0), ...middle, ...Array(degree + 1).fill(1)];
}

export const grid = (n, m, place) =>
  Array.from({ length: n }, (_, i) => Array.from({ length: m }, (_, j) => place(i / (n - 1), j / (m - 1))));

const circleKnots = [0, 0, 0, 0.25, 0.25, 0.5, 0.5, 0.75, 0.75, 1, 1, 1];
const corners = [[1, 0], [1, 1], [0, 1], [-1, 1], [-1, 0], [-1, -1], [0, -1], [1, -1], [1, 0]];
const weightOf = (i) => (i % 2 === 1 ? Math.SQRT1_2 : 1);

/** A whole circle as a rational quadratic, in space. */
export const circle = (centre, radius) => ({
  degree: 2, rational: true, knots: circleKnots,
  poles: corners.map(([x, y], i) => [centre[0] + radius * x, centre[1] + radius * y, centre[2], weightOf(i)]),
});

/** The same in a parameter plane; `sense` -1 turns it round. */
export const circle2 = (u, v, radius, sense = 1) => ({
  degree: 2, rational: true, knots: circleKnots,
  poles: corners.map(([x, y], i) => [u + radius * x, v + sense * radius * y, weightOf(i)]),
});

/** A closed polygon in a parameter plane, as one curve of degree 1. */
export const polygon2 = (points) => ({
  degree: 1, rational: false, poles: [...points, points[0]],
  knots: [0, ...Array.from({ length: points.length + 1 }, (_, i) => i), points.length],
});

/** A surface of revolution about the z axis from profile poles [radius, z, weight]. */
export const revolved = (centre, profile, degree, knots) => ({
  degreeU: 2, degreeV: degree, rational: true, knotsU: circleKnots, knotsV: knots,
  poles: corners.map(([x, y], i) =>
    profile.map(([r, z, w = 1]) => [centre[0] + r * x, centre[1] + r * y, centre[2] + z, weightOf(i) * w])),
});

/** A sphere; its poles are singular points of the surface. */
export const sphere = (centre, r) =>
  revolved(centre, [[0, -r], [r, -r, Math.SQRT1_2], [r, 0], [r, r, Math.SQRT1_2], [0, r]], 2, [0, 0, 0, 0.5, 0.5, 1, 1, 1]);

/** A surface z = height(x, y) over [x0, x1] x [y0, y1] with n x m poles of degree 3. */
export function heightField([x0, x1], [y0, y1], n, m, height) {
  const place = (u, v) => [x0 + (x1 - x0) * u, y0 + (y1 - y0) * v, height(x0 + (x1 - x0) * u, y0 + (y1 - y0) * v)];
  return { degreeU: 3, degreeV: 3, knotsU: clampedKnots(n, 3), knotsV: clampedKnots(m, 3), poles: grid(n, m, place) };
}

/** A triangle mesh over a grid of n x m points, with its edges; `normals` when asked. */
export function gridMesh(n, m, place, normalAt = null) {
  const vertices = grid(n, m, place).flat();
  const triangles = [];
  const edges = [];
  for (let i = 0; i < n; ++i) {
    for (let j = 0; j < m; ++j) {
      const at = i * m + j;
      if (j + 1 < m) edges.push([at, at + 1]);
      if (i + 1 < n) edges.push([at, at + m]);
      if (i + 1 < n && j + 1 < m) triangles.push([at, at + m, at + m + 1], [at, at + m + 1, at + 1]);
    }
  }
  return { vertices, triangles, edges, normals: normalAt ? grid(n, m, normalAt).flat() : [] };
}

/** Numbers from 0 to 1, the same in every run. */
export function randoms(seed = 1) {
  let state = seed;
  return () => (state = (state * 16807) % 2147483647) / 2147483647;
}
