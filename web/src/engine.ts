/**
 * Loads the engine's .wasm file and moves arrays across its border. The file is built without Emscripten's JavaScript
 * and imports only what is below.
 */
import { TessoraError, type Status } from './error.js';

export interface LoadOptions {
  /** The engine, if it is not beside this file: its bytes, a compiled module, or where to fetch it. */
  wasm?: BufferSource | WebAssembly.Module | URL | string;
  /** Most memory that the engine may take, in bytes. A run that needs more fails, and the next one works. Default: 4 GB. */
  maxMemory?: number;
}

/** Called with the fraction that is done, 0..1, and the stage that goes on. Returning false cancels. */
export type Progress = (fraction: number, stage: string) => boolean | void;

type Numbers = ArrayLike<number>;
type View = Float32Array | Float64Array | Uint8Array | Uint16Array | Uint32Array;

/** The functions of atlas/c/tessora_atlas.h, and the allocator. Pointers and sizes are numbers. */
interface Exports {
  _initialize(): void;
  malloc(size: number): number;
  free(pointer: number): void;
  tessora_js_progress(): number;
  [name: `tessora_${string}`]: (...args: number[]) => number;
}

const STATUSES: (Status | 'ok')[] = ['ok', 'invalid_argument', 'index_out_of_range', 'neighbour_out_of_range',
  'not_finite', 'does_not_fit', 'chart_limit', 'cancelled', 'out_of_memory', 'kept_charts_collide', 'kept_chart_outside'];

// Members of the C interface's structs, in bytes; web/engine/progress.cpp checks them against the header.
export const MESH = { size: 124, positions: 4, indices: 20, offsets: 36, cuts: 52, normals: 68, normalsPerCorner: 116, weld: 120 };
export const OPTIONS = { size: 60, stretch: 4, maxCharts: 8, width: 12, height: 16, gutter: 20, quality: 24, stack: 28,
  cutToPack: 32, progress: 40, user: 44, effort: 56 };
export const UVS = { size: 52, uvs: 4, charts: 20, keep: 36 };
export const PACK = { size: 72, width: 4, height: 8, gutter: 12, tiles: 16, turns: 20, align: 24, density: 28, stack: 32,
  effort: 36, quality: 40, texelsPerUnit: 48, progress: 56 };
const ARRAY = { count: 4, stride: 8, type: 12 };
const ERROR = { size: 256, element: 4, text: 8 };
const PAGE = 65536, NONE = 0xffffffff;
const INITIAL_PAGES = 256; // what web/engine/CMakeLists.txt says

/** A kind of element, as tessora_type numbers it. */
const TYPES: [new (numbers: Numbers) => View, number][] =
  [[Float32Array, 1], [Float64Array, 2], [Uint8Array, 3], [Uint16Array, 4], [Uint32Array, 5]];

async function bytesBesideThisFile(): Promise<WebAssembly.Module> {
  const url = new URL('./tessora.wasm', import.meta.url);
  if (url.protocol !== 'file:')
    return fetchModule(url);
  const { readFile } = await import('node:fs/promises');
  return WebAssembly.compile(await readFile(url));
}

async function fetchModule(url: URL | string): Promise<WebAssembly.Module> {
  const response = await fetch(url);
  if (!response.ok)
    throw new TessoraError(`the engine could not be fetched: ${response.status} ${response.statusText} (${url})`);
  // Compiling while the file arrives needs the right media type, which some servers do not send.
  if (response.headers.get('content-type')?.startsWith('application/wasm'))
    return WebAssembly.compileStreaming(response);
  return WebAssembly.compile(await response.arrayBuffer());
}

export async function loadModule({ wasm }: LoadOptions): Promise<WebAssembly.Module> {
  if (wasm === undefined)
    return bytesBesideThisFile();
  if (wasm instanceof WebAssembly.Module)
    return wasm;
  return typeof wasm === 'string' || wasm instanceof URL ? fetchModule(wasm) : WebAssembly.compile(wasm);
}

/** The text at a pointer, which ends with a zero byte. */
function textAt(memory: WebAssembly.Memory, pointer: number): string {
  const bytes = new Uint8Array(memory.buffer, pointer);
  return new TextDecoder().decode(bytes.subarray(0, bytes.indexOf(0)));
}

/** An instance of the engine. Memory that a call borrowed is given back when the call ends, whatever happens. */
export class Engine {
  private readonly exports: Exports;
  private readonly memory: WebAssembly.Memory;
  private onProgress: Progress | undefined;
  private thrown: { error: unknown } | undefined;

  constructor(module: WebAssembly.Module, { maxMemory = 65536 * PAGE }: LoadOptions) {
    this.memory = new WebAssembly.Memory({
      initial: INITIAL_PAGES,
      maximum: Math.min(65536, Math.max(INITIAL_PAGES, Math.floor(maxMemory / PAGE))),
    });
    const instance = new WebAssembly.Instance(module, {
      env: {
        memory: this.memory,
        emscripten_notify_memory_growth: () => {},
        tessora_js_report: (stage: number, fraction: number) => this.report(stage, fraction),
      },
      wasi_snapshot_preview1: {
        proc_exit: (code: number) => {
          throw new TessoraError(`the engine ended with code ${code}`);
        },
      },
    });
    this.exports = instance.exports as unknown as Exports;
    this.exports._initialize();
  }

