import assert from 'node:assert/strict';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { NodeIO } from '@gltf-transform/core';
import { ALL_EXTENSIONS } from '@gltf-transform/extensions';
import { unwrap } from '@gltf-transform/functions';
import validator from 'gltf-validator';
import * as watlas from 'tessora/watlas';
import { assimpModels } from './assimp_models.mjs';
import { scratch, tessora } from './helpers.mjs';
import { box, made, objOf } from './models.mjs';

const io = new NodeIO().registerExtensions(ALL_EXTENSIONS);
await watlas.Initialize();

const errors = async (bytes) => (await validator.validateBytes(bytes)).issues.messages.filter(({ severity }) => severity === 0).map(({ code }) => code);

/** Unwraps a document and checks what came out. */
async function check(t, bytes) {
  const document = await io.readBinary(bytes), before = await errors(bytes);
  await document.transform(unwrap({ watlas, overwrite: true }));
  for (const code of await errors(await io.writeBinary(document)))
    assert(before.includes(code), code);
  const folder = scratch(t);
  for (const [i, mesh] of document.getRoot().listMeshes().entries()) {
    const primitives = mesh.listPrimitives().filter((primitive) => primitive.getMode() === 4);
    if (primitives.length === 0)
      continue;
    const file = join(folder, `${i}.obj`);
    writeFileSync(file, objOf(primitives));
    await tessora('verify', file, '--width', '1024', '--height', '1024', '--padding', '2');
  }
}

for (const [name, make] of Object.entries(made))
  test(`glTF-Transform's unwrap over ${name}`, async (t) => check(t, await io.writeBinary(make())));

for (const { name, bytes } of await assimpModels(io))
  test(`glTF-Transform's unwrap over ${name}`, (t) => check(t, bytes));

test('texture and gutter are settings', (t) => {
  const before = { ...watlas.settings }, atlas = new watlas.Atlas(), { positions, indices } = box();
  t.after(() => Object.assign(watlas.settings, before));
  Object.assign(watlas.settings, { width: 256, height: 128, gutter: 4 });
  atlas.addMesh({ vertexCount: 24, vertexPositionData: positions, vertexPositionStride: 12, indexData: indices, indexCount: 36 });
  atlas.generate();
  assert.equal(atlas.width, 256);
  assert.equal(atlas.height, 128);
  atlas.generate({}, { resolution: 64, padding: 1 });
  assert.equal(atlas.width, 64);
});

test('the calls of the interface answer', () => {
  const atlas = new watlas.Atlas(), { positions, indices } = box(), wide = new Float32Array(24 * 5);
  for (let v = 0; v < 24; ++v)
    wide.set(positions.subarray(3 * v, 3 * v + 3), 5 * v);
  atlas.addMesh({ vertexCount: 24, vertexPositionData: wide, vertexPositionStride: 20, indexData: indices, indexCount: 36 });
  atlas.addMesh({ vertexCount: 3, vertexPositionData: Float32Array.from([0, 0, 0, 1, 0, 0, 0, 1, 0]) });
  atlas.generate();
  assert.equal(atlas.meshCount, 2);
  assert.equal(atlas.atlasCount, 1);
  const mesh = atlas.getMesh(0), got = new Uint32Array(36);
  assert.equal(mesh.chartCount + atlas.getMesh(1).chartCount, atlas.chartCount);
  assert.equal(mesh.indexCount, 36);
  assert.equal(mesh.getIndexArray(new Uint32Array(35)), false);
  assert.equal(mesh.getIndexArray(got), true);
  got.forEach((vertex, corner) => {
    const { xref, uv, atlasIndex, chartIndex } = mesh.getVertex(vertex);
    assert.equal(xref, indices[corner]);
    assert(uv[0] >= 0 && uv[0] <= 1024 && uv[1] >= 0 && uv[1] <= 1024);
    assert.equal(atlasIndex, 0);
    assert(chartIndex >= 0 && chartIndex < atlas.chartCount);
  });
  assert.equal(atlas.getMesh(1).vertexCount, 3);
  assert.throws(() => mesh.getVertex(mesh.vertexCount), RangeError);
  assert.throws(() => atlas.getMesh(2), RangeError);
  atlas.delete();
  assert.equal(atlas.meshCount, 0);
});

test('corners beyond the last triangle keep their vertices', () => {
  const atlas = new watlas.Atlas();
  atlas.addMesh({ vertexCount: 4, vertexPositionData: Float32Array.from([0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 5, 5]) });
  atlas.generate();
  const mesh = atlas.getMesh(0), indices = new Uint32Array(4);
  mesh.getIndexArray(indices);
  assert.deepEqual([...indices].map((vertex) => mesh.getVertex(vertex).xref), [0, 1, 2, 3]);
  assert.equal(mesh.getVertex(indices[3]).chartIndex, -1);
});

test('wrong declarations are refused', () => {
  const atlas = new watlas.Atlas(), vertexPositionData = new Float32Array(9);
  assert.throws(() => atlas.addMesh({ vertexCount: 4, vertexPositionData }), { status: 'invalid_argument' });
  assert.throws(() => atlas.addMesh({ vertexCount: 3, vertexPositionData, indexData: Uint32Array.from([0, 1, 3]) }),
    { status: 'index_out_of_range', element: 2 });
});
