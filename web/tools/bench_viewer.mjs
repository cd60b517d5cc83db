// The viewer's speed figures, printed with the machine's load average: the engine alone in node
// (samples, the boundary surface), then the page in Debian's chromium (WebGL2 in software):
// first picture after load, new dots and surface after a state is chosen, frames a second of a
// two-term superposition playing. Run from web/ after `make site`:
//
//   VT_SITE_DIR=../build/release/site node tools/bench_viewer.mjs [loads] [seconds of Play]
import { spawn } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { loadavg } from 'node:os';
import { createRequire } from 'node:module';
import path from 'node:path';
import { chromium } from 'playwright-core';

const site = path.resolve(process.env.VT_SITE_DIR || '../build/release/site');
const loads = Number(process.argv[2] || 3);
const playSeconds = Number(process.argv[3] || 5);
const STATES = ['3,2,0', '4,0,0', '5,1,1c', '6,3,0', '2,1,1', '6,5,-3', '4,3,2c', '5,2,-1'];
const PLAYED = '0.6*2,1,0-0.8i*1,0,0';

const load = () => loadavg().map((v) => v.toFixed(2)).join(' ');
const median = (v) => [...v].sort((a, b) => a - b)[Math.floor(v.length / 2)];
const ms = (v) => `${Math.round(v)} ms`;
const row = (what, values) => console.log(`${what.padEnd(44)} median ${ms(median(values))}, `
  + `range ${ms(Math.min(...values))}–${ms(Math.max(...values))} (${values.length})`);

async function engineAlone() {
  const require = createRequire(import.meta.url);
  const api = require(path.join(site, 'engine_api.js')).VeltaraApi(
    await require(path.join(site, 'veltara_engine.js'))({ wasmBinary: readFileSync(path.join(site, 'veltara_engine.wasm')) }));
  const timed = (f) => {
    const values = [];
    for (let i = 0; i < 3; i++) {
      const t = performance.now();
      f(i);
      values.push(performance.now() - t);
    }
    return Math.min(...values);
  };
  console.log(`engine alone in node (best of 3), load ${load()}`);
  const samples = [];
  const surfaces = [];
  for (const s of STATES) {
    samples.push(timed(() => api.sample(s, 0, 40000, 20000, 0)));
    // A share a millionth apart each time: the same work, never the engine's last mesh again.
    surfaces.push(timed((i) => api.surface(s, 0, 0.9 + i * 1e-6, 40)));
  }
  row('  20,000 samples of a state, n <= 6', samples);
  row('  its surface at 40^3 (level and mesh)', surfaces);
}

// What one frame of the 3-D view costs the renderer (the GL work waited for by a pixel read),
// with the last state's dots and with its surface too; run in the page.
function frameCosts() {
  const scene = window.veltara.scene;
  const gl = scene.renderer.getContext();
  const pixel = new Uint8Array(4);
  const timed = () => {
    const values = [];
    for (let i = 0; i < 5; i++) {
      gl.readPixels(0, 0, 1, 1, gl.RGBA, gl.UNSIGNED_BYTE, pixel);
      const t = performance.now();
      scene.render();
      gl.readPixels(0, 0, 1, 1, gl.RGBA, gl.UNSIGNED_BYTE, pixel);
      values.push(performance.now() - t);
    }
    return values;
  };
  const withSurface = timed();
  const surface = scene.surface();
  surface.visible = false;
  const dotsOnly = timed();
  surface.visible = true;
  return [['20,000 dots', dotsOnly], ['dots and surface', withSurface]];
}

function serve() {
  return new Promise((resolve, reject) => {
    const server = spawn('python3', ['-u', '-m', 'http.server', '0', '--bind', '127.0.0.1',
      '--directory', site], { stdio: ['ignore', 'pipe', 'ignore'] });
    server.stdout.on('data', (chunk) => {
      const m = String(chunk).match(/port (\d+)/);
      if (m) resolve({ server, base: `http://127.0.0.1:${m[1]}/` });
    });
    server.on('exit', (code) => reject(new Error(`the file server exited with ${code}`)));
  });
}

async function page() {
  const { server, base } = await serve();
  const browser = await chromium.launch({ executablePath: '/usr/bin/chromium',
    args: ['--no-sandbox', '--use-angle=swiftshader', '--enable-unsafe-swiftshader',
      '--ignore-gpu-blocklist', '--disable-background-networking'] });
  try {
    console.log(`the page in headless chromium, WebGL2 in software (swiftshader), load ${load()}`);
    const frames = [];
    const first = [];
    const dots = [];
    const surfaces = [];
    for (let i = 0; i < loads; i++) {
      const p = await browser.newPage({ viewport: { width: 1280, height: 900 } });
      p.setDefaultTimeout(120000);
      await p.goto(base);
      await p.waitForSelector('body[data-ready="true"]');
      first.push(await p.evaluate(() => window.veltara.state.timings.firstPicture));
      for (const text of STATES) {
        await p.evaluate((t) => window.veltara.choose(t), text);
        await p.waitForFunction((t) => window.veltara.state.text === t && !window.veltara.state.busy, text);
        // The learner looks at the picture before choosing again: it has been drawn by then.
        await p.evaluate(() => new Promise((done) => { window.veltara.scene.renderer.getContext().finish(); setTimeout(done, 300); }));
      }
      if (i === 0) frames.push(...await p.evaluate(frameCosts));
      const t = await p.evaluate(() => window.veltara.state.timings);
      dots.push(...t.dots.slice(1));
      surfaces.push(...t.surfaces.slice(1));
      await p.close();
    }
    for (const [what, values] of frames) row(`  one frame drawn: ${what}`, values);
    row('  first picture after load (from navigation)', first);
    row('  new dots after a state is chosen, n <= 6', dots);
    row('  its boundary surface after it is chosen', surfaces);
    const p = await browser.newPage({ viewport: { width: 1280, height: 900 } });
    await p.goto(`${base}#state=${PLAYED}&dots=20000`);
    await p.waitForSelector('body[data-ready="true"]');
    await p.click('#play');
    await p.waitForTimeout(500);
    const before = await p.evaluate(() => Number(document.body.dataset.frames || 0));
    await p.waitForTimeout(playSeconds * 1000);
    const after = await p.evaluate(() => Number(document.body.dataset.frames || 0));
    console.log(`  ${PLAYED} playing, 20,000 dots: ${((after - before) / playSeconds).toFixed(1)} frames a second`);
    await p.close();
  } finally {
    await browser.close();
    server.kill();
  }
  console.log(`load at the end ${load()}`);
}

await engineAlone();
await page();
