// The ground grid. It lies in the plane z = 0, or below the scene when that is far away; a parallel
// view along x or y gets the grid of its own plane.

import { Color, Matrix4, Mesh, PlaneGeometry, Vector3 } from 'three';
import { gridMaterial } from './materials.js';

/** Cells are powers of ten that are at least this many pixels wide. */
const smallestCell = 9;

export const axisColors = ['#e5534b', '#4fae5b', '#4c86f0'];

/** For a plane: the axes that span it. */
const planes = { z: [0, 1, 2], y: [0, 2, 1], x: [1, 2, 0] };
const unit = [new Vector3(1, 0, 0), new Vector3(0, 1, 0), new Vector3(0, 0, 1)];

export class Grid {
  constructor() {
    this.object = new Mesh(new PlaneGeometry(2, 2), gridMaterial());
    this.object.frustumCulled = false;
    this.object.matrixAutoUpdate = false;
    this.object.renderOrder = 1;
    this.cell = 1;
  }

  setTheme(theme) {
    this.object.material.uniforms.color.value.set(theme === 'dark' ? '#9aa7bd' : '#5b6b85');
  }

  planeFor(camera) {
    if (!camera.parallel) return planes.z;
    const { back } = camera.axes();
    if (Math.abs(back[0]) > 0.999) return planes.x;
    return Math.abs(back[1]) > 0.999 ? planes.y : planes.z;
  }

  /** Where the plane stands along its third axis. */
  levelFor(box, axis) {
    const reach = 2 * box.radius;
    const nearZero = box.empty || (box.low[axis] - reach <= 0 && box.high[axis] + reach >= 0);
    return nearZero ? 0 : box.low[axis];
  }

  place(camera, box) {
    const [first, second, normal] = this.planeFor(camera);
    const { uniforms } = this.object.material;
    this.cell = 10 ** Math.ceil(Math.log10(camera.pixelSize() * smallestCell));
    const extent = camera.distance * 3.2;
    const snap = (x) => Math.round(x / (10 * this.cell)) * 10 * this.cell;
    const at = [0, 0, 0];
    at[first] = snap(camera.target[first]);
    at[second] = snap(camera.target[second]);
    at[normal] = this.levelFor(box, normal);
    const offset = at.map((x, k) => x - camera.target[k]);
    this.object.matrix = new Matrix4()
      .makeBasis(unit[first], unit[second], unit[normal])
      .setPosition(...offset);
    this.object.matrixWorldNeedsUpdate = true;
    uniforms.cell.value = this.cell;
    uniforms.extent.value = extent;
    uniforms.axes.value.set(-at[first], -at[second]);
    uniforms.axisX.value = new Color(axisColors[first]);
    uniforms.axisY.value = new Color(axisColors[second]);
  }
}
