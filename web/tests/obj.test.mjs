import assert from 'node:assert/strict';
import { test } from 'node:test';
import { ObjError, readObj, shortest, writeObj } from 'tessora/obj';

const read = (text) => readObj(Buffer.from(text, 'latin1'));
const write = (text, uvs = [0.25, 0.5], corners) => {
  const mesh = read(text);
  return Buffer.from(writeObj(mesh, Float32Array.from(uvs), Uint32Array.from(corners ?? Array(mesh.corners.length).fill(0)))).toString('latin1');
};
const TRIANGLE = 'v 0 0 0\nv 1 0 0\nv 0 1 0\n';

test('polygons keep their size, vertices their numbers', () => {
  const mesh = read('v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 2 2.5e1\nf 1 2 3 4\nf -1/3 1//2 2/1/1\n');
  assert.deepEqual([...mesh.offsets], [0, 4, 7]);
  assert.deepEqual([...mesh.corners], [0, 1, 2, 3, 4, 0, 1]);
  assert.equal(mesh.positions[14], 25);
});

test('comments, tabs, joined lines and odd line ends are read', () => {
  assert.deepEqual([...read(`# c\r\n${TRIANGLE}f\t1 \\\r\n 2 3 # x\r\n`).corners], [0, 1, 2]);
});

test('faces may come before their vertices', () => assert.deepEqual([...read(`f 1 2 3\n${TRIANGLE}`).corners], [0, 1, 2]));

test('faces of two corners are no faces', () => assert.deepEqual([...read(`${TRIANGLE}f 1 2\nf 1 2 3`).offsets], [0, 3]));

for (const [text, reason] of [
  ['', 'the file is empty'],
  ['\xff\xfev', 'the file is 16-bit text; save it as UTF-8'],
  ['hello', 'this is not an OBJ file: it has neither vertices nor faces'],
  [TRIANGLE, 'no faces in the file, only 3 vertices'],
  [`${TRIANGLE}f 1 2`, 'line 4: no faces in the file: none has three corners or more'],
  ['v 1 2', 'line 1: vertex 1 needs three coordinates and has 2'],
  ['#\nv 1 nan 3', "line 2: vertex 1: 'nan' is not a number"],
  ['v 1 1,5 3', "line 1: vertex 1: '1,5' is not a number"],
  ['v 1 1e99 3', "line 1: vertex 1: '1e99' is not a finite number"],
  [`${TRIANGLE}f 1 2 0`, 'line 4: face uses vertex 0, but numbers start at 1'],
  [`${TRIANGLE}f 1 2 4`, 'line 4: face uses vertex 4, but the file has 3'],
  [`${TRIANGLE}f 1 2 -4`, 'line 4: face uses vertex -4, which the file does not have (3 up to this line)'],
  [`${TRIANGLE}f 1 2 x`, "line 4: face corner 'x' is not of the form v, v/vt, v//vn or v/vt/vn with whole numbers"],
])
  test(`refused: ${reason}`, () => assert.throws(() => read(text), (error) => error instanceof ObjError && error.message === reason));

test('only texture coordinates change', () => {
  assert.equal(write(`# \xe9\n${TRIANGLE}vt 9 9\r\nvn 0 0 1\ng a\nf  1/1/1 2//1 3 # f\nl 1/1 2/1\n`),
    `# \xe9\n${TRIANGLE}vt 0.25 0.5\nvn 0 0 1\ng a\nf  1/1/1 2/1/1 3/1 # f\nl 1 2\n`);
});

test('faces of two corners keep their normals', () =>
  assert.equal(write(`vn 0 0 1\n${TRIANGLE}f 1/1/1 2//1\nf 1 2 3\n`), `vn 0 0 1\n${TRIANGLE}vt 0.25 0.5\nf 1//1 2//1\nf 1/1 2/1 3/1\n`));

test('new coordinates come before the first face', () =>
  assert.equal(write(`f 1 2 3\n${TRIANGLE}vt 1 1`), `vt 0.25 0.5\nf 1/1 2/1 3/1\n${TRIANGLE}`));

test('line ends are the file\'s', () => assert.equal(write('v 0 0 0\r\nv 1 0 0\r\nv 0 1 0\r\nf 1 2 3'), 'v 0 0 0\r\nv 1 0 0\r\nv 0 1 0\r\nvt 0.25 0.5\r\nf 1/1 2/1 3/1'));

test('a wrong number of corners is refused', () => assert.throws(() => write(`${TRIANGLE}f 1 2 3`, [0, 0], [0]), RangeError));

test('numbers are the shortest that read back', () => {
  assert.equal(shortest(Math.fround(0.1)), '0.1');
  assert.equal(shortest(0.25), '0.25');
  assert.equal(shortest(Math.fround(1 / 3)), '0.33333334');
  for (let i = 1; i < 2000; ++i) {
    const value = Math.fround(Math.sin(i) * 10 ** (i % 9 - 6));
    assert.equal(Math.fround(Number(shortest(value))), value);
  }
});
