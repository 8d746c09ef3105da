// The glTF 2.0 files of Debian's package assimp-testmodels that pass the validator and hold triangles.
import { existsSync, readdirSync, readFileSync } from 'node:fs';
import { dirname, join, relative } from 'node:path';
import { unpartition } from '@gltf-transform/functions';
import validator from 'gltf-validator';

const FOLDER = '/usr/share/assimp/models/glTF2';

async function passes(path) {
  const report = await validator.validateBytes(new Uint8Array(readFileSync(path)), {
    externalResourceFunction: async (uri) => new Uint8Array(readFileSync(join(dirname(path), decodeURIComponent(uri)))),
  });
  return report.issues.numErrors === 0 && (report.info?.totalTriangleCount ?? 0) > 0;
}

/** { name, bytes } of each, as GLB. `io` is a NodeIO with the extensions. */
export async function assimpModels(io) {
  if (!existsSync(FOLDER))
    throw new Error(`${FOLDER} is missing: install assimp-testmodels`);
  const found = [];
  for (const name of readdirSync(FOLDER, { recursive: true }).filter((path) => /\.(glb|gltf)$/.test(path)).sort()) {
    const path = join(FOLDER, name);
    if (!await passes(path).catch(() => false))
      continue;
    const document = await io.read(path).catch(() => undefined);
    if (!document)
      continue; // needs a decoder that glTF-Transform does not bring
    await document.transform(unpartition()); // a GLB holds one buffer
    found.push({ name: relative(FOLDER, path), bytes: await io.writeBinary(document) });
  }
  return found;
}
