'use strict';
// Only the rows in sight are in the document, so that ten thousand meshes open as fast as ten.
const data = JSON.parse(document.getElementById('data').textContent);
const versions = data.versions;
const byId = (id) => document.getElementById(id);

// Names come from files. They are only ever set as text; what would be invisible or would turn the
// direction of reading is written out.
const HIDDEN = /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u115f\u1160\u200b-\u200f\u2028-\u202e\u2060-\u206f\u3164\ufe00-\ufe0f\ufeff\uffa0\ufff9-\ufffb]/g;
function named(text) {
  const out = document.createElement('bdi');
  let at = 0;
  for (const found of text.matchAll(HIDDEN)) {
    out.append(text.slice(at, found.index));
    const code = document.createElement('span');
    code.className = 'escape';
    code.textContent = 'U+' + found[0].codePointAt(0).toString(16).toUpperCase().padStart(4, '0');
    out.append(code);
    at = found.index + found[0].length;
  }
  out.append(text.slice(at));
  return out;
}
function element(tag, className, ...content) {
  const made = document.createElement(tag);
  if (className)
    made.className = className;
  made.append(...content);
  return made;
}

const whole = (n) => n.toLocaleString('en');
const fixed = (digits) => (n) => n.toFixed(digits);
// What is shown of a mesh: title, value, how it is written, whether less is better.
const FIGURES = {
  charts: ['charts', whole], stretch: ['stretch', fixed(4)], coverage: ['coverage', (n) => (100 * n).toFixed(1) + ' %'],
  seam_length: ['seam length', (n) => n.toPrecision(4)], gap_texels: ['least gap', (n) => n.toFixed(2) + ' texels'],
  density_mean: ['texels per unit', (n) => n.toPrecision(4)], triangles: ['triangles', whole],
  polygons: ['polygons', whole], vertices: ['vertices', whole], angle_error_mean: ['mean angle error', (n) => n.toFixed(2) + '°'],
  area_distortion_mean: ['mean area distortion', fixed(3)], seconds: ['seconds', fixed(2)], peak_mb: ['peak memory', (n) => n.toFixed(0) + ' MB'],
};
const IN_ROW = ['triangles', 'charts', 'stretch', 'coverage', 'gap_texels', 'seconds'];
const SORTS = [['failures first', null], ['name', 'name'], ['stretch', 'stretch'], ['charts', 'charts'], ['coverage', 'coverage'], ['triangles', 'triangles'], ['seconds', 'seconds']];

const meshes = data.meshes.map((mesh, index) => {
  const known = mesh.find(Boolean);
  return { versions: mesh, index, name: known.input, failed: mesh.some((one) => one && one.status === 'failed'),
    warned: mesh.some((one) => one && one.warnings && one.warnings.length > 0), missing: mesh.includes(null),
    text: mesh.filter(Boolean).map((one) => `${one.input}\n${one.output ?? ''}\n${one.reason ?? ''}\n${(one.warnings ?? []).join('\n')}`).join('\n').toLowerCase() };
});
// The folder that all names begin with is told once.
const folder = meshes.reduce((common, { name }) => {
  let end = 0;
  while (end < common.length && common[end] === name[end])
    ++end;
  return common.slice(0, common.lastIndexOf('/', end - 1) + 1);
}, meshes[0]?.name ?? '');
const figure = (mesh, key) => mesh.versions[mesh.versions.length - 1]?.[key] ?? mesh.versions[0]?.[key];
const different = (mesh) => mesh.missing || ['charts', 'stretch', 'coverage', 'status'].some((key) => mesh.versions[0][key] !== mesh.versions[1][key]);
const SHOWS = { all: () => true, failed: (mesh) => mesh.failed, 'with warnings': (mesh) => mesh.warned };
if (versions.length > 1)
  Object.assign(SHOWS, { different, 'in one only': (mesh) => mesh.missing });

const byName = new Intl.Collator('en', { numeric: true });
function order(key) {
  if (key === null)
    return (a, b) => b.failed - a.failed || b.warned - a.warned || a.index - b.index;
  if (key === 'name')
    return (a, b) => byName.compare(a.name, b.name);
  // Largest first; without the figure last.
  return (a, b) => (figure(b, key) ?? -1) - (figure(a, key) ?? -1) || a.index - b.index;
}

function figures(one, other) {
  const list = element('dl', 'figures');
  for (const key of IN_ROW)
    if (one[key] !== undefined) {
      const [title, written] = FIGURES[key];
      const changed = other && other[key] !== undefined && key !== 'seconds' && other[key] !== one[key];
      list.append(element('div', changed ? 'changed' : '', element('dt', '', title + ' '), element('dd', '', written(one[key]))));
    }
  return list;
}

function picture(one) {
  if (!one?.picture)
    return element('div', 'none', !one ? 'not in this one' : one.status === 'failed' ? 'no result' : 'no pictures');
  const strip = document.createElement('img');
  strip.className = 'strip';
  strip.loading = 'lazy';
  strip.decoding = 'async';
  strip.width = 704;
  strip.height = 176;
  strip.alt = `layout, checkerboard, stretch and seams of ${one.input}`;
  strip.src = 'pictures/' + encodeURIComponent(one.picture);
  return strip;
}

function state(one) {
  const line = element('div', 'state ' + (one.status === 'failed' ? 'bad' : 'good'),
    one.status === 'failed' ? `failed, code ${one.code}` : one.status === 'skipped' ? 'up to date' : 'done');
  if (one.warnings?.length)
    line.append(element('span', 'warned', `, ${one.warnings.length} warning${one.warnings.length > 1 ? 's' : ''}`));
  return line;
}

