// Documents that the tests make themselves, and helpers to look at results.
import { Document } from '@gltf-transform/core';

/** A grid of (columns + 1) x (rows + 1) vertices over the unit square, bent by `place(s, t)`. */
export function grid(columns, rows, place) {
  const positions = new Float32Array(3 * (columns + 1) * (rows + 1)), indices = [];
  for (let j = 0, v = 0; j <= rows; ++j)
    for (let i = 0; i <= columns; ++i, ++v)
      positions.set(place(i / columns, j / rows), 3 * v);
  for (let j = 0; j < rows; ++j)
    for (let i = 0; i < columns; ++i) {
      const a = j * (columns + 1) + i, b = a + 1, c = a + columns + 1;
      indices.push(a, b, c + 1, a, c + 1, c);
    }
  return { positions, indices: Uint32Array.from(indices) };
}

export const tube = (s, t) => [Math.cos(2 * Math.PI * s), 6 * t, -Math.sin(2 * Math.PI * s)];
export const ball = (s, t) => [Math.sin(Math.PI * t) * Math.cos(2 * Math.PI * s), -Math.cos(Math.PI * t), -Math.sin(Math.PI * t) * Math.sin(2 * Math.PI * s)];
export const knot = (s, t) => {
  const a = 2 * Math.PI * s, b = 2 * Math.PI * t, r = 2 + Math.cos(3 * a) + 0.45 * Math.cos(b);
  return [r * Math.cos(2 * a), Math.sin(3 * a) + 0.45 * Math.sin(b), r * Math.sin(2 * a)];
};

/** A box of six separate sides, as exporters with flat normals write it. */
export function box(size = [1, 1, 1]) {
  const positions = [], normals = [], indices = [];
  for (let axis = 0; axis < 3; ++axis)
    for (const side of [-1, 1]) {
      const first = positions.length / 3, [u, v] = [(axis + 1) % 3, (axis + 2) % 3];
      for (const [a, b] of [[-1, -1], [1, -1], [1, 1], [-1, 1]]) {
        const point = [0, 0, 0], normal = [0, 0, 0];
        point[axis] = side * size[axis] / 2;
        point[u] = side * a * size[u] / 2;
        point[v] = b * size[v] / 2;
        normal[axis] = side;
        positions.push(...point);
        normals.push(...normal);
      }
      indices.push(first, first + 1, first + 2, first, first + 2, first + 3);
    }
  return { positions: Float32Array.from(positions), normals: Float32Array.from(normals), indices: Uint16Array.from(indices) };
}

function begin() {
  const document = new Document(), buffer = document.createBuffer();
  const accessor = (type, array) => document.createAccessor().setType(type).setArray(array).setBuffer(buffer);
  const scene = document.createScene();
  document.getRoot().setDefaultScene(scene);
  return { document, scene, accessor };
}

function primitiveOf(document, accessor, { positions, indices, normals }) {
  const primitive = document.createPrimitive().setAttribute('POSITION', accessor('VEC3', positions))
    .setIndices(accessor('SCALAR', indices)).setMaterial(document.createMaterial());
  if (normals)
    primitive.setAttribute('NORMAL', accessor('VEC3', normals));
  return primitive;
}

