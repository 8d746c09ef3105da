/** The two views: the mesh in space and its charts in the texture. Both draw the same triangles. */
import {
  BufferAttribute, BufferGeometry, Color, LineBasicMaterial, LineSegments, Mesh, MOUSE, OrthographicCamera, PerspectiveCamera,
  Scene, ShaderMaterial, Spherical, TOUCH, Vector2, Vector3, WebGLRenderer, WebGLRenderTarget, DoubleSide, NoBlending, type IUniform,
} from 'three';
import { OrbitControls } from 'three/addons/controls/OrbitControls.js';
import type { Surface } from './surface.js';

export type Mode = 'checker' | 'charts' | 'stretch';
export type Theme = { ground: string; seam: string };

const MODES: Mode[] = ['checker', 'charts', 'stretch'];

const VERTEX = /* glsl */ `
  attribute float chart;
  attribute float stretch;
  uniform bool flat_;
  uniform vec2 texture_;
  varying vec2 vUv;
  varying float vChart;
  varying float vStretch;
  varying vec3 vNormal;
  void main() {
    vUv = uv;
    vChart = chart;
    vStretch = stretch;
    vNormal = normalMatrix * normal;
    gl_Position = projectionMatrix * modelViewMatrix * vec4(flat_ ? vec3(uv * texture_, 0.0) : position, 1.0);
  }`;

const FRAGMENT = /* glsl */ `
  uniform bool flat_;
  uniform int mode;
  uniform float lit;
  uniform float limit;
  uniform vec2 texture_;
  varying vec2 vUv;
  varying float vChart;
  varying float vStretch;
  varying vec3 vNormal;

  // Colours of neighbouring numbers lie far apart: steps of the golden angle around the wheel.
  vec3 chartColor(float chart) {
    float hue = fract(chart * 0.61803399 + 0.05);
    vec3 wheel = 0.5 + 0.5 * cos(6.2831853 * (hue + vec3(0.0, 0.33, 0.67)));
    float light = 0.62 + 0.13 * fract(chart * 0.7548777);
    return mix(vec3(light), wheel, 0.48) * 1.08;
  }
  vec3 ramp(float x) {
    vec3 c0 = vec3(0.231, 0.435, 0.714), c1 = vec3(0.345, 0.714, 0.753), c2 = vec3(0.91, 0.90, 0.643),
         c3 = vec3(0.941, 0.627, 0.294), c4 = vec3(0.82, 0.263, 0.184);
    x = clamp(x, 0.0, 1.0) * 4.0;
    if (x < 1.0) return mix(c0, c1, x);
    if (x < 2.0) return mix(c1, c2, x - 1.0);
    if (x < 3.0) return mix(c2, c3, x - 2.0);
    return mix(c3, c4, x - 3.0);
  }
  void main() {
    vec3 color = vec3(0.62, 0.66, 0.70);
    float chart = floor(vChart + 0.5);
    if (chart >= 0.0) {
      if (mode == 0) {
        vec2 cell = floor(vUv * texture_ * 40.0);
        bool dark = mod(cell.x + cell.y, 2.0) > 0.5;
        color = chartColor(chart);
        color = dark ? color * 0.42 : mix(color, vec3(0.97), 0.55);
      } else if (mode == 1) {
        color = chartColor(chart);
      } else {
        color = ramp(vStretch / limit);
      }
      if (lit >= 0.0)
        color = chart == lit ? mix(color, vec3(1.0), 0.18) : mix(color, vec3(dot(color, vec3(0.3, 0.6, 0.1))), 0.75) * 0.55;
    }
    if (!flat_) {
      vec3 n = normalize(vNormal);
      if (!gl_FrontFacing) n = -n;
      color *= 0.38 + 0.5 * max(0.0, dot(n, normalize(vec3(0.35, 0.55, 0.8)))) + 0.22 * max(0.0, n.z);
    }
    gl_FragColor = vec4(color, 1.0);
  }`;

/** Draws the number of a chart as a colour, for finding the one under the pointer. */
const NUMBER = /* glsl */ `
  varying float vChart;
  void main() {
    float number = floor(vChart + 0.5) + 1.0;
    gl_FragColor = vec4(mod(number, 256.0), mod(floor(number / 256.0), 256.0), floor(number / 65536.0), 255.0) / 255.0;
  }`;

