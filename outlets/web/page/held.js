// A value that the program owns and a person changes: shown as wanted at once, and as the program says as soon as it
// agrees or a second has gone by.

const PATIENCE = 1000;

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
