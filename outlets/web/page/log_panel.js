// The log from a chosen level up. It scrolls to the newest line unless the user has scrolled up.

import { byId, make, setText } from './dom.js';
import { clockText, count } from './format.js';

const LEVELS = ['verbose', 'info', 'warning', 'error', 'fatal'];
const KEPT = 500;
const NEAR_END = 24;

export class LogPanel {
  #log = byId('log');
  #follows = true;

  constructor() {
    this.#log.addEventListener('scroll', () => (this.#follows = this.#isAtEnd()));
    new ResizeObserver(() => this.#follow()).observe(this.#log);
    byId('log-level').addEventListener('change', () => this.#filter());
    this.#filter();
  }

  clear() {
    this.#log.replaceChildren();
    this.#count();
  }

  add(lines) {
    this.#log.append(...lines.map(lineOf));
    while (this.#log.childElementCount > KEPT) this.#log.firstElementChild.remove();
    this.#count();
    this.#follow();
  }

  #filter() {
    this.#log.dataset.least = byId('log-level').value;
    this.#count();
    this.#follow();
  }

  #follow() {
    if (this.#follows) this.#log.scrollTop = this.#log.scrollHeight;
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
