// The Veltara viewer: a page for learners. The engine runs in a Web Worker (engine_worker.js);
// this script keeps the page's state, asks the worker for pictures, draws the axes and the
// scale over them, and explains every control in plain words.

import { NAMES, CATALOGUE_SIZE, HIGHEST_N } from './names.js';

const $ = (id) => document.getElementById(id);

// ---- Constants of the page (the engine's request defaults come from the engine) ----

// Modes, views and sizes from the engine's one table of names (names.js, made at build time).
const valueOf = (kind, key) => NAMES[kind].find((n) => n.key === key).value;
const MAIN = valueOf('size', 'main');
const NANO = valueOf('size', 'nano');
const MODE = {
  dots: valueOf('mode', 'orthographic'), perspective: valueOf('mode', 'perspective'),
  anaglyph: valueOf('mode', 'anaglyph'), cloud: valueOf('mode', 'volumetric'),
  slice: valueOf('mode', 'transect'),
};
const ANGSTROM_PER_BOHR = 0.529177;
const EV_PER_HARTREE = 27.211386;
const PHASE_POSITIVE = 0xff8a3c; // orange where psi > 0
const PHASE_NEGATIVE = 0x3c9cff; // blue where psi < 0
const START_THETA = 0.35;
const START_PHI = 0.55;
const START_ORBITAL = 4; // 2Pz: two lobes of opposite sign, a good first picture
const DOT_TARGET = 10000;
const MAX_LIVE = 8;
const KEY_STEP = Math.PI / 36; // 5 degrees
// The page's own box for an orbital: the radius holding this share of the probability.
const HELD_SHARE = 0.995;

const MODE_HELP = [
  'Dots: every dot is a place where the electron may be found, seen straight on. Near dots are bright, far ones dim.',
  'Dots in perspective: as a camera sees them, from the camera distance below; near and far parts differ in size.',
  'Red/green 3-D: one picture per eye in one frame, green for the left eye and red for the right. Look through red/green glasses (green filter on the left eye); a negative eye spacing divisor swaps the eyes.',
  'Cloud: the density added up along each line of sight, the near side counting most: bright where the electron spends much time. While you drag, a quick coarse cloud is shown.',
  'Slice: a cut through the orbital, the density in one plane; choose the plane and its position under "Slice". Bright: likely places.',
];
const VIEW_HELP = [
  'ψ² is the probability density: how likely the electron is in a tiny box at each point.',
  'Radial weighting multiplies ψ² by a distance so that the shells far out stand out. For a single orbital the engine weights by ρ·r (distance from the z axis times distance from the nucleus), not by r²: even the round 1S then looks flattened along z, and the z axis itself stays empty. That is how this engine draws it. For the subshell averages ⟨ ⟩ the weight is r², the textbook radial distribution.',
];
const COLOUR_HELP = {
  grey: 'Grey dots: the brightness shows depth only.',
  levels: 'Probability: red dots sit in unlikely places, green ones in likely places; depth still shades them.',
  phase: 'Sign of ψ: orange where the wavefunction is positive, blue where it is negative. The sign flips across every node; depth still shades the colours.',
};

// ---- The engine, in its worker ----

class EngineFailure extends Error {
  constructor({ number, message }) {
    super(message);
    this.number = number;
  }
}

const worker = new Worker('engine_worker.js');
const pending = new Map();
let nextCall = 1;
worker.onmessage = ({ data }) => {
  const call = pending.get(data.id);
  pending.delete(data.id);
  if (data.error) call.reject(new EngineFailure(data.error));
  else call.resolve(data.result);
};
worker.onerror = (event) => {
  event.preventDefault();
  say('The engine could not be started in this browser.', event.message);
};

function engine(op, ...args) {
  return new Promise((resolve, reject) => {
    const id = nextCall++;
    pending.set(id, { resolve, reject });
    worker.postMessage({ id, op, args });
  });
}

// ---- State ----

const state = {
  catalogue: [],
  defaults: null,
  heldRadius: [], // the page's box half-width per orbital, a0
  sharedRadius: 0,
  facts: new Map(),
  live: [], // {handle, index, view, seed, setup, stats}
  current: null,
  theta: START_THETA,
  phi: START_PHI,
  timings: { firstPicture: null, adds: [], frames: [] },
};

