// The viewer as a visitor meets it: the built site served by a plain static file server
// (python3 -m http.server on loopback), Debian's chromium driven by playwright-core.
//
// Environment: VT_SITE_DIR (the built site), VT_WEB_OUTPUT (screenshots and timings.json).
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { mkdirSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { chromium } from 'playwright-core';

const outDir = process.env.VT_WEB_OUTPUT || path.resolve('web-test-output');
mkdirSync(outDir, { recursive: true });
let server;
let base;
let browser;
let page;
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

async function open(viewport, url = base) {
  const p = await browser.newPage({ viewport });
  p.setDefaultTimeout(20000);
  p.on('console', (m) => m.type() === 'error' && problems.push(m.text()));
  p.on('pageerror', (e) => problems.push(e.message));
  p.on('request', (r) => requests.push(r.url()));
  await p.goto(url);
  await p.waitForSelector('body[data-ready="true"]');
  return p;
}

before(async () => {
  base = await serve();
  browser = await chromium.launch({ executablePath: '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-gpu', '--disable-background-networking'] });
  page = await open({ width: 1280, height: 900 });
});

after(async () => {
  if (browser) await browser.close();
  if (server) server.kill();
});

// The engine's picture (375 x 375) as RGB bytes, and how many pixels are not black.
const pixels = (p = page) => p.evaluate(() => {
  const c = document.getElementById('main');
  return Array.from(c.getContext('2d').getImageData(0, 0, c.width, c.height).data);
});
const lit = (rgba) => rgba.filter((_, i) => i % 4 === 0 && (rgba[i] | rgba[i + 1] | rgba[i + 2])).length;

// Does something on the page and waits until the pictures are drawn again.
async function redrawn(action, p = page) {
  const before = await p.evaluate(() => Number(document.body.dataset.drawn));
  await action();
  await p.waitForFunction((n) => Number(document.body.dataset.drawn) > n, before);
  await p.waitForFunction(() => !window.veltara.state.busy);
}

const shot = (name, p = page) => p.screenshot({ path: path.join(outDir, `${name}.png`) });
const message = (p = page) => p.textContent('#message');

test('the first picture is there without a click', async () => {
  assert.ok(lit(await pixels()) > 1000);
  const t = await page.evaluate(() => window.veltara.state.timings);
  assert.ok(t.firstPicture > 0);
  assert.match(await page.textContent('#infoName'), /2Pz/);
  await shot('first');
});

test('the five modes each draw, with only their own controls shown', async () => {
  const seen = new Set();
  for (const [mode, shown] of [[1, ['#cameraBox']], [2, ['#cameraBox', '#stereoChoice']],
    [3, ['#cloudBox']], [4, ['#sliceBox']], [0, ['#dotColours']]]) {
    await redrawn(() => page.check(`input[name=mode][value="${mode}"]`));
    const rgba = await pixels();
    assert.ok(lit(rgba) > 500, `mode ${mode} draws`);
    seen.add(rgba.join());
    for (const sel of shown) assert.ok(await page.isVisible(sel), `${sel} in mode ${mode}`);
    if (mode !== 1 && mode !== 2) assert.equal(await page.isVisible('#cameraBox'), false);
    // The red/green picture has nothing in blue.
    if (mode === 2) assert.equal(rgba.filter((v, i) => i % 4 === 2 && v).length, 0);
    await shot(`mode-${mode}`);
  }
  assert.equal(seen.size, 5);
});

test('phase colours: 2Pz seen along y is orange above and blue below', async () => {
  assert.ok(await page.isChecked('input[name=colour][value="phase"]'));
  await redrawn(() => page.click('[data-look="y"]'));
  const rgba = await pixels();
  let [orangeUp, orange, blueDown, blue] = [0, 0, 0, 0];
  for (let i = 0; i < rgba.length; i += 4) {
    const up = i / 4 / 375 < 187;
    if (rgba[i] > rgba[i + 2]) (orange++, orangeUp += up);
    if (rgba[i + 2] > rgba[i]) (blue++, blueDown += !up);
  }
  assert.ok(orange > 1000 && blue > 1000);
  assert.ok(orangeUp > 0.97 * orange && blueDown > 0.97 * blue, `${orangeUp}/${orange} ${blueDown}/${blue}`);
  await shot('phase');
});

