import assert from 'node:assert/strict';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { Document, NodeIO } from '@gltf-transform/core';
import validator from 'gltf-validator';
import { load } from 'tessora';
import { collect, unwrap } from 'tessora/gltf';
import { UnwrapWorker } from 'tessora/worker';
import { scratch, tessora as program } from './helpers.mjs';
import { ball, box, grid, instanced, made, morphed, objOf, shared, skinned } from './models.mjs';

const tessora = await load(), io = new NodeIO();

const primitivesOf = (document) => document.getRoot().listMeshes().flatMap((mesh) => mesh.listPrimitives());

async function errorsIn(document) {
  const { issues } = await validator.validateBytes(await io.writeBinary(document));
  return issues.messages.filter(({ severity }) => severity === 0);
}

async function verify(t, primitives, size, texcoord = 0) {
  const file = join(scratch(t), 'result.obj');
  writeFileSync(file, objOf(primitives, texcoord));
  await program('verify', file, '--width', size, '--height', size, '--padding', '2');
}

/** A primitive of triangles over a shape. */
function documentOf({ positions, indices }, mode = 4) {
  const document = new Document(), buffer = document.createBuffer();
  const accessor = (type, array) => document.createAccessor().setType(type).setArray(array).setBuffer(buffer);
  const primitive = document.createPrimitive().setMode(mode).setAttribute('POSITION', accessor('VEC3', positions));
  if (indices)
    primitive.setIndices(accessor('SCALAR', indices));
  document.createScene().addChild(document.createNode().setMesh(document.createMesh().addPrimitive(primitive)));
  return { document, primitive, accessor };
}

for (const [name, make] of Object.entries(made))
  test(`${name}: the result is valid and keeps every guarantee`, async (t) => {
    const document = make();
    await document.transform(unwrap({ tessora, width: 1024, height: 1024 }));
    assert.deepEqual(await errorsIn(document), []);
    await verify(t, primitivesOf(document), '1024');
  });

test('joints and weights follow their vertices', async () => {
  const document = skinned();
  await document.transform(unwrap({ tessora }));
  const [primitive] = primitivesOf(document), element = [];
  for (let v = 0; v < primitive.getAttribute('POSITION').getCount(); ++v) {
    const upper = primitive.getAttribute('POSITION').getElement(v, element)[1] / 6;
    assert(Math.abs(primitive.getAttribute('WEIGHTS_0').getElement(v, element)[1] - upper) < 1e-6);
  }
  assert.equal(primitive.getAttribute('JOINTS_0').getArray().constructor, Uint8Array);
});

test('morph targets follow their vertices', async () => {
  const document = morphed();
  await document.transform(unwrap({ tessora }));
  const [primitive] = primitivesOf(document), [target] = primitive.listTargets(), a = [], b = [];
  for (let v = 0; v < primitive.getAttribute('POSITION').getCount(); ++v)
    assert.equal(target.getAttribute('POSITION').getElement(v, a)[0], 0.5 * primitive.getAttribute('POSITION').getElement(v, b)[0]);
});

test('a mesh of several nodes stays shared', async () => {
  const document = instanced();
  await document.transform(unwrap({ tessora }));
  assert.equal(document.getRoot().listMeshes().length, 1);
  assert.equal(new Set(document.getRoot().listNodes().map((node) => node.getMesh())).size, 1);
});

test('primitives over shared vertices are unwrapped as one surface and get vertices of their own', async () => {
  const document = shared();
  assert.equal(collect(document).length, 1);
  await document.transform(unwrap({ tessora }));
  const [a, b] = primitivesOf(document);
  assert.notEqual(a.getAttribute('POSITION'), b.getAttribute('POSITION'));
  // Nothing that is no longer used stays in the file.
  assert(document.getRoot().listAccessors().every((accessor) => accessor.listParents().length > 1));
});

test('meshes are scaled as in the scene if they share a texture', () => {
  const document = instanced();
  document.createMesh();
  const node = document.getRoot().listNodes()[0].setScale([3, 3, 3]);
  const scaled = collect(document, { groupBy: 'scene' })[0].mesh.positions, plain = collect(document)[0].mesh.positions;
  assert.equal(scaled[1], 3 * plain[1]);
  assert.equal(node.getScale()[0], 3);
});

test('meshes that touch are not joined', () => {
  const document = new Document(), buffer = document.createBuffer();
  for (let i = 0; i < 2; ++i)
    document.createMesh().addPrimitive(document.createPrimitive().setAttribute('POSITION',
      document.createAccessor().setType('VEC3').setBuffer(buffer).setArray(Float32Array.from([0, 0, 0, 1, 0, 0, 0, 1, 0]))));
  assert.deepEqual([...collect(document, { groupBy: 'scene' })[0].mesh.indices], [0, 1, 2, 3, 4, 5]);
  assert.equal(collect(document).length, 2);
});

