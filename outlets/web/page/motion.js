// Interpolates the robot and people between two state messages.

const LONGEST = 0.25;     // s: a state that is so late is no longer waited for
const FARTHEST = 0.5;     // m: a larger move is a jump, and is not interpolated
const LONGEST_GAP = 1.0;  // s of the world's time for each of its speed

function between(from, to, share) {
  return from + (to - from) * share;
}

function turnBetween(from, to, share) {
  return from + Math.atan2(Math.sin(to - from), Math.cos(to - from)) * share;
}

function isNear([x, y], [otherX, otherY], speed) {
  return Math.hypot(x - otherX, y - otherY) < FARTHEST * Math.max(1, speed);
}

export class Motion {
  #before = null;
  #last = null;
  #arrived = 0;
  #period = 0.1;

  /** `now` in milliseconds of the page. */
  hear(state, now) {
    this.#before = this.#last && this.#isNext(state) ? this.look(now) : null;
    const passed = (now - this.#arrived) / 1000;
    if (this.#last && passed < LONGEST) this.#period = between(this.#period, passed, 0.2);
    this.#last = state;
    this.#arrived = now;
  }

  /** {pose, people} as of `now`. */
  look(now) {
    const { pose, people } = this.#last;
    const share = this.#share(now);
    if (share >= 1) return { pose, people };
    const { pose: old, people: oldPeople } = this.#before;
    return {
      pose: { x: between(old.x, pose.x, share), y: between(old.y, pose.y, share), theta: turnBetween(old.theta, pose.theta, share) },
      people: people.map(([x, y], index) => {
        const from = oldPeople[index];
        return from && isNear(from, [x, y], this.#last.speed) ? [between(from[0], x, share), between(from[1], y, share)] : [x, y];
      }),
    };
  }

  /** Returns true while the interpolation runs. */
  isUnderWay(now) {
    return this.#share(now) < 1;
  }

  #share(now) {
    return this.#before ? Math.min((now - this.#arrived) / 1000 / this.#period, 1) : 1;
  }

  #isNext({ time, speed, pose, people }) {
    const gap = (time - this.#last.time) / 1e9;
    if (gap <= 0 || gap > LONGEST_GAP * Math.max(1, speed)) return false;
    const old = this.#last;
    const hasMoved = pose.x !== old.pose.x || pose.y !== old.pose.y || pose.theta !== old.pose.theta || String(people) !== String(old.people);
    return hasMoved && isNear([pose.x, pose.y], [old.pose.x, old.pose.y], speed);
  }
}
