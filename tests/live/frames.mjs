// How smoothly the page moves: pictures a second of an empty page, and of the live view while the robot drives with every sensor on.
//   node frames.mjs [seconds]
import { LivePage, launch } from './support/browser.mjs';
import { PORTER, serve } from './support/program.mjs';

const seconds = Number(process.argv[2] ?? 5);

/** Counts the pictures in `seconds`, those in which the robot stands elsewhere than in the one before, and the longest time between two. */
function count(page) {
  return page.evaluate((seconds) => new Promise((resolve) => {
    const paint = CanvasRenderingContext2D.prototype;
    const { translate, rotate } = paint;
    let place = [];
    paint.translate = function (...to) {
      if (this.canvas.id === 'map') place = to;
      return translate.apply(this, to);
    };
    paint.rotate = function (angle) {
      if (this.canvas.id === 'map') place = [...place.slice(0, 2), angle];
      return rotate.call(this, angle);
    };
    let [pictures, moved, longest, before] = [0, 0, 0, ''];
    const start = performance.now();
    let last = start;
    requestAnimationFrame(function tick(now) {
      ++pictures;
      if (String(place) !== before) ++moved;
      before = String(place);
      longest = Math.max(longest, now - last);
      last = now;
      if (now - start < seconds * 1000) return requestAnimationFrame(tick);
      Object.assign(paint, { translate, rotate });
      const passed = (now - start) / 1000;
      resolve({ pictures: pictures / passed, moved: moved / passed, longest });
    });
  }), seconds);
}

function tell(what, { pictures, moved, longest }) {
  console.log(`${what}: ${pictures.toFixed(1)} pictures a second, at most ${longest.toFixed(1)} ms apart; in ${moved.toFixed(1)} the robot has moved`);
}

const browser = await launch();
const empty = await browser.newPage();
tell('empty page', await count(empty));
const program = await serve([...PORTER, '--people', '3', '--pose', '8.6,6.1,0']);
for (const [width, height] of [[1400, 900], [1024, 768], [400, 860]]) {
  const live = await LivePage.open(browser, program.url, { viewport: { width, height } });
  const all = live.page.getByRole('button', { name: 'Subscribe to all' });
  if (await all.isVisible()) await all.click();
  await live.until(({ sensors }) => sensors.every(({ started }) => started));
  await live.page.locator('#map').focus();
  for (const key of ['ArrowLeft', 'ArrowUp']) await live.page.keyboard.down(key);
  await live.until(({ velocity }) => velocity.theta > 0.2);
  tell(`${width} pixels wide, driving`, await count(live.page));
  for (const key of ['ArrowUp', 'ArrowLeft']) await live.page.keyboard.up(key);
  await live.close();
}
await browser.close();
await program.stop();
