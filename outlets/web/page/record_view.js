// The records of the sensor that is looked at, as it gave them.

import { make, setText } from './dom.js';
import { count, fixed } from './format.js';
import { explain } from './tooltip.js';

const SHOWN = 12;
// Characters of a number: columns stand below each other.
const WIDTH = 7;

function numbers(values, digits) {
  return values.map((value) => (value === null ? 'none' : fixed(value, digits)).padStart(WIDTH)).join(' ');
}

function rowsOf({ timestamp, fieldOfView, sensorTransform, frame, points, pointCount }) {
  const { minRange, maxRange, angularRange, rayCount } = fieldOfView;
  const rows = [0, 4, 8].map((at) => numbers(sensorTransform.slice(at, at + 4), 3));
  return [
    ['measured', 'measured at', `${fixed(timestamp / 1e9, 3)} s`],
    ['ranges', 'ranges', `${fixed(minRange, 2)} to ${fixed(maxRange, 2)} m`],
    ['aperture', 'aperture', `${fixed(angularRange, 3)} rad, ${count(rayCount, 'ray')}`],
    ['place', `sensor in ${frame === 'map' ? 'the map' : 'the robot’s ground frame'}`, rows.join('\n')],
    ['points', count(pointCount, 'point'), pointsText(points, pointCount)],
  ];
}

function pointsText(points, pointCount) {
  if (pointCount === 0) return 'none: it met nothing';
  const lines = points.slice(0, SHOWN).map(({ x, y, z }) => numbers([x, y, z], 3));
  return [...lines, pointCount > lines.length ? `and ${pointCount - lines.length} more` : ''].filter(Boolean).join('\n');
}

function tableOf(record) {
  const entries = rowsOf(record).flatMap(([word, name, text]) => [explain(make('dt', '', name), word), make('dd', '', text)]);
  return make('dl', 'record', ...entries);
}

/** Shows them in `element`: written anew only where they differ. */
export class RecordView {
  #element;
  #shown = '';

  constructor(element) {
    this.#element = element;
  }

  setRecords(records) {
    const text = JSON.stringify(records);
    if (text === this.#shown) return;
    this.#shown = text;
    if (records.length === 0) setText(this.#element, 'No record now. Records come while somebody has subscribed, and the sensor is enabled and sound.');
    else this.#element.replaceChildren(...records.slice(0, 3).map(tableOf), this.#rest(records.length - 3));
  }

  clear() {
    this.#shown = '';
    setText(this.#element, 'Waiting for its record.');
  }

  #rest(more) {
    return make('p', 'quiet', more > 0 ? `and ${count(more, 'more record', 'more records')}` : '');
  }
}
