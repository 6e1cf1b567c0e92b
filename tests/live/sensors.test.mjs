// The panel of sensors: hardware starts with the first subscriber and stops with the last.
import assert from 'node:assert/strict';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { LivePage, launch } from './support/browser.mjs';
import { findOutline, untilPixels } from './support/canvas.mjs';
import { PORTER, serve } from './support/program.mjs';
import { connectViewer } from './support/viewer.mjs';

const LASER = [0, 114, 178];
let browser;
let program;
let live;

before(async () => (browser = await launch()));
after(() => browser.close());
beforeEach(async () => {
  program = await serve(PORTER);
  live = await LivePage.open(browser, program.url);
});
afterEach(async () => {
  await live.close();
  await program.stop();
});

test('a sensor starts with its subscription, shows points, and stops with it', async () => {
  const row = live.row('LeftLaser');
  await untilPixels(live, LASER, (count) => count === 0);

  await live.switchOf('LeftLaser', 'Subscribe').click();
  const sensor = await live.untilSensor('LeftLaser', ({ points }) => points.length > 0);
  await row.getByText('started · you').waitFor();
  await untilPixels(live, LASER, (count) => count > 20);
  assert.deepEqual(sensor.subscribers, ['page 1']);
  await row.locator('.sensor-figures').filter({ hasText: /rate10\.\d Hzage0\.\d snearest\d\.\d\d m/ }).waitFor();

  await live.switchOf('LeftLaser', 'Subscribe').click();
  await row.getByText('no subscriber', { exact: true }).waitFor();
  await untilPixels(live, LASER, (count) => count === 0);
});

test('a subscription ends with its page', async () => {
  const other = await LivePage.open(browser, program.url);
  await other.switchOf('FrontSonar', 'Subscribe').click();
  await live.row('FrontSonar').getByText('started · page 2').waitFor();
  assert.equal(await live.switchOf('FrontSonar', 'Subscribe').isChecked(), false);
  await other.close();
  await live.row('FrontSonar').getByText('no subscriber', { exact: true }).waitFor();
});

test('a sensor with two subscribers stops with the last of them', async () => {
  const row = live.row('FrontSonar');
  const { client, channels } = await connectViewer(program.port);
  const channel = channels.find(({ topic }) => topic.includes('FrontSonar'));
  const subscription = client.subscribe(channel.id);
  await row.getByText('started · foxglove viewer 1').waitFor();
  await live.switchOf('FrontSonar', 'Subscribe').click();
  await live.untilSensor('FrontSonar', ({ subscribers }) => subscribers.length === 2);

  await live.switchOf('FrontSonar', 'Subscribe').click();
  await live.untilSensor('FrontSonar', ({ subscribers, started }) => subscribers.length === 1 && started);

  client.unsubscribe(subscription);
  await row.getByText('no subscriber', { exact: true }).waitFor();
  client.close();
});

test('a disabled or failed sensor stops although it has a subscriber, and comes back', async () => {
  const row = live.row('BackSonar');
  await live.switchOf('BackSonar', 'Subscribe').click();
  await row.getByText('started · you').waitFor();
  for (const [label, why] of [['Enable', 'disabled'], ['Diagnosis', 'bad diagnosis']]) {
    await live.switchOf('BackSonar', label).click();
    await row.getByText(`${why} · you`).waitFor();
    await live.switchOf('BackSonar', label).click();
    await row.getByText('started · you').waitFor();
  }
});

test('a fault set from the menu is shown clearly and can be ended', async () => {
  const row = (name) => live.row(name);
  const badge = (name) => row(name).locator('.sensor-badge');
  const reason = (name) => row(name).locator('.sensor-reason');
  for (const name of ['BackSonar', 'FrontSonar']) {
    assert.equal(await badge(name).innerText(), 'off');
    await live.switchOf(name, 'Subscribe').click();
    await badge(name).getByText('sound').waitFor();
  }
  await row('BackSonar').locator('.sensor-name').click();
  await row('BackSonar').getByLabel('Fault of BackSonar').selectOption('off');
  await row('BackSonar').getByText('BackSonar has the fault "off".').waitFor();
  await badge('BackSonar').getByText('silent').waitFor();
  await reason('BackSonar').getByText(/^no (fresh )?record for \d.*limit.*\(for \d+ s\)\. To fix: ends when good records come; check the driver$/).waitFor();
  assert.equal(await row('BackSonar').getAttribute('data-severity'), 'bad');
  await live.page.getByText('1 not sound').waitFor();
  assert.equal(await row('FrontSonar').getAttribute('data-severity'), '');

  await row('BackSonar').getByRole('button', { name: 'End the fault' }).click();
  const { time: end } = await live.until(({ faults }) => faults.BackSonar === undefined);
  await badge('BackSonar').getByText('sound').waitFor();
  for (const line of ['.sensor-reason', '.sensor-trouble', '.sensor-failed']) {
    await row('BackSonar').locator(line).waitFor({ state: 'hidden' });
  }
  const seconds = (live.state.time - end) / 1e9;
  assert.ok(seconds < 4, `the row tells of trouble for ${seconds} s after the fault`);

  await live.switchOf('FrontSonar', 'Diagnosis').click();
  await badge('FrontSonar').getByText('failing').waitFor();
  await reason('FrontSonar').getByText(/^its diagnosis is bad.*To fix: set its diagnosis to good/).waitFor();
  await live.switchOf('FrontSonar', 'Diagnosis').click();
  await badge('FrontSonar').getByText('sound').waitFor();
  await reason('FrontSonar').waitFor({ state: 'hidden' });
});

