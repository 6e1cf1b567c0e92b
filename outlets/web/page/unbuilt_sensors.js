// The sensors that could not be built. Nothing about them can change.

import { make } from './dom.js';
import { remedied } from './sensor_trouble.js';

function row([name, health]) {
  const badge = make('span', 'sensor-badge', health.state);
  const heading = make('div', 'sensor-heading', make('strong', '', name), make('span', 'sensor-state', badge));
  const item = make('li', 'sensor', make('span', 'lamp'), heading, make('p', 'sensor-reason', remedied(health.reason, health)));
  item.dataset.severity = 'bad';
  item.dataset.sensor = name;
  return item;
}

/** Returns a section with a row for each, none if there are none. `unbuilt`: their health, by name. */
export function unbuiltSections(unbuilt) {
  const rows = Object.entries(unbuilt).map(row);
  if (rows.length === 0) return [];
  const list = make('ul', '', ...rows);
  list.setAttribute('aria-label', 'Sensors that could not be built');
  return [make('section', 'family', make('h3', 'family-title', 'not built'), list)];
}
