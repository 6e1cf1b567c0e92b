// A value owned by the program that the user can change. It shows the user's value for up to 1 s, until the program
// confirms it.

const PATIENCE = 1000;  // ms

export class Held {
  #heard;
  #wanted;
  #until = 0;

  constructor(value) {
    this.#heard = value;
  }

  get value() {
    return performance.now() < this.#until ? this.#wanted : this.#heard;
  }

  hear(value) {
    this.#heard = value;
    if (value === this.#wanted) this.#until = 0;
  }

  want(value) {
    this.#wanted = value;
    this.#until = performance.now() + PATIENCE;
  }
}
