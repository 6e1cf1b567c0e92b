// The map's picture of a state. The test sends the states instead of the program: the laser's record and little else.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { LivePage, launch } from './support/browser.mjs';
import { findChange, keepPicture } from './support/canvas.mjs';
import { PORTER, serve } from './support/program.mjs';
import { Relay } from './support/relay.mjs';

const NOWHERE = { x: -100, y: -100, theta: 0 };
let browser;
let program;
let live;
let relay;
let laser;
let time;

before(async () => {
  browser = await launch();
  program = await serve([...PORTER, '--pose', '3,6.3,0', '--subscribe', 'LeftLaser']);
});
after(async () => {
  await browser.close();
  await program.stop();
});
beforeEach(async () => {
  relay = new Relay();
  live = await LivePage.open(browser, program.url, { prepare: relay.prepare });
  laser = await live.untilSensor('LeftLaser', ({ fieldOfView, points }) => fieldOfView && points.length > 0);
  laser = { ...laser, points: laser.points.slice(0, 2) };  // dots on each other would fade less
  relay.passes = false;
  time = relay.last.state.time;
  await show({}, 10);
  await untilStill();
  await keepPicture(live.page);
});
afterEach(() => live.close());

/** Waits until the map is unchanged for 20 pictures, because tiles load late. */
function untilStill() {
  return live.page.evaluate(async () => {
    const canvas = document.getElementById('map');
    for (let same = 0, last = ''; same < 20; ++same) {
      await new Promise(requestAnimationFrame);
      const look = canvas.toDataURL();
      if (look !== last) same = 0;
      last = look;
    }
  });
}

/** Shows the map with nothing but `content`, some seconds of simulated time after what was shown before. */
async function show(content, later) {
  time += later * 1e9;
  const nothing = { pose: NOWHERE, goal: null, people: [], touches: [], sensors: [{ ...laser, age: null, fieldOfView: null, points: [] }] };
  relay.tell({ ...relay.last.state, ...nothing, ...content, time });
  await live.page.evaluate(() => new Promise(requestAnimationFrame));
}

/** Returns the change of the picture relative to one without content. */
async function findChangeBy(content, later) {
  await show(content, later);
  return findChange(live.page);
}

for (const [what, hidden, isGoneAtLast] of [['points', { fieldOfView: null }, true], ['field of view', { points: [] }, false]]) {
  test(`${what} of a sensor fade with age`, async () => {
    const amounts = [];
    for (const [age, later] of [[0, 10], [0.9, 0.9], [1.8, 0.9], [2.7, 0.9]]) {
      amounts.push((await findChangeBy({ sensors: [{ ...laser, ...hidden, age }] }, later)).amount);
    }
    for (const index of [1, 2, 3]) assert.ok(amounts[index] < 0.9 * amounts[index - 1], `${amounts}`);
    assert.equal(amounts[3] === 0, isGoneAtLast, `${amounts}`);
  });
}

test('the robot, people, touches and points are drawn at their places', async () => {
  const contents = {
    robot: ([x, y]) => ({ pose: { x, y, theta: 0 } }),
    person: (place) => ({ people: [place] }),
    touch: ([x, y]) => ({ touches: [{ name: 'FrontBumper', x, y, since: 0 }] }),
    points: (place) => ({ sensors: [{ ...laser, age: 0, fieldOfView: null, points: place }] }),
  };
  const middles = {};
  for (const [name, contentAt] of Object.entries(contents)) {
    const seen = [];
    for (const place of [[15.5, 6], [16, 6], [15.5, 6.5]]) seen.push((await findChangeBy(contentAt(place), 10)).middle);
    middles[name] = seen;
  }
  const [[left, top], [right], [, upper]] = middles.person;
  const half = right - left;
  assert.ok(half > 10 && Math.abs(top - upper - half) < 1, `half a metre is ${half} pixels, upwards ${top - upper}`);
  const expected = [[left, top], [left + half, top], [left, top - half]];
  for (const [name, seen] of Object.entries(middles)) {
    const away = seen.map(([x, y], index) => Math.hypot(x - expected[index][0], y - expected[index][1]));
    assert.ok(Math.max(...away) < 3, `${name} is ${away} pixels away`);
  }
});

test('the robot moves from state to state, picture by picture', async () => {
  await show({ pose: { x: 15.5, y: 6, theta: 0 } }, 10);
  await live.page.evaluate(() => {
    const { translate } = CanvasRenderingContext2D.prototype;
    globalThis.lefts = [];
    CanvasRenderingContext2D.prototype.translate = function (left, top) {
      if (this.canvas.id === 'map') globalThis.lefts.push(left);
      return translate.call(this, left, top);
    };
  });
  await show({ pose: { x: 15.9, y: 6, theta: 0 } }, 0.1);
  const lefts = await live.page.evaluate(async () => {
    for (let pictures = 0; pictures < 30; ++pictures) await new Promise(requestAnimationFrame);
    return globalThis.lefts;
  });
  const end = lefts.at(-1);
  assert.ok(end > lefts[0] + 5 && lefts.every((left, index) => index === 0 || left >= lefts[index - 1]), `${lefts}`);
  assert.ok(new Set(lefts.filter((left) => left < end)).size >= 4, `${lefts}`);
});

test('the planned route is drawn around its corners, and the robot in its outline', async () => {
  const straight = { pose: { x: 15, y: 6, theta: 0 }, goal: { x: 16, y: 6 }, route: [[15, 6], [16, 6]] };
  const { middle: [, level] } = await findChangeBy(straight, 10);
  const { middle: [, above] } = await findChangeBy({ ...straight, route: [[15, 6], [15, 7], [16, 7], [16, 6]] }, 10);
  assert.ok(above < level - 5, `from ${level} to ${above} pixels`);

  const bodies = [];
  for (const outline of [[], [[1, -1], [1, 1], [-1, 1], [-1, -1]]]) {
    relay.tell({ ...relay.last.hello, outline });
    bodies.push((await findChangeBy({ pose: { x: 15.5, y: 6, theta: 0 } }, 10)).amount);
  }
  assert.ok(bodies[1] > 1.5 * bodies[0], `${bodies}`);
});

test('errors that differ only in figures stand in one line, with their number', async () => {
  const tell = (seconds, message, level = 'error') => relay.tell({ op: 'log', lines: [
    { time: time + seconds * 1e9, level, category: 'Navigation.LaserSensor', method: 'xGetData', message }] });
  tell(0, 'no posture is known at 29.15 s');
  tell(0, 'FrontLaser failed', 'info');
  for (const seconds of [0.1, 0.2]) tell(seconds, `no posture is known at ${(29.15 + seconds).toFixed(2)} s`);
  await live.page.locator('.log-line').last().getByText('3 times LaserSensor xGetData no posture is known at 29.35 s').waitFor();
  assert.equal(await live.page.locator('.log-line').getByText('no posture is known').count(), 1);
  for (const name of ['Laser1', 'Laser2']) tell(1, `${name} failed`);
  await live.page.locator('.log-line').getByText('Laser1 failed').waitFor();
  tell(9, 'no posture is known at 38.15 s');
  await live.page.locator('.log-line').last().getByText('xGetData no posture is known at 38.15 s').waitFor();
});
