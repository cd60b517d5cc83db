// The Veltara viewer: a page for learners. The engine runs in a Web Worker (engine_worker.js);
// this script keeps the page's state (the state's text form and the view's settings, all in the
// link), asks the worker for exact samples, surfaces and numbers, and shows them in the 3-D view
// (scene3d.js), the classic views (classic.js) or side by side (Compare).
import { Scene3D, VIRIDIS, legendColours } from './scene3d.js';
import { plotRadial } from './radial_plot.js';
import { buildPicker, showNumbers } from './state_picker.js';
import * as classic from './classic.js';
import { downloadPng, downloadPly, downloadGlb, downloadStl, stem } from './downloads.js';

const $ = (id) => document.getElementById(id);
const EV_PER_HARTREE = 27.211386;
const PM_PER_BOHR = 52.9177;
const FS_PER_AU = 0.024188843; // femtoseconds per hbar/E_h
const DEFAULT_STATE = '2,1,0';
const SURFACE_RESOLUTION = 40;
const START_SEED = 40000; // the engine's clock reading for a seed: 32768 .. 2^31 - 1

// ---- The engine, in its worker ----

class EngineFailure extends Error {
  constructor({ number, message }) {
    super(message);
    this.number = number;
  }
}

const worker = window.veltaraWorker || new Worker('engine_worker.js'); // started by index.html
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
if (worker.failure) say('The engine could not be started in this browser.', worker.failure);

function engine(op, ...args) {
  return new Promise((resolve, reject) => {
    const id = nextCall++;
    pending.set(id, { resolve, reject });
    worker.postMessage({ id, op, args });
  });
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
  say(`${what} ${error.message}`.trim(), `engine error ${error.number}`);
}

// ---- The page's state ----

const state = {
  catalogue: [],
  statesKnown: false,
  text: DEFAULT_STATE,
  info: null,
  kind: '3d',
  t: 0, // time, hbar/E_h
  playing: false,
  seed: START_SEED,
  dots: null,
  compare: [],
  busy: false,
  timings: { firstPicture: null, shows: [], dots: [], surfaces: [] },
};
let scene;
let early = null; // {key, dots}: the dots of the state being read, asked for ahead of its reading

const kind = () => document.querySelector('input[name=kind]:checked').value;
const settings = () => ({ count: Number($('dotCount').value), surface: $('showSurface').checked,
  colouring: $('colouring').value,
  fraction: Number($('fraction').value) / 100, palette: $('palette').value, weight: Number($('weight').value) });

// The radius that holds (nearly) all of a state: the scene's scale.
const reach = (info) => info.radius999 || Math.max(3, 2.6 * info.meanRadius);

// ---- Showing a state ----

/** Reads `text` through the engine and shows it; a refusal is said beside the picker. */
async function choose(text, { keepTime = false } = {}) {
  state.chosenAt = performance.now(); // timings run from here: the learner's wait
  if (kind() === '3d') {
    // The 3-D view's dots are asked for at once, so the worker samples straight after reading
    // the state; a refused state refuses them too, and that refusal is said once, below.
    const args = [text.trim(), keepTime ? state.t : 0, state.seed, settings().count, settings().weight];
    early = { key: JSON.stringify(args), dots: engine('sample', ...args) };
    early.dots.catch(() => {});
  }
  let info;
  try {
    info = await engine('describe', text);
  } catch (e) {
    if (!state.info) await choose(DEFAULT_STATE);
    explain(e, `“${text}” cannot be shown:`);
    return false;
  }
  say('');
  // The text as the learner wrote it ("sp3:0"), which the engine reads the same way everywhere;
  // the engine's written-out form of a hybrid or sum is long.
  state.text = text.trim();
  state.info = info;
  if (!keepTime) state.t = 0;
  $('stateText').value = state.text;
  showNumbers(info);
  await refresh();
  return true;
}

