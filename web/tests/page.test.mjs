// The page in Debian's Chromium. Screenshots stay in build/web/screenshots/.
import assert from 'node:assert/strict';
import { createHash } from 'node:crypto';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { setTimeout as sleep } from 'node:timers/promises';
import { NodeIO } from '@gltf-transform/core';
import validator from 'gltf-validator';
import { launch, serve } from './browser.mjs';
import { scratch, tessora, web } from './helpers.mjs';
import { grid, instanced, knot, objOf, skinned } from './models.mjs';

const io = new NodeIO(), pictures = join(web, '../build/web/screenshots');
let server, chromium;

before(async () => {
  mkdirSync(pictures, { recursive: true });
  server = await serve(join(web, '../build/web/page'));
  chromium = await launch();
});
after(async () => {
  await chromium?.close();
  server?.close();
});

/** The page with its sample unwrapped; everything that goes wrong in it fails the test. */
async function openPage(t, { width = 1280, height = 860, scheme = 'dark' } = {}) {
  const page = await chromium.browser.newPage(), complaints = [], downloads = scratch(t);
  page.on('console', (message) => ['error', 'warn'].includes(message.type()) && !/GPU stall|software WebGL/.test(message.text()) && complaints.push(message.text()));
  page.on('pageerror', (error) => complaints.push(error.message));
  page.on('requestfailed', (request) => complaints.push(`${request.url()} failed`));
  const session = await page.createCDPSession();
  await session.send('Browser.setDownloadBehavior', { behavior: 'allow', downloadPath: downloads });
  await page.setViewport({ width, height });
  await page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: scheme }]);
  await page.goto(server.url);
  await done(page);
  t.after(async () => {
    await page.close();
    assert.deepEqual(complaints, []);
  });
  return { page, downloads };
}

const text = (page, id) => page.$eval(`#${id}`, (element) => element.hidden ? '' : element.textContent);
const until = (page, condition, ...args) => page.waitForFunction(condition, { timeout: 60_000, polling: 50 }, ...args);
const done = (page) => until(page, () => !document.body.classList.contains('running') && /^Done/.test(document.getElementById('status').textContent));
const charts = async (page) => Number((await text(page, 'figure-charts')).replace(/,/g, ''));

async function openFile(page, t, name, bytes) {
  const file = join(scratch(t), name);
  writeFileSync(file, bytes);
  await (await page.$('#file')).uploadFile(file);
  await until(page, (name) => document.getElementById('name').textContent === name || !document.getElementById('fault').hidden, name);
}

async function saved(page, downloads, button, name) {
  await page.click(button);
  for (let i = 0; i < 200 && !existsSync(join(downloads, name)); ++i)
    await sleep(50);
  await sleep(100);
  return readFileSync(join(downloads, name));
}

async function setStretch(page, value) {
  await page.$eval('#stretch', (slider, value) => {
    slider.value = value;
    slider.dispatchEvent(new Event('input', { bubbles: true }));
  }, value);
  await sleep(400);
  await done(page);
}

/** Writes a document's triangles with their coordinates and lets the native program judge them. */
async function verifyGlb(t, bytes, ...options) {
  const document = await io.readBinary(new Uint8Array(bytes)), file = join(scratch(t), 'saved.obj');
  writeFileSync(file, objOf(document.getRoot().listMeshes().flatMap((mesh) => mesh.listPrimitives())));
  await tessora('verify', file, '--width', '1024', '--height', '1024', ...options);
  return document;
}

test('a GLB is opened, unwrapped, changed and saved, and what is saved verifies', async (t) => {
  const { page, downloads } = await openPage(t);
  await openFile(page, t, 'tube.glb', await io.writeBinary(skinned()));
  await done(page);
  const loose = await charts(page);
  await page.screenshot({ path: join(pictures, 'glb.png') });
  await setStretch(page, 0.01);
  assert(await charts(page) >= loose);
  assert(Number(await text(page, 'figure-stretch')) <= 0.01);

  const glb = await saved(page, downloads, '#save-glb', 'tube_uv.glb');
  assert.equal((await validator.validateBytes(new Uint8Array(glb))).issues.numErrors, 0);
  const document = await verifyGlb(t, glb, '--stretch', '0.01');
  assert.equal(document.getRoot().listSkins().length, 1);
  await saved(page, downloads, '#save-obj', 'tube_uv.obj');
  await tessora('verify', join(downloads, 'tube_uv.obj'), '--width', '1024', '--height', '1024', '--stretch', '0.01');
  const svg = String(await saved(page, downloads, '#save-svg', 'tube_layout.svg'));
  assert.equal(svg.match(/<path /g).length, await charts(page));
  const png = await saved(page, downloads, '#save-png', 'tube_layout.png');
  assert.equal(png.readUInt32BE(16), 1024);
});

