import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { gzipSync } from 'node:zlib';
import { hardEdges, load, TessoraError } from 'tessora';
import { web } from './helpers.mjs';
import { ball, box, grid, knot } from './models.mjs';

const tessora = await load();
const cube = {
  positions: [0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1],
  indices: [0, 3, 2, 1, 4, 5, 6, 7, 0, 1, 5, 4, 1, 2, 6, 5, 2, 3, 7, 6, 3, 0, 4, 7],
  offsets: [0, 4, 8, 12, 16, 20, 24],
};

function fails(status, message, call) {
  assert.throws(call, (error) => {
    assert(error instanceof TessoraError, `${error.stack}`);
    assert.equal(error.status, status);
    assert.match(error.message, message);
    return true;
  });
}

test('a cube of quads becomes one chart, one new vertex per place', () => {
  const atlas = tessora.unwrap(cube);
  assert.equal(atlas.chartCount, 1);
  assert.equal(atlas.indices.length, 24);
  assert.equal(atlas.triangles.length, 36);
  assert.equal(atlas.charts.length, 12);
  atlas.indices.forEach((vertex, corner) => assert.equal(atlas.vertices[vertex], cube.indices[corner]));
  assert(atlas.uvs.every((x) => x >= 0 && x <= 1));
  assert.equal(atlas.vertices.length, 14); // a cross of six squares
});

test('arrays of every type give the same atlas', () => {
  const expected = tessora.unwrap(cube);
  for (const Indices of [Uint8Array, Uint16Array, Uint32Array])
    for (const Positions of [Float32Array, Float64Array])
      assert.deepEqual(tessora.unwrap({ ...cube, positions: Positions.from(cube.positions), indices: Indices.from(cube.indices),
        offsets: Uint32Array.from(cube.offsets) }), expected);
});

test('a view into a larger buffer is read from its own beginning', () => {
  const buffer = new Float64Array([7, ...cube.positions]);
  assert.deepEqual(tessora.unwrap({ ...cube, positions: buffer.subarray(1) }), tessora.unwrap(cube));
});

test('vertices split at normals are joined unless weld is false', () => {
  const { positions, indices } = box(), shape = { positions, indices };
  assert.equal(tessora.unwrap(shape).chartCount, 1);
  const atlas = tessora.unwrap({ ...shape, weld: false });
  assert.equal(atlas.chartCount, 6);
  const welded = tessora.unwrap(shape);
  welded.indices.forEach((vertex, corner) => assert.equal(welded.vertices[vertex], shape.indices[corner]));
});

test('more effort gives another layout', () => {
  const sphere = grid(12, 8, ball), shape = { ...sphere, cuts: new Uint8Array(sphere.indices.length).fill(1) };
  const usual = tessora.unwrap(shape);
  assert.deepEqual(tessora.unwrap(shape, { effort: 4 }), usual);
  assert.notDeepEqual(tessora.unwrap(shape, { effort: 0 }).uvs, usual.uvs);
});

test('cuts become seams', () => {
  const atlas = tessora.unwrap({ ...cube, cuts: new Uint8Array(24).fill(1) });
  assert.equal(atlas.chartCount, 6);
});

test('hard edges are those bent by at least the angle', () => {
  assert.deepEqual(hardEdges(cube, 91), new Uint8Array(24));
  assert.deepEqual(hardEdges(cube, 90), new Uint8Array(24).fill(1));
  assert.deepEqual(hardEdges(box(), 90).filter((cut) => cut).length, 24); // split vertices are joined, diagonals are flat
  assert.equal(tessora.unwrap({ ...cube, cuts: hardEdges(cube, 60) }).chartCount, 6);
});

test('normals that differ across an edge cut it', () => {
  const shape = box();
  assert.equal(tessora.unwrap({ ...shape, normals: shape.normals }).chartCount, 6);
});

test('the texture need not be square', () => {
  const { uvs } = tessora.unwrap(cube, { width: 1024, height: 256 });
  assert(uvs.every((x) => x >= 0 && x <= 1));
});

test('a lower stretch limit is kept with more charts', () => {
  const shape = grid(40, 20, ball), loose = tessora.unwrap(shape, { stretch: 0.5 }), tight = tessora.unwrap(shape, { stretch: 0.02 });
  assert(tight.stretch <= 0.02);
  assert(tight.chartCount > loose.chartCount);
});

