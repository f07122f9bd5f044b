// The program with its page: senders that send, die and come again; recordings and exports.

import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, describe, it } from 'node:test';
import { Browser } from './browser.mjs';

const { KILN_BIN: bin } = process.env;
const hostile = '</script><b onclick="x">name';
const everyType = [
  'points', 'lines', 'labels', 'curves', 'surfaces', 'trimmedSurfaces', 'shells', 'compactMeshes', 'topoMeshes',
];

/** A program whose standard output is kept. */
class Program {
  constructor(name, args) {
    this.process = spawn(join(bin, name), args, { stdio: ['pipe', 'pipe', 'inherit'] });
    this.output = '';
    this.process.stdout.on('data', (data) => (this.output += data));
    this.ended = once(this.process, 'close');
  }

  /** What the first group of a pattern matches, as soon as the output has it. */
  async says(pattern) {
    for (;;) {
      const found = pattern.exec(this.output);
      if (found) return found[1];
      const event = await Promise.race([once(this.process.stdout, 'data'), this.ended.then(() => null)]);
      if (event === null) throw new Error(`ended without ${pattern}: ${this.output}`);
    }
  }

  async end(signal = 'SIGTERM') {
    this.process.kill(signal);
    const [code] = await this.ended;
    return code;
  }
}

describe('drawview', () => {
  let browser;
  const running = [];
  const start = (name, ...args) => {
    running.push(new Program(name, args));
    return running[running.length - 1];
  };
  const send = async (port, name, count, ...more) => {
    const sender = start('draw_sender', port, name, String(count), ...more);
    await sender.says(/(sent)/);
    return sender;
  };
  before(async () => (browser = await Browser.start()));
  after(async () => {
    await Promise.all(running.map((program) => program.end('SIGKILL')));
    await browser.stop();
  });

  it('shows what senders send, however they end, and records it for a replay and an export', async () => {
    const recording = join(browser.folder, 'frames.kilndraw');
    const viewer = start('drawview', '--listen', '0', '--http', '0', '--record', recording);
    const view = await browser.open(await viewer.says(/page: (\S+)/));
    const port = await viewer.says(/senders: \S+:(\d+)/);
    await view.until((state) => state.connection.open);
    assert.match(await view.text('#empty'), /Waiting for a sender/);

    const first = await send(port, hostile, 3, 'wait');
    const shown = await view.until((state) => state.current === 3 && state.connection.sender);
    assert.deepEqual(shown.frames.map(({ name }) => name), [hostile, hostile, hostile]);
    assert.deepEqual(Object.keys(shown.counts), everyType);
    assert.equal(shown.counts.points.points, 3);
    assert.equal(shown.marks, 1);
    assert.ok((await view.text('#status')).includes('Sender connected'));
    for (const type of ['surfaces', 'shells', 'compactMeshes', 'curves']) {
      const pixels = await view.changed(() => view.toggle(type));
      assert.ok(pixels > 150, `${pixels} pixels of ${type}`);
      await view.toggle(type);
    }

    await first.end('SIGKILL');
    await view.until((state) => !state.connection.sender);
    assert.equal((await view.press('ArrowLeft')).following, false);
    await send(port, 'second', 2);
    const stayed = await view.until((state) => state.frames.length === 5);
    assert.equal(stayed.current, 2, 'who has stepped back stays there');
    const live = await view.press('.');
    assert.deepEqual([live.current, live.following], [5, true]);
    await send(port, 'third', 1);
    const last = await view.until((state) => state.current === 6);
    assert.deepEqual(view.errors, []);
    assert.equal(await viewer.end(), 0);
    await view.until((state) => !state.connection.open);
    assert.ok((await view.text('#status')).includes('Not connected'));
    await view.page.close();

    const replay = start('drawview', '--replay', recording, '--http', '0');
    const again = await browser.open(await replay.says(/page: (\S+)/));
    const replayed = await again.until((state) => state.current === 1 && state.connection.replay);
    assert.deepEqual(replayed.frames, last.frames);
    await again.press('End');
    const lastAgain = await again.until((state) => state.current === 6);
    assert.deepEqual(lastAgain.counts, last.counts);
    assert.equal(await replay.end(), 0);
    await again.page.close();

    const page = join(browser.folder, 'export.html');
    const [code] = await start('drawview', '--replay', recording, '--export', page).ended;
    assert.equal(code, 0);
    const text = readFileSync(page, 'utf8');
    assert.doesNotMatch(text, /(https?|wss?):\/\//);
    assert.ok(text.includes('second'));
    const saved = await browser.open(`file://${page}`);
    assert.deepEqual((await saved.until((state) => state.current === 1)).frames, last.frames);
    await saved.press('End');
    assert.deepEqual((await saved.until((state) => state.current === 6)).counts, last.counts);
    assert.deepEqual(saved.requests.filter((url) => !url.startsWith('file:') && !url.startsWith('data:')), []);
    assert.deepEqual(saved.errors, []);
  });
});
