// The map under a hand.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { LivePage, launch } from './support/browser.mjs';
import { countPixels } from './support/canvas.mjs';
import { serve } from './support/program.mjs';

const WALL = [58, 66, 78];
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
  assert.ok(Math.abs((await countPixels(live.page, WALL)) - walls) < walls / 100);
});

test('wheel, keys and buttons zoom; a drag moves', async () => {
  const box = await live.page.locator('#map').boundingBox();
  const [x, y] = [box.x + box.width * 0.7, box.y + box.height * 0.5];
  await live.page.mouse.move(x, y);
  await changedBy(() => live.page.mouse.wheel(0, -300));
  await changedBy(() => live.page.keyboard.press('+'));
  await changedBy(() => live.page.keyboard.press('-'));
  await changedBy(() => live.page.keyboard.press('Shift+ArrowLeft'));
  await changedBy(() => live.page.getByRole('button', { name: 'Zoom out' }).click());
  await changedBy(async () => {
    await live.page.mouse.move(x, y);
    await live.page.mouse.down();
    await live.page.mouse.move(x - 80, y + 30, { steps: 4 });
    await live.page.mouse.up();
  });
  assert.equal(live.state.goal, null);
});

test('what lies under the pointer stays there while it zooms', async () => {
  const found = await live.page.evaluate(async () => {
    const { Viewport } = await import('/viewport.js');
    const viewport = new Viewport();
    viewport.resize(800, 600);
    const place = viewport.toMap(650, 120);
    const before = viewport.scale;
    viewport.zoomBy(1.5, 650, 120);
    return { at: viewport.toCanvas(place.x, place.y), factor: viewport.scale / before };
  });
  assert.deepEqual(found.at.map(Math.round), [650, 120]);
  assert.equal(found.factor, 1.5);
});

test('points fade with their age and then go', async () => {
  const strengths = await live.page.evaluate(async () => {
    const { PointTrail } = await import('/point_trail.js');
    const trail = new PointTrail();
    for (const time of [10, 10.5, 11]) trail.add([{ name: 'Laser', age: 0, points: [[time, 0]] }], time);
    const look = (time) => trail.of('Laser', time).map(({ points, strength }) => [points[0][0], strength]);
    const early = look(11);
    trail.add([{ name: 'Laser', age: 1.2, points: [[11, 0]] }], 12.2);
    return { early, late: look(12.2).map(([from]) => from) };
  });
  assert.deepEqual(strengths.early, [[10, 0.5], [10.5, 0.75], [11, 1]]);
  assert.deepEqual(strengths.late, [10.5, 11]);
});

test('two fingers zoom', async () => {
  const session = await live.page.context().newCDPSession(live.page);
  const box = await live.page.locator('#map').boundingBox();
  const [x, y] = [Math.round(box.x + box.width * 0.7), Math.round(box.y + box.height * 0.5)];
  const touch = (type, apart) => session.send('Input.dispatchTouchEvent', {
    type, touchPoints: apart === null ? [] : [{ x: x - apart, y, id: 0 }, { x: x + apart, y, id: 1 }],
  });
  const before = await countPixels(live.page, WALL);
  await changedBy(async () => {
    await touch('touchStart', 20);
    for (const apart of [40, 70, 110]) await touch('touchMove', apart);
    await touch('touchEnd', null);
  });
  assert.notEqual(await countPixels(live.page, WALL), before);
});

test('the map follows the theme', async () => {
  const light = await countPixels(live.page, [255, 255, 255]);
  await changedBy(() => live.page.emulateMedia({ colorScheme: 'dark' }));
  assert.ok((await countPixels(live.page, [255, 255, 255])) < light / 10);
});
