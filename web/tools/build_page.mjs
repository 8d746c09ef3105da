// Builds the page into a folder that any static web server can offer: node web/tools/build_page.mjs OUTPUT
import { build } from 'esbuild';
import { copyFileSync, mkdirSync, rmSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const web = resolve(dirname(fileURLToPath(import.meta.url)), '..'), output = resolve(process.argv[2]);
rmSync(output, { recursive: true, force: true });
mkdirSync(output, { recursive: true });
await build({
  entryPoints: { main: join(web, 'page/main.ts'), files: join(web, 'page/files.ts'), thread: join(web, 'dist/thread.js') },
  outdir: output, bundle: true, minify: true, format: 'esm', target: 'es2022', logLevel: 'warning', legalComments: 'linked',
  external: ['node:*'],
});
for (const name of ['index.html', 'style.css', 'icon.svg'])
  copyFileSync(join(web, 'page', name), join(output, name));
copyFileSync(join(web, 'dist/tessora.wasm'), join(output, 'tessora.wasm'));