  /** Returns 1 if the call is to be cancelled. An exception must not travel through the engine. */
  private report(stage: number, fraction: number): number {
    try {
      return this.onProgress?.(fraction, textAt(this.memory, stage)) === false ? 1 : 0;
    } catch (error) {
      this.thrown = { error };
      return 1;
    }
  }

  /** Runs a call that borrows memory. */
  borrow<Result>(body: (call: Call) => Result): Result {
    const call = new Call(this.exports, this.memory);
    try {
      return body(call);
    } finally {
      call.end();
    }
  }

  /** As borrow(), for a call that reports progress. */
  borrowWithProgress<Result>(onProgress: Progress | undefined, body: (call: Call) => Result): Result {
    if (this.onProgress)
      throw new TessoraError('a progress function must not start another run of the same engine', 'invalid_argument');
    this.onProgress = onProgress ?? (() => {});
    try {
      return this.borrow(body);
    } catch (error) {
      throw this.thrown ? this.thrown.error : error;
    } finally {
      this.onProgress = this.thrown = undefined;
    }
  }
}

/** Memory of one call. */
export class Call {
  private readonly blocks: number[] = [];
  constructor(private readonly exports: Exports, private readonly memory: WebAssembly.Memory) {}

  end(): void {
    this.blocks.forEach((block) => this.exports.free(block));
  }

  /** The memory may have grown, and moved, since the last call. */
  private view(): DataView {
    return new DataView(this.memory.buffer);
  }

  allocate(size: number): number {
    // Sizes of 2 GB and more would be negative on the other side.
    const block = size < 0x7fffffff ? this.exports.malloc(size || 1) >>> 0 : 0;
    if (block === 0)
      throw new TessoraError('memory ran out', 'out_of_memory');
    this.blocks.push(block);
    return block;
  }

  struct(name: 'mesh' | 'options' | 'uvs' | 'pack_options', size: number): number {
    const block = this.allocate(size);
    this.exports[`tessora_${name}_init`]!(block, size);
    return block;
  }

  setInt(pointer: number, value: number): void {
    this.view().setInt32(pointer, value, true);
  }
  setFloat(pointer: number, value: number): void {
    this.view().setFloat32(pointer, value, true);
  }
  setDouble(pointer: number, value: number): void {
    this.view().setFloat64(pointer, value, true);
  }

  /** Copies an array in and describes it in the tessora_array at `pointer`. `per` numbers are one element. */
  setArray(pointer: number, numbers: Numbers, plain: new (numbers: Numbers) => View, per = 1): void {
    const known = TYPES.find(([type]) => numbers instanceof type);
    const [type, code] = known ?? TYPES.find(([type]) => type === plain)!;
    const array = known ? numbers as View : new type(numbers);
    const block = this.allocate(array.byteLength);
    new Uint8Array(this.memory.buffer, block).set(new Uint8Array(array.buffer, array.byteOffset, array.byteLength));
    const view = this.view();
    view.setUint32(pointer, block, true);
    view.setUint32(pointer + ARRAY.count, array.length / per, true);
    view.setUint32(pointer + ARRAY.stride, 0, true);
    view.setInt32(pointer + ARRAY.type, code, true);
  }

  progressFunction(): number {
    return this.exports.tessora_js_progress();
  }

  /** Calls a function whose last argument is a tessora_error; throws what it reports. */
  check(name: string, ...args: number[]): void {
    const error = this.allocate(ERROR.size);
    const code = this.exports[`tessora_${name}`]!(...args, error);
    if (code === 0)
      return;
    const text = textAt(this.memory, error + ERROR.text);
    const element = this.view().getUint32(error + ERROR.element, true);
    throw new TessoraError(text, STATUSES[code] as Status ?? 'internal', element === NONE ? undefined : element);
  }

  /** The atlas that a function wrote a pointer to; it is freed with the call's memory. */
  pointerAt(place: number): number {
    return this.view().getUint32(place, true);
  }
  freeAtlas(atlas: number): void {
    this.exports.tessora_atlas_free!(atlas);
  }

  /** A number of an atlas. */
  get(name: string, atlas: number, ...of: number[]): number {
    return this.exports[`tessora_atlas_${name}`]!(atlas, ...of);
  }

  /** A copy of an array of an atlas. `per` numbers are one element. */
  copy<T extends Float32Array | Float64Array | Uint32Array>(type: new (buffer: ArrayBufferLike, at: number, size: number) => T, name: string, atlas: number, per = 1): T {
    const place = this.allocate(4);
    const data = this.exports[`tessora_atlas_${name}`]!(atlas, place) >>> 0;
    return this.read(type, data, this.pointerAt(place) * per);
  }

  read<T extends Float32Array | Float64Array | Uint32Array>(type: new (buffer: ArrayBufferLike, at: number, size: number) => T, pointer: number, size: number): T {
    return new type(this.memory.buffer, size ? pointer : 0, size).slice() as T;
  }
}
