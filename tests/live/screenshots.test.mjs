// Pictures of the page for people to look at, in out/live.
import { after, before, test } from 'node:test';
import { LivePage, launch } from './support/browser.mjs';
import { untilPixels } from './support/canvas.mjs';
import { PORTER, inRoot, serve } from './support/program.mjs';

const SONAR = [213, 94, 0];
let browser;
let program;

before(async () => {
  browser = await launch();
  program = await serve([...PORTER, '--people', '4', '--pose', '8.6,6.1,0']);
});
after(async () => {
  await browser.close();
  await program.stop();
});

for (const colorScheme of ['light', 'dark']) {
  for (const [width, height] of [[1400, 900], [1024, 768], [400, 860]]) {
    test(`${colorScheme}, ${width} pixels`, async () => {
      const live = await LivePage.open(browser, program.url, { colorScheme, viewport: { width, height } });
      const all = live.page.getByRole('button', { name: 'Subscribe to all' });
      if (await all.isVisible()) await all.click();
      await live.until(({ sensors }) => sensors.every(({ started }) => started));
      await live.page.locator('#depth').waitFor();
      await live.page.locator('#map').focus();
      await live.page.keyboard.press('g');
      for (let metres = 0; metres < 3; ++metres) await live.page.keyboard.press(`Shift+Arrow${colorScheme === 'light' ? 'Right' : 'Left'}`);
      await live.page.keyboard.press('Enter');
      await live.until(({ velocity }) => velocity.x > 0.3);
      await untilPixels(live, SONAR, (count) => count > 0);
      await live.page.screenshot({ path: inRoot(`out/live/${colorScheme}-${width}.png`), fullPage: width === 400 });
      await live.close();
    });
  }
}
