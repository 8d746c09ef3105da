/**
 * Tessora: automatic UV unwrapping.
 *
 *     import { load } from 'tessora';
 *     const tessora = await load();
 *     const { uvs, indices, vertices } = tessora.unwrap({ positions, indices: triangles }, { width: 1024, height: 1024 });
 */
import { Call, Engine, loadModule, MESH, OPTIONS, PACK, UVS, type LoadOptions, type Progress } from './engine.js';
import { TessoraError } from './error.js';
import type { Atlas, Mesh, Options, PackedAtlas, PackOptions } from './types.js';

export { TessoraError, type Status } from './error.js';
export type { LoadOptions, Progress } from './engine.js';
export type { Atlas, Mesh, Options, PackedAtlas, PackOptions } from './types.js';
export { hardEdges } from './hard_edges.js';

export interface SyncOptions extends Options {
  /** Called with the fraction that is done, 0..1, and the stage that goes on. Returning false cancels. */
  onProgress?: Progress;
}

export interface SyncPackOptions extends PackOptions {
  onProgress?: Progress;
}

/** Compiles and starts the engine. Each call gives an instance with memory of its own. */
export async function load(options: LoadOptions = {}): Promise<Tessora> {
  return new Tessora(new Engine(await loadModule(options), options));
}

/** An instance of the engine. Calls block; in a page use `tessora/worker`. */
export class Tessora {
  /** @internal */
  constructor(private readonly engine: Engine) {}

  /** New texture coordinates for a mesh. Throws TessoraError. */
  unwrap(mesh: Mesh, options: SyncOptions = {}): Atlas {
    return this.make('create', mesh, options);
  }

  /** Charts and flattens without packing: every chart has its own coordinates, at the scale at which the mesh has area 1. */
  partition(mesh: Mesh, options: SyncOptions = {}): Atlas {
    return this.make('partition', mesh, options);
  }

  /**
   * Packs charts that exist, whoever made them, without touching their shape. `uvs` holds two numbers per corner;
   * corners at one vertex with equal coordinates are connected.
   */
  pack(mesh: Mesh, uvs: Float32Array | Float64Array | readonly number[], options: SyncPackOptions = {}): PackedAtlas {
    return this.engine.borrowWithProgress(options.onProgress, (call) => {
      const place = call.allocate(4);
      call.check('pack', writeMesh(call, mesh), writeUvs(call, uvs, options), writePackOptions(call, options), place);
      return this.take(call, place, (atlas) => {
        const read = readAtlas(call, atlas), perChart = (name: string) =>
          Uint32Array.from({ length: read.chartCount }, (_, chart) => call.get(name, atlas, chart));
        return { ...read, coverage: call.copy(Float64Array, 'coverage', atlas), texelsPerUnit: call.get('texels_per_unit', atlas),
          tiles: perChart('chart_tile'), stackedOn: perChart('chart_stacked_on') };
      });
    });
  }

  /** The triangles of a mesh's polygons: three corners each, n - 2 for a polygon of n corners. */
  triangulate(mesh: Mesh): Uint32Array {
    return this.list('triangulate', mesh);
  }

  /** Across each edge of those triangles the triangle there, 0xffffffff if none. */
  neighbours(mesh: Mesh): Uint32Array {
    return this.list('neighbours', mesh);
  }

  private make(name: 'create' | 'partition', mesh: Mesh, options: SyncOptions): Atlas {
    return this.engine.borrowWithProgress(options.onProgress, (call) => {
      const place = call.allocate(4);
      call.check(name, writeMesh(call, mesh), writeOptions(call, options), place);
      return this.take(call, place, (atlas) => readAtlas(call, atlas));
    });
  }

  /** Reads the atlas that a call wrote a pointer to, and frees it. */
  private take<Result>(call: Call, place: number, read: (atlas: number) => Result): Result {
    const atlas = call.pointerAt(place);
    try {
      return read(atlas);
    } finally {
      call.freeAtlas(atlas);
    }
  }

  private list(name: 'triangulate' | 'neighbours', mesh: Mesh): Uint32Array {
    return this.engine.borrow((call) => {
      const corners = mesh.indices.length, polygons = mesh.offsets ? mesh.offsets.length - 1 : corners / 3;
      const size = Math.max(0, 3 * (corners - 2 * polygons));
      const list = call.allocate(4 * size);
      call.check(name, writeMesh(call, mesh), list, size);
      return call.read(Uint32Array, list, size);
    });
  }
}

function writeMesh(call: Call, mesh: Mesh): number {
  if (!mesh?.positions || !mesh.indices)
    throw new TessoraError('the mesh needs positions and indices', 'invalid_argument');
  const struct = call.struct('mesh', MESH.size), corners = mesh.indices.length;
  call.setArray(struct + MESH.positions, whole(mesh.positions, 'positions'), Float64Array, 3);
  call.setArray(struct + MESH.indices, mesh.indices instanceof Uint8Array ? Uint16Array.from(mesh.indices) : mesh.indices, Uint32Array);
  if (mesh.offsets)
    call.setArray(struct + MESH.offsets, mesh.offsets, Uint32Array);
  if (mesh.cuts)
    call.setArray(struct + MESH.cuts, mesh.cuts, Uint8Array);
  if (mesh.normals) {
    call.setArray(struct + MESH.normals, whole(mesh.normals, 'normals'), Float32Array, 3);
    call.setInt(struct + MESH.normalsPerCorner, mesh.normals.length === 3 * corners && corners * 3 !== mesh.positions.length ? 1 : 0);
  }
  call.setInt(struct + MESH.weld, mesh.weld === false ? 0 : 1);
  return struct;
}

