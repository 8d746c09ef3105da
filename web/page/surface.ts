/** What is drawn: triangles with their colours, seams, and the figures beside the views. */
import type { Opened } from './files.js';
import type { Atlas } from '../src/types.js';

export interface Surface {
  /** Per drawn corner, three corners per triangle. */
  positions: Float32Array;
  normals: Float32Array;
  /** -1 before the mesh is unwrapped. */
  charts: Float32Array;
  uvs: Float32Array;
  /** L2 stretch of the triangle less 1; 0 is an isometry. */
  stretch: Float32Array;
  /** Ends of the chart borders, in space and in the texture; the chart of each. */
  seams: Float32Array;
  seamUvs: Float32Array;
  seamCharts: Float32Array;
  center: [number, number, number];
  figures: Figures;
}

export interface Figures {
  /** Share of the texture that charts cover, 0..1. */
  used: number;
  /** Length of all seams, each counted once, over the diagonal of the mesh's box. */
  seams: number;
  /** Per chart: triangles, and share of the texture. */
  chartFaces: Uint32Array;
  chartArea: Float64Array;
}

/** Fans of the polygons, to show a mesh before the engine has divided it. */
function fans(opened: Opened): Uint32Array {
  const { indices, offsets } = opened.mesh, triangles: number[] = [];
  if (!offsets)
    return Uint32Array.from(indices, (_, c) => c);
  for (let p = 0; p + 1 < offsets.length; ++p)
    for (let c = offsets[p]! + 1; c + 1 < offsets[p + 1]!; ++c)
      triangles.push(offsets[p]!, c, c + 1);
  return Uint32Array.from(triangles);
}

/** First triangle of each face. */
function firstTriangles(opened: Opened): (face: number) => number {
  const { offsets } = opened.mesh;
  return offsets ? (face) => offsets[face]! - 2 * face : (face) => face;
}

/** Area-weighted normals per vertex; a face bent away from one by more than 40 degrees keeps its own. */
function normalsOf(positions: ArrayLike<number>, indices: Uint32Array, triangles: Uint32Array): Float32Array {
  const faces = new Float32Array(triangles.length), vertices = new Float64Array(positions.length);
  for (let t = 0; t < triangles.length; t += 3) {
    const [a, b, c] = [0, 1, 2].map((k) => 3 * indices[triangles[t + k]!]!) as [number, number, number];
    const p = [0, 1, 2].map((k) => positions[b + k]! - positions[a + k]!), q = [0, 1, 2].map((k) => positions[c + k]! - positions[a + k]!);
    for (let k = 0; k < 3; ++k) {
      const n = p[(k + 1) % 3]! * q[(k + 2) % 3]! - p[(k + 2) % 3]! * q[(k + 1) % 3]!;
      faces[t + k] = n;
      for (const vertex of [a, b, c])
        vertices[vertex + k]! += n;
    }
  }
  const normals = new Float32Array(3 * triangles.length);
  for (let t = 0; t < triangles.length; t += 3) {
    const length = Math.hypot(faces[t]!, faces[t + 1]!, faces[t + 2]!) || 1;
    for (let k = 0; k < 3; ++k) {
      const vertex = 3 * indices[triangles[t + k]!]!, whole = Math.hypot(vertices[vertex]!, vertices[vertex + 1]!, vertices[vertex + 2]!) || 1;
      let cosine = 0;
      for (let i = 0; i < 3; ++i)
        cosine += faces[t + i]! * vertices[vertex + i]! / (length * whole);
      for (let i = 0; i < 3; ++i)
        normals[3 * (t + k) + i] = cosine < 0.766 ? faces[t + i]! / length : vertices[vertex + i]! / whole;
    }
  }
  return normals;
}

