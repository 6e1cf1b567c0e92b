// A sensor's row: state, subscribers and switches. A click opens its records.

import { make, setAttribute, setHidden, setText } from './dom.js';
import { withUnit } from './format.js';
import { SensorDetails } from './sensor_details.js';
import { SensorSwitch } from './sensor_switch.js';
import { reasonOf, severityOf, troubleOf } from './sensor_trouble.js';
import { explain } from './tooltip.js';

const NEAREST_HELP = { floor: 'nearest-floor', touch: 'nearest-touch' };

function standing({ started, enabled, diagnosis, subscribers }, own) {
  const users = subscribers.map((name) => (name === own ? 'you' : name)).join(', ') || 'no subscriber';
  if (started) return `started · ${users}`;
  if (!enabled) return `disabled · ${users}`;
  if (diagnosis === false) return `bad diagnosis · ${users}`;
  return subscribers.length > 0 ? `stopped · ${users}` : users;
}

function whyNoRecord({ started, health }) {
  if (!started) return 'No record: the sensor is not started.';
  const reason = health.reason || 'no record yet';
  return `${reason[0].toUpperCase()}${reason.slice(1)}.`;
}

export class SensorRow {
  element;
  #name = make('button', 'sensor-name');
  #standing = explain(make('span', 'sensor-standing'), 'standing');
  #rate = make('dd');
  #age = make('dd');
  #nearest = make('dd');
  #badge = make('span', 'sensor-badge');
  #reason = make('p', 'sensor-reason');
  #trouble = make('p', 'sensor-trouble');
  #failed = make('p', 'sensor-failed');
  #switches;
  #details;
  #faultNames;
  #whyNone = '';

  /**
   * - `faults`: the possible fault kinds, by sensor name.
   * - `subscribe(on)` subscribes or unsubscribes, `send(command)` sends any other command.
   * - `choose(name)` is called when the pointer or the focus comes, with '' when it leaves.
   * - `inspect(name)` is called when the row is clicked.
   */
  constructor({ name, means }, faults, { subscribe, send, choose, inspect }) {
    this.#switches = {
      subscribed: new SensorSwitch('Subscribe', `Subscribe to ${name}`, subscribe),
      enabled: new SensorSwitch('Enable', `Enable ${name}`, (on) => send({ op: 'enable', sensor: name, on })),
      diagnosis: new SensorSwitch('Diagnosis', `Diagnosis of ${name}: good`, (value) => send({ op: 'diagnose', sensor: name, value })),
    };
    this.#faultNames = Object.keys(faults);
    this.#details = new SensorDetails(means, faults, send);
    this.element = make('li', 'sensor', make('span', 'lamp'), this.#heading(name, means),
      ...Object.values(this.#switches).map(({ element }) => element), this.#figures(means), this.#reason, this.#trouble,
      this.#fault(send), this.#details.element);
    this.element.dataset.sensor = name;
    for (const event of ['pointerenter', 'focusin']) this.element.addEventListener(event, () => choose(name));
    for (const event of ['pointerleave', 'focusout']) this.element.addEventListener(event, () => choose(''));
    this.element.addEventListener('click', ({ target }) => {
      const isOwn = target.closest('label, select, .sensor-details, .sensor-failed');
      if (!isOwn && getSelection().isCollapsed) inspect(name);
    });
  }

  /** `own`: the name under which this page subscribes. `faults`: the fault kinds in force, by sensor name. */
  hear(sensor, own, faults) {
    this.element.classList.toggle('started', sensor.started);
    setAttribute(this.element, 'data-severity', severityOf(sensor));
    setText(this.#standing, standing(sensor, own));
    this.#whyNone = whyNoRecord(sensor);
    setText(this.#rate, withUnit(sensor.started ? sensor.rate : null, 1, 'Hz'));
    setText(this.#age, withUnit(sensor.age, 1, 's'));
    setText(this.#nearest, withUnit(sensor.nearest, 2, 'm'));
    this.#hearHealth(sensor);
    this.#hearFaults(faults);
    this.#switches.subscribed.hear(sensor.subscribers.includes(own));
    this.#switches.enabled.hear(sensor.enabled);
    this.#switches.diagnosis.hear(sensor.diagnosis);
  }

  open(on) {
    this.#details.open(on);
    setAttribute(this.#name, 'aria-expanded', String(on));
  }

  setRecords(records) {
    this.#details.setRecords(records, this.#whyNone);
  }

  // The reason is shown only if the user must act; the badge always shows the state.
  #hearHealth(sensor) {
    const { state, reason } = sensor.health;
    setText(this.#badge, state);
    explain(this.#badge, state);
    setAttribute(this.#badge, 'data-state', state);
    setAttribute(this.#badge, 'aria-description', reason);
    this.#showLine(this.#reason, reasonOf(sensor));
    this.#showLine(this.#trouble, troubleOf(sensor));
  }

  #hearFaults(faults) {
    const failing = this.#faultNames.filter((name) => faults[name]).map((name) => `${name} has the fault "${faults[name]}".`);
    setText(this.#failed.firstChild, failing.join(' '));
    setHidden(this.#failed, failing.length === 0);
    this.#details.hearFaults(faults);
  }

  #showLine(line, text) {
    setText(line, text);
    setHidden(line, text === '');
  }

  #fault(send) {
    const end = explain(make('button', 'sensor-mend', 'End the fault'), 'mend');
    end.type = 'button';
    end.addEventListener('click', () => this.#faultNames.forEach((name) => send({ op: 'fault', sensor: name, kind: null })));
    this.#failed.append(make('span'), ' ', end);
    return this.#failed;
  }

  #heading(name, means) {
    this.#name.type = 'button';
    this.#name.textContent = name;
    explain(this.#name, means);
    setAttribute(this.#name, 'aria-expanded', 'false');
    return make('div', 'sensor-heading', this.#name, make('span', 'sensor-state', this.#badge, this.#standing));
  }

  #figures(means) {
    const figure = (title, value, help = title) => explain(make('div', '', make('dt', '', title), explain(value, help)), help);
    return make('dl', 'sensor-figures', figure('rate', this.#rate), figure('age', this.#age),
      figure('nearest', this.#nearest, NEAREST_HELP[means]));
  }
}
