// Pointer, wheel and touch on the picture: orbit, pan, zoom, pick.

const clickPixels = 5;
const hoverMilliseconds = 70;
const nearPixels = 6;

/** @param {HTMLElement} element @param {import('./app.js').App} app */
export function attachControls(element, app) {
  const { stage } = app;
  const { camera } = stage;
  const pointers = new Map();
  let travelled = 0;
  let hoverTimer = 0;
  let wheelTimer = 0;
  /** What the wheel zooms to: the point that was under the pointer when the wheel began to turn, as
   * long as the pointer stays there. */
  let zoomCentre = null;

  const place = (event) => {
    const area = element.getBoundingClientRect();
    return { x: event.clientX - area.left, y: event.clientY - area.top };
  };
  const isPan = (event) => event.buttons & 6 || event.shiftKey || event.ctrlKey || event.metaKey;

  const isNear = (point, { x, y }) => {
    const at = camera.project(point);
    return Math.hypot(at.x - x, at.y - y) < nearPixels;
  };

  const focusUnder = ({ x, y }) => {
    const hit = stage.pick(x, y, 4);
    if (hit) camera.focusOn(hit.point);
    return hit && isNear(hit.point, { x, y }) ? hit.point : null;
  };

  const dragOne = (event, before, now) => {
    const [dx, dy] = [now.x - before.x, now.y - before.y];
    if (isPan(event)) camera.pan(dx, dy);
    else camera.orbit(dx, dy);
    stage.moved();
  };

  const dragTwo = (id, before, now) => {
    const [[, other]] = [...pointers].filter(([key]) => key !== id);
    const middle = (p) => ({ x: (p.x + other.x) / 2, y: (p.y + other.y) / 2 });
    const apart = (p) => Math.hypot(p.x - other.x, p.y - other.y) || 1;
    const [from, to] = [middle(before), middle(now)];
    camera.pan(to.x - from.x, to.y - from.y);
    camera.zoom(apart(before) / apart(now), to.x, to.y);
    stage.moved();
  };

  element.addEventListener('pointerdown', (event) => {
    element.setPointerCapture(event.pointerId);
    if (pointers.size === 0) {
      travelled = 0;
      focusUnder(place(event));
    } else {
      travelled = Infinity;
    }
    pointers.set(event.pointerId, place(event));
  });

  element.addEventListener('pointermove', (event) => {
    const now = place(event);
    const before = pointers.get(event.pointerId);
    clearTimeout(hoverTimer);
    wheelTimer = 0;
    if (!before) {
      if (event.pointerType === 'mouse') {
        hoverTimer = setTimeout(() => app.hoverAt(now.x, now.y), hoverMilliseconds);
      }
      return;
    }
    travelled += Math.hypot(now.x - before.x, now.y - before.y);
    pointers.set(event.pointerId, now);
    if (travelled < clickPixels) return;
    if (pointers.size === 1) dragOne(event, before, now);
    else if (pointers.size === 2) dragTwo(event.pointerId, before, now);
  });

  const release = (event) => {
    const at = pointers.get(event.pointerId);
    pointers.delete(event.pointerId);
    const isClick = event.type === 'pointerup' && travelled < clickPixels && event.button === 0;
    if (at && isClick) app.pickAt(at.x, at.y, event.pointerType === 'touch' ? 16 : 7);
  };
  element.addEventListener('pointerup', release);
  element.addEventListener('pointercancel', release);
  element.addEventListener('pointerleave', () => clearTimeout(hoverTimer));

  element.addEventListener(
    'wheel',
    (event) => {
      event.preventDefault();
      const pointer = place(event);
      const isNew = !wheelTimer && !(zoomCentre && isNear(zoomCentre, pointer));
      if (isNew) zoomCentre = focusUnder(pointer);
      const at = zoomCentre ? camera.project(zoomCentre) : pointer;
      clearTimeout(wheelTimer);
      wheelTimer = setTimeout(() => (wheelTimer = 0), 250);
      const lines = event.deltaMode === 1 ? 30 : 1;
      const step = Math.max(-240, Math.min(240, event.deltaY * lines));
      camera.zoom(Math.exp(step * (event.ctrlKey ? 0.008 : 0.0016)), at.x, at.y);
      stage.moved();
    },
    { passive: false },
  );

  element.addEventListener('dblclick', (event) => {
    const at = place(event);
    app.clearPicks();
    app.centreOn(at.x, at.y);
  });
  element.addEventListener('contextmenu', (event) => event.preventDefault());
}
