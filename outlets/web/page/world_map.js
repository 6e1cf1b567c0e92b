// The occupancy map: its place, and the visible tiles.

export class WorldMap {
  #description;
  #store;

  /** `description` is the program's: see docs on "hello"; `store` a TileStore. */
  constructor(description, store) {
    this.#description = description;
    this.#store = store;
  }

  /** Draws coarse tiles first; a fine tile replaces them when it has loaded. */
  draw(context, viewport) {
    const { origin, resolution, levels } = this.#description;
    const pixelsACell = viewport.scale * resolution;
    const wanted = Math.min(Math.max(Math.floor(Math.log2(1 / (pixelsACell * devicePixelRatio))), 0), levels - 1);
    const seen = this.#seenCells(viewport);
    context.save();
    context.translate(...viewport.toCanvas(origin.x, origin.y));
    context.rotate(-origin.theta);
    context.scale(pixelsACell, pixelsACell);
    context.imageSmoothingEnabled = pixelsACell * 2 ** wanted < 1;
    for (const level of new Set([levels - 1, wanted])) this.#drawLevel(context, level, seen);
    context.restore();
  }

  #drawLevel(context, level, seen) {
    const cell = 2 ** level;
    const side = this.#description.tile * cell;
    const last = (length) => Math.ceil(length / side) - 1;
    const columns = [Math.max(0, Math.floor(seen.left / side)), Math.min(last(this.#description.width), Math.floor(seen.right / side))];
    const rows = [Math.max(0, Math.floor(seen.bottom / side)), Math.min(last(this.#description.height), Math.floor(seen.top / side))];
    for (let row = rows[0]; row <= rows[1]; ++row) {
      for (let column = columns[0]; column <= columns[1]; ++column) {
        const picture = this.#store.find(`map/${level}/${column}/${row}.png`);
        if (!picture) continue;
        const height = picture.height * cell;
        context.drawImage(picture, column * side, -(row * side + height), picture.width * cell, height);
      }
    }
  }

  // The part of the map that the canvas shows, in cells.
  #seenCells(viewport) {
    const { origin, resolution } = this.#description;
    const [cos, sin] = [Math.cos(origin.theta), Math.sin(origin.theta)];
    const { width, height } = viewport;
    const corners = [[0, 0], [width, 0], [0, height], [width, height]].map(([left, top]) => {
      const place = viewport.toMap(left, top);
      const [x, y] = [place.x - origin.x, place.y - origin.y];
      return { x: (cos * x + sin * y) / resolution, y: (-sin * x + cos * y) / resolution };
    });
    return boxAround(corners);
  }

  /** The axis-aligned bounding box of the map (m). */
  get box() {
    const { origin, resolution, width, height } = this.#description;
    const [cos, sin] = [Math.cos(origin.theta), Math.sin(origin.theta)];
    return boxAround([[0, 0], [width, 0], [0, height], [width, height]].map(([column, row]) => ({
      x: origin.x + resolution * (cos * column - sin * row),
      y: origin.y + resolution * (sin * column + cos * row),
    })));
  }
}

function boxAround(corners) {
  const [xs, ys] = [corners.map(({ x }) => x), corners.map(({ y }) => y)];
  return { left: Math.min(...xs), right: Math.max(...xs), bottom: Math.min(...ys), top: Math.max(...ys) };
}
