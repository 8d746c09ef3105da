import type { Mesh } from './types.js';
import { weldRange } from './weld.js';

/**
 * Cuts at edges bent by at least `angle` degrees, for `Mesh.cuts`. Edges of one face or of more than two stay as they
 * are. Faces are compared by their mean normals (Newell, as described by Sutherland, Sproull and Schumacker, "A
 * characterization of ten hidden-surface algorithms", 1974).
 */
export function hardEdges(mesh: Mesh, angle: number): Uint8Array {
  const { indices, positions } = mesh, corners = indices.length;
  const offsets = mesh.offsets ?? Uint32Array.from({ length: corners / 3 + 1 }, (_, i) => 3 * i);
  const place = Uint32Array.from({ length: positions.length / 3 }, (_, v) => v);
  if (mesh.weld !== false)
    weldRange(positions, 0, place.length, place);
  const limit = Math.cos(angle * Math.PI / 180) + 1e-7;
  const cuts = new Uint8Array(corners), normals = new Float64Array(3 * (offsets.length - 1));
  const edges = new Map<number, number[]>(), vertices = positions.length / 3, faceOf = new Uint32Array(corners);
  for (let p = 0; p + 1 < offsets.length; ++p)
    for (let c = offsets[p]!, last = offsets[p + 1]! - 1; c <= last; ++c) {
      const next = c === last ? offsets[p]! : c + 1, a = indices[c]!, b = indices[next]!;
      for (let k = 0; k < 3; ++k) {
        const i = (k + 1) % 3, j = (k + 2) % 3;
        normals[3 * p + k]! += (positions[3 * a + i]! - positions[3 * b + i]!) * (positions[3 * a + j]! + positions[3 * b + j]!);
      }
      const low = Math.min(place[a]!, place[b]!), high = Math.max(place[a]!, place[b]!);
      faceOf[c] = p;
      const key = low * vertices + high, users = edges.get(key);
      if (users)
        users.push(c);
      else
        edges.set(key, [c]);
    }
  for (const users of edges.values())
    if (users.length === 2 && cosine(normals, faceOf[users[0]!]!, faceOf[users[1]!]!) <= limit)
      cuts[users[0]!] = cuts[users[1]!] = 1;
  return cuts;
}

function cosine(normals: Float64Array, a: number, b: number): number {
  let dot = 0, lengths = [0, 0];
  for (let k = 0; k < 3; ++k) {
    const x = normals[3 * a + k]!, y = normals[3 * b + k]!;
    dot += x * y;
    lengths = [lengths[0]! + x * x, lengths[1]! + y * y];
  }
  const product = Math.sqrt(lengths[0]! * lengths[1]!);
  return product > 0 ? dot / product : 1; // faces without area have no direction
}
