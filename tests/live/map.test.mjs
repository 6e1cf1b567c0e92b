// The map under a hand.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { LivePage, launch } from './support/browser.mjs';
import { countPixels, findEnlargement, findOutline } from './support/canvas.mjs';
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

/** How `action` enlarges the map about [left, top] of the canvas, and moves it by `shift`. */
async function enlargementBy(action, about, shift) {
  const before = await findOutline(live.page, WALL);
  await changedBy(action);
  return findEnlargement(before, await findOutline(live.page, WALL), about, shift);
}

test('what is under the pointer stays there when the wheel zooms', async () => {
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

test('a drag and the keys move the map as far as they say', async () => {
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

test('what is under two fingers stays under them', async () => {
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

test('the map follows the theme', async () => {
  const light = await countPixels(live.page, [255, 255, 255]);
  await changedBy(() => live.page.emulateMedia({ colorScheme: 'dark' }));
  assert.ok((await countPixels(live.page, [255, 255, 255])) < light / 10);
});
