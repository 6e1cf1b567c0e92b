// The readout of the pointer on the map: place, distance to the robot, object.

import { byId, setHidden, setText } from './dom.js';
import { fixed } from './format.js';

const REACH = 9;

export class MapReadout {
  #view;
  #pointer = null;

  constructor(canvas, view) {
    this.#view = view;
    canvas.addEventListener('pointermove', (event) => this.#move([event.offsetX, event.offsetY]));
    canvas.addEventListener('pointerdown', (event) => this.#move([event.offsetX, event.offsetY]));
    canvas.addEventListener('pointerleave', () => this.#move(null));
  }

  /** Writes the readout anew, because the map may have moved under the pointer. */
  refresh() {
    setHidden(byId('cursor'), !this.#pointer);
    if (!this.#pointer) return;
    const { x, y } = this.#view.viewport.toMap(...this.#pointer);
    const parts = [`x ${fixed(x, 2)} m  y ${fixed(y, 2)} m`];
    const { state } = this.#view;
    if (state) parts.push(`${fixed(Math.hypot(x - state.pose.x, y - state.pose.y), 2)} m from the robot`);
    const what = this.#describe(...this.#pointer);
    if (what) parts.push(what);
    setText(byId('cursor'), parts.join(' · '));
  }

  #move(pointer) {
    this.#pointer = pointer;
    this.refresh();
  }

  #describe(left, top) {
    const { state, viewport } = this.#view;
    if (!state) return '';
    const isAt = ([x, y], reach = REACH) => Math.hypot(...differences(viewport.toCanvas(x, y), [left, top])) <= reach;
    if (state.touches.some(({ x, y }) => isAt([x, y], 12))) return 'touched here';
    if (state.people.some((place) => isAt(place, Math.max(REACH, 0.22 * viewport.scale)))) return 'a person';
    const hit = this.#view.findPoint(left, top, REACH);
    if (hit) return `${hit.sensor}: click for its record`;
    if (state.goal && isAt([state.goal.x, state.goal.y], 12)) return 'the goal';
    return this.#view.isOnRobot(left, top, 0) ? 'the robot' : '';
  }
}

function differences([left, top], [otherLeft, otherTop]) {
  return [left - otherLeft, top - otherTop];
}
