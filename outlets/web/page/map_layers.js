// What stands on the map, each drawn by a function of (context, viewport, theme, ...).

import { colourOfFamily, readable } from './colours.js';
import { fixed } from './format.js';

const FULL_TURN = 2 * Math.PI;
const OLD = 3.0;
const LEAST_STRENGTH = 0.15;
const PERSON_RADIUS = 0.22;

/** 1 for a fresh record, less with each second. */
function freshness(age) {
  return Math.max(LEAST_STRENGTH, 1 - (age ?? 0) / OLD);
}

function fanPath(context, viewport, fan) {
  const [left, top] = viewport.toCanvas(fan.x, fan.y);
  const [from, to] = [-fan.theta - fan.angle / 2, -fan.theta + fan.angle / 2];
  context.beginPath();
  context.arc(left, top, fan.maxRange * viewport.scale, from, to);
  context.arc(left, top, Math.max(0, fan.minRange) * viewport.scale, to, from, true);
  context.closePath();
}

export function drawFieldOfView(context, viewport, theme, sensor, isChosen) {
  const fan = sensor.fieldOfView;
  if (!fan || fan.maxRange <= 0) return;
  const strength = freshness(sensor.age);
  const isFilled = sensor.means === 'zone' && sensor.points.length > 0;
  context.save();
  fanPath(context, viewport, fan);
  context.fillStyle = context.strokeStyle = readable(colourOfFamily(sensor.family), theme.free);
  context.globalAlpha = (isFilled ? 0.5 : isChosen ? 0.3 : 0.1) * strength;
  context.fill();
  context.globalAlpha = (isChosen ? 1 : 0.55) * strength;
  context.lineWidth = isChosen ? 2 : 1;
  context.stroke();
  context.restore();
}

function drawPointSet(context, viewport, points, size) {
  for (let at = 0; at + 1 < points.length; at += 2) {
    const [left, top] = viewport.toCanvas(points[at], points[at + 1]);
    context.fillRect(left - size / 2, top - size / 2, size, size);
  }
}

/** `sets` as a PointTrail gives them: the last is the newest. */
export function drawPoints(context, viewport, theme, family, sets) {
  const size = Math.min(Math.max(viewport.scale * 0.06, 4), 9);
  context.save();
  sets.forEach(({ points, strength }, index) => {
    const isNewest = index === sets.length - 1;
    context.globalAlpha = isNewest ? Math.max(strength, LEAST_STRENGTH) : strength * 0.35;
    // A rim tells the newest points from a wall of like brightness.
    context.fillStyle = theme.free;
    if (isNewest) drawPointSet(context, viewport, points, size + 2);
    context.fillStyle = readable(colourOfFamily(family), theme.free);
    drawPointSet(context, viewport, points, isNewest ? size : size * 0.7);
  });
  context.restore();
}

export function drawPerson(context, viewport, theme, [x, y]) {
  const [left, top] = viewport.toCanvas(x, y);
  const radius = Math.max(PERSON_RADIUS * viewport.scale, 6);
  context.save();
  context.strokeStyle = theme.person;
  context.fillStyle = theme.surface;
  context.lineWidth = 2;
  context.beginPath();
  context.ellipse(left, top, radius, radius * 0.62, 0, 0, FULL_TURN);
  context.fill();
  context.stroke();
  context.beginPath();
  context.arc(left, top, radius * 0.42, 0, FULL_TURN);
  context.fillStyle = theme.person;
  context.fill();
  context.restore();
}

export function drawTouch(context, viewport, theme, touch) {
  const [left, top] = viewport.toCanvas(touch.x, touch.y);
  context.save();
  context.strokeStyle = context.fillStyle = theme.bad;
  context.lineWidth = 2.5;
  for (const radius of [5, 11]) {
    context.beginPath();
    context.arc(left, top, radius, 0, FULL_TURN);
    context.stroke();
  }
  context.restore();
}

export function robotRadius(viewport, radius) {
  return Math.max(radius * viewport.scale, 8);
}

/** The rim is the robot's own, to scale; a small one is drawn inside a mark that can be found. */
export function drawRobot(context, viewport, theme, pose, radius) {
  const [left, top] = viewport.toCanvas(pose.x, pose.y);
  const size = robotRadius(viewport, radius);
  context.save();
  context.translate(left, top);
  context.rotate(-pose.theta);
  context.fillStyle = theme.surface;
  context.strokeStyle = theme.ink;
  context.lineWidth = 2;
  disc(context, size);
  context.fill();
  context.stroke();
  if (size > radius * viewport.scale + 1) {
    context.lineWidth = 1;
    disc(context, radius * viewport.scale);
    context.stroke();
  }
  arrowPath(context, size);
  context.fillStyle = theme.ink;
  context.fill();
  context.restore();
}

