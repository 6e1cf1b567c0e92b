// The log from a chosen level up. It scrolls to the newest line unless the user has scrolled up. A fault repeats its
// warnings and errors many times a second: those that differ only in figures stand in one line, with their number.

import { byId, make, setText } from './dom.js';
import { clockText, count } from './format.js';

const LEVELS = ['verbose', 'info', 'warning', 'error', 'fatal'];
const KEPT = 500;
const NEAR_END = 24;
const MAY_REPEAT = ['warning', 'error'];
// Not the digits of a name: Laser1, scan_2, sonar-3.
const FIGURE = /(?<![\w./]|\w-)\d+(\.\d+)?/g;
const TOGETHER = 5e9;  // ns between two lines

export class LogPanel {
  #log = byId('log');
  #follows = true;
  #top = 0;
  #repeated = new Map();

  constructor() {
    this.#log.addEventListener('scroll', () => this.#hearScroll());
    new ResizeObserver(() => this.#follow()).observe(this.#log);
    byId('log-level').addEventListener('change', () => this.#filter());
    this.#filter();
  }

  clear() {
    this.#log.replaceChildren();
    this.#repeated.clear();
    this.#count();
  }

  add(lines) {
    for (const line of lines) this.#addLine(line);
    while (this.#log.childElementCount > KEPT) this.#log.firstElementChild.remove();
    while (this.#repeated.size > KEPT) this.#repeated.delete(this.#repeated.keys().next().value);
    this.#count();
    this.#follow();
  }

  #addLine(line) {
    const element = lineOf(line);
    if (MAY_REPEAT.includes(line.level)) {
      const sort = [line.level, line.category, line.method, line.message.replace(FIGURE, '#')].join(' ');
      const earlier = this.#repeated.get(sort);
      const isNear = earlier?.element.isConnected && Math.abs(line.time - earlier.time) < TOGETHER;
      const times = isNear ? earlier.times + 1 : 1;
      if (isNear) earlier.element.remove();
      if (times > 1) element.lastChild.prepend(make('span', 'log-times', `${times} times `));
      this.#repeated.delete(sort);
      this.#repeated.set(sort, { element, times, time: line.time });
    }
    this.#log.append(element);
  }

  #filter() {
    this.#log.dataset.least = byId('log-level').value;
    this.#count();
    this.#follow();
  }

  #follow() {
    if (!this.#follows) return;
    this.#log.scrollTop = this.#log.scrollHeight;
    this.#top = this.#log.scrollTop;
  }

  // The end also moves away when lines wrap in a narrower panel: only who scrolls up wants to stay.
  #hearScroll() {
    const { scrollTop } = this.#log;
    if (scrollTop < this.#top || this.#isAtEnd()) this.#follows = this.#isAtEnd();
    this.#top = scrollTop;
  }

  #count() {
    const least = LEVELS.indexOf(byId('log-level').value);
    const shown = [...this.#log.children].filter((line) => LEVELS.indexOf(line.dataset.level) >= least).length;
    this.#log.classList.toggle('nothing', shown === 0);
    setText(byId('log-count'), `${shown} of ${count(this.#log.childElementCount, 'line')}`);
  }

  #isAtEnd() {
    return this.#log.scrollHeight - this.#log.scrollTop - this.#log.clientHeight < NEAR_END;
  }
}

function lineOf({ time, level, category, method, message }) {
  const source = make('span', 'log-source', [category.replace(/^Navigation\./, ''), method].filter(Boolean).join(' '));
  const text = make('span', 'log-text', source, ' ', message);
  const line = make('div', 'log-line', make('span', 'log-time', clockText(time, 2)), make('span', 'log-level', level), text);
  line.dataset.level = level;
  return line;
}
