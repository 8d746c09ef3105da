/** Joins vertices at equal positions for the engine, and takes its result apart again. */
import type { Atlas } from './types.js';

/** Per vertex in [begin, end) the first of them at its position. Written into `first`. */
export function weldRange(positions: ArrayLike<number>, begin: number, end: number, first: Uint32Array): void {
  let capacity = 16;
  while (capacity < 2 * (end - begin))
    capacity *= 2;
  const table = new Uint32Array(capacity); // vertex + 1, 0 if empty; open addressing
  const point = new Float64Array(3), bits = new Int32Array(point.buffer);
  for (let v = begin; v < end; ++v) {
    // Adding 0 makes -0 and 0 equal.
    const x = point[0] = positions[3 * v]! + 0, y = point[1] = positions[3 * v + 1]! + 0, z = point[2] = positions[3 * v + 2]! + 0;
    let hash = 0;
    for (let i = 0; i < 6; ++i) {
      hash = Math.imul(hash ^ bits[i]!, 0x9e3779b1);
      hash ^= hash >>> 15;
    }
    let slot = hash & (capacity - 1);
    for (;;) {
      const other = table[slot]! - 1;
      if (other < 0) {
        table[slot] = v + 1;
        first[v] = v;
        break;
      }
      if (positions[3 * other]! === x && positions[3 * other + 1]! === y && positions[3 * other + 2]! === z) {
        first[v] = other;
        break;
      }
      slot = (slot + 1) & (capacity - 1);
    }
  }
}

/**
 * An atlas of welded vertices as one of the original ones: its vertices are split wherever corners at one of them had
 * different originals.
 */
export function splitByOriginal(atlas: Atlas, originals: ArrayLike<number>): Atlas {
  const indices = new Uint32Array(originals.length), vertices: number[] = [], source: number[] = [];
  // Per engine vertex a list of its copies: usually one or two.
  const newest = new Int32Array(atlas.vertices.length).fill(-1), older: number[] = [];
  for (let c = 0; c < indices.length; ++c) {
    const vertex = atlas.indices[c]!, original = originals[c]!;
    let copy = newest[vertex]!;
    while (copy >= 0 && vertices[copy] !== original)
      copy = older[copy]!;
    if (copy < 0) {
      copy = vertices.length;
      older.push(newest[vertex]!);
      newest[vertex] = copy;
      vertices.push(original);
      source.push(vertex);
    }
    indices[c] = copy;
  }
  const uvs = new Float32Array(2 * vertices.length);
  source.forEach((vertex, i) => uvs.set(atlas.uvs.subarray(2 * vertex, 2 * vertex + 2), 2 * i));
  return { ...atlas, uvs, indices, vertices: Uint32Array.from(vertices) };
}
