// Marks: pairs of a type and an index, which tell where parts of a frame begin.

import { curveFault, curvePoint } from './bspline.js';
import { drawable, pointAt } from './numbers.js';
import { types } from './types.js';

/** A point of element `index` of a list, or null. */
function placeOf(frame, key, index) {
  if (key === 'points') return pointAt(frame.points, index);
  if (key === 'lines') return pointAt(frame.lines, 2 * index);
  if (key === 'labels') return pointAt(frame.labels.at, index);
  const element = frame[key][index];
  if (!element) return null;
  if (key === 'curves') {
    return curveFault(element) ? null : curvePoint(element, element.knots[element.degree], [0, 0, 0]);
  }
  if (element.vertices) return pointAt(element.vertices, 0);
  const first = key === 'shells' ? element[0] : element;
  return first ? pointAt((first.surface ?? first).poles, 0) : null;
}

/** The marks of a frame that have a place: where, and what to write there. */
export function placedMarks(frame) {
  const out = [];
  frame.marks.forEach(([type, index], i) => {
    const point = types[type] && placeOf(frame, types[type].key, index);
    if (point && drawable(point, 0, 3)) {
      out.push({ point, text: `${types[type].label} ${index}`, index: i });
    }
  });
  return out;
}
