// The occupancy map as a picture in the theme's colours, and where it lies.

import { channels } from './colours.js';

const OCCUPIED_BELOW = 100;
const FREE_FROM = 230;

export class WorldMap {
  #grey;
  #picture;
  #description;

  /** `description` is the program's; resolves when the picture is decoded. */
  static async load(description) {
    const image = new Image();
    image.src = `data:image/png;base64,${description.png}`;
    await image.decode();
    return new WorldMap(description, image);
  }

  constructor(description, image) {
    this.#description = description;
    this.#picture = new OffscreenCanvas(image.naturalWidth, image.naturalHeight);
    const context = this.#picture.getContext('2d', { willReadFrequently: true });
    context.drawImage(image, 0, 0);
    this.#grey = context.getImageData(0, 0, this.#picture.width, this.#picture.height);
  }

  paint(theme) {
    const [free, unknown, occupied] = [theme.free, theme.unknown, theme.occupied].map(channels);
    const { data, width, height } = this.#grey;
    const painted = new ImageData(width, height);
    for (let at = 0; at < data.length; at += 4) {
      const colour = data[at] < OCCUPIED_BELOW ? occupied : data[at] >= FREE_FROM ? free : unknown;
      painted.data.set(colour, at);
      painted.data[at + 3] = 255;
    }
    this.#picture.getContext('2d').putImageData(painted, 0, 0);
  }

  draw(context, viewport) {
    const { origin, resolution, height } = this.#description;
    context.save();
    context.translate(...viewport.toCanvas(origin.x, origin.y));
    context.rotate(-origin.theta);
    context.scale(viewport.scale * resolution, viewport.scale * resolution);
    context.imageSmoothingEnabled = viewport.scale * resolution < 1;
    context.drawImage(this.#picture, 0, -height);
    context.restore();
  }

  /** In metres, sides along the axes. */
  get box() {
    const { origin, resolution, width, height } = this.#description;
    const [cos, sin] = [Math.cos(origin.theta), Math.sin(origin.theta)];
    const corners = [[0, 0], [width, 0], [0, height], [width, height]].map(([column, row]) => ({
      x: origin.x + resolution * (cos * column - sin * row),
      y: origin.y + resolution * (sin * column + cos * row),
    }));
    const [xs, ys] = [corners.map(({ x }) => x), corners.map(({ y }) => y)];
    return { left: Math.min(...xs), right: Math.max(...xs), bottom: Math.min(...ys), top: Math.max(...ys) };
  }
}
