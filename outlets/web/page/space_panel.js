// The 3D view, which replaces the map, and its button.

import { byId, setAttribute, setHidden } from './dom.js';
import { SpaceView } from './space_view.js';

export class SpacePanel {
  #view = new SpaceView(byId('space'));
  #ask;
  #onTurn;
  isOn = false;

  /** `ask(on)` turns the stream of 3D points on or off; `onTurn` is called when the view comes or goes. */
  constructor(ask, onTurn) {
    this.#ask = ask;
    this.#onTurn = onTurn;
    byId('space-switch').addEventListener('click', () => this.#turn(!this.isOn));
  }

  setWorld(world) {
    this.#view.setWorld(world);
    if (this.isOn) this.#ask(true);
  }

  setState({ pose }) {
    if (this.isOn) this.#view.setPose(pose);
  }

  setSpace(message) {
    this.#view.setSpace(message);
  }

  zoomBy(factor) {
    this.#view.zoomBy(factor);
  }

  reset() {
    this.#view.reset();
  }

  #turn(on) {
    this.isOn = on;
    this.#ask(on);
    setAttribute(byId('space-switch'), 'aria-pressed', String(on));
    setHidden(byId('space'), !on);
    document.body.classList.toggle('in-space', on);
    this.#onTurn(on);
    this.#view.draw();
  }
}
