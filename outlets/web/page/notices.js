// A line over the map about something that the person did; it leaves by itself.

import { byId, setText } from './dom.js';

const SHOWN = 6000;
let leaving = 0;

export function notify(text, level = 'info') {
  const notice = byId('notice');
  notice.dataset.level = level;
  setText(notice, text);
  clearTimeout(leaving);
  leaving = setTimeout(() => setText(notice, ''), SHOWN);
}
