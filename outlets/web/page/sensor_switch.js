// A switch of a sensor. It shows the program's value and sends a command on a click.

import { make } from './dom.js';
import { Held } from './held.js';
import { explain } from './tooltip.js';

export class SensorSwitch {
  element;
  #box;
  #held = new Held(false);

  /** `label`: the visible text; `name`: the full name for screen readers; `send(value)` returns true if it was sent. */
  constructor(label, name, send) {
    this.#box = make('input', 'switch');
    this.#box.type = 'checkbox';
    this.#box.setAttribute('role', 'switch');
    this.#box.setAttribute('aria-label', name);
    this.#box.addEventListener('change', () => {
      if (send(this.#box.checked)) this.#held.want(this.#box.checked);
      this.#show();
    });
    this.element = explain(make('label', 'sensor-switch', make('span', 'switch-label', label), this.#box), label.toLowerCase());
  }

  /** `value` is true, false, or null where the program does not know. */
  hear(value) {
    this.#held.hear(value);
    this.#show();
  }

  #show() {
    const value = this.#held.value;
    if (this.#box.checked !== (value === true)) this.#box.checked = value === true;
    if (this.#box.indeterminate !== (value === null)) this.#box.indeterminate = value === null;
  }
}
