// The frames that the page knows of, where their messages come from, and those it keeps in memory.

import { readFrame } from './format.js';

/** Messages kept in memory, in bytes; the one asked for last always is. */
const keptBytes = 256 * 2 ** 20;

/** @typedef {{number: number, name: string, bytes: number}} FrameEntry */

function decodeBase64(text) {
  const binary = atob(text.trim());
  const bytes = new Uint8Array(binary.length);
  for (let i = 0; i < binary.length; ++i) bytes[i] = binary.charCodeAt(i);
  return bytes.buffer;
}

/** The frames inside an exported page; empty in a page from the server. */
export function embeddedFrames(document) {
  const scripts = document.querySelectorAll('script[type="application/x-kiln-frame"]');
  return Array.from(scripts, (script) => ({
    number: Number(script.dataset.number),
    name: script.dataset.name ?? '',
    bytes: Math.floor((script.textContent.trim().length * 3) / 4),
    script,
  }));
}

async function fetchMessage(number) {
  const response = await fetch(`frames/${number}`);
  if (!response.ok) throw new Error(`frame ${number}: the server answers ${response.status}`);
  return response.arrayBuffer();
}

/** Frames by number, ascending. */
export class FrameStore {
  constructor() {
    /** @type {FrameEntry[]} */
    this.entries = [];
    this.kept = new Map();
  }

  replaceAll(entries) {
    this.entries = [...entries].sort((a, b) => a.number - b.number);
    this.kept.clear();
  }

  add(entry) {
    this.remove([entry.number]);
    this.entries.push(entry);
    this.entries.sort((a, b) => a.number - b.number);
  }

  remove(numbers) {
    const gone = new Set(numbers);
    this.entries = this.entries.filter((entry) => !gone.has(entry.number));
    for (const number of numbers) this.kept.delete(number);
  }

  indexOf(number) {
    return this.entries.findIndex((entry) => entry.number === number);
  }

  find(number) {
    return this.entries[this.indexOf(number)];
  }

  /**
   * The frame of a number.
   * @returns {Promise<import('./format.js').Frame>} fails when it is gone or its message is damaged
   */
  get(number) {
    const entry = this.find(number);
    if (!entry) return Promise.reject(new Error(`frame ${number} is gone`));
    let kept = this.kept.get(number);
    this.kept.delete(number);
    if (!kept) {
      kept = { bytes: entry.bytes, frame: this.load(entry) };
      kept.frame.catch(() => this.kept.delete(number));
    }
    this.kept.set(number, kept);
    this.forgetOldest();
    return kept.frame;
  }

  async load(entry) {
    const message = entry.script
      ? decodeBase64(entry.script.textContent)
      : await fetchMessage(entry.number);
    return readFrame(message);
  }

  forgetOldest() {
    let sum = 0;
    for (const { bytes } of this.kept.values()) sum += bytes;
    for (const [number, { bytes }] of this.kept) {
      if (sum <= keptBytes || this.kept.size === 1) break;
      this.kept.delete(number);
      sum -= bytes;
    }
  }
}