/** L2 stretch less 1 of each triangle, with `scale` texture units per unit of length. */
function stretchOf(point: (corner: number, k: number) => number, uv: (corner: number, k: number) => number, triangles: Uint32Array, scale: number): Float32Array {
  const stretch = new Float32Array(triangles.length / 3);
  for (let t = 0; t < stretch.length; ++t) {
    const [a, b, c] = triangles.subarray(3 * t, 3 * t + 3) as unknown as [number, number, number];
    const p = [0, 1, 2].map((k) => point(b, k) - point(a, k)), q = [0, 1, 2].map((k) => point(c, k) - point(a, k));
    const pp = dot(p, p), pq = dot(p, q), qq = dot(q, q), height = Math.sqrt(Math.max(0, qq - pq * pq / pp));
    // From the triangle in its own plane, (0,0) (|p|,0) (q.p/|p|,height), to the texture.
    const u = [(uv(b, 0) - uv(a, 0)) / scale, (uv(b, 1) - uv(a, 1)) / scale], v = [(uv(c, 0) - uv(a, 0)) / scale, (uv(c, 1) - uv(a, 1)) / scale];
    const along = Math.sqrt(pp), x = [u[0]! / along, u[1]! / along];
    const y = [0, 1].map((k) => (v[k]! - x[k]! * pq / along) / height);
    const determinant = x[0]! * y[1]! - x[1]! * y[0]!;
    // The inverse map's singular values: the sum of their squares is the Frobenius norm over the determinant.
    const l2 = Math.sqrt((dot(x, x) + dot(y, y)) / 2) / Math.abs(determinant);
    stretch[t] = Number.isFinite(l2) ? Math.max(0, l2 - 1) : 0;
  }
  return stretch;
}

const dot = (a: number[], b: number[]) => a.reduce((sum, x, i) => sum + x * b[i]!, 0);

/** Corners whose edge to the triangle's next corner is on the border of a chart, as 3 t + k. */
function borders(triangles: Uint32Array, indices: Uint32Array, count: number): number[] {
  const edges = new Map<number, number>(), next = (c: number) => c % 3 === 2 ? c - 2 : c + 1;
  const key = (a: number, b: number) => a * count + b;
  for (let c = 0; c < triangles.length; ++c)
    edges.set(key(indices[triangles[c]!]!, indices[triangles[next(c)]!]!), c);
  const found: number[] = [];
  for (let c = 0; c < triangles.length; ++c)
    if (!edges.has(key(indices[triangles[next(c)]!]!, indices[triangles[c]!]!)))
      found.push(c);
  return found;
}

/** The drawing of a mesh, with its atlas if there is one. `width` and `height` are the texture's. */
export function surfaceOf(opened: Opened, atlas: Atlas | undefined, width: number, height: number): Surface {
  const { positions, indices } = opened.mesh, triangles = atlas?.triangles ?? fans(opened);
  const first = firstTriangles(opened), side = Math.max(width, height);
  const count = opened.instances.reduce((sum, { firstFace, endFace }) => sum + first(endFace) - first(firstFace), 0);
  const normals = normalsOf(positions, indices, triangles);
  const uv = (corner: number, k: number) => atlas!.uvs[2 * atlas!.indices[corner]! + k]! * (k ? height : width) / side;
  const point = (corner: number, k: number) => positions[3 * indices[corner]! + k]!;
  const stretch = atlas ? stretchOf(point, uv, triangles, textureScale(point, uv, triangles)) : new Float32Array(triangles.length / 3);
  const drawn: Surface = {
    positions: new Float32Array(9 * count), normals: new Float32Array(9 * count), charts: new Float32Array(3 * count).fill(-1),
    uvs: new Float32Array(6 * count), stretch: new Float32Array(3 * count),
    seams: new Float32Array(), seamUvs: new Float32Array(), seamCharts: new Float32Array(),
    center: [0, 0, 0],
    figures: { used: 0, seams: 0, chartFaces: new Uint32Array(atlas?.chartCount ?? 0), chartArea: new Float64Array(atlas?.chartCount ?? 0) },
  };
  let at = 0;
  for (const { firstFace, endFace, matrix: m } of opened.instances)
    for (let c = 3 * first(firstFace); c < 3 * first(endFace); ++c, ++at) {
      const corner = triangles[c]!;
      for (let r = 0; r < 3; ++r) {
        drawn.positions[3 * at + r] = m[r]! * point(corner, 0) + m[4 + r]! * point(corner, 1) + m[8 + r]! * point(corner, 2) + m[12 + r]!;
        drawn.normals[3 * at + r] = m[r]! * normals[3 * c]! + m[4 + r]! * normals[3 * c + 1]! + m[8 + r]! * normals[3 * c + 2]!;
      }
      if (!atlas)
        continue;
      drawn.uvs[2 * at] = atlas.uvs[2 * atlas.indices[corner]!]!;
      drawn.uvs[2 * at + 1] = atlas.uvs[2 * atlas.indices[corner]! + 1]!;
      drawn.charts[at] = atlas.charts[(c - c % 3) / 3]!;
      drawn.stretch[at] = stretch[(c - c % 3) / 3]!;
    }
  addExtent(drawn);
  if (atlas)
    addAtlas(drawn, opened, atlas, point);
  return drawn;
}