const current = () => state.live.find((o) => o.handle === state.current) || null;
const radioValue = (name) => document.querySelector(`input[name=${name}]:checked`).value;
const setRadio = (name, value) => {
  const input = document.querySelector(`input[name=${name}][value="${value}"]`);
  if (input) input.checked = true;
};
const mode = () => Number(radioValue('mode'));
const isAverage = (index) => state.catalogue[index].OrbType === 1;
const displayName = (index) => {
  const info = state.catalogue[index];
  return isAverage(index) ? `⟨${info.Name.replace(/^av/, '')}⟩` : info.Name;
};

// The dot colouring actually drawn: phase colours need a single orbital's sign.
function dotColour() {
  const colour = radioValue('colour');
  const o = current();
  return colour === 'phase' && o && isAverage(o.index) ? 'grey' : colour;
}

// ---- Messages: a plain sentence, the engine's number in small print ----

function say(sentence, detail) {
  $('messageText').textContent = sentence || '';
  $('messageCode').textContent = detail || '';
}

function explain(error, what) {
  if (!(error instanceof EngineFailure) || !error.number) {
    say(what, error.message);
    return;
  }
  const plain = {
    5: 'The engine refused one of the values.',
    6: 'A value is too large for the engine.',
    7: 'The browser ran out of memory: remove an orbital from the page.',
    9: 'Nothing to draw with these settings: try leaving out fewer levels.',
    11: 'The eye spacing divisor must not be 0.',
  }[error.number];
  say(`${what} ${plain || ''}`.trim(), `engine error ${error.number}: ${error.message}`);
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

// ---- Requests ----

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
  if (mode() === MODE.anaglyph && Number($('stereoFactor').value) === 0) {
    say('The eye spacing divisor must not be 0: the eyes would be infinitely far apart.');
    return false;
  }
  return true;
}

// ---- Pictures ----

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
    return engine('renderPhase', o.handle, request, PHASE_POSITIVE, PHASE_NEGATIVE);
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
  const started = performance.now();
  try {
    if (m === MODE.slice) {
      if (!preview) paint($('nano'), await picture(o, { ...req, Size: NANO, Mode: MODE.dots }));
      paint($('main'), await engine('render', o.handle, { ...req, Size: MAIN, Mode: MODE.slice }));
    } else {
      const main = await picture(o, { ...req, Size: MAIN, Mode: m, VolFinal: !(preview && m === MODE.cloud) });
      paint($('main'), main);
      if (!preview) paint($('nano'), await engine('render', o.handle, { ...req, Size: NANO, Mode: MODE.slice }));
    }
    if (preview) state.timings.frames.push(performance.now() - started);
    if (state.timings.firstPicture === null) state.timings.firstPicture = performance.now();
    drawOverlay();
    if (!preview) say('');
  } catch (e) {
    explain(e, 'This picture could not be drawn.');
  }
}

// One drawing at a time; a request while one runs makes one more run with the newest state.
let drawing = null;
let again = null;
function draw(preview = false) {
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
    if (!preview) await refreshPanels();
    updateLink();
    drawing = null;
    state.busy = false;
    document.body.dataset.drawn = String(Number(document.body.dataset.drawn || 0) + 1);
  })();
  return drawing;
}

// ---- Axes and scale over the picture ----

// Screen directions of the axes under the engine's view transform: right, up and depth.
function axisOnScreen(axis) {
  const cT = Math.cos(state.theta);
  const sT = Math.sin(state.theta);
  const cP = Math.cos(state.phi);
  const sP = Math.sin(state.phi);
  return [[cP, 0, -sP], [cT * sP, -sT, cT * cP], [sT * sP, cT, sT * cP]][axis];
}

function niceLength(maxBohr) {
  for (const v of [50, 20, 10, 5, 2, 1, 0.5, 0.2, 0.1]) if (v <= maxBohr) return v;
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
  const label = `${bohr} a₀ = ${(bohr * ANGSTROM_PER_BOHR).toPrecision(2)} Å`;
  ctx.textAlign = 'right';
  ctx.fillText(label, right, base - px(8));
  if (m === MODE.perspective || m === MODE.anaglyph) ctx.fillText('at the nucleus', right, base - px(22));
  ctx.textAlign = 'left';
}

