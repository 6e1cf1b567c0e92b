// Simulated time: what it is, pause, one step, speed; of a recording, a line to drag along.

import { byId, setAttribute, setText } from './dom.js';
import { clockText } from './format.js';
import { Held } from './held.js';

const SPEEDS = [0.1, 0.25, 0.5, 1, 2, 5, 10];

export class TimeControls {
  #send;
  #paused = new Held(false);
  #speed = new Held(1);
  #dragging = false;

  constructor(send) {
    this.#send = send;
    for (const speed of SPEEDS) this.#offer(speed);
    byId('pause').addEventListener('click', () => this.togglePause());
    byId('step').addEventListener('click', () => this.step());
    byId('speed').addEventListener('change', () => this.#chooseSpeed());
    const place = byId('line-place');
    place.addEventListener('input', () => this.#drag());
    place.addEventListener('change', () => this.#drop());
    this.#show();
  }

  setState({ time, paused, speed, recording }) {
    this.#showLine(recording);
    setText(byId('clock'), clockText(time));
    this.#paused.hear(paused);
    this.#speed.hear(speed);
    this.#show();
  }

  togglePause() {
    const on = !this.#paused.value;
    if (this.#send({ op: 'pause', on })) this.#paused.want(on);
    this.#show();
  }

  step() {
    if (this.#paused.value) this.#send({ op: 'step' });
  }

  // What is heard meanwhile is not where the user wants to go.
  #drag() {
    this.#dragging = true;
    this.#tellPlace(Number(byId('line-place').value), Number(byId('line-place').max));
  }

  #drop() {
    this.#dragging = false;
    this.#send({ op: 'seek', time: Number(byId('line-place').value) });
  }

  #showLine(recording) {
    byId('line').hidden = !recording;
    if (!recording || this.#dragging) return;
    byId('line-place').max = String(recording.length);
    byId('line-place').value = String(recording.time);
    this.#tellPlace(recording.time, recording.length);
  }

  // As wide at each time: the line stays where it is under the hand that drags it.
  #tellPlace(time, length) {
    const end = length.toFixed(1);
    setText(byId('line-text'), `${time.toFixed(1).padStart(end.length, '\u2007')} of ${end} s`);
  }

  #chooseSpeed() {
    const value = Number(byId('speed').value);
    if (this.#send({ op: 'speed', value })) this.#speed.want(value);
    this.#show();
  }

  #show() {
    const paused = this.#paused.value;
    setText(byId('pause'), paused ? 'Run' : 'Pause');
    setAttribute(byId('pause'), 'aria-pressed', String(paused));
    setAttribute(byId('step'), 'aria-disabled', String(!paused));
    byId('clock').classList.toggle('paused', paused);
    this.#offer(this.#speed.value);
    if (byId('speed').value !== String(this.#speed.value)) byId('speed').value = String(this.#speed.value);
  }

  // Somebody else may have chosen a speed that the list lacks.
  #offer(speed) {
    const options = [...byId('speed').options];
    if (options.some((option) => option.value === String(speed))) return;
    const next = options.find((option) => Number(option.value) > speed) ?? null;
    byId('speed').insertBefore(new Option(`${speed}×`, speed), next);
  }
}
