// The Veltara viewer: picks orbitals, asks the server for frames and draws them.
'use strict';

const $ = (id) => document.getElementById(id);

const state = {
  catalogue: [],
  live: [],            // [{handle, Name, OrbType, setup}]
  current: null,       // handle of the selected orbital
  theta: 0.4,          // radians
  phi: 0.6,
  dragging: false,
  inFlight: false,     // one Main request at a time while dragging
  pendingDrag: false,
  lastMainMs: 0,
  settled: 0,          // renderAll calls finished, for anyone waiting on a full redraw
};

// ---- Server calls ----

class ApiError extends Error {
  constructor(status, body) {
    super(body && body.message ? body.message : `HTTP ${status}`);
    this.status = status;
    this.number = body ? body.error : 0;
  }
}

async function api(method, path, body) {
  const init = { method, headers: {} };
  if (body !== undefined) {
    init.headers['Content-Type'] = 'application/json';
    init.body = JSON.stringify(body);
  }
  const res = await fetch(path, init);
  const isJson = (res.headers.get('Content-Type') || '').startsWith('application/json');
  if (!res.ok) throw new ApiError(res.status, isJson ? await res.json() : null);
  return isJson ? res.json() : res;
}

// A frame as width, height and B,G,R,A bytes (rows top first).
async function fetchFrame(handle, request) {
  const res = await api('POST', `/api/orbitals/${handle}/render`, request);
  const width = Number(res.headers.get('X-Width'));
  const height = Number(res.headers.get('X-Height'));
  return { width, height, bgra: new Uint8Array(await res.arrayBuffer()) };
}

// ---- Drawing ----

// The engine's pixels are B, G, R, A with A holding scratch data: show them opaque.
function drawFrame(canvas, frame) {
  if (canvas.width !== frame.width || canvas.height !== frame.height) {
    canvas.width = frame.width;
    canvas.height = frame.height;
  }
  const ctx = canvas.getContext('2d');
  const image = ctx.createImageData(frame.width, frame.height);
  const src = frame.bgra;
  const dst = image.data;
  for (let i = 0; i < dst.length; i += 4) {
    dst[i] = src[i + 2];
    dst[i + 1] = src[i + 1];
    dst[i + 2] = src[i];
    dst[i + 3] = 255;
  }
  ctx.putImageData(image, 0, 0);
}

function clearCanvas(canvas) {
  const ctx = canvas.getContext('2d');
  ctx.fillStyle = '#000';
  ctx.fillRect(0, 0, canvas.width, canvas.height);
}

function showMessage(text) {
  $('message').textContent = text || '';
}

// ---- Requests ----

function checked(id) { return $(id).checked; }
function intValue(id) { return Number($(id).value); }

function selectedMode() {
  return document.querySelector('input[name=mode]:checked').value;
}

// Every field of the render request, from the controls.
function baseRequest() {
  return {
    Theta: state.theta,
    Phi: state.phi,
    CameraPos: intValue('cameraPos'),
    ProjectionPlane: intValue('projectionPlane'),
    TransectNo: intValue('transectNo'),
    Transector: checked('transector'),
    TransectDir: $('transectDir').value,
    VolQuality: intValue('volQuality'),
    VolFinal: true,
    ShowProbLevelOnDots: checked('probDots'),
    // The engine colours transects by level only with both flags set.
    ShowProbLevelOnTrans: checked('probTrans'),
    UseColouredTransector: checked('colouredTransector'),
    StereoFactor: intValue('stereoFactor'),
  };
}

function mainRequest(preview) {
  const mode = selectedMode();
  return {
    ...baseRequest(), Size: 'Main', Mode: mode,
    VolFinal: !(preview && mode === 'Volumetric'),
  };
}

function nanoRequest() {
  const nanoMode = $('nanoMode').value;
  return { ...baseRequest(), Size: 'Nano', Mode: nanoMode === 'same' ? selectedMode() : 'Transect' };
}

