// The visible part of the map. Map: metres, y up. Canvas: CSS pixels, y down.

const GREATEST_SCALE = 800;
const MARGIN = 0.94;

export class Viewport {
  width = 1;
  height = 1;
  /** Pixels per metre. */
  scale = 40;
  centre = { x: 0, y: 0 };
  #least = 4;

  toCanvas(x, y) {
    return [this.width / 2 + (x - this.centre.x) * this.scale, this.height / 2 - (y - this.centre.y) * this.scale];
  }

  toMap(left, top) {
    return {
      x: this.centre.x + (left - this.width / 2) / this.scale,
      y: this.centre.y - (top - this.height / 2) / this.scale,
    };
  }

  resize(width, height) {
    this.width = width;
    this.height = height;
  }

  panBy(right, down) {
    this.centre = { x: this.centre.x - right / this.scale, y: this.centre.y + down / this.scale };
  }

  /** Zooms about a point of the canvas; default: its centre. */
  zoomBy(factor, left = this.width / 2, top = this.height / 2) {
    const before = this.toMap(left, top);
    this.scale = Math.min(Math.max(this.scale * factor, this.#least), GREATEST_SCALE);
    const after = this.toMap(left, top);
    this.centre = { x: this.centre.x + before.x - after.x, y: this.centre.y + before.y - after.y };
  }

  /** Shows all of `box`, which is in metres, however large it is. */
  fit(box) {
    const across = MARGIN * Math.min(this.width / (box.right - box.left), this.height / (box.top - box.bottom));
    this.#least = Math.min(4, across / 2);
    this.scale = Math.min(across, GREATEST_SCALE);
    this.centre = { x: (box.left + box.right) / 2, y: (box.bottom + box.top) / 2 };
  }
}
