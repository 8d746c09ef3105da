// Runs the WebAssembly build of xatlas (npm package watlas) on an OBJ file, as a black box.
//
//   node bench/watlas_run.mjs FOLDER MESH.obj OUTPUT.obj
//
// FOLDER is where the package was installed. Settings are chosen to come closest to a gutter of 2 texels in 512 x 512: padding 1,
// bruteForce packing; the mesh is scaled to a diagonal of 100, because the result depends on the unit of length. Writes the
// mesh's triangles with their coordinates and prints JSON: CPU seconds of the unwrap alone, charts, size of the atlas.
import {readFileSync, writeFileSync} from 'node:fs';
import {join, resolve} from 'node:path';
import {pathToFileURL} from 'node:url';

const [folder, input, output] = process.argv.slice(2);
const watlas = await import(pathToFileURL(join(resolve(folder), 'node_modules', 'watlas', 'dist', 'watlas.js')));
await watlas.Initialize();

const positions = [], indices = [], seen = new Set();
for (const line of readFileSync(input, 'latin1').split('\n')) {
  const words = line.trim().split(/\s+/);
  if (words[0] === 'v')
    positions.push(+words[1], +words[2], +words[3]);
  if (words[0] !== 'f')
    continue;
  const corners = words.slice(1).map((word) => {
    const index = parseInt(word, 10);
    return index < 0 ? positions.length / 3 + index : index - 1;
  });
  for (let i = 2; i < corners.length; ++i) {
    const triangle = [corners[0], corners[i - 1], corners[i]];
    const key = [...triangle].sort((a, b) => a - b).join(' ');
    if (seen.has(key))
      continue; // duplicate faces end the tool
    seen.add(key);
    indices.push(...triangle);
  }
}

const low = [Infinity, Infinity, Infinity], high = [-Infinity, -Infinity, -Infinity];
positions.forEach((x, i) => {
  low[i % 3] = Math.min(low[i % 3], x);
  high[i % 3] = Math.max(high[i % 3], x);
});
const scale = 100 / Math.hypot(high[0] - low[0], high[1] - low[1], high[2] - low[2]);

const atlas = new watlas.Atlas();
const begin = process.cpuUsage();
atlas.addMesh({
  vertexPositionData: Float32Array.from(positions, (x) => x * scale),
  vertexCount: positions.length / 3,
  vertexPositionStride: 12,
  indexData: Uint32Array.from(indices),
  indexCount: indices.length,
});
atlas.generate({}, {resolution: 512, padding: 1, bruteForce: true});
const used = process.cpuUsage(begin);

const mesh = atlas.getMesh(0), corners = new Uint32Array(mesh.indexCount);
mesh.getIndexArray(corners);
const text = [];
for (let v = 0; v < positions.length; v += 3)
  text.push(`v ${positions[v]} ${positions[v + 1]} ${positions[v + 2]}`);
const sources = [];
for (let i = 0; i < mesh.vertexCount; ++i) {
  const vertex = mesh.getVertex(i);
  sources.push(vertex.xref);
  text.push(`vt ${vertex.uv[0] / atlas.width} ${vertex.uv[1] / atlas.height}`);
}
for (let i = 0; i < corners.length; i += 3)
  text.push('f ' + [0, 1, 2].map((k) => `${sources[corners[i + k]] + 1}/${corners[i + k] + 1}`).join(' '));
writeFileSync(output, text.join('\n') + '\n');
console.log(JSON.stringify({seconds: (used.user + used.system) / 1e6, charts: atlas.chartCount,
                            width: atlas.width, height: atlas.height}));
atlas.delete();
