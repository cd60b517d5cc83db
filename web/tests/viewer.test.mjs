// The viewer as a visitor meets it: the built site served by a plain static file server
// (python3 -m http.server on loopback), Debian's chromium (WebGL2 in software) driven by
// playwright-core, at 1280 x 900 and 390 x 844. Expected values come from closed forms written
// here (hydrogen's energies and radial functions), not from the page.
//
// Environment: VT_SITE_DIR (the built site), VT_WEB_OUTPUT (screenshots and timings.json).
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { chromium } from 'playwright-core';

const outDir = process.env.VT_WEB_OUTPUT || path.resolve('web-test-output');
mkdirSync(outDir, { recursive: true });
const WIDE = { width: 1280, height: 900 };
const PHONE = { width: 390, height: 844 };
let server;
let base;
let browser;
const problems = [];
const requests = [];

function serve() {
  return new Promise((resolve, reject) => {
    server = spawn('python3', ['-u', '-m', 'http.server', '0', '--bind', '127.0.0.1',
      '--directory', process.env.VT_SITE_DIR], { stdio: ['ignore', 'pipe', 'ignore'] });
    server.stdout.on('data', (chunk) => {
      const m = String(chunk).match(/port (\d+)/);
      if (m) resolve(`http://127.0.0.1:${m[1]}/`);
    });
    server.on('exit', (code) => reject(new Error(`the file server exited with ${code}`)));
  });
}

async function open(viewport, hash = '') {
  const p = await browser.newPage({ viewport, acceptDownloads: true });
  p.setDefaultTimeout(60000);
  p.on('console', (m) => m.type() === 'error' && problems.push(m.text()));
  p.on('pageerror', (e) => problems.push(e.message));
  p.on('request', (r) => requests.push(r.url()));
  await p.goto(base + hash);
  await p.waitForSelector('body[data-ready="true"]');
  return p;
}

before(async () => {
  base = await serve();
  browser = await chromium.launch({ executablePath: '/usr/bin/chromium',
    args: ['--no-sandbox', '--use-angle=swiftshader', '--enable-unsafe-swiftshader',
      '--ignore-gpu-blocklist', '--disable-background-networking'] });
});

after(async () => {
  if (browser) await browser.close();
  if (server) server.kill();
});

// Pixels of a canvas (the WebGL one keeps its drawing buffer) that are not black.
const lit = (p, id) => p.evaluate((name) => {
  const c = document.getElementById(name);
  const copy = Object.assign(document.createElement('canvas'), { width: c.width, height: c.height });
  const ctx = copy.getContext('2d');
  ctx.drawImage(c, 0, 0);
  const d = ctx.getImageData(0, 0, c.width, c.height).data;
  let n = 0;
  for (let i = 0; i < d.length; i += 4) n += d[i] + d[i + 1] + d[i + 2] > 30;
  return n;
}, id);
const shot = (p, name) => p.screenshot({ path: path.join(outDir, `${name}.png`) });
const download = async (p, button) => {
  const [file] = await Promise.all([p.waitForEvent('download'), p.click(button)]);
  return readFileSync(await file.path());
};

// Hydrogen-like closed forms: E_n = -Z^2/(2 n^2) hartree; P(r) of 4s and 1s.
const HARTREE_EV = 27.211386;
const p4s = (r) => r * r * ((1 - (3 * r) / 4 + (r * r) / 8 - (r ** 3) / 192) * Math.exp(-r / 4)) ** 2;
function cdfTable(p, top, steps) {
  const h = top / steps;
  const cdf = [0];
  for (let i = 1; i <= steps; i++) {
    const a = (i - 1) * h;
    cdf.push(cdf[i - 1] + (h / 6) * (p(a) + 4 * p(a + h / 2) + p(a + h)));
  }
  const total = cdf[steps];
  return (r) => {
    const i = Math.min(steps - 1, Math.floor(r / h));
    return (cdf[i] + (cdf[i + 1] - cdf[i]) * ((r - i * h) / h)) / total;
  };
}

test('a link to a state beyond the catalogue shows its picture and energy', async () => {
  const page = await open(WIDE, '#state=Z=2;7,3,-2c');
  assert.ok(await lit(page, 'scene') > 2000);
  const energy = -(2 * 2) / (2 * 49);
  const facts = await page.textContent('#facts');
  assert.ok(facts.includes(`−${(-energy).toFixed(6)} hartree`), facts);
  assert.ok(facts.includes(`−${(-energy * HARTREE_EV).toFixed(4)} eV`), facts);
  assert.ok(facts.includes('complex, with a definite m = −2'), facts);
  await shot(page, 'beyond-catalogue');
  await page.close();
});

