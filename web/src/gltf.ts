/**
 * A transform for glTF-Transform: `await document.transform(unwrap({ tessora, stretch: 0.1 }))`.
 *
 * Every vertex attribute, skin and morph target follows its vertex; meshes that several nodes use are unwrapped once
 * and stay shared. Points and lines are left alone; strips and fans become triangles.
 */
import type { Accessor, Document, Mesh as GltfMesh, Node, Primitive } from '@gltf-transform/core';
import type { Tessora } from './index.js';
import type { Atlas, Mesh, Options } from './types.js';
import { splitByOriginal, weldRange } from './weld.js';

export interface GltfOptions extends Options {
  /** The engine, from `load()`. Needed unless `run` is given. */
  tessora?: Tessora;
  /** Unwraps one group in place of the engine, in a worker for example: `run: (mesh, o) => worker.unwrap(mesh, o)`. */
  run?: (mesh: Mesh, options: Options) => Atlas | Promise<Atlas>;
  /** The coordinates to write: 0 for TEXCOORD_0. Default 0. */
  texcoord?: number;
  /** What shares one texture: each primitive, the primitives of each mesh, or the whole file. Default `mesh`. */
  groupBy?: 'primitive' | 'mesh' | 'scene';
  /** Leaves primitives alone that have the coordinates already. Default false. */
  keepExisting?: boolean;
}

/** A primitive's place in a group. */
export interface Part {
  primitive: Primitive;
  /** Its vertices and faces are the group's from here on. */
  firstVertex: number;
  firstFace: number;
  vertexCount: number;
  faceCount: number;
  /** What its positions were multiplied by. */
  scale: number;
}

/** Primitives that share one texture, as one mesh of triangles. */
export interface Group {
  /** To be unwrapped. Vertices at equal positions are joined within each mesh of the file, never between two. */
  mesh: { positions: Float32Array; indices: Uint32Array; weld: false };
  /** Vertex of each corner before joining. */
  originals: Uint32Array;
  parts: Part[];
}

// Modes of primitives; those below draw points and lines.
const TRIANGLES = 4, STRIP = 5, FAN = 6;

/** Three vertices per triangle of a primitive, whatever its mode. Incomplete triangles at the end are left out. */
export function trianglesOf(primitive: Primitive): Uint32Array {
  const mode = primitive.getMode(), array = primitive.getIndices()?.getArray();
  const count = array ? array.length : primitive.getAttribute('POSITION')!.getCount();
  const at = (i: number) => array ? array[i]! : i;
  if (mode !== STRIP && mode !== FAN)
    return Uint32Array.from({ length: count - count % 3 }, (_, i) => at(i));
  const triangles = new Uint32Array(3 * Math.max(0, count - 2));
  for (let t = 0; t + 2 < count; ++t)
    // Every second triangle of a strip is wound the other way.
    triangles.set(mode === FAN ? [at(t + 1), at(t + 2), at(0)] : t % 2 ? [at(t + 1), at(t), at(t + 2)] : [at(t), at(t + 1), at(t + 2)], 3 * t);
  return triangles;
}

/** Mean scale of the first node that uses the mesh, so that meshes in one texture get texels of one size. */
function scaleInScene(mesh: GltfMesh): number {
  const node = mesh.listParents().find((parent): parent is Node => parent.propertyType === 'Node');
  if (!node)
    return 1;
  const m = node.getWorldMatrix();
  const determinant = m[0] * (m[5] * m[10] - m[6] * m[9]) - m[4] * (m[1] * m[10] - m[2] * m[9]) +
    m[8] * (m[1] * m[6] - m[2] * m[5]);
  return Math.cbrt(Math.abs(determinant)) || 1;
}

interface Member {
  primitive: Primitive;
  mesh: GltfMesh;
  scale: number;
}

function makeGroup(members: Member[]): Group {
  const parts: Part[] = [], positions: Float32Array[] = [], corners: Uint32Array[] = [];
  const meshBegins: number[] = []; // first vertex of each mesh
  let firstVertex = 0, firstFace = 0, lastMesh: GltfMesh | undefined;
  for (const { primitive, mesh, scale } of members) {
    if (mesh !== lastMesh)
      meshBegins.push(firstVertex);
    lastMesh = mesh;
    const accessor = primitive.getAttribute('POSITION')!;
    const vertexCount = accessor.getCount(), triangles = trianglesOf(primitive);
    const bad = triangles.findIndex((vertex) => vertex >= vertexCount);
    if (bad >= 0)
      throw new RangeError(`primitive uses vertex ${triangles[bad]}, but it has ${vertexCount}`);
    const own = new Float32Array(3 * vertexCount), element: number[] = [];
    for (let v = 0; v < vertexCount; ++v)
      own.set(accessor.getElement(v, element).slice(0, 3).map((x) => x * scale), 3 * v);
    parts.push({ primitive, firstVertex, firstFace, vertexCount, faceCount: triangles.length / 3, scale });
    positions.push(own);
    corners.push(triangles.map((vertex) => vertex + firstVertex));
    firstVertex += vertexCount;
    firstFace += triangles.length / 3;
  }
  const all = concat(positions, Float32Array), originals = concat(corners, Uint32Array), first = new Uint32Array(firstVertex);
  meshBegins.forEach((begin, i) => weldRange(all, begin, meshBegins[i + 1] ?? firstVertex, first));
  return { mesh: { positions: all, indices: originals.map((vertex) => first[vertex]!), weld: false }, originals, parts };
}

function concat<T extends Float32Array | Uint32Array>(arrays: T[], type: new (size: number) => T): T {
  const all = new type(arrays.reduce((size, array) => size + array.length, 0));
  arrays.reduce((at, array) => (all.set(array, at), at + array.length), 0);
  return all;
}

