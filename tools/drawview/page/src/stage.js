// The stage: the renderer, what stands on it, and when it is drawn. Nothing is drawn without a
// reason; after the camera has come to rest, curves and surfaces are made as fine as the view asks.

import { ColorManagement, Group, Mesh, PlaneGeometry, Scene, WebGLRenderer, WebGLRenderTarget } from 'three';
import { Camera } from './camera.js';
import { Grid } from './grid.js';
import { CurveLayer } from './layers/curves.js';
import { LabelLayer, LineLayer, PointLayer } from './layers/simple.js';
import { MeshLayer } from './layers/meshes.js';
import { SurfaceLayer } from './layers/surfaces.js';
import { copyMaterial, setCut, shared } from './materials.js';
import { placedMarks } from './marks.js';
import { Box, distance, dot } from './numbers.js';
import { Picker } from './pick.js';
import { Thinner } from './thin.js';
import { countOf, types } from './types.js';

ColorManagement.enabled = false;

/** The chord error of curves and surfaces, in pixels. */
const chordPixels = 0.25;
/** What is off the screen may be coarser by this factor. */
const offScreenFactor = 8;
const restMilliseconds = 90;
/** The page answers at least this often while curves and surfaces are made finer. */
const sliceMilliseconds = 30;
/** How often pictures show them meanwhile. */
const showMilliseconds = 500;
/** Pictures that take longer than this while the camera moves are drawn with fewer pixels. */
const slowMilliseconds = 70;
/** Pictures at rest that take longer than this are drawn without smoothing of borders. */
const tooSlowMilliseconds = 1000;
/** Scenes of more triangles and points than this are not smoothed before they have been measured. */
const smoothAtFirst = 300_000;
const samples = 4;

const layerClasses = {
  points: PointLayer,
  lines: LineLayer,
  labels: LabelLayer,
  curves: CurveLayer,
  surfaces: SurfaceLayer,
  trimmedSurfaces: SurfaceLayer,
  shells: SurfaceLayer,
  compactMeshes: MeshLayer,
  topoMeshes: MeshLayer,
};

/** One frame on the stage: a layer for each list that is not empty. */
export class FrameView {
  /** @param {import('./format.js').Frame} frame */
  constructor(frame) {
    this.frame = frame;
    this.group = new Group();
    this.box = new Box();
    this.layers = [];
    for (const type of types) {
      if (countOf(frame, type.key) === 0) continue;
      const layer = new layerClasses[type.key](type, frame);
      this.layers.push(layer);
      this.group.add(layer.group);
      this.box.addBox(layer.box);
    }
    this.marks = placedMarks(frame);
  }

  get skipped() {
    return this.layers.reduce((sum, layer) => sum + layer.skipped, 0);
  }

  dispose() {
    for (const layer of this.layers) layer.dispose();
  }
}

export class Stage {
  /** @param {HTMLCanvasElement} canvas @param {() => void} afterDraw */
  constructor(canvas, afterDraw) {
    this.canvas = canvas;
    this.afterDraw = afterDraw;
    this.renderer = new WebGLRenderer({ canvas, alpha: true });
    this.renderer.setClearColor(0x000000, 0);
    this.scene = new Scene();
    this.scene.matrixWorldAutoUpdate = true;
    this.camera = new Camera();
    this.grid = new Grid();
    this.scene.add(this.grid.object);
    this.views = [];
    this.clip = null;
    this.pictures = 0;
    this.ratio = 1;
    this.lastMove = 0;
    this.refining = null;
    this.slowPictures = 0;
    this.cost = 0;
    this.lastDrawn = 0;
    this.smoothAllowed = true;
    this.target = new WebGLRenderTarget(1, 1, { samples });
    this.copy = new Mesh(new PlaneGeometry(2, 2), copyMaterial(this.target.texture));
    this.copy.frustumCulled = false;
  }

  // What is shown.

  /** @param {FrameView[]} views */
  setViews(views) {
    for (const view of this.views) this.scene.remove(view.group);
    this.views = views;
    for (const view of views) this.scene.add(view.group);
    this.refreshBall();
    const { points, triangles } = this.drawn;
    this.smoothAllowed = points + triangles < smoothAtFirst;
    this.refineSoon(0);
  }

  /** Corners of the boxes of what is visible; of everything when nothing is. */
  get corners() {
    const layers = this.layers.filter((layer) => layer.style?.visible);
    const boxes = (layers.length > 0 ? layers : this.layers).flatMap((layer) => layer.boxes);
    return boxes.filter((box) => !box.empty).flatMap((box) => box.corners());
  }

  refreshBall() {
    const box = new Box();
    for (const view of this.views) box.addBox(view.box);
    this.camera.sceneCentre = box.centre;
    this.camera.sceneRadius = box.radius || 1;
    this.sceneBox = box;
  }

  get layers() {
    return this.views.flatMap((view) => view.layers);
  }

  get drawn() {
    const sum = { points: 0, segments: 0, triangles: 0 };
    for (const layer of this.layers) {
      if (!layer.style?.visible) continue;
      for (const [key, value] of Object.entries(layer.drawn)) sum[key] += value;
    }
    return sum;
  }

  setTheme(theme) {
    this.theme = theme;
    this.grid.setTheme(theme);
    this.invalidate();
  }

  // When to draw.

  /** Asks for a picture. */
  invalidate() {
    if (this.requested) return;
    this.requested = requestAnimationFrame((now) => {
      this.requested = 0;
      this.draw(now);
    });
  }

  /** Tells that the camera moved: a quick picture now, a fine one when it rests. */
  moved() {
    this.lastMove = performance.now();
    this.moving = true;
    this.invalidate();
    this.refineSoon(restMilliseconds);
  }

