import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { test } from 'node:test';
import { load, TessoraError } from 'tessora';
import { UnwrapWorker } from 'tessora/worker';
import { web } from './helpers.mjs';
import { ball, grid, knot } from './models.mjs';

const small = grid(20, 10, ball), large = grid(400, 60, knot);

function worker(t) {
  const made = new UnwrapWorker();
  t.after(() => made.close());
  return made;
}

test('a worker gives the same atlas as the engine itself', async (t) => {
  const tessora = await load();
  assert.deepEqual(await worker(t).unwrap(small, { quality: 'quality' }), tessora.unwrap(small, { quality: 'quality' }));
  assert.equal(small.positions.length, 21 * 11 * 3); // the caller's arrays stay
});

test('progress arrives while the worker runs', async (t) => {
  const seen = [];
  await worker(t).unwrap(large, { onProgress: (fraction) => seen.push(fraction) });
  assert(seen.length > 2);
  assert.deepEqual(seen, [...seen].sort((a, b) => a - b));
  assert.equal(seen.at(-1), 1);
});

test('runs wait for one another', async (t) => {
  const unwrapper = worker(t), order = [];
  await Promise.all([large, small].map(async (mesh, i) => {
    await unwrapper.unwrap(mesh);
    order.push(i);
  }));
  assert.deepEqual(order, [0, 1]);
});

test('a run can be cancelled, and the next one works', async (t) => {
  const unwrapper = worker(t), abort = new AbortController(), reason = new Error('enough');
  const seen = [];
  await assert.rejects(unwrapper.unwrap(large, { quality: 'quality', signal: abort.signal, onProgress: (fraction) => {
    seen.push(fraction);
    abort.abort(reason);
  } }), reason);
  assert(seen[0] < 1);
  assert.equal((await unwrapper.unwrap(small)).charts.length, 400);
});

test('a waiting run can be cancelled without harm to the running one', async (t) => {
  const unwrapper = worker(t), abort = new AbortController();
  const running = unwrapper.unwrap(large), waiting = unwrapper.unwrap(small, { signal: abort.signal });
  abort.abort();
  await assert.rejects(waiting, { name: 'AbortError' });
  assert((await running).chartCount > 0);
});

test('a signal that fired before the run cancels it', async (t) => {
  await assert.rejects(worker(t).unwrap(small, { signal: AbortSignal.abort() }), { name: 'AbortError' });
});

test('errors arrive with their status', async (t) => {
  await assert.rejects(worker(t).unwrap(small, { width: 8, height: 8, gutter: 8 }), (error) => {
    assert(error instanceof TessoraError);
    assert.equal(error.status, 'does_not_fit');
    return true;
  });
});

test('closing rejects what has not finished', async () => {
  const unwrapper = new UnwrapWorker(), running = unwrapper.unwrap(large);
  unwrapper.close();
  await assert.rejects(running, { status: 'cancelled' });
});

test('an idle worker lets the program end', () => {
  const text = `import { UnwrapWorker } from 'tessora/worker';
    const atlas = await new UnwrapWorker().unwrap({ positions: [0,0,0, 1,0,0, 0,1,0], indices: [0, 1, 2] });
    console.log(atlas.chartCount);`;
  assert.equal(execFileSync(process.execPath, ['--input-type=module', '-e', text], { cwd: web, timeout: 20_000, encoding: 'utf8' }), '1\n');
});
