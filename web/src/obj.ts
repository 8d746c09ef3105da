/**
 * Reads Wavefront OBJ files and writes them with new texture coordinates.
 *
 * The file's bytes are kept: only texture coordinates change. Polygons keep their size and order, vertices their
 * numbers. Malformed files are refused with "line N: reason".
 */

/** A file that is not a valid mesh; the message says where and why. */
export class ObjError extends Error {
  override name = 'ObjError';
}

/** Polygons of any size over shared vertices, in file order, with what is needed to write the file again. */
export interface ObjMesh {
  /** Three per vertex, in double precision as written. */
  positions: Float64Array;
  /** First corner of each polygon; one entry more than there are polygons. */
  offsets: Uint32Array;
  /** Vertex of each corner. */
  corners: Uint32Array;
  /** The file. */
  bytes: Uint8Array;
}

const NEWLINE = 10, RETURN = 13, SPACE = 32, TAB = 9, HASH = 35, BACKSLASH = 92;
const LIMIT = 0x7fffffff;

/** Splits a file into statements and words. A backslash at the end of a line joins the next line to it. */
class Lexer {
  position = 0;
  /** Of the word that next() found: its first byte, and one past its last. */
  begin = 0;
  end = 0;

  constructor(readonly bytes: Uint8Array) {}

  /** Length of the joint between two lines at i, 0 if there is none. */
  private joint(i: number): number {
    if (this.bytes[i] !== BACKSLASH)
      return 0;
    if (this.bytes[i + 1] === NEWLINE)
      return 2;
    return this.bytes[i + 1] === RETURN && this.bytes[i + 2] === NEWLINE ? 3 : 0;
  }

  /** Finds the next word of the statement; false at its end. */
  next(): boolean {
    const { bytes } = this;
    let i = this.position;
    for (;;) {
      const byte = bytes[i];
      if (byte === SPACE || byte === TAB || byte === RETURN)
        ++i;
      else if (byte === BACKSLASH && this.joint(i))
        i += this.joint(i);
      else
        break;
    }
    this.begin = i;
    if (i < bytes.length && bytes[i] !== HASH)
      while (i < bytes.length && bytes[i]! > SPACE && !this.joint(i))
        ++i;
    // Other control characters count as part of a word, so that they end up in a message.
    while (i > this.begin && i < bytes.length && bytes[i]! < SPACE && ![NEWLINE, RETURN, TAB].includes(bytes[i]!))
      ++i;
    this.end = this.position = i;
    return i > this.begin;
  }

  /** Goes to the first byte after the statement. */
  skip(): void {
    const { bytes } = this;
    let i = this.position;
    while (i < bytes.length && bytes[i] !== NEWLINE)
      i += Math.max(1, this.joint(i));
    this.position = Math.min(i + 1, bytes.length);
  }

  word(): string {
    let text = '';
    for (let i = this.begin; i < this.end; ++i)
      text += String.fromCharCode(this.bytes[i]!);
    return text;
  }

  is(text: string): boolean {
    if (this.end - this.begin !== text.length)
      return false;
    for (let i = 0; i < text.length; ++i)
      if (this.bytes[this.begin + i] !== text.charCodeAt(i))
        return false;
    return true;
  }

  lineNumber(offset: number): number {
    let lines = 1;
    for (let i = 0; i < offset; ++i)
      lines += this.bytes[i] === NEWLINE ? 1 : 0;
    return lines;
  }

  lineStart(offset: number): number {
    return offset === 0 ? 0 : this.bytes.lastIndexOf(NEWLINE, offset - 1) + 1;
  }
}

/** A growing array of numbers. */
class Numbers<T extends Float64Array | Uint32Array> {
  size = 0;
  constructor(private readonly make: (size: number) => T, private data: T = make(1024)) {}
  push(value: number): void {
    if (this.size === this.data.length) {
      const larger = this.make(2 * this.size);
      larger.set(this.data);
      this.data = larger;
    }
    this.data[this.size++] = value;
  }
  done(): T {
    return this.data.slice(0, this.size) as T;
  }
}

const quoted = (word: string) => `'${word.slice(0, 40).replace(/[\x00-\x1f\x7f]/g, '?')}${word.length > 40 ? '...' : ''}'`;

