// A tape measure: shows the distance from the start of a drag to its present place.

import { setAttribute } from './dom.js';
import { degreesText, fixed } from './format.js';
import { notify } from './notices.js';

export class Tape {
  isOut = false;
  #view;
  #button;

  constructor(view, button) {
    this.#view = view;
    this.#button = button;
    button.addEventListener('click', () => this.toggle());
  }

  toggle() {
    this.isOut = !this.isOut;
    this.#view.tape = null;
    setAttribute(this.#button, 'aria-pressed', String(this.isOut));
    notify(this.isOut ? 'Drag on the map to measure. Press m to stop.' : '');
  }

  putAway() {
    if (this.isOut) this.toggle();
  }

  begin(place) {
    this.#view.tape = { from: place, to: place };
  }

  dragTo(place) {
    this.#view.tape = { from: this.#view.tape.from, to: place };
  }

  end() {
    notify(tapeText(this.#view.tape), 'info', 60);
  }
}

/** "1.23 m at 45°: 0.87 m in x, 0.87 m in y". The angle counts from the map's x axis, counter-clockwise. */
export function tapeText({ from, to }) {
  const [right, up] = [to.x - from.x, to.y - from.y];
  return `${fixed(Math.hypot(right, up), 2)} m at ${degreesText(Math.atan2(up, right))}: ${fixed(right, 2)} m in x, ${fixed(up, 2)} m in y`;
}
