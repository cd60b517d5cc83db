// The engine in WebAssembly, run by node (V8, the engine of chromium): the Add of every catalogue
// (orbital, view) pair with its defaults and 5000 dots, and a drag frame (orthographic, 375 px,
// turned a little each time), in the processor time of this process, where the engine runs on
// one thread. Run from the top after `make site`: node web/tools/add_bench.mjs build/release/site
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import os from 'node:os';
import path from 'node:path';

const site = process.argv[2] ?? 'build/release/site';
const require = createRequire(import.meta.url);
const factory = require(path.resolve(site, 'veltara_engine.js'));
const api = require(path.resolve(site, 'engine_api.js')).VeltaraApi(
  await factory({ wasmBinary: readFileSync(path.resolve(site, 'veltara_engine.wasm')) }));
const cpuMs = () => { const u = process.cpuUsage(); return (u.user + u.system) / 1000; };
const median = (v) => { const s = [...v].sort((a, b) => a - b); return s[s.length >> 1]; };

const adds = [], frames = [];
for (const info of api.catalogue()) {
  for (const view of [0, 1]) {
    const setup = { OrbitalIndex: info.index, OrbitalViewMode: view, DotTarget: 5000,
      AtomRadius: view ? info.DefaultDRPDFAtomRadius : info.DefaultPDFAtomRadius,
      DotThreshold: view ? info.DefaultDRPDFDotThreshold : info.DefaultPDFDotThreshold };
    let t = cpuMs();
    const handle = api.add(setup);
    adds.push([cpuMs() - t, `${info.Name} ${view ? 'radial' : 'density'}`]);
    for (let k = 0; k < 5; ++k) {
      t = cpuMs();
      api.render(handle, { ...api.defaultRequest(), Theta: 0.3 + 0.1 * k, Phi: 0.5, Mode: 0, Size: 375 });
      frames.push(cpuMs() - t);
    }
    api.remove(handle);
  }
}
const times = adds.map((a) => a[0]);
const worst = adds.reduce((a, b) => (b[0] > a[0] ? b : a));
console.log(`load average ${os.loadavg()[0].toFixed(1)}; processor time, ms`);
console.log(`Add, 80 pairs: median ${median(times).toFixed(1)}, worst ${worst[0].toFixed(1)} (${worst[1]})`);
console.log(`drag frame (orthographic, 375 px): median ${median(frames).toFixed(2)}, worst ${Math.max(...frames).toFixed(2)}`);