test('quality covers no less of the texture than fast', () => {
  const shape = grid(60, 30, knot);
  const [fast, quality] = ['fast', 'quality'].map((mode) => tessora.unwrap(shape, { quality: mode }));
  const covered = ({ uvs, indices }) => {
    const [u, v] = [0, 1].map((k) => (corner) => uvs[2 * indices[corner] + k]);
    let sum = 0;
    for (let c = 0; c < indices.length; c += 3)
      sum += (u(c + 1) - u(c)) * (v(c + 2) - v(c)) - (u(c + 2) - u(c)) * (v(c + 1) - v(c));
    return sum / 2;
  };
  assert(covered(fast) > 0.3);
  assert(covered(quality) >= covered(fast));
});

test('partition flattens every chart by itself', () => {
  const { uvs, chartCount } = tessora.partition({ ...cube, cuts: new Uint8Array(24).fill(1) });
  assert.equal(chartCount, 6);
  assert.equal(uvs.length, 48);
});

/** Coordinates per corner of an atlas. */
const perCorner = ({ uvs, indices }) => Float32Array.from({ length: 2 * indices.length }, (_, i) => uvs[2 * indices[i >> 1] + i % 2]);

test('charts that exist are packed without touching their shape', () => {
  const before = tessora.unwrap({ ...cube, cuts: new Uint8Array(24).fill(1) }), uvs = perCorner(before).map((x) => x / 4);
  const after = tessora.pack(cube, uvs, { width: 256, height: 256, gutter: 4 });
  assert.equal(after.chartCount, 6);
  assert.equal(after.tiles.length, 6);
  assert(after.coverage[0] > 0.5 && after.coverage[0] <= 1);
  assert(after.texelsPerUnit > 1);
  assert.deepEqual(after.stackedOn, new Uint32Array(6).fill(0xffffffff));
});

test('packing takes tiles, a fixed density, stacks, kept charts and the caller\'s charts', () => {
  const uvs = perCorner(tessora.unwrap({ ...cube, cuts: new Uint8Array(24).fill(1) }));
  const tiled = tessora.pack(cube, uvs, { width: 64, height: 64, density: 25, tiles: 6 });
  assert(new Set(tiled.tiles).size > 1);
  assert(Math.abs(tiled.texelsPerUnit - 25) < 1e-6);
  assert.equal(tessora.pack(cube, uvs, { stack: 'congruent' }).stackedOn.filter((chart) => chart !== 0xffffffff).length, 5);
  const kept = tessora.pack(cube, uvs, { keep: [1, 1, 1, 1, 1, 1] });
  assert.deepEqual(perCorner(kept), uvs);
  assert.equal(tessora.pack(cube, uvs, { charts: [3, 3, 3, 3, 3, 3] }).chartCount, 1);
  fails('does_not_fit', /./, () => tessora.pack(cube, uvs, { width: 64, height: 64, density: 1000 }));
  fails('kept_chart_outside', /polygon \d: a chart that is to stay/, () => tessora.pack(cube, uvs.map((x) => x + 3), { keep: [1, 1, 1, 1, 1, 1] }));
  fails('invalid_argument', /turns is 'half'/, () => tessora.pack(cube, uvs, { turns: 'half' }));
  fails('invalid_argument', /uvs has 1 numbers/, () => tessora.pack(cube, [1]));
});

test('triangulate and neighbours describe the polygons', () => {
  const triangles = tessora.triangulate(cube);
  assert.equal(triangles.length, 36);
  assert.deepEqual([...triangles.slice(0, 6)].map((corner) => corner < 4), Array(6).fill(true));
  const neighbours = tessora.neighbours(cube);
  assert.equal(neighbours.length, 36);
  assert(neighbours.every((triangle) => triangle < 12));
});

test('progress rises to 1', () => {
  const seen = [];
  tessora.unwrap(grid(60, 30, ball), { onProgress: (fraction) => { seen.push(fraction); } });
  assert(seen.length > 2);
  assert.deepEqual(seen, [...seen].sort((a, b) => a - b));
  assert.equal(seen.at(-1), 1);
});

test('a progress function that returns false cancels', () =>
  fails('cancelled', /cancel|stop|abort/i, () => tessora.unwrap(cube, { onProgress: () => false })));

