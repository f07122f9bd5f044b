// Bundles the page into one HTML file: build.mjs SOURCE_FOLDER PACKAGE_FOLDER OUTPUT
// The file holds no address of a network: strings of that kind inside three.js are replaced, and the
// build fails when one is left.

import { createHash } from 'node:crypto';
import { readFile, rename, writeFile } from 'node:fs/promises';
import { createRequire } from 'node:module';
import { join } from 'node:path';

const [source, packages, output] = process.argv.slice(2);
const esbuild = createRequire(join(packages, 'package.json'))('esbuild');

const namespaceLiteral = /(['"])https?:\/\/www\.w3\.org\/1999\/xhtml\1/g;

/** Takes addresses out of the sources of packages; the one in use is asked of the document. */
const withoutAddresses = {
  name: 'without-addresses',
  setup(build) {
    build.onLoad({ filter: /node_modules.*\.js$/ }, async ({ path }) => {
      const text = await readFile(path, 'utf8');
      const contents = text
        .replace(namespaceLiteral, 'document.documentElement.namespaceURI')
        .replace(/\bhttps?:\/\//g, '');
      return { contents, loader: 'js' };
    });
  },
};

async function bundle(entry, options) {
  const { outputFiles } = await esbuild.build({
    entryPoints: [join(source, entry)],
    bundle: true,
    minify: true,
    write: false,
    legalComments: 'inline',
    nodePaths: [join(packages, 'node_modules')],
    target: 'es2022',
    logLevel: 'warning',
    ...options,
  });
  return outputFiles[0].text.trim();
}

const hashOf = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;

function check(page) {
  const address = /.{0,40}\b(?:https?|wss?):\/\/.{0,40}/.exec(page);
  if (address) throw new Error(`the page holds an address: ${address[0]}`);
  if (page.split('<!--KILN-FRAMES-->').length !== 2) throw new Error('the line for frames is not there once');
}

const script = await bundle('main.js', { format: 'iife', plugins: [withoutAddresses] });
const style = await bundle('style.css', {});
const policy = [
  "default-src 'none'", `script-src ${hashOf(script)}`, `style-src ${hashOf(style)}`,
  "connect-src 'self'", 'img-src data: blob:', "base-uri 'none'", "form-action 'none'",
].join('; ');
const parts = { policy, style, script };
const template = await readFile(join(source, 'index.html'), 'utf8');
const page = template.replace(/@(policy|style|script)@/g, (_, name) => parts[name]);
check(page);
await writeFile(`${output}.new`, page);
await rename(`${output}.new`, output);
