// The classic views: the engine's own five pictures (dots, dots in perspective, the red/green
// anaglyph, the volumetric cloud and the slice) of one state at a time, drawn by the engine's
// grid path: a catalogue orbital as it has always been drawn, any other state through the
// collection's own add for states. The axes and a scale bar lie over them. Its controls live in
// the picker's column; the page (viewer.js) says what to show.

const $ = (id) => document.getElementById(id);

import { NAMES } from './names.js';

// The box's half-width is a 16-bit whole number of Bohr radii; a large state's own box (about
// 900 a0 at n = 20) must be within reach of the field too.
const MAX_BOX = 32767;

// Modes, views and sizes from the engine's one table of names (names.js, made at build time).
const valueOf = (kind, key) => NAMES[kind].find((n) => n.key === key).value;
const MAIN = valueOf('size', 'main');
const NANO = valueOf('size', 'nano');
const MODE = {
  dots: valueOf('mode', 'orthographic'), perspective: valueOf('mode', 'perspective'),
  anaglyph: valueOf('mode', 'anaglyph'), cloud: valueOf('mode', 'volumetric'),
  slice: valueOf('mode', 'transect'),
};
// What the table's short labels leave unsaid, said beside them.
const LABEL_NOTES = { anaglyph: ' (needs red/green glasses)', drpdf: ': density × ρ·r' };
const ANGSTROM_PER_BOHR = 0.529177;
// Okabe–Ito orange and blue (colour-blind safe), or the classic orange and blue.
const PHASE = { safe: [0xe69f00, 0x0072b2], classic: [0xff8a3c, 0x3c9cff] };
const START_THETA = 0.35;
const START_PHI = 0.55;
const DOT_TARGET = 10000;
const KEY_STEP = Math.PI / 36; // 5 degrees
// The page's box for an orbital: the radius holding this share of the probability.
const HELD_SHARE = 0.995;

const MODE_HELP = [
  'Dots: every dot is a place where the electron may be found, seen straight on. Near dots are bright, far ones dim. These dots come from the engine\'s grid, whose byte levels leave out the faintest shells; the 3-D view draws exact samples.',
  'Dots in perspective: as a camera sees them, from the camera distance below; near and far parts differ in size.',
  'Red/green 3-D: one picture per eye in one frame, green for the left eye and red for the right. It needs red/green glasses (green filter on the left eye), and it cannot be seen in depth by people who do not tell red from green; a negative eye spacing divisor swaps the eyes.',
  'Cloud: the density added up along each line of sight, the near side counting most: bright where the electron spends much time.',
  'Slice: a cut through the orbital, the density in one plane; choose the plane and its position under "Slice". Bright: likely places.',
];
const VIEW_HELP = [
  'ψ² is the probability density: how likely the electron is in a tiny box at each point.',
  'Density × ρ·r: the engine\'s radial view multiplies ψ² by ρ (the distance from the z axis) times r (the distance from the nucleus), so the far shells stand out. It is not the textbook radial distribution r²|ψ|²: even the round 1s then looks like two lobes, and the z axis stays empty. For the subshell averages the weight is r².',
];
const COLOUR_HELP = {
  grey: 'Grey dots: the brightness shows depth only.',
  levels: 'Probability levels in the engine\'s classic colours: red in unlikely places, green in likely ones (not for red/green colour blindness).',
  phase: 'Sign of ψ: orange where the wavefunction is positive, blue where it is negative. A subshell average has no sign: its dots are grey.',
};

let engine;
let say;
let explain;
let onChange = () => {};
const state = {
  catalogue: [],
  defaults: null,
  heldRadius: [],
  o: null, // {handle, what, view, seed, refillSeed, setup}
  theta: START_THETA,
  phi: START_PHI,
  palette: 'safe',
  busy: false,
};
const current = () => state.o;
const radioValue = (name) => document.querySelector(`input[name=${name}]:checked`).value;
const setRadio = (name, value) => {
  const input = document.querySelector(`input[name=${name}][value="${value}"]`);
  if (input) input.checked = true;
};
const mode = () => Number(radioValue('mode'));
// What is shown: a catalogue row (its index) or any other state, {text, t, signed} (signed: Psi
// is real, so its dots can take the colours of its sign).
const isState = (what) => typeof what === 'object';
const isAverage = (index) => state.catalogue[index].OrbType === 1;
const unsigned = (what) => (isState(what) ? !what.signed : isAverage(what));
const FS_PER_AU = 0.024188843; // femtoseconds per hbar/E_h
const displayName = (what) => {
  if (isState(what)) return what.t ? `${what.text} at t = ${(what.t * FS_PER_AU).toFixed(3)} fs` : what.text;
  const info = state.catalogue[what];
  return isAverage(what) ? `⟨${info.Name}⟩` : info.Name;
};
/** Whether two things to show are the same. */
export const same = (a, b) => (isState(a) && isState(b) ? a.text === b.text && a.t === b.t : a === b);
const visible = () => !$('classic').hidden;