export class View {
  private readonly renderer: WebGLRenderer;
  private readonly scene = new Scene();
  private readonly camera: PerspectiveCamera | OrthographicCamera;
  private readonly controls: OrbitControls;
  private readonly uniforms: Record<'flat_' | 'mode' | 'lit' | 'limit' | 'texture_', IUniform>;
  private readonly material: ShaderMaterial;
  private readonly numbers: ShaderMaterial;
  private readonly target = new WebGLRenderTarget(1, 1);
  private readonly seamMaterial = new LineBasicMaterial();
  private readonly litMaterial = new LineBasicMaterial({ depthTest: false });
  private readonly frameMaterial = new LineBasicMaterial();
  private mesh?: Mesh;
  private surface?: Surface;
  private litLines?: LineSegments;
  private planned = false;
  /** Called with the chart under the pointer, -1 if none; `chosen` on a click. */
  onPoint: (chart: number, chosen: boolean) => void = () => {};

  constructor(private readonly canvas: HTMLCanvasElement, private readonly flat: boolean) {
    this.renderer = new WebGLRenderer({ canvas, antialias: true, preserveDrawingBuffer: false });
    this.renderer.setPixelRatio(Math.min(2, window.devicePixelRatio));
    this.camera = flat ? new OrthographicCamera() : new PerspectiveCamera(32, 1, 0.01, 1000);
    this.uniforms = { flat_: { value: flat }, mode: { value: 0 }, lit: { value: -1 }, limit: { value: 0.35 }, texture_: { value: new Vector2(1, 1) } };
    this.material = new ShaderMaterial({ uniforms: this.uniforms, vertexShader: VERTEX, fragmentShader: FRAGMENT, side: DoubleSide,
      polygonOffset: !flat, polygonOffsetFactor: 1.5, polygonOffsetUnits: 1.5 });
    this.numbers = new ShaderMaterial({ uniforms: this.uniforms, vertexShader: VERTEX, fragmentShader: NUMBER, side: DoubleSide, blending: NoBlending });
    this.controls = new OrbitControls(this.camera, canvas);
    this.controls.zoomToCursor = flat;
    this.controls.enableRotate = !flat;
    if (flat) {
      this.controls.mouseButtons = { LEFT: MOUSE.PAN, MIDDLE: MOUSE.DOLLY, RIGHT: MOUSE.PAN };
      this.controls.touches = { ONE: TOUCH.PAN, TWO: TOUCH.DOLLY_PAN };
    }
    this.controls.addEventListener('change', () => this.plan());
    new ResizeObserver(() => this.resize()).observe(canvas);
    this.listen();
  }

  private listen(): void {
    let pressed = { x: 0, y: 0 }, waiting = false;
    this.canvas.addEventListener('pointerdown', (event) => pressed = { x: event.clientX, y: event.clientY });
    this.canvas.addEventListener('pointermove', (event) => {
      if (event.buttons || waiting || event.pointerType === 'touch')
        return;
      waiting = true;
      requestAnimationFrame(() => {
        waiting = false;
        this.onPoint(this.chartAt(event), false);
      });
    });
    this.canvas.addEventListener('pointerleave', () => this.onPoint(-1, false));
    this.canvas.addEventListener('pointerup', (event) => {
      if (Math.hypot(event.clientX - pressed.x, event.clientY - pressed.y) < 4)
        this.onPoint(this.chartAt(event), true);
    });
    this.canvas.addEventListener('keydown', (event) => this.key(event));
  }

