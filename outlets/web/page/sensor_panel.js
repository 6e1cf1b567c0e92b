// The sensors by family. Built once for a set of sensors; after that only what changed is written.

import { colourOfFamily, onThemeChange, readable, readTheme } from './colours.js';
import { byId, make, setText } from './dom.js';
import { SensorRow } from './sensor_row.js';

export class SensorPanel {
  #send;
  #choose;
  #families = [];
  #subscriber = '';
  #isNew = false;
  #wanted = new Set();
  #groups = new Map();
  #rows = new Map();
  #counts = new Map();
  #sensors = [];
  #built = '';

  constructor(send, choose) {
    this.#send = send;
    this.#choose = choose;
    byId('subscribe-all').addEventListener('click', () => this.#subscribeAll());
    onThemeChange(() => this.#paint());
  }

  setWorld({ families, subscriber }) {
    this.#families = families;
    this.#subscriber = subscriber;
    this.#isNew = true;
  }

  setState(sensors) {
    this.#sensors = sensors;
    if (this.#isNew) this.#subscribeAgain();
    const names = sensors.map(({ family, name }) => `${family}/${name}`).join('\n');
    if (names !== this.#built) this.#build(sensors);
    this.#built = names;
    for (const sensor of sensors) this.#rows.get(sensor.name).hear(sensor, this.#isSubscribed(sensor));
    for (const [family, count] of this.#counts) setText(count, this.#countText(sensors.filter((sensor) => sensor.family === family)));
    setText(byId('sensors-count'), this.#countText(sensors));
    setText(byId('subscribe-all'), this.#areAllSubscribed() ? 'Unsubscribe from all' : 'Subscribe to all');
  }

  #countText(sensors) {
    return `${sensors.filter(({ started }) => started).length} of ${sensors.length} started`;
  }

  #isSubscribed({ subscribers }) {
    return subscribers.includes(this.#subscriber);
  }

  #areAllSubscribed() {
    return this.#sensors.every((sensor) => this.#isSubscribed(sensor));
  }

  #subscribeAll() {
    const on = !this.#areAllSubscribed();
    for (const sensor of this.#sensors) {
      if (this.#isSubscribed(sensor) !== on) this.#subscribe(sensor.name, on);
    }
  }

  #subscribe(name, on) {
    const sent = this.#send({ op: 'subscribe', sensor: name, on });
    if (sent && on) this.#wanted.add(name);
    if (sent && !on) this.#wanted.delete(name);
    return sent;
  }

  // A subscription does not outlive the connection through which it was made.
  #subscribeAgain() {
    this.#isNew = false;
    const names = this.#sensors.map(({ name }) => name);
    for (const name of names.filter((known) => this.#wanted.has(known))) this.#subscribe(name, true);
  }

  #build(sensors) {
    this.#rows.clear();
    this.#groups.clear();
    this.#counts.clear();
    const families = new Set([...this.#families, ...sensors.map(({ family }) => family)]);
    const groups = [...families].map((family) => [family, sensors.filter((sensor) => sensor.family === family)]);
    byId('sensor-list').replaceChildren(...groups.filter(([, members]) => members.length > 0).map(([family, members]) => this.#group(family, members)));
    this.#paint();
  }

  #paint() {
    const { surface } = readTheme();
    for (const [family, group] of this.#groups) group.style.setProperty('--family', readable(colourOfFamily(family), surface));
  }

  #group(family, sensors) {
    const rows = sensors.map(({ name }) => {
      this.#rows.set(name, new SensorRow(name, (on) => this.#subscribe(name, on), this.#send, this.#choose));
      return this.#rows.get(name).element;
    });
    const count = make('span', 'quiet');
    this.#counts.set(family, count);
    const title = make('h3', 'family-title', make('span', 'swatch'), family, count);
    const list = make('ul', '', ...rows);
    list.setAttribute('aria-label', `${family} sensors`);
    this.#groups.set(family, make('section', 'family', title, list));
    return this.#groups.get(family);
  }
}