// Pictures as large as the room allows, in whole multiples of the engine's pixels (or shrunk
// pixel-exact on a screen narrower than one picture), so they are never blurred.
function layout() {
  const dpr = window.devicePixelRatio || 1;
  const room = $('stage').clientWidth - 2;
  const tall = Math.max(MAIN / dpr, window.innerHeight - 170);
  const device = Math.floor(Math.min(room, tall) * dpr);
  const edge = device >= MAIN ? Math.floor(device / MAIN) * MAIN : device;
  const css = `${edge / dpr}px`;
  for (const id of ['main', 'overlay']) Object.assign($(id).style, { width: css, height: css });
  $('overlay').width = edge;
  $('overlay').height = edge;
  // The small picture at two or three times its pixels, beside the large one when there is room.
  const nano = Math.max(1, Math.min(3, Math.floor(Math.min(room * dpr, edge * 0.7) / 127)));
  const nanoCss = `${(nano * 127) / dpr}px`;
  Object.assign($('nano').style, { width: nanoCss, height: nanoCss });
  drawOverlay();
}

// ---- Panels: controls shown only where they act, the orbital's facts, statistics ----

function showControls() {
  const m = mode();
  const o = current();
  const dots = m === MODE.dots || m === MODE.perspective;
  const colour = dotColour();
  const hide = (id, hidden) => { $(id).hidden = hidden; };
  hide('dotColours', !(dots || m === MODE.slice));
  hide('phaseChoice', o && isAverage(o.index));
  if ($('phaseChoice').hidden && radioValue('colour') === 'phase') setRadio('colour', 'grey');
  hide('cameraBox', !(m === MODE.perspective || m === MODE.anaglyph));
  hide('stereoChoice', m !== MODE.anaglyph);
  hide('cloudBox', m !== MODE.cloud);
  hide('outlineChoice', m === MODE.slice || (dots && colour === 'phase'));
  hide('sliceColourChoice', dotColour() !== 'levels');
  $('modeHelp').textContent = MODE_HELP[m];
  $('colourHelp').textContent = m === MODE.slice
    ? 'The small picture shows the dots; with "Probability" and "Colour the slice too" the slice takes level colours.'
    : COLOUR_HELP[dotColour()];
  $('viewHelp').textContent = VIEW_HELP[Number(radioValue('view'))];
  $('sliceHelp').textContent = `${m === MODE.slice ? 'The large picture is the slice, the small one the dots.' : 'The small picture shows the slice.'} ` +
    'A slice is coloured by level only beside a dot picture coloured by probability: the engine takes the slice\'s colours from the dot picture drawn just before it. Otherwise it is grey.';
  $('cameraHelp').textContent = 'Distances in the engine\'s picture units (127 is the box half-width). The camera looks from its distance onto a screen at the screen distance'
    + (m === MODE.anaglyph ? '; the eyes stand |camera − screen| ÷ divisor apart (0 is not allowed).' : '.');
  const t = Number($('transectNo').value);
  const axis = 'xyz'[Number($('transectDir').value)];
  $('transectNoOut').textContent = o ? `${axis} = ${(Math.abs(t) * o.setup.AtomRadius / 127).toFixed(2)} a₀` : String(t);
  $('nanoCaption').textContent = m === MODE.slice ? 'Dots' : `Slice across ${axis}`;
  const view = o ? (o.view ? 'radial weighting' : 'ψ²') : '';
  $('caption').textContent = o ? `${displayName(o.index)}, ${view}` : '';
  const deg = (r) => Math.round((r * 180) / Math.PI);
  $('angles').textContent = m === MODE.slice ? '' : `· turned ${deg(state.theta)}°, ${deg(state.phi)}°`;
}

async function factsOf(index) {
  if (!state.facts.has(index)) state.facts.set(index, await engine('facts', index));
  return state.facts.get(index);
}