// The dot colouring drawn: an average has no sign, so it is drawn grey while the choice stays.
function dotColour() {
  const colour = radioValue('colour');
  const o = current();
  return colour === 'phase' && o && unsigned(o.what) ? 'grey' : colour;
}

// Reads a whole number from an input and checks its range; says what is wrong if not.
function whole(id, min, max, label) {
  const text = $(id).value.trim();
  const v = Number(text);
  if (text === '' || !Number.isInteger(v) || v < min || v > max) {
    say(`${label} must be a whole number from ${min} to ${max}.`);
    $(id).focus();
    return null;
  }
  return v;
}

function baseRequest() {
  const levels = dotColour() === 'levels';
  return {
    ...state.defaults,
    Theta: state.theta,
    Phi: state.phi,
    CameraPos: Number($('cameraPos').value),
    ProjectionPlane: Number($('projectionPlane').value),
    StereoFactor: Number($('stereoFactor').value),
    TransectNo: Number($('transectNo').value),
    TransectDir: Number($('transectDir').value),
    Transector: $('transector').checked && dotColour() !== 'phase',
    VolQuality: Number($('volQuality').value),
    ShowProbLevelOnDots: levels,
    ShowProbLevelOnTrans: levels && $('sliceColour').checked,
  };
}

function settingsValid() {
  const checks = [['cameraPos', -32768, 32767, 'The camera distance'],
    ['projectionPlane', -32768, 32767, 'The screen distance'],
    ['stereoFactor', -32768, 32767, 'The eye spacing divisor']];
  if (checks.some(([id, lo, hi, label]) => whole(id, lo, hi, label) === null)) return false;
  const central = mode() === MODE.perspective || mode() === MODE.anaglyph;
  if (central && Number($('cameraPos').value) === 0) {
    say('The camera distance must not be 0: the camera would sit at the nucleus.');
    return false;
  }
  if (mode() === MODE.anaglyph && Number($('stereoFactor').value) === 0) {
    say('The eye spacing divisor must not be 0: the eyes would be infinitely far apart.');
    return false;
  }
  return true;
}

function paint(canvas, picture) {
  if (canvas.width !== picture.width) {
    canvas.width = picture.width;
    canvas.height = picture.height;
  }
  const ctx = canvas.getContext('2d');
  const image = ctx.createImageData(picture.width, picture.height);
  const src = picture.bgra;
  const dst = image.data;
  // The engine's pixels are B, G, R and a scratch byte: shown opaque.
  for (let i = 0; i < dst.length; i += 4) {
    dst[i] = src[i + 2];
    dst[i + 1] = src[i + 1];
    dst[i + 2] = src[i];
    dst[i + 3] = 255;
  }
  ctx.putImageData(image, 0, 0);
}


// A picture of the engine's, or the page's phase-coloured dot picture in its place.
function picture(o, request) {
  const m = request.Mode;
  if ((m === MODE.dots || m === MODE.perspective) && dotColour() === 'phase') {
    return engine('renderPhase', o.handle, request, ...PHASE[state.palette], isState(o.what) ? o.what.text : '');
  }
  return engine('render', o.handle, request);
}

