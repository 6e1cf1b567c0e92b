// The strip of first steps. A step is ticked when it is done. The user may close the strip.

import { byId, setHidden } from './dom.js';

const KEY = 'qv.welcome';

function remember(done) {
  try {
    localStorage.setItem(KEY, done ? 'done' : '');
  } catch {
    // A browser that keeps nothing shows the strip again.
  }
}

function isRemembered() {
  try {
    return localStorage.getItem(KEY) === 'done';
  } catch {
    return false;
  }
}

export class Welcome {
  constructor() {
    byId('welcome-close').addEventListener('click', () => this.#close());
    byId('help').addEventListener('click', () => this.#show(byId('welcome').hidden));
    setHidden(byId('welcome'), isRemembered());
  }

  setWorld({ canDrive }) {
    setHidden(byId('welcome-drive'), !canDrive);
  }

  setState({ sensors, velocity, goal }) {
    if (sensors.some(({ started }) => started)) this.#check('subscribe');
    if (goal || velocity.x !== 0 || velocity.theta !== 0) this.#check('drive');
  }

  hearInspected() {
    this.#check('inspect');
  }

  #check(step) {
    byId(`welcome-${step}`).classList.add('done');
  }

  #show(on) {
    remember(!on);
    setHidden(byId('welcome'), !on);
  }

  // The button disappears, so the focus moves to the help button.
  #close() {
    this.#show(false);
    byId('help').focus();
  }
}
