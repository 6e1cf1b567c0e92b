// The WebSocket to the program: connects again by itself, after 0.5 s, 1 s, 2 s, ... 8 s.

const FIRST_WAIT = 500;     // ms
const LONGEST_WAIT = 8000;  // ms
const SILENCE = 5000;       // ms

/** Sends events "open", "message" (detail: the message), and "lost" (detail: milliseconds to the next attempt). */
export class Connection extends EventTarget {
  #url;
  #socket = null;
  #wait = FIRST_WAIT;
  #retry = 0;
  #silence = 0;

  constructor(url) {
    super();
    this.#url = url;
    addEventListener('online', () => this.retryNow());
    document.addEventListener('visibilitychange', () => document.hidden || this.retryNow());
  }

  get isOpen() {
    return this.#socket?.readyState === WebSocket.OPEN;
  }

  connect() {
    clearTimeout(this.#retry);
    this.#retry = 0;
    const socket = new WebSocket(this.#url, 'qv.live.v1');
    this.#socket = socket;
    this.#listenToSilence();
    // Messages of a socket that was given up are ignored.
    socket.onopen = () => socket === this.#socket && this.dispatchEvent(new Event('open'));
    socket.onmessage = (event) => socket === this.#socket && this.#receive(event.data);
    socket.onclose = () => socket === this.#socket && this.#lose();
  }

  /** Connects at once instead of waiting for the next attempt. */
  retryNow() {
    if (this.#retry) this.connect();
  }

  /** Sends `command`; returns true if it was sent. */
  send(command) {
    if (this.isOpen) this.#socket.send(JSON.stringify(command));
    return this.isOpen;
  }

  #receive(text) {
    this.#wait = FIRST_WAIT;
    this.#listenToSilence();
    this.dispatchEvent(new CustomEvent('message', { detail: JSON.parse(text) }));
  }

  // Silence counts as a lost connection: after sleep or a pulled cable no close event comes.
  #listenToSilence() {
    clearTimeout(this.#silence);
    this.#silence = setTimeout(() => this.#lose(), SILENCE);
  }

  #lose() {
    clearTimeout(this.#silence);
    const socket = this.#socket;
    this.#socket = null;
    socket?.close();
    const wait = this.#wait * (0.8 + 0.4 * Math.random());
    this.#wait = Math.min(this.#wait * 2, LONGEST_WAIT);
    this.#retry = setTimeout(() => this.connect(), wait);
    this.dispatchEvent(new CustomEvent('lost', { detail: wait }));
  }
}