// Main and small picture in the order the slice colours need: a slice takes level colours
// from the dot picture drawn just before it, so the slice always follows its dot picture.
async function drawPictures(preview) {
  const o = current();
  if (!o || !settingsValid()) return;
  const req = baseRequest();
  const m = mode();
  try {
    if (m === MODE.slice) {
      if (!preview) paint($('nano'), await picture(o, { ...req, Size: NANO, Mode: MODE.dots }));
      paint($('main'), await engine('render', o.handle, { ...req, Size: MAIN, Mode: MODE.slice }));
    } else {
      const main = await picture(o, { ...req, Size: MAIN, Mode: m, VolFinal: !(preview && m === MODE.cloud) });
      paint($('main'), main);
      if (!preview) paint($('nano'), await engine('render', o.handle, { ...req, Size: NANO, Mode: MODE.slice }));
    }
    drawOverlay();
    if (!preview) say('');
  } catch (e) {
    explain(e, 'This picture could not be drawn.');
  }
}


// One drawing at a time; a request while one runs makes one more run with the newest state.
let drawing = null;
let again = null;
export function draw(preview = false) {
  if (!visible() || !current()) return Promise.resolve();
  if (drawing) {
    again = again === null ? preview : again && preview;
    return drawing;
  }
  state.busy = true;
  drawing = (async () => {
    await drawPictures(preview);
    while (again !== null) {
      const p = again;
      again = null;
      await drawPictures(p);
    }
    if (!preview) {
      showControls();
      await showStats();
    }
    drawing = null;
    state.busy = false;
    onChange();
  })();
  return drawing;
}


// Screen directions of the axes under the engine's view transform: right, up and depth.
function axisOnScreen(axis) {
  const cT = Math.cos(state.theta);
  const sT = Math.sin(state.theta);
  const cP = Math.cos(state.phi);
  const sP = Math.sin(state.phi);
  return [[cP, 0, -sP], [cT * sP, -sT, cT * cP], [sT * sP, cT, sT * cP]][axis];
}

function niceLength(maxBohr) {
  for (const v of [5000, 2000, 1000, 500, 200, 100, 50, 20, 10, 5, 2, 1, 0.5, 0.2, 0.1]) if (v <= maxBohr) return v;
  return 0.1;
}

function drawOverlay() {
  const canvas = $('overlay');
  const ctx = canvas.getContext('2d');
  const w = canvas.width;
  const k = w / MAIN; // device pixels per engine pixel
  ctx.clearRect(0, 0, w, w);
  const o = current();
  if (!o) return;
  const m = mode();
  const px = (v) => Math.max(1, Math.round(v * k));
  ctx.font = `${px(12)}px system-ui, sans-serif`;
  ctx.lineWidth = px(2);
  ctx.lineCap = 'round';

  // The axes: turning with the picture; the slice shows its two in-plane axes.
  const cx = px(34);
  const cy = w - px(34);
  const len = px(24);
  const colours = ['#ff6b6b', '#6bdc6b', '#6bb0ff'];
  const sliceAxes = [[1, 2], [0, 2], [0, 1]][Number($('transectDir').value)];
  const axes = [0, 1, 2].map((a) => {
    if (m !== MODE.slice) return { a, v: axisOnScreen(a) };
    const i = sliceAxes.indexOf(a);
    return { a, v: i < 0 ? [0, 0, 1] : i === 0 ? [1, 0, 0] : [0, 1, 0] };
  });
  axes.sort((p, q) => q.v[2] - p.v[2]); // far axes first
  for (const { a, v } of axes) {
    const x = cx + v[0] * len;
    const y = cy - v[1] * len;
    ctx.globalAlpha = v[2] > 0.2 ? 0.55 : 1;
    ctx.strokeStyle = colours[a];
    ctx.fillStyle = colours[a];
    ctx.beginPath();
    ctx.moveTo(cx, cy);
    ctx.lineTo(x, y);
    ctx.stroke();
    if (Math.hypot(v[0], v[1]) > 0.15) {
      ctx.fillText('xyz'[a], cx + v[0] * (len + px(9)) - px(3), cy - v[1] * (len + px(9)) + px(4));
    } else {
      ctx.fillText('xyz'[a] + (v[2] < 0 ? '⊙' : '⊗'), cx + px(4), cy - px(4));
    }
  }
  ctx.globalAlpha = 1;

  // The scale bar: 127 engine pixels are the box half-width; a perspective picture is scaled
  // by the projection at the nucleus.
  let pxPerBohr = 127 / o.setup.AtomRadius;
  if (m === MODE.perspective || m === MODE.anaglyph) {
    const cam = Number($('cameraPos').value);
    const plane = Number($('projectionPlane').value);
    pxPerBohr *= cam === 0 ? 1 : Math.abs((plane - cam) / cam);
  }
  const bohr = niceLength(110 / pxPerBohr);
  const bar = bohr * pxPerBohr * k;
  const right = w - px(14);
  const base = w - px(16);
  ctx.strokeStyle = '#fff';
  ctx.fillStyle = '#fff';
  ctx.beginPath();
  ctx.moveTo(right - bar, base - px(5));
  ctx.lineTo(right - bar, base);
  ctx.lineTo(right, base);
  ctx.lineTo(right, base - px(5));
  ctx.stroke();
  const label = `${bohr} a₀ = ${Number((bohr * ANGSTROM_PER_BOHR).toPrecision(2))} Å`;
  ctx.textAlign = 'right';
  ctx.fillText(label, right, base - px(8));
  if (m === MODE.perspective || m === MODE.anaglyph) ctx.fillText('at the nucleus', right, base - px(22));
  ctx.textAlign = 'left';
}

