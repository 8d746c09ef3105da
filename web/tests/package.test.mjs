import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdirSync, readdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { scratch, web } from './helpers.mjs';

const run = (command, args, cwd) => execFileSync(command, args, { cwd, encoding: 'utf8', stdio: ['ignore', 'pipe', 'pipe'] });

/** An empty project with the packed package installed. */
function project(t) {
  const folder = scratch(t);
  const [{ filename }] = JSON.parse(run('npm', ['pack', '--json', '--pack-destination', folder], web));
  const empty = join(folder, 'project');
  mkdirSync(empty);
  run('npm', ['init', '-y'], empty);
  run('npm', ['install', '--offline', '--no-audit', '--no-fund', join(folder, filename)], empty);
  return empty;
}

/** The first block of code in a language of a page. */
function example(page, language) {
  return readFileSync(page, 'utf8').split('```' + language + '\n')[1].split('```')[0];
}

test('the packed file installs into an empty project and works there', (t) => {
  const folder = project(t), installed = join(folder, 'node_modules/tessora');
  assert.deepEqual(readdirSync(join(folder, 'node_modules')).filter((name) => !name.startsWith('.')), ['tessora']);
  assert.deepEqual(readdirSync(installed).sort(), ['LICENSE', 'LICENSES.md', 'README.md', 'dist', 'package.json']);
  const { scripts = {}, dependencies } = JSON.parse(readFileSync(join(installed, 'package.json')));
  assert.equal(dependencies, undefined);
  for (const name of ['preinstall', 'install', 'postinstall', 'prepare'])
    assert(!(name in scripts), name);

  writeFileSync(join(folder, 'cube.mjs'), example(join(web, 'README.md'), 'js'));
  assert.match(run(process.execPath, ['cube.mjs'], folder), /^1 charts?, 14 vertices\n$/);
  writeFileSync(join(folder, 'all.mjs'), `
    import { UnwrapWorker } from 'tessora/worker';
    import { unwrap } from 'tessora/gltf';
    import * as watlas from 'tessora/watlas';
    import { readObj } from 'tessora/obj';
    await watlas.Initialize();
    const mesh = readObj(new TextEncoder().encode('v 0 0 0\\nv 1 0 0\\nv 0 1 0\\nf 1 2 3\\n'));
    const atlas = await new UnwrapWorker().unwrap({ positions: mesh.positions, indices: mesh.corners, offsets: mesh.offsets });
    console.log(atlas.chartCount, typeof unwrap, typeof watlas.Atlas);`);
  assert.equal(run(process.execPath, ['all.mjs'], folder), '1 function function\n');
});

test('the declarations of types fit a program in TypeScript', (t) => {
  const folder = project(t);
  writeFileSync(join(folder, 'use.ts'), `
    import { load, hardEdges, TessoraError, type Atlas, type Mesh } from 'tessora';
    import { UnwrapWorker } from 'tessora/worker';
    import * as watlas from 'tessora/watlas';
    import { readObj, writeObj } from 'tessora/obj';
    const mesh: Mesh = { positions: new Float32Array(9), indices: [0, 1, 2] };
    const atlas: Atlas = (await load({ maxMemory: 1e8 })).unwrap(mesh, { stretch: 0.1, quality: 'fast', onProgress: (f, stage) => f < 1 && stage !== '' });
    await new UnwrapWorker().unwrap({ ...mesh, cuts: hardEdges(mesh, 60) }, { signal: AbortSignal.timeout(1000) });
    watlas.settings.width = 2048;
    const uvs: Float32Array = atlas.uvs;
    writeObj(readObj(new Uint8Array()), uvs, atlas.indices) satisfies Uint8Array;
    export const status = (error: unknown) => error instanceof TessoraError && error.status === 'does_not_fit';
    // @ts-expect-error
    await new UnwrapWorker().unwrap(mesh, { quality: 'best' });`);
  writeFileSync(join(folder, 'tsconfig.json'), JSON.stringify({
    compilerOptions: { module: 'NodeNext', target: 'ES2022', lib: ['ES2022', 'DOM'], strict: true, noEmit: true, types: [] }, include: ['use.ts'],
  }));
  const { scripts: _, ...manifest } = JSON.parse(readFileSync(join(folder, 'package.json')));
  writeFileSync(join(folder, 'package.json'), JSON.stringify({ ...manifest, type: 'module' }));
  try {
    run(process.execPath, [join(web, 'node_modules/typescript/bin/tsc'), '-p', folder], folder);
  } catch (error) {
    assert.fail(error.stdout);
  }
});

test('lock files name no place that packages come from', () => {
  const tracked = run('git', ['ls-files', '*package-lock.json', '*.npmrc'], join(web, '..')).trim().split('\n');
  assert(tracked.length >= 2);
  for (const name of tracked)
    assert(!/"resolved"|registry\.|https?:\/\/[^"]*\.tgz/.test(readFileSync(join(web, '..', name), 'utf8')), name);
});

test('the licence of every compiled-in part is named', () => {
  const text = readFileSync(join(web, 'LICENSES.md'), 'utf8');
  for (const part of ['Eigen', 'musl', 'libc++', 'Emscripten'])
    assert(text.includes(part), part);
});
