/**
 * Stands in for the npm package watlas where glTF-Transform's `unwrap` and programs like it use it:
 *
 *     import * as watlas from 'tessora/watlas';
 *     watlas.settings.width = watlas.settings.height = 2048;
 *     await document.transform(unwrap({ watlas }));
 *
 * Vertices at equal positions within a mesh count as one, so that normals and old texture coordinates do not cut it.
 */
import { load, TessoraError, type LoadOptions, type Options, type Tessora } from './index.js';
import type { Atlas as Result } from './types.js';
import { splitByOriginal, weldRange } from './weld.js';

/** What generate() unwraps with. */
export const settings: Options = { width: 1024, height: 1024, gutter: 2, stretch: 0.15, quality: 'fast' };

let engine: Promise<Tessora> | undefined;
let tessora: Tessora | undefined;

/** Starts the engine; to be awaited before anything else. */
export async function Initialize(options?: LoadOptions): Promise<void> {
  tessora = await (engine ??= load(options));
}

export interface MeshDecl {
  vertexCount: number;
  vertexPositionData: Float32Array;
  /** Bytes. */
  vertexPositionStride?: number;
  indexData?: Uint32Array | Uint16Array;
  indexCount?: number;
  /** Ignored, as are all other members: the engine needs neither normals nor old coordinates. */
  vertexNormalData?: Float32Array;
  vertexNormalStride?: number;
  vertexUvData?: Float32Array;
  vertexUvStride?: number;
}

export interface Vertex {
  /** The vertex of the declared mesh that this is a copy of. */
  xref: number;
  /** Texels from the top left corner. */
  uv: [number, number];
  atlasIndex: number;
  /** -1 if no triangle uses the vertex. */
  chartIndex: number;
}

/** A mesh with its new vertices. */
export class Mesh {
  /** @internal */
  constructor(
    private readonly uvs: Float32Array,
    private readonly sources: Uint32Array,
    private readonly charts: Int32Array,
    private readonly indices: Uint32Array,
  ) {}
  get vertexCount(): number {
    return this.sources.length;
  }
  get indexCount(): number {
    return this.indices.length;
  }
  get chartCount(): number {
    return new Set(this.charts.filter((chart) => chart >= 0)).size;
  }
  getVertex(index: number): Vertex {
    if (!(index >= 0 && index < this.sources.length))
      throw new RangeError(`vertex ${index} of ${this.sources.length}`);
    const chartIndex = this.charts[index]!;
    return { xref: this.sources[index]!, uv: [this.uvs[2 * index]!, this.uvs[2 * index + 1]!], atlasIndex: chartIndex < 0 ? -1 : 0, chartIndex };
  }
  /** Copies the indices out. */
  getIndexArray(array: Uint32Array): boolean {
    if (array.length < this.indices.length)
      return false;
    array.set(this.indices);
    return true;
  }
}

interface Declared {
  positions: Float32Array;
  indices: Uint32Array;
}

/** Meshes that share one texture. */
export class Atlas {
  private readonly declared: Declared[] = [];
  private meshes: Mesh[] = [];
  private charts = 0;
  private size = [0, 0];

  get meshCount(): number {
    return this.meshes.length;
  }
  get chartCount(): number {
    return this.charts;
  }
  get atlasCount(): number {
    return this.charts > 0 ? 1 : 0;
  }
  get width(): number {
    return this.size[0]!;
  }
  get height(): number {
    return this.size[1]!;
  }

  /** The arrays are copied. */
  addMesh(declaration: MeshDecl): void {
    const { vertexCount, vertexPositionData: data, indexData } = declaration;
    const stride = (declaration.vertexPositionStride ?? 12) / 4;
    if (!Number.isInteger(stride) || stride < 3 || data.length < stride * (vertexCount - 1) + 3)
      throw new TessoraError(`mesh ${this.declared.length}: the positions do not hold ${vertexCount} vertices`, 'invalid_argument');
    const positions = new Float32Array(3 * vertexCount);
    for (let v = 0; v < vertexCount; ++v)
      positions.set(data.subarray(stride * v, stride * v + 3), 3 * v);
    const count = declaration.indexCount ?? indexData?.length ?? vertexCount;
    const indices = indexData ? Uint32Array.from(indexData.subarray(0, count)) : Uint32Array.from({ length: count }, (_, i) => i);
    const bad = indices.findIndex((vertex) => vertex >= vertexCount);
    if (bad >= 0)
      throw new TessoraError(`mesh ${this.declared.length}: index ${bad} is ${indices[bad]}, but there are ${vertexCount} vertices`, 'index_out_of_range', bad);
    this.declared.push({ positions, indices });
  }