// Pictures as large as the room allows, in whole multiples of the engine's pixels (or shrunk
// pixel-exact on a screen narrower than one picture), so they are never blurred.
export function layout() {
  const dpr = window.devicePixelRatio || 1;
  const room = $('stage').clientWidth - 2;
  const tall = Math.max(Math.min(MAIN, room) / dpr, window.innerHeight - 120);
  const device = Math.floor(Math.min(room, tall) * dpr);
  const edge = device >= MAIN ? Math.floor(device / MAIN) * MAIN : device;
  const css = `${edge / dpr}px`;
  for (const id of ['main', 'overlay']) Object.assign($(id).style, { width: css, height: css });
  $('overlay').width = edge;
  $('overlay').height = edge;
  // The small picture at two or three times its pixels, beside the large one when there is room.
  const nano = room < 600 ? 1 : Math.max(1, Math.min(3, Math.floor(Math.min(room * dpr, edge * 0.7) / 127)));
  const nanoCss = `${(nano * 127) / dpr}px`;
  Object.assign($('nano').style, { width: nanoCss, height: nanoCss });
  drawOverlay();
}

// ---- Panels: controls shown only where they act, the orbital's facts, statistics ----
// ---- Controls shown only where they act; the engine's statistics ----

function showControls() {
  const m = mode();
  const o = current();
  const dots = m === MODE.dots || m === MODE.perspective;
  const hide = (id, hidden) => { $(id).hidden = hidden; };
  hide('dotColours', !(dots || m === MODE.slice));
  hide('cameraBox', !(m === MODE.perspective || m === MODE.anaglyph));
  hide('stereoChoice', m !== MODE.anaglyph);
  hide('cloudBox', m !== MODE.cloud);
  hide('outlineChoice', m === MODE.slice || (dots && dotColour() === 'phase'));
  hide('sliceColourChoice', dotColour() !== 'levels');
  $('modeHelp').textContent = MODE_HELP[m];
  $('colourHelp').textContent = m === MODE.slice
    ? 'The small picture shows the dots; with "Probability levels" and "Colour the slice too" the slice takes level colours.'
    : COLOUR_HELP[radioValue('colour')];
  $('viewHelp').textContent = VIEW_HELP[Number(radioValue('view'))];
  $('sliceHelp').textContent = `${m === MODE.slice ? 'The large picture is the slice, the small one the dots.' : 'The small picture shows the slice.'} `
    + 'A slice takes level colours only beside a dot picture coloured by probability levels.';
  $('cameraHelp').textContent = 'Distances in the engine\'s picture units (127 is the box half-width). The camera looks from its distance (not 0) onto a screen at the screen distance; screen distance 0 draws the nucleus\'s plane at full size'
    + (m === MODE.anaglyph ? '; the eyes stand |camera − screen| ÷ divisor apart (0 is not allowed).' : '.');
  const t = Number($('transectNo').value);
  const axis = 'xyz'[Number($('transectDir').value)];
  const at = o ? (t * o.setup.AtomRadius) / 127 : t;
  $('transectNoOut').textContent = o ? `${axis} = ${at < 0 ? '−' : ''}${Math.abs(at).toFixed(2)} a₀` : String(t);
  $('nanoCaption').textContent = m === MODE.slice ? 'Dots' : `Slice across ${axis}`;
  const view = o ? (o.view ? 'density × ρ·r' : 'ψ²') : '';
  $('caption').textContent = o ? `${displayName(o.what)}, ${view}` : '';
  const deg = (r) => Math.round((r * 180) / Math.PI);
  $('angles').textContent = m === MODE.slice ? '' : `· turned ${deg(state.theta)}°, ${deg(state.phi)}°`;
}