  private key(event: KeyboardEvent): void {
    if (event.ctrlKey || event.metaKey || event.altKey)
      return;
    const arrows: Record<string, [number, number]> = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] };
    const arrow = arrows[event.key];
    if (arrow && (this.flat || event.shiftKey))
      this.move(arrow[0] * 0.08, arrow[1] * 0.08);
    else if (arrow)
      this.turn(-arrow[0] * 0.15, arrow[1] * 0.15);
    else if (event.key === '+' || event.key === '=')
      this.zoom(1.2);
    else if (event.key === '-')
      this.zoom(1 / 1.2);
    else if (event.key === '0')
      this.showAll();
    else
      return;
    event.preventDefault();
  }

  private turn(around: number, up: number): void {
    const offset = this.camera.position.clone().sub(this.controls.target), place = new Spherical().setFromVector3(offset);
    place.theta += around;
    place.phi -= up;
    this.camera.position.copy(this.controls.target).add(offset.setFromSpherical(place.makeSafe()));
    this.controls.update();
  }

  /** By shares of the view's height. */
  private move(right: number, up: number): void {
    const extent = this.camera instanceof OrthographicCamera ? (this.camera.top - this.camera.bottom) / this.camera.zoom :
      2 * Math.tan(this.camera.fov * Math.PI / 360) * this.camera.position.distanceTo(this.controls.target);
    const step = new Vector3(right * extent, up * extent, 0).applyQuaternion(this.camera.quaternion);
    this.camera.position.add(step);
    this.controls.target.add(step);
    this.controls.update();
  }

  private zoom(factor: number): void {
    if (this.camera instanceof OrthographicCamera) {
      this.camera.zoom *= factor;
      this.camera.updateProjectionMatrix();
    } else {
      this.camera.position.sub(this.controls.target).divideScalar(factor).add(this.controls.target);
    }
    this.controls.update();
    this.plan();
  }

  private get aspect(): number {
    return this.canvas.clientWidth / Math.max(1, this.canvas.clientHeight);
  }

  private resize(): void {
    const { clientWidth, clientHeight } = this.canvas;
    if (clientWidth === 0 || clientHeight === 0)
      return;
    this.renderer.setSize(clientWidth, clientHeight, false);
    this.setProjection();
    this.draw();
  }

  private setProjection(): void {
    if (this.camera instanceof PerspectiveCamera) {
      this.camera.aspect = this.aspect;
    } else {
      const size = this.uniforms.texture_.value as Vector2, half = 0.54 * Math.max(size.y, size.x / this.aspect);
      Object.assign(this.camera, { left: -half * this.aspect, right: half * this.aspect, top: half, bottom: -half, near: -10, far: 10 });
    }
    this.camera.updateProjectionMatrix();
  }

  showAll(): void {
    if (this.camera instanceof OrthographicCamera) {
      const size = this.uniforms.texture_.value as Vector2;
      this.camera.zoom = 1;
      this.camera.position.set(size.x / 2, size.y / 2, 1);
      this.controls.target.set(size.x / 2, size.y / 2, 0);
    } else if (this.surface) {
      const direction = new Vector3(0.55, 0.42, 1).normalize(), distance = this.distanceToSeeAll(this.surface, direction);
      this.controls.target.set(...this.surface.center);
      this.camera.position.copy(direction).multiplyScalar(distance).add(this.controls.target);
      this.camera.near = distance / 500;
      this.camera.far = distance * 20;
    }
    this.setProjection();
    this.controls.update();
    this.plan();
  }

  /** From the centre, at which every point is in view from the direction. */
  private distanceToSeeAll({ positions, center }: Surface, direction: Vector3): number {
    const right = new Vector3(0, 1, 0).cross(direction).normalize(), up = direction.clone().cross(right);
    const vertical = Math.tan((this.camera as PerspectiveCamera).fov * Math.PI / 360) * 0.9, horizontal = vertical * this.aspect;
    const point = new Vector3(), middle = new Vector3(...center);
    let distance = 0;
    for (let i = 0; i < positions.length; i += 3) {
      point.fromArray(positions, i).sub(middle);
      const needed = Math.max(Math.abs(point.dot(right)) / horizontal, Math.abs(point.dot(up)) / vertical);
      distance = Math.max(distance, needed + point.dot(direction));
    }
    return distance || 1;
  }

  /** Replaces what is drawn; the camera stays. `size` is the texture's, the longer side 1. */
  show(surface: Surface, size: [number, number], limit: number): void {
    this.clear();
    this.surface = surface;
    (this.uniforms.texture_.value as Vector2).set(...size);
    this.uniforms.limit.value = limit;
    const geometry = new BufferGeometry();
    const add = (name: string, array: Float32Array, per: number) => geometry.setAttribute(name, new BufferAttribute(array, per));
    add('position', surface.positions, 3);
    add('normal', surface.normals, 3);
    add('uv', surface.uvs, 2);
    add('chart', surface.charts, 1);
    add('stretch', surface.stretch, 1);
    this.mesh = new Mesh(geometry, this.material);
    this.mesh.frustumCulled = false;
    if (!this.flat || surface.figures.chartFaces.length > 0)
      this.scene.add(this.mesh);
    this.scene.add(this.lines(this.flat ? spread(surface.seamUvs, size) : surface.seams, this.seamMaterial));
    if (this.flat)
      this.scene.add(this.lines(spread(Float32Array.from([0, 0, 1, 0, 1, 0, 1, 1, 1, 1, 0, 1, 0, 1, 0, 0]), size), this.frameMaterial));
    this.setProjection();
    this.plan();
  }

  private lines(ends: Float32Array, material: LineBasicMaterial): LineSegments {
    const lines = new LineSegments(new BufferGeometry().setAttribute('position', new BufferAttribute(ends, 3)), material);
    lines.frustumCulled = false;
    return lines;
  }

  private clear(): void {
    for (const child of [...this.scene.children]) {
      (child as Mesh).geometry.dispose();
      this.scene.remove(child);
    }
    this.litLines = undefined;
  }

  setMode(mode: Mode): void {
    this.uniforms.mode.value = MODES.indexOf(mode);
    this.plan();
  }

  setTheme({ ground, seam }: Theme): void {
    this.renderer.setClearColor(new Color(ground));
    this.seamMaterial.color = new Color(this.flat ? seam : '#10181f');
    this.frameMaterial.color = new Color(seam);
    this.litMaterial.color = new Color('#f2b84b');
    this.plan();
  }

  /** Lights a chart up, -1 for none. */
  light(chart: number): void {
    if (this.uniforms.lit.value === chart)
      return;
    this.uniforms.lit.value = chart;
    if (this.litLines) {
      this.scene.remove(this.litLines);
      this.litLines.geometry.dispose();
      this.litLines = undefined;
    }
    if (chart >= 0 && this.surface) {
      const { seamCharts, seams, seamUvs } = this.surface, ends: number[] = [], size = this.uniforms.texture_.value as Vector2;
      seamCharts.forEach((other, i) => {
        if (other === chart)
          ends.push(...(this.flat ? [seamUvs[2 * i]! * size.x, seamUvs[2 * i + 1]! * size.y, 0] : seams.subarray(3 * i, 3 * i + 3)));
      });
      this.litLines = this.lines(Float32Array.from(ends), this.litMaterial);
      this.litLines.renderOrder = 1;
      this.scene.add(this.litLines);
    }
    this.plan();
  }

  private chartAt(event: PointerEvent): number {
    if (!this.mesh || !this.mesh.parent)
      return -1;
    const box = this.canvas.getBoundingClientRect(), pixel = new Uint8Array(4), clear = this.renderer.getClearColor(new Color());
    this.camera.setViewOffset(box.width, box.height, event.clientX - box.left, event.clientY - box.top, 1, 1);
    this.scene.children.forEach((child) => child.visible = child === this.mesh);
    this.mesh.material = this.numbers;
    this.renderer.setRenderTarget(this.target);
    this.renderer.setClearColor(0x000000);
    this.renderer.render(this.scene, this.camera);
    this.renderer.readRenderTargetPixels(this.target, 0, 0, 1, 1, pixel);
    this.renderer.setClearColor(clear);
    this.renderer.setRenderTarget(null);
    this.mesh.material = this.material;
    this.scene.children.forEach((child) => child.visible = true);
    this.camera.clearViewOffset();
    return pixel[0]! + 256 * pixel[1]! + 65536 * pixel[2]! - 1;
  }

  private plan(): void {
    if (this.planned)
      return;
    this.planned = true;
    requestAnimationFrame(() => {
      this.planned = false;
      this.draw();
    });
  }

  private draw(): void {
    this.renderer.render(this.scene, this.camera);
  }
}

/** Texture coordinates as points of the plane. */
function spread(uvs: Float32Array, [width, height]: [number, number]): Float32Array {
  const points = new Float32Array(uvs.length / 2 * 3);
  for (let i = 0; i < uvs.length / 2; ++i)
    points.set([uvs[2 * i]! * width, uvs[2 * i + 1]! * height, 0], 3 * i);
  return points;
}
