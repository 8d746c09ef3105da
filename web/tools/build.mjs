// Completes dist/ after the compiler: the engine, and the licences of what it contains.
import { copyFileSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const web = resolve(dirname(fileURLToPath(import.meta.url)), '..'), top = resolve(web, '..');
mkdirSync(join(web, 'dist'), { recursive: true });
copyFileSync(join(top, 'build/wasm/bin/tessora.wasm'), join(web, 'dist/tessora.wasm'));
copyFileSync(join(top, 'LICENSE'), join(web, 'LICENSE'));

/** The paragraphs of a Debian copyright file that begin with "License:" and one of the names. */
function paragraphs(file, names) {
  return readFileSync(file, 'utf8').split('\n\n').filter((text) => names.some((name) => text.startsWith(`License: ${name}\n`)))
    .map((text) => text.replace(/^ \.$/gm, '').replace(/^ /gm, '')).join('\n\n');
}

const texts = [
  ['Eigen: Mozilla Public License 2.0', readFileSync('/usr/share/common-licenses/MPL-2.0', 'utf8')],
  ['musl', readFileSync('/usr/share/emscripten/system/lib/libc/musl/COPYRIGHT', 'utf8')],
  ['LLVM parts and Emscripten', paragraphs('/usr/share/doc/emscripten/copyright', ['Expat', 'NCSA~LLVM', 'NCSA~Mozilla', 'Apache-2.0 with LLVM exception'])],
];
writeFileSync(join(web, 'LICENSES.md'), readFileSync(join(web, 'PARTS.md'), 'utf8') +
  texts.map(([title, text]) => `\n## ${title}\n\n\`\`\`\n${text.trim()}\n\`\`\`\n`).join(''));
