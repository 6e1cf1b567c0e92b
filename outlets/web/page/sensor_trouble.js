// Texts on a sensor's bad health and its last error.

function isFault({ state }) {
  return !['off', 'starting', 'sound'].includes(state);
}

function agoText(seconds) {
  if (seconds < 1) return 'now';
  return seconds < 120 ? `${Math.floor(seconds)} s ago` : `${Math.floor(seconds / 60)} min ago`;
}

/** Returns '' for a sound sensor, 'warning' if its records are doubtful, 'bad' if it gives none. */
export function severityOf({ health }) {
  if (['silent', 'failing'].includes(health.state)) return 'bad';
  return isFault(health) ? 'warning' : '';
}

/** Returns the text, and how to mend what it says. */
export function remedied(text, { remedy }) {
  return remedy === '' ? text : `${text.replace(/\.$/, '')}. To fix: ${remedy}`;
}

export function reasonOf({ health }) {
  if (!isFault(health)) return '';
  const since = `for ${Math.max(0, Math.floor(health.since))} s`;
  const times = health.times > 1 ? `, ${health.times} times so far` : '';
  return remedied(`${health.reason} (${since}${times})`, health);
}

// Seconds for which a last error stays if health does not tell that it is over.
const SHOWN = 10;

/** Returns the last error with its age; '' once the sensor is sound again. */
export function troubleOf({ trouble, troubleAge, health }) {
  if (trouble === '' || isFault(health)) return '';
  const isOver = health.state === 'sound' && health.since <= troubleAge;
  if (isOver || troubleAge > SHOWN) return '';
  return `${agoText(troubleAge)}: ${trouble}`;
}
