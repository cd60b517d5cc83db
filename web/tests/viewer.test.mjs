// The viewer in a real browser: Debian's chromium driven by playwright-core against a
// `veltara serve` started on a free loopback port with a fixed clock.
//
// Environment: VELTARA_BIN (the veltara command), VT_WEB_OUTPUT (folder for screenshots and
// timings), VT_DOCS_SCREENSHOT (optional: where to save the screenshot for the docs).
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { chromium } from 'playwright-core';

const bin = process.env.VELTARA_BIN;
const outDir = process.env.VT_WEB_OUTPUT || path.resolve('web-test-output');
mkdirSync(outDir, { recursive: true });

let server;
let base;
let context;
let page;
let profile;

// Starts the server on port 0 and reads the address it prints.
function startServer() {
  return new Promise((resolve, reject) => {
    server = spawn(bin, ['serve', '--port', '0', '--clock', '40000'],
      { stdio: ['ignore', 'pipe', 'inherit'] });
    let out = '';
    const timer = setTimeout(() => reject(new Error('the server did not start in 10 s')), 10000);
    server.stdout.on('data', (chunk) => {
      out += chunk;
      const m = out.match(/http:\/\/127\.0\.0\.1:(\d+)\//);
      if (m) {
        clearTimeout(timer);
        resolve(m[0]);
      }
    });
    server.on('exit', (code) => reject(new Error(`the server exited with ${code}`)));
  });
}

before(async () => {
  assert.ok(bin, 'VELTARA_BIN names the veltara command');
  base = await startServer();
  profile = mkdtempSync(path.join(tmpdir(), 'veltara-chromium-'));
  context = await chromium.launchPersistentContext(profile, {
    executablePath: '/usr/bin/chromium',
    headless: true,
    viewport: { width: 1280, height: 860 },
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
  page = context.pages()[0] || await context.newPage();
  page.setDefaultTimeout(15000);
  await page.goto(base);
  await page.waitForSelector('body[data-ready="true"]');
});

after(async () => {
  if (context) await context.close();
  if (server) server.kill('SIGTERM');
  if (profile) rmSync(profile, { recursive: true, force: true });
});

// ---- Helpers that read the page ----

// Statistics of a canvas: how many pixels are not black, and a hash of its pixels.
function canvasSummary(id) {
  return page.evaluate((canvasId) => {
    const c = document.getElementById(canvasId);
    const data = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;
    let lit = 0;
    let hash = 2166136261;
    for (let i = 0; i < data.length; i += 4) {
      if (data[i] | data[i + 1] | data[i + 2]) lit++;
      hash = Math.imul(hash ^ (data[i] | (data[i + 1] << 8) | (data[i + 2] << 16)), 16777619);
    }
    return { lit, hash: hash >>> 0, width: c.width, height: c.height };
  }, id);
}

// Runs `action` and waits until the page has finished the full redraw it starts.
async function andSettle(action) {
  const before = await page.evaluate(() => window.veltara.state.settled);
  await action();
  await page.waitForFunction((n) => window.veltara.state.settled > n, before);
}

// Picks a mode; choosing the one already shown starts no redraw.
async function chooseMode(mode) {
  const radio = page.locator(`input[name=mode][value=${mode}]`);
  if (await radio.isChecked()) return;
  await andSettle(() => radio.check());
}

async function shot(name) {
  await page.screenshot({ path: path.join(outDir, `${name}.png`) });
}

const statText = (id) => page.locator(`#${id}`).innerText();
const number = (text) => Number(text.replace(/[^0-9]/g, ''));

// ---- Tests, in the order a person would work ----

test('two orbitals are added from the picker and listed with their handles', async () => {
  // 3Dz² is a single orbital; the averaged 3D shell is marked apart from it.
  await andSettle(() => page.locator('button.orb.single', { hasText: /^3Dz²$/ }).click());
  await andSettle(() => page.locator('button.orb.average', { hasText: '⟨3D⟩' }).click());
  const rows = page.locator('#live li');
  assert.equal(await rows.count(), 2);
  assert.match(await rows.nth(0).innerText(), /#0\s+3Dz²/);
  assert.match(await rows.nth(1).innerText(), /#1\s+⟨3D⟩/);
  assert.equal(await page.locator('#live li.selected').getAttribute('data-handle'), '1');
  await andSettle(() => rows.nth(0).click());
  assert.equal(await page.locator('#live li.selected').getAttribute('data-handle'), '0');
});

test('the Main picture shows dots and the Nano picture the transect beside it', async () => {
  const main = await canvasSummary('main');
  assert.equal(main.width, 375);
  assert.ok(main.lit > 1000, `only ${main.lit} lit pixels on Main`);
  // A Nano transect is 127 pixels square.
  const nano = await canvasSummary('nano');
  assert.equal(nano.width, 127);
  assert.ok(nano.lit > 500, `only ${nano.lit} lit pixels on Nano`);
  await shot('orthographic');
});

test('dragging on the Main picture rotates it', async () => {
  const before = await canvasSummary('main');
  const box = await page.locator('#main').boundingBox();
  const angles = await page.locator('#angles').innerText();
  await andSettle(async () => {
    await page.mouse.move(box.x + 180, box.y + 180);
    await page.mouse.down();
    for (let i = 1; i <= 10; i++) await page.mouse.move(box.x + 180 + 8 * i, box.y + 180 + 5 * i);
    await page.mouse.up();
  });
  const after = await canvasSummary('main');
  assert.notEqual(after.hash, before.hash, 'the picture did not change');
  assert.notEqual(await page.locator('#angles').innerText(), angles);
  assert.ok(after.lit > 1000);
});

test('each of the five modes renders its own picture', async () => {
  const hashes = new Set();
  for (const mode of ['Orthographic', 'Perspective', 'Anaglyph', 'Volumetric', 'Transect']) {
    await chooseMode(mode);
    const s = await canvasSummary('main');
    assert.ok(s.lit > 500, `${mode}: only ${s.lit} lit pixels`);
    hashes.add(s.hash);
    await shot(`mode-${mode.toLowerCase()}`);
    assert.equal(await page.locator('#message').innerText(), '', `${mode}: an error was shown`);
  }
  assert.equal(hashes.size, 5, 'two modes drew the same picture');
});

test('a volumetric drag shows previews and ends with the final picture', async () => {
  await chooseMode('Volumetric');
  const box = await page.locator('#main').boundingBox();
  await page.mouse.move(box.x + 100, box.y + 100);
  await page.mouse.down();
  await page.mouse.move(box.x + 140, box.y + 110);
  await page.waitForFunction(() => document.getElementById('frameTime').innerText.includes('preview'));
  await andSettle(() => page.mouse.up());
  assert.doesNotMatch(await page.locator('#frameTime').innerText(), /preview/);
  await chooseMode('Orthographic');
});

test('a transect takes level colours only beside a dot picture showing levels', async () => {
  // Grey scheme: every lit pixel has B = G = R. Level scheme: B stays 0.
  const nanoColours = () => page.evaluate(() => {
    const c = document.getElementById('nano');
    const d = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;
    let grey = 0, coloured = 0;
    for (let i = 0; i < d.length; i += 4) {
      if (!(d[i] | d[i + 1] | d[i + 2])) continue;
      if (d[i] === d[i + 1] && d[i + 1] === d[i + 2]) grey++;
      else if (d[i + 2] === 0) coloured++;
    }
    return { grey, coloured };
  });
  await andSettle(() => page.locator('#probDots').check());
  await andSettle(() => page.locator('#probTrans').check());
  const levels = await nanoColours();
  assert.ok(levels.coloured > 100 && levels.grey === 0, JSON.stringify(levels));
  await shot('levels');
  // Beside an anaglyph the transect stays grey.
  await chooseMode('Anaglyph');
  const besideAnaglyph = await nanoColours();
  assert.ok(besideAnaglyph.grey > 100 && besideAnaglyph.coloured === 0,
    JSON.stringify(besideAnaglyph));
  await chooseMode('Orthographic');
});

test('a new dot target changes the dots held in the statistics', async () => {
  const before = number(await statText('statDots'));
  assert.ok(before > 5000, `dots held before: ${before}`);
  await page.locator('#dotTarget').fill('2000');
  await andSettle(() => page.locator('#refill').click());
  assert.equal(number(await statText('statTarget')), 2000);
  const after = number(await statText('statDots'));
  assert.ok(after <= 2000 && after > 1000, `dots held after: ${after}`);
  assert.notEqual(after, before);
});

test('the statistics panel plots the probability-level histogram', async () => {
  const s = await page.evaluate(() => {
    const c = document.getElementById('histogram');
    const d = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;
    let bars = 0;
    // The background is (13, 15, 20); bars are drawn with blue 90.
    for (let i = 0; i < d.length; i += 4) if (d[i + 2] === 90) bars++;
    return bars;
  });
  assert.ok(s > 1000, `only ${s} bar pixels`);
  assert.equal(number(await statText('statSamples')), 128 ** 3);
  assert.ok(number(await statText('statFrames')) > 5);
});

test('the about box is a modal dialog with the engine\'s texts', async () => {
  await page.locator('#aboutButton').click();
  const dialog = page.locator('dialog#about');
  await dialog.waitFor({ state: 'visible' });
  assert.equal(await page.evaluate(() => document.getElementById('about').open), true);
  assert.equal(await page.locator('#aboutCaption').innerText(), 'About: Corvane');
  assert.equal(await page.locator('#aboutFrame').innerText(), 'Warning:');
  assert.equal(await page.locator('#aboutLabel').innerText(),
    'Corvane Pro 2002 - Veltara core component. Have a nice day.');
  assert.match(await page.locator('#aboutYears').innerText(), /\d{4}/);
  await shot('about');
  await dialog.locator('button').click();
  await dialog.waitFor({ state: 'hidden' });
});

test('frames come back fast enough to follow the mouse', async () => {
  // 30 round trips each from the page, with a new angle every time so that no volume
  // picture comes from the cache.
  const medians = await page.evaluate(async () => {
    const v = window.veltara;
    const ortho = await v.measureFrames(
      (i) => ({ ...v.mainRequest(false), Mode: 'Orthographic', Theta: 0.1 * i }), 30);
    const volume = await v.measureFrames(
      (i) => ({ ...v.mainRequest(false), Mode: 'Volumetric', VolFinal: true, Theta: 0.1 * i }),
      30);
    return { ortho, volume };
  });
  writeFileSync(path.join(outDir, 'timings.json'), JSON.stringify(medians, null, 2));
  console.log(`median round trip: orthographic Main ${medians.ortho.toFixed(1)} ms, ` +
    `final volumetric Main ${medians.volume.toFixed(1)} ms`);
  assert.ok(medians.ortho <= 20, `orthographic median ${medians.ortho} ms`);
  assert.ok(medians.volume <= 60, `volumetric median ${medians.volume} ms`);
});

test('a pleasant picture for the docs', async () => {
  await chooseMode('Orthographic');
  await page.locator('#dotTarget').fill('20000');
  await andSettle(() => page.locator('#refill').click());
  await page.setViewportSize({ width: 1280, height: 1000 });
  await shot('viewer');
  if (process.env.VT_DOCS_SCREENSHOT) {
    await page.screenshot({ path: process.env.VT_DOCS_SCREENSHOT });
  }
});
