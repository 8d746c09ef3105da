/** Opening and saving of files, in a worker so that large ones do not freeze the page. */
import { Document, WebIO } from '@gltf-transform/core';
import { ALL_EXTENSIONS } from '@gltf-transform/extensions';
import { MeshoptDecoder } from 'meshoptimizer';
import { apply, collect, type Group } from '../src/gltf.js';
import { ObjError, readObj, writeObj, shortest, type ObjMesh } from '../src/obj.js';
import type { Atlas, Mesh } from '../src/types.js';

/** A run of faces as it stands in the scene. */
export interface Instance {
  firstFace: number;
  endFace: number;
  /** Column by column. */
  matrix: number[];
}

export interface Opened {
  kind: 'glb' | 'obj';
  /** For the engine; also what is drawn. */
  mesh: Mesh & { positions: Float32Array | Float64Array; indices: Uint32Array; offsets?: Uint32Array };
  instances: Instance[];
  faces: number;
}

export type FileRequest =
  | { id: number; open: { name: string; bytes: ArrayBuffer } }
  | { id: number; save: { kind: 'glb' | 'obj'; atlas: Atlas } };

export type FileAnswer = { id: number; opened?: Opened; saved?: Uint8Array; fault?: string };

/** A reason that the user is shown. */
class Fault extends Error {}

const IDENTITY = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1];
const GLB_MAGIC = 0x46546c67;

/** What is open; a GLB is parsed again for each save, which changes the document. */
type File = { kind: 'obj'; obj: ObjMesh } | { kind: 'glb'; bytes: Uint8Array; group: Group; opened: Opened };
let file: File | undefined;

const io = new WebIO().registerExtensions(ALL_EXTENSIONS).registerDependencies({ 'meshopt.decoder': MeshoptDecoder });

async function parseGlb(bytes: Uint8Array): Promise<Document> {
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  if (bytes.length < 20 || view.getUint32(0, true) !== GLB_MAGIC)
    throw new Fault('This is not a GLB file: it does not begin with “glTF”.');
  if (view.getUint32(4, true) !== 2)
    throw new Fault(`This is glTF version ${view.getUint32(4, true)}; only version 2 can be read.`);
  if (view.getUint32(8, true) > bytes.length)
    throw new Fault(`The file is cut off: it says ${view.getUint32(8, true)} bytes and has ${bytes.length}.`);
  const json = await io.binaryToJSON(bytes);
  const required = json.json.extensionsRequired ?? [];
  const unknown = required.filter((name) => name === 'KHR_draco_mesh_compression' || !ALL_EXTENSIONS.some((e) => e.EXTENSION_NAME === name));
  if (unknown.length)
    throw new Fault(`The file needs ${unknown.join(', ')}, which this page cannot read.`);
  return io.readJSON(json);
}

function checkAccessors(document: Document): void {
  for (const mesh of document.getRoot().listMeshes())
    for (const primitive of mesh.listPrimitives()) {
      const positions = primitive.getAttribute('POSITION');
      const bad = positions?.getArray()?.findIndex((x) => !Number.isFinite(x)) ?? -1;
      if (bad >= 0)
        throw new Fault(`Vertex ${Math.floor(bad / 3)} of mesh “${mesh.getName()}” is not at a finite position.`);
    }
}

async function openGlb(bytes: Uint8Array): Promise<Opened> {
  const document = await parseGlb(bytes);
  checkAccessors(document);
  const [group] = collect(document, { groupBy: 'scene' });
  if (!group)
    throw new Fault('The file holds no triangles.');
  const instances: Instance[] = [];
  for (const node of document.getRoot().listNodes())
    for (const part of group.parts)
      if (node.getMesh()?.listPrimitives().includes(part.primitive))
        instances.push({ firstFace: part.firstFace, endFace: part.firstFace + part.faceCount, matrix: unscaled(node.getWorldMatrix(), part.scale) });
  const faces = group.originals.length / 3;
  if (instances.length === 0)
    instances.push({ firstFace: 0, endFace: faces, matrix: IDENTITY });
  const opened: Opened = { kind: 'glb', mesh: group.mesh, instances, faces };
  file = { kind: 'glb', bytes, group, opened };
  return opened;
}

/** The matrix for positions that have been scaled already. */
const unscaled = (matrix: number[], scale: number) => matrix.map((x, i) => i < 12 ? x / scale : x);

function openObj(bytes: Uint8Array): Opened {
  const obj = readObj(bytes);
  file = { kind: 'obj', obj };
  const faces = obj.offsets.length - 1;
  return { kind: 'obj', mesh: { positions: obj.positions, indices: obj.corners, offsets: obj.offsets, weld: false }, instances: [{ firstFace: 0, endFace: faces, matrix: IDENTITY }], faces };
}