test('what a progress function throws arrives, and the engine goes on', () => {
  const own = new Error('own');
  assert.throws(() => tessora.unwrap(cube, { onProgress: () => { throw own; } }), own);
  assert.equal(tessora.unwrap(cube).chartCount, 1);
});

test('a progress function cannot start another run', () =>
  fails('invalid_argument', /progress function/, () => tessora.unwrap(cube, { onProgress: () => void tessora.unwrap(cube) })));

test('a missing array is named', () => {
  fails('invalid_argument', /positions and indices/, () => tessora.unwrap({ positions: [] }));
  fails('invalid_argument', /positions has 4 numbers/, () => tessora.unwrap({ positions: [0, 0, 0, 1], indices: [0, 0, 0] }));
  fails('invalid_argument', /normals has 1 numbers/, () => tessora.unwrap({ ...cube, normals: [1] }));
});

test('an index out of range is named with its place', () => {
  const broken = { ...cube, indices: cube.indices.map((vertex, i) => i === 5 ? 8 : vertex) };
  fails('index_out_of_range', /indices/, () => tessora.unwrap(broken));
  assert.throws(() => tessora.unwrap(broken), { element: 5 });
});

test('a position that is not finite is refused', () =>
  fails('not_finite', /finite/, () => tessora.unwrap({ ...cube, positions: cube.positions.map((x, i) => i === 4 ? NaN : x) })));

test('options that make no sense are refused', () => {
  fails('invalid_argument', /width is -1/, () => tessora.unwrap(cube, { width: -1 }));
  fails('invalid_argument', /height is 1.5/, () => tessora.unwrap(cube, { height: 1.5 }));
  fails('invalid_argument', /quality is 'best'/, () => tessora.unwrap(cube, { quality: 'best' }));
  fails('invalid_argument', /effort is 11; it must be 0 to 10/, () => tessora.unwrap(cube, { effort: 11 }));
  fails('invalid_argument', /stretch/, () => tessora.unwrap(cube, { stretch: NaN }));
});

test('a gutter that leaves no room is refused', () =>
  fails('does_not_fit', /./, () => tessora.unwrap(cube, { width: 16, height: 16, gutter: 16 })));

test('more charts than allowed are refused', () =>
  fails('chart_limit', /./, () => tessora.unwrap({ ...cube, cuts: new Uint8Array(24).fill(1) }, { maxCharts: 5 })));

test('an engine that ran out of memory goes on', async () => {
  const small = await load({ maxMemory: 24 << 20 }), shape = grid(400, 400, ball);
  fails('out_of_memory', /memory/, () => small.unwrap(shape));
  fails('out_of_memory', /memory/, () => small.unwrap(grid(900, 900, ball)));
  assert.deepEqual(small.unwrap(cube), tessora.unwrap(cube));
});

test('runs give their memory back', async () => {
  const small = await load({ maxMemory: 32 << 20 }), shape = grid(100, 100, ball); // 360 KB of arrays
  for (let i = 0; i < 60; ++i)
    small.unwrap(shape);
});

test('the engine loads from bytes and from a module', async () => {
  const bytes = readFileSync(join(web, 'dist/tessora.wasm'));
  for (const wasm of [bytes, new WebAssembly.Module(bytes)])
    assert.equal((await load({ wasm })).unwrap(cube).chartCount, 1);
});

test('the .wasm file exports the C interface and needs four imports', () => {
  const module = new WebAssembly.Module(readFileSync(join(web, 'dist/tessora.wasm')));
  const exported = WebAssembly.Module.exports(module).map(({ name }) => name).filter((name) => name.startsWith('tessora_'));
  const declared = readFileSync(join(web, '../atlas/c/exports.map'), 'utf8').match(/tessora_\w+(?=;)/g);
  assert.deepEqual(exported.sort(), [...declared, 'tessora_js_progress'].sort());
  assert.deepEqual(WebAssembly.Module.imports(module).map(({ name }) => name).sort(),
    ['emscripten_notify_memory_growth', 'memory', 'proc_exit', 'tessora_js_report']);
});

test('the .wasm file stays under 256 KB compressed', () =>
  assert(gzipSync(readFileSync(join(web, 'dist/tessora.wasm')), { level: 9 }).length < 256 * 1024));
