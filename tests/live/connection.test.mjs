// A program that goes away and comes back.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { LivePage, launch } from './support/browser.mjs';
import { PORTER, serve } from './support/program.mjs';

test('a lost connection is shown, and healed without a click', async (context) => {
  const browser = await launch();
  context.after(() => browser.close());
  const first = await serve(PORTER);
  const live = await LivePage.open(browser, first.url);
  const lost = live.page.getByRole('alert');
  await live.page.getByText('Live', { exact: true }).waitFor();

  await first.stop('SIGINT');
  await lost.getByText('The program does not answer.').waitFor();
  await live.switchOf('FrontLaser', 'Subscribe').click();
  await live.page.getByText('Not connected: that was not sent.').waitFor();
  assert.equal(await live.switchOf('FrontLaser', 'Subscribe').isChecked(), false);

  const second = await serve(PORTER, first.port);
  await lost.waitFor({ state: 'hidden' });
  await live.page.getByText('Live', { exact: true }).waitFor();
  await live.switchOf('FrontLaser', 'Subscribe').click();
  await live.untilSensor('FrontLaser', ({ started }) => started);

  // The browser itself complains of attempts that met nobody.
  live.complaints = live.complaints.filter((text) => !text.startsWith('WebSocket connection to'));
  await live.close();
  await second.stop('SIGTERM');
});
