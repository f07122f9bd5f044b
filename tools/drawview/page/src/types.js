// The nine kinds of things that a frame holds, in the order of their numbers on the wire (marks refer
// to these numbers), and how each is drawn at first.

const surfaceLook = { size: 1.2, opacity: 1, edges: true, normals: false, poles: false };
const meshLook = { size: 1, opacity: 1, edges: null, normals: false };

/**
 * `look` is the style at first: size in pixels (points and text: diameter and height; else the width
 * of lines); null is decided by how much there is.
 */
export const types = [
  { key: 'points', label: 'Points', look: { color: '#3d8bfd', size: null } },
  { key: 'lines', label: 'Lines', look: { color: '#16a394', size: 1.8 } },
  { key: 'labels', label: 'Labels', look: { color: '#8b93a1', size: 12 } },
  { key: 'curves', label: 'Curves', look: { color: '#f08c2e', size: 2.2, poles: false } },
  { key: 'surfaces', label: 'Surfaces', look: { color: '#7fa6cf', ...surfaceLook } },
  { key: 'trimmedSurfaces', label: 'Trimmed surfaces', look: { color: '#82b59a', ...surfaceLook } },
  { key: 'shells', label: 'Shells', look: { color: '#cbb583', ...surfaceLook } },
  { key: 'compactMeshes', label: 'Compact meshes', look: { color: '#a79fce', ...meshLook } },
  { key: 'topoMeshes', label: 'Topological meshes', look: { color: '#c597a6', ...meshLook } },
];

export const typeOf = Object.fromEntries(types.map((type) => [type.key, type]));

/** How many elements a frame's list holds. @param {import('./format.js').Frame} frame */
export function countOf(frame, key) {
  if (key === 'points') return frame.points.length / 3;
  if (key === 'lines') return frame.lines.length / 6;
  if (key === 'labels') return frame.labels.texts.length;
  return frame[key].length;
}
