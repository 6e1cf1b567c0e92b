// A stick for touch screens: vertical is speed, horizontal is turning, in proportion to the push.

const FORWARD = 0.5;  // m/s
const TURN = 1.0;     // rad/s
const RENEWAL = 200;  // ms

// Some touch screens are recognised only at the first touch.
function showForFingers() {
  const show = () => document.body.classList.add('touches');
  if (navigator.maxTouchPoints > 0) show();
  addEventListener('touchstart', show, { once: true, passive: true });
}

export class DriveStick {
  #pad;
  #knob;
  #send;
  #command = null;
  #renewal = 0;

  /** `send` takes {forward, turn} in m/s and rad/s. */
  constructor(pad, send) {
    this.#pad = pad;
    this.#knob = pad.firstElementChild;
    this.#send = send;
    showForFingers();
    pad.addEventListener('pointerdown', (event) => this.#begin(event));
    pad.addEventListener('pointermove', (event) => this.#command && this.#push(event));
    for (const event of ['pointerup', 'pointercancel', 'lostpointercapture']) pad.addEventListener(event, () => this.release());
    addEventListener('blur', () => this.release());
  }

  release() {
    if (!this.#command) return;
    clearInterval(this.#renewal);
    this.#command = null;
    this.#show(0, 0);
    this.#send({ forward: 0, turn: 0 });
  }

  #begin(event) {
    event.preventDefault();
    this.#pad.setPointerCapture(event.pointerId);
    this.#push(event);
    clearInterval(this.#renewal);
    this.#renewal = setInterval(() => this.#send(this.#command), RENEWAL);
  }

  #push(event) {
    const box = this.#pad.getBoundingClientRect();
    const radius = box.width / 2;
    const [right, down] = [(event.clientX - box.left) / radius - 1, (event.clientY - box.top) / radius - 1];
    const far = Math.max(1, Math.hypot(right, down));
    const [side, ahead] = [right / far, -down / far];
    this.#show(side * radius * 0.6, -ahead * radius * 0.6);
    this.#command = { forward: FORWARD * ahead, turn: -TURN * side };
    this.#send(this.#command);
  }

  #show(right, down) {
    this.#knob.style.transform = `translate(${right}px, ${down}px)`;
  }
}
