// A tape measure: shows the distance from the start of a drag to its present place, or from the robot to a place that arrow
// keys move.

import { setAttribute } from './dom.js';
import { degreesText, fixed } from './format.js';
import { stepOf } from './keyboard.js';
import { notify } from './notices.js';

const HELP = 'Drag on the map to measure, or move the end with the arrow keys (Shift: by 1 m); Enter starts again from that end. Press m to stop.';
// Seconds that a length stays to be read.
const SHOWN = 60;

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
    if (this.isOut) document.getElementById('map').focus();
    notify(this.isOut ? HELP : '', 'info', SHOWN);
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
    notify(tapeText(this.#view.tape), 'info', SHOWN);
  }

  /** Whether the key was meant for the tape. */
  takeKey(event) {
    const step = stepOf(event);
    if (!this.isOut || !this.#view.state || !(step || event.key === 'Enter')) return false;
    const { x, y } = this.#view.state.pose;
    const { from, to } = this.#view.tape ?? { from: { x, y }, to: { x, y } };
    if (step) this.#view.tape = { from, to: { x: to.x + step[0], y: to.y + step[1] } };
    else this.begin(to);
    this.end();
    return true;
  }
}

/** "1.23 m at 45°: 0.87 m in x, 0.87 m in y". The angle counts from the map's x axis, counter-clockwise. */
export function tapeText({ from, to }) {
  const [right, up] = [to.x - from.x, to.y - from.y];
  return `${fixed(Math.hypot(right, up), 2)} m at ${degreesText(Math.atan2(up, right))}: ${fixed(right, 2)} m in x, ${fixed(up, 2)} m in y`;
}
