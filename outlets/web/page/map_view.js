// The map's canvas. It draws at most once per screen refresh, after a change or while something moves.

import { onThemeChange, readTheme } from './colours.js';
import { Layer } from './layer.js';
import { drawFieldOfView, drawPoints } from './map_layers.js';
import { drawPerson, drawRobot, drawTouch, robotRadius } from './map_marks.js';
import { drawScale, drawTape } from './map_measures.js';
import { drawGoal, drawPicked, drawRoute } from './map_way.js';
import { Motion } from './motion.js';
import { PointTrail } from './point_trail.js';
import { TileStore } from './tile_store.js';
import { Viewport } from './viewport.js';
import { WorldMap } from './world_map.js';

// Metres around a robot that has no map.
const AROUND = 6;

export class MapView {
  viewport = new Viewport();
  /** The last state message, with robot and people at their drawn places; or null. */
  state = null;
  /** What is told of the robot's body: radius, and outline in its own frame, pairs. */
  body = { radius: 0.3, outline: [] };
  /** Called after each picture. */
  onDraw = () => {};

  #canvas;
  #theme = readTheme();
  #map = null;
  #tiles = new TileStore(() => this.#change());
  #trail = new PointTrail();
  #motion = new Motion();
  #below = new Layer();
  #above = new Layer();
  #version = 0;
  #isDue = false;
  #isFitted = false;
  /** Nobody has moved the map since it was fitted. */
  #showsAll = false;
  #follows = false;
  #chosen = '';
  #inspected = '';
  #picked = null;
  #tape = null;

