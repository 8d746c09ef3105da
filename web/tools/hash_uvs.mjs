// Prints the SHA-256 of the texture coordinates that the WebAssembly engine gives OBJ files: float32, little-endian, per
// polygon corner in file order. One line for each file: hash, charts, CPU or (in Chromium) elapsed seconds, file.
//
//   node web/tools/hash_uvs.mjs [--chromium] [--quality] FILE.obj...
import { createHash } from 'node:crypto';
import { readFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { load } from 'tessora';
import { readObj } from 'tessora/obj';

const dist = join(resolve(dirname(fileURLToPath(import.meta.url)), '..'), 'dist');
const words = process.argv.slice(2), files = words.filter((word) => !word.startsWith('--'));
const quality = words.includes('--quality') ? 'quality' : 'fast';

/** Unwraps bytes of an OBJ file; a page runs the same text. Returns coordinates per corner, charts and seconds. */
function unwrapObj(tessora, readObj, bytes, quality, now) {
  const { positions, offsets, corners } = readObj(bytes), begin = now();
  const { uvs, indices, chartCount } = tessora.unwrap({ positions, offsets, indices: corners, weld: false }, { quality });
  const seconds = now() - begin;
  return { perCorner: Float32Array.from({ length: 2 * indices.length }, (_, i) => uvs[2 * indices[i >> 1] + i % 2]), chartCount, seconds };
}

async function inNode() {
  const tessora = await load(), cpu = () => Object.values(process.cpuUsage()).reduce((sum, x) => sum + x) / 1e6;
  return { run: (bytes) => unwrapObj(tessora, readObj, bytes, quality, cpu), close: () => {} };
}

async function inChromium() {
  const { launch, serve } = await import('../tests/browser.mjs');
  const server = await serve(dist), { browser, close } = await launch(), page = await browser.newPage();
  await page.goto(`${server.url}index.js`); // any address of the server, so that the page may import from there
  await page.evaluate(async (url, text) => {
    const [{ load }, { readObj }] = await Promise.all([import(`${url}index.js`), import(`${url}obj.js`)]);
    const tessora = await load(), unwrapObj = new Function(`return ${text}`)();
    window.run = (base64, quality) => {
      const made = unwrapObj(tessora, readObj, Uint8Array.from(atob(base64), (c) => c.charCodeAt(0)), quality, () => performance.now() / 1000);
      const bytes = new Uint8Array(made.perCorner.buffer);
      let binary = '';
      for (let i = 0; i < bytes.length; i += 0x8000)
        binary += String.fromCharCode(...bytes.subarray(i, i + 0x8000));
      return { ...made, perCorner: btoa(binary) };
    };
  }, server.url, unwrapObj.toString());
  return {
    run: async (bytes) => {
      const made = await page.evaluate((base64, quality) => window.run(base64, quality), Buffer.from(bytes).toString('base64'), quality);
      return { ...made, perCorner: Buffer.from(made.perCorner, 'base64') };
    },
    close: async () => {
      await close();
      server.close();
    },
  };
}

const { run, close } = await (words.includes('--chromium') ? inChromium() : inNode());
try {
  for (const file of files) {
    const { perCorner, chartCount, seconds } = await run(readFileSync(file));
    console.log(createHash('sha256').update(perCorner).digest('hex'), chartCount, seconds.toFixed(3), file);
  }
} finally {
  await close();
}
