// Shows the state of the connection and the time to the next attempt.

import { byId, setAttribute, setHidden, setText } from './dom.js';

const TEXTS = { connecting: 'Connecting', live: 'Live', lost: 'Connection lost' };

export class ConnectionView {
  #countdown = 0;

  constructor(connection) {
    connection.addEventListener('open', () => this.#show('connecting'));
    connection.addEventListener('message', () => this.#show('live'));
    connection.addEventListener('lost', (event) => this.#showLost(event.detail));
    byId('retry').addEventListener('click', () => connection.retryNow());
  }

  #show(state) {
    clearInterval(this.#countdown);
    setAttribute(byId('connection'), 'data-state', state);
    setText(byId('connection'), TEXTS[state]);
    if (state === 'live') this.#retire();
  }

  // The button disappears, so the focus moves to the map.
  #retire() {
    if (byId('lost').contains(document.activeElement)) byId('map').focus();
    setHidden(byId('lost'), true);
    document.body.classList.remove('offline');
  }

  #showLost(wait) {
    this.#show('lost');
    document.body.classList.add('offline');
    setText(byId('lost-text'), 'The program does not answer. The page shows the last state and reconnects.');
    setHidden(byId('lost'), false);
    const due = Date.now() + wait;
    const count = () => {
      const left = Math.ceil((due - Date.now()) / 1000);
      setText(byId('retry'), left > 0 ? `Try now (${left} s)` : 'Trying');
    };
    count();
    this.#countdown = setInterval(count, 1000);
  }
}
