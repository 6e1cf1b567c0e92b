// The sensors by family. Built once for a set of sensors; after that only what changed is written.

import { colourOfFamily } from './colours.js';
import { byId, make, setText } from './dom.js';
import { SensorRow, SUBSCRIBER } from './sensor_row.js';

function isSubscribed(sensor) {
  return sensor.subscribers.includes(SUBSCRIBER);
}

export class SensorPanel {
  #send;
  #choose;
  #families = [];
  #rows = new Map();
  #counts = new Map();
  #sensors = [];
  #built = '';

  constructor(send, choose) {
    this.#send = send;
    this.#choose = choose;
    byId('subscribe-all').addEventListener('click', () => this.#subscribeAll());
  }

  setFamilies(families) {
    this.#families = families;
  }

  setState(sensors) {
    this.#sensors = sensors;
    const names = sensors.map(({ family, name }) => `${family}/${name}`).join('\n');
    if (names !== this.#built) this.#build(sensors);
    this.#built = names;
    for (const sensor of sensors) this.#rows.get(sensor.name).hear(sensor);
    for (const [family, count] of this.#counts) setText(count, this.#countText(sensors.filter((sensor) => sensor.family === family)));
    setText(byId('sensors-count'), this.#countText(sensors));
    setText(byId('subscribe-all'), sensors.every(isSubscribed) ? 'Unsubscribe from all' : 'Subscribe to all');
  }

  #countText(sensors) {
    return `${sensors.filter(({ started }) => started).length} of ${sensors.length} started`;
  }

  #subscribeAll() {
    const on = !this.#sensors.every(isSubscribed);
    for (const sensor of this.#sensors) {
      if (isSubscribed(sensor) !== on) this.#send({ op: 'subscribe', sensor: sensor.name, on });
    }
  }

  #build(sensors) {
    this.#rows.clear();
    this.#counts.clear();
    const families = new Set([...this.#families, ...sensors.map(({ family }) => family)]);
    const groups = [...families].map((family) => [family, sensors.filter((sensor) => sensor.family === family)]);
    byId('sensor-list').replaceChildren(...groups.filter(([, members]) => members.length > 0).map(([family, members]) => this.#group(family, members)));
  }

  #group(family, sensors) {
    const rows = sensors.map(({ name }) => {
      this.#rows.set(name, new SensorRow(name, this.#send, this.#choose));
      return this.#rows.get(name).element;
    });
    const count = make('span', 'quiet');
    this.#counts.set(family, count);
    const title = make('h3', 'family-title', make('span', 'swatch'), family, count);
    const list = make('ul', '', ...rows);
    list.setAttribute('aria-label', `${family} sensors`);
    const group = make('section', 'family', title, list);
    group.style.setProperty('--family', colourOfFamily(family));
    return group;
  }
}