async function refreshPanels() {
  showControls();
  const o = current();
  if (!o) return;
  $('infoName').textContent = displayName(o.index);
  const f = await factsOf(o.index);
  const average = isAverage(o.index);
  const rows = [
    ['n, l', `${f.n}, ${f.l} (${'spdf'[f.l]})`],
    ['m', average ? 'all, averaged' : String(f.m)],
    ['Nodes', `${f.radialNodes} radial (spheres), ${f.angularNodes} angular (planes or cones)`],
    ['Energy', `${f.energyHartree.toFixed(4)} hartree = ${(f.energyHartree * EV_PER_HARTREE).toFixed(2)} eV`],
    ['Mean distance ⟨r⟩', `${f.meanRadius.toFixed(2)} a₀ = ${(f.meanRadius * ANGSTROM_PER_BOHR).toFixed(2)} Å`],
    ['Most likely distance', `${f.mostProbableRadius.toFixed(2)} a₀`],
    ['Box half-width', `${o.setup.AtomRadius} a₀`],
  ];
  fillList($('facts'), rows);
  await plotRadial(o.index, o.setup.AtomRadius, f);
  const s = await engine('stats', o.handle);
  fillList($('stats'), [['Dots drawn', `${s.DotTotal} of ${s.DotTarget} asked for`],
    ['Pictures', String(s.FramesRendered)], ['Grid time', `${s.CalcTime} ms`],
    ['Dot time', `${s.DotTime} ms`], ['Commonest level', String(s.Mode)]]);
  drawHistogram(s.ProbFreqs);
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

async function plotRadial(index, radius, f) {
  const canvas = $('radial');
  const ctx = canvas.getContext('2d');
  const { width: w, height: h } = canvas;
  const radii = Array.from({ length: 141 }, (_, i) => (i * radius) / 140);
  const p = await engine('radialDistribution', index, radii);
  const top = Math.max(...p) || 1;
  const x = (r) => 6 + ((w - 12) * r) / radius;
  const y = (v) => h - 16 - ((h - 24) * v) / top;
  ctx.fillStyle = '#0d0f14';
  ctx.fillRect(0, 0, w, h);
  ctx.strokeStyle = '#6cc3ff';
  ctx.lineWidth = 2;
  ctx.beginPath();
  radii.forEach((r, i) => (i ? ctx.lineTo(x(r), y(p[i])) : ctx.moveTo(x(r), y(p[i]))));
  ctx.stroke();
  ctx.setLineDash([4, 3]);
  ctx.strokeStyle = '#f0b35a';
  ctx.beginPath();
  ctx.moveTo(x(f.meanRadius), 4);
  ctx.lineTo(x(f.meanRadius), h - 16);
  ctx.stroke();
  ctx.setLineDash([]);
  ctx.fillStyle = '#8a93a6';
  ctx.font = '11px system-ui, sans-serif';
  ctx.fillText('0', 4, h - 3);
  ctx.textAlign = 'right';
  ctx.fillText(`r = ${radius} a₀`, w - 4, h - 3);
  ctx.textAlign = 'left';
}

function drawHistogram(freqs) {
  const canvas = $('histogram');
  const ctx = canvas.getContext('2d');
  const { width: w, height: h } = canvas;
  ctx.fillStyle = '#0d0f14';
  ctx.fillRect(0, 0, w, h);
  const top = Math.max(1, ...freqs.map((v) => Math.log10(1 + v)));
  for (let p = 0; p < 256; p++) {
    const bar = Math.round((Math.log10(1 + freqs[p]) / top) * (h - 2));
    ctx.fillStyle = `rgb(${Math.max(60, ((255 - p) * p) / 255)}, ${Math.max(60, (p * p) / 255)}, 90)`;
    ctx.fillRect(p, h - bar, 1, bar);
  }
}

// ---- Orbitals ----

function buildPicker() {
  const shells = $('shells');
  shells.textContent = '';
  for (let n = 1; n <= HIGHEST_N; n++) {
    const group = document.createElement('div');
    group.className = 'shell';
    const title = document.createElement('h4');
    title.textContent = `n = ${n}`;
    const buttons = document.createElement('div');
    buttons.className = 'buttons';
    const entries = state.catalogue.filter((o) => o.n === n)
      .sort((a, b) => a.l - b.l || a.OrbType - b.OrbType || a.index - b.index);
    for (const info of entries) {
      const b = document.createElement('button');
      b.type = 'button';
      b.className = `orb ${info.OrbType ? 'average' : 'single'}`;
      b.textContent = displayName(info.index);
      b.dataset.index = info.index;
      b.title = info.OrbType ? `The average of all ${n}${'SPDF'[info.l]} orbitals`
        : `${info.Name}: n = ${info.n}, l = ${info.l}`;
      b.addEventListener('click', () => addOrbital(info.index));
      buttons.append(b);
    }
    group.append(title, buttons);
    shells.append(group);
  }
}

function renderLiveList() {
  const list = $('live');
  list.textContent = '';
  for (const o of state.live) {
    const li = document.createElement('li');
    li.classList.toggle('selected', o.handle === state.current);
    li.classList.toggle('average', isAverage(o.index));
    const name = document.createElement('button');
    name.type = 'button';
    name.className = 'name';
    name.textContent = `${displayName(o.index)} · ${o.view ? 'radial' : 'ψ²'} · ${o.setup.AtomRadius} a₀`;
    name.title = 'Show this orbital';
    name.addEventListener('click', () => selectOrbital(o.handle));
    const del = document.createElement('button');
    del.type = 'button';
    del.className = 'delete';
    del.textContent = '×';
    del.title = 'Remove it from the page';
    del.addEventListener('click', () => removeOrbital(o.handle));
    li.append(name, del);
    list.append(li);
  }
  $('liveCount').textContent = `${state.live.length} of ${MAX_LIVE}`;
}

function selectOrbital(handle) {
  state.current = handle;
  const o = current();
  $('dotTarget').value = o.setup.DotTarget;
  $('dotThreshold').value = o.setup.DotThreshold;
  $('atomRadius').value = o.setup.AtomRadius;
  setRadio('view', o.view);
  renderLiveList();
  showControls();
  return draw();
}

// Adds an orbital; `replacing` is removed only once the new one exists, in its place.
async function addOrbital(index, options = {}) {
  const { view = Number(radioValue('view')), replacing = null, threshold = 0, target = DOT_TARGET,
    seed = 40000 + Math.floor(Math.random() * 1e9) } = options;
  const radius = options.radius ?? ($('sameScale').checked && state.sharedRadius
    ? state.sharedRadius : await heldRadius(index));
  if (replacing === null && state.live.length >= MAX_LIVE) {
    say(`At most ${MAX_LIVE} orbitals fit on the page: remove one first (×).`);
    return null;
  }
  say('Calculating…');
  state.busy = true;
  const started = performance.now();
  let added;
  try {
    added = await engine('add', { OrbitalIndex: index, OrbitalViewMode: view, AtomRadius: radius,
      DotThreshold: threshold, DotTarget: target }, seed);
  } catch (e) {
    explain(e, `${displayName(index)} could not be calculated with these settings.`);
    state.busy = drawing !== null;
    return null;
  }
  state.timings.adds.push(performance.now() - started);
  const o = { handle: added.handle, index, view, seed, setup: added.setup };
  const at = state.live.findIndex((x) => x.handle === replacing);
  if (at >= 0) {
    state.live.splice(at, 1, o);
    await engine('remove', replacing).catch(() => {});
  } else {
    state.live.push(o);
  }
  say('');
  await selectOrbital(o.handle);
  return o.handle;
}

async function removeOrbital(handle) {
  try {
    await engine('remove', handle);
  } catch (e) {
    explain(e, 'The orbital could not be removed.');
    return;
  }
  state.live = state.live.filter((o) => o.handle !== handle);
  if (state.current === handle) {
    state.current = null;
    for (const id of ['main', 'nano']) $(id).getContext('2d').clearRect(0, 0, MAIN, MAIN);
    drawOverlay();
    if (state.live.length) await selectOrbital(state.live[state.live.length - 1].handle);
  }
  renderLiveList();
  showControls();
}

// The same orbital again with another view or box: checked first, replaced only on success.
function redo(changes) {
  const o = current();
  if (!o) return null;
  return addOrbital(o.index, { view: o.view, radius: o.setup.AtomRadius, seed: o.seed,
    threshold: o.setup.DotThreshold, target: o.setup.DotTarget, ...changes, replacing: o.handle });
}

async function refill() {
  const o = current();
  const target = whole('dotTarget', 1, 32767, 'The number of dots');
  const threshold = target === null ? null : whole('dotThreshold', 0, 254, 'The level left out');
  if (!o || threshold === null) return;
  try {
    const r = await engine('refill', o.handle, threshold, target);
    o.setup = r.setup;
    if (r.stats.DotTotal === 0) say('No grid point is above that level: the old dots stay.');
    await draw();
  } catch (e) {
    explain(e, 'The dots could not be drawn again.');
  }
}

async function resize() {
  const radius = whole('atomRadius', 1, 200, 'The box half-width');
  if (radius !== null) await redo({ radius });
}

async function sameScaleChanged() {
  for (const o of [...state.live]) {
    const radius = $('sameScale').checked ? state.sharedRadius : await heldRadius(o.index);
    if (radius === o.setup.AtomRadius) continue;
    state.current = o.handle;
    await redo({ radius });
  }
  await draw();
}

// ---- Turning: pointer (mouse, pen, touch), keys, fixed views ----

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
    // A point at the edge of the box follows the finger: the box half-width (127 engine
    // pixels) on screen is one radian.
    const radius = (canvas.getBoundingClientRect().width * 127) / MAIN;
    state.phi += (ev.clientX - last.x) / radius;
    state.theta += (ev.clientY - last.y) / radius;
    last = { x: ev.clientX, y: ev.clientY };
    showControls();
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

function look(theta, phi) {
  state.theta = theta;
  state.phi = phi;
  showControls();
  draw();
}

function onKey(ev) {
  const t = ev.target;
  if (t !== $('main') && t !== document.body && !(t instanceof HTMLButtonElement)) return;
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
  showControls();
  draw();
}

// ---- Saving and sharing ----

function savePng() {
  const out = document.createElement('canvas');
  out.width = $('overlay').width;
  out.height = out.width;
  const ctx = out.getContext('2d');
  ctx.imageSmoothingEnabled = false;
  ctx.drawImage($('main'), 0, 0, out.width, out.height);
  ctx.drawImage($('overlay'), 0, 0);
  const o = current();
  const a = document.createElement('a');
  const name = o ? `${isAverage(o.index) ? 'average-' : ''}${state.catalogue[o.index].Name}` : 'orbital';
  a.download = `${name}${o && o.view ? '-radial' : ''}.png`;
  a.href = out.toDataURL('image/png');
  a.click();
}

const LINK_INPUTS = { d: 'transectDir', n: 'transectNo', cam: 'cameraPos', pl: 'projectionPlane',
  st: 'stereoFactor', q: 'volQuality' };

function linkState() {
  const o = current();
  const p = new URLSearchParams();
  if (o) {
    p.set('o', o.index);
    p.set('v', o.view);
    p.set('seed', o.seed);
    p.set('r', o.setup.AtomRadius);
    p.set('k', o.setup.DotTarget);
    p.set('h', o.setup.DotThreshold);
  }
  p.set('m', mode());
  p.set('c', radioValue('colour'));
  p.set('t', String(state.theta));
  p.set('p', String(state.phi));
  for (const [key, id] of Object.entries(LINK_INPUTS)) p.set(key, $(id).value);
  p.set('tr', $('transector').checked ? 1 : 0);
  p.set('sc', $('sliceColour').checked ? 1 : 0);
  p.set('same', $('sameScale').checked ? 1 : 0);
  return p;
}

function updateLink() {
  const url = `${location.origin}${location.pathname}#${linkState()}`;
  history.replaceState(null, '', url);
  $('link').value = url;
}

// Restores the settings a link carries, each checked; returns the orbital to add (or null).
function readLink() {
  const p = new URLSearchParams(location.hash.slice(1));
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
  if (num('t', -1e6, 1e6) !== null) state.theta = num('t', -1e6, 1e6);
  if (num('p', -1e6, 1e6) !== null) state.phi = num('p', -1e6, 1e6);
  const ranges = { d: [0, 2], n: [-127, 127], cam: [-32768, 32767], pl: [-32768, 32767],
    st: [-32768, 32767], q: [5, 10] };
  for (const [key, id] of Object.entries(LINK_INPUTS)) {
    const v = int(key, ...ranges[key]);
    if (v !== null) $(id).value = String(v);
  }
  for (const [key, id] of [['tr', 'transector'], ['sc', 'sliceColour'], ['same', 'sameScale']]) {
    if (p.has(key)) $(id).checked = p.get(key) === '1';
  }
  const index = int('o', 0, CATALOGUE_SIZE - 1);
  if (index === null) return null;
  const view = int('v', 0, 1) ?? 0;
  setRadio('view', view);
  return { index, view, seed: int('seed', 32768, 2 ** 31 - 1) ?? undefined,
    radius: int('r', 1, 200) ?? undefined, target: int('k', 1, 32767) ?? undefined,
    threshold: int('h', 0, 254) ?? undefined };
}

// ---- Start ----

/** One radio button per row of a table of names, labelled as the table says, before the
 *  fieldset's help line; the first is checked. */
function nameRadios(fieldsetId, kind, group) {
  const help = $(fieldsetId).querySelector('p.help');
  NAMES[kind].forEach((n, i) => {
    const label = document.createElement('label');
    const input = document.createElement('input');
    Object.assign(input, { type: 'radio', name: group, value: String(n.value), checked: i === 0 });
    label.append(input, ` ${n.label}`);
    $(fieldsetId).insertBefore(label, help);
  });
}

function wireControls() {
  nameRadios('modes', 'mode', 'mode');
  nameRadios('viewBox', 'view', 'view');
  for (const input of document.querySelectorAll('input[name=mode], input[name=colour]')) {
    input.addEventListener('change', () => { showControls(); draw(); });
  }
  for (const input of document.querySelectorAll('input[name=view]')) {
    input.addEventListener('change', () => redo({ view: Number(radioValue('view')) }));
  }
  for (const id of ['transectDir', 'transector', 'sliceColour', 'cameraPos', 'projectionPlane',
    'stereoFactor', 'volQuality']) {
    $(id).addEventListener('change', () => { showControls(); draw(); });
  }
  $('transectNo').addEventListener('input', () => { showControls(); draw(); });
  $('refill').addEventListener('click', refill);
  $('resize').addEventListener('click', resize);
  $('sameScale').addEventListener('change', sameScaleChanged);
  $('reset').addEventListener('click', () => look(START_THETA, START_PHI));
  const along = { x: [0, Math.PI / 2], y: [0, 0], z: [-Math.PI / 2, 0] };
  for (const b of document.querySelectorAll('[data-look]')) {
    b.addEventListener('click', () => look(...along[b.dataset.look]));
  }
  $('savePng').addEventListener('click', savePng);
  $('copyLink').addEventListener('click', async () => {
    updateLink();
    $('link').select();
    try {
      await navigator.clipboard.writeText($('link').value);
      say('The link is copied: it opens this page as you see it now.');
    } catch {
      say('Copy the selected link below: it opens this page as you see it now.');
    }
  });
  $('aboutButton').addEventListener('click', () => $('about').showModal());
  document.addEventListener('keydown', onKey);
  window.addEventListener('resize', layout);
  setupDrag();
}

// The page's box for an orbital: where its cumulative radial distribution reaches HELD_SHARE,
// so the whole orbital, outer lobes included, is drawn.
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

// Every orbital's box, and the one box that holds them all ("same scale").
async function allHeldRadii() {
  for (const info of state.catalogue) await heldRadius(info.index);
  state.sharedRadius = Math.max(...state.heldRadius);
}

async function start() {
  wireControls();
  try {
    const started = await engine('start');
    state.catalogue = started.catalogue;
    state.defaults = started.defaults;
    $('aboutCaption').textContent = started.about.Caption;
    $('aboutFrame').textContent = started.about.FrameCaption;
    $('aboutLabel').textContent = started.about.Label;
    $('aboutYears').textContent = started.about.YearsLabel;
  } catch (e) {
    explain(e, 'The engine could not be loaded.');
    return;
  }
  const d = state.defaults;
  $('cameraPos').value = d.CameraPos;
  $('projectionPlane').value = d.ProjectionPlane;
  $('stereoFactor').value = d.StereoFactor;
  $('volQuality').value = String(d.VolQuality);
  setRadio('colour', 'phase');
  buildPicker();
  const linked = readLink();
  layout();
  const index = linked ? linked.index : START_ORBITAL;
  if ($('sameScale').checked) await allHeldRadii();
  else await heldRadius(index);
  await addOrbital(index, linked || {});
  await allHeldRadii();
  document.body.dataset.ready = 'true';
}

window.veltara = { state, draw, addOrbital, look };
start();