/** A tube that two joints bend, with weights per vertex. */
export function skinned() {
  const { document, scene, accessor } = begin(), shape = grid(24, 20, tube), count = shape.positions.length / 3;
  const joints = new Uint8Array(4 * count), weights = new Float32Array(4 * count);
  for (let v = 0; v < count; ++v) {
    const upper = shape.positions[3 * v + 1] / 6;
    joints.set([0, 1, 0, 0], 4 * v);
    weights.set([1 - upper, upper, 0, 0], 4 * v);
  }
  const primitive = primitiveOf(document, accessor, shape).setAttribute('JOINTS_0', accessor('VEC4', joints))
    .setAttribute('WEIGHTS_0', accessor('VEC4', weights));
  const lower = document.createNode('lower'), upper = document.createNode('upper').setTranslation([0, 3, 0]);
  lower.addChild(upper);
  const matrices = new Float32Array(32);
  for (let i = 0; i < 32; i += 5)
    matrices[i === 15 ? 15 : i] = 1;
  matrices.fill(0);
  [0, 5, 10, 15, 16, 21, 26, 31].forEach((i) => matrices[i] = 1);
  matrices[29] = -3;
  const skin = document.createSkin().addJoint(lower).addJoint(upper).setSkeleton(lower).setInverseBindMatrices(accessor('MAT4', matrices));
  scene.addChild(lower).addChild(document.createNode('tube').setMesh(document.createMesh().addPrimitive(primitive)).setSkin(skin));
  return document;
}

/** A ball with two morph targets. */
export function morphed() {
  const { document, scene, accessor } = begin(), shape = grid(32, 16, ball);
  const primitive = primitiveOf(document, accessor, shape);
  for (const axis of [0, 1])
    primitive.addTarget(document.createPrimitiveTarget().setAttribute('POSITION',
      accessor('VEC3', shape.positions.map((x, i) => i % 3 === axis ? 0.5 * x : 0))));
  scene.addChild(document.createNode('ball').setMesh(document.createMesh().addPrimitive(primitive).setWeights([0, 0.5])));
  return document;
}

/** One box at five places and sizes. */
export function instanced() {
  const { document, scene, accessor } = begin();
  const mesh = document.createMesh('box').addPrimitive(primitiveOf(document, accessor, box([1, 2, 3])));
  for (let i = 0; i < 5; ++i)
    scene.addChild(document.createNode(`box ${i}`).setMesh(mesh).setTranslation([4 * i, 0, 0]).setScale([1 + i, 1 + i, 1 + i]));
  return document;
}

/** Two primitives over the same vertices: the halves of a ball. */
export function shared() {
  const { document, scene, accessor } = begin(), shape = grid(40, 20, ball), half = shape.indices.length / 2;
  const positions = accessor('VEC3', shape.positions), normals = accessor('VEC3', shape.positions.map((x) => x));
  const mesh = document.createMesh('halves');
  for (const indices of [shape.indices.slice(0, half), shape.indices.slice(half)])
    mesh.addPrimitive(document.createPrimitive().setAttribute('POSITION', positions).setAttribute('NORMAL', normals)
      .setIndices(accessor('SCALAR', indices)).setMaterial(document.createMaterial()));
  scene.addChild(document.createNode().setMesh(mesh));
  return document;
}

/** A knotted tube of 70,000 vertices. */
export function large() {
  const { document, scene, accessor } = begin();
  scene.addChild(document.createNode().setMesh(document.createMesh().addPrimitive(
    primitiveOf(document, accessor, grid(699, 99, knot)))));
  return document;
}

export const made = { skinned, morphed, instanced, shared, large };

/** The triangles of some primitives with their coordinates as an OBJ file; images in glTF begin at the top. */
export function objOf(primitives, texcoord = 0) {
  const lines = [];
  let base = 1;
  for (const primitive of primitives) {
    const positions = primitive.getAttribute('POSITION'), uvs = primitive.getAttribute(`TEXCOORD_${texcoord}`), element = [];
    for (let v = 0; v < positions.getCount(); ++v) {
      lines.push(`v ${positions.getElement(v, element).slice(0, 3).join(' ')}`);
      const [s, t] = uvs.getElement(v, element);
      lines.push(`vt ${s} ${1 - t}`);
    }
    const indices = primitive.getIndices().getArray();
    for (let c = 0; c < indices.length; c += 3)
      lines.push('f ' + [0, 1, 2].map((k) => indices[c + k] + base).map((v) => `${v}/${v}`).join(' '));
    base += positions.getCount();
  }
  return lines.join('\n') + '\n';
}