function fillList(dl, rows) {
  dl.replaceChildren(...rows.flatMap(([k, v]) => {
    const dt = document.createElement('dt');
    const dd = document.createElement('dd');
    dt.textContent = k;
    dd.textContent = v;
    return [dt, dd];
  }));
}

async function showStats() {
  const o = current();
  const s = await engine('stats', o.handle);
  fillList($('stats'), [['Dots drawn', `${s.DotTotal} of ${s.DotTarget} asked for`],
    ['Box half-width', `${o.setup.AtomRadius} a₀`], ['Grid time', `${s.CalcTime} ms`],
    ['Dot time', `${s.DotTime} ms`], ['Commonest level', String(s.Mode)]]);
  const canvas = $('histogram');
  const ctx = canvas.getContext('2d');
  const { width: w, height: h } = canvas;
  ctx.fillStyle = '#0d0f14';
  ctx.fillRect(0, 0, w, h);
  const top = Math.max(1, ...s.ProbFreqs.map((v) => Math.log10(1 + v)));
  for (let p = 0; p < 256; p++) {
    const bar = Math.round((Math.log10(1 + s.ProbFreqs[p]) / top) * (h - 2));
    ctx.fillStyle = '#56b4e9';
    ctx.fillRect(p, h - bar, 1, bar);
  }
}

// ---- The orbital shown: one at a time, replaced only once the new one exists ----

/** Shows `what` (a catalogue index or a state, in `view`, 0 or 1), replacing the one shown. */
export async function show(what, options = {}) {
  const { view = Number(radioValue('view')), threshold = 0, target = DOT_TARGET,
    seed = 40000 + Math.floor(Math.random() * 1e9), refillSeed = null } = options;
  // A state's box: the engine's own (the radius holding 99.9 %) unless the link gives one.
  const radius = options.radius ?? (isState(what) ? 0 : await heldRadius(what));
  const setup = { OrbitalIndex: isState(what) ? 0 : what, OrbitalViewMode: view, AtomRadius: radius,
    DotThreshold: threshold, DotTarget: target };
  let added;
  try {
    added = isState(what) ? await engine('addState', what.text, what.t, setup, seed)
      : await engine('add', setup, seed);
    if (refillSeed !== null) added = { ...added, ...(await engine('refill', added.handle, threshold, target, refillSeed)) };
  } catch (e) {
    explain(e, `${displayName(what)} could not be calculated with these settings.`);
    return false;
  }
  const old = state.o;
  state.o = { handle: added.handle, what, view, seed, refillSeed, setup: added.setup };
  if (old) await engine('remove', old.handle).catch(() => {});
  $('dotTarget').value = added.setup.DotTarget;
  $('dotThreshold').value = added.setup.DotThreshold;
  $('atomRadius').value = added.setup.AtomRadius;
  setRadio('view', view);
  await draw();
  return true;
}

// The same orbital again with another view or box.
function redo(changes) {
  const o = current();
  if (!o) return null;
  return show(o.what, { view: o.view, radius: o.setup.AtomRadius, seed: o.seed,
    threshold: o.setup.DotThreshold, target: o.setup.DotTarget, ...changes });
}

// New dots under a seed of the page's, which the link keeps, so the link brings them back.
async function refill() {
  const o = current();
  const target = whole('dotTarget', 1, 32767, 'The number of dots');
  const threshold = target === null ? null : whole('dotThreshold', 0, 254, 'The level left out');
  if (!o || threshold === null) return;
  const seed = 40000 + Math.floor(Math.random() * 1e9);
  try {
    const r = await engine('refill', o.handle, threshold, target, seed);
    o.setup = r.setup;
    o.refillSeed = seed;
    if (r.stats.DotTotal === 0) say('No grid point is above that level: try leaving out fewer levels.');
    await draw();
  } catch (e) {
    explain(e, 'The dots could not be drawn again.');
  }
}

