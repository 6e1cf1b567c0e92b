// Debian's Chromium, and a page of it that remembers what the program told it and what it complained of.
import assert from 'node:assert/strict';
import { chromium } from 'playwright-core';

const FLAGS = ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
  '--disable-component-update', '--disable-sync'];

export function launch() {
  return chromium.launch({ executablePath: process.env.QV_CHROMIUM ?? '/usr/bin/chromium', args: FLAGS });
}

export class LivePage {
  complaints = [];
  state = null;
  #waiting = new Set();

  /** `prepare` is given the page before it is opened. */
  static async open(browser, url, { prepare, ...options } = {}) {
    const live = new LivePage();
    live.page = await browser.newPage({ viewport: { width: 1400, height: 900 }, ...options });
    live.page.setDefaultTimeout(15000);
    live.page.on('console', (message) => message.type() === 'error' && live.complaints.push(message.text()));
    live.page.on('pageerror', (error) => live.complaints.push(error.message));
    live.page.on('websocket', (socket) => socket.on('framereceived', ({ payload }) => live.#hear(JSON.parse(payload))));
    await prepare?.(live.page);
    await live.page.goto(url);
    await live.page.locator('.sensor').first().waitFor();
    return live;
  }

  /** The first state from now on that `accepts` likes. */
  async until(accepts) {
    return new Promise((resolve, reject) => {
      const waiting = (state) => {
        if (!accepts(state)) return;
        this.#waiting.delete(waiting);
        clearTimeout(patience);
        resolve(state);
      };
      const patience = setTimeout(() => {
        this.#waiting.delete(waiting);
        reject(new Error(`no state in 20 s for which ${accepts}; the last is ${JSON.stringify(this.state).slice(0, 2000)}`));
      }, 20000);
      this.#waiting.add(waiting);
    });
  }

  /** The same, of one sensor. */
  async untilSensor(name, accepts) {
    const find = (state) => state.sensors.find((sensor) => sensor.name === name);
    return find(await this.until((state) => accepts(find(state))));
  }

  row(sensor) {
    return this.page.locator(`.sensor[data-sensor="${sensor}"]`);
  }

  switchOf(sensor, label) {
    return this.row(sensor).getByRole('switch', { name: new RegExp(`^${label}`) });
  }

  async close() {
    await this.page.close();
    assert.deepEqual(this.complaints, []);
  }

  #hear(message) {
    if (message.op !== 'state') return;
    this.state = message;
    for (const waiting of [...this.#waiting]) waiting(message);
  }
}
