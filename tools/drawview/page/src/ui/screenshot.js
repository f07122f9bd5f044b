// The picture as a PNG file: background, scene, and the texts over the scene.

import { make } from './dom.js';

/** @returns {Promise<Blob>} */
export function pictureOf(app, labels) {
  const { stage } = app;
  stage.drawNow();
  const { width, height } = stage.canvas;
  const canvas = make('canvas', { width, height });
  const context = canvas.getContext('2d');
  const colours = getComputedStyle(document.documentElement);
  const sky = context.createLinearGradient(0, 0, 0, height);
  sky.addColorStop(0, colours.getPropertyValue('--sky-top'));
  sky.addColorStop(1, colours.getPropertyValue('--sky-bottom'));
  context.fillStyle = sky;
  context.fillRect(0, 0, width, height);
  context.drawImage(stage.canvas, 0, 0);
  context.scale(width / stage.camera.width, height / stage.camera.height);
  context.fillStyle = colours.getPropertyValue('--ink');
  context.textBaseline = 'top';
  for (const { text, left, top, size } of labels.placed) {
    context.font = `${size}px ${colours.getPropertyValue('--font')}`;
    context.fillText(text, left + 6, top + 0.25 * size);
  }
  return new Promise((resolve) => canvas.toBlob(resolve, 'image/png'));
}

export async function savePicture(app, labels) {
  const address = URL.createObjectURL(await pictureOf(app, labels));
  make('a', { href: address, download: `drawview-${app.current ?? 'empty'}.png` }).click();
  setTimeout(() => URL.revokeObjectURL(address), 10_000);
}