// Main first, then Nano: a transect takes level colours only when the last picture of the
// other size is a dot projection showing levels, so the Nano transect must follow the Main
// picture it accompanies.
async function renderAll() {
  if (state.current === null) return;
  const handle = state.current;
  try {
    await renderMain(false);
    const nano = await fetchFrame(handle, nanoRequest());
    if (handle === state.current) drawFrame($('nano'), nano);
    showMessage('');
  } catch (e) {
    showMessage(e.message);
  }
  await refreshStats();
  state.settled++;
}

async function renderMain(preview) {
  const handle = state.current;
  const started = performance.now();
  const frame = await fetchFrame(handle, mainRequest(preview));
  if (handle !== state.current) return;
  drawFrame($('main'), frame);
  state.lastMainMs = performance.now() - started;
  $('frameTime').textContent = `${state.lastMainMs.toFixed(0)} ms${preview ? ' (preview)' : ''}`;
}

// While dragging only the Main picture follows, as quick previews for volume pictures; a
// newer angle waits for the frame in flight instead of queueing up.
async function dragFrame() {
  if (state.inFlight) {
    state.pendingDrag = true;
    return;
  }
  state.inFlight = true;
  try {
    do {
      state.pendingDrag = false;
      await renderMain(true);
    } while (state.pendingDrag);
  } catch (e) {
    showMessage(e.message);
  } finally {
    state.inFlight = false;
  }
}

// ---- Rotation with the mouse ----

function showAngles() {
  const deg = (r) => Math.round((r * 180) / Math.PI);
  $('angles').textContent = `θ ${deg(state.theta)}° φ ${deg(state.phi)}°`;
}

function setupDrag() {
  const canvas = $('main');
  let last = null;
  canvas.addEventListener('pointerdown', (ev) => {
    if (state.current === null) return;
    canvas.setPointerCapture(ev.pointerId);
    canvas.classList.add('dragging');
    state.dragging = true;
    last = { x: ev.clientX, y: ev.clientY };
  });
  canvas.addEventListener('pointermove', (ev) => {
    if (!state.dragging) return;
    // Horizontal motion turns about the vertical (Z) axis, vertical motion about X.
    state.phi += ((ev.clientX - last.x) * Math.PI) / 375;
    state.theta += ((ev.clientY - last.y) * Math.PI) / 375;
    last = { x: ev.clientX, y: ev.clientY };
    showAngles();
    dragFrame();
  });
  const end = async () => {
    if (!state.dragging) return;
    state.dragging = false;
    canvas.classList.remove('dragging');
    // The final picture once the frame in flight is done.
    while (state.inFlight) await new Promise((r) => setTimeout(r, 5));
    renderAll();
  };
  canvas.addEventListener('pointerup', end);
  canvas.addEventListener('pointercancel', end);
}

// ---- Orbitals ----

function catalogueName(info) {
  return info.OrbType === 'AverageOrbs' ? `⟨${info.Name}⟩` : info.Name;
}

