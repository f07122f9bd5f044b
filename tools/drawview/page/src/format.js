// Reads the message of a frame: a length, a JSON header, and the payload that the header refers to.
// docs/draw-recording.md tells the format. The bytes come from outside: every reference is checked
// before use, and FormatError names the entry that is wrong.

/** A message that is not a frame; the text names the entry and what is wrong with it. */
export class FormatError extends Error {}

/**
 * @typedef {{degree: number, rational: boolean, knots: Float64Array, poles: Float64Array,
 *            dimension: number}} Curve poles hold `dimension` coordinates, and a weight if rational
 * @typedef {{degreeU: number, degreeV: number, countU: number, countV: number, rational: boolean,
 *            knotsU: Float64Array, knotsV: Float64Array, poles: Float64Array}} Surface
 * @typedef {{surface: Surface, loops: Curve[][]}} TrimmedSurface
 * @typedef {{vertices: Float64Array, normals: Float64Array, triangles: Uint32Array,
 *            edges: Uint32Array | null}} Mesh edges is null for a compact mesh
 * @typedef {{name: string, number: number, time: number, marks: number[][], points: Float64Array,
 *            lines: Float64Array, labels: {at: Float64Array, texts: string[]}, curves: Curve[],
 *            surfaces: Surface[], trimmedSurfaces: TrimmedSurface[], shells: TrimmedSurface[][],
 *            compactMeshes: Mesh[], topoMeshes: Mesh[]}} Frame
 */

/** Reads the parts of one message; arrays are views of its buffer. */
class Reader {
  /** @param {ArrayBuffer} buffer */
  constructor(buffer) {
    if (buffer.byteLength < 4) throw new FormatError(`${buffer.byteLength} bytes are no frame`);
    const headerBytes = new DataView(buffer).getUint32(0, true);
    this.start = 4 + headerBytes;
    if (this.start > buffer.byteLength) {
      throw new FormatError(`header of ${headerBytes} bytes in a message of ${buffer.byteLength}`);
    }
    if (this.start % 8 !== 0) throw new FormatError(`payload starts at byte ${this.start}`);
    this.buffer = buffer;
    this.header = this.parse(new Uint8Array(buffer, 4, headerBytes));
  }

  parse(bytes) {
    let header;
    try {
      header = JSON.parse(new TextDecoder('utf-8', { fatal: true }).decode(bytes));
    } catch (error) {
      throw new FormatError(`header is not JSON: ${error.message}`);
    }
    return object(header, 'header');
  }

  /** The array that a reference names: count is a multiple of `group`. */
  array(reference, type, group, place) {
    if (reference === undefined) return new type(0);
    const offset = whole(object(reference, place).offset, `${place}.offset`);
    const count = whole(reference.count, `${place}.count`);
    const available = this.buffer.byteLength - this.start;
    if (offset % 8 !== 0) throw new FormatError(`${place}: offset ${offset} is no multiple of 8`);
    if (offset + count * type.BYTES_PER_ELEMENT > available) {
      throw new FormatError(`${place}: ${count} numbers at ${offset} in ${available} bytes`);
    }
    if (count % group !== 0) {
      throw new FormatError(`${place}: ${count} numbers are no multiple of ${group}`);
    }
    return new type(this.buffer, this.start + offset, count);
  }

  doubles(reference, group, place) {
    return this.array(reference, Float64Array, group, place);
  }

  curve(entry, dimension, place) {
    const rational = object(entry, place).rational === true;
    const degree = whole(entry.degree, `${place}.degree`);
    const knots = this.doubles(entry.knots, 1, `${place}.knots`);
    const poles = this.doubles(entry.poles, dimension + (rational ? 1 : 0), `${place}.poles`);
    return { degree, rational, knots, poles, dimension };
  }

