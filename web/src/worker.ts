/**
 * Unwraps in a worker, so that a page stays responsive and a run can be cancelled. Works in browsers (module workers)
 * and in Node.
 */
import { TessoraError, type Status } from './error.js';
import type { Atlas, Mesh, Options } from './types.js';

export interface RunOptions extends Options {
  /** Cancels the run; the promise is then rejected with the signal's reason. */
  signal?: AbortSignal;
  /** Called with the fraction that is done, 0..1, and the stage that goes on, at least twice a second. */
  onProgress?: (fraction: number, stage: string) => void;
}

/** What a thread is told. @internal */
export interface Request {
  id: number;
  mesh: Mesh;
  options: Options;
}

/** What it answers. @internal */
export type Answer =
  | { id: number; progress: number; stage: string }
  | { id: number; atlas: Atlas }
  | { id: number; error: { message: string; status?: Status; element?: number } };

/** A thread of either system. */
interface Thread {
  post(request: Request): void;
  /** Nothing runs: the thread need not keep the program alive. */
  rest(): void;
  end(): void;
}

async function startThread(onAnswer: (answer: Answer) => void, onError: (error: Error) => void): Promise<Thread> {
  if (typeof Worker === 'function') {
    const worker = new Worker(new URL('./thread.js', import.meta.url), { type: 'module', name: 'tessora' });
    worker.onmessage = (event) => onAnswer(event.data as Answer);
    worker.onerror = (event) => {
      event.preventDefault();
      onError(new Error(event.message || 'the worker could not be started'));
    };
    return { post: (request) => worker.postMessage(request), rest: () => {}, end: () => worker.terminate() };
  }
  const threads = await import('node:worker_threads');
  // Without the program's own flags, of which some refuse files.
  const worker = new threads.Worker(new URL('./thread.js', import.meta.url), { execArgv: [] });
  worker.on('message', onAnswer);
  worker.on('error', onError);
  return {
    post: (request) => {
      worker.ref();
      worker.postMessage(request);
    },
    rest: () => worker.unref(),
    end: () => void worker.terminate(),
  };
}

interface Job {
  request: Request;
  options: RunOptions;
  resolve: (atlas: Atlas) => void;
  reject: (reason: unknown) => void;
}

/**
 * Runs one unwrap after the other in a worker of its own.
 *
 *     const worker = new UnwrapWorker();
 *     const atlas = await worker.unwrap(mesh, { stretch: 0.1, signal, onProgress: (f) => bar.value = f });
 */
export class UnwrapWorker {
  private thread: Promise<Thread> | undefined;
  private running: Job | undefined;
  private readonly waiting: Job[] = [];
  private lastId = 0;

  /**
   * Unwraps as `Tessora.unwrap` does. The mesh's arrays are copied to the worker and stay usable. Cancelling ends the
   * worker at once, wherever it is; the next run starts a new one.
   */
  unwrap(mesh: Mesh, options: RunOptions = {}): Promise<Atlas> {
    const { signal, onProgress: _, ...plain } = options;
    return new Promise((resolve, reject) => {
      if (signal?.aborted)
        return reject(signal.reason);
      const job: Job = { request: { id: ++this.lastId, mesh, options: plain }, options, resolve, reject };
      signal?.addEventListener('abort', () => this.cancel(job), { once: true });
      this.waiting.push(job);
      this.next();
    });
  }

  /** Ends the worker. Runs that have not finished are rejected. */
  close(): void {
    const jobs = [...(this.running ? [this.running] : []), ...this.waiting.splice(0)];
    this.endThread();
    for (const job of jobs)
      job.reject(new TessoraError('the worker was closed', 'cancelled'));
  }

  private next(): void {
    if (this.running || this.waiting.length === 0)
      return;
    const job = this.running = this.waiting.shift()!;
    this.thread ??= startThread((answer) => this.receive(answer), (error) => this.fail(error));
    this.thread.then((thread) => {
      if (this.running === job)
        thread.post(job.request);
    }).catch((error) => this.fail(error));
  }

  private receive(answer: Answer): void {
    const job = this.running;
    if (!job || job.request.id !== answer.id)
      return;
    if ('progress' in answer)
      return job.options.onProgress?.(answer.progress, answer.stage);
    this.running = undefined;
    void this.thread?.then((thread) => this.running || thread.rest());
    if ('atlas' in answer)
      job.resolve(answer.atlas);
    else
      job.reject(new TessoraError(answer.error.message, answer.error.status, answer.error.element));
    this.next();
  }

  private fail(error: unknown): void {
    const job = this.running;
    this.endThread();
    job?.reject(error);
    this.next();
  }

  private cancel(job: Job): void {
    const place = this.waiting.indexOf(job);
    if (place >= 0)
      this.waiting.splice(place, 1);
    else if (this.running === job)
      this.endThread();
    else
      return;
    job.reject(job.options.signal!.reason);
    this.next();
  }

  private endThread(): void {
    this.running = undefined;
    void this.thread?.then((thread) => thread.end(), () => {});
    this.thread = undefined;
  }
}
