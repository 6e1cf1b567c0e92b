// A recording that is played: its time line, pause and step.
import assert from 'node:assert/strict';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, before, beforeEach, afterEach, test } from 'node:test';
import { LivePage, launch } from './support/browser.mjs';
import { record, serve } from './support/program.mjs';

let browser;
let folder;
let run;
let program;
let live;

before(async () => {
  folder = mkdtempSync(path.join(tmpdir(), 'qv_live_'));
  run = record(folder);
  browser = await launch();
});
after(async () => {
  await browser.close();
  rmSync(folder, { recursive: true });
});
beforeEach(async () => {
  program = await serve(['--replay', run]);
  live = await LivePage.open(browser, program.url);
});
afterEach(async () => {
  await live.close();
  await program.stop();
});

const line = () => live.page.getByRole('slider', { name: 'Time of the recording' });

/** Drags the line from where it stands to a share of it; gives the seconds that it then says. */
async function drag(share) {
  const box = await line().boundingBox();
  const { time, length } = live.state.recording;
  const y = box.y + box.height / 2;
  await live.page.mouse.move(box.x + (box.width * time) / length, y);
  await live.page.mouse.down();
  await live.page.mouse.move(box.x + box.width * share, y, { steps: 5 });
  const said = await live.page.waitForFunction((near) => {
    const seconds = parseFloat(document.getElementById('line-text').textContent);
    return Math.abs(seconds - near) < 1.5 && seconds;
  }, share * length);
  await live.page.mouse.up();
  return said.jsonValue();
}

test('dragging the time line moves the robot to its recorded place', async () => {
  await live.page.getByRole('button', { name: 'Pause' }).click();
  await live.until(({ paused }) => paused);
  const places = [];
  for (const share of [0.4, 0.1, 0.4]) {
    const said = await drag(share);
    const { pose } = await live.until((state) => Math.abs(state.recording.time - said) < 0.15);
    places.push({ said, pose });
  }
  assert.ok(Math.abs(places[0].pose.x - places[1].pose.x) > 0.2, JSON.stringify(places));
  assert.deepEqual(places[0], places[2]);
});

test('a paused recording advances by one snapshot per step', async () => {
  await live.until(({ recording }) => recording.time > 0.5);
  await live.page.getByRole('button', { name: 'Pause' }).click();
  // The first paused state may be on its way with the time of the snapshot before.
  let last;
  const { recording } = await live.until((state) => {
    const isStill = state.paused && state.recording.time === last;
    last = state.paused ? state.recording.time : undefined;
    return isStill;
  });
  const look = Math.floor(10 * recording.time + 0.001);
  for (const steps of [1, 2]) {
    await live.page.getByRole('button', { name: 'Step', exact: true }).click();
    const next = await live.until((state) => state.recording.time > (look + steps) / 10 - 0.001);
    assert.ok(Math.abs(next.recording.time - (look + steps) / 10) < 0.001, `${next.recording.time} s`);
  }
  await live.page.getByRole('button', { name: 'Run' }).click();
  await live.until((state) => state.recording.time > recording.time + 1);
});

test('a recording pauses at its end, and keys move back along the time line', async () => {
  await line().focus();
  await live.page.keyboard.press('End');
  const { recording } = await live.until((state) => state.paused);
  assert.ok(recording.time > recording.length - 0.2);
  await live.page.keyboard.press('Home');
  await live.until((state) => state.recording.time < 0.2);
});