test('a malformed link shows the engine\'s sentence beside the picker and the default state', async () => {
  for (const [hash, words] of [['#state=3,3,0', /l must be/], ['#state=%E2%80%A6garbage', /at character/]]) {
    const page = await open(PHONE, hash);
    assert.match(await page.textContent('#message'), words);
    assert.equal(await page.inputValue('#stateText'), '2,1,0');
    assert.ok(await lit(page, 'scene') > 500);
    await page.close();
  }
});

test('downloads: PLY radii follow P(r) of 4s; GLB and STL hold the 1s surface; PNG is a picture', async () => {
  let page = await open(WIDE, '#state=4,0,0&surface=0&seed=40000');
  const ply = String(await download(page, '#savePly')).split('\n');
  const count = Number(ply.find((l) => l.startsWith('element vertex')).split(' ')[2]);
  const rows = ply.slice(ply.indexOf('end_header') + 1, ply.indexOf('end_header') + 1 + count);
  const dots = rows.map((l) => l.split(' ').map(Number));
  const radii = dots.map((d) => Math.hypot(d[0], d[1], d[2])).sort((a, b) => a - b);
  assert.equal(count, 20000);
  // Colour by sign: Okabe–Ito orange (red above blue) where R_40 > 0, blue where it is negative.
  const r40 = (r) => 1 - (3 * r) / 4 + (r * r) / 8 - (r ** 3) / 192;
  const wrong = dots.filter((d) => (d[3] > d[5]) !== (r40(Math.hypot(d[0], d[1], d[2])) > 0));
  assert.ok(wrong.length < 20, `${wrong.length} dots in the wrong sign's colour`);
  const F = cdfTable(p4s, 120, 24000);
  const ks = Math.max(...radii.map((r, i) => Math.max(Math.abs(F(r) - i / count), Math.abs(F(r) - (i + 1) / count))));
  assert.ok(ks < 1.95 / Math.sqrt(count), `KS distance ${ks}`);
  // The share beyond the last radial node (r = 15.52 a0): 0.834.
  const outer = radii.filter((r) => r > 15.52).length / count;
  assert.ok(Math.abs(outer - 0.834) < 0.02, `outer share ${outer}`);
  // 1s: the 90 % surface is the sphere with 1 - e^(-2R)(1 + 2R + 2R^2) = 0.9.
  const png = await download(page, '#savePng');
  assert.equal(png.toString('latin1', 1, 4), 'PNG');
  await page.close();
  page = await open(WIDE, '#state=1,0,0&surface=1&f=90');
  let lo = 0;
  let hi = 10;
  while (hi - lo > 1e-9) {
    const R = (lo + hi) / 2;
    if (1 - Math.exp(-2 * R) * (1 + 2 * R + 2 * R * R) < 0.9) lo = R;
    else hi = R;
  }
  const stl = await download(page, '#saveStl');
  const triangles = stl.readUInt32LE(80);
  assert.ok(triangles > 200 && stl.length === 84 + 50 * triangles);
  for (let t = 0; t < triangles; t += 7) {
    const at = 84 + 50 * t + 12;
    const r = Math.hypot(stl.readFloatLE(at), stl.readFloatLE(at + 4), stl.readFloatLE(at + 8));
    assert.ok(Math.abs(r - lo) < 0.03 * lo, `STL vertex at r = ${r}, sphere ${lo}`);
  }
  const glb = await download(page, '#saveGlb');
  assert.equal(glb.toString('latin1', 0, 4), 'glTF');
  const json = JSON.parse(glb.toString('utf8', 20, 20 + glb.readUInt32LE(12)));
  const prim = json.meshes[0].primitives[0];
  assert.ok('COLOR_0' in prim.attributes);
  const box = json.accessors[prim.attributes.POSITION];
  for (const v of [...box.max, ...box.min.map((x) => -x)]) assert.ok(Math.abs(v - lo) < 0.03 * lo, `GLB reach ${v}`);
  await page.close();
});

