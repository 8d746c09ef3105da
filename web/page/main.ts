/** The page: what the controls do. */
import { hardEdges } from '../src/hard_edges.js';
import type { Atlas, Mesh, Options } from '../src/types.js';
import { UnwrapWorker } from '../src/worker.js';
import type { FileAnswer, FileRequest, Opened } from './files.js';
import { layoutPng, layoutSvg } from './layout.js';
import { sampleObj } from './sample.js';
import { surfaceOf, type Surface } from './surface.js';
import { View, type Mode } from './view.js';

const SIZES = [256, 512, 1024, 2048, 4096, 8192];

function element<T extends HTMLElement>(id: string): T {
  return document.getElementById(id) as T;
}
const input = (id: string) => element<HTMLInputElement>(id);
const button = (id: string) => element<HTMLButtonElement>(id);
const checked = (name: string) => document.querySelector<HTMLInputElement>(`input[name=${name}]:checked`)!.value;

/** The worker that reads and writes files; it keeps the open one. */
class Files {
  private readonly worker = new Worker(new URL('./files.js', import.meta.url), { type: 'module', name: 'files' });
  private readonly waiting = new Map<number, (answer: FileAnswer) => void>();
  private lastId = 0;
  constructor() {
    this.worker.onmessage = ({ data }: MessageEvent<FileAnswer>) => {
      this.waiting.get(data.id)!(data);
      this.waiting.delete(data.id);
    };
  }
  async ask(request: { open: { name: string; bytes: ArrayBuffer } } | { save: { kind: 'glb' | 'obj'; atlas: Atlas } }): Promise<FileAnswer> {
    const id = ++this.lastId;
    const answer = await new Promise<FileAnswer>((resolve) => {
      this.waiting.set(id, resolve);
      this.worker.postMessage({ id, ...request } as FileRequest, 'open' in request ? [request.open.bytes] : []);
    });
    if (answer.fault)
      throw new Error(answer.fault);
    return answer;
  }
}

interface Shown {
  atlas: Atlas;
  surface: Surface;
  width: number;
  height: number;
}

const files = new Files(), worker = new UnwrapWorker();
let opened: Opened | undefined, openedName = '', shown: Shown | undefined;
let run: AbortController | undefined;
let kept = -1; // chart that stays lit

/** WebGL may be missing; unwrapping and saving work without it. */
function makeViews(): View[] {
  try {
    return [new View(element('surface'), false), new View(element('texture'), true)];
  } catch {
    showFault('This browser has no WebGL, so nothing can be drawn. Unwrapping and saving work.');
    return [];
  }
}
const views = makeViews();

function showFault(text: string): void {
  element('fault').textContent = text;
  element('fault').hidden = text === '';
}

function say(text: string): void {
  element('status').textContent = text;
}

function settings(): Options {
  const number = (id: string) => {
    const { value, min, max } = input(id);
    return Math.min(Number(max), Math.max(Number(min), Number(value) || 0));
  };
  return {
    stretch: number('stretch'), gutter: number('gutter'), quality: checked('quality') as 'fast' | 'quality',
    width: Number(element<HTMLSelectElement>('width').value), height: Number(element<HTMLSelectElement>('height').value),
  };
}

function meshWithCuts(): Mesh {
  const mesh = opened!.mesh;
  return input('hard').checked ? { ...mesh, cuts: hardEdges(mesh, Number(input('angle').value) || 60) } : mesh;
}

function show(atlas: Atlas | undefined): void {
  const { width = 512, height = 512, stretch = 0.15 } = settings(), side = Math.max(width, height);
  const surface = surfaceOf(opened!, atlas, width, height);
  shown = atlas && { atlas, surface, width, height };
  // Twice the limit of L2 stretch is the end of the ramp.
  const end = Math.min(2, 2 * Math.max(0.02, 1 / Math.max(0.01, 1 - stretch) - 1));
  views.forEach((view) => view.show(surface, [width / side, height / side], end));
  element('legend-end').textContent = `${(1 + end).toFixed(2)} × and more`;
  element('texture-size').textContent = atlas ? `${width} × ${height}` : '';
  showFigures(shown);
  light(kept = -1);
  for (const kind of ['glb', 'obj', 'svg', 'png'])
    button(`save-${kind}`).disabled = !atlas;
}

