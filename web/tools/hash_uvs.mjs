// Prints the SHA-256 of the texture coordinates that the WebAssembly engine gives an OBJ file: float32, little-endian,
// per polygon corner in file order.
//
//   node web/tools/hash_uvs.mjs FILE.obj [fast|quality] [--write OUTPUT.obj] [--time]
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { load } from 'tessora';
import { readObj, writeObj } from 'tessora/obj';

const [file, quality = 'fast', ...more] = process.argv.slice(2);
const mesh = readObj(readFileSync(file)), tessora = await load();
const before = process.cpuUsage();
const atlas = tessora.unwrap({ positions: mesh.positions, indices: mesh.corners, offsets: mesh.offsets, weld: false }, { quality });
const used = process.cpuUsage(before);
const perCorner = new Float32Array(2 * atlas.indices.length);
atlas.indices.forEach((vertex, corner) => perCorner.set(atlas.uvs.subarray(2 * vertex, 2 * vertex + 2), 2 * corner));
console.log(createHash('sha256').update(perCorner).digest('hex'));
if (more.includes('--time'))
  console.error(`${(used.user + used.system) / 1e6} s, ${atlas.chartCount} charts`);
if (more.includes('--write'))
  writeFileSync(more[more.indexOf('--write') + 1], writeObj(mesh, atlas.uvs, atlas.indices));
