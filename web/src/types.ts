/** The shapes of what goes in and out; the functions are in index.ts. */

/** Faces over shared vertices. */
export interface Mesh {
  /** Three per vertex, any unit. Give double precision if you have it. */
  positions: Float32Array | Float64Array | readonly number[];
  /** Vertex of each corner. Without `offsets`, each three corners are a triangle. */
  indices: Uint32Array | Uint16Array | Uint8Array | readonly number[];
  /**
   * Polygons of any size: polygon p has the corners offsets[p] .. offsets[p + 1] - 1. One entry more than there are
   * polygons; the first is 0, the last the number of corners.
   */
  offsets?: Uint32Array | readonly number[];
  /** Per corner: not 0 if the edge from it to the polygon's next corner is to become a seam. */
  cuts?: Uint8Array | readonly number[];
  /** Three per vertex, or per corner if there are as many: an edge becomes a seam where they differ across it. */
  normals?: Float32Array | Float64Array | readonly number[];
  /**
   * Treats vertices at equal positions as one when it looks for neighbours. Files that split vertices at normals or
   * old texture coordinates (glTF and most game formats) need it. Default true.
   */
  weld?: boolean;
}

export interface Options {
  /** Largest stretch of a chart, 0 (none) to 1 (any): the share of the sampling rate that may be lost. Default 0.15. */
  stretch?: number;
  /** Sides of the texture in texels. Default 512. */
  width?: number;
  height?: number;
  /** Least distance between two charts in texels. Default 2. */
  gutter?: number;
  /** `quality` looks for fewer charts and shorter seams, and takes about three times as long. Default `fast`. */
  quality?: 'fast' | 'quality';
  /** More charts than this are an error. Default 0: no limit. */
  maxCharts?: number;
  /** Lets copies of a sheet share its place in the texture. Default false. */
  stack?: boolean;
  /** Cuts large charts in two where all charts can then be larger. Default false. */
  cutToPack?: boolean;
  /** For the layout, 0 to 10; each step from 4 on about doubles the time. In quality mode more makes other cuts. Default 4. */
  effort?: number;
}

/** New texture coordinates. Corners and their order are the mesh's. */
export interface Atlas {
  /** Two per new vertex, in 0..1; (0, 0) is the lower left corner of the texture. */
  uvs: Float32Array;
  /** New vertex of each corner. */
  indices: Uint32Array;
  /** Per new vertex: the vertex of the mesh it is a copy of. */
  vertices: Uint32Array;
  /** The triangles that the polygons were divided into, three corners each. A triangle mesh's are its own. */
  triangles: Uint32Array;
  /** Chart of each triangle, less than chartCount. */
  charts: Uint32Array;
  chartCount: number;
  /** Reached by the worst chart; comparable with the option. */
  stretch: number;
  /** Triangles of charts over the limit, ascending: single polygons that cannot be flattened with less stretch. */
  overLimit: Uint32Array;
  /** Triangles that single precision collapsed or flipped, ascending; normally none. */
  lost: Uint32Array;
}

export interface PackOptions {
  /** Sides of one tile in texels. Default 512. */
  width?: number;
  height?: number;
  /** Least distance between two charts in texels. Default 2. */
  gutter?: number;
  /** 1 to 100 textures; tile i is moved by (i % 10, floor(i / 10)). Default 1. */
  tiles?: number;
  /** How charts may be turned. Default `any`. */
  turns?: 'any' | 'quarter' | 'none';
  /** Turns charts so that their straight borders follow the axes. Default false. */
  align?: boolean;
  /**
   * Texels per unit of length on the surface: charts keep their sizes relative to each other (`as-is`), all get the
   * same (`uniform`), or this many; what does not fit then is an error. Default `as-is`.
   */
  density?: 'as-is' | 'uniform' | number;
  /** Charts of one shape share a place: after a turn and a shift, or also after turning them over. Default `none`. */
  stack?: 'none' | 'congruent' | 'mirrored';
  /** 0 to 10; every step doubles the time for the search. Default 4. */
  effort?: number;
  /** Default `quality`. */
  quality?: 'fast' | 'quality';
  /** Per polygon the number of its chart, any numbers. Without it, polygons with a connected corner are one chart. */
  charts?: Uint32Array | readonly number[];
  /** Per polygon: not 0 if its chart stays where it is; the others are packed around it. */
  keep?: Uint8Array | readonly number[];
}

/** Packed charts. */
export interface PackedAtlas extends Atlas {
  /** Per tile: the area of its charts over its own. */
  coverage: Float64Array;
  /** Mean density of the packed charts. */
  texelsPerUnit: number;
  /** Tile of each chart. */
  tiles: Uint32Array;
  /** Per chart the one in whose place it lies, 0xffffffff if none. */
  stackedOn: Uint32Array;
}