/** Draws what the chosen kind of picture shows, then the numbers and the link. */
async function refresh() {
  state.busy = true;
  const started = performance.now();
  try {
    state.kind = kind();
    $('view3d').hidden = state.kind === 'classic';
    $('classic').hidden = state.kind !== 'classic';
    $('classicControls').hidden = state.kind !== 'classic';
    $('statsBox').hidden = state.kind !== 'classic';
    $('compareBox').hidden = state.kind !== 'compare';
    $('look').hidden = state.kind === 'classic';
    for (const id of ['savePly', 'saveGlb', 'saveStl']) $(id).hidden = state.kind === 'classic';
    if (state.kind === 'classic') await showClassic();
    else if (state.kind === 'compare') await showCompare();
    else await show3d();
    await showNumbersPanel();
    if (state.timings.firstPicture === null) state.timings.firstPicture = performance.now();
    state.timings.shows.push(performance.now() - started);
  } catch (e) {
    explain(e, 'This state could not be drawn.');
  } finally {
    state.busy = false;
    updateLink();
    document.body.dataset.drawn = String(Number(document.body.dataset.drawn || 0) + 1);
  }
}

// Asks the worker for a state's dots and then, when the view shows one, its surface: the worker
// makes the surface while the page draws the dots.
function ask(text) {
  const s = settings();
  const args = [text, state.t, state.seed, s.count, s.weight];
  const dots = early && early.key === JSON.stringify(args) ? early.dots : engine('sample', ...args);
  early = null;
  const wanted = s.surface && state.statesKnown && s.weight === 0;
  const mesh = () => (wanted ? engine('surface', text, state.t, s.fraction, SURFACE_RESOLUTION)
    .catch((e) => {
      explain(e, 'The boundary surface could not be made.');
      return null;
    }) : Promise.resolve(null));
  return { dots, mesh };
}

const panelOf = (text, info, dots, mesh) => ({ xyz: dots.xyz, phase: dots.phase,
  density: dots.density, real: info.real, mesh, title: text });

// What the colours mean, over the picture.
function showLegend(real) {
  const s = settings();
  const swatch = (colour, cls = '') => `<i class="${cls}" style="background:${colour}"></i>`;
  const c = legendColours(s.palette);
  $('legend').innerHTML = s.colouring === 'levels'
    ? `rare ${swatch(`linear-gradient(90deg, ${VIRIDIS.join(',')})`, 'bar')} likely`
    : real ? `${swatch(c[0])} ψ > 0 ${swatch(c[2])} ψ < 0`
      : `phase ${swatch(`conic-gradient(from 90deg, ${[...c, c[0]].join(',')})`)} 0 → 2π`;
}

// The dots first, then the surface over them (it takes longer), unless another state came first.
let generation = 0;
async function show3d() {
  const mine = ++generation;
  scene.palette = settings().palette;
  scene.colouring = settings().colouring;
  showLegend(state.info.real);
  const started = state.chosenAt ?? performance.now();
  state.chosenAt = null;
  const asked = ask(state.text);
  const dots = await asked.dots;
  if (mine !== generation) return;
  const mesh = asked.mesh();
  state.dots = panelOf(state.text, state.info, dots, null);
  scene.show([state.dots], reach(state.info));
  if (state.timings.firstPicture === null) state.timings.firstPicture = performance.now();
  state.timings.dots.push(performance.now() - started);
  const surface = await mesh;
  if (mine !== generation || !surface) return;
  state.dots = { ...state.dots, mesh: surface };
  scene.setSurface(0, state.dots);
  state.timings.surfaces.push(performance.now() - started);
}

async function showClassic() {
  // A catalogue orbital is drawn as the engine has always drawn it; any other state at the
  // page's time, with the colours of its sign where Psi is real.
  const info = state.info;
  const single = info.terms.length === 1;
  const what = info.catalogue >= 0 && single ? info.catalogue
    : { text: state.text, t: state.t, signed: info.real && (single || state.t === 0) && !info.terms[0].average };
  classic.classic.setPalette(settings().palette);
  const o = classic.classic.state.o;
  if (!o || !classic.same(o.what, what)) await classic.show(what, state.classicLink || {});
  else await classic.draw();
  state.classicLink = null;
  classic.layout();
}

