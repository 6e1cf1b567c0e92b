// The page for everybody: by keyboard alone, legible, on a narrow screen.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { LivePage, launch } from './support/browser.mjs';
import { PORTER, serve } from './support/program.mjs';

let browser;
let program;
let live;

before(async () => {
  browser = await launch();
  program = await serve([...PORTER, '--pose', '3,6.3,0']);
});
after(async () => {
  await browser.close();
  await program.stop();
});
beforeEach(async () => (live = await LivePage.open(browser, program.url)));
afterEach(() => live.close());

function describeFocus() {
  const element = document.activeElement;
  if (element === document.body) return null;
  const label = element.getAttribute('aria-label') ?? document.getElementById(element.getAttribute('aria-labelledby'))?.textContent ??
    element.labels?.[0]?.textContent ?? element.textContent;
  return { tag: element.tagName, label: label.trim(), outline: getComputedStyle(element).outlineStyle };
}

test('the Tab key goes once through every control, each named and marked', async () => {
  const controls = await live.page.locator('button:visible, select:visible, input:visible, [tabindex="0"]:visible').count();
  const visited = [];
  for (let presses = 0; presses <= controls; ++presses) {
    await live.page.keyboard.press('Tab');
    const focus = await live.page.evaluate(describeFocus);
    if (focus === null) break;
    visited.push(focus);
  }
  assert.equal(visited.length, controls);
  assert.deepEqual(visited.filter(({ label, outline }) => label === '' || outline === 'none'), []);
});

test('a switch works with the space bar and keeps its focus while the figures change', async () => {
  const subscribe = live.switchOf('FrontLaser', 'Subscribe');
  await subscribe.focus();
  await live.page.keyboard.press('Space');
  await live.untilSensor('FrontLaser', ({ started }) => started);
  for (let states = 0; states < 5; ++states) await live.until(() => true);
  assert.ok(await subscribe.evaluate((element) => element === document.activeElement));
  await live.page.keyboard.press('Space');
  await live.untilSensor('FrontLaser', ({ started }) => !started);
});

test('a goal is set, and dropped, without a pointer', async () => {
  await live.page.locator('#map').focus();
  await live.page.keyboard.press('g');
  for (let metres = 0; metres < 2; ++metres) await live.page.keyboard.press('Shift+ArrowRight');
  await live.page.keyboard.press('Enter');
  const { goal } = await live.until((state) => state.goal !== null);
  assert.equal(Math.round(goal.x), 5);
  await live.page.keyboard.press('Escape');
  await live.until((state) => state.goal === null);
});

test('arrow keys in a list choose there and do not drive', async () => {
  await live.page.locator('#log-level').focus();
  const { pose } = await live.until(() => true);
  await live.page.keyboard.down('ArrowDown');
  for (let states = 0; states < 5; ++states) {
    assert.deepEqual((await live.until(() => true)).pose, pose);
  }
  await live.page.keyboard.up('ArrowDown');
  assert.equal(await live.page.locator('#log-level').inputValue(), 'warning');
});

function findContrasts([inks, grounds]) {
  const luminance = (colour) => {
    const [red, green, blue] = [1, 3, 5].map((at) => parseInt(colour.slice(at, at + 2), 16) / 255)
      .map((part) => (part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4));
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
  };
  const style = getComputedStyle(document.documentElement);
  const of = (name) => luminance(style.getPropertyValue(`--${name}`).trim());
  return inks.flatMap((ink) => grounds.map((ground) => {
    const [low, high] = [of(ink), of(ground)].sort((a, b) => a - b);
    return { ink, ground, ratio: (high + 0.05) / (low + 0.05) };
  }));
}

for (const colorScheme of ['light', 'dark']) {
  test(`text and marks stand out in the ${colorScheme} theme`, async () => {
    await live.page.emulateMedia({ colorScheme });
    const texts = [[['ink', 'muted', 'accent', 'good', 'warn', 'bad'], ['surface', 'raised']], [['on-accent'], ['accent']]];
    const marks = [[['control', 'person', 'occupied'], ['free']], [['control'], ['surface', 'raised']]];
    for (const [pairs, least] of [[texts, 4.5], [marks, 3]]) {
      for (const pair of pairs) {
        const faint = (await live.page.evaluate(findContrasts, pair)).filter(({ ratio }) => !(ratio >= least));
        assert.deepEqual(faint, []);
      }
    }
  });
}

