// Keyboard shortcuts. A focused control keeps the keys that it uses itself.

const PAN = { ArrowUp: [0, 60], ArrowDown: [0, -60], ArrowLeft: [60, 0], ArrowRight: [-60, 0] };
const DIRECTIONS = { ArrowUp: [0, 1], ArrowDown: [0, -1], ArrowLeft: [-1, 0], ArrowRight: [1, 0] };
const STEP = 0.1;
const LONG_STEP = 1.0;
const OWN_ARROWS = 'select, input:not([type=checkbox]), textarea, [role=log]';

/** How far an arrow key moves a place on the map, [right, up] in metres; null for other keys. */
export function stepOf({ key, shiftKey }) {
  return DIRECTIONS[key]?.map((share) => share * (shiftKey ? LONG_STEP : STEP)) ?? null;
}

/** `goal`, `tape` and `drive` take keys, `view` is the map's. `onKey` maps other keys to functions; Escape works everywhere. */
export function listenToKeys({ goal, tape, drive, view, onKey }) {
  addEventListener('keydown', (event) => {
    if (event.key === 'Escape') return onKey.Escape();
    if (event.ctrlKey || event.metaKey || event.altKey || event.target.matches?.(OWN_ARROWS)) return;
    if (handle(event)) event.preventDefault();
  });

  function handle(event) {
    const isOnMap = event.target === document.body || event.target.id === 'map';
    if (isOnMap && (goal.takeKey(event) || tape.takeKey(event))) return true;
    if (event.shiftKey && PAN[event.key]) {
      view.panBy(...PAN[event.key]);
      return true;
    }
    if (drive.takeKey(event)) return true;
    if (onKey[event.key] === undefined || (event.key === ' ' && !isOnMap)) return false;
    onKey[event.key]();
    return true;
  }
}