async function resize() {
  const radius = whole('atomRadius', 1, MAX_BOX, 'The box half-width');
  if (radius !== null) await redo({ radius, refillSeed: current()?.refillSeed ?? null });
}

// The page's box for an orbital: where its cumulative radial distribution reaches HELD_SHARE.
async function heldRadius(index) {
  if (state.heldRadius[index]) return state.heldRadius[index];
  const step = 0.25;
  const radii = Array.from({ length: 401 }, (_, i) => i * step);
  const p = await engine('radialDistribution', index, radii);
  let sum = 0;
  let held = radii[radii.length - 1];
  for (let i = 1; i < p.length; i++) {
    sum += ((p[i - 1] + p[i]) / 2) * step;
    if (sum >= HELD_SHARE) {
      held = radii[i];
      break;
    }
  }
  state.heldRadius[index] = Math.ceil(held);
  return state.heldRadius[index];
}

// ---- Turning: pointer (mouse, pen, touch), keys ----

function setupDrag() {
  const canvas = $('main');
  let last = null;
  canvas.addEventListener('pointerdown', (ev) => {
    canvas.setPointerCapture(ev.pointerId);
    last = { x: ev.clientX, y: ev.clientY };
    canvas.classList.add('dragging');
  });
  canvas.addEventListener('pointermove', (ev) => {
    if (!last) return;
    // A point at the edge of the box follows the finger: the box half-width on screen is one radian.
    const radius = (canvas.getBoundingClientRect().width * 127) / MAIN;
    state.phi += (ev.clientX - last.x) / radius;
    state.theta += (ev.clientY - last.y) / radius;
    last = { x: ev.clientX, y: ev.clientY };
    drawOverlay();
    draw(true);
  });
  const end = () => {
    if (!last) return;
    last = null;
    canvas.classList.remove('dragging');
    draw();
  };
  canvas.addEventListener('pointerup', end);
  canvas.addEventListener('pointercancel', end);
}

export function resetView() {
  state.theta = START_THETA;
  state.phi = START_PHI;
  return draw();
}

function onKey(ev) {
  const turns = { ArrowLeft: [0, -1], ArrowRight: [0, 1], ArrowUp: [-1, 0], ArrowDown: [1, 0] }[ev.key];
  const layer = { '+': 1, '=': 1, '-': -1, _: -1 }[ev.key];
  if (turns) {
    state.theta += turns[0] * KEY_STEP;
    state.phi += turns[1] * KEY_STEP;
  } else if (layer) {
    const input = $('transectNo');
    input.value = String(Math.max(-127, Math.min(127, Number(input.value) + layer)));
  } else {
    return;
  }
  ev.preventDefault();
  draw();
}

/** The picture with its axes and scale, as a canvas. */
export function pictureCanvas() {
  const out = document.createElement('canvas');
  out.width = $('overlay').width;
  out.height = out.width;
  const ctx = out.getContext('2d');
  ctx.imageSmoothingEnabled = false;
  ctx.drawImage($('main'), 0, 0, out.width, out.height);
  ctx.drawImage($('overlay'), 0, 0);
  return out;
}

// ---- The link: every setting of the classic views ----

const LINK_INPUTS = { d: 'transectDir', n: 'transectNo', cam: 'cameraPos', pl: 'projectionPlane',
  st: 'stereoFactor', q: 'volQuality' };

/** Writes the classic views' settings into URLSearchParams `p`. */
export function writeLink(p) {
  const o = current();
  if (o) {
    p.set('cv', o.view);
    p.set('cs', o.seed);
    if (o.refillSeed !== null) p.set('rs', o.refillSeed);
    p.set('r', o.setup.AtomRadius);
    p.set('k', o.setup.DotTarget);
    p.set('h', o.setup.DotThreshold);
  }
  p.set('m', mode());
  p.set('c', radioValue('colour'));
  p.set('ct', String(state.theta));
  p.set('cp', String(state.phi));
  for (const [key, id] of Object.entries(LINK_INPUTS)) p.set(key, $(id).value);
  p.set('tr', $('transector').checked ? 1 : 0);
  p.set('sc', $('sliceColour').checked ? 1 : 0);
}