test('a sensor that could not be built is shown with the reason', async () => {
  const folder = mkdtempSync(path.join(tmpdir(), 'qv_unbuilt_'));
  const robot = path.join(folder, 'robot.urdf');
  writeFileSync(robot, '<robot name="r"><kind code="1"/><link name="base"/><sensor name="Lost" type="8"/></robot>');
  const other = await serve(['--robot', robot]);
  const page = await LivePage.open(browser, other.url);
  await page.row('Lost').getByText(/^it could not be built: .* its model is incomplete\. To fix: correct the description/).waitFor();
  assert.equal(await page.page.locator('#sensors-ill').textContent(), '1 not sound');
  await page.close();
  await other.stop();
  rmSync(folder, { recursive: true });
});

test('a click on a row, or on a point of the map, opens the record', async () => {
  const record = live.row('LeftLaser').locator('.record');
  await live.switchOf('LeftLaser', 'Subscribe').click();
  await live.row('LeftLaser').locator('.sensor-state').click();
  await record.getByText('timestamp').waitFor();
  const [transform] = await record.locator('dd').filter({ hasText: '0.250' }).allInnerTexts();
  assert.equal(transform.split('\n').length, 3);
  await live.row('LeftLaser').locator('.sensor-state').click();
  await record.waitFor({ state: 'hidden' });

  await untilPixels(live, LASER, (count) => count > 20);
  const { pixels } = await findOutline(live.page, LASER);
  await live.page.locator('#map').click({ position: { x: pixels[0][0], y: pixels[0][1] } });
  await record.getByText('timestamp').waitFor();
});

/** The depth image is grey except for its components. */
function countColoured() {
  const frame = document.getElementById('depth');
  const context = new OffscreenCanvas(frame.naturalWidth, frame.naturalHeight).getContext('2d');
  context.drawImage(frame, 0, 0);
  const { data } = context.getImageData(0, 0, frame.naturalWidth, frame.naturalHeight);
  let count = 0;
  for (let at = 0; at < data.length; at += 4) count += Math.abs(data[at] - data[at + 2]) > 20;
  return count;
}

/** Returns true if the depth camera's points are in the 3D view. */
function countSpacePoints() {
  const canvas = document.getElementById('space');
  const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
  let count = 0;
  for (let at = 0; at < data.length; at += 4) count += Math.abs(data[at]) < 20 && Math.abs(data[at + 1] - 158) < 20 && Math.abs(data[at + 2] - 115) < 20;
  return count > 500;
}

test('all sensors are subscribed at once, and the depth image comes with them', async () => {
  const all = live.page.locator('#subscribe-all');
  await live.page.getByText('Subscribe to DepthCamera to see what it sees.').waitFor();

  await all.click();
  await live.until(({ sensors }) => sensors.every(({ started }) => started));
  await live.page.getByRole('img', { name: 'Depth image of DepthCamera' }).waitFor();
  await live.page.locator('#depth-caption').getByText(/^[1-9]\d* components?(, \d+ pixels? beyond range)?$/).waitFor();
  assert.ok((await live.page.evaluate(countColoured)) > 100);

  await live.page.getByRole('button', { name: '3D view' }).click();
  await live.page.waitForFunction(countSpacePoints);
  await live.page.getByRole('button', { name: '3D view' }).click();
  await live.page.locator('#space').waitFor({ state: 'hidden' });

  await all.click();
  await live.until(({ sensors }) => sensors.every(({ started }) => !started));
  await live.page.getByText('last image; the camera is stopped').waitFor();
});

test('the log shows the actions, from the chosen level up', async () => {
  const lines = live.page.locator('.log-line:visible');
  await live.switchOf('FrontLaser', 'Subscribe').click();
  await lines.getByText('FrontLaser subscribed by page 1: started').waitFor();
  await live.switchOf('FrontLaser', 'Diagnosis').click();
  await lines.getByText('FrontLaser diagnosis bad: stopped').waitFor();
  const detail = lines.getByText('FrontLaser state.').first();
  assert.equal(await detail.isVisible(), false);
  await live.page.selectOption('#log-level', 'verbose');
  await detail.waitFor();
  await live.page.selectOption('#log-level', 'fatal');
  await lines.first().waitFor({ state: 'hidden' });
  assert.match(await live.page.locator('#log-count').innerText(), /^0 of \d+ lines?$/);
});
