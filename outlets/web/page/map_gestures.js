// Mouse, pen and fingers on the map:
// - a drag from the robot sets a goal, any other drag moves the map or, with the tape out, measures;
// - wheel and two fingers zoom;
// - a click asks what is there.

const REACH = { mouse: 12, pen: 16, touch: 26 };
const WHEEL_STEP = 0.0015;
const LINE = 16;
// A touch pad reports a pinch as Ctrl and small wheel steps.
const PAD_GAIN = 6;
const CLICK = 5;

export class MapGestures {
  #canvas;
  #view;
  #goal;
  #tape;
  #onClick;
  #pointers = new Map();
  #from = null;

  /** `goal` is the GoalPicker, `tape` the Tape; `onClick` is told [left, top] of a click that is for neither. */
  constructor(canvas, view, { goal, tape, onClick }) {
    this.#canvas = canvas;
    this.#view = view;
    this.#goal = goal;
    this.#tape = tape;
    this.#onClick = onClick;
    canvas.addEventListener('pointerdown', (event) => this.#begin(event));
    canvas.addEventListener('pointermove', (event) => this.#move(event));
    canvas.addEventListener('pointerup', (event) => this.#end(event));
    canvas.addEventListener('pointercancel', (event) => this.#abandon(event));
    canvas.addEventListener('wheel', (event) => this.#wheel(event), { passive: false });
  }

  #begin(event) {
    if (event.button !== 0) return;
    const point = [event.offsetX, event.offsetY];
    this.#pointers.set(event.pointerId, point);
    this.#canvas.setPointerCapture(event.pointerId);
    // Two fingers are no click.
    this.#from = this.#pointers.size > 1 ? null : point;
    if (this.#pointers.size > 1) this.#goal.dropDrag();
    else if (this.#tape.isOut) this.#tape.begin(this.#view.viewport.toMap(...point));
    else if (this.#isOnRobot(event)) this.#goal.beginDrag();
  }

  #move(event) {
    const before = this.#pointers.get(event.pointerId);
    if (!before) return this.#showWhatADragDoes(event);
    const point = [event.offsetX, event.offsetY];
    if (this.#goal.isDragged) this.#goal.dragTo(this.#view.viewport.toMap(...point));
    else if (this.#tape.isOut && this.#from) this.#tape.dragTo(this.#view.viewport.toMap(...point));
    else if (this.#pointers.size === 2) this.#pinch(event.pointerId, before, point);
    else this.#view.panBy(point[0] - before[0], point[1] - before[1]);
    this.#pointers.set(event.pointerId, point);
  }

  #end(event) {
    if (!this.#pointers.delete(event.pointerId)) return;
    const point = [event.offsetX, event.offsetY];
    if (this.#goal.isDragged) this.#goal.endDrag(this.#isOnRobot(event));
    else if (this.#tape.isOut && this.#from) this.#tape.end();
    else if (this.#isClick(point)) this.#click(point);
  }

  #isClick([left, top]) {
    return this.#from && Math.hypot(left - this.#from[0], top - this.#from[1]) < CLICK;
  }

  #click(point) {
    if (this.#goal.isPicking) this.#goal.pick(this.#view.viewport.toMap(...point));
    else this.#onClick(...point);
  }

  #abandon(event) {
    this.#pointers.delete(event.pointerId);
    this.#goal.dropDrag();
  }

  #pinch(id, before, point) {
    const [[, still]] = [...this.#pointers].filter(([other]) => other !== id);
    const span = ([left, top]) => Math.max(1, Math.hypot(left - still[0], top - still[1]));
    this.#view.panBy((point[0] - before[0]) / 2, (point[1] - before[1]) / 2);
    this.#view.zoomBy(span(point) / span(before), (point[0] + still[0]) / 2, (point[1] + still[1]) / 2);
  }

  #wheel(event) {
    event.preventDefault();
    const pixels = event.deltaY * (event.deltaMode === WheelEvent.DOM_DELTA_LINE ? LINE : 1) * (event.ctrlKey ? PAD_GAIN : 1);
    this.#view.zoomBy(Math.exp(-pixels * WHEEL_STEP), event.offsetX, event.offsetY);
  }

  #isOnRobot(event) {
    return this.#view.isOnRobot(event.offsetX, event.offsetY, REACH[event.pointerType] ?? REACH.mouse);
  }

  #showWhatADragDoes(event) {
    const aims = this.#goal.isPicking || this.#tape.isOut || (this.#goal.isPossible && this.#isOnRobot(event));
    this.#canvas.classList.toggle('aims', aims);
  }
}
