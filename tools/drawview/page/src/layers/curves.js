// The layer of B-spline curves, whose chords follow the view.

import { curveFault, curvePoint } from '../bspline.js';
import { nearSegment } from '../pick.js';
import { curveParameters } from '../tessellate.js';
import { pathSegments, Layer } from './layer.js';

/** A curve's poles in space, without weights. */
export function polesOf(poles, rational) {
  if (!rational) return poles;
  return poles.filter((_, i) => i % 4 !== 3);
}

const sameNumbers = (a, b) => a?.length === b.length && a.every((x, i) => x === b[i]);

export class CurveLayer extends Layer {
  constructor(type, frame) {
    super(type, frame);
    this.curves = [];
    frame.curves.forEach((curve, index) => {
      const fault = curveFault(curve);
      if (fault) {
        this.skip(index, fault);
        return;
      }
      const poles = polesOf(curve.poles, curve.rational);
      for (let i = 0; i < poles.length; i += 3) this.box.addAt(poles, i);
      this.curves.push({ curve, index, poles, parameters: null, points: null });
    });
    this.anchor = this.box.centre;
  }

  *refine(view) {
    let changed = this.isCoarse(this.anchor, this.box, view);
    if (changed) this.anchor = view.target;
    for (const entry of this.curves) {
      const parameters = curveParameters(entry.curve, view.chord);
      yield false;
      if (sameNumbers(entry.parameters, parameters)) continue;
      entry.parameters = parameters;
      entry.points = parameters.flatMap((t) => curvePoint(entry.curve, t, [0, 0, 0]));
      changed = true;
    }
    if (changed) this.rebuild();
    yield changed;
  }

  rebuild() {
    this.removeParts();
    if (this.curves.length === 0) return;
    this.owners = [];
    const segments = [];
    for (const entry of this.curves) {
      for (const x of pathSegments(entry.points)) segments.push(x);
      for (let i = 0; i + 1 < entry.parameters.length; ++i) this.owners.push([entry, i]);
    }
    this.values = Float64Array.from(segments);
    this.addSegments(this.values, this.anchor, 'line');
    const poles = Float64Array.from(this.curves.flatMap((entry) => [...entry.poles]));
    const hulls = Float64Array.from(this.curves.flatMap((entry) => [...pathSegments(entry.poles)]));
    this.addSegments(hulls, this.anchor, 'hull');
    this.addPoints(poles, this.anchor, 'pole');
  }

  pick(ray, picker) {
    if (!this.values) return null;
    return nearSegment(ray, this.values, this.style.size / 2 + picker.reach, picker, (i, s) => {
      const [{ curve, index, parameters }, at] = this.owners[i];
      const t = parameters[at] + s * (parameters[at + 1] - parameters[at]);
      const ends = [parameters[0], parameters[parameters.length - 1]];
      const points = ends.map((end) => curvePoint(curve, end, [0, 0, 0]));
      const snapped = picker.snap(ray, points, ['start', 'end'], curvePoint(curve, t, [0, 0, 0]));
      return { ...snapped, index, details: [['t', t], ...(snapped.details ?? [])] };
    });
  }
}