  /** Unwraps all meshes. The options are watlas'; of them resolution and padding count and replace the settings. */
  generate(_chartOptions?: object, packOptions: { resolution?: number; padding?: number } = {}): void {
    if (!tessora)
      throw new TessoraError('tessora/watlas: await Initialize() first', 'invalid_argument');
    const { resolution, padding } = packOptions;
    const options = { ...settings, ...(resolution && { width: resolution, height: resolution }), ...(padding && { gutter: padding }) };
    const all = join(this.declared);
    this.size = [options.width ?? 512, options.height ?? 512];
    const made = all.indices.length === 0 ? undefined :
      splitByOriginal(tessora.unwrap({ positions: all.positions, indices: all.welded, weld: false }, options), all.indices);
    this.charts = made?.chartCount ?? 0;
    let corner = 0;
    this.meshes = this.declared.map(({ indices }, i) => {
      const triangles = indices.length - indices.length % 3;
      corner += triangles;
      return takeMesh(made, corner - triangles, indices, all.firstVertex[i]!, this.size);
    });
  }

  getMesh(index: number): Mesh {
    const mesh = this.meshes[index];
    if (!mesh)
      throw new RangeError(`mesh ${index} of ${this.meshes.length}`);
    return mesh;
  }

  /** For callers that free memory by hand; this one need not be. */
  delete(): void {
    this.meshes = [];
    this.declared.length = 0;
  }
}

/** All meshes as one. Meshes are welded each by itself: where two touch, they stay apart. */
function join(meshes: Declared[]) {
  const firstVertex: number[] = [];
  let vertices = 0, corners = 0;
  for (const mesh of meshes) {
    firstVertex.push(vertices);
    vertices += mesh.positions.length / 3;
    corners += mesh.indices.length - mesh.indices.length % 3;
  }
  const positions = new Float32Array(3 * vertices), first = new Uint32Array(vertices), indices = new Uint32Array(corners);
  let corner = 0;
  meshes.forEach((mesh, i) => {
    const begin = firstVertex[i]!;
    positions.set(mesh.positions, 3 * begin);
    weldRange(positions, begin, begin + mesh.positions.length / 3, first);
    for (let c = 0; c < mesh.indices.length - mesh.indices.length % 3; ++c)
      indices[corner++] = mesh.indices[c]! + begin;
  });
  return { positions, indices, welded: indices.map((vertex) => first[vertex]!), firstVertex };
}

/** One mesh's part of the result, with the vertices numbered from 0. Corners beyond the last triangle get vertices of their own. */
function takeMesh(made: Result | undefined, firstCorner: number, declared: Uint32Array, firstVertex: number, [width, height]: number[]): Mesh {
  const number = new Map<number, number>(), uvs: number[] = [], sources: number[] = [], charts: number[] = [];
  const indices = declared.map((original, c) => {
    if (c >= declared.length - declared.length % 3 || !made) {
      uvs.push(0, 0);
      charts.push(-1);
      return sources.push(original) - 1;
    }
    const vertex = made.indices[firstCorner + c]!;
    if (!number.has(vertex)) {
      number.set(vertex, sources.length);
      uvs.push(made.uvs[2 * vertex]! * width!, (1 - made.uvs[2 * vertex + 1]!) * height!);
      sources.push(made.vertices[vertex]! - firstVertex);
      charts.push(made.charts[(firstCorner + c - c % 3) / 3]!);
    }
    return number.get(vertex)!;
  });
  return new Mesh(Float32Array.from(uvs), Uint32Array.from(sources), Int32Array.from(charts), indices);
}
