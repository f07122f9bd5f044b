// The view of the scene, in double precision: a target, two angles around it with z up, and a
// distance.

import { OrthographicCamera, PerspectiveCamera } from 'three';
import { add, along, cross, dot, length, scale, subtract } from './numbers.js';

const fieldOfView = (35 * Math.PI) / 180;
const quarter = Math.PI / 2;

/** Yaw and pitch of the standard views. Front looks along +y. */
export const standardViews = {
  front: [0, 0],
  back: [Math.PI, 0],
  left: [-quarter, 0],
  right: [quarter, 0],
  top: [0, quarter],
  bottom: [0, -quarter],
  iso: [Math.PI / 4, Math.atan(Math.SQRT1_2)],
};

/** Where the eye is and where it looks; asks for no redraw by itself. */
export class Camera {
  constructor() {
    this.target = [0, 0, 0];
    [this.yaw, this.pitch] = standardViews.iso;
    this.distance = 10;
    this.parallel = false;
    this.width = 1;
    this.height = 1;
    /** A ball around everything that is shown; for the limits of depth. */
    this.sceneCentre = [0, 0, 0];
    this.sceneRadius = 1;
    this.perspectiveCamera = new PerspectiveCamera();
    this.orthographicCamera = new OrthographicCamera();
    for (const camera of [this.perspectiveCamera, this.orthographicCamera]) {
      camera.matrixAutoUpdate = false;
    }
  }

  /** Unit vectors: to the right of the screen, up the screen, and from the target to the eye. */
  axes() {
    const [cy, sy] = [Math.cos(this.yaw), Math.sin(this.yaw)];
    const [cp, sp] = [Math.cos(this.pitch), Math.sin(this.pitch)];
    const right = [cy, sy, 0];
    const back = [sy * cp, -cy * cp, sp];
    return { right, up: cross(back, right), back };
  }

  get eye() {
    return along(this.target, this.axes().back, this.distance);
  }

  /** The size of a pixel at a depth (distance along the view from the eye), in scene units. */
  pixelSize(depth = this.distance) {
    const reach = this.parallel ? this.distance : Math.max(depth, this.distance * 1e-3);
    return (2 * Math.tan(fieldOfView / 2) * reach) / this.height;
  }

  /** Depth of a point in front of the eye. */
  depthOf(point) {
    return dot(subtract(this.eye, point), this.axes().back);
  }

  /** Pixel coordinates and depth of a point; depth <= 0 is behind the eye. */
  project(point) {
    const { right, up, back } = this.axes();
    const offset = subtract(point, this.target);
    const depth = this.distance - dot(offset, back);
    const size = this.parallel ? this.pixelSize() : (2 * Math.tan(fieldOfView / 2) * depth) / this.height;
    return {
      x: this.width / 2 + dot(offset, right) / size,
      y: this.height / 2 - dot(offset, up) / size,
      depth: this.parallel ? Infinity : depth,
    };
  }

  /** The ray through a pixel: origin, unit direction, and the size of a pixel at a distance along. */
  ray(x, y) {
    const { right, up, back } = this.axes();
    const size = this.pixelSize();
    const offset = add(scale(right, (x - this.width / 2) * size), scale(up, (this.height / 2 - y) * size));
    if (this.parallel) {
      const far = this.distance + this.reach;
      const origin = along(add(this.target, offset), back, far);
      return { origin, direction: scale(back, -1), pixelAt: () => size };
    }
    const towards = add(subtract(this.target, this.eye), offset);
    const direction = scale(towards, 1 / length(towards));
    const slope = size / length(towards);
    return { origin: this.eye, direction, pixelAt: (t) => slope * Math.max(t, 0) };
  }

  orbit(dx, dy) {
    this.yaw -= dx * 0.008;
    this.pitch = Math.min(quarter, Math.max(-quarter, this.pitch + dy * 0.008));
  }

  pan(dx, dy) {
    const { right, up } = this.axes();
    const size = this.pixelSize();
    this.target = add(this.target, add(scale(right, -dx * size), scale(up, dy * size)));
  }

  /** Multiplies the distance by `factor`; the point of the target's plane at the pixel stays there. */
  zoom(factor, x = this.width / 2, y = this.height / 2) {
    const smallest = (length(this.target) + this.sceneRadius) * 1e-12;
    const limited = Math.min(Math.max(this.distance * factor, smallest), 1e30) / this.distance;
    const before = this.pixelSize();
    this.distance *= limited;
    const change = before - this.pixelSize();
    const { right, up } = this.axes();
    const across = scale(right, (x - this.width / 2) * change);
    this.target = add(this.target, add(across, scale(up, (this.height / 2 - y) * change)));
  }

  /** Moves the target along the view to the depth of a point; the picture stays as it is. */
  focusOn(point) {
    const { back } = this.axes();
    const shift = dot(subtract(point, this.target), back);
    if (!this.parallel && this.distance - shift < this.distance * 1e-6) return;
    this.target = along(this.target, back, shift);
    if (!this.parallel) this.distance -= shift;
  }

