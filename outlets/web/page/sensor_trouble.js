// What is wrong with a sensor, in words, and for how long.

function isFault({ state }) {
  return !['off', 'starting', 'sound'].includes(state);
}

function agoText(seconds) {
  if (seconds < 1) return 'now';
  return seconds < 120 ? `${Math.floor(seconds)} s ago` : `${Math.floor(seconds / 60)} min ago`;
}

/** How bad it is: '' for well, 'warning' for records that are not to be trusted, 'bad' for none. */
export function severityOf({ health }) {
  if (['silent', 'failing'].includes(health.state)) return 'bad';
  return isFault(health) ? 'warning' : '';
}

export function reasonOf({ health }) {
  if (!isFault(health)) return '';
  const since = `for ${Math.max(0, Math.floor(health.since))} s`;
  return health.remedy === '' ? `${health.reason} (${since})` : `${health.reason} (${since}). Back: ${health.remedy}`;
}

// A warning stays for so long where no health tells that it is over.
const SHOWN = 10;

/** The last trouble with its time; '' once it is over. */
export function troubleOf({ trouble, troubleAge, health }) {
  if (trouble === '' || isFault(health)) return '';
  const isOver = health.state === 'sound' && health.since <= troubleAge;
  if (isOver || troubleAge > SHOWN) return '';
  return `${agoText(troubleAge)}: ${trouble}`;
}
