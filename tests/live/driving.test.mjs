// The robot driven by keys and by goals, and time held still.
import assert from 'node:assert/strict';
import { once } from 'node:events';
import { after, afterEach, before, test } from 'node:test';
import WebSocket from 'ws';
import { LivePage, launch } from './support/browser.mjs';
import { PORTER, serve } from './support/program.mjs';

let browser;
let program;
let live;

before(async () => (browser = await launch()));
after(() => browser.close());
afterEach(async () => {
  await live.close();
  await program.stop();
});

async function start(...options) {
  program = await serve([...PORTER, ...options]);
  live = await LivePage.open(browser, program.url);
}

test('driving into a wall shows a touch', async () => {
  await start('--pose', '3,6.3,1.5708');
  await live.switchOf('Touch', 'Subscribe').click();
  await live.page.keyboard.down('ArrowUp');
  const { touches } = await live.until((state) => state.touches.length > 0);
  await live.untilSensor('Touch', ({ points }) => points.length > 0);
  await live.page.keyboard.up('ArrowUp');
  assert.equal(touches[0].name, 'FrontBumper');
  await live.page.getByText('Touched: FrontBumper').waitFor();
  await live.page.locator('.log-line:visible').getByText('FrontBumper touched').waitFor();
});

test('the left key turns left until it is released', async () => {
  await start('--pose', '3,6.3,0');
  await live.page.keyboard.down('ArrowLeft');
  await live.until(({ pose }) => pose.theta > 0.2);
  await live.page.keyboard.up('ArrowLeft');
  await live.until(({ velocity }) => velocity.theta === 0);
});

test('the stick drives in proportion to the push, until it is released', async () => {
  await start('--pose', '3,6.3,0');
  const touching = await LivePage.open(browser, program.url, { hasTouch: true });
  const box = await touching.page.locator('#stick').boundingBox();
  const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
  await touching.page.mouse.move(x, y);
  await touching.page.mouse.down();
  await touching.page.mouse.move(x, y - box.height / 4, { steps: 2 });
  const { velocity } = await touching.until((state) => state.velocity.x > 0.2);
  assert.ok(velocity.x < 0.3 && Math.abs(velocity.theta) < 0.1, JSON.stringify(velocity));
  await touching.page.mouse.up();
  await touching.until((state) => state.velocity.x === 0);
  await touching.close();
});

test('the robot stops when its page is closed', async () => {
  await start('--pose', '3,6.3,0');
  const driver = new WebSocket(`${program.url.replace('http', 'ws')}live`, 'qv.live.v1');
  await once(driver, 'open');
  const renewal = setInterval(() => driver.send('{"op":"drive","forward":0.4,"turn":0}'), 100);
  const { pose } = await live.until(({ velocity }) => velocity.x > 0.1);
  await live.until((state) => state.pose.x > pose.x + 0.4);
  clearInterval(renewal);
  driver.terminate();
  await live.until(({ velocity }) => velocity.x === 0);
});

test('a drag from the robot sets a goal, and the robot gets there', async () => {
  await start('--pose', '3,6.3,0');
  await live.page.getByRole('button', { name: 'Follow' }).click();
  await live.until(() => true);
  const box = await live.page.locator('#map').boundingBox();
  const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
  await live.page.mouse.move(x, y);
  await live.page.mouse.down();
  await live.page.mouse.move(x + 30, y, { steps: 3 });
  await live.page.mouse.up();
  const { goal, pose, route } = await live.until((state) => state.goal !== null);
  assert.deepEqual(route.at(-1), [goal.x, goal.y]);
  assert.ok(goal.x > pose.x, `${goal.x} m is not ahead of ${pose.x} m`);
  const { pose: there } = await live.until((state) => state.goal === null);
  assert.ok(Math.abs(there.x - goal.x) < 0.3, `${there.x} m instead of ${goal.x} m`);
  await live.page.locator('.log-line:visible').getByText(/^.*arrived at/).waitFor();
});

test('picking a goal ends with a press on the robot', async () => {
  await start('--pose', '3,6.3,0');
  await live.page.getByRole('button', { name: 'Follow' }).click();
  await live.until(() => true);
  await live.page.keyboard.press('g');
  await live.page.locator('#map').click();
  await live.page.locator('#goal[aria-pressed=false]').waitFor();
  await live.page.keyboard.down('ArrowLeft');
  await live.until(({ velocity }) => velocity.theta > 0);
  await live.page.keyboard.up('ArrowLeft');
});

test('a goal that cannot be reached is refused with a reason', async () => {
  await start('--pose', '3,6.3,0');
  await live.page.keyboard.press('g');
  for (let metres = 0; metres < 20; ++metres) await live.page.keyboard.press('Shift+ArrowUp');
  await live.page.keyboard.press('Enter');
  await live.page.locator('#notice[data-level=warning]').getByText(/^The robot can't get to 3\.00, 26\.30 m: no free path\.$/).waitFor();
});

test('paused time advances only by steps of 0.1 s', async () => {
  await start();
  await live.page.getByRole('button', { name: 'Pause' }).click();
  const { time } = await live.until(({ paused }) => paused);
  await live.until((state) => state.time === time);
  const step = live.page.getByRole('button', { name: 'Step', exact: true });
  for (const steps of [1, 2]) {
    await step.click();
    const next = await live.until((state) => state.time !== time + (steps - 1) * 1e8);
    assert.equal(next.time, time + steps * 1e8);
  }
  await live.page.getByRole('button', { name: 'Run' }).click();
  await live.until((state) => !state.paused && state.time > time + 1e9);
});

test('time runs at the chosen speed', async () => {
  await start();
  await live.page.selectOption('#speed', '10');
  await live.until(({ speed }) => speed === 10);
  const second = await LivePage.open(browser, program.url);
  await second.page.locator('#speed option[value="10"]:checked').waitFor({ state: 'attached' });
  await second.close();
});
