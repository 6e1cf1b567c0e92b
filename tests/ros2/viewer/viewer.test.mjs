// A recording in the viewer that Foxglove and Lichtblick have grown from: what it says of each topic that it draws.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { chromium } from 'playwright-core';
import { serve } from './file_server.mjs';

const TOPICS = ['/map', '/robot_description', '/fields_of_view', '/people_markers', '/FrontLaser/points', '/FrontLaser/scan',
  '/FrontSonar/points', '/DepthCamera/points', '/DepthCamera/image', '/DepthCamera/camera_info'];
const FLAGS = ['--no-sandbox', '--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--ignore-gpu-blocklist'];

/** Counts a picture's black pixels (walls) and coloured pixels (points, people). */
async function countPixels(picture) {
  const image = await createImageBitmap(await (await fetch(`data:image/png;base64,${picture}`)).blob());
  const canvas = new OffscreenCanvas(image.width, image.height).getContext('2d');
  canvas.drawImage(image, 0, 0);
  const { data } = canvas.getImageData(0, 0, image.width, image.height);
  const counts = { black: 0, coloured: 0 };
  for (let i = 0; i < data.length; i += 4) {
    const rgb = data.subarray(i, i + 3);
    if (Math.max(...rgb) === 0) ++counts.black;
    if (Math.max(...rgb) - Math.min(...rgb) > 60) ++counts.coloured;
  }
  return counts;
}

/** The picture of the scene, right of the list of topics, as soon as there is enough in it, or after a minute. */
async function drawn(page) {
  let counts = {};
  for (let second = 0; second < 60; ++second) {
    const picture = await page.screenshot({ path: `${process.env.QV_SAMPLES}/viewer.png`, clip: { x: 430, y: 40, width: 960, height: 760 } });
    counts = await page.evaluate(countPixels, picture.toString('base64'));
    if (counts.black > 20_000 && counts.coloured > 2_000) break;
    await page.waitForTimeout(1000);
  }
  return counts;
}

test('a recorded robot is drawn, and nothing of it is refused', async () => {
  const server = await serve('.', 'node_modules', 'node_modules/@foxglove/studio-base/assets', process.env.QV_SAMPLES);
  const browser = await chromium.launch({ executablePath: process.env.QV_CHROMIUM ?? '/usr/bin/chromium', args: FLAGS });
  try {
    const page = await browser.newPage({ viewport: { width: 1400, height: 900 } });
    const refused = [];
    page.on('console', (message) => /\[topics >|Failed to parse/.test(message.text()) && refused.push(message.text()));
    page.on('pageerror', (error) => refused.push(error.message));
    await page.goto(`${server.url}/page.html?time=1970-01-01T00:00:02.500000000Z&topics=${encodeURIComponent(TOPICS.join())}`);
    await page.getByText('/DepthCamera/image_points').waitFor({ timeout: 120_000 });
    const { black, coloured } = await drawn(page);
    assert.ok(black > 20_000, `${black} black pixels`);
    assert.ok(coloured > 2_000, `${coloured} coloured pixels`);
    assert.deepEqual(refused, []);
  } finally {
    await browser.close();
    server.close();
  }
});