test('strips and fans become triangles of the same winding', async () => {
  const positions = Float32Array.from([0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0]);
  const strip = documentOf({ positions, indices: Uint16Array.from([0, 1, 2, 3]) }, 5);
  const fan = documentOf({ positions, indices: Uint16Array.from([0, 1, 3, 2]) }, 6);
  for (const { document, primitive } of [strip, fan]) {
    await document.transform(unwrap({ tessora }));
    assert.equal(primitive.getMode(), 4);
    const indices = primitive.getIndices().getArray(), points = [...indices].map((v) => primitive.getAttribute('POSITION').getElement(v, []));
    for (let i = 0; i < 6; i += 3) {
      const [a, b, c] = points.slice(i, i + 3);
      assert((b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]) > 0);
    }
  }
});

test('primitives without indices, points and lines are understood', async () => {
  const { document, primitive, accessor } = documentOf({ positions: Float32Array.from([0, 0, 0, 1, 0, 0, 0, 1, 0]) });
  const points = document.createPrimitive().setMode(0).setAttribute('POSITION', accessor('VEC3', new Float32Array(6)));
  document.getRoot().listMeshes()[0].addPrimitive(points);
  await document.transform(unwrap({ tessora }));
  assert.equal(primitive.getAttribute('TEXCOORD_0').getCount(), 3);
  assert.equal(points.getAttribute('TEXCOORD_0'), null);
});

test('images begin at the top: no chart is mirrored', async () => {
  const { document, primitive } = documentOf({ positions: Float32Array.from([0, 0, 0, 2, 0, 0, 0, 1, 0]) });
  await document.transform(unwrap({ tessora }));
  const [a, b, c] = [0, 1, 2].map((v) => primitive.getAttribute('TEXCOORD_0').getElement(primitive.getIndices().getArray()[v], []));
  assert((b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]) < 0);
});

test('a second set of coordinates leaves the first alone', async (t) => {
  const document = instanced();
  await document.transform(unwrap({ tessora }), unwrap({ tessora, texcoord: 1, width: 256, height: 256 }));
  assert.deepEqual(await errorsIn(document), []);
  await verify(t, primitivesOf(document), '256', 1);
});

test('a set of coordinates needs those before it', async () => {
  const document = instanced();
  await assert.rejects(document.transform(unwrap({ tessora, texcoord: 1 })), /TEXCOORD_1 needs TEXCOORD_0/);
});

test('existing coordinates can be kept', async () => {
  const document = instanced();
  await document.transform(unwrap({ tessora }));
  const before = primitivesOf(document)[0].getAttribute('TEXCOORD_0');
  await document.transform(unwrap({ tessora, keepExisting: true }));
  assert.equal(primitivesOf(document)[0].getAttribute('TEXCOORD_0'), before);
});

test('tangents of replaced coordinates go', async () => {
  const { document, primitive, accessor } = documentOf(grid(4, 4, ball)), count = primitive.getAttribute('POSITION').getCount();
  primitive.setAttribute('TANGENT', accessor('VEC4', new Float32Array(4 * count))).setAttribute('TEXCOORD_0', accessor('VEC2', new Float32Array(2 * count)));
  await document.transform(unwrap({ tessora }));
  assert.equal(primitive.getAttribute('TANGENT'), null);
});

test('a failure leaves the document as it was', async () => {
  const document = instanced(), before = await io.writeBinary(document);
  await assert.rejects(document.transform(unwrap({ tessora, width: 8, height: 8, gutter: 8 })), { status: 'does_not_fit' });
  assert.deepEqual(await io.writeBinary(document), before);
});

test('the transform can run in a worker', async (t) => {
  const worker = new UnwrapWorker(), document = instanced();
  t.after(() => worker.close());
  await document.transform(unwrap({ run: (mesh, options) => worker.unwrap(mesh, options) }));
  assert.equal(primitivesOf(document)[0].getAttribute('TEXCOORD_0').getCount(), primitivesOf(document)[0].getAttribute('POSITION').getCount());
});

test('an engine is needed', () => assert.throws(() => unwrap({}), TypeError));

test('a box of split sides is one chart', async () => {
  const { positions, indices } = box(), { document } = documentOf({ positions, indices });
  let charts = 0;
  await document.transform(unwrap({ run: (mesh, options) => {
    const atlas = tessora.unwrap(mesh, options);
    charts = atlas.chartCount;
    return atlas;
  } }));
  assert.equal(charts, 1);
});
