/** The layout as a picture: charts with their outlines, at the size of the texture. */
import type { Atlas } from '../src/types.js';
import type { Surface } from './surface.js';

/** As the views colour them. */
export function chartColor(chart: number): string {
  const fract = (x: number) => x - Math.floor(x), hue = fract(chart * 0.61803399 + 0.05), light = 0.62 + 0.13 * fract(chart * 0.7548777);
  const channel = (shift: number) => Math.round(255 * Math.min(1, 1.08 * (0.52 * light + 0.48 * (0.5 + 0.5 * Math.cos(2 * Math.PI * (hue + shift))))));
  return `rgb(${channel(0)} ${channel(0.33)} ${channel(0.67)})`;
}

/** Closed and open runs of border edges per chart, as lists of points in texels. */
function outlines(surface: Surface, width: number, height: number): Map<number, number[][]> {
  const { seamUvs, seamCharts } = surface, following = new Map<string, number[]>(), used = new Uint8Array(seamCharts.length / 2);
  const name = (i: number) => `${seamCharts[i]} ${seamUvs[2 * i]} ${seamUvs[2 * i + 1]}`;
  for (let e = 0; e < used.length; ++e)
    following.set(name(2 * e), [...(following.get(name(2 * e)) ?? []), e]);
  const found = new Map<number, number[][]>();
  for (let start = 0; start < used.length; ++start) {
    const line: number[] = [];
    for (let e: number | undefined = start; e !== undefined && !used[e]; e = following.get(name(2 * e + 1))?.find((other) => !used[other])) {
      used[e] = 1;
      line.push(seamUvs[4 * e]! * width, (1 - seamUvs[4 * e + 1]!) * height);
    }
    const chart = seamCharts[2 * start]!;
    if (line.length)
      found.set(chart, [...(found.get(chart) ?? []), line]);
  }
  return found;
}

export function layoutSvg(surface: Surface, width: number, height: number): string {
  const paths = [...outlines(surface, width, height)].map(([chart, lines]) => {
    const path = lines.map((line) => `M${line.map((x) => Number(x.toFixed(3))).join(' ')}Z`).join('');
    return `<path id="chart-${chart}" d="${path}" fill="${chartColor(chart)}"/>`;
  });
  return `<svg xmlns="http://www.w3.org/2000/svg" width="${width}" height="${height}" viewBox="0 0 ${width} ${height}">\n` +
    `<g fill-rule="evenodd" stroke="#10181f" stroke-width="0.5">\n${paths.join('\n')}\n</g>\n</svg>\n`;
}

/** With a transparent ground, for painting over. */
export async function layoutPng(atlas: Atlas, surface: Surface, width: number, height: number): Promise<Blob> {
  const canvas = document.createElement('canvas');
  canvas.width = width;
  canvas.height = height;
  const context = canvas.getContext('2d')!;
  context.strokeStyle = '#10181f';
  for (const [chart, lines] of outlines(surface, width, height)) {
    context.beginPath();
    for (const line of lines) {
      for (let i = 0; i < line.length; i += 2)
        context[i ? 'lineTo' : 'moveTo'](line[i]!, line[i + 1]!);
      context.closePath();
    }
    context.fillStyle = chartColor(chart);
    context.fill('evenodd');
    context.stroke();
  }
  return new Promise((resolve, reject) => canvas.toBlob((blob) => blob ? resolve(blob) : reject(new Error(
    `The browser cannot make a picture of ${width} x ${height} pixels (${atlas.chartCount} charts).`)), 'image/png'));
}
