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

test('a program that falls silent is lost after five seconds', async (context) => {
  const browser = await launch();
  const program = await serve(PORTER);
  context.after(async () => {
    await browser.close();
    await program.stop();
  });
  const page = await browser.newPage();
  await page.clock.install();
  let isSilent = false;
  await page.routeWebSocket(/./, (socket) => {
    const server = socket.connectToServer();
    server.onMessage((message) => isSilent || socket.send(message));
  });
  await page.goto(program.url);
  await page.getByText('Live', { exact: true }).waitFor();
  isSilent = true;
  await page.clock.runFor(4000);
  assert.ok(await page.getByText('Live', { exact: true }).isVisible());
  await page.clock.runFor(1500);
  await page.getByRole('alert').getByText('The program does not answer.').waitFor();
  isSilent = false;
  await page.clock.runFor(1000);
  await page.getByText('Live', { exact: true }).waitFor();
});

test('who opens the port to others is warned', async () => {
  const program = await serve(['--kind', '1', '--address', '0.0.0.0']);
  assert.match(program.complaints(), /warning: whoever reaches 0\.0\.0\.0 can watch and drive this robot/);
  await program.stop();
  const alone = await serve(['--kind', '1']);
  assert.equal(alone.complaints(), '');
  await alone.stop();
});