function whole(numbers: Mesh['positions'], name: string): Mesh['positions'] {
  if (numbers.length % 3)
    throw new TessoraError(`${name} has ${numbers.length} numbers, which is not a multiple of 3`, 'invalid_argument');
  return numbers;
}

/** The option if it is a whole number that fits 32 bits. */
function count<Name extends string>(options: { [name in Name]?: number }, name: Name): number | undefined {
  const value = options[name] as number | undefined;
  if (value !== undefined && !(Number.isInteger(value) && value >= 0 && value < 2 ** 32))
    throw new TessoraError(`${name} is ${value}; it must be a whole number`, 'invalid_argument');
  return value;
}

function writeOptions(call: Call, options: SyncOptions): number {
  const struct = call.struct('options', OPTIONS.size);
  const set = (place: number, value: number | undefined, write: 'setInt' | 'setFloat') =>
    value === undefined || call[write](struct + place, value);
  set(OPTIONS.stretch, options.stretch, 'setFloat');
  set(OPTIONS.gutter, options.gutter, 'setFloat');
  set(OPTIONS.width, count(options, 'width'), 'setInt');
  set(OPTIONS.height, count(options, 'height'), 'setInt');
  set(OPTIONS.maxCharts, count(options, 'maxCharts'), 'setInt');
  set(OPTIONS.effort, count(options, 'effort'), 'setInt');
  set(OPTIONS.quality, choice('quality', options.quality ?? 'fast', QUALITIES), 'setInt');
  set(OPTIONS.stack, options.stack ? 1 : 0, 'setInt');
  set(OPTIONS.cutToPack, options.cutToPack ? 1 : 0, 'setInt');
  set(OPTIONS.progress, call.progressFunction(), 'setInt');
  return struct;
}

const QUALITIES = ['fast', 'quality'], TURNS = ['any', 'quarter', 'none'], STACKS = ['none', 'congruent', 'mirrored'];
const DENSITIES = ['as-is', 'uniform'], FIXED_DENSITY = 2;

/** The number of a word. */
function choice(name: string, word: unknown, words: string[]): number {
  const number = words.indexOf(word as string);
  if (number < 0)
    throw new TessoraError(`${name} is '${word}'; it must be ${words.map((known) => `'${known}'`).join(' or ')}`, 'invalid_argument');
  return number;
}

function writeUvs(call: Call, uvs: Float32Array | Float64Array | readonly number[], options: PackOptions): number {
  const struct = call.struct('uvs', UVS.size);
  if (uvs.length % 2)
    throw new TessoraError(`uvs has ${uvs.length} numbers, which is not a multiple of 2`, 'invalid_argument');
  call.setArray(struct + UVS.uvs, uvs, Float32Array, 2);
  if (options.charts)
    call.setArray(struct + UVS.charts, options.charts, Uint32Array);
  if (options.keep)
    call.setArray(struct + UVS.keep, options.keep, Uint8Array);
  return struct;
}

function writePackOptions(call: Call, options: SyncPackOptions): number {
  const struct = call.struct('pack_options', PACK.size), { density = 'as-is' } = options;
  const setCount = (place: number, name: 'width' | 'height' | 'tiles' | 'effort') => {
    const value = count(options, name);
    if (value !== undefined)
      call.setInt(struct + place, value);
  };
  setCount(PACK.width, 'width');
  setCount(PACK.height, 'height');
  setCount(PACK.tiles, 'tiles');
  setCount(PACK.effort, 'effort');
  if (options.gutter !== undefined)
    call.setFloat(struct + PACK.gutter, options.gutter);
  call.setInt(struct + PACK.turns, choice('turns', options.turns ?? 'any', TURNS));
  call.setInt(struct + PACK.align, options.align ? 1 : 0);
  call.setInt(struct + PACK.stack, choice('stack', options.stack ?? 'none', STACKS));
  call.setInt(struct + PACK.quality, choice('quality', options.quality ?? 'quality', QUALITIES));
  call.setInt(struct + PACK.density, typeof density === 'number' ? FIXED_DENSITY : choice('density', density, DENSITIES));
  if (typeof density === 'number')
    call.setDouble(struct + PACK.texelsPerUnit, density);
  call.setInt(struct + PACK.progress, call.progressFunction());
  return struct;
}

function readAtlas(call: Call, atlas: number): Atlas {
  return {
    uvs: call.copy(Float32Array, 'uvs', atlas, 2),
    indices: call.copy(Uint32Array, 'corner_vertices', atlas),
    vertices: call.copy(Uint32Array, 'source_vertices', atlas),
    triangles: call.copy(Uint32Array, 'triangle_corners', atlas),
    charts: call.copy(Uint32Array, 'charts', atlas),
    chartCount: call.get('chart_count', atlas),
    stretch: call.get('stretch', atlas),
    overLimit: call.copy(Uint32Array, 'over_limit', atlas),
    lost: call.copy(Uint32Array, 'lost', atlas),
  };
}
