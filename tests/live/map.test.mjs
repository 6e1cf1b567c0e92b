// The map under a hand.
import assert from 'node:assert/strict';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { LivePage, launch } from './support/browser.mjs';
import { countPixels, findEnlargement, findOutline } from './support/canvas.mjs';
import { serve } from './support/program.mjs';

const WALL = [58, 66, 78];
const WAY = [10, 95, 176];
let browser;
let program;
let live;

before(async () => {
  browser = await launch();
  program = await serve(['--kind', '1', '--pose', '3,6.3,0']);
});
after(async () => {
  await browser.close();
  await program.stop();
});
beforeEach(async () => {
  live = await LivePage.open(browser, program.url);
  await live.page.waitForFunction(() => document.getElementById('pose-x').textContent.startsWith('3.'));
});
afterEach(() => live.close());

/** The map as it looks after `action`, once it looks otherwise than before. */
async function changedBy(action) {
  const look = () => live.page.evaluate(() => document.getElementById('map').toDataURL());
  const before = await look();
  await action();
  for (let looks = 0; looks < 50; ++looks) {
    if ((await look()) !== before) return look();
    await live.until(() => true);
  }
  throw new Error('the map looks as before');
}

test('the whole map is seen at first, and again after Fit', async () => {
  const walls = await countPixels(live.page, WALL);
  assert.ok(walls > 10000, `${walls} pixels of wall`);
  await changedBy(() => live.page.getByRole('button', { name: 'Zoom in' }).click());
  await changedBy(() => live.page.getByRole('button', { name: 'Show the whole map' }).click());
  const again = await countPixels(live.page, WALL);
  assert.ok(Math.abs(again - walls) < walls / 100, `${walls}, then ${again} pixels of wall`);
});

/** Returns the scale factor of `action` about [left, top] of the canvas; the map also moves by `shift`. */
async function enlargementBy(action, about, shift) {
  const before = await findOutline(live.page, WALL);
  await changedBy(action);
  return findEnlargement(before, await findOutline(live.page, WALL), about, shift);
}

test('the wheel zooms about the pointer', async () => {
  const box = await live.page.locator('#map').boundingBox();
  const about = [Math.round(box.width * 0.7), Math.round(box.height * 0.4)];
  await live.page.mouse.move(box.x + about[0], box.y + about[1]);
  const nearer = await enlargementBy(() => live.page.mouse.wheel(0, -200), about);
  assert.ok(nearer > 1.1, `enlarged by ${nearer}`);
  const farther = await enlargementBy(() => live.page.mouse.wheel(0, 200), about);
  assert.ok(Math.abs(nearer * farther - 1) < 0.02, `enlarged by ${nearer}, then by ${farther}`);
});

test('keys and buttons zoom about the middle', async () => {
  const box = await live.page.locator('#map').boundingBox();
  const middle = [box.width / 2, box.height / 2];
  const press = (key) => () => live.page.keyboard.press(key);
  const click = (name) => () => live.page.getByRole('button', { name }).click();
  for (const [nearer, farther] of [[press('+'), press('-')], [click('Zoom in'), click('Zoom out')]]) {
    const factors = [await enlargementBy(nearer, middle), await enlargementBy(farther, middle)];
    assert.ok(factors[0] > 1.1 && factors[1] < 0.9, `enlarged by ${factors}`);
  }
});

test('a drag and the keys move the map by the right distance', async () => {
  const box = await live.page.locator('#map').boundingBox();
  const [x, y] = [Math.round(box.x + box.width * 0.7), Math.round(box.y + box.height * 0.5)];
  const drag = async () => {
    await live.page.mouse.move(x, y);
    await live.page.mouse.down();
    await live.page.mouse.move(x - 80, y + 30, { steps: 4 });
    await live.page.mouse.up();
  };
  const dragged = await enlargementBy(drag, [0, 0], [-80, 30]);
  assert.ok(Math.abs(dragged - 1) < 0.01, `enlarged by ${dragged}`);
  const pushed = await enlargementBy(() => live.page.keyboard.press('Shift+ArrowLeft'), [0, 0], [60, 0]);
  assert.ok(Math.abs(pushed - 1) < 0.01, `enlarged by ${pushed}`);
  assert.equal(live.state.goal, null);
});