function buildPicker() {
  const shells = $('shells');
  shells.textContent = '';
  const letters = ['S', 'P', 'D', 'F'];
  for (let n = 1; n <= 4; n++) {
    const group = document.createElement('div');
    group.className = 'shell';
    const title = document.createElement('h4');
    title.textContent = `n = ${n}`;
    const buttons = document.createElement('div');
    buttons.className = 'buttons';
    const entries = state.catalogue.filter((o) => o.n === n);
    entries.sort((a, b) => a.l - b.l || (a.OrbType === b.OrbType ? a.index - b.index
      : a.OrbType === 'SingleOrb' ? -1 : 1));
    for (const info of entries) {
      const b = document.createElement('button');
      b.type = 'button';
      const average = info.OrbType === 'AverageOrbs';
      b.className = `orb ${average ? 'average' : 'single'}`;
      b.textContent = catalogueName(info);
      b.dataset.index = info.index;
      b.title = average
        ? `average of the ${info.n}${letters[info.l]} shell (index ${info.index})`
        : `${info.Name}: n=${info.n}, l=${info.l}, m=${info.M} (index ${info.index})`;
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
    li.dataset.handle = o.handle;
    if (o.OrbType === 'AverageOrbs') li.classList.add('average');
    if (o.handle === state.current) li.classList.add('selected');
    const handle = document.createElement('span');
    handle.className = 'handle';
    handle.textContent = `#${o.handle}`;
    const name = document.createElement('span');
    name.className = 'name';
    name.textContent = o.OrbType === 'AverageOrbs' ? `⟨${o.Name}⟩` : o.Name;
    const view = document.createElement('span');
    view.className = 'view';
    view.textContent = `${o.setup.OrbitalViewMode} r=${o.setup.AtomRadius}`;
    const del = document.createElement('button');
    del.type = 'button';
    del.textContent = '×';
    del.title = `delete orbital ${o.handle}`;
    del.className = 'delete';
    del.addEventListener('click', (ev) => {
      ev.stopPropagation();
      deleteOrbital(o.handle);
    });
    li.append(handle, name, view, del);
    li.addEventListener('click', () => selectOrbital(o.handle));
    list.append(li);
  }
  $('liveCount').textContent = `${state.live.length} / ${state.maxOrbitals}`;
}

async function refreshLive() {
  state.live = await api('GET', '/api/orbitals');
  renderLiveList();
}

function selectOrbital(handle) {
  state.current = handle;
  const o = state.live.find((x) => x.handle === handle);
  if (o) {
    $('dotTarget').value = o.setup.DotTarget;
    $('dotThreshold').value = o.setup.DotThreshold;
    $('atomRadius').value = o.setup.AtomRadius;
    $('statsName').textContent = `#${handle} ${o.Name}`;
  }
  renderLiveList();
  renderAll();
}

async function addOrbital(index, overrides = {}) {
  showMessage('Calculating…');
  try {
    const o = await api('POST', '/api/orbitals', {
      OrbitalIndex: index,
      OrbitalViewMode: $('view').value,
      DotTarget: intValue('dotTarget'),
      ...overrides,
    });
    showMessage('');
    await refreshLive();
    selectOrbital(o.handle);
    return o.handle;
  } catch (e) {
    showMessage(e.message);
    return null;
  }
}

async function deleteOrbital(handle) {
  try {
    await api('DELETE', `/api/orbitals/${handle}`);
  } catch (e) {
    showMessage(e.message);
  }
  await refreshLive();
  if (state.current === handle) {
    state.current = null;
    clearCanvas($('main'));
    clearCanvas($('nano'));
    clearStats();
    if (state.live.length) selectOrbital(state.live[state.live.length - 1].handle);
  }
}

async function refill() {
  if (state.current === null) return;
  try {
    const stats = await api('POST', `/api/orbitals/${state.current}/refill`, {
      Threshold: intValue('dotThreshold'), Target: intValue('dotTarget'),
    });
    showStats(stats);
    await refreshLive();
    renderAll();
  } catch (e) {
    showMessage(e.message);
  }
}

// A new radius needs a new grid: the orbital is added again and the old one deleted.
async function readd() {
  if (state.current === null) return;
  const old = state.live.find((x) => x.handle === state.current);
  if (!old) return;
  try {
    await api('DELETE', `/api/orbitals/${old.handle}`);
  } catch (e) {
    showMessage(e.message);
    return;
  }
  state.current = null;
  await addOrbital(old.setup.OrbitalIndex, {
    OrbitalViewMode: old.setup.OrbitalViewMode,
    AtomRadius: intValue('atomRadius'),
    DotThreshold: intValue('dotThreshold'),
    DotTarget: intValue('dotTarget'),
  });
}

// ---- Statistics ----

function clearStats() {
  for (const id of ['statFrames', 'statDots', 'statTarget', 'statCalcTime', 'statCalcRate',
    'statDotTime', 'statSamples', 'statMode']) $(id).textContent = '–';
  $('statsName').textContent = '';
  clearCanvas($('histogram'));
  state.lastStats = null;
}

async function refreshStats() {
  if (state.current === null) return;
  try {
    showStats(await api('GET', `/api/orbitals/${state.current}/stats`));
  } catch (e) {
    showMessage(e.message);
  }
}

function showStats(s) {
  state.lastStats = s;
  const n = (v) => v.toLocaleString('en');
  $('statFrames').textContent = n(s.FramesRendered);
  $('statDots').textContent = n(s.DotTotal);
  $('statTarget').textContent = n(s.DotTarget);
  $('statCalcTime').textContent = `${n(s.CalcTime)} ms`;
  $('statCalcRate').textContent = `${n(s.CalcRate)} /ms`;
  $('statDotTime').textContent = `${n(s.DotTime)} ms`;
  $('statSamples').textContent = n(s.TotalSamples);
  $('statMode').textContent = s.Mode;
  drawHistogram(s.ProbFreqs);
}

// One bar per probability level, coloured like the level scheme of the pictures.
function drawHistogram(freqs) {
  const canvas = $('histogram');
  const ctx = canvas.getContext('2d');
  const w = canvas.width;
  const h = canvas.height;
  ctx.fillStyle = '#0d0f14';
  ctx.fillRect(0, 0, w, h);
  const log = checked('logScale');
  const scale = (v) => (log ? Math.log10(1 + v) : v);
  const top = Math.max(1, ...freqs.map(scale));
  for (let p = 0; p < 256; p++) {
    const bar = Math.round((scale(freqs[p]) / top) * (h - 2));
    if (bar <= 0) continue;
    const g = Math.floor((p * p) / 255);
    const r = Math.floor(((255 - p) * p) / 255);
    ctx.fillStyle = `rgb(${Math.max(r, 60)}, ${Math.max(g, 60)}, 90)`;
    ctx.fillRect((p * w) / 256, h - bar, Math.max(1, w / 256), bar);
  }
}

// ---- About ----

async function showAbout() {
  try {
    const box = await api('GET', '/api/about');
    $('aboutCaption').textContent = box.Caption;
    $('aboutFrame').textContent = box.FrameCaption;
    $('aboutLabel').textContent = box.Label;
    $('aboutYears').textContent = box.YearsLabel;
    $('about').showModal();
  } catch (e) {
    showMessage(e.message);
  }
}

// ---- Timing, for the tests and the curious: median round trip of n frames ----

async function measureFrames(requestOf, n) {
  const times = [];
  for (let i = 0; i < n; i++) {
    const started = performance.now();
    const frame = await fetchFrame(state.current, requestOf(i));
    drawFrame($('main'), frame);
    times.push(performance.now() - started);
  }
  times.sort((a, b) => a - b);
  return times[Math.floor(times.length / 2)];
}

// ---- Start ----

function wireControls() {
  for (const radio of document.querySelectorAll('input[name=mode]')) {
    radio.addEventListener('change', renderAll);
  }
  for (const id of ['transectDir', 'transector', 'colouredTransector', 'probDots', 'probTrans',
    'cameraPos', 'projectionPlane', 'stereoFactor', 'volQuality', 'nanoMode']) {
    $(id).addEventListener('change', renderAll);
  }
  $('transectNo').addEventListener('input', () => {
    $('transectNoOut').textContent = $('transectNo').value;
    renderAll();
  });
  $('refill').addEventListener('click', refill);
  $('readd').addEventListener('click', readd);
  $('aboutButton').addEventListener('click', showAbout);
  $('logScale').addEventListener('change', () => {
    if (state.lastStats) drawHistogram(state.lastStats.ProbFreqs);
  });
  setupDrag();
}

async function start() {
  wireControls();
  clearCanvas($('main'));
  clearCanvas($('nano'));
  clearCanvas($('histogram'));
  showAngles();
  try {
    const [catalogue, info] = await Promise.all([api('GET', '/api/catalogue'),
      api('GET', '/api/info')]);
    state.catalogue = catalogue;
    state.maxOrbitals = info.maxOrbitals;
    buildPicker();
    await refreshLive();
    if (state.live.length) selectOrbital(state.live[0].handle);
    document.body.dataset.ready = 'true';
  } catch (e) {
    showMessage(`The server did not answer: ${e.message}`);
  }
}

window.veltara = { state, addOrbital, selectOrbital, measureFrames, mainRequest, renderAll };
start();
