// 3D view of the sensors' points in the map frame: x and y on the floor, z up (m).

import { colourOfFamily, onThemeChange, readable, readTheme } from './colours.js';

const NEAR = 0.2;
const GRID = 5;
const ROBOT_HEIGHT = 1.2;
const START = { turn: -2.4, tilt: 0.55, distance: 6 };

function circleOf(radius) {
  return Array.from({ length: 24 }, (_, part) => (part * Math.PI) / 12).map((angle) => [radius * Math.cos(angle), radius * Math.sin(angle)]);
}

export class SpaceView {
  #canvas;
  #theme = readTheme();
  #sensors = [];
  #pose = { x: 0, y: 0, theta: 0 };
  #radius = 0.3;
  #outline = [];
  #turn = START.turn;
  #tilt = START.tilt;
  #distance = START.distance;
  #isDue = false;

  constructor(canvas) {
    this.#canvas = canvas;
    new ResizeObserver(() => this.draw()).observe(canvas);
    onThemeChange(() => {
      this.#theme = readTheme();
      this.draw();
    });
    canvas.addEventListener('pointermove', (event) => event.buttons === 1 && this.turnBy(event.movementX * 0.008, event.movementY * 0.008));
    canvas.addEventListener('pointerdown', (event) => canvas.setPointerCapture(event.pointerId));
    canvas.addEventListener('wheel', (event) => this.#wheel(event), { passive: false });
    canvas.addEventListener('keydown', (event) => this.#key(event));
  }

  setWorld({ radius, outline }) {
    this.#radius = radius;
    this.#outline = outline.length > 0 ? outline : circleOf(radius);
    this.#sensors = [];
  }

  setSpace({ sensors }) {
    this.#sensors = sensors;
    this.draw();
  }

  setPose(pose) {
    this.#pose = pose;
    this.draw();
  }

  turnBy(turn, tilt) {
    this.#turn -= turn;
    this.#tilt = Math.min(Math.max(this.#tilt + tilt, 0.02), 1.55);
    this.draw();
  }

  zoomBy(factor) {
    this.#distance = Math.min(Math.max(this.#distance / factor, 1), 60);
    this.draw();
  }

  /** Restores the first viewpoint. */
  reset() {
    this.#turn = START.turn;
    this.#tilt = START.tilt;
    this.zoomBy(this.#distance / START.distance);
  }

  draw() {
    if (this.#isDue || this.#canvas.hidden) return;
    this.#isDue = true;
    requestAnimationFrame(() => {
      this.#isDue = false;
      this.#drawNow();
    });
  }

  #wheel(event) {
    event.preventDefault();
    this.zoomBy(Math.exp(-event.deltaY * 0.0015));
  }

  #key(event) {
    const steps = { ArrowLeft: [-0.15, 0], ArrowRight: [0.15, 0], ArrowUp: [0, -0.1], ArrowDown: [0, 0.1] };
    if (!steps[event.key] || !event.shiftKey) return;
    this.turnBy(...steps[event.key]);
    event.preventDefault();
    event.stopPropagation();
  }

  /** [left, top, depth] on the canvas; null for what is behind the eye. */
  #project(x, y, z) {
    const { clientWidth, clientHeight } = this.#canvas;
    const [right, ahead] = [x - this.#pose.x, y - this.#pose.y];
    const [cos, sin] = [Math.cos(this.#turn), Math.sin(this.#turn)];
    const [across, along, up] = [-sin * right + cos * ahead, cos * right + sin * ahead, z - 0.4];
    const [tiltCos, tiltSin] = [Math.cos(this.#tilt), Math.sin(this.#tilt)];
    const depth = this.#distance - (along * tiltCos + up * tiltSin);
    if (depth < NEAR) return null;
    const scale = Math.min(clientWidth, clientHeight) / depth;
    return [clientWidth / 2 + across * scale, clientHeight / 2 - (up * tiltCos - along * tiltSin) * scale, depth];
  }

  #drawNow() {
    const { clientWidth, clientHeight } = this.#canvas;
    this.#canvas.width = Math.round(clientWidth * devicePixelRatio);
    this.#canvas.height = Math.round(clientHeight * devicePixelRatio);
    const context = this.#canvas.getContext('2d');
    context.setTransform(devicePixelRatio, 0, 0, devicePixelRatio, 0, 0);
    context.fillStyle = this.#theme.free;
    context.fillRect(0, 0, clientWidth, clientHeight);
    this.#drawGrid(context);
    this.#drawRobot(context);
    for (const sensor of this.#sensors) this.#drawPoints(context, sensor);
  }

  #line(context, from, to) {
    const [start, end] = [this.#project(...from), this.#project(...to)];
    if (!start || !end) return;
    context.moveTo(start[0], start[1]);
    context.lineTo(end[0], end[1]);
  }

  // Grid lines every metre, on whole metres of the map frame.
  #drawGrid(context) {
    const [x, y] = [Math.round(this.#pose.x), Math.round(this.#pose.y)];
    context.strokeStyle = this.#theme.muted;
    context.globalAlpha = 0.3;
    context.beginPath();
    for (let at = -GRID; at <= GRID; ++at) {
      this.#line(context, [x - GRID, y + at, 0], [x + GRID, y + at, 0]);
      this.#line(context, [x + at, y - GRID, 0], [x + at, y + GRID, 0]);
    }
    context.stroke();
    context.globalAlpha = 1;
  }

  #drawRobot(context) {
    const { x, y, theta } = this.#pose;
    const [cos, sin] = [Math.cos(theta), Math.sin(theta)];
    const rim = ([ahead, aside], z) => [x + cos * ahead - sin * aside, y + sin * ahead + cos * aside, z];
    context.strokeStyle = this.#theme.ink;
    context.lineWidth = 1.5;
    context.beginPath();
    this.#outline.forEach((corner, index) => {
      const next = this.#outline[(index + 1) % this.#outline.length];
      for (const z of [0, ROBOT_HEIGHT]) this.#line(context, rim(corner, z), rim(next, z));
      if (index % Math.ceil(this.#outline.length / 6) === 0) this.#line(context, rim(corner, 0), rim(corner, ROBOT_HEIGHT));
    });
    this.#line(context, [x, y, 0.02], [x + 1.6 * this.#radius * Math.cos(theta), y + 1.6 * this.#radius * Math.sin(theta), 0.02]);
    context.stroke();
  }

  #drawPoints(context, { family, points }) {
    context.fillStyle = readable(colourOfFamily(family), this.#theme.free);
    for (let at = 0; at + 2 < points.length; at += 3) {
      const place = this.#project(points[at], points[at + 1], points[at + 2]);
      if (!place) continue;
      const size = Math.min(Math.max(14 / place[2], 1.5), 6);
      context.fillRect(place[0] - size / 2, place[1] - size / 2, size, size);
    }
  }
}
