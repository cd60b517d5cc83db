// The 3-D view: one WebGL2 canvas, one camera, and one panel per state shown (two to four when
// comparing, drawn side by side at one scale so they turn together). Each panel holds the dots
// (exact samples, coloured by phase) and the translucent boundary surface; axes with labels and
// a scale bar in Bohr radii and picometres lie over it.
import * as THREE from 'three';
import { OrbitControls } from './vendor/OrbitControls.js';

const PM_PER_BOHR = 52.9177;
const KEY_STEP = Math.PI / 36; // 5 degrees a key press

// Okabe–Ito orange and blue for the signs; the same at phase 0 and π of the colour wheel, whose
// quarter turns are Okabe–Ito yellow and reddish purple (light against dark for every kind of
// colour vision). The classic colours: orange/blue signs and the rainbow hue wheel.
const SAFE_WHEEL = ['#e69f00', '#f0e442', '#0072b2', '#cc79a7'];
const CLASSIC = { positive: '#ff8a3c', negative: '#3c9cff' };

/** RGB (0..1, sRGB) of a phase in radians for a palette ('safe' or 'classic'). */
export function phaseColour(phase, palette, real) {
  const c = new THREE.Color();
  const turn = (((phase / (2 * Math.PI)) % 1) + 1) % 1;
  if (real) return c.set(turn > 0.25 && turn < 0.75 ? (palette === 'safe' ? SAFE_WHEEL[2] : CLASSIC.negative)
    : (palette === 'safe' ? SAFE_WHEEL[0] : CLASSIC.positive));
  if (palette !== 'safe') return c.setHSL(turn, 0.9, 0.55, THREE.SRGBColorSpace);
  const at = turn * 4;
  const i = Math.floor(at) % 4;
  return c.set(SAFE_WHEEL[i]).lerp(new THREE.Color(SAFE_WHEEL[(i + 1) % 4]), at - Math.floor(at));
}

// Viridis (the perceptually uniform map of matplotlib) at nine stops, for probability levels.
export const VIRIDIS = ['#440154', '#472d7b', '#3b528b', '#2c728e', '#21918c', '#28ae80', '#5ec962', '#addc30', '#fde725'];
export function viridis(v) {
  const at = Math.min(1, Math.max(0, v)) * (VIRIDIS.length - 1);
  const i = Math.min(VIRIDIS.length - 2, Math.floor(at));
  return new THREE.Color(VIRIDIS[i]).lerp(new THREE.Color(VIRIDIS[i + 1]), at - i);
}

/** The wheel's colours as CSS, for a legend: the signs, or the wheel at quarter turns. */
export const legendColours = (palette) => (palette === 'safe' ? SAFE_WHEEL
  : [CLASSIC.positive, '#8cff3c', CLASSIC.negative, '#ff3cf0']);

// A software renderer (no GPU) rasterises every sample of multisampling on the CPU, which
// makes a frame several times slower; without a GPU the view goes without it.
function softwareRenderer() {
  const gl = document.createElement('canvas').getContext('webgl2');
  if (!gl) return false;
  const software = (name) => /swiftshader|llvmpipe|softpipe|software/i.test(String(name));
  // Some browsers name the renderer itself; others only through the debug extension.
  let found = software(gl.getParameter(gl.RENDERER));
  if (!found && /webkit|mozilla/i.test(String(gl.getParameter(gl.RENDERER)))) {
    const info = gl.getExtension('WEBGL_debug_renderer_info');
    found = Boolean(info) && software(gl.getParameter(info.UNMASKED_RENDERER_WEBGL));
  }
  gl.getExtension('WEBGL_lose_context')?.loseContext();
  return found;
}

function niceLength(maxBohr) {
  for (const v of [5000, 2000, 1000, 500, 200, 100, 50, 20, 10, 5, 2, 1, 0.5, 0.2, 0.1]) if (v <= maxBohr) return v;
  return 0.1;
}