test('an OBJ keeps every byte but its texture coordinates', async (t) => {
  const { page, downloads } = await openPage(t), source = '# a roof\nv 0 0 0\nv 2 0 0\nv 2 1 1\nv 0 1 1\nv 2 2 0\nv 0 2 0\ng roof\nf 1 2 3 4\nf 4 3 5 6\n';
  await openFile(page, t, 'roof.obj', source);
  await done(page);
  const obj = String(await saved(page, downloads, '#save-obj', 'roof_uv.obj'));
  assert.equal(obj.replace(/vt .*\n/g, '').replace(/\/\d+/g, ''), source);
  await tessora('verify', join(downloads, 'roof_uv.obj'), '--width', '1024', '--height', '1024');
  await verifyGlb(t, await saved(page, downloads, '#save-glb', 'roof_uv.glb'));
});

test('instances share their place in the texture and stand where they stood', async (t) => {
  const { page, downloads } = await openPage(t);
  await openFile(page, t, 'boxes.glb', await io.writeBinary(instanced()));
  await done(page);
  assert.equal(await text(page, 'figure-faces'), '12');
  const obj = String(await saved(page, downloads, '#save-obj', 'boxes_uv.obj'));
  assert.equal(obj.match(/^f /gm).length, 60);
  assert.equal(Math.max(...obj.match(/^v \S+/gm).map((line) => Number(line.slice(2)))), 18.5); // the fifth box
  await page.screenshot({ path: join(pictures, 'instances.png') });
});

test('a run shows its progress and can be cancelled; the next one works', async (t) => {
  const { page } = await openPage(t);
  const { positions, indices } = grid(800, 100, knot), lines = [];
  for (let v = 0; v < positions.length; v += 3)
    lines.push(`v ${positions.subarray(v, v + 3).join(' ')}`);
  for (let c = 0; c < indices.length; c += 3)
    lines.push(`f ${[0, 1, 2].map((k) => indices[c + k] + 1).join(' ')}`);
  await page.$eval('input[value=quality]', (radio) => radio.checked = true); // takes long enough to be cancelled
  await openFile(page, t, 'knot.obj', lines.join('\n'));
  await until(page, () => document.body.classList.contains('running') && document.getElementById('progress').value > 0);
  await page.screenshot({ path: join(pictures, 'progress.png') });
  await page.click('#cancel');
  await until(page, () => document.getElementById('status').textContent === 'Cancelled.');
  assert.equal(await page.$eval('#save-glb', (button) => button.disabled), true);
  await page.click('input[value=fast]');
  await done(page);
  assert(await charts(page) > 0);
  // A change of the settings replaces the run that is under way.
  await page.click('input[value=quality]');
  await until(page, () => document.body.classList.contains('running'));
  await page.click('input[value=fast]');
  await done(page);
  assert.equal(await text(page, 'fault'), '');
});

const NO_MESHES = [
  ['empty.obj', '', /The file is empty/],
  ['text.obj', 'hello', /neither vertices nor faces/],
  ['bad.obj', 'v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 9\n', /Line 4: face uses vertex 9, but the file has 3/],
  ['nan.obj', 'v 0 nan 0\n', /Line 1: vertex 1: 'nan' is not a number/],
  ['notes.txt', 'hello', /neither an OBJ nor a GLB/],
  ['short.glb', 'glTF', /does not begin with|cut off|cannot be read/],
  ['text.glb', 'this is no GLB at all, only text', /does not begin with/],
  ['old.glb', Buffer.from([0x67, 0x6c, 0x54, 0x46, 1, 0, 0, 0, 20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]), /version 1/],
  ['cut.glb', async () => (await io.writeBinary(instanced())).slice(0, 400), /cut off/],
  ['garbled.glb', async () => (await io.writeBinary(instanced())).map((byte, i) => i >= 20 && i < 200 ? 255 - byte : byte), /cannot be read/],
  ['range.glb', async () => {
    const document = instanced();
    document.getRoot().listMeshes()[0].listPrimitives()[0].getIndices().getArray()[3] = 99;
    return io.writeBinary(document);
  }, /vertex 99/],
  ['infinite.glb', async () => {
    const document = instanced();
    document.getRoot().listMeshes()[0].listPrimitives()[0].getAttribute('POSITION').getArray()[4] = Infinity;
    return io.writeBinary(document);
  }, /Vertex 1 of mesh “box” is not at a finite position/],
];

test('files that are no mesh are refused with a reason, and the page goes on', async (t) => {
  const { page } = await openPage(t);
  for (const [name, bytes, reason] of NO_MESHES)
    await t.test(name, async (t) => {
      await page.evaluate(() => document.getElementById('fault').hidden = true);
      await openFile(page, t, name, typeof bytes === 'function' ? await bytes() : bytes);
      assert.match(await text(page, 'fault'), reason);
      assert.equal(await text(page, 'name'), 'vase.obj');
    });
  await page.click('#unwrap');
  await done(page);
  assert.equal(await text(page, 'fault'), '');
});