async function open(name: string, bytes: Uint8Array): Promise<Opened> {
  if (bytes.length === 0)
    throw new Fault('The file is empty.');
  const glb = bytes.length >= 4 && new DataView(bytes.buffer, bytes.byteOffset).getUint32(0, true) === GLB_MAGIC;
  if (glb || /\.glb$/i.test(name))
    return openGlb(bytes);
  if (!/\.obj$/i.test(name))
    throw new Fault(`“${name}” is neither an OBJ nor a GLB file.`);
  return openObj(bytes);
}

/** A document of the polygons' triangles. */
function documentOf(obj: ObjMesh, atlas: Atlas): Document {
  const document = new Document(), buffer = document.createBuffer();
  const positions = new Float32Array(3 * atlas.vertices.length), uvs = new Float32Array(2 * atlas.vertices.length);
  atlas.vertices.forEach((vertex, i) => {
    positions.set(obj.positions.subarray(3 * vertex, 3 * vertex + 3), 3 * i);
    uvs.set([atlas.uvs[2 * i]!, 1 - atlas.uvs[2 * i + 1]!], 2 * i);
  });
  const indices = atlas.triangles.map((corner) => atlas.indices[corner]!);
  const accessor = (type: 'VEC2' | 'VEC3' | 'SCALAR', array: Float32Array<ArrayBuffer> | Uint32Array<ArrayBuffer>) =>
    document.createAccessor().setType(type).setArray(array).setBuffer(buffer);
  const primitive = document.createPrimitive().setAttribute('POSITION', accessor('VEC3', positions))
    .setAttribute('TEXCOORD_0', accessor('VEC2', uvs)).setIndices(accessor('SCALAR', Uint32Array.from(indices)))
    .setMaterial(document.createMaterial().setRoughnessFactor(0.8).setMetallicFactor(0));
  const scene = document.createScene().addChild(document.createNode().setMesh(document.createMesh().addPrimitive(primitive)));
  document.getRoot().setDefaultScene(scene);
  return document;
}

/** The triangles of a scene as they stand there. */
function objOf({ opened, group }: { opened: Opened; group: Group }, atlas: Atlas): Uint8Array {
  const lines: string[] = ['# saved by Tessora'], { positions } = opened.mesh;
  for (let i = 0; i < atlas.uvs.length; i += 2)
    lines.push(`vt ${shortest(atlas.uvs[i]!)} ${shortest(atlas.uvs[i + 1]!)}`);
  let written = 0;
  for (const { firstFace, endFace, matrix: m } of opened.instances) {
    const number = new Map<number, number>(), faces: string[] = [];
    for (let face = firstFace; face < endFace; ++face)
      faces.push('f ' + [0, 1, 2].map((k) => {
        const corner = 3 * face + k, vertex = group.mesh.indices[corner]!;
        if (!number.has(vertex)) {
          number.set(vertex, ++written);
          const [x, y, z] = positions.subarray(3 * vertex, 3 * vertex + 3) as unknown as [number, number, number];
          lines.push('v ' + [0, 1, 2].map((r) => shortest(Math.fround(m[r]! * x + m[4 + r]! * y + m[8 + r]! * z + m[12 + r]!))).join(' '));
        }
        return `${number.get(vertex)}/${atlas.indices[corner]! + 1}`;
      }).join(' '));
    for (const line of faces)
      lines.push(line);
  }
  return new TextEncoder().encode(lines.join('\n') + '\n');
}

async function save(kind: 'glb' | 'obj', atlas: Atlas): Promise<Uint8Array> {
  if (!file)
    throw new Fault('No file is open.');
  if (file.kind === 'obj')
    return kind === 'obj' ? writeObj(file.obj, atlas.uvs, atlas.indices) : io.writeBinary(documentOf(file.obj, atlas));
  if (kind === 'obj')
    return objOf(file, atlas);
  const document = await parseGlb(file.bytes);
  apply(document, collect(document, { groupBy: 'scene' })[0]!, atlas);
  return io.writeBinary(document);
}

function reasonOf(error: unknown): string {
  if (error instanceof Fault)
    return error.message;
  const { message } = error as Error;
  if (error instanceof ObjError)
    return `${message[0]!.toUpperCase()}${message.slice(1)}.`;
  if (error instanceof RangeError && /memory|allocation|length/i.test(message))
    return 'Memory ran out while reading the file.';
  return `The file cannot be read: ${message}`;
}

self.onmessage = async ({ data }: MessageEvent<FileRequest>) => {
  const answer: FileAnswer = { id: data.id };
  try {
    if ('open' in data)
      answer.opened = await open(data.open.name, new Uint8Array(data.open.bytes));
    else
      answer.saved = await save(data.save.kind, data.save.atlas);
  } catch (error) {
    answer.fault = reasonOf(error);
  }
  self.postMessage(answer);
};

