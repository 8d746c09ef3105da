// The page that `tessora unwrap --html` and `tessora report` write, opened as a file in Debian's Chromium.
// Screenshots stay in build/web/screenshots/.
import assert from 'node:assert/strict';
import { mkdirSync, readFileSync, statSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { launch } from './browser.mjs';
import { scratch, tessora, web } from './helpers.mjs';
import { grid, knot } from './models.mjs';

const screenshots = join(web, '../build/web/screenshots');
const EVIL = ['<script>alert(1)<\\script>', '"\'onerror=alert(1) x="&amp;<img src=x>', 'photo\u202Egpj.obj\u2066', 'tab\tand\u200Bnothing'];
let chromium;

before(async () => {
  mkdirSync(screenshots, { recursive: true });
  chromium = await launch();
});
after(() => chromium?.close());

/** Opens a page from the disk; whatever goes wrong in it, and every request beyond the folder, fails the test. */
async function open(t, folder, { width = 1280, height = 860, scheme = 'light' } = {}) {
  const page = await chromium.browser.newPage(), complaints = [], requests = [];
  page.on('console', (message) => complaints.push(message.text()));
  page.on('pageerror', (error) => complaints.push(error.message));
  page.on('dialog', (dialog) => complaints.push(`dialog ${dialog.message()}`) && dialog.dismiss());
  page.on('request', (request) => requests.push(request.url()));
  page.on('requestfailed', (request) => complaints.push(`${request.url()} failed`));
  await page.setViewport({ width, height });
  await page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: scheme }]);
  const base = pathToFileURL(folder).href + '/';
  await page.goto(base + 'index.html');
  t.after(async () => {
    await page.close();
    assert.deepEqual(complaints, []);
    assert.deepEqual(requests.filter((url) => !url.startsWith(base)), []);
  });
  return { page, requests };
}

const names = (page) => page.$$eval('.name', (all) => all.map((one) => one.textContent));
const sortBy = async (page, by) => page.select('#sort', by);

/** A folder of meshes and the page of their batch. */
async function batch(t, meshes, ...words) {
  const folder = scratch(t);
  mkdirSync(join(folder, 'in'));
  for (const [name, text] of Object.entries(meshes))
    writeFileSync(join(folder, 'in', name), text);
  await tessora('unwrap', join(folder, 'in'), '--out_dir', join(folder, 'out'), '--html', join(folder, 'page'), ...words).catch(() => {});
  return folder;
}

function objText({ positions, indices }) {
  const lines = [];
  for (let i = 0; i < positions.length; i += 3)
    lines.push(`v ${positions[i]} ${positions[i + 1]} ${positions[i + 2]}`);
  for (let i = 0; i < indices.length; i += 3)
    lines.push(`f ${indices[i] + 1} ${indices[i + 1] + 1} ${indices[i + 2] + 1}`);
  return lines.join('\n') + '\n';
}
const cube = 'v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\nf 4 3 2 1\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n';

test('meshes with their pictures, failures first', async (t) => {
  const folder = await batch(t, { 'b_cube.obj': cube, 'c_knot.obj': objText(grid(60, 12, knot)), 'z_bad.obj': 'f 1 2 3\n' });
  const { page } = await open(t, join(folder, 'page'));
  assert.deepEqual((await names(page)).map((name) => name.split('/').pop()), ['z_bad.obj', 'b_cube.obj', 'c_knot.obj']);
  assert.match(await page.$eval('#totals', (e) => e.textContent), /^1 failed, 2 done, 0 up to date/);
  assert.match(await page.$eval('.row .reason', (e) => e.textContent), /face uses vertex 1/);
  await page.waitForFunction(() => [...document.images].length === 2 && [...document.images].every((image) => image.complete && image.naturalWidth > 0));
  await page.screenshot({ path: join(screenshots, 'batch.png') });
});

test('names from files are only ever text', async (t) => {
  const meshes = Object.fromEntries(EVIL.map((name, i) => [`${i}${name.replace(/[/]/g, '')}.obj`, i % 2 ? cube : `f ${name}\n`]));
  const folder = await batch(t, meshes);
  // Names of meshes and materials come in reasons and warnings.
  const rows = EVIL.map((name, i) => ({ input: `${i}.obj`, report: `r${i}`, status: 'failed', code: 5, reason: `mesh ${name}`, warnings: [`material ${name}</script>`] }));
  writeFileSync(join(folder, 'rows.jsonl'), rows.map((row) => JSON.stringify(row)).join('\n') + '\n');
  await tessora('report', 'merge', join(folder, 'page'), join(folder, 'rows.jsonl'), '-o', join(folder, 'all.jsonl'), '--html', join(folder, 'both')).catch(() => {});
  const { page } = await open(t, join(folder, 'both'), { height: 2400 });
  assert.equal((await names(page)).length, 8);
  const foreign = await page.evaluate(() => [document.querySelectorAll('script').length, document.querySelectorAll('img:not(.strip)').length,
    document.querySelectorAll('[onerror]').length, /[\u202e\u2066\u200b]/.test(document.body.innerText)]);
  assert.deepEqual(foreign, [2, 0, 0, false]);
  const text = await page.$eval('#rows', (e) => e.textContent);
  for (const shown of ['<script>alert(1)<\\script>', '"\'onerror=alert(1) x="&amp;<img src=x>', 'photoU+202Egpj.objU+2066', 'tabU+0009andU+200Bnothing'])
    assert(text.includes(shown), shown);
  // A row's details show the same names again.
  for (const button of await page.$$('.name')) {
    await button.click();
    assert.equal(await page.$eval('#detail', (e) => e.querySelectorAll('script, [onerror]').length), 0);
    await page.click('#details button');
  }
  await page.screenshot({ path: join(screenshots, 'batch-names.png') });
});