  /** Where the camera stands so that points fill the picture: target and distance. */
  fitting(points) {
    if (points.length === 0) return this.pose;
    const { right, up, back } = this.axes();
    const slopeY = Math.tan(fieldOfView / 2);
    const slopeX = (slopeY * this.width) / this.height;
    const span = (axis) => {
      const values = points.map((point) => dot(point, axis));
      return [Math.min(...values), Math.max(...values)];
    };
    let sides = [right, up].map(span);
    const depths = span(back);
    let distance = 0;
    for (let round = 0; round < 6; ++round) {
      const middle = sides.map(([low, high]) => (low + high) / 2);
      const front = points.map((point) => {
        const near = this.parallel ? 0 : dot(point, back) - (depths[0] + depths[1]) / 2;
        const [x, y] = [dot(point, right) - middle[0], dot(point, up) - middle[1]];
        return { x, y, near, needs: Math.max(Math.abs(x) / slopeX, Math.abs(y) / slopeY) + near };
      });
      distance = Math.max(...front.map(({ needs }) => needs));
      if (this.parallel || !(distance > 0)) break;
      // Shifts the middle to where both sides of the picture have the same room.
      const room = (key) => {
        const seen = front.map((p) => p[key] / (distance - p.near || distance));
        return ((Math.min(...seen) + Math.max(...seen)) / 2) * distance;
      };
      const shifts = [room('x'), room('y')];
      sides = sides.map(([low, high], k) => [low + shifts[k], high + shifts[k]]);
    }
    const middles = [...sides, depths].map(([low, high]) => (low + high) / 2);
    const target = [right, up, back].reduce((sum, axis, k) => along(sum, axis, middles[k]), [0, 0, 0]);
    return { target, distance: (distance || length(target) * 1e-3 || 1) * 1.1 };
  }

  get pose() {
    return { target: this.target, yaw: this.yaw, pitch: this.pitch, distance: this.distance };
  }

  set pose(pose) {
    Object.assign(this, pose);
  }

  /** How far from the target the scene reaches. */
  get reach() {
    return this.sceneRadius + length(subtract(this.target, this.sceneCentre));
  }

  /** The camera for three.js, whose origin is the target: near the target nothing is rounded away. */
  forThree() {
    const camera = this.parallel ? this.orthographicCamera : this.perspectiveCamera;
    const { right, up, back } = this.axes();
    const at = scale(back, this.distance);
    camera.matrix.set(
      right[0], up[0], back[0], at[0],
      right[1], up[1], back[1], at[1],
      right[2], up[2], back[2], at[2],
      0, 0, 0, 1,
    );
    const depth = this.depthOf(this.sceneCentre);
    const radius = this.sceneRadius * 1.05;
    const aspect = this.width / this.height;
    if (this.parallel) {
      const half = Math.tan(fieldOfView / 2) * this.distance;
      Object.assign(camera, { left: -half * aspect, right: half * aspect, top: half, bottom: -half });
      camera.near = depth - radius - 4 * this.distance;
      camera.far = depth + radius + 4 * this.distance;
    } else {
      camera.fov = (fieldOfView * 180) / Math.PI;
      camera.aspect = aspect;
      camera.far = Math.max(depth + radius, this.distance * 8);
      const nearest = Math.min(depth - radius, this.distance * 0.25);
      camera.near = Math.max(nearest, this.distance * 0.01, camera.far * 1e-7);
    }
    camera.updateProjectionMatrix();
    camera.updateMatrixWorld(true);
    return camera;
  }

  /** A test for balls: whether any part of one is on the screen. */
  ballOnScreen() {
    const { right, up, back } = this.axes();
    const slope = Math.tan(fieldOfView / 2);
    const spread = [Math.hypot(1, (slope * this.width) / this.height), Math.hypot(1, slope)];
    const { distance: far, target, parallel } = this;
    const halves = [(slope * far * this.width) / this.height, slope * far];
    return (centre, radius) => {
      const offset = subtract(centre, target);
      const depth = far - dot(offset, back);
      const sides = [Math.abs(dot(offset, right)), Math.abs(dot(offset, up))];
      if (parallel) return sides.every((side, k) => side < halves[k] + radius);
      return (
        depth > -radius &&
        sides.every((side, k) => side < (halves[k] / far) * depth + radius * spread[k])
      );
    };
  }
}

/** The angles between which the shortest turn leads from one pose to another. */
export function blendPoses(from, to, t) {
  const turn = Math.atan2(Math.sin(to.yaw - from.yaw), Math.cos(to.yaw - from.yaw));
  const mix = (a, b) => a + (b - a) * t;
  return {
    target: from.target.map((x, k) => mix(x, to.target[k])),
    yaw: from.yaw + turn * t,
    pitch: mix(from.pitch, to.pitch),
    distance: from.distance * (to.distance / from.distance) ** t,
  };
}