  constructor(canvas) {
    this.#canvas = canvas;
    new ResizeObserver(() => this.#resize()).observe(canvas);
    onThemeChange(() => this.#repaint());
  }

  setWorld(hello) {
    this.body = { radius: hello.radius, outline: hello.outline };
    this.#trail.clear();
    const before = JSON.stringify(this.#map?.box);
    this.#map = hello.map ? new WorldMap(hello.map, this.#tiles) : null;
    this.#repaint();
    if (JSON.stringify(this.#map?.box) !== before) this.fit();
  }

  setState(state) {
    this.#trail.add(state.sensors, state.time / 1e9);
    this.#motion.hear(state, performance.now());
    this.state = { ...state, ...this.#motion.look(performance.now()) };
    if (!this.#isFitted) this.fit();
    this.#change();
  }

  /** The sensor whose field of view is highlighted; '' for none. */
  set chosen(name) {
    this.#chosen = name;
    this.#change();
  }

  /** The sensor whose records are open; '' for none. */
  set inspected(name) {
    this.#inspected = name;
    this.#change();
  }

  /** A goal that is being dragged (m, map frame), or null. */
  get picked() {
    return this.#picked;
  }

  set picked(goal) {
    this.#picked = goal;
    this.draw();
  }

  /** {from, to} in metres, or null. */
  get tape() {
    return this.#tape;
  }

  set tape(tape) {
    this.#tape = tape;
    this.draw();
  }

  get follows() {
    return this.#follows;
  }

  set follows(on) {
    this.#follows = on;
    if (on) this.#showsAll = false;
    this.draw();
  }

  fit() {
    const box = this.#map?.box ?? this.#aroundRobot();
    if (!box) return;
    this.viewport.fit(box);
    this.#isFitted = true;
    this.#showsAll = true;
    this.draw();
  }

  panBy(right, down) {
    this.#showsAll = false;
    this.viewport.panBy(right, down);
    this.draw();
  }

  zoomBy(factor, left, top) {
    this.#showsAll = false;
    this.viewport.zoomBy(factor, left, top);
    this.draw();
  }

  /** Returns true if the point of the canvas is on the robot, or within `reach` pixels of it. */
  isOnRobot(left, top, reach) {
    if (!this.state) return false;
    const [x, y] = this.viewport.toCanvas(this.state.pose.x, this.state.pose.y);
    return Math.hypot(left - x, top - y) <= Math.max(robotRadius(this.viewport, this.body.radius), reach);
  }

  /** The sensor's point {sensor, x, y} that is nearest to a point of the canvas, within `reach` pixels; or null. */
  findPoint(left, top, reach) {
    let best = { away: reach };
    for (const { name, points } of this.state?.sensors ?? []) {
      for (let at = 0; at + 1 < points.length; at += 2) {
        const [x, y] = this.viewport.toCanvas(points[at], points[at + 1]);
        const away = Math.hypot(left - x, top - y);
        if (away <= best.away) best = { away, sensor: name, x: points[at], y: points[at + 1] };
      }
    }
    return best.sensor ? best : null;
  }

  draw() {
    if (this.#isDue) return;
    this.#isDue = true;
    requestAnimationFrame(() => {
      this.#isDue = false;
      this.#drawNow();
    });
  }

  #aroundRobot() {
    const { x, y } = this.state?.pose ?? {};
    return x === undefined ? null : { left: x - AROUND, right: x + AROUND, bottom: y - AROUND, top: y + AROUND };
  }

  // Redraws the cached layers.
  #change() {
    ++this.#version;
    this.draw();
  }

  #repaint() {
    this.#theme = readTheme();
    this.#tiles.reset(this.#theme);
    this.#change();
  }

  #resize() {
    const { clientWidth, clientHeight } = this.#canvas;
    this.viewport.resize(clientWidth, clientHeight);
    this.#canvas.width = Math.round(clientWidth * devicePixelRatio);
    this.#canvas.height = Math.round(clientHeight * devicePixelRatio);
    if (!this.#isFitted || this.#showsAll) this.fit();
    this.#change();
  }

  #move() {
    const now = performance.now();
    if (!this.state) return;
    this.state = { ...this.state, ...this.#motion.look(now) };
    if (this.#follows) this.viewport.centre = { x: this.state.pose.x, y: this.state.pose.y };
    if (this.#motion.isUnderWay(now)) this.draw();
  }

  #drawNow() {
    this.#move();
    const context = this.#canvas.getContext('2d');
    const { scale, centre } = this.viewport;
    const version = `${this.#version} ${scale} ${centre.x} ${centre.y}`;
    context.setTransform(devicePixelRatio, 0, 0, devicePixelRatio, 0, 0);
    this.#below.draw(context, version, (own) => this.#drawBelow(own));
    if (this.state) this.#drawMoving(context, this.state);
    if (this.state) this.#above.draw(context, version, (own) => this.#drawAbove(own, this.state));
    if (this.#tape) drawTape(context, this.viewport, this.#theme, this.#tape);
    drawScale(context, this.viewport, this.#theme);
    this.onDraw();
  }

  #drawBelow(context) {
    context.fillStyle = this.#theme.unknown;
    context.fillRect(0, 0, this.viewport.width, this.viewport.height);
    this.#map?.draw(context, this.viewport);
    for (const sensor of this.state?.sensors ?? []) {
      const isChosen = sensor.name === this.#chosen || sensor.name === this.#inspected;
      drawFieldOfView(context, this.viewport, this.#theme, sensor, isChosen);
    }
  }

  #drawMoving(context, { pose, people, goal, route }) {
    const [viewport, theme] = [this.viewport, this.#theme];
    if (route?.length > 1) drawRoute(context, viewport, theme, pose, route);
    if (goal) drawGoal(context, viewport, theme, goal);
    if (this.#picked) drawPicked(context, viewport, theme, pose, this.#picked);
    for (const person of people) drawPerson(context, viewport, theme, person);
    drawRobot(context, viewport, theme, pose, this.body);
  }

  #drawAbove(context, { sensors, touches, time }) {
    const [viewport, theme] = [this.viewport, this.#theme];
    for (const { name, family } of sensors) {
      drawPoints(context, viewport, theme, family, this.#trail.of(name, time / 1e9));
    }
    for (const touch of touches) drawTouch(context, viewport, theme, touch);
  }
}