async function showCompare() {
  const texts = $('compareText').value.split('|').map((t) => t.trim()).filter(Boolean);
  if (texts.length < 2 || texts.length > 4) {
    say('Compare two to four states, separated by |.');
    return;
  }
  const infos = [];
  for (const text of texts) {
    try {
      infos.push(await engine('describe', text));
    } catch (e) {
      explain(e, `“${text}” cannot be compared:`);
      return;
    }
  }
  scene.palette = settings().palette;
  scene.colouring = settings().colouring;
  showLegend(infos.every((i) => i.real));
  const asked = infos.map((info) => ask(info.text));
  const meshes = asked.map((a) => a.mesh());
  const panels = [];
  for (const [i, info] of infos.entries()) panels.push(panelOf(info.text, info, await asked[i].dots, await meshes[i]));
  state.compare = infos.map((i) => i.text);
  scene.show(panels, Math.max(...infos.map(reach)));
}

// ---- Numbers beside the picture ----

function describeKind(info) {
  if (info.terms.length > 1) return `a superposition of ${info.terms.length} states`;
  const t = info.terms[0];
  if (t.average) return `the average of all ${t.n}${'spdf'[t.l]} orbitals: round, with no sign`;
  if (t.complex) return `complex, with a definite m = ${fixed(t.m, 0)} (angular momentum ${fixed(t.m, 0)} ħ about z)`;
  if (t.m === 0) return 'real, m = 0';
  const angle = `${Math.abs(t.m) === 1 ? '' : Math.abs(t.m)}φ`;
  return `real: the combination of m = +${Math.abs(t.m)} and m = −${Math.abs(t.m)} (${t.m > 0 ? 'cos' : 'sin'} ${angle})`;
}

const fixed = (v, d) => (v < 0 ? `−${(-v).toFixed(d)}` : v.toFixed(d));

async function showNumbersPanel() {
  const info = state.info;
  const single = info.terms.length === 1;
  const t0 = info.terms[0];
  $('infoName').textContent = state.text;
  const rows = [['Kind', describeKind(info)]];
  if (single) {
    rows.push(['n, l, m', `${t0.n}, ${t0.l} (${'spdfghiklmnoqrtuvwxyz'[t0.l] || ''}), ${t0.average ? 'all, averaged' : fixed(t0.m, 0)}`]);
    rows.push(['Nuclear charge Z', String(t0.Z)]);
  }
  rows.push([single ? 'Energy' : 'Mean energy ⟨E⟩',
    `${fixed(info.energyHartree, 6)} hartree = ${fixed(info.energyHartree * EV_PER_HARTREE, 4)} eV`]);
  if (single) {
    const radii = info.nodeRadii.length ? ` at r = ${info.nodeRadii.map((r) => r.toFixed(3)).join(', ')} a₀` : '';
    rows.push(['Radial nodes', `${info.radialNodes}${radii}`]);
    rows.push(['Angular nodes', `${info.angularNodes}${t0.average ? ' (the average is round)' : ''}`]);
    rows.push(['Mean distance ⟨r⟩', `${info.meanRadius.toFixed(3)} a₀ = ${(info.meanRadius * PM_PER_BOHR).toFixed(1)} pm`]);
    rows.push(['Most probable r', `${info.mostProbableRadius.toFixed(3)} a₀ = ${(info.mostProbableRadius * PM_PER_BOHR).toFixed(1)} pm`]);
  }
  const s = settings();
  if (state.kind === '3d' && s.surface && state.dots?.mesh) rows.push(['Inside the surface', `${Math.round(s.fraction * 100)} % of the probability`]);
  for (const b of info.beats || []) {
    rows.push([`Beat ΔE ${b.deltaHartree.toFixed(4)} hartree`, `period ${b.periodFs.toPrecision(4)} fs, light of ${b.wavelengthNm.toPrecision(4)} nm`]);
  }
  if (!single) rows.push(['Time', `${(state.t * FS_PER_AU).toFixed(3)} fs`]);
  $('facts').replaceChildren(...rows.flatMap(([k, v]) => {
    const dt = document.createElement('dt');
    const dd = document.createElement('dd');
    dt.textContent = k;
    dd.textContent = v;
    return [dt, dd];
  }));
  const reachR = reach(info);
  const radii = Array.from({ length: 301 }, (_, i) => (i * reachR) / 300);
  const p = await engine('radial', state.text, state.t, radii);
  // The radius holding the chosen share, from the plotted P(r) (trapezoids).
  let sum = 0;
  let inside = 0;
  for (let i = 1; i < p.length && !inside; i++) {
    sum += ((p[i - 1] + p[i]) / 2) * (radii[i] - radii[i - 1]);
    if (sum >= s.fraction) inside = radii[i];
  }
  plotRadial($('radial'), radii, p, { nodes: single ? info.nodeRadii : [],
    mostProbable: single ? info.mostProbableRadius : 0, inside });
  const playable = (info.beats || []).length > 0 && state.kind === '3d';
  $('play').hidden = !playable;
  $('speedBox').hidden = !playable;
  if (!playable) stop();
  showTime();
}