class Reader {
  private readonly lexer: Lexer;
  private readonly positions = new Numbers((size) => new Float64Array(size));
  private readonly offsets = new Numbers((size) => new Uint32Array(size));
  private readonly corners = new Numbers((size) => new Uint32Array(size));
  private readonly face: number[] = [];
  private textures = 0;
  private highest = -1;
  private highestAt = 0;
  private smallFaceAt = -1;

  constructor(private readonly bytes: Uint8Array) {
    this.lexer = new Lexer(bytes);
  }

  private fail(offset: number, reason: string): never {
    throw new ObjError(`line ${this.lexer.lineNumber(offset)}: ${reason}`);
  }

  run(): ObjMesh {
    const { bytes, lexer } = this;
    if (bytes.length === 0)
      throw new ObjError('the file is empty');
    if ((bytes[0] === 0xff && bytes[1] === 0xfe) || (bytes[0] === 0xfe && bytes[1] === 0xff))
      throw new ObjError('the file is 16-bit text; save it as UTF-8');
    this.offsets.push(0);
    for (; lexer.position < bytes.length; lexer.skip()) {
      if (!lexer.next())
        continue;
      if (lexer.is('v'))
        this.readVertex();
      else if (lexer.is('vt'))
        ++this.textures;
      else if (lexer.is('f') || lexer.is('fo'))
        this.readFace();
    }
    this.check();
    return {
      positions: this.positions.done(),
      offsets: this.offsets.done(),
      corners: this.corners.done(),
      bytes,
    };
  }

  private readVertex(): void {
    const { lexer } = this;
    const at = lexer.begin, number = this.positions.size / 3 + 1;
    let have = 0;
    for (; have < 3 && lexer.next(); ++have) {
      const word = lexer.word(), value = /^[+-]?(\d|\.\d)[\d.]*([eE][+-]?\d+)?$/.test(word) ? Number(word) : NaN;
      if (!Number.isFinite(Math.fround(value)))
        this.fail(lexer.begin, `vertex ${number}: ${quoted(word)} is not a ${Number.isNaN(value) ? '' : 'finite '}number`);
      this.positions.push(value);
    }
    if (have < 3)
      this.fail(at, `vertex ${number} needs three coordinates and has ${have}`);
  }

  private readFace(): void {
    const { lexer, face } = this;
    const at = lexer.begin;
    face.length = 0;
    while (lexer.next())
      face.push(this.readCorner());
    if (face.length < 3) {
      this.smallFaceAt = this.smallFaceAt < 0 ? at : this.smallFaceAt;
      return;
    }
    for (const vertex of face)
      this.corners.push(vertex);
    this.offsets.push(this.corners.size);
    if (this.corners.size > LIMIT)
      this.fail(at, `more than ${LIMIT} face corners`);
  }

  private readCorner(): number {
    const word = this.lexer.word(), at = this.lexer.begin;
    const parts = /^([+-]?\d+)(?:\/([+-]?\d+)?(?:\/([+-]?\d+)?)?)?$/.exec(word);
    if (!parts)
      this.fail(at, `face corner ${quoted(word)} is not of the form v, v/vt, v//vn or v/vt/vn with whole numbers`);
    const count = this.positions.size / 3, given = Number(parts[1]);
    if (given === 0)
      this.fail(at, 'face uses vertex 0, but numbers start at 1');
    const vertex = given > 0 ? given - 1 : count + given;
    if (vertex < 0 || vertex >= LIMIT)
      this.fail(at, `face uses vertex ${given}, which the file does not have (${count} up to this line)`);
    if (vertex > this.highest) {
      this.highest = vertex;
      this.highestAt = at;
    }
    return vertex;
  }

  private check(): void {
    const vertices = this.positions.size / 3;
    if (this.offsets.size === 1 && this.smallFaceAt >= 0)
      this.fail(this.smallFaceAt, 'no faces in the file: none has three corners or more');
    if (this.offsets.size === 1)
      throw new ObjError(vertices ? `no faces in the file, only ${vertices} vertices` :
        'this is not an OBJ file: it has neither vertices nor faces');
    if (this.highest >= vertices)
      this.fail(this.highestAt, `face uses vertex ${this.highest + 1}, but the file has ${vertices}`);
  }
}