function showFigures(result: Shown | undefined): void {
  const set = (name: string, text: string) => element(`figure-${name}`).textContent = text;
  set('charts', result ? result.atlas.chartCount.toLocaleString('en') : '–');
  set('stretch', result ? result.atlas.stretch.toFixed(3) : '–');
  set('used', result ? `${(100 * result.surface.figures.used).toFixed(1)} %` : '–');
  set('seams', result ? result.surface.figures.seams.toFixed(2) : '–');
  set('faces', opened!.faces.toLocaleString('en'));
}

/** Lights a chart up in both views and says what it is. */
function light(chart: number): void {
  views.forEach((view) => view.light(chart));
  const figures = shown?.surface.figures;
  element('chart').textContent = chart < 0 || !figures ? '' :
    `Chart ${chart + 1} of ${shown!.atlas.chartCount}: ${figures.chartFaces[chart]!.toLocaleString('en')} triangles, ` +
    `${(100 * figures.chartArea[chart]!).toFixed(2)} % of the texture`;
}

function setRunning(running: boolean): void {
  button('cancel').disabled = !running;
  document.body.classList.toggle('running', running);
}

async function unwrap(): Promise<void> {
  if (!opened)
    return;
  run?.abort();
  const own = run = new AbortController(), progress = element<HTMLProgressElement>('progress'), begin = performance.now();
  showFault('');
  progress.value = 0;
  say('Unwrapping…');
  setRunning(true);
  try {
    const atlas = await worker.unwrap(meshWithCuts(), { ...settings(), signal: own.signal, onProgress: (fraction, stage) => {
      progress.value = fraction;
      say(`${stage[0]!.toUpperCase()}${stage.slice(1)}… ${Math.round(100 * fraction)} %`);
    } });
    element('figure-time').textContent = `${((performance.now() - begin) / 1000).toFixed(2)} s`;
    show(atlas);
    progress.value = 1;
    say(atlas.overLimit.length ? `Done; ${atlas.overLimit.length} triangles cannot meet the stretch limit.` : 'Done.');
  } catch (error) {
    if (own !== run)
      return; // a newer run took over
    progress.value = 0;
    say(own.signal.aborted ? shown ? 'Cancelled. The last result stays.' : 'Cancelled.' : 'Not unwrapped.');
    if (!own.signal.aborted)
      showFault(adviceFor(error as Error & { status?: string; element?: number }));
  } finally {
    if (own === run)
      setRunning(false);
  }
}

function adviceFor(error: Error & { status?: string; element?: number }): string {
  if (error.status === 'does_not_fit')
    return `The texture has no room for ${error.element} charts with this gutter. Choose a larger texture, a smaller gutter or a higher stretch limit.`;
  if (error.status === 'out_of_memory')
    return 'Memory ran out. The mesh is too large for the browser; the command line has no such limit.';
  return `${error.message[0]!.toUpperCase()}${error.message.slice(1)}.`;
}

async function open(name: string, bytes: ArrayBuffer): Promise<void> {
  run?.abort();
  showFault('');
  say(`Reading ${name}…`);
  try {
    const answer = await files.ask({ open: { name, bytes } });
    opened = answer.opened!;
  } catch (error) {
    say('Not opened.');
    showFault(`${name}: ${(error as Error).message}`);
    return;
  }
  openedName = name;
  element('name').textContent = name;
  element('figure-time').textContent = '–';
  show(undefined);
  views.forEach((view) => view.showAll());
  await unwrap();
}

async function openFile(file: File | undefined): Promise<void> {
  if (!file)
    return;
  try {
    await open(file.name, await file.arrayBuffer());
  } catch (error) {
    showFault(`${file.name}: ${(error as Error).message}`);
  }
}

