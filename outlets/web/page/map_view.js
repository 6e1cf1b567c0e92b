// The canvas with the map: keeps what is to be seen, and draws it once a frame when something changed.

import { onThemeChange, readTheme } from './colours.js';
import * as layers from './map_layers.js';
import { PointTrail } from './point_trail.js';
import { Viewport } from './viewport.js';
import { WorldMap } from './world_map.js';

export class MapView {
  viewport = new Viewport();
  /** The last from the program, or null. */
  state = null;
  radius = 0.3;

  #canvas;
  #theme = readTheme();
  #map = null;
  #trail = new PointTrail();
  #isDue = false;
  #isFitted = false;
  #follows = false;
  #chosen = '';
  #picked = null;

  constructor(canvas) {
    this.#canvas = canvas;
    new ResizeObserver(() => this.#resize()).observe(canvas);
    onThemeChange(() => this.#repaint());
  }

  async setWorld(hello) {
    this.radius = hello.radius;
    this.#trail.clear();
    const before = JSON.stringify(this.#map?.box);
    this.#map = await WorldMap.load(hello.map);
    this.#repaint();
    if (JSON.stringify(this.#map.box) !== before) this.fit();
  }

  setState(state) {
    this.state = state;
    this.#trail.add(state.sensors, state.time / 1e9);
    if (this.#follows) this.viewport.centre = { x: state.pose.x, y: state.pose.y };
    this.draw();
  }

  /** The sensor whose field of view stands out; '' for none. */
  set chosen(name) {
    this.#chosen = name;
    this.draw();
  }

  /** A goal in the person's hand, in metres, or null. */
  get picked() {
    return this.#picked;
  }

  set picked(goal) {
    this.#picked = goal;
    this.draw();
  }

  get follows() {
    return this.#follows;
  }

  set follows(on) {
    this.#follows = on;
    if (on && this.state) this.setState(this.state);
  }

  fit() {
    if (!this.#map) return;
    this.viewport.fit(this.#map.box);
    this.#isFitted = true;
    this.draw();
  }

  panBy(right, down) {
    this.viewport.panBy(right, down);
    this.draw();
  }

  zoomBy(factor, left, top) {
    this.viewport.zoomBy(factor, left, top);
    this.draw();
  }

  /** Whether the point of the canvas is on the robot, or so near that a finger means it. */
  isOnRobot(left, top, reach) {
    if (!this.state) return false;
    const [x, y] = this.viewport.toCanvas(this.state.pose.x, this.state.pose.y);
    return Math.hypot(left - x, top - y) <= Math.max(layers.robotRadius(this.viewport, this.radius), reach);
  }

  draw() {
    if (this.#isDue) return;
    this.#isDue = true;
    requestAnimationFrame(() => {
      this.#isDue = false;
      this.#drawNow();
    });
  }

  #repaint() {
    this.#theme = readTheme();
    this.#map?.paint(this.#theme);
    this.draw();
  }

  #resize() {
    const { clientWidth, clientHeight } = this.#canvas;
    this.viewport.resize(clientWidth, clientHeight);
    this.#canvas.width = Math.round(clientWidth * devicePixelRatio);
    this.#canvas.height = Math.round(clientHeight * devicePixelRatio);
    if (!this.#isFitted) this.fit();
    this.draw();
  }

  #drawNow() {
    const context = this.#canvas.getContext('2d');
    context.setTransform(devicePixelRatio, 0, 0, devicePixelRatio, 0, 0);
    context.fillStyle = this.#theme.unknown;
    context.fillRect(0, 0, this.viewport.width, this.viewport.height);
    this.#map?.draw(context, this.viewport);
    if (this.state) this.#drawState(context, this.state);
    layers.drawScale(context, this.viewport, this.#theme);
  }

  #drawState(context, { time, pose, sensors, people, touches, goal }) {
    const [viewport, theme] = [this.viewport, this.#theme];
    for (const sensor of sensors) {
      layers.drawFieldOfView(context, viewport, theme, sensor, sensor.name === this.#chosen);
    }
    if (goal) layers.drawGoal(context, viewport, theme, pose, goal, false);
    if (this.#picked) layers.drawGoal(context, viewport, theme, pose, this.#picked, true);
    for (const person of people) layers.drawPerson(context, viewport, theme, person);
    layers.drawRobot(context, viewport, theme, pose, this.radius);
    for (const { name, family } of sensors) {
      layers.drawPoints(context, viewport, theme, family, this.#trail.of(name, time / 1e9));
    }
    for (const touch of touches) layers.drawTouch(context, viewport, theme, touch);
  }
}