test('rows are found, chosen and sorted', async (t) => {
  const folder = await batch(t, { 'a.obj': cube, 'b.obj': objText(grid(60, 12, knot)), 'c.obj': 'f 1 2 3\n' });
  const { page } = await open(t, join(folder, 'page'));
  const shown = async () => (await names(page)).map((name) => name.split('/').pop()[0]).join('');
  await sortBy(page, 'name');
  assert.equal(await shown(), 'abc');
  await sortBy(page, 'triangles');
  assert.equal(await shown(), 'bac');
  await page.click('#reverse');
  assert.equal(await shown(), 'cab');
  await page.select('#show', 'failed');
  assert.equal(await shown(), 'c');
  await page.select('#show', 'all');
  await page.type('#find', 'VERTEX face');
  assert.equal(await shown(), 'c');
  assert.equal(await page.$eval('#count', (e) => e.textContent), '1 of 3');
});

test('of ten thousand rows only those in sight are made and load pictures', async (t) => {
  const folder = await batch(t, { 'a.obj': cube });
  const row = JSON.parse(readFileSync(join(folder, 'page/meshes.jsonl'), 'utf8'));
  const rows = Array.from({ length: 10_000 }, (_, i) => JSON.stringify({ ...row, input: `mesh_${i}.obj`, report: `mesh_${i}.json` }));
  writeFileSync(join(folder, 'page/meshes.jsonl'), rows.join('\n') + '\n');
  await tessora('report', 'merge', join(folder, 'page'), '-o', join(folder, 'all.jsonl'), '--html', join(folder, 'page'));
  const size = statSync(join(folder, 'page/index.html')).size;
  assert(size < 10_000 * 6 * 1024, `${size} bytes`);
  const { page, requests } = await open(t, join(folder, 'page'));
  await page.waitForSelector('.row');
  const { TaskDuration } = await page.metrics();
  t.diagnostic(`opening took the page ${TaskDuration.toFixed(2)} s, ${(size / 1e6).toFixed(1)} MB`);
  assert((await names(page)).length < 20);
  assert(requests.length < 20, `${requests.length} requests`);
  await page.$eval('#list', (list) => list.scrollTo(0, list.scrollHeight));
  await page.waitForFunction(() => [...document.querySelectorAll('.name')].some((name) => name.textContent === 'mesh_9999.obj'));
});

test('two batches side by side', async (t) => {
  const meshes = { 'a.obj': cube, 'b.obj': objText(grid(60, 12, knot)) }, folder = await batch(t, meshes);
  await tessora('unwrap', join(folder, 'in'), '--out_dir', join(folder, 'out2'), '--html', join(folder, 'page2'), '--padding', '12', '--stretch', '0.4');
  await tessora('report', 'compare', join(folder, 'page'), join(folder, 'page2'), '--html', join(folder, 'difference'));
  const { page } = await open(t, join(folder, 'difference'), { height: 1000 });
  assert.equal((await page.$$('.row')).length, 2);
  await page.waitForFunction(() => document.images.length === 4 && [...document.images].every((image) => image.complete && image.naturalWidth > 0));
  assert.match(await page.$eval('#totals', (e) => e.textContent), /2 meshes, [12] differ/);
  await page.screenshot({ path: join(screenshots, 'batch-compare.png') });
});

for (const [scheme, width] of [['light', 1280], ['dark', 1280], ['dark', 400]])
  test(`batch page: labels, contrast and layout, ${scheme}, ${width} pixels wide`, async (t) => {
    const folder = await batch(t, { 'a.obj': cube, 'b.obj': objText(grid(60, 12, knot)), 'c.obj': 'f 1 2 3\n' });
    const { page } = await open(t, join(folder, 'page'), { scheme, width });
    await page.evaluate(readFileSync(createRequire(import.meta.url).resolve('axe-core'), 'utf8'));
    const { violations } = await page.evaluate(() => axe.run());
    assert.deepEqual(violations.map(({ id, nodes }) => [id, nodes.map(({ html }) => html)]), []);
    assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), width);
    await page.screenshot({ path: join(screenshots, `batch-${scheme}-${width}.png`) });
    await page.click('.row:nth-child(2) .name');
    await page.screenshot({ path: join(screenshots, `batch-details-${scheme}-${width}.png`) });
  });
