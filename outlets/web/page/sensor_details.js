// The part that opens below a sensor's row: its fault menu and its records.

import { make } from './dom.js';
import { FaultMenu } from './fault_menu.js';
import { RecordView } from './record_view.js';
import { explain } from './tooltip.js';

export class SensorDetails {
  element = make('div', 'sensor-details');
  #records;
  #faults;

  /** `faults`: the possible fault kinds, by sensor name; `send` takes commands. */
  constructor(means, faults, send) {
    const record = make('div', 'records');
    this.#records = new RecordView(record);
    this.#faults = Object.entries(faults).map(([name, kinds]) => [name, new FaultMenu(name, kinds, (kind) => send({ op: 'fault', sensor: name, kind }))]);
    const title = explain(make('p', 'quiet', 'Its last records. Points are in metres: x forward, y left, z up.'), means);
    this.element.append(...this.#faults.map(([name, menu]) => this.#named(name, menu)), title, record);
    this.element.hidden = true;
  }

  open(on) {
    if (on && this.element.hidden) this.#records.clear();
    this.element.hidden = !on;
  }

  /** `whyNone`: what to say without a record. */
  setRecords(records, whyNone) {
    this.#records.setRecords(records, whyNone);
  }

  /** `faults`: the fault kinds in force, by sensor name. */
  hearFaults(faults) {
    for (const [name, menu] of this.#faults) menu.hear(faults[name] ?? '');
  }

  // A row may stand for several parts, as for all bumpers.
  #named(name, menu) {
    if (this.#faults.length > 1) menu.element.prepend(make('span', 'quiet', name));
    return menu.element;
  }
}
