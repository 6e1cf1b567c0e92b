// Arrow keys drive while they are down. The program stops the robot 0.5 s after the last command; held keys renew it.

const RENEWAL = 200;  // ms
const FORWARD = 0.4;  // m/s
const TURN = 0.9;     // rad/s
const KEYS = {
  ArrowUp: { forward: FORWARD, turn: 0 },
  ArrowDown: { forward: -FORWARD, turn: 0 },
  ArrowLeft: { forward: 0, turn: TURN },
  ArrowRight: { forward: 0, turn: -TURN },
};

export class DriveKeys {
  isPossible = false;
  #held = new Set();
  #send;
  #renewal = 0;

  /** `send` takes {forward, turn} in m/s and rad/s. */
  constructor(send) {
    this.#send = send;
    addEventListener('keyup', (event) => this.#release(event.key));
    addEventListener('blur', () => this.releaseAll());
    document.addEventListener('visibilitychange', () => document.hidden && this.releaseAll());
  }

  /** Drives if it is a driving key; returns true then. */
  takeKey(event) {
    if (!this.isPossible || !KEYS[event.key]) return false;
    if (!this.#held.has(event.key)) {
      this.#held.add(event.key);
      this.#renew();
    }
    return true;
  }

  releaseAll() {
    for (const key of [...this.#held]) this.#release(key);
  }

  #release(key) {
    if (this.#held.delete(key)) this.#renew();
  }

  #renew() {
    clearInterval(this.#renewal);
    const command = { forward: 0, turn: 0 };
    for (const key of this.#held) {
      command.forward += KEYS[key].forward;
      command.turn += KEYS[key].turn;
    }
    this.#send(command);
    if (this.#held.size > 0) this.#renewal = setInterval(() => this.#send(command), RENEWAL);
  }
}