/** The groups of a document, each to be unwrapped into one texture. Primitives without triangles are in none. */
export function collect(document: Document, options: Pick<GltfOptions, 'groupBy' | 'texcoord' | 'keepExisting'> = {}): Group[] {
  const { groupBy = 'mesh', texcoord = 0, keepExisting = false } = options;
  const seen = new Set<Primitive>();
  const perMesh = document.getRoot().listMeshes().map((mesh) => {
    const scale = groupBy === 'scene' ? scaleInScene(mesh) : 1;
    return mesh.listPrimitives().filter((primitive) => {
      const wanted = primitive.getMode() >= TRIANGLES && primitive.getAttribute('POSITION') && !seen.has(primitive) &&
        !(keepExisting && primitive.getAttribute(`TEXCOORD_${texcoord}`)) && trianglesOf(primitive).length > 0;
      seen.add(primitive);
      return wanted;
    }).map((primitive) => ({ primitive, mesh, scale }));
  });
  const groups = groupBy === 'scene' ? [perMesh.flat()] :
    groupBy === 'mesh' ? perMesh : perMesh.flat().map((member) => [member]);
  return groups.filter((group) => group.length > 0).map(makeGroup);
}

/** A copy of an accessor's elements in a new order. */
function gather(document: Document, accessor: Accessor, sources: Uint32Array): Accessor {
  const size = accessor.getElementSize(), array = accessor.getArray()!;
  const type = array.constructor as new (size: number) => typeof array;
  const copy = new type(size * sources.length);
  sources.forEach((source, i) => {
    for (let k = 0; k < size; ++k)
      copy[size * i + k] = array[size * source + k]!;
  });
  return document.createAccessor(accessor.getName()).setType(accessor.getType()).setNormalized(accessor.getNormalized())
    .setBuffer(accessor.getBuffer()).setExtras(accessor.getExtras()).setArray(copy);
}

function disposeUnused(accessors: Iterable<Accessor>): void {
  for (const accessor of accessors)
    if (!accessor.isDisposed() && accessor.listParents().every((parent) => parent.propertyType === 'Root'))
      accessor.dispose();
}

function rewrite(document: Document, part: Part, atlas: Atlas, texcoord: number): void {
  const { primitive, firstVertex, firstFace, faceCount } = part, semantic = `TEXCOORD_${texcoord}`;
  const number = new Map<number, number>(), indices = new Uint32Array(3 * faceCount);
  indices.forEach((_, i) => {
    const vertex = atlas.indices[3 * firstFace + i]!;
    indices[i] = number.get(vertex) ?? (number.set(vertex, number.size), number.size - 1);
  });
  const kept = Uint32Array.from(number.keys());
  const sources = kept.map((vertex) => atlas.vertices[vertex]! - firstVertex);
  const uvs = new Float32Array(2 * kept.length);
  kept.forEach((vertex, i) => {
    uvs[2 * i] = atlas.uvs[2 * vertex]!;
    // Images in glTF begin at the top.
    uvs[2 * i + 1] = 1 - atlas.uvs[2 * vertex + 1]!;
  });

  const old = new Set<Accessor>();
  const buffer = primitive.getAttribute('POSITION')!.getBuffer();
  // Tangents follow the old coordinates.
  if (primitive.getAttribute(semantic) && primitive.getAttribute('TANGENT')) {
    old.add(primitive.getAttribute('TANGENT')!);
    primitive.setAttribute('TANGENT', null);
  }
  for (const target of [primitive, ...primitive.listTargets()])
    for (const name of target.listSemantics()) {
      const accessor = target.getAttribute(name)!;
      old.add(accessor);
      target.setAttribute(name, name === semantic ? null : gather(document, accessor, sources));
    }
  primitive.setAttribute(semantic, document.createAccessor('uvs').setType('VEC2').setBuffer(buffer).setArray(uvs));
  if (primitive.getIndices())
    old.add(primitive.getIndices()!);
  const short = kept.length <= 0xffff;
  primitive.setIndices(document.createAccessor('indices').setType('SCALAR').setBuffer(buffer)
    .setArray(short ? Uint16Array.from(indices) : indices));
  primitive.setMode(TRIANGLES);
  disposeUnused(old);
}

/** Writes a group's atlas into its primitives. */
export function apply(document: Document, group: Group, atlas: Atlas, texcoord = 0): void {
  const split = splitByOriginal(atlas, group.originals);
  for (const part of group.parts)
    rewrite(document, part, split, texcoord);
}

/** The transform. */
export function unwrap(options: GltfOptions): (document: Document) => Promise<void> {
  const { tessora, run = tessora && ((mesh: Mesh, o: Options) => tessora.unwrap(mesh, o)), texcoord = 0, groupBy, keepExisting, ...plain } = options;
  if (!run)
    throw new TypeError('tessora/gltf: give `tessora` (from load()) or `run`');
  const transform = async (document: Document) => {
    const groups = collect(document, { groupBy, texcoord, keepExisting });
    for (const { parts } of groups)
      for (const { primitive } of parts)
        for (let i = 0; i < texcoord; ++i)
          if (!primitive.getAttribute(`TEXCOORD_${i}`))
            throw new Error(`tessora/gltf: TEXCOORD_${texcoord} needs TEXCOORD_${i}, which a primitive does not have`);
    // All groups are unwrapped before the first is changed: a failure leaves the document as it was.
    const atlases: Atlas[] = [];
    for (const group of groups)
      atlases.push(await run(group.mesh, plain));
    groups.forEach((group, i) => apply(document, group, atlases[i]!, texcoord));
  };
  return Object.defineProperty(transform, 'name', { value: 'unwrap' });
}
