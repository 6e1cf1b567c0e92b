// Controls of time: clock, pause, step, speed; for a recording also the time line.

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

  // During a drag the program's position is ignored.
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

  // The text has a fixed width, so that the time line does not move during a drag.
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

  // Adds a speed to the list, because another page may have chosen one that it lacks.
  #offer(speed) {
    const options = [...byId('speed').options];
    if (options.some((option) => option.value === String(speed))) return;
    const next = options.find((option) => Number(option.value) > speed) ?? null;
    byId('speed').insertBefore(new Option(`${speed}×`, speed), next);
  }
}