test('two fingers zoom about the place between them', async () => {
  const session = await live.page.context().newCDPSession(live.page);
  const box = await live.page.locator('#map').boundingBox();
  const [x, y] = [Math.round(box.x + box.width * 0.6), Math.round(box.y + box.height * 0.5)];
  const touch = (type, apart) => session.send('Input.dispatchTouchEvent', {
    type, touchPoints: apart === null ? [] : [{ x: x - apart, y, id: 0 }, { x: x + apart, y, id: 1 }],
  });
  const spread = async () => {
    await touch('touchStart', 40);
    for (const apart of [60, 80, 100]) await touch('touchMove', apart);
    await touch('touchEnd', null);
  };
  const factor = await enlargementBy(spread, [x - box.x, y - box.y]);
  assert.ok(Math.abs(factor - 2.5) < 0.05, `enlarged by ${factor}, not by 2.5`);
});

test('the readout shows the place under the pointer, and the tape a distance', async () => {
  const box = await live.page.locator('#map').boundingBox();
  const placeAt = async (left, top) => {
    await live.page.mouse.move(box.x + left, box.y + top, { steps: 2 });
    const [, x, y] = (await live.page.locator('#cursor').innerText()).match(/x (\S+) m {2}y (\S+) m/);
    return [x, y].map((text) => Number(text.replace('\u2212', '-')));
  };
  const from = await placeAt(box.width * 0.6, box.height * 0.6);
  await live.page.keyboard.press('m');
  await live.page.mouse.down();
  const to = await placeAt(box.width * 0.6 + 90, box.height * 0.6 - 120);
  await live.page.mouse.up();
  const [, length] = (await live.page.locator('#notice').innerText()).match(/^(\S+) m at 53°/);
  assert.ok(Math.abs(Number(length) - Math.hypot(to[0] - from[0], to[1] - from[1])) < 0.03, `${length} m from ${from} to ${to}`);
  await live.page.keyboard.press('Escape');
  await live.page.keyboard.press('m');
  for (const key of ['Shift+ArrowUp', 'Shift+ArrowUp', 'Shift+ArrowRight']) await live.page.keyboard.press(key);
  assert.match(await live.page.locator('#notice').innerText(), /^2\.24 m at 63°: 1\.00 m in x, 2\.00 m in y$/);
  for (const key of ['Enter', 'ArrowLeft', 'Escape']) await live.page.keyboard.press(key);
  const { goal, pose } = await live.until(() => true);
  assert.deepEqual([goal, pose], [null, { x: 3, y: 6.3, theta: 0 }]);
});

test('all of a map of 45 million cells is seen on a phone, with a way through it, and the page never waits', async (context) => {
  const side = 6708;
  const folder = mkdtempSync(path.join(tmpdir(), 'qv_map_'));
  context.after(() => rmSync(folder, { recursive: true }));
  const cells = Buffer.alloc(side * side, 254);
  for (let at = 0; at < side; ++at) for (const edge of [at, (side - 1) * side + at, at * side, at * side + side - 1]) cells[edge] = 0;
  // A wall between the robot and its goal, with the way around its end.
  for (let row = 2500; row < 5000; ++row) cells[row * side + 2600] = 0;
  writeFileSync(path.join(folder, 'large.pgm'), Buffer.concat([Buffer.from(`P5\n${side} ${side}\n255\n`), cells]));
  writeFileSync(path.join(folder, 'large.yaml'), 'image: large.pgm\nresolution: 0.05\norigin: [0, 0, 0]\nnegate: 0\noccupied_thresh: 0.65\nfree_thresh: 0.196\n');
  const large = await serve(['--kind', '1', '--pose', '100,100,0', '--map', path.join(folder, 'large.yaml')]);
  const phone = await LivePage.open(browser, large.url, { viewport: { width: 400, height: 860 }, prepare: (page) => page.addInitScript(watchGaps) });
  let corners = [];
  for (let looks = 0; looks < 100 && corners.length < 4; ++looks) {
    await phone.until(() => true);
    corners = await phone.page.evaluate(findCorners);
  }
  assert.equal(corners.length, 4);
  assert.ok(Math.abs(corners[1] - corners[0] - (corners[3] - corners[2])) < 3, `sides of a square: ${corners}`);
  const [left, right] = corners;
  await phone.page.keyboard.press('g');
  const y = (await phone.page.locator('#map').boundingBox()).height / 2;
  await phone.page.locator('#map').click({ position: { x: left + (right - left) * 0.6, y } });
  await phone.until(({ goal, route }) => goal !== null && route.length > 2);
  await phone.until(() => true);
  // Between the robot and the goal, which are of this colour, too.
  const way = (await findOutline(phone.page, WAY)).pixels.filter(([x]) => x > left + (right - left) * 0.36 && x < left + (right - left) * 0.54);
  assert.ok(way.length > 20, `${way.length} pixels of the way`);
  const longest = await phone.page.evaluate(() => globalThis.longestGap);
  assert.ok(longest < 1000, `${longest} ms without a picture`);
  await phone.close();
  await large.stop();
});