function showTime() {
  $('timeReadout').textContent = state.info?.beats?.length ? `t = ${(state.t * FS_PER_AU).toFixed(3)} fs` : '';
}

// ---- Time: Play moves the superposition on; one beat period takes 4 s at 1× ----

let lastFrame = 0;
let ahead = null; // the next step's dots {text, t, dots}, made by the worker while this one is drawn
async function frame(now) {
  if (!state.playing) return;
  const beats = state.info.beats;
  const period = Math.max(...beats.map((b) => b.periodFs)) / FS_PER_AU;
  const elapsed = lastFrame ? Math.min(0.1, (now - lastFrame) / 1000) : 0;
  lastFrame = now;
  const step = (elapsed * Number($('speed').value) * period) / 4;
  const s = settings();
  const text = state.text;
  const sample = (t) => engine('sample', text, t, state.seed, s.count, s.weight);
  if (ahead && ahead.text !== text) ahead = null; // another state was chosen meanwhile
  const t = ahead ? ahead.t : state.t + step;
  const dots = await (ahead ? ahead.dots : sample(t));
  if (!state.playing) return;
  if (text !== state.text) {
    ahead = null;
    requestAnimationFrame(frame);
    return;
  }
  state.t = t;
  // Time moves on by the last frame's length; the worker makes that step while this one is drawn.
  ahead = { text, t: t + step, dots: sample(t + step) };
  state.dots = { xyz: dots.xyz, phase: dots.phase, density: dots.density, real: state.info.real, mesh: null, title: text };
  scene.moveDots(0, state.dots);
  showTime();
  document.body.dataset.frames = String(Number(document.body.dataset.frames || 0) + 1);
  requestAnimationFrame(frame);
}

function play() {
  if (state.playing) {
    stop();
    refresh();
    return;
  }
  if (kind() !== '3d') return;
  state.playing = true;
  lastFrame = 0;
  $('play').textContent = 'Pause';
  $('play').setAttribute('aria-pressed', 'true');
  requestAnimationFrame(frame);
}

function stop() {
  state.playing = false;
  ahead = null;
  $('play').textContent = 'Play';
  $('play').setAttribute('aria-pressed', 'false');
}

// ---- The link: the state's text form and every setting ----

function updateLink() {
  const p = new URLSearchParams();
  p.set('state', state.text);
  p.set('view', state.kind);
  const s = settings();
  p.set('dots', s.count);
  p.set('surface', s.surface ? 1 : 0);
  p.set('f', Math.round(s.fraction * 100));
  p.set('palette', s.palette);
  p.set('colours', s.colouring);
  p.set('w', s.weight);
  p.set('seed', state.seed);
  if (state.t) p.set('t', String(state.t));
  const eye = scene?.camera.position;
  if (eye) p.set('eye', [eye.x, eye.y, eye.z].map((v) => Number(v.toPrecision(6))).join(','));
  if (state.kind === 'compare') p.set('compare', $('compareText').value);
  if (state.kind === 'classic') classic.writeLink(p);
  history.replaceState(null, '', `#${p.toString().replace(/%2C/g, ',').replace(/%3B/g, ';').replace(/%3D/g, '=')}`);
}