const HEIGHT = 214;
function heightOf() {
  const narrow = matchMedia('(max-width: 1060px)').matches;
  const strip = narrow ? (byId('list').clientWidth - 40) / 4 + 132 : HEIGHT;
  return Math.ceil(strip * versions.length + (versions.length > 1 ? 16 : 0));
}

function rowOf(mesh) {
  const row = element('li', mesh.failed ? 'row failed' : 'row');
  mesh.versions.forEach((one, side) => {
    const words = element('div', '');
    if (side === 0) {
      const name = element('button', 'name', named(mesh.name.slice(folder.length)));
      name.type = 'button';
      name.addEventListener('click', () => showDetails(mesh));
      words.append(name);
    }
    if (versions.length > 1)
      words.append(element('div', 'version', named(versions[side].title)));
    if (one) {
      words.append(state(one), figures(one, mesh.versions[1 - side]));
      if (one.reason || one.warnings?.length)
        words.append(element('p', 'reason' + (one.reason ? ' bad' : ''), named(one.reason || one.warnings[0])));
    }
    const right = element('div', '', picture(one));
    if (one?.picture)
      right.append(element('div', 'captions', ...['layout', 'checker', 'stretch', 'seams'].map((word) => element('span', '', word))));
    row.append(words, right);
  });
  return row;
}

function table(entries) {
  const body = element('table', '');
  for (const [title, ...values] of entries)
    body.append(element('tr', '', element('th', '', title), ...values.map((value) => element('td', '', value))));
  return body;
}

function showDetails(mesh) {
  const detail = byId('detail'), shown = mesh.versions.filter(Boolean);
  detail.replaceChildren(element('h2', '', named(mesh.name)));
  const titled = (one) => versions.length > 1 ? [element('div', 'version', named(versions[mesh.versions.indexOf(one)].title))] : [];
  for (const one of shown)
    detail.append(...titled(one), picture(one));
  const entries = Object.entries(FIGURES).filter(([key]) => shown.some((one) => one[key] !== undefined))
    .map(([key, [title, written]]) => [title, ...shown.map((one) => one[key] === undefined ? '' : written(one[key]))]);
  for (const key of ['output', 'report', 'reason'])
    if (shown.some((one) => one[key]))
      entries.push([key, ...shown.map((one) => named(one[key] ?? ''))]);
  detail.append(table(entries));
  for (const one of shown) {
    for (const warning of one.warnings ?? [])
      detail.append(element('p', 'reason', named(warning)));
    detail.append(...titled(one), element('p', 'state', named(settingsText(data.settings[one.settings]))));
  }
  byId('details').showModal();
}

const settingsText = (settings) => settings ? Object.entries(settings).map(([name, value]) => `${name} ${value}`).join(', ') : '';

let shown = [], drawn = new Map(), rowHeight = 0;
function draw() {
  const list = byId('list'), rows = byId('rows');
  const first = Math.max(0, Math.floor(list.scrollTop / rowHeight) - 2);
  const last = Math.min(shown.length, Math.ceil((list.scrollTop + list.clientHeight) / rowHeight) + 2);
  for (const [index, row] of drawn)
    if (index < first || index >= last) {
      row.remove();
      drawn.delete(index);
    }
  for (let index = first; index < last; ++index)
    if (!drawn.has(index)) {
      const row = rowOf(shown[index]);
      row.style.top = `${index * rowHeight}px`;
      row.style.height = `${rowHeight}px`;
      row.ariaSetSize = shown.length;
      row.ariaPosInSet = index + 1;
      // In the order of the list, so that Tab and screen readers follow it.
      let after = index + 1;
      while (after < last && !drawn.has(after))
        ++after;
      rows.insertBefore(row, drawn.get(after) ?? null);
      drawn.set(index, row);
    }
}

function update() {
  const words = byId('find').value.toLowerCase().split(/\s+/).filter(Boolean);
  const accepts = SHOWS[byId('show').value];
  shown = meshes.filter((mesh) => accepts(mesh) && words.every((word) => mesh.text.includes(word)));
  shown.sort(order(SORTS[byId('sort').selectedIndex][1]));
  if (byId('reverse').checked)
    shown.reverse();
  rowHeight = heightOf();
  byId('rows').style.height = `${shown.length * rowHeight}px`;
  byId('rows').replaceChildren();
  drawn = new Map();
  byId('count').textContent = `${whole(shown.length)} of ${whole(meshes.length)}`;
  draw();
}

function start() {
  for (const name of Object.keys(SHOWS))
    byId('show').append(element('option', '', name));
  for (const [name] of SORTS)
    byId('sort').append(element('option', '', name));
  if (versions.length > 1)
    byId('title').replaceChildren(named(versions[0].title), ' and ', named(versions[1].title));
  const count = (status) => meshes.filter((mesh) => mesh.versions.some((one) => one?.status === status)).length;
  const failed = count('failed'), parts = versions.length > 1
    ? [`${whole(meshes.length)} meshes`, `${whole(meshes.filter(different).length)} differ`]
    : [`${whole(count('ok'))} done`, `${whole(count('skipped'))} up to date`];
  if (data.not_done)
    parts.push(`${whole(data.not_done)} not done`);
  byId('totals').append(element('span', failed ? 'bad' : '', `${whole(failed)} failed`), ', ' + parts.join(', ') + `; ${data.program}`);
  if (folder)
    byId('totals').append('; in ', named(folder));
  for (const settings of data.settings)
    byId('settings').lastElementChild.append(element('li', '', named(settingsText(settings))));
  for (const id of ['find', 'show', 'sort', 'reverse'])
    byId(id).addEventListener('input', () => {
      byId('list').scrollTop = 0;
      update();
    });
  byId('controls').addEventListener('submit', (event) => event.preventDefault());
  byId('list').addEventListener('scroll', draw, { passive: true });
  addEventListener('resize', update);
  update();
}
start();
