// The points of the last seconds of simulated time, so that the map shows them fade.

const LENGTH = 2.0;
const INTERVAL = 0.2;
const SAME = 0.002;  // ages are rounded

export class PointTrail {
  #sets = new Map();

  clear() {
    this.#sets.clear();
  }

  /** `time` in seconds. A new set replaces the last one unless the last is at least an interval newer than its predecessor. */
  add(sensors, time) {
    for (const sensor of sensors) {
      const sets = this.#sets.get(sensor.name) ?? [];
      this.#sets.set(sensor.name, sets);
      const measured = time - (sensor.age ?? 0);
      if (sets.length > 1 && sets.at(-1).time - sets.at(-2).time < INTERVAL) sets.pop();
      // An empty set counts as well.
      if (!(Math.abs(sets.at(-1)?.time - measured) < SAME)) sets.push({ time: measured, points: sensor.points });
      while (sets.length > 0 && (sets[0].time < time - LENGTH || sets[0].time > time)) sets.shift();
    }
  }

  /** Oldest first: {points, strength}, the strength falling from 1 to 0 with age. */
  of(name, time) {
    return (this.#sets.get(name) ?? []).map(({ time: measured, points }) => ({
      points,
      strength: Math.max(0, 1 - (time - measured) / LENGTH),
    }));
  }
}