  refineSoon(delay) {
    clearTimeout(this.restTimer);
    clearTimeout(this.workTimer);
    this.refining = null;
    this.restTimer = setTimeout(() => this.rest(), delay);
    this.resting = true;
  }

  rest() {
    this.resting = false;
    this.moving = false;
    this.slowPictures = 0;
    this.lastPicture = 0;
    this.refining = this.refineSteps(this.fineness());
    this.work();
  }

  /** Whether a finer picture is still to come. */
  get busy() {
    return Boolean(this.resting || this.refining || this.requested);
  }

  *refineSteps(view) {
    for (const layer of this.layers) {
      if (layer.style?.visible) yield* layer.refine(view);
    }
  }

  /** What the view asks of curves and surfaces. */
  fineness() {
    const { camera } = this;
    const onScreen = camera.ballOnScreen();
    const { eye } = camera;
    const chord = (centre, radius) => {
      const size = camera.pixelSize(Math.max(distance(centre, eye) - radius, camera.distance * 0.02));
      return chordPixels * size * (onScreen(centre, radius) ? 1 : offScreenFactor);
    };
    return { target: [...camera.target], pixelSize: camera.pixelSize(), chord };
  }

  /** Refines for a while, and goes on later; a picture now and then shows how far that is. */
  work() {
    const end = performance.now() + sliceMilliseconds;
    while (this.refining && performance.now() < end) {
      if (this.refining.next().done) this.refining = null;
    }
    if (!this.refining || end - this.lastDrawn > showMilliseconds) this.invalidate();
    if (this.refining) this.workTimer = setTimeout(() => this.work(), 0);
  }

  draw(now) {
    this.adapt(now);
    const begin = performance.now();
    this.render();
    if (!this.moving && !this.refining) this.measure(begin);
    this.afterDraw();
    this.lastDrawn = performance.now();
  }

  /** Chooses the pixels of the next picture: fewer while the camera moves and pictures are slow. */
  adapt(now) {
    if (this.moving && this.lastPicture && now - this.lastPicture > slowMilliseconds) ++this.slowPictures;
    this.lastPicture = this.moving ? now : 0;
    const slow = this.moving && this.slowPictures > 1;
    this.smooth = this.smoothAllowed && !(this.moving && this.cost > slowMilliseconds / 2);
    const ratio = slow ? 0.5 : 1;
    if (ratio !== this.ratio) {
      this.ratio = ratio;
      this.resize();
    }
  }

  /** Learns what a picture of the scene costs, and gives up smoothing where it costs too much. */
  measure(begin) {
    this.finish();
    this.cost = performance.now() - begin;
    if (this.cost > slowMilliseconds) this.thinner ??= new Thinner();
    if (this.cost > tooSlowMilliseconds && this.smooth) this.smoothAllowed = false;
  }

  /** Takes the size of the canvas's place on the page. */
  resize() {
    const { clientWidth: width, clientHeight: height } = this.canvas.parentElement;
    Object.assign(this.camera, { width: Math.max(1, width), height: Math.max(1, height) });
    this.renderer.setPixelRatio(Math.min(devicePixelRatio, 2) * this.ratio);
    this.renderer.setSize(width, height, false);
    this.target.setSize(this.canvas.width, this.canvas.height);
    shared.viewport.value.set(Math.max(1, width), Math.max(1, height));
    shared.pixelRatio.value = this.renderer.getPixelRatio();
  }

  render() {
    const { camera } = this;
    const three = camera.forThree();
    const parallel = camera.parallel ? 1 : 0;
    shared.depth.value.set(camera.depthOf(camera.sceneCentre), camera.sceneRadius);
    for (const layer of this.layers) {
      layer.place(camera.target);
      for (const { object } of layer.parts) {
        const { uniforms } = object.material;
        setCut(object.material, this.clip !== null);
        if (uniforms.parallel) uniforms.parallel.value = parallel;
      }
      if (this.thinner && layer.style?.visible) layer.thin(this.thinner, camera, this.clip);
    }
    this.placeClip();
    this.grid.place(camera, this.sceneBox ?? new Box());
    this.renderer.setRenderTarget(this.smooth ? this.target : null);
    this.renderer.render(this.scene, three);
    if (this.smooth) {
      this.renderer.setRenderTarget(null);
      this.renderer.render(this.copy, three);
    }
    ++this.pictures;
  }

  /** Waits until the pixels are there. */
  finish() {
    const gl = this.renderer.getContext();
    gl.readPixels(0, 0, 1, 1, gl.RGBA, gl.UNSIGNED_BYTE, new Uint8Array(4));
  }

  // The clipping plane: kept is where normal . p <= offset.

  /** @param {{normal: number[], offset: number} | null} clip */
  setClip(clip) {
    this.clip = clip;
    this.invalidate();
  }

  placeClip() {
    const { clip, camera } = this;
    if (!clip) {
      shared.clip.value.set(0, 0, 0, 1);
      return;
    }
    const { right, up, back } = camera.axes();
    const normal = [right, up, back].map((axis) => dot(clip.normal, axis));
    const offset = clip.offset - dot(clip.normal, camera.target) - normal[2] * camera.distance;
    shared.clip.value.set(...normal, offset);
  }

  keeps = (point) => !this.clip || dot(this.clip.normal, point) <= this.clip.offset;

  /** What lies under a pixel, or null. */
  pick(x, y, reach) {
    const visible = this.layers.filter((layer) => layer.style?.visible && layer.group.parent.visible);
    const ray = this.camera.ray(x, y);
    return new Picker(reach, this.keeps).choose(ray, visible);
  }

  /** Draws now and waits until the pixels are there; for screenshots and measuring. */
  drawNow() {
    this.render();
    this.finish();
  }
}
