// The sensors by family. Built once per set of sensors; later only changes are written.

import { colourOfFamily, onThemeChange, readable, readTheme } from './colours.js';
import { byId, make, setText } from './dom.js';
import { SensorRow } from './sensor_row.js';
import { severityOf } from './sensor_trouble.js';
import { explain } from './tooltip.js';
import { unbuiltSections } from './unbuilt_sensors.js';

export class SensorPanel {
  #send;
  #choose;
  #hearInspected;
  #inspected = '';
  #faults = {};
  #families = [];
  #subscriber = '';
  #isNew = false;
  #wanted = new Set();
  #groups = new Map();
  #rows = new Map();
  #counts = new Map();
  #sensors = [];
  #built = '';

  /** `choose(name)`: the pointer is on this sensor. `hearInspected(name)`: its records are open. '' for none. */
  constructor(send, choose, hearInspected) {
    this.#send = send;
    this.#choose = choose;
    this.#hearInspected = hearInspected;
    byId('subscribe-all').addEventListener('click', () => this.#subscribeAll());
    onThemeChange(() => this.#paint());
  }

  /** The sensors that this page wants, connected or not. */
  get wanted() {
    return [...this.#wanted];
  }

  setWorld({ families, subscriber, faults }) {
    this.#families = families;
    this.#faults = faults ?? {};
    this.#subscriber = subscriber;
    this.#isNew = true;
  }

  setState({ sensors, unbuilt, faults }) {
    this.#sensors = sensors;
    if (this.#isNew) this.#askAgain();
    const names = [...sensors.map(({ family, name }) => `${family}/${name}`), ...Object.keys(unbuilt)].join('\n');
    if (names !== this.#built) this.#build(sensors, unbuilt);
    this.#built = names;
    for (const sensor of sensors) this.#rows.get(sensor.name).hear(sensor, this.#subscriber, faults);
    for (const [family, count] of this.#counts) setText(count, this.#countText(sensors.filter((sensor) => sensor.family === family)));
    this.#showTotal(sensors, unbuilt);
    setText(byId('subscribe-all'), this.#areAllSubscribed() ? 'Unsubscribe from all' : 'Subscribe to all');
  }

  /** Opens the records of a sensor, or closes them if they are open. */
  inspect(name) {
    if (name === this.#inspected) this.#open('');
    else this.show(name);
  }

  /** Opens the records of a sensor and brings them into view. */
  show(name) {
    this.#open(name);
    this.#rows.get(name)?.element.scrollIntoView({ block: 'nearest' });
  }

  setRecord({ sensor, records }) {
    if (sensor === this.#inspected) this.#rows.get(sensor)?.setRecords(records);
  }

  #open(name) {
    this.#inspected = name;
    this.#send({ op: 'inspect', sensor: name || null });
    for (const [other, row] of this.#rows) row.open(other === name);
    this.#hearInspected(name);
  }

  #showTotal(sensors, unbuilt) {
    const ill = sensors.filter((sensor) => severityOf(sensor) !== '').length + Object.keys(unbuilt).length;
    setText(byId('sensors-count'), this.#countText(sensors));
    setText(byId('sensors-ill'), ill > 0 ? `${ill} not sound` : '');
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

  // Subscribes again after a reconnect: subscriptions end with their connection.
  #askAgain() {
    this.#isNew = false;
    if (this.#inspected) this.#send({ op: 'inspect', sensor: this.#inspected });
    const names = this.#sensors.map(({ name }) => name);
    for (const name of names.filter((known) => this.#wanted.has(known))) this.#subscribe(name, true);
  }

  #build(sensors, unbuilt) {
    this.#rows.clear();
    this.#groups.clear();
    this.#counts.clear();
    const families = new Set([...this.#families, ...sensors.map(({ family }) => family)]);
    const groups = [...families].map((family) => [family, sensors.filter((sensor) => sensor.family === family)]);
    const sections = groups.filter(([, members]) => members.length > 0).map(([family, members]) => this.#group(family, members));
    byId('sensor-list').replaceChildren(...sections, ...unbuiltSections(unbuilt));
    this.#paint();
  }

  #paint() {
    const { surface } = readTheme();
    for (const [family, group] of this.#groups) group.style.setProperty('--family', readable(colourOfFamily(family), surface));
  }

  #row(sensor) {
    const { name } = sensor;
    const row = new SensorRow(sensor, this.#faultsOf(sensor), {
      subscribe: (on) => this.#subscribe(name, on),
      send: this.#send,
      choose: this.#choose,
      inspect: () => this.inspect(name),
    });
    this.#rows.set(name, row);
    row.open(name === this.#inspected);
    return row.element;
  }

  // A bumper has no row; its faults are set in the row of "Touch".
  #faultsOf({ name, means }) {
    const isRow = (other) => this.#sensors.some((sensor) => sensor.name === other);
    const isOurs = (other) => other === name || (means === 'touch' && !isRow(other));
    return Object.fromEntries(Object.entries(this.#faults).filter(([other]) => isOurs(other)));
  }

  #group(family, sensors) {
    const rows = sensors.map((sensor) => this.#row(sensor));
    const count = make('span', 'quiet');
    this.#counts.set(family, count);
    const title = make('h3', 'family-title', make('span', 'swatch'), explain(make('span', '', family), 'family'), explain(count, 'started'));
    const list = make('ul', '', ...rows);
    list.setAttribute('aria-label', `${family} sensors`);
    this.#groups.set(family, make('section', 'family', title, list));
    return this.#groups.get(family);
  }
}
