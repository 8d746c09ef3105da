/** The worker's side of worker.ts. */
import { load, TessoraError, type Tessora } from './index.js';
import type { Answer, Request } from './worker.js';

let engine: Promise<Tessora> | undefined;

/** Arrays of which the answer's receiver becomes the owner. */
const buffers = (answer: Answer) =>
  'atlas' in answer ? Object.values(answer.atlas).flatMap((value) => ArrayBuffer.isView(value) ? [value.buffer as ArrayBuffer] : []) : [];

async function run(request: Request, post: (answer: Answer) => void): Promise<void> {
  const { id } = request;
  try {
    const tessora = await (engine ??= load());
    const onProgress = (progress: number, stage: string) => post({ id, progress, stage });
    post({ id, atlas: tessora.unwrap(request.mesh, { ...request.options, onProgress }) });
  } catch (error) {
    const { message } = error as Error;
    const known = error instanceof TessoraError;
    post({ id, error: { message, status: known ? error.status : undefined, element: known ? error.element : undefined } });
  }
}

if (typeof self === 'object' && typeof self.postMessage === 'function') {
  self.onmessage = (event: MessageEvent<Request>) =>
    void run(event.data, (answer) => self.postMessage(answer, { transfer: buffers(answer) }));
} else {
  const { parentPort } = await import('node:worker_threads');
  parentPort!.on('message', (request: Request) =>
    void run(request, (answer) => parentPort!.postMessage(answer, buffers(answer))));
}
