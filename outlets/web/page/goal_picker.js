// Picks a goal: by a drag from the robot, a click, or the arrow keys.

import { setAttribute } from './dom.js';
import { fixed } from './format.js';
import { stepOf } from './keyboard.js';
import { notify } from './notices.js';

function describe({ x, y }) {
  return `Goal at x ${fixed(x, 2)} m, y ${fixed(y, 2)} m`;
}

export class GoalPicker {
  isPossible = false;
  isDragged = false;
  isPicking = false;
  #view;
  #button;
  #send;

  /** `send` takes {x, y} in metres. */
  constructor(view, button, send) {
    this.#view = view;
    this.#button = button;
    this.#send = send;
    button.addEventListener('click', () => this.togglePicking());
  }

  beginDrag() {
    if (!this.isPossible) return;
    this.#showPicking(false, null);
    this.isDragged = true;
  }

  dragTo(goal) {
    this.#view.picked = goal;
  }

  /** A drag that ends on the robot sets no goal. */
  endDrag(isOnRobot) {
    const goal = this.#view.picked;
    this.dropDrag();
    if (goal && !isOnRobot) this.#send(goal);
    else if (!goal) notify('Drag from the robot to the goal.');
  }

  dropDrag() {
    if (!this.isDragged) return;
    this.isDragged = false;
    this.#view.picked = null;
  }

  togglePicking() {
    if (this.isPicking) return this.cancel();
    if (!this.isPossible || !this.#view.state) return;
    const { x, y } = this.#view.state.goal ?? this.#view.state.pose;
    this.#showPicking(true, { x, y });
    document.getElementById('map').focus();
    notify('Click the goal, or move it with the arrow keys (0.1 m; with Shift 1 m) and press Enter. Escape cancels.');
  }

  pick(goal) {
    this.#showPicking(false, null);
    if (this.#send(goal)) notify(describe(goal));
  }

  cancel() {
    this.dropDrag();
    this.#showPicking(false, null);
    notify('');
  }

  /** Handles a key while a goal is picked; returns true if it was used. */
  takeKey(event) {
    if (!this.isPicking) return false;
    const step = stepOf(event);
    if (event.key === 'Enter') this.pick(this.#view.picked);
    else if (step) this.#moveBy(step);
    else return false;
    return true;
  }

  #moveBy([right, up]) {
    const { x, y } = this.#view.picked;
    this.#view.picked = { x: x + right, y: y + up };
    notify(`${describe(this.#view.picked)}. Press Enter to send the robot.`);
  }

  #showPicking(on, goal) {
    this.isPicking = on;
    this.#view.picked = goal;
    setAttribute(this.#button, 'aria-pressed', String(on));
  }
}