/** Restores the settings a link carries, each checked; returns the options for show(). */
export function readLink(p) {
  const num = (key, lo, hi) => {
    const v = Number(p.get(key));
    return p.has(key) && Number.isFinite(v) && v >= lo && v <= hi ? v : null;
  };
  const int = (key, lo, hi) => {
    const v = num(key, lo, hi);
    return v !== null && Number.isInteger(v) ? v : null;
  };
  if (int('m', 0, 4) !== null) setRadio('mode', int('m', 0, 4));
  if (['grey', 'levels', 'phase'].includes(p.get('c'))) setRadio('colour', p.get('c'));
  if (num('ct', -1e6, 1e6) !== null) state.theta = num('ct', -1e6, 1e6);
  if (num('cp', -1e6, 1e6) !== null) state.phi = num('cp', -1e6, 1e6);
  const ranges = { d: [0, 2], n: [-127, 127], cam: [-32768, 32767], pl: [-32768, 32767],
    st: [-32768, 32767], q: [5, 10] };
  for (const [key, id] of Object.entries(LINK_INPUTS)) {
    const v = int(key, ...ranges[key]);
    if (v !== null) $(id).value = String(v);
  }
  for (const [key, id] of [['tr', 'transector'], ['sc', 'sliceColour']]) {
    if (p.has(key)) $(id).checked = p.get(key) === '1';
  }
  const view = int('cv', 0, 1) ?? 0;
  setRadio('view', view);
  return { view, seed: int('cs', 32768, 2 ** 31 - 1) ?? undefined,
    refillSeed: int('rs', 32768, 2 ** 31 - 1), radius: int('r', 1, MAX_BOX) ?? undefined,
    target: int('k', 1, 32767) ?? undefined, threshold: int('h', 0, 254) ?? undefined };
}

// ---- Start ----

/** One radio button per row of a table of names, before the fieldset's help line; the first
 *  is checked. */
function nameRadios(fieldsetId, kind, group) {
  const help = $(fieldsetId).querySelector('p.help');
  NAMES[kind].forEach((n, i) => {
    const label = document.createElement('label');
    const input = document.createElement('input');
    Object.assign(input, { type: 'radio', name: group, value: String(n.value), checked: i === 0 });
    label.append(input, ` ${n.label}${LABEL_NOTES[n.key] || ''}`);
    $(fieldsetId).insertBefore(label, help);
  });
}

/** Sets the classic views up: their controls into `host`, the engine's defaults. */
export function init(options) {
  ({ engine, say, explain } = options);
  onChange = options.onChange || onChange;
  state.catalogue = options.catalogue;
  state.defaults = options.defaults;
  const host = $('classicControls');
  host.append($('classicTemplate').content.cloneNode(true));
  nameRadios('modes', 'mode', 'mode');
  nameRadios('viewBox', 'view', 'view');
  $('cameraPos').value = state.defaults.CameraPos;
  // Screen distance 0: the perspective picture at full size at the nucleus.
  $('projectionPlane').value = 0;
  $('stereoFactor').value = state.defaults.StereoFactor;
  $('volQuality').value = String(state.defaults.VolQuality);
  for (const input of host.querySelectorAll('input[name=mode], input[name=colour]')) {
    input.addEventListener('change', () => draw());
  }
  for (const input of host.querySelectorAll('input[name=view]')) {
    input.addEventListener('change', () => redo({ view: Number(radioValue('view')) }));
  }
  for (const id of ['transectDir', 'transector', 'sliceColour', 'volQuality']) {
    $(id).addEventListener('change', () => draw());
  }
  $('transectNo').addEventListener('input', () => draw());
  $('refill').addEventListener('click', refill);
  $('resize').addEventListener('click', resize);
  $('cameraApply').addEventListener('click', () => draw());
  // Enter applies the field it is pressed in.
  const enter = { dotTarget: refill, dotThreshold: refill, atomRadius: resize, cameraPos: draw,
    projectionPlane: draw, stereoFactor: draw };
  for (const [id, action] of Object.entries(enter)) {
    $(id).addEventListener('keydown', (ev) => {
      if (ev.key !== 'Enter') return;
      ev.preventDefault();
      action();
    });
  }
  $('main').addEventListener('keydown', onKey);
  setupDrag();
}

export const classic = { state, setPalette: (p) => { state.palette = p; } };