  surface(entry, place) {
    const rational = object(entry, place).rational === true;
    const surface = { rational };
    for (const name of ['degreeU', 'degreeV', 'countU', 'countV']) {
      surface[name] = whole(entry[name], `${place}.${name}`);
    }
    surface.knotsU = this.doubles(entry.knotsU, 1, `${place}.knotsU`);
    surface.knotsV = this.doubles(entry.knotsV, 1, `${place}.knotsV`);
    const size = rational ? 4 : 3;
    surface.poles = this.doubles(entry.poles, size, `${place}.poles`);
    if (surface.poles.length !== surface.countU * surface.countV * size) {
      throw new FormatError(
        `${place}: ${surface.poles.length / size} poles for ${surface.countU} x ${surface.countV}`,
      );
    }
    return surface;
  }

  trimmedSurface(entry, place) {
    return {
      surface: this.surface(object(entry, place).surface, `${place}.surface`),
      loops: each(entry.loops, `${place}.loops`, (loop, at) =>
        each(loop, at, (curve, where) => this.curve(curve, 2, where)),
      ),
    };
  }

  mesh(entry, hasEdges, place) {
    const vertices = this.doubles(object(entry, place).vertices, 3, `${place}.vertices`);
    const normals = this.doubles(entry.normals, 3, `${place}.normals`);
    if (normals.length !== 0 && normals.length !== vertices.length) {
      throw new FormatError(
        `${place}: ${normals.length / 3} normals for ${vertices.length / 3} vertices`,
      );
    }
    const indices = (name, group) => {
      const list = this.array(entry[name], Uint32Array, group, `${place}.${name}`);
      checkIndices(list, vertices.length / 3, `${place}.${name}`);
      return list;
    };
    return {
      vertices,
      normals,
      triangles: indices('triangles', 3),
      edges: hasEdges ? indices('edges', 2) : null,
    };
  }

  labels(entry = {}) {
    const at = this.doubles(object(entry, 'labels').at, 3, 'labels.at');
    const texts = each(entry.texts, 'labels.texts', (text) => String(text));
    if (texts.length !== at.length / 3) {
      throw new FormatError(`labels: ${texts.length} texts for ${at.length / 3} places`);
    }
    return { at, texts };
  }
}

function object(value, place) {
  if (value === null || typeof value !== 'object' || Array.isArray(value)) {
    throw new FormatError(`${place} is no object`);
  }
  return value;
}

function whole(value, place) {
  if (!Number.isSafeInteger(value) || value < 0) throw new FormatError(`${place} is no count`);
  return value;
}

function each(list, place, read) {
  if (list === undefined) return [];
  if (!Array.isArray(list)) throw new FormatError(`${place} is no list`);
  return list.map((entry, index) => read(entry, `${place}[${index}]`));
}

function checkIndices(list, limit, place) {
  for (const index of list) {
    if (index >= limit) throw new FormatError(`${place}: vertex ${index} of ${limit}`);
  }
}

function readMark(mark, place) {
  if (!Array.isArray(mark) || mark.length !== 2) throw new FormatError(`${place} is no pair`);
  return mark.map(Number);
}

/**
 * Reads a message.
 * @param {ArrayBuffer} buffer kept: the arrays of the frame are views of the buffer
 * @returns {Frame}
 * @throws {FormatError}
 */
export function readFrame(buffer) {
  const reader = new Reader(buffer);
  const header = reader.header;
  const meshes = (name, hasEdges) =>
    each(header[name], name, (mesh, place) => reader.mesh(mesh, hasEdges, place));
  const trimmed = (entry, place) => reader.trimmedSurface(entry, place);
  return {
    name: String(header.name ?? ''),
    number: whole(header.number ?? 0, 'number'),
    time: Number(header.time ?? 0),
    marks: each(header.marks, 'marks', readMark),
    points: reader.doubles(header.points, 3, 'points'),
    lines: reader.doubles(header.lines, 6, 'lines'),
    labels: reader.labels(header.labels),
    curves: each(header.curves, 'curves', (curve, place) => reader.curve(curve, 3, place)),
    surfaces: each(header.surfaces, 'surfaces', (entry, place) => reader.surface(entry, place)),
    trimmedSurfaces: each(header.trimmedSurfaces, 'trimmedSurfaces', trimmed),
    shells: each(header.shells, 'shells', (faces, place) => each(faces, place, trimmed)),
    compactMeshes: meshes('compactMeshes', false),
    topoMeshes: meshes('topoMeshes', true),
  };
}
