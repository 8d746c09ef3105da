import { execFile } from 'node:child_process';
import { existsSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

export const web = resolve(dirname(fileURLToPath(import.meta.url)), '..');
const program = process.env.TESSORA ?? join(web, '../build/release/bin/tessora');

/** Runs the native program. */
export async function tessora(...args) {
  if (!existsSync(program))
    throw new Error(`${program} is missing; build it or set TESSORA`);
  return promisify(execFile)(program, args);
}

/** A folder that is removed at the end of the test. */
export function scratch(t) {
  const folder = mkdtempSync(join(tmpdir(), 'tessora-web-'));
  t.after(() => rmSync(folder, { recursive: true, force: true, maxRetries: 3 }));
  return folder;
}
