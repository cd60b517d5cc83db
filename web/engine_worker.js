// The page's engine, in a Web Worker of its own so that no calculation ever blocks the page.
// Messages in: {id, op, args}; out: {id, result} or {id, error: {number, message}}. Pictures
// travel as transferred buffers.
'use strict';
/* global VeltaraEngine, VeltaraApi */
// The engine's code is fetched first, so that it downloads while the scripts load; it is
// compiled as it arrives where the server names its type, and from the whole file elsewhere.
const wasm = fetch('veltara_engine.wasm').then((response) => {
  if (!response.ok) throw new Error(`the engine could not be loaded (HTTP ${response.status})`);
  return response;
});
importScripts('veltara_engine.js', 'engine_api.js');

async function instantiate(imports) {
  const response = await wasm;
  if ((response.headers.get('Content-Type') || '').startsWith('application/wasm')) {
    return WebAssembly.instantiateStreaming(response, imports);
  }
  return WebAssembly.instantiate(await response.arrayBuffer(), imports);
}

const ready = VeltaraEngine({
  instantiateWasm(imports, receive) {
    instantiate(imports).then((result) => receive(result.instance));
    return {};
  },
}).then((module) => VeltaraApi(module));

// The catalogue row a text names, for an engine without the state calls: n,l,m of a row, or
// av<n><l> for a subshell's average.
function catalogueRow(api, text) {
  const rows = api.catalogue();
  const t = String(text).replace(/\s+/g, '').toLowerCase();
  const average = t.match(/^av(\d)([spdf])$/);
  const single = t.match(/^(\d+),(\d+),(-?\d+)$/);
  const row = rows.find((o) => (average ? o.OrbType === 1 && o.n === Number(average[1])
    && o.l === 'spdf'.indexOf(average[2]) : single && o.OrbType === 0 && o.n === Number(single[1])
    && o.l === Number(single[2]) && o.M === Number(single[3])));
  if (!row) throw new api.EngineError(5, 'this build of the engine knows the 40 catalogue orbitals only');
  return row;
}

// What the page may ask, by name.
const operations = {
  start(api) {
    return { catalogue: api.catalogue(), defaults: api.defaultRequest(), about: api.about(),
      statesKnown: api.statesKnown };
  },
  // Adds with the clock reading `seed` (so a link can bring the same dots back).
  add(api, setup, seed) {
    api.setClock(seed, true);
    const handle = api.add(setup);
    return { handle, setup: api.setup(handle), stats: api.stats(handle) };
  },
  // Any state (its text form) at time t, as add adds a catalogue orbital.
  addState(api, text, t, setup, seed) {
    api.setClock(seed, true);
    const handle = api.addState(text, t, setup);
    return { handle, setup: api.setup(handle), stats: api.stats(handle) };
  },
  remove: (api, handle) => api.remove(handle),
  render: (api, handle, request) => api.render(handle, request),
  renderPhase: (api, handle, request, positive, negative, text) =>
    api.renderPhase(handle, request, positive, negative, text),
  // New dots drawn with the clock standing at `seed`, so a link can draw the same ones again.
  refill(api, handle, threshold, target, seed) {
    api.setClock(seed, false);
    try {
      api.refill(handle, threshold, target);
    } finally {
      api.setClock(seed, true);
    }
    return { setup: api.setup(handle), stats: api.stats(handle) };
  },
  stats: (api, handle) => api.stats(handle),
  radialDistribution: (api, orbital, radii) => api.radialDistribution(orbital, radii),
  // Any state, by its text form.
  describe(api, text) {
    if (api.statesKnown) return api.describe(text);
    const row = catalogueRow(api, text);
    const f = api.facts(row.index);
    const average = row.OrbType === 1;
    return { text: average ? `av${row.n}${'spdf'[row.l]}` : `${row.n},${row.l},${row.M}`,
      real: !average, catalogue: row.index, terms: [{ re: 1, im: 0, n: row.n, l: row.l, m: row.M,
        Z: 1, complex: 0, average: average ? 1 : 0, energy: f.energyHartree }],
      ...f, m: row.M, Z: 1, angularNodes: average ? 0 : f.angularNodes, nodeRadii: [], beats: [],
      energyEv: f.energyHartree * 27.211386 };
  },
  sample(api, text, t, seed, count, weight) {
    if (api.statesKnown) return api.sample(text, t, seed, count, weight);
    // Without exact samples: the catalogue's own grid dots (no phase), in Bohr radii.
    const row = catalogueRow(api, text);
    const radius = weight ? row.DefaultDRPDFAtomRadius : row.DefaultPDFAtomRadius;
    api.setClock(seed, false);
    const handle = api.add({ OrbitalIndex: row.index, OrbitalViewMode: weight, AtomRadius: radius,
      DotThreshold: 0, DotTarget: Math.min(count, 32767) });
    try {
      const bytes = api.dots(handle);
      const v = new DataView(bytes.buffer);
      const n = bytes.length / 8;
      const xyz = new Float32Array(3 * n);
      for (let i = 0; i < 3 * n; i++) xyz[i] = (v.getInt16(8 * Math.floor(i / 3) + 2 * (i % 3), true) * radius) / 127;
      return { xyz, phase: new Float32Array(n), density: null };
    } finally {
      api.remove(handle);
      api.setClock(seed, true);
    }
  },
  surface: (api, text, t, fraction, resolution) => api.surface(text, t, fraction, resolution),
  radial(api, text, t, radii) {
    if (api.statesKnown) return api.stateRadial(text, t, radii);
    return api.radialDistribution(catalogueRow(api, text).index, radii);
  },
};

self.onmessage = async ({ data }) => {
  const { id, op, args } = data;
  try {
    const api = await ready;
    const result = operations[op](api, ...args);
    const transfer = result && result.bgra ? [result.bgra.buffer] : [];
    for (const key of ['xyz', 'phase', 'density', 'triangles']) if (result && result[key]) transfer.push(result[key].buffer);
    self.postMessage({ id, result }, transfer);
  } catch (e) {
    self.postMessage({ id, error: { number: e.number || 0, message: String(e.message || e) } });
  }
};