test('a texture without room is explained', async (t) => {
  const { page } = await openPage(t);
  await page.select('#width', '256');
  await page.select('#height', '256');
  await page.$eval('#gutter', (input) => {
    input.value = '32';
  });
  await setStretchWithoutWaiting(page, 0);
  await until(page, () => !document.getElementById('fault').hidden);
  assert.match(await text(page, 'fault'), /The texture has no room for \d+ charts/);
});

async function setStretchWithoutWaiting(page, value) {
  await page.$eval('#stretch', (slider, value) => {
    slider.value = value;
    slider.dispatchEvent(new Event('input', { bubbles: true }));
  }, value);
}

test('a chart under the pointer lights up in both views; keys step through the charts', async (t) => {
  const { page } = await openPage(t), picture = (id) => page.$eval(id, async (canvas) => {
    await new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve)));
    return canvas.getBoundingClientRect().toJSON();
  });
  const box = await picture('#texture'), look = async () => createHash('md5').update(await (await page.$('#surface')).screenshot()).digest('hex');
  const changes = async (from) => { // waits: drawing in software takes its time
    for (let tries = 0; tries < 50 && await look() === from; ++tries)
      await sleep(100);
    return await look() !== from;
  };
  const before = await look();
  // Where charts lie is the engine's business: somewhere along a line there is one.
  for (let x = 0.3; x < 0.7 && !/^Chart \d+ of/.test(await text(page, 'chart')); x += 0.04) {
    await page.mouse.move(box.x + box.width * x, box.y + box.height * 0.6);
    await sleep(200);
  }
  assert.match(await text(page, 'chart'), /^Chart \d+ of/);
  assert(await changes(before));
  await page.mouse.move(5, 5);
  await until(page, () => document.getElementById('chart').textContent === '');

  await page.focus('#surface');
  for (const number of [1, 2]) {
    await page.keyboard.press('.');
    assert.match(await text(page, 'chart'), new RegExp(`^Chart ${number} of`));
  }
  await page.screenshot({ path: join(pictures, 'lit.png') });
  await page.keyboard.press('Escape');
  assert.equal(await text(page, 'chart'), '');
  const still = await look();
  await page.keyboard.press('ArrowLeft');
  assert(await changes(still));
});

test('the three colourings differ, and stretch has a legend', async (t) => {
  const { page } = await openPage(t), seen = new Set();
  for (const mode of ['checker', 'charts', 'stretch']) {
    await page.click(`input[value=${mode}]`);
    await sleep(200);
    seen.add(createHash('md5').update(await (await page.$('#texture')).screenshot()).digest('hex'));
    await page.screenshot({ path: join(pictures, `${mode}.png`) });
  }
  assert.equal(seen.size, 3);
  assert.equal(await page.$eval('#legend', (legend) => legend.hidden), false);
});

test('cuts at hard edges give more charts', async (t) => {
  const { page } = await openPage(t);
  await openFile(page, t, 'boxes.glb', await io.writeBinary(instanced()));
  await done(page);
  assert.equal(await charts(page), 1);
  await page.click('#hard');
  await until(page, () => document.getElementById('figure-charts').textContent === '6');
});

test('a dropped file is opened', async (t) => {
  const { page } = await openPage(t);
  await page.evaluate(() => {
    const dataTransfer = new DataTransfer();
    dataTransfer.items.add(new File(['v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n'], 'dropped.obj'));
    document.body.dispatchEvent(new DragEvent('dragenter', { bubbles: true, dataTransfer }));
    document.body.dispatchEvent(new DragEvent('drop', { bubbles: true, dataTransfer, cancelable: true }));
  });
  await until(page, () => document.getElementById('name').textContent === 'dropped.obj');
  await done(page);
});

test('everything can be reached by keyboard', async (t) => {
  const { page } = await openPage(t), reached = new Set();
  for (let i = 0; i < 30; ++i) {
    await page.keyboard.press('Tab');
    reached.add(await page.evaluate(() => document.activeElement.id || document.activeElement.name || document.activeElement.className || document.activeElement.tagName));
  }
  for (const name of ['skip', 'open', 'sample', 'mode', 'surface', 'texture', 'stretch', 'width', 'height', 'gutter', 'quality', 'hard', 'unwrap', 'save-glb', 'save-png', 'SUMMARY'])
    assert(reached.has(name), `${name}, reached: ${[...reached]}`);
});

for (const [scheme, width, height] of [['dark', 1280, 860], ['light', 1280, 860], ['dark', 360, 740], ['light', 360, 740]])
  test(`labels, contrast and layout, ${scheme}, ${width} pixels wide`, async (t) => {
    const { page } = await openPage(t, { width, height, scheme });
    await page.addScriptTag({ path: createRequire(import.meta.url).resolve('axe-core') });
    const { violations } = await page.evaluate(() => axe.run());
    assert.deepEqual(violations.map(({ id, nodes }) => [id, nodes.map(({ html }) => html)]), []);
    assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), width); // nothing to scroll sideways
    await page.screenshot({ path: join(pictures, `${scheme}-${width}.png`), fullPage: width < 500 });
  });
