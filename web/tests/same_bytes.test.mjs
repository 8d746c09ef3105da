// The engine in Node and in Chromium gives the bits that the native program writes.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { promisify } from 'node:util';
import { scratch, tessora, web } from './helpers.mjs';
import { ball, box, grid, knot } from './models.mjs';

/** Quads of a grid, some of them split, one vertex repeated, an n-gon: what files hold. */
function polygons() {
  const { positions } = grid(12, 8, ball), lines = [], at = (i, j) => 13 * j + i + 1;
  for (let v = 0; v < positions.length; v += 3)
    lines.push(`v ${positions[v] * 1000} ${positions[v + 1] * 1000} ${positions[v + 2] * 1000 + 1}`);
  for (let j = 0; j < 8; ++j)
    for (let i = 0; i < 12; ++i)
      if ((i + j) % 5 === 0)
        lines.push(`f ${at(i, j)} ${at(i + 1, j)} ${at(i + 1, j + 1)}`, `f ${at(i, j)} ${at(i + 1, j + 1)} ${at(i, j + 1)}`);
      else
        lines.push(`f ${at(i, j)} ${at(i + 1, j)} ${at(i + 1, j + 1)} ${at(i, j + 1)}`);
  lines.push('v 5000 0 0\nv 5002 0 0\nv 5002 1 0\nv 5001 0.5 0\nv 5000 1 0\nf -5 -4 -3 -2 -1\nf -5 -4 -5 -3');
  return lines.join('\n');
}

function triangles({ positions, indices }) {
  const lines = [];
  for (let v = 0; v < positions.length; v += 3)
    lines.push(`v ${positions[v]} ${positions[v + 1]} ${positions[v + 2]}`);
  for (let c = 0; c < indices.length; c += 3)
    lines.push(`f ${indices[c] + 1} ${indices[c + 1] + 1} ${indices[c + 2] + 1}`);
  return lines.join('\n');
}

/** The coordinates that the native program wrote, per polygon corner in file order. */
function hashOfFile(file) {
  const uvs = [], corners = [];
  for (const line of readFileSync(file, 'latin1').split('\n')) {
    const [keyword, ...words] = line.trim().split(/\s+/);
    if (keyword === 'vt')
      uvs.push(words.map(Number));
    else if (keyword === 'f')
      words.forEach((word) => corners.push(...uvs[word.split('/')[1] - 1]));
  }
  return createHash('sha256').update(Float32Array.from(corners)).digest('hex');
}

for (const mode of ['fast', 'quality'])
  test(`Node and Chromium give the native program's bits, ${mode}`, async (t) => {
    const folder = scratch(t), files = [], expected = [];
    for (const [name, text] of Object.entries({ polygons: polygons(), box: triangles(box()), knot: triangles(grid(120, 24, knot)) })) {
      const file = join(folder, `${name}.obj`), output = join(folder, `${name}_uv.obj`);
      writeFileSync(file, text);
      files.push(file);
      await tessora('unwrap', file, '-o', output, '--quiet', ...mode === 'quality' ? ['--high_quality'] : []);
      expected.push(hashOfFile(output));
    }
    for (const where of [[], ['--chromium']]) {
      const { stdout } = await promisify(execFile)(process.execPath, [join(web, 'tools/hash_uvs.mjs'), ...where,
        ...mode === 'quality' ? ['--quality'] : [], ...files]);
      assert.deepEqual(stdout.trim().split('\n').map((line) => line.split(' ')[0]), expected, where[0] ?? 'Node');
    }
  });
