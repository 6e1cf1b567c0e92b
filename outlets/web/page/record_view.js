// The records of the sensor whose row is open.

import { make, setText } from './dom.js';
import { count, fixed } from './format.js';
import { explain } from './tooltip.js';

const SHOWN = 12;
// The width of a number in characters, so that columns align.
const WIDTH = 7;

function numbers(values, digits) {
  return values.map((value) => (value === null ? 'inf/NaN' : fixed(value, digits)).padStart(WIDTH)).join(' ');
}

function rowsOf({ timestamp, fieldOfView, sensorTransform, frame, points, pointCount }) {
  const { minRange, maxRange, angularRange, rayCount } = fieldOfView;
  const rows = [0, 4, 8].map((at) => numbers(sensorTransform.slice(at, at + 4), 3));
  return [
    ['measured', 'timestamp', `${fixed(timestamp / 1e9, 3)} s`],
    ['ranges', 'ranges', `${fixed(minRange, 2)} to ${fixed(maxRange, 2)} m`],
    ['aperture', 'aperture', `${fixed(angularRange, 3)} rad, rayCount ${rayCount}`],
    ['place', `pose in the ${frame === 'map' ? 'map' : 'ground'} frame (R | t in m)`, rows.join('\n')],
    ['points', count(pointCount, 'point'), pointsText(points, pointCount)],
  ];
}

function pointsText(points, pointCount) {
  if (pointCount === 0) return 'no points';
  const lines = points.slice(0, SHOWN).map(({ x, y, z }) => numbers([x, y, z], 3));
  return [...lines, pointCount > lines.length ? `and ${pointCount - lines.length} more` : ''].filter(Boolean).join('\n');
}

function tableOf(record) {
  const entries = rowsOf(record).flatMap(([word, name, text]) => [explain(make('dt', '', name), word), make('dd', '', text)]);
  return make('dl', 'record', ...entries);
}

/** Shows records in `element`; rewrites it only if they have changed. */
export class RecordView {
  #element;
  #shown = '';

  constructor(element) {
    this.#element = element;
  }

  /** `whyNone`: what to say without a record. */
  setRecords(records, whyNone) {
    const text = records.length === 0 ? whyNone : JSON.stringify(records);
    if (text === this.#shown) return;
    this.#shown = text;
    if (records.length === 0) setText(this.#element, whyNone);
    else this.#element.replaceChildren(...records.slice(0, 3).map(tableOf), this.#rest(records.length - 3));
  }

  clear() {
    this.#shown = '';
    setText(this.#element, 'Waiting for its records.');
  }

  #rest(more) {
    return make('p', 'quiet', more > 0 ? `and ${count(more, 'more record', 'more records')}` : '');
  }
}