/** Reads a file. Throws ObjError if it is not a mesh. */
export function readObj(bytes: Uint8Array): ObjMesh {
  return new Reader(bytes).run();
}

/** The shortest decimal that reads back as the same number in single precision. */
export function shortest(value: number): string {
  for (let digits = 1; digits < 9; ++digits) {
    const text = value.toPrecision(digits);
    if (Math.fround(Number(text)) === value)
      return String(Number(text));
  }
  return String(Number(value.toPrecision(9)));
}

const encoder = new TextEncoder();

/** Bytes appended piece by piece. */
class Output {
  private data: Uint8Array;
  private size = 0;
  constructor(expected: number) {
    this.data = new Uint8Array(expected);
  }
  private room(count: number): void {
    if (this.size + count <= this.data.length)
      return;
    const larger = new Uint8Array(2 * (this.size + count));
    larger.set(this.data.subarray(0, this.size));
    this.data = larger;
  }
  copy(bytes: Uint8Array, begin: number, end: number): void {
    if (end <= begin)
      return;
    this.room(end - begin);
    this.data.set(bytes.subarray(begin, end), this.size);
    this.size += end - begin;
  }
  text(text: string): void {
    const bytes = encoder.encode(text);
    this.copy(bytes, 0, bytes.length);
  }
  done(): Uint8Array {
    return this.data.slice(0, this.size);
  }
}

/** Offset of the line before which the new coordinates go: the first `vt` or face, whichever comes first. */
function insertionPoint(bytes: Uint8Array): number {
  const lexer = new Lexer(bytes);
  for (; lexer.position < bytes.length; lexer.skip())
    if (lexer.next() && (lexer.is('vt') || lexer.is('f') || lexer.is('fo')))
      return lexer.lineStart(lexer.begin);
  return bytes.length;
}

/**
 * The file of `mesh` with the texture coordinates `uvs` (two per entry) and, per corner, the entry in `cornerUvs`.
 * Lines, surfaces and faces of two corners lose theirs. All other bytes stay.
 */
export function writeObj(mesh: ObjMesh, uvs: Float32Array, cornerUvs: Uint32Array): Uint8Array {
  const { bytes } = mesh, lexer = new Lexer(bytes);
  if (cornerUvs.length !== mesh.corners.length)
    throw new RangeError(`${cornerUvs.length} corners were given, the mesh has ${mesh.corners.length}`);
  const output = new Output(bytes.length + 12 * uvs.length + 8 * cornerUvs.length);
  const lineEnd = bytes[bytes.indexOf(NEWLINE) - 1] === RETURN ? '\r\n' : '\n';
  let done = insertionPoint(bytes);
  output.copy(bytes, 0, done);
  for (let i = 0; i < uvs.length; i += 2)
    output.text(`vt ${shortest(uvs[i]!)} ${shortest(uvs[i + 1]!)}${lineEnd}`);

  let corner = 0;
  lexer.position = done;
  while (lexer.position < bytes.length) {
    const found = lexer.next();
    if (found && lexer.is('vt')) {
      output.copy(bytes, done, lexer.lineStart(lexer.begin));
      lexer.skip();
      done = lexer.position;
      continue;
    }
    if (found && (lexer.is('f') || lexer.is('fo') || lexer.is('l') || lexer.is('surf'))) {
      // A surface has four parameters before its points.
      const fixed = lexer.is('surf') ? 4 : 0, face = lexer.is('f') || lexer.is('fo'), words: number[] = [];
      while (lexer.next())
        words.push(lexer.begin, lexer.end);
      const polygon = face && words.length >= 6;
      for (let i = 2 * fixed; i < words.length; i += 2) {
        output.copy(bytes, done, words[i]!);
        output.text(cornerWord(bytes.subarray(words[i], words[i + 1]), polygon ? cornerUvs[corner++]! + 1 : 0));
        done = words[i + 1]!;
      }
    }
    lexer.skip();
  }
  output.copy(bytes, done, bytes.length);
  return output.done();
}

/** A corner v, v/vt, v//vn or v/vt/vn with texture coordinate `number`, 0 for none. */
function cornerWord(word: Uint8Array, number: number): string {
  const [vertex, , normal] = String.fromCharCode(...word).split('/');
  return vertex + (number ? `/${number}` : normal ? '/' : '') + (normal ? `/${normal}` : '');
}