function download(blob: Blob, extension: string): void {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(blob);
  link.download = openedName.replace(/\.[^.]*$/, '') + extension;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
  say(`Saved ${link.download}.`);
}

async function save(kind: string): Promise<void> {
  if (!shown)
    return;
  const { atlas, surface, width, height } = shown;
  try {
    if (kind === 'svg')
      download(new Blob([layoutSvg(surface, width, height)], { type: 'image/svg+xml' }), '_layout.svg');
    else if (kind === 'png')
      download(await layoutPng(atlas, surface, width, height), '_layout.png');
    else {
      const { saved } = await files.ask({ save: { kind: kind as 'glb' | 'obj', atlas } });
      download(new Blob([saved! as Uint8Array<ArrayBuffer>], { type: kind === 'glb' ? 'model/gltf-binary' : 'model/obj' }), `_uv.${kind}`);
    }
  } catch (error) {
    showFault((error as Error).message);
  }
}

/** Steps through the charts. */
function step(by: number): void {
  const count = shown?.atlas.chartCount ?? 0;
  if (count)
    light(kept = kept < 0 ? (by > 0 ? 0 : count - 1) : (kept + by + count) % count);
}

function connectViews(): void {
  for (const view of views)
    view.onPoint = (chart, chosen) => {
      if (chosen)
        kept = chart === kept ? -1 : chart;
      light(chart >= 0 ? chart : kept);
    };
  for (const id of ['surface', 'texture'])
    element(id).addEventListener('keydown', (event) => {
      if (event.key === '.' || event.key === ',')
        step(event.key === '.' ? 1 : -1);
      else if (event.key === 'Escape')
        light(kept = -1);
    });
  const theme = () => {
    const style = getComputedStyle(document.documentElement), value = (name: string) => style.getPropertyValue(name).trim();
    views.forEach((view) => view.setTheme({ ground: value('--sunken'), seam: value('--control') }));
  };
  matchMedia('(prefers-color-scheme: light)').addEventListener('change', theme);
  theme();
  element('modes').addEventListener('change', () => {
    const mode = checked('mode') as Mode;
    views.forEach((view) => view.setMode(mode));
    element('legend').hidden = mode !== 'stretch';
  });
}

function connectSettings(): void {
  for (const id of ['width', 'height'])
    for (const size of SIZES)
      element<HTMLSelectElement>(id).add(new Option(`${size}`, `${size}`, size === 1024, size === 1024));
  let timer = 0;
  element('settings').addEventListener('input', () => {
    element('stretch-value').textContent = Number(input('stretch').value).toFixed(2);
    input('angle').disabled = !input('hard').checked;
    clearTimeout(timer);
    timer = window.setTimeout(unwrap, 250);
  });
  element('settings').addEventListener('submit', (event) => {
    event.preventDefault();
    clearTimeout(timer);
    void unwrap();
  });
  button('cancel').addEventListener('click', () => run?.abort());
}

function connectFiles(): void {
  button('open').addEventListener('click', () => input('file').click());
  input('file').addEventListener('change', () => {
    void openFile(input('file').files?.[0]);
    input('file').value = '';
  });
  button('sample').addEventListener('click', () => void openSample());
  for (const kind of ['glb', 'obj', 'svg', 'png'])
    button(`save-${kind}`).addEventListener('click', () => void save(kind));
  let depth = 0; // enter and leave come for every element on the way
  const drag = (change: number) => document.body.classList.toggle('dragging', (depth += change) > 0);
  addEventListener('dragenter', () => drag(1));
  addEventListener('dragleave', () => drag(-1));
  addEventListener('dragover', (event) => event.preventDefault());
  addEventListener('drop', (event) => {
    event.preventDefault();
    drag(-depth);
    void openFile(event.dataTransfer?.files[0]);
  });
}

const openSample = () => open('vase.obj', sampleObj().buffer as ArrayBuffer);

connectViews();
connectSettings();
connectFiles();
void openSample();
