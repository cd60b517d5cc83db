// The engine in the browser against the native engine: for all 80 (orbital, view) pairs under
// one fixed clock, the same histogram and dots, and final volumetric pictures within 1 on at
// most 1 % of the pixels. The page's phase-coloured dot picture, given one white colour for
// both signs, is the engine's grey dot picture byte for byte.
//
// Environment: VT_SITE_DIR (the built site), VT_NATIVE_CASES (web/tests/native_cases.c built).
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';

const site = process.env.VT_SITE_DIR;
const require = createRequire(import.meta.url);

test('the WebAssembly engine repeats the native one', async () => {
  const factory = require(path.join(site, 'veltara_engine.js'));
  const api = require(path.join(site, 'engine_api.js')).VeltaraApi(
    await factory({ wasmBinary: readFileSync(path.join(site, 'veltara_engine.wasm')) }));
  const native = execFileSync(process.env.VT_NATIVE_CASES, { maxBuffer: 1 << 27 });
  let at = 0;
  const take = (bytes) => native.subarray(at, (at += bytes));
  const catalogue = api.catalogue();
  api.setClock(40000, false);
  const volume = { ...api.defaultRequest(), Theta: 0.3, Phi: 0.5, Mode: 3 };
  for (const info of catalogue) {
    for (const view of [0, 1]) {
      const pair = `${info.Name} view ${view}`;
      assert.equal(take(4).readInt32LE(0), 0, pair);
      const handle = api.add({
        OrbitalIndex: info.index, OrbitalViewMode: view, DotTarget: 10000,
        AtomRadius: view ? info.DefaultDRPDFAtomRadius : info.DefaultPDFAtomRadius,
        DotThreshold: view ? info.DefaultDRPDFDotThreshold : info.DefaultPDFDotThreshold,
      });
      assert.deepEqual(Buffer.from(Int32Array.from(api.stats(handle).ProbFreqs).buffer),
        take(1024), `histogram of ${pair}`);
      const count = take(4).readInt32LE(0);
      assert.ok(Buffer.from(api.dots(handle)).equals(take(8 * count)), `dots of ${pair}`);
      const mine = api.render(handle, volume).bgra;
      const theirs = take(mine.length);
      let off = 0;
      for (let i = 0; i < mine.length; i += 4) {
        const d = Math.max(...[0, 1, 2].map((c) => Math.abs(mine[i + c] - theirs[i + c])));
        assert.ok(d <= 1, `volume pixel ${i / 4} of ${pair} is ${d} off`);
        off += d;
      }
      assert.ok(off <= mine.length / 400, `${off} volume pixels of ${pair} are 1 off`);
      for (const [Mode, Size] of [[0, 375], [1, 128], [1, 375], [0, 128]]) {
        const req = { ...api.defaultRequest(), Theta: 0.7 * view - 0.2, Phi: info.index, Mode, Size };
        assert.ok(Buffer.from(api.renderPhase(handle, req, 0xffffff, 0xffffff).bgra)
          .equals(Buffer.from(api.render(handle, req).bgra)), `grey dots of ${pair}, ${Mode}`);
      }
      api.remove(handle);
    }
  }
  assert.equal(at, native.length);
});