export class Scene3D {
  constructor(canvas, labels, scaleText, scaleBar) {
    this.canvas = canvas;
    this.labels = labels;
    this.scaleText = scaleText;
    this.scaleBar = scaleBar;
    this.software = softwareRenderer();
    this.renderer = new THREE.WebGLRenderer({ canvas, antialias: !this.software, preserveDrawingBuffer: true });
    this.renderer.setClearColor(0x000000);
    this.camera = new THREE.PerspectiveCamera(35, 1, 0.01, 10000);
    this.camera.up.set(0, 0, 1);
    this.controls = new OrbitControls(this.camera, canvas);
    this.controls.enablePan = false;
    this.controls.addEventListener('change', () => this.render());
    this.panels = [];
    this.radius = 10;
    this.palette = 'safe';
    this.colouring = 'phase';
    this.resetView();
    new ResizeObserver(() => this.resize()).observe(canvas.parentElement);
    canvas.addEventListener('keydown', (ev) => this.onKey(ev));
  }

  /** The starting view: from the front right, a little above, the whole state in sight. */
  resetView() {
    const d = this.radius * 3.3;
    this.camera.position.set(d * 0.75, d * 0.45, d * 0.48);
    this.controls.target.set(0, 0, 0);
    this.controls.update();
  }

  /** Arrow keys turn the view 5 degrees; + and - zoom. */
  onKey(ev) {
    const turns = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] }[ev.key];
    const zoom = { '+': 0.9, '=': 0.9, '-': 1 / 0.9 }[ev.key];
    if (!turns && !zoom) return;
    ev.preventDefault();
    const offset = this.camera.position.clone().sub(this.controls.target);
    // Spherical coordinates about z (the view's up).
    const s = new THREE.Spherical().setFromCartesianCoords(offset.x, offset.z, -offset.y);
    if (turns) {
      s.theta += turns[0] * KEY_STEP;
      s.phi = Math.min(Math.PI - 0.01, Math.max(0.01, s.phi + turns[1] * KEY_STEP));
    } else {
      s.radius *= zoom;
    }
    const v = new THREE.Vector3().setFromSpherical(s);
    this.camera.position.set(v.x, -v.z, v.y).add(this.controls.target);
    this.controls.update();
  }

  /** Shows one panel per entry of `states`: {xyz, phase, real, mesh, title}. */
  show(states, radius) {
    for (const p of this.panels) p.scene.traverse((o) => { o.geometry?.dispose(); o.material?.dispose(); });
    const keepView = Math.abs(radius - this.radius) < 1e-9 && this.panels.length === states.length;
    this.radius = radius;
    this.panels = states.map((s) => this.panel(s));
    if (!keepView) this.resetView();
    this.render();
  }

  /** The colours of the points of `s` into `colours` (r, g, b a point): the phase, or (for
   *  dots) probability levels (viridis over three decades of density below the highest dot's). */
  dotColours(s, colours, levels = this.colouring === 'levels') {
    const count = s.xyz.length / 3;
    const cache = new Map();
    const top = levels && s.density ? Math.max(...s.density) : 0;
    for (let i = 0; i < count; i++) {
      if (top > 0) {
        viridis(1 + Math.log10(Math.max(s.density[i] / top, 1e-6)) / 3).toArray(colours, 3 * i);
        continue;
      }
      const key = s.real ? (Math.cos(s.phase[i]) >= 0 ? 0 : 1) : Math.round(s.phase[i] * 64);
      if (!cache.has(key)) cache.set(key, phaseColour(s.real ? key * Math.PI : key / 64, this.palette, s.real));
      const c = cache.get(key);
      colours[3 * i] = c.r;
      colours[3 * i + 1] = c.g;
      colours[3 * i + 2] = c.b;
    }
    return colours;
  }

  /** New dots for panel i, as many as it has, written into its buffers (a step of an animation:
   *  the renderer updates them in place instead of making new ones each frame). */
  moveDots(i, s) {
    const dots = this.panels[i]?.scene.getObjectByName('dots');
    const position = dots?.geometry.getAttribute('position');
    if (!position || position.array.length !== s.xyz.length) {
      this.update(i, s);
      return;
    }
    position.array.set(s.xyz);
    position.needsUpdate = true;
    const colour = dots.geometry.getAttribute('color');
    this.dotColours(s, colour.array);
    colour.needsUpdate = true;
    const surface = this.panels[i].scene.getObjectByName('surface');
    if (surface) this.setSurface(i, s);
    else this.render();
  }

  /** New dots (and surface) for panel i, keeping the view. */
  update(i, s) {
    const old = this.panels[i];
    old.scene.traverse((o) => { o.geometry?.dispose(); o.material?.dispose(); });
    this.panels[i] = this.panel(s);
    this.render();
  }

  /** Compiles and links the shaders of dots, surface and axes by drawing a panel of one dot and
   *  one triangle (cleared in the same task, so never seen) while the page waits for its
   *  engine, so the first picture need not wait for them. Its materials are kept: three.js
   *  deletes a compiled program when the last material using it is disposed. */
  warmUp() {
    const one = { xyz: new Float32Array(3), phase: new Float32Array(1), real: true,
      mesh: { xyz: new Float32Array([0, 0, 0, 1, 0, 0, 0, 1, 0]), triangles: new Uint32Array([0, 1, 2]),
        phase: new Float32Array(3) } };
    const { scene } = this.panel(one);
    this.renderer.render(scene, this.camera);
    this.renderer.clear();
    scene.traverse((o) => { o.geometry?.dispose(); });
    this.warmMaterials = [];
    scene.traverse((o) => { if (o.material) this.warmMaterials.push(o.material); });
  }

  /** Lays the surface of `s` over panel i's dots (replacing any), keeping them and the view. */
  setSurface(i, s) {
    const scene = this.panels[i].scene;
    const old = scene.getObjectByName('surface');
    if (old) {
      scene.remove(old);
      old.geometry.dispose();
      old.material.dispose();
    }
    if (s.mesh && s.mesh.triangles.length) scene.add(this.surfaceOf(s));
    this.render();
  }

  surfaceOf(s) {
    const g = new THREE.BufferGeometry();
    g.setAttribute('position', new THREE.BufferAttribute(s.mesh.xyz, 3));
    const colours = this.dotColours({ xyz: s.mesh.xyz, phase: s.mesh.phase, real: s.real },
      new Float32Array(s.mesh.xyz.length), false);
    g.setAttribute('color', new THREE.BufferAttribute(colours, 3));
    g.setIndex(new THREE.BufferAttribute(s.mesh.triangles, 1));
    g.computeVertexNormals();
    const mesh = new THREE.Mesh(g, new THREE.MeshLambertMaterial({ vertexColors: true,
      transparent: true, opacity: 0.3, side: THREE.DoubleSide, depthWrite: false,
      // Back faces, then front ones, in two passes on a GPU; one pass in software (a third less).
      forceSinglePass: this.software }));
    mesh.name = 'surface';
    return mesh;
  }

  panel(s) {
    const scene = new THREE.Scene();
    scene.add(new THREE.AmbientLight(0xffffff, 1.6));
    const light = new THREE.DirectionalLight(0xffffff, 1.6);
    light.position.set(1, 1, 2);
    scene.add(light);
    if (s.xyz) {
      const count = s.xyz.length / 3;
      const g = new THREE.BufferGeometry();
      g.setAttribute('position', new THREE.BufferAttribute(s.xyz, 3));
      g.setAttribute('color', new THREE.BufferAttribute(this.dotColours(s, new Float32Array(count * 3)), 3));
      const size = Math.max(1.5, 2.2 * Math.sqrt(20000 / Math.max(count, 1))) * (window.devicePixelRatio || 1);
      const dots = new THREE.Points(g, new THREE.PointsMaterial({ size, sizeAttenuation: false,
        vertexColors: true, transparent: true, opacity: 0.85, depthWrite: false }));
      dots.name = 'dots';
      scene.add(dots);
    }
    if (s.mesh && s.mesh.triangles.length) scene.add(this.surfaceOf(s));
    const ends = [];
    for (const a of [[1, 0, 0], [0, 1, 0], [0, 0, 1]]) {
      ends.push(new THREE.Vector3(...a).multiplyScalar(-this.radius), new THREE.Vector3(...a).multiplyScalar(this.radius));
    }
    const axes = new THREE.BufferGeometry().setFromPoints(ends);
    scene.add(new THREE.LineSegments(axes, new THREE.LineBasicMaterial({ color: 0x8a93a6, transparent: true, opacity: 0.6 })));
    return { scene, title: s.title || '' };
  }

  resize() {
    const parent = this.canvas.parentElement;
    const w = parent.clientWidth;
    const h = parent.clientHeight;
    if (!w || !h) return;
    this.renderer.setPixelRatio(window.devicePixelRatio || 1);
    this.renderer.setSize(w, h, false);
    this.render();
  }

  /** Draws every panel in its own part of the canvas, then the labels and the scale bar. */
  render() {
    const size = this.renderer.getSize(new THREE.Vector2());
    const n = Math.max(1, this.panels.length);
    // The grid whose panels come nearest to square, so none is a sliver that cuts its state.
    const squareness = (c) => Math.abs(Math.log((size.x / c) / (size.y / Math.ceil(n / c))));
    let cols = 1;
    for (let c = 2; c <= n; c++) if (squareness(c) <= squareness(cols)) cols = c;
    const rows = Math.ceil(n / cols);
    const w = size.x / cols;
    const h = size.y / rows;
    this.camera.aspect = w / h;
    this.camera.updateProjectionMatrix();
    this.renderer.setScissorTest(true);
    this.renderer.clear();
    this.labels.textContent = '';
    this.panels.forEach((p, i) => {
      const x = (i % cols) * w;
      const y = size.y - (Math.floor(i / cols) + 1) * h;
      this.renderer.setViewport(x, y, w, h);
      this.renderer.setScissor(x, y, w, h);
      this.renderer.render(p.scene, this.camera);
      this.label(x, size.y - y - h, w, h, p.title);
    });
    this.renderer.setScissorTest(false);
    // Bohr radii per CSS pixel at the nucleus's distance.
    const distance = this.camera.position.distanceTo(this.controls.target);
    const bohrPerPixel = (2 * distance * Math.tan((this.camera.fov * Math.PI) / 360)) / h;
    const bohr = niceLength(120 * bohrPerPixel);
    this.scaleBar.style.setProperty('--bar', `${bohr / bohrPerPixel}px`);
    this.scaleText.textContent = `${bohr} a₀ = ${Math.round(bohr * PM_PER_BOHR)} pm`;
  }

  /** x, y, z labels at the axes' positive ends, and the panel's title. */
  label(left, top, w, h, title) {
    const put = (text, x, y, cls) => {
      const span = document.createElement('span');
      span.textContent = text;
      span.className = cls;
      span.style.left = `${x}px`;
      span.style.top = `${y}px`;
      this.labels.append(span);
    };
    ['x', 'y', 'z'].forEach((name, a) => {
      const v = new THREE.Vector3();
      v.setComponent(a, this.radius * 1.05);
      v.project(this.camera);
      // Kept inside the panel, so a long axis still shows its name at the edge.
      const clamp = (u, lo, hi) => Math.min(hi, Math.max(lo, u));
      if (v.z < 1) {
        put(name, left + clamp(((v.x + 1) / 2) * w, 10, w - 10), top + clamp(((1 - v.y) / 2) * h, 10, h - 10), 'axis');
      }
    });
    if (title) put(title, left + 8, top + 6, 'title');
  }

  /** The surface of panel 0 (for the exporters), or null. */
  surface(i = 0) {
    return this.panels[i]?.scene.getObjectByName('surface') || null;
  }
}
