// A message below the map about the user's last action. It replaces the map's help and disappears after some seconds.

import { byId, setText } from './dom.js';

const SHOWN = 6;
let leaving = 0;

/** `seconds`: how long it stays. */
export function notify(text, level = 'info', seconds = SHOWN) {
  const notice = byId('notice');
  notice.dataset.level = level;
  setText(notice, text);
  clearTimeout(leaving);
  leaving = setTimeout(() => setText(notice, ''), seconds * 1000);
}

/** Shows the program's refusal as a sentence. */
export function notifyRefusal(message) {
  const text = message.charAt(0).toUpperCase() + message.slice(1);
  notify(/[.!?]$/.test(text) ? text : `${text}.`, 'warning', 10);
}