test('keys turn the picture and move the slice; a drag turns it as far as the pointer moves', async () => {
  const angles = () => page.evaluate(() => [window.veltara.state.theta, window.veltara.state.phi]);
  await page.focus('#main');
  const [t0, p0] = await angles();
  await redrawn(() => page.keyboard.press('ArrowRight'));
  await redrawn(() => page.keyboard.press('ArrowDown'));
  await redrawn(() => page.keyboard.press('+'));
  const [t1, p1] = await angles();
  assert.ok(Math.abs(p1 - p0 - Math.PI / 36) < 1e-9 && Math.abs(t1 - t0 - Math.PI / 36) < 1e-9);
  assert.equal(await page.inputValue('#transectNo'), '1');
  // The box half-width on screen is one radian.
  const box = await page.locator('#main').boundingBox();
  const radian = (box.width * 127) / 375;
  await page.mouse.move(box.x + 50, box.y + 100);
  await page.mouse.down();
  for (let i = 1; i <= 20; i++) await page.mouse.move(box.x + 50 + (i * radian) / 20, box.y + 100);
  await redrawn(() => page.mouse.up());
  const [, p2] = await angles();
  assert.ok(Math.abs(p2 - p1 - 1) < 0.02, `turned ${p2 - p1}`);
});

test('values are checked before anything is replaced; the view replaces the orbital', async () => {
  const live = () => page.evaluate(() => window.veltara.state.live.map((o) => [o.index, o.view]));
  await page.fill('#atomRadius', '0');
  await page.click('#resize');
  assert.match(await message(), /box half-width must be a whole number from 1 to 200/i);
  await page.fill('#dotThreshold', '255');
  await page.click('#refill');
  assert.match(await message(), /from 0 to 254/);
  await redrawn(() => page.check('input[name=mode][value="2"]'));
  await page.fill('#stereoFactor', '0');
  await page.dispatchEvent('#stereoFactor', 'change');
  await page.waitForFunction(() => /must not be 0/.test(document.getElementById('message').textContent));
  await page.fill('#stereoFactor', '20');
  await redrawn(() => page.dispatchEvent('#stereoFactor', 'change'));
  assert.deepEqual(await live(), [[4, 0]]);
  await redrawn(() => page.check('input[name=view][value="1"]'));
  assert.deepEqual(await live(), [[4, 1]]);
  await redrawn(() => page.click('.orb[data-index="9"]'));
  assert.deepEqual(await live(), [[4, 1], [9, 1]]);
});

test('a saved link brings the same picture back', async () => {
  await redrawn(() => page.check('input[name=mode][value="0"]'));
  await redrawn(() => page.check('input[name=colour][value="levels"]'));
  const link = await page.inputValue('#link');
  const again = await open({ width: 1280, height: 900 }, link);
  assert.equal(await again.inputValue('#link'), link);
  assert.deepEqual(await pixels(again), await pixels());
  await again.close();
});

test('a 390-pixel phone screen needs no sideways scrolling', async () => {
  const phone = await open({ width: 390, height: 844 });
  assert.ok(await phone.evaluate(() => document.documentElement.scrollWidth <= 390));
  const box = await phone.locator('#main').boundingBox();
  assert.ok(box.x >= 0 && box.x + box.width <= 390 && box.width >= 300);
  await shot('phone', phone);
  await phone.close();
});

test('timings, one .wasm fetched, no server API, no console error', async () => {
  await redrawn(() => page.check('input[name=view][value="0"]'));
  for (const index of [0, 5, 14, 23, 33]) await redrawn(() => page.click(`.orb[data-index="${index}"]`));
  await page.evaluate(() => { window.veltara.state.timings.frames.length = 0; });
  const box = await page.locator('#main').boundingBox();
  await page.mouse.move(box.x + 100, box.y + 100);
  await page.mouse.down();
  for (let i = 1; i <= 60; i++) await page.mouse.move(box.x + 100 + 2 * i, box.y + 100 + i);
  await redrawn(() => page.mouse.up());
  const t = await page.evaluate(() => window.veltara.state.timings);
  const median = (v) => [...v].sort((a, b) => a - b)[Math.floor(v.length / 2)];
  writeFileSync(path.join(outDir, 'timings.json'), JSON.stringify({ firstPictureMs: t.firstPicture,
    medianAddMs: median(t.adds), medianDragFrameMs: median(t.frames), dragFrames: t.frames.length }));
  assert.ok(requests.some((u) => u.endsWith('.wasm')));
  assert.deepEqual(requests.filter((u) => u.includes('/api/')), []);
  assert.deepEqual(problems, []);
});
