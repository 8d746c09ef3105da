// A static server and Debian's Chromium for the tests.
import { existsSync, mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { createServer } from 'node:http';
import { tmpdir } from 'node:os';
import { extname, join, normalize } from 'node:path';
import puppeteer from 'puppeteer-core';

const TYPES = { '.html': 'text/html', '.js': 'text/javascript', '.css': 'text/css', '.svg': 'image/svg+xml', '.wasm': 'application/wasm' };

/** Serves a folder on a free port of this machine. */
export async function serve(folder) {
  const server = createServer((request, response) => {
    const path = normalize(join(folder, new URL(request.url, 'http://localhost').pathname.replace(/\/$/, '/index.html')));
    if (!path.startsWith(folder) || !existsSync(path))
      return response.writeHead(404).end();
    response.writeHead(200, { 'content-type': TYPES[extname(path)] ?? 'application/octet-stream' }).end(readFileSync(path));
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  return { url: `http://127.0.0.1:${server.address().port}/`, close: () => server.close() };
}

/** A browser without a screen; WebGL is drawn in software. */
export async function launch() {
  const profile = mkdtempSync(join(tmpdir(), 'tessora-chromium-'));
  const browser = await puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', headless: true, userDataDir: profile, protocolTimeout: 120_000,
    args: ['--no-sandbox', '--disable-dev-shm-usage', '--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--ignore-gpu-blocklist'],
  });
  return { browser, close: async () => {
    await browser.close();
    rmSync(profile, { recursive: true, force: true, maxRetries: 3 });
  } };
}
