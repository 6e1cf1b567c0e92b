// The tooltip. It explains the word or control under the pointer or with the focus, a word that is tapped, and a control
// that is held.

import { byId, setHidden, setText } from './dom.js';
import { HELP } from './help_texts.js';

const WAIT = 350;
const HOLD = 500;
const GAP = 8;

/** Marks `element` as a word that HELP explains. */
export function explain(element, word) {
  if (element.dataset.help !== word) element.dataset.help = word;
  return element;
}

export class Tooltip {
  #element = byId('tip');
  #waiting = 0;
  #held = null;

  constructor() {
    document.addEventListener('pointerover', (event) => event.pointerType === 'mouse' && this.#await(event.target));
    document.addEventListener('pointerdown', (event) => event.pointerType !== 'mouse' && this.#hold(event.target));
    for (const event of ['pointerup', 'pointercancel']) document.addEventListener(event, () => clearTimeout(this.#waiting));
    document.addEventListener('click', (event) => this.#release(event), { capture: true });
    document.addEventListener('focusin', (event) => this.#focus(event.target));
    document.addEventListener('click', (event) => this.#tap(event));
    for (const event of ['focusout', 'keydown', 'wheel']) document.addEventListener(event, () => this.#leave(), { passive: true });
    document.addEventListener('scroll', () => this.#leave(), { capture: true, passive: true });
  }

  #await(target) {
    this.#leave();
    const word = target.closest?.('[data-help]');
    if (word) this.#waiting = setTimeout(() => this.#show(word), WAIT);
  }

  #focus(target) {
    const word = target.closest('[data-help]');
    if (word && target.matches(':focus-visible')) this.#show(word);
  }

  #hold(target) {
    this.#leave();
    this.#held = null;
    const word = target.closest('[data-help]');
    if (!word) return;
    this.#waiting = setTimeout(() => {
      this.#held = word;
      this.#show(word);
    }, HOLD);
  }

  // Whoever holds a control wants to know what it does, and not to operate it.
  #release(event) {
    if (!this.#held?.contains(event.target)) return;
    this.#held = null;
    event.preventDefault();
    event.stopPropagation();
  }

  // A tap on a word shows the tooltip, also where the word is a control's label. A tap on a control operates it.
  #tap(event) {
    const { target, pointerType } = event;
    const word = target.closest?.('[data-help]');
    if (!word || pointerType === 'mouse' || target.closest('button, select, input') || target.matches('.sensor-switch')) return this.#leave();
    if (target.closest('label')) event.preventDefault();
    this.#show(word);
  }

  #leave() {
    clearTimeout(this.#waiting);
    setHidden(this.#element, true);
  }

  #show(word) {
    if (!HELP[word.dataset.help]) return;
    setText(this.#element, HELP[word.dataset.help]);
    setHidden(this.#element, false);
    const at = word.getBoundingClientRect();
    const { width, height } = this.#element.getBoundingClientRect();
    const below = at.bottom + GAP + height < innerHeight;
    const left = Math.min(Math.max(at.left + at.width / 2 - width / 2, GAP), innerWidth - width - GAP);
    this.#element.style.left = `${left}px`;
    this.#element.style.top = `${below ? at.bottom + GAP : Math.max(GAP, at.top - height - GAP)}px`;
  }
}