test('Play moves a superposition: the time and the dots change', async () => {
  const page = await open(WIDE, '#state=0.6*2,1,0-0.8i*1,0,0&surface=0');
  assert.match(await page.textContent('#facts'), /period 0\.405\d fs, light of 121\.5 nm/);
  const before = await page.evaluate(() => Array.from(window.veltara.state.dots.xyz.slice(0, 30)));
  await page.click('#play');
  await page.waitForFunction(() => Number(document.body.dataset.frames || 0) >= 3);
  await page.click('#play');
  assert.match(await page.textContent('#timeReadout'), /t = 0\.\d{3} fs/);
  assert.notEqual(await page.textContent('#timeReadout'), 't = 0.000 fs');
  const after = await page.evaluate(() => Array.from(window.veltara.state.dots.xyz.slice(0, 30)));
  assert.notDeepEqual(after, before);
  await page.close();
});

test('classic views of a catalogue orbital and of a state beyond it (2p0 of He+): signs in Okabe–Ito colours, an exact link after "Draw again"', async () => {
  for (const state of ['2,1,0', 'Z=2;2,1,0']) {
    const page = await open(WIDE, `#state=${state}&view=classic&ct=0&cp=0`);
    const rgba = await page.evaluate(() => {
      const c = document.getElementById('main');
      return Array.from(c.getContext('2d').getImageData(0, 0, 375, 375).data);
    });
    let [orangeUp, orange, blueDown, blue] = [0, 0, 0, 0];
    for (let i = 0; i < rgba.length; i += 4) {
      const up = i / 4 / 375 < 187;
      if (rgba[i] > rgba[i + 2]) (orange++, orangeUp += up);
      if (rgba[i + 2] > rgba[i]) (blue++, blueDown += !up);
    }
    assert.ok(orange > 1000 && blue > 1000 && orangeUp > 0.97 * orange && blueDown > 0.97 * blue, state);
    await page.fill('#dotTarget', '5000');
    await page.press('#dotTarget', 'Enter');
    await page.waitForFunction(() => location.hash.includes('&rs=') && !window.veltara.state.busy);
    const again = await open(WIDE, await page.evaluate(() => location.hash));
    const pixels = (p) => p.evaluate(() => document.getElementById('main').toDataURL());
    const hashes = async (p) => p.evaluate(() => location.hash.match(/cs=\d+|rs=\d+|k=\d+/g).join(' '));
    assert.ok(await pixels(again) === await pixels(page), `${await hashes(page)} and ${await hashes(again)} differ`);
    await page.close();
    await again.close();
  }
});

test('a phone: the picture fits, the picker is in the first screen, nothing scrolls sideways', async () => {
  const page = await open(PHONE);
  assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= 390));
  const view = await page.locator('#scene').boundingBox();
  assert.ok(view.x >= 0 && view.x + view.width <= 390 && view.width >= 300);
  const picker = await page.locator('#stateText').boundingBox();
  assert.ok(picker.y + picker.height <= 844, `the state field ends at ${picker.y + picker.height}`);
  await shot(page, 'phone');
  await page.close();
});

test('axe-core finds nothing critical or serious, at both sizes', async () => {
  for (const size of [WIDE, PHONE]) {
    const page = await open(size);
    await page.addScriptTag({ path: path.resolve('node_modules/axe-core/axe.min.js') });
    const found = await page.evaluate(async () => (await window.axe.run()).violations
      .filter((v) => v.impact === 'critical' || v.impact === 'serious')
      .map((v) => `${v.id}: ${v.nodes.map((n) => n.target).join(' ')}`));
    assert.deepEqual(found, []);
    await page.close();
  }
});

test('timings; one .wasm fetched, no server API, no console error', async () => {
  const page = await open(WIDE);
  for (const text of ['3,2,0', '4,0,0', '5,1,1c', '6,3,0']) {
    await page.fill('#stateText', text);
    await page.press('#stateText', 'Enter');
    await page.waitForFunction((t) => window.veltara.state.text === t && !window.veltara.state.busy, text);
  }
  const t = await page.evaluate(() => window.veltara.state.timings);
  const median = (v) => [...v].sort((a, b) => a - b)[Math.floor(v.length / 2)];
  writeFileSync(path.join(outDir, 'timings.json'), JSON.stringify({ firstPictureMs: t.firstPicture,
    medianShowMs: median(t.shows), medianDotsMs: median(t.dots), medianSurfaceMs: median(t.surfaces) }));
  await page.close();
  assert.ok(requests.some((u) => u.endsWith('.wasm')));
  assert.deepEqual(requests.filter((u) => u.includes('/api/') || !u.startsWith(base)), []);
  assert.deepEqual(problems, []);
});