function findCut() {
  const isCut = (element) => {
    const { right } = element.getBoundingClientRect();
    return right > 0.5 + Math.min(innerWidth, element.closest('main > section')?.getBoundingClientRect().right ?? innerWidth);
  };
  return [...document.querySelectorAll('button, select, input, dd, h2, img, .sensor, .log-line')].filter(isCut).map((element) => element.outerHTML);
}

test('nothing is cut off on screens from a phone\u2019s to a desk\u2019s', async () => {
  for (const width of [360, 400, 1000, 1001, 1024, 1150, 1251]) {
    await live.page.setViewportSize({ width, height: 860 });
    assert.deepEqual(await live.page.evaluate(findCut), [], `${width} pixels`);
    assert.equal(await live.page.evaluate(() => document.documentElement.scrollWidth), width);
  }
});

// The words and controls without an explanation. The title and what is written in sentences need none.
async function findUnexplained() {
  const { HELP } = await import('/help_texts.js');
  const needsNone = 'h1, p, .welcome li, .record dd, [role=log], [role=alert] span, option, script, noscript, .tip';
  const words = [...document.querySelectorAll('body *')].filter((element) => {
    const hasText = [...element.childNodes].some((node) => node.nodeType === Node.TEXT_NODE && node.data.trim() !== '');
    return element.matches('button, input, select') || (hasText && !element.closest(needsNone));
  });
  return words.filter((word) => !HELP[word.closest('[data-help]')?.dataset.help]).map((word) => word.outerHTML);
}

test('each word and each control has an explanation, and the first steps are ticked when done', async () => {
  const tip = live.page.getByRole('tooltip');
  await live.page.locator('.sensor-columns').getByText('nearest').hover();
  await tip.getByText(/^The distance from the sensor to the nearest obstacle/).waitFor();
  await live.page.keyboard.press('Escape');
  await tip.waitFor({ state: 'hidden' });

  const steps = live.page.locator('.welcome li.done');
  assert.equal(await steps.count(), 0);
  await live.switchOf('FrontLaser', 'Subscribe').click();
  await steps.getByText('Subscribe').waitFor();
  await live.row('FrontLaser').getByRole('button', { name: 'FrontLaser' }).click();
  await live.row('FrontLaser').locator('.record').waitFor();
  assert.deepEqual(await live.page.evaluate(findUnexplained), []);
  await live.page.getByRole('button', { name: 'Got it' }).click();
  await live.page.reload();
  await live.page.getByRole('button', { name: 'First steps' }).click();
  await live.page.getByText('Hover over a word').waitFor();
});

/** Holds a finger on `control` until `tip` shows. */
async function hold(page, control, tip) {
  const { x, y, width, height } = await control.boundingBox();
  const touches = await page.context().newCDPSession(page);
  await touches.send('Input.dispatchTouchEvent', { type: 'touchStart', touchPoints: [{ x: x + width / 2, y: y + height / 2 }] });
  await tip.waitFor();
  await touches.send('Input.dispatchTouchEvent', { type: 'touchEnd', touchPoints: [] });
}

test('on a touch screen a tap on a word explains it, and a control is explained when held but works when tapped', async () => {
  const touch = await LivePage.open(browser, program.url, { hasTouch: true, viewport: { width: 400, height: 860 } });
  const tip = touch.page.getByRole('tooltip');
  for (const [word, text] of [['Subscribe', /^Subscribes this page/], ['Enable', /^A disabled sensor/], ['Diagnosis', /^The verdict/]]) {
    await touch.row('FrontLaser').locator('.switch-label').getByText(word).tap();
    await tip.getByText(text).waitFor();
  }
  await touch.switchOf('FrontLaser', 'Subscribe').tap();
  await hold(touch.page, touch.switchOf('FrontLaser', 'Enable'), tip.getByText(/^A disabled sensor/));
  await hold(touch.page, touch.page.getByRole('button', { name: 'Pause' }), tip.getByText(/^Stops the session/));
  const { enabled, diagnosis } = await touch.untilSensor('FrontLaser', ({ started }) => started);
  assert.deepEqual([enabled, diagnosis], [true, true]);
  await touch.page.getByRole('button', { name: 'Pause' }).tap();
  await touch.until(({ paused }) => paused);
  await touch.page.getByRole('button', { name: 'Run' }).tap();
  await touch.close();
});
