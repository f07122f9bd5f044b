// Opens pages in Chromium for the tests, and looks at their pixels.

import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const { KILN_BROWSER_PACKAGES: packages, KILN_BROWSER: program = '/usr/bin/chromium', KILN_PAGE: builtPage } = process.env;
const limit = 60_000;

/** The page as it was built. */
export const pageText = () => readFileSync(builtPage, 'utf8');

/** A browser with a folder of its own, where pages can be written. */
export class Browser {
  static async start() {
    const self = new Browser();
    self.folder = mkdtempSync(join(tmpdir(), 'drawview-browser-'));
    const { default: puppeteer } = await import(createRequire(join(packages, 'package.json')).resolve('puppeteer-core'));
    self.browser = await puppeteer.launch({
      executablePath: program,
      headless: true,
      userDataDir: join(self.folder, 'profile'),
      protocolTimeout: 2 * limit,
      args: [
        '--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--disable-quic', '--no-first-run',
        '--disable-background-networking', '--disable-component-update', '--disable-sync',
        ...(process.getuid?.() === 0 ? ['--no-sandbox'] : []),
      ],
    });
    self.counter = await self.browser.newPage();
    await self.counter.evaluate(`window.imageOf = ${imageOf}`);
    return self;
  }

  async stop() {
    await this.browser.close();
    rmSync(this.folder, { recursive: true, force: true, maxRetries: 5 });
  }

  /** Opens an address; `requests` and `errors` of the result tell what the page asked for and raised. */
  async open(address, { width = 1000, height = 700, scheme = 'dark', touch = false } = {}) {
    const page = await this.browser.newPage();
    const view = new View(page, this.counter);
    page.on('request', (request) => view.requests.push(request.url()));
    page.on('pageerror', (error) => view.errors.push(String(error)));
    await page.setViewport({ width, height, hasTouch: touch, isMobile: touch });
    await page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: scheme }]);
    await page.goto(address);
    await view.until((state) => state !== null);
    return view;
  }

  /** Writes a page to disk and opens it from there. */
  async openText(text, options) {
    const path = join(this.folder, 'page.html');
    writeFileSync(path, text);
    return this.open(`file://${path}`, options);
  }
}

/** A page with a picture. */
export class View {
  constructor(page, counter) {
    Object.assign(this, { page, counter, requests: [], errors: [] });
  }

  state() {
    return this.page.evaluate(() => window.kilnView?.state() ?? null);
  }

  /** Waits until the state fulfils a condition and the picture rests. @returns the state */
  async until(condition, what = condition.toString()) {
    const end = Date.now() + limit;
    for (;;) {
      const state = await this.state();
      if (condition(state) && !state?.busy) return state;
      if (Date.now() > end) throw new Error(`never came: ${what}\n${JSON.stringify(state, null, 1)}`);
      await new Promise((resolve) => setTimeout(resolve, 40));
    }
  }

  /** Presses keys one after the other. @returns the state afterwards */
  async press(...keys) {
    for (const key of keys) await this.page.keyboard.press(key);
    await new Promise((resolve) => setTimeout(resolve, 50));
    return this.until((state) => state !== null);
  }

  /** The file that the page saves after a key. */
  async download(key) {
    const folder = mkdtempSync(join(tmpdir(), 'drawview-download-'));
    const session = await this.page.createCDPSession();
    await session.send('Browser.setDownloadBehavior', { behavior: 'allow', downloadPath: folder, eventsEnabled: true });
    const saved = new Promise((resolve) =>
      session.on('Browser.downloadProgress', ({ state }) => state === 'completed' && resolve()));
    await this.page.keyboard.press(key);
    await saved;
    const bytes = readFileSync(join(folder, readdirSync(folder)[0]));
    rmSync(folder, { recursive: true });
    return bytes;
  }

  text(selector) {
    return this.page.$eval(selector, (element) => element.textContent);
  }

  /** Where a point of the scene lies on the page. */
  placeOf(point) {
    return this.page.evaluate((p) => {
      const area = document.getElementById('picture').getBoundingClientRect();
      const { x, y } = window.kilnView.project(p);
      return { x: area.left + x, y: area.top + y };
    }, point);
  }

  async click(point) {
    const { x, y } = await this.placeOf(point);
    await this.page.mouse.click(x, y);
    return this.until((state) => state.picks.length > 0);
  }

  /** Switches the visibility of a type by its eye in the tree. */
  async toggle(type) {
    await this.page.click(`.current [data-type="${type}"] .tool`);
    return this.press();
  }

  screenshot(clip) {
    return this.page.screenshot({ encoding: 'base64', clip });
  }

  /** A part of the page as it looks: rows of [red, green, blue, alpha]. */
  async pixels(clip) {
    return this.counter.evaluate(async (png) => {
      const { data, width } = await window.imageOf(png);
      return { data: Array.from(data), width };
    }, await this.screenshot(clip));
  }

  /** How many pixels differ clearly between now and after an action. */
  async changed(action, clip) {
    const before = await this.screenshot(clip);
    await action();
    return this.counter.evaluate(async (...pictures) => {
      const [first, second] = await Promise.all(pictures.map((png) => window.imageOf(png)));
      let count = 0;
      for (let i = 0; i < first.data.length; i += 4) {
        if ([0, 1, 2].some((k) => Math.abs(first.data[i + k] - second.data[i + k]) > 24)) ++count;
      }
      return count;
    }, before, await this.screenshot(clip));
  }
}

/** Runs in the page that looks at pictures: the pixels of a PNG file in base64. */
async function imageOf(png) {
  const picture = new Image();
  picture.src = `data:image/png;base64,${png}`;
  await picture.decode();
  const context = new OffscreenCanvas(picture.width, picture.height).getContext('2d');
  context.drawImage(picture, 0, 0);
  return context.getImageData(0, 0, picture.width, picture.height);
}