// Restores a link's settings (each checked); returns the state's text.
function readLink() {
  const p = new URLSearchParams(location.hash.slice(1));
  const pick = (id, value, allowed) => {
    if (value !== null && allowed.includes(value)) $(id).value = value;
  };
  pick('dotCount', p.get('dots'), ['5000', '20000', '50000']);
  pick('palette', p.get('palette'), ['safe', 'classic']);
  pick('colouring', p.get('colours'), ['phase', 'levels']);
  pick('weight', p.get('w'), ['0', '1']);
  if (p.has('surface')) $('showSurface').checked = p.get('surface') === '1';
  const f = Number(p.get('f'));
  if (Number.isInteger(f) && f >= 50 && f <= 99) $('fraction').value = String(f);
  $('fractionOut').textContent = `${$('fraction').value} %`;
  const seed = Number(p.get('seed'));
  if (p.has('seed') && Number.isInteger(seed) && seed >= 32768 && seed < 2 ** 31) state.seed = seed;
  const t = Number(p.get('t'));
  if (p.has('t') && Number.isFinite(t) && Math.abs(t) < 1e12) state.t = t;
  const view = p.get('view');
  if (['3d', 'classic', 'compare'].includes(view)) {
    document.querySelector(`input[name=kind][value=${view}]`).checked = true;
  }
  if (p.has('compare')) $('compareText').value = p.get('compare').slice(0, 400);
  const eye = (p.get('eye') || '').split(',').map(Number);
  state.eye = eye.length === 3 && eye.every(Number.isFinite) && Math.hypot(...eye) > 1e-6 ? eye : null;
  state.classicLink = classic.readLink(p);
  return p.get('state');
}

// ---- Start ----

function wire() {
  $('stateForm').addEventListener('submit', (ev) => {
    ev.preventDefault();
    choose($('stateText').value);
  });
  for (const input of document.querySelectorAll('input[name=kind]')) {
    input.addEventListener('change', () => {
      stop();
      refresh();
    });
  }
  for (const id of ['dotCount', 'showSurface', 'palette', 'colouring', 'weight']) $(id).addEventListener('change', () => refresh());
  $('fraction').addEventListener('input', () => { $('fractionOut').textContent = `${$('fraction').value} %`; });
  $('fraction').addEventListener('change', () => refresh());
  $('compareApply').addEventListener('click', () => refresh());
  $('compareText').addEventListener('keydown', (ev) => {
    if (ev.key === 'Enter') {
      ev.preventDefault();
      refresh();
    }
  });
  $('reset').addEventListener('click', () => (kind() === 'classic' ? classic.resetView() : scene.resetView()));
  $('play').addEventListener('click', play);
  $('aboutButton').addEventListener('click', () => $('about').showModal());
  $('helpButton').addEventListener('click', () => $('help').showModal());
  const name = () => stem(state.text);
  $('savePng').addEventListener('click', () => downloadPng(kind() === 'classic' ? classic.pictureCanvas() : $('scene'), name()));
  $('savePly').addEventListener('click', () => state.dots && downloadPly(state.dots, settings().palette, name()));
  const surface = (save) => () => {
    const mesh = scene.surface();
    if (mesh) save(mesh, name());
    else say('There is no surface to save: switch on "Boundary surface" in the 3-D view.');
  };
  $('saveGlb').addEventListener('click', surface(downloadGlb));
  $('saveStl').addEventListener('click', surface(downloadStl));
  scene.controls.addEventListener('end', updateLink);
  window.addEventListener('resize', () => classic.layout());
}

async function start() {
  scene = new Scene3D($('scene'), $('labels'), $('scaleText'), $('scaleBar'));
  scene.warmUp();
  let started;
  try {
    started = await engine('start');
  } catch (e) {
    explain(e, 'The engine could not be loaded.');
    return;
  }
  state.catalogue = started.catalogue;
  state.statesKnown = started.statesKnown;
  const a = started.about;
  $('aboutCaption').textContent = a.Caption;
  $('aboutFrame').textContent = a.FrameCaption;
  $('aboutLabel').textContent = a.Label;
  $('aboutYears').textContent = a.YearsLabel;
  classic.init({ engine, say, explain, catalogue: started.catalogue, defaults: started.defaults,
    onChange: updateLink });
  buildPicker(started.catalogue, (text) => choose(text));
  wire();
  const linked = readLink();
  const keepTime = state.t !== 0;
  await choose(linked || DEFAULT_STATE, { keepTime });
  if (state.eye && kind() !== 'classic') {
    scene.camera.position.set(...state.eye);
    scene.controls.update();
    updateLink();
  }
  document.body.dataset.ready = 'true';
}

window.veltara = { state, choose, refresh, engine, get scene() { return scene; } };
start();
