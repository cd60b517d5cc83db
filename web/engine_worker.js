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

// What the page may ask, by name.
const operations = {
  start(api) {
    return { catalogue: api.catalogue(), defaults: api.defaultRequest(), about: api.about() };
  },
  // Adds with the clock reading `seed` (so a link can bring the same dots back).
  add(api, setup, seed) {
    api.setClock(seed, true);
    const handle = api.add(setup);
    return { handle, setup: api.setup(handle), stats: api.stats(handle) };
  },
  remove: (api, handle) => api.remove(handle),
  render: (api, handle, request) => api.render(handle, request),
  renderPhase: (api, handle, request, positive, negative) =>
    api.renderPhase(handle, request, positive, negative),
  refill(api, handle, threshold, target) {
    api.refill(handle, threshold, target);
    return { setup: api.setup(handle), stats: api.stats(handle) };
  },
  stats: (api, handle) => api.stats(handle),
  facts: (api, orbital) => api.facts(orbital),
  radialDistribution: (api, orbital, radii) => api.radialDistribution(orbital, radii),
};

self.onmessage = async ({ data }) => {
  const { id, op, args } = data;
  try {
    const api = await ready;
    const result = operations[op](api, ...args);
    const transfer = result && result.bgra ? [result.bgra.buffer] : [];
    self.postMessage({ id, result }, transfer);
  } catch (e) {
    self.postMessage({ id, error: { number: e.number || 0, message: String(e.message || e) } });
  }
};
