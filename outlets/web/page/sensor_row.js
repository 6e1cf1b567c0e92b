// One sensor: what it does, who listens, its switches.

import { make, setAttribute, setHidden, setText } from './dom.js';
import { withUnit } from './format.js';
import { SensorSwitch } from './sensor_switch.js';

function standing({ started, enabled, diagnosis, subscribers }) {
  const listeners = subscribers.length > 0 ? subscribers.join(', ') : 'no subscriber';
  if (started) return `started · ${listeners}`;
  if (!enabled) return `disabled · ${listeners}`;
  if (diagnosis === false) return `diagnosis bad · ${listeners}`;
  return `stopped · ${listeners}`;
}

function isFault({ state }) {
  return !['off', 'starting', 'sound'].includes(state);
}

function withRemedy({ reason, remedy }) {
  return remedy === '' ? reason : `${reason}. Back: ${remedy}`;
}

export class SensorRow {
  element;
  #standing = make('span', 'sensor-standing');
  #rate = make('dd');
  #age = make('dd');
  #nearest = make('dd');
  #badge = make('span', 'sensor-badge');
  #reason = make('p', 'sensor-reason');
  #trouble = make('p', 'sensor-trouble');
  #switches;

  /** `subscribe` takes on or off, `send` any other command; `choose` is told the name while the pointer or the focus is here, and '' after. */
  constructor(name, subscribe, send, choose) {
    this.#switches = {
      subscribed: new SensorSwitch('Subscribe', `Subscribe to ${name}`, subscribe),
      enabled: new SensorSwitch('Enable', `Enable ${name}`, (on) => send({ op: 'enable', sensor: name, on })),
      diagnosis: new SensorSwitch('Diagnosis', `Diagnosis of ${name} good`, (value) => send({ op: 'diagnose', sensor: name, value })),
    };
    this.element = make('li', 'sensor', make('span', 'lamp'), this.#heading(name),
      ...Object.values(this.#switches).map(({ element }) => element), this.#figures(), this.#reason, this.#trouble);
    this.element.dataset.sensor = name;
    for (const event of ['pointerenter', 'focusin']) this.element.addEventListener(event, () => choose(name));
    for (const event of ['pointerleave', 'focusout']) this.element.addEventListener(event, () => choose(''));
  }

  /** `isSubscribed`: by this page. */
  hear(sensor, isSubscribed) {
    this.element.classList.toggle('started', sensor.started);
    setText(this.#standing, standing(sensor));
    setText(this.#rate, withUnit(sensor.started ? sensor.rate : null, 1, 'Hz'));
    setText(this.#age, withUnit(sensor.age, 1, 's'));
    setText(this.#nearest, withUnit(sensor.nearest, 2, 'm'));
    this.#hearHealth(sensor.health);
    setText(this.#trouble, sensor.trouble);
    setHidden(this.#trouble, sensor.trouble === '' || isFault(sensor.health));
    this.#switches.subscribed.hear(isSubscribed);
    this.#switches.enabled.hear(sensor.enabled);
    this.#switches.diagnosis.hear(sensor.diagnosis);
  }

  // What needs nobody's attention is said in the badge alone.
  #hearHealth(health) {
    setText(this.#badge, health.state);
    setAttribute(this.#badge, 'data-state', health.state);
    setAttribute(this.#badge, 'title', health.reason);
    setText(this.#reason, isFault(health) ? withRemedy(health) : '');
    setHidden(this.#reason, !isFault(health));
  }

  #heading(name) {
    const title = make('span', 'sensor-name', name);
    title.title = name;
    return make('div', 'sensor-heading', make('span', 'sensor-title', title, this.#badge), this.#standing);
  }

  #figures() {
    const figure = (title, value) => make('div', '', make('dt', '', title), value);
    return make('dl', 'sensor-figures', figure('rate', this.#rate), figure('age', this.#age), figure('nearest', this.#nearest));
  }
}