/** Texture units per unit of length: charts have the area of their triangles. */
function textureScale(point: (corner: number, k: number) => number, uv: (corner: number, k: number) => number, triangles: Uint32Array): number {
  let space = 0, texture = 0;
  for (let t = 0; t < triangles.length; t += 3) {
    const [a, b, c] = triangles.subarray(t, t + 3) as unknown as [number, number, number];
    const p = [0, 1, 2].map((k) => point(b, k) - point(a, k)), q = [0, 1, 2].map((k) => point(c, k) - point(a, k));
    space += Math.sqrt(Math.max(0, dot(p, p) * dot(q, q) - dot(p, q) ** 2));
    texture += Math.abs((uv(b, 0) - uv(a, 0)) * (uv(c, 1) - uv(a, 1)) - (uv(b, 1) - uv(a, 1)) * (uv(c, 0) - uv(a, 0)));
  }
  return Math.sqrt(texture / space) || 1;
}

function addExtent(drawn: Surface): void {
  const low = [Infinity, Infinity, Infinity], high = [-Infinity, -Infinity, -Infinity];
  drawn.positions.forEach((x, i) => {
    low[i % 3] = Math.min(low[i % 3]!, x);
    high[i % 3] = Math.max(high[i % 3]!, x);
  });
  drawn.center = [0, 1, 2].map((k) => (low[k]! + high[k]!) / 2) as Surface['center'];
}

function addAtlas(drawn: Surface, opened: Opened, atlas: Atlas, point: (corner: number, k: number) => number): void {
  const { triangles } = atlas, { figures } = drawn, { indices } = opened.mesh, first = firstTriangles(opened);
  const found = borders(triangles, atlas.indices, atlas.vertices.length), next = (c: number) => c % 3 === 2 ? c - 2 : c + 1;
  const space: number[] = [], texture: number[] = [], charts: number[] = [], ends = new Map<number, number>();
  for (const { firstFace, endFace, matrix: m } of opened.instances)
    for (const c of found) {
      if (c < 3 * first(firstFace) || c >= 3 * first(endFace))
        continue;
      for (const corner of [triangles[c]!, triangles[next(c)]!]) {
        for (let r = 0; r < 3; ++r)
          space.push(m[r]! * point(corner, 0) + m[4 + r]! * point(corner, 1) + m[8 + r]! * point(corner, 2) + m[12 + r]!);
        texture.push(atlas.uvs[2 * atlas.indices[corner]!]!, atlas.uvs[2 * atlas.indices[corner]! + 1]!);
        charts.push(atlas.charts[(c - c % 3) / 3]!);
      }
    }
  drawn.seams = Float32Array.from(space);
  drawn.seamUvs = Float32Array.from(texture);
  drawn.seamCharts = Float32Array.from(charts);

  // A seam has two sides, a border of the mesh one: only the former is counted, once.
  let low = [Infinity, Infinity, Infinity], high = [-Infinity, -Infinity, -Infinity], length = 0;
  for (const c of found) {
    const [a, b] = [triangles[c]!, triangles[next(c)]!], [i, j] = [indices[a]!, indices[b]!];
    const key = Math.min(i, j) * (opened.mesh.positions.length / 3) + Math.max(i, j);
    ends.set(key, (ends.get(key) ?? 0) + 1);
    if (ends.get(key) === 2)
      length += Math.hypot(...[0, 1, 2].map((k) => point(a, k) - point(b, k)));
  }
  for (let c = 0; c < triangles.length; ++c) {
    const corner = triangles[c]!;
    low = low.map((x, k) => Math.min(x, point(corner, k)));
    high = high.map((x, k) => Math.max(x, point(corner, k)));
  }
  figures.seams = length / (Math.hypot(...high.map((x, k) => x - low[k]!)) || 1);
  for (let t = 0; t < atlas.charts.length; ++t) {
    const [a, b, c] = [0, 1, 2].map((k) => 2 * atlas.indices[triangles[3 * t + k]!]!) as [number, number, number], { uvs } = atlas;
    const area = Math.abs((uvs[b]! - uvs[a]!) * (uvs[c + 1]! - uvs[a + 1]!) - (uvs[b + 1]! - uvs[a + 1]!) * (uvs[c]! - uvs[a]!)) / 2;
    figures.used += area;
    figures.chartArea[atlas.charts[t]!]! += area;
    ++figures.chartFaces[atlas.charts[t]!]!;
  }
}
