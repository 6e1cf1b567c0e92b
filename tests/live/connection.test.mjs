// Access to the program, and a program that goes away and comes back.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { LivePage, launch } from './support/browser.mjs';
import { PORTER, serve } from './support/program.mjs';
import { Relay } from './support/relay.mjs';

test('a lost connection is shown, and restored without a click', async (context) => {
  const browser = await launch();
  context.after(() => browser.close());
  const first = await serve(PORTER);
  const live = await LivePage.open(browser, first.url);
  const lost = live.page.locator('#lost');
  await live.page.getByText('Live', { exact: true }).waitFor();

  await live.switchOf('LeftLaser', 'Subscribe').click();
  await live.untilSensor('LeftLaser', ({ started }) => started);

  await first.stop('SIGINT');
  await lost.getByText('The program does not answer.').waitFor();
  await live.switchOf('FrontLaser', 'Subscribe').click();
  await live.page.getByText('Not connected: the command was not sent.').waitFor();
  assert.equal(await live.switchOf('FrontLaser', 'Subscribe').isChecked(), false);

  const second = await serve(PORTER, first.port);
  await lost.waitFor({ state: 'hidden' });
  await live.page.getByText('Live', { exact: true }).waitFor();
  await live.untilSensor('LeftLaser', ({ started }) => started);
  const restarted = live.page.getByRole('alert').getByText('The program was restarted');
  assert.match(await restarted.innerText(), /All earlier subscriptions, .* are gone\. This page has subscribed to LeftLaser again\.$/);
  await live.page.getByRole('button', { name: 'Close' }).click();
  await restarted.waitFor({ state: 'hidden' });
  await live.switchOf('FrontLaser', 'Subscribe').click();
  await live.untilSensor('FrontLaser', ({ started }) => started);

  // The browser itself complains of attempts that met nobody.
  live.complaints = live.complaints.filter((text) => !text.startsWith('WebSocket connection to'));
  await live.close();
  await second.stop('SIGTERM');
});

test('five seconds of silence count as a lost connection until the next message', async (context) => {
  const browser = await launch();
  context.after(() => browser.close());
  const program = await serve(PORTER);
  const relay = new Relay();
  const live = await LivePage.open(browser, program.url, {
    prepare: async (page) => {
      await page.clock.install();
      await relay.prepare(page);
    },
  });
  const lost = live.page.getByRole('alert').getByText('The program does not answer.');
  await live.page.getByText('Live', { exact: true }).waitFor();

  await live.page.clock.pauseAt(1000 + (await live.page.evaluate(() => Date.now())));
  relay.passes = false;
  relay.tell(relay.last.state);
  await live.page.clock.fastForward(4990);
  assert.equal(await lost.isVisible(), false);
  await live.page.clock.fastForward(10);
  await lost.waitFor();
  assert.match(await live.page.locator('#retry').innerText(), /^Try now \(1 s\)$/);

  relay.passes = true;
  await live.page.clock.fastForward(1000);
  await lost.waitFor({ state: 'hidden' });
  await live.page.getByText('Live', { exact: true }).waitFor();
  await live.close();
  await program.stop();
});

test('a server open to other machines prints a warning', async () => {
  const porter = [...PORTER, '--pose', '3,6.3,0'];
  const alone = await serve(porter);
  assert.equal(await alone.stop(), '');
  const open = await serve([...porter, '--address', '0.0.0.0']);
  assert.equal((await fetch(`http://127.0.0.1:${open.port}/`)).status, 200);
  assert.match(await open.stop(), /^qvsensors: warning: every machine that can connect to port \d+ can watch and drive this robot\n$/);
});