/** The longest that the page came to nothing, in milliseconds. */
function watchGaps() {
  globalThis.longestGap = 0;
  let last = performance.now();
  setInterval(() => {
    globalThis.longestGap = Math.max(globalThis.longestGap, performance.now() - last);
    last = performance.now();
  }, 10);
}

/** [left, right, top, bottom] of the walls around the map, none unless they are all there. */
function findCorners() {
  const canvas = document.getElementById('map');
  const { data, width, height } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
  // Thinner than a pixel, a wall is grey.
  const isWall = (x, y) => data[4 * (y * width + x)] < 200;
  // The row lies beside the middle, to avoid the robot and overlays.
  const walls = (length, isAt) => [...Array(length).keys()].filter(isAt);
  const across = walls(width, (x) => isWall(x, Math.round(height * 0.55)));
  const down = walls(height, (y) => isWall(Math.round(width * 0.55), y));
  const ends = [across.at(0), across.at(-1), down.at(0), down.at(-1)];
  return ends.includes(undefined) || ends[1] - ends[0] < 100 || ends[3] - ends[2] < 100 ? [] : ends;
}

test('a map in UTM coordinates is shown and driven in them', async (context) => {
  const folder = mkdtempSync(path.join(tmpdir(), 'qv_map_'));
  context.after(() => rmSync(folder, { recursive: true }));
  const file = path.join(folder, 'utm.yaml');
  const image = fileURLToPath(new URL('../../maps/apartment.pgm', import.meta.url));
  writeFileSync(file, `image: ${image}\nresolution: 0.05\norigin: [450000, 5400000, 0]\nnegate: 0\noccupied_thresh: 0.65\nfree_thresh: 0.196\n`);
  const utm = await serve(['--kind', '1', '--pose', '450003.25,5400006.5,0', '--map', file, '--shift-origin']);
  const shown = await LivePage.open(browser, utm.url);
  await shown.page.waitForFunction(() => document.getElementById('pose-y').textContent === '5400006.50 m');
  for (let looks = 0; looks < 50 && (await countPixels(shown.page, WALL)) <= 10000; ++looks) await shown.until(() => true);
  assert.ok((await countPixels(shown.page, WALL)) > 10000);
  const { width, height } = await shown.page.locator('#map').boundingBox();
  await shown.page.keyboard.press('g');
  await shown.page.locator('#map').click({ position: { x: width * 0.4, y: height / 2 } });
  const { goal } = await shown.until(({ goal }) => goal !== null);
  const [x, y] = (await shown.page.locator('#cursor').textContent()).match(/\d+\.\d+/g).map(Number);
  assert.ok(Math.hypot(goal.x - x, goal.y - y) < 0.02 && x > 450000 && y > 5400000, `${x}, ${y} for ${JSON.stringify(goal)}`);
  await shown.close();
  await utm.stop();
});

test('the map follows the theme', async () => {
  const light = await countPixels(live.page, [255, 255, 255]);
  await changedBy(() => live.page.emulateMedia({ colorScheme: 'dark' }));
  assert.ok((await countPixels(live.page, [255, 255, 255])) < light / 10);
});