function disc(context, size) {
  context.beginPath();
  context.arc(0, 0, size, 0, FULL_TURN);
}

function arrowPath(context, size) {
  context.beginPath();
  context.moveTo(size * 0.72, 0);
  context.lineTo(-size * 0.38, size * 0.46);
  context.lineTo(-size * 0.14, 0);
  context.lineTo(-size * 0.38, -size * 0.46);
  context.closePath();
}

/** The way that is left, corner by corner; `route` begins where the robot is to be now. */
export function drawRoute(context, viewport, theme, pose, route) {
  context.save();
  context.strokeStyle = context.fillStyle = theme.accent;
  context.lineWidth = 2;
  context.setLineDash([6, 5]);
  context.beginPath();
  context.moveTo(...viewport.toCanvas(pose.x, pose.y));
  for (const [x, y] of route.slice(1)) context.lineTo(...viewport.toCanvas(x, y));
  context.stroke();
  for (const [x, y] of route.slice(1, -1)) {
    const [left, top] = viewport.toCanvas(x, y);
    context.fillRect(left - 2.5, top - 2.5, 5, 5);
  }
  context.restore();
}

export function drawGoal(context, viewport, theme, goal) {
  const [left, top] = viewport.toCanvas(goal.x, goal.y);
  context.save();
  context.strokeStyle = theme.accent;
  context.lineWidth = 2;
  context.beginPath();
  context.arc(left, top, 9, 0, FULL_TURN);
  for (const [right, down] of [[1, 0], [-1, 0], [0, 1], [0, -1]]) {
    context.moveTo(left + 4 * right, top + 4 * down);
    context.lineTo(left + 14 * right, top + 14 * down);
  }
  context.stroke();
  context.restore();
}

/** A goal still in the person's hand: no way is known yet. */
export function drawPicked(context, viewport, theme, pose, goal) {
  context.save();
  context.strokeStyle = theme.accent;
  context.lineWidth = 1.5;
  context.setLineDash([2, 5]);
  context.beginPath();
  context.moveTo(...viewport.toCanvas(pose.x, pose.y));
  context.lineTo(...viewport.toCanvas(goal.x, goal.y));
  context.stroke();
  context.restore();
  drawGoal(context, viewport, theme, goal);
}

export function drawTape(context, viewport, theme, { from, to }) {
  const [start, end] = [viewport.toCanvas(from.x, from.y), viewport.toCanvas(to.x, to.y)];
  context.save();
  context.strokeStyle = theme.ink;
  context.lineWidth = 2;
  context.beginPath();
  context.moveTo(...start);
  context.lineTo(...end);
  for (const [left, top] of [start, end]) {
    context.moveTo(left + 4, top);
    context.arc(left, top, 4, 0, FULL_TURN);
  }
  context.stroke();
  const length = Math.hypot(to.x - from.x, to.y - from.y);
  drawLabel(context, theme, `${fixed(length, 2)} m`, (start[0] + end[0]) / 2 + 8, (start[1] + end[1]) / 2 - 8);
  context.restore();
}

function drawLabel(context, theme, text, left, bottom) {
  context.font = '600 12px system-ui, sans-serif';
  context.fillStyle = theme.surface;
  context.globalAlpha = 0.9;
  context.fillRect(left - 5, bottom - 14, context.measureText(text).width + 10, 19);
  context.globalAlpha = 1;
  context.fillStyle = theme.ink;
  context.fillText(text, left, bottom);
}

const SCALE_LENGTHS = [0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000];

export function drawScale(context, viewport, theme) {
  const length = SCALE_LENGTHS.findLast((metres) => metres * viewport.scale <= 130) ?? SCALE_LENGTHS[0];
  const [left, bottom] = [14, viewport.height - 14];
  const right = left + length * viewport.scale;
  const text = `${fixed(length, length < 1 ? 1 : 0)} m`;
  context.save();
  context.font = '600 12px system-ui, sans-serif';
  context.fillStyle = theme.surface;
  context.globalAlpha = 0.85;
  context.fillRect(left - 7, bottom - 22, right - left + 14, 30);
  context.globalAlpha = 1;
  context.fillStyle = context.strokeStyle = theme.ink;
  context.fillText(text, left, bottom - 8);
  context.lineWidth = 2;
  context.beginPath();
  context.moveTo(left, bottom - 4);
  context.lineTo(left, bottom);
  context.lineTo(right, bottom);
  context.lineTo(right, bottom - 4);
  context.stroke();
  context.restore();
}
