/** A mesh to play with until the user opens one: a vase with a twisted, fluted belly and two handles, as an OBJ file. */

type Point = [number, number, number];

/** Radius of the vase at height t, 0..1. */
function profile(t: number): number {
  const points: [number, number][] = [[0, 0.42], [0.06, 0.46], [0.12, 0.36], [0.3, 0.78], [0.52, 0.95], [0.72, 0.62], [0.85, 0.36], [0.94, 0.44], [1, 0.56]];
  const i = Math.max(1, points.findIndex(([at]) => at >= t)), [t0, r0] = points[i - 1]!, [t1, r1] = points[i]!;
  const s = (t - t0) / (t1 - t0), smooth = s * s * (3 - 2 * s);
  return r0 + (r1 - r0) * smooth;
}

class Obj {
  private readonly vertices: string[] = [];
  private readonly faces: string[] = [];
  vertex(p: Point): number {
    return this.vertices.push(`v ${p.map((x) => x.toFixed(5)).join(' ')}`);
  }
  face(...corners: number[]): void {
    this.faces.push(`f ${corners.join(' ')}`);
  }
  /** Quads between closed rings of vertices. */
  rings(rings: number[][]): void {
    for (let j = 0; j + 1 < rings.length; ++j)
      for (let i = 0, n = rings[j]!.length; i < n; ++i)
        this.face(rings[j]![i]!, rings[j]![(i + 1) % n]!, rings[j + 1]![(i + 1) % n]!, rings[j + 1]![i]!);
  }
  text(): string {
    return ['# sample of the Tessora page', ...this.vertices, ...this.faces].join('\n') + '\n';
  }
}

function body(obj: Obj): void {
  const around = 96, up = 72, outside: number[][] = [];
  for (let j = 0; j <= up; ++j) {
    const t = j / up, flute = 0.05 * Math.sin(Math.PI * Math.min(1, Math.max(0, (t - 0.12) / 0.7))) ** 2;
    outside.push(Array.from({ length: around }, (_, i) => {
      const a = 2 * Math.PI * i / around, r = profile(t) * (1 + flute * Math.cos(12 * (a - 1.4 * t)));
      return obj.vertex([r * Math.cos(a), 2.4 * t, -r * Math.sin(a)]);
    }));
  }
  const inside = Array.from({ length: 24 }, (_, j) => Array.from({ length: around }, (_, i) => {
    const t = 1 - j / 30, a = 2 * Math.PI * i / around, r = 0.9 * profile(t);
    return obj.vertex([r * Math.cos(a), 2.4 * t - (j === 0 ? 0 : 0.01), -r * Math.sin(a)]);
  }));
  obj.rings(outside);
  obj.rings([outside[up]!, ...inside]);
  obj.face(...[...outside[0]!].reverse());
}

function handle(obj: Obj, side: number): void {
  const rings = Array.from({ length: 33 }, (_, j) => {
    const a = Math.PI * (0.62 - 1.24 * j / 32), x = 0.5 + 0.62 * Math.cos(a), y = 1.72 + 0.46 * Math.sin(a);
    const out: Point = [Math.cos(a), Math.sin(a), 0];
    return Array.from({ length: 14 }, (_, i) => {
      const b = 2 * Math.PI * i / 14, r = 0.085 + 0.02 * Math.cos(2 * b);
      return obj.vertex([side * (x + r * Math.cos(b) * out[0]), y + r * Math.cos(b) * out[1], side * r * Math.sin(b)]);
    });
  });
  obj.rings(rings.map((ring) => [...ring].reverse()));
  obj.face(...rings[0]!);
  obj.face(...[...rings[32]!].reverse());
}

export function sampleObj(): Uint8Array {
  const obj = new Obj();
  body(obj);
  handle(obj, 1);
  handle(obj, -1);
  return new TextEncoder().encode(obj.text());
}
