// Makes a sensor of a virtual robot fail, and work again.

import { make, setHidden } from './dom.js';
import { FAULTS } from './help_texts.js';
import { Held } from './held.js';
import { explain } from './tooltip.js';

export class FaultMenu {
  element;
  #select = make('select', 'fault-choice');
  #held = new Held('');

  /** `kinds`: the possible faults. `send` takes a kind, or null for none, and returns true if it was sent. */
  constructor(name, kinds, send) {
    this.#select.setAttribute('aria-label', `Fault of ${name}`);
    this.#select.append(new Option('no fault', ''), ...kinds.map((kind) => new Option(`${kind}: ${FAULTS[kind] ?? 'fails'}`, kind)));
    this.#select.addEventListener('change', () => {
      if (send(this.#select.value || null)) this.#held.want(this.#select.value);
      this.#show();
    });
    this.element = explain(make('label', 'fault', make('span', '', 'Make this sensor fail'), this.#select), 'fault');
    setHidden(this.element, kinds.length === 0);
  }

  /** `fault` is its kind, '' for none. */
  hear(fault) {
    this.#held.hear(fault);
    this.#show();
  }

  #show() {
    if (this.#select.value !== this.#held.value) this.#select.value = this.#held.value;
  }
}
