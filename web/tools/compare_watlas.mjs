// Unwraps glTF files by glTF-Transform's own unwrap, once over watlas and once over tessora/watlas, in one run; prints
// a table. Ends with 1 if a result has a validator error that its input lacked, breaks a guarantee (tessora verify), or
// has more charts than watlas'.
//
//   node web/tools/compare_watlas.mjs              Debian's assimp-testmodels, and five files made here
//   node web/tools/compare_watlas.mjs MESH.obj...  the engines alone on these meshes
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { NodeIO } from '@gltf-transform/core';
import { ALL_EXTENSIONS } from '@gltf-transform/extensions';
import { unwrap } from '@gltf-transform/functions';
import validator from 'gltf-validator';
import * as ours from 'tessora/watlas';
import { readObj } from 'tessora/obj';
import { load } from 'tessora';
import * as theirs from 'watlas';
import { assimpModels } from '../tests/assimp_models.mjs';
import { made, objOf } from '../tests/models.mjs';

const program = process.env.TESSORA ?? resolve(dirname(fileURLToPath(import.meta.url)), '../../build/release/bin/tessora');
const io = new NodeIO().registerExtensions(ALL_EXTENSIONS), scratch = mkdtempSync(join(tmpdir(), 'tessora-compare-'));
await Promise.all([ours.Initialize(), theirs.Initialize()]);
let broken = false;

const cpu = () => Object.values(process.cpuUsage()).reduce((sum, x) => sum + x) / 1e6;

/** watlas with the charts of all its atlases counted. */
function counting(module) {
  const total = { charts: 0 };
  return { total, module: { ...module, Atlas: function () {
    const atlas = new module.Atlas();
    return new Proxy(atlas, { get: (target, name) => {
      const value = Reflect.get(target, name, target);
      if (name !== 'generate')
        return typeof value === 'function' ? value.bind(target) : value;
      return (...args) => {
        target.generate(...args);
        total.charts += target.chartCount;
      };
    } });
  } } };
}

async function errors(bytes) {
  return (await validator.validateBytes(bytes)).issues.messages.filter(({ severity }) => severity === 0).map(({ code }) => code);
}

async function run(module, bytes) {
  const counted = counting(module), document = await io.readBinary(bytes), begin = cpu();
  await document.transform(unwrap({ watlas: counted.module, overwrite: true }));
  return { document, charts: counted.total.charts, seconds: cpu() - begin };
}

function verify(document) {
  for (const mesh of document.getRoot().listMeshes()) {
    const primitives = mesh.listPrimitives().filter((primitive) => primitive.getMode() === 4), file = join(scratch, 'mesh.obj');
    if (primitives.length === 0)
      continue;
    writeFileSync(file, objOf(primitives));
    try {
      execFileSync(program, ['verify', file, '--width', '1024', '--height', '1024', '--padding', '2'], { stdio: 'pipe' });
    } catch (error) {
      console.log(String(error.stdout ?? error));
      return 'broken';
    }
  }
  return 'kept';
}

async function compareFile(name, bytes) {
  const a = await run(ours, bytes), before = await errors(bytes);
  // It refuses primitives whose indices are no triangles.
  const b = await run(theirs, bytes).catch((error) => ({ refused: error.message, charts: NaN, seconds: NaN }));
  const added = (await errors(await io.writeBinary(a.document))).filter((code) => !before.includes(code));
  const guarantees = verify(a.document);
  broken ||= added.length > 0 || guarantees !== 'kept' || a.charts > b.charts;
  console.log(`| ${name} | ${a.charts} | ${b.refused ?? b.charts} | ${a.seconds.toFixed(2)} | ${b.refused ? '' : b.seconds.toFixed(2)} | ${added.join(' ') || 'none'} | ${guarantees} |`);
  return b.refused ? [0, 0, 0, 0] : [a.charts, b.charts, a.seconds, b.seconds];
}

async function compareFiles() {
  console.log('| file | charts | watlas | CPU s | watlas | new errors | guarantees |\n|---|---|---|---|---|---|---|');
  const files = [...await assimpModels(io)];
  for (const [name, make] of Object.entries(made))
    files.push({ name: `${name} (made here)`, bytes: await io.writeBinary(make()) });
  const sums = [0, 0, 0, 0];
  for (const { name, bytes } of files)
    (await compareFile(name, bytes)).forEach((x, i) => sums[i] += x);
  console.log(`| all that both accept | ${sums[0]} | ${sums[1]} | ${sums[2].toFixed(2)} | ${sums[3].toFixed(2)} | | |`);
  broken ||= sums[0] >= sums[1];
}

async function compareMesh(file) {
  const { positions, offsets, corners } = readObj(readFileSync(file)), tessora = await load();
  const mesh = { positions, offsets, indices: corners, weld: false };
  tessora.unwrap(mesh); // compiles the functions; later runs are those of a page that stays open
  let begin = cpu();
  const mine = tessora.unwrap(mesh), seconds = cpu() - begin;
  // Its result depends on the unit of length, so the mesh gets a diagonal of 100; faces that occur twice end it.
  const atlas = new theirs.Atlas(), seen = new Set(), triangles = tessora.triangulate(mesh), indices = [];
  for (let t = 0; t < triangles.length; t += 3) {
    const triangle = [...triangles.subarray(t, t + 3)].map((corner) => corners[corner]), key = [...triangle].sort((a, b) => a - b).join();
    if (!seen.has(key))
      indices.push(...triangle);
    seen.add(key);
  }
  const low = [0, 1, 2].map((k) => positions.reduce((least, x, i) => i % 3 === k ? Math.min(least, x) : least, Infinity));
  const high = [0, 1, 2].map((k) => positions.reduce((most, x, i) => i % 3 === k ? Math.max(most, x) : most, -Infinity));
  const scale = 100 / Math.hypot(...high.map((x, k) => x - low[k]));
  begin = cpu();
  atlas.addMesh({ vertexPositionData: Float32Array.from(positions, (x) => x * scale), vertexCount: positions.length / 3, vertexPositionStride: 12,
    indexData: Uint32Array.from(indices), indexCount: indices.length });
  atlas.generate({}, { resolution: 512, padding: 1, bruteForce: true });
  const other = cpu() - begin;
  console.log(`| ${basename(file)} | ${mine.chartCount} | ${atlas.chartCount} | ${seconds.toFixed(2)} | ${other.toFixed(2)} | ${(other / seconds).toFixed(1)} |`);
}

try {
  const meshes = process.argv.slice(2);
  if (meshes.length === 0)
    await compareFiles();
  else
    console.log('| mesh | charts | watlas | CPU s | watlas | times faster |\n|---|---|---|---|---|---|');
  for (const file of meshes)
    await compareMesh(file);
} finally {
  rmSync(scratch, { recursive: true });
}
process.exitCode = broken ? 1 : 0;
