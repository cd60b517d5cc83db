// The engine in the browser against the native engine: for all 80 (orbital, view) pairs under
// one fixed clock, the same histogram, the same dots and the same pictures byte for byte in all
// five modes and both sizes (final volumetric pictures and transector outlines included). The
// page's phase-coloured dot picture, given one white colour for both signs, is the engine's
// grey dot picture byte for byte.
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

/** FNV-1a (32-bit) of a picture's bytes, as web/tests/native_cases.c computes it. */
const fnv1a = (bytes) => {
  let h = 0x811c9dc5;
  for (let i = 0; i < bytes.length; ++i) h = Math.imul(h ^ bytes[i], 0x01000193) >>> 0;
  return h;
};

test('the WebAssembly engine repeats the native one', async () => {
  const factory = require(path.join(site, 'veltara_engine.js'));
  const api = require(path.join(site, 'engine_api.js')).VeltaraApi(
    await factory({ wasmBinary: readFileSync(path.join(site, 'veltara_engine.wasm')) }));
  const native = execFileSync(process.env.VT_NATIVE_CASES, { maxBuffer: 1 << 27 });
  let at = 0;
  const take = (bytes) => native.subarray(at, (at += bytes));
  const catalogue = api.catalogue();
  api.setClock(40000, false);
  const shown = { ...api.defaultRequest(), Theta: 0.3, Phi: 0.5, VolFinal: true, Transector: true,
    TransectNo: 20 };
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
      for (let k = 0; k < 10; ++k) {
        const Mode = k >> 1, Size = k % 2 ? 128 : 375;
        assert.equal(fnv1a(api.render(handle, { ...shown, Mode, Size }).bgra),
          take(4).readUInt32LE(0), `picture of ${pair}, mode ${Mode}, size ${Size}`);
      }
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
