// A part of a picture that stays the same for a while, drawn once for each version.

export class Layer {
  #canvas = new OffscreenCanvas(1, 1);
  #version = '';

  /** Draws the layer with `paint` if `version` has changed, then copies it to `context`. */
  draw(context, version, paint) {
    const { width, height } = context.canvas;
    const full = `${version} ${width} ${height}`;
    if (full !== this.#version) {
      this.#canvas.width = width;
      this.#canvas.height = height;
      const own = this.#canvas.getContext('2d');
      own.setTransform(context.getTransform());
      paint(own);
      this.#version = full;
    }
    context.save();
    context.resetTransform();
    context.drawImage(this.#canvas, 0, 0);
    context.restore();
  }
}
