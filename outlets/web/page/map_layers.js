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

export function drawRobot(context, viewport, theme, pose, radius) {
  const [left, top] = viewport.toCanvas(pose.x, pose.y);
  const size = robotRadius(viewport, radius);
  context.save();
  context.translate(left, top);
  context.rotate(-pose.theta);
  context.beginPath();
  context.arc(0, 0, size, 0, FULL_TURN);
  context.fillStyle = theme.surface;
  context.fill();
  context.lineWidth = 2;
  context.strokeStyle = theme.ink;
  context.stroke();
  context.beginPath();
  context.moveTo(size * 0.72, 0);
  context.lineTo(-size * 0.38, size * 0.46);
  context.lineTo(-size * 0.14, 0);
  context.lineTo(-size * 0.38, -size * 0.46);
  context.closePath();
  context.fillStyle = theme.ink;
  context.fill();
  context.restore();
}

/** `isPicked`: still in the person's hand, so that it is not yet where the robot goes. */
export function drawGoal(context, viewport, theme, pose, goal, isPicked) {
  const [left, top] = viewport.toCanvas(goal.x, goal.y);
  context.save();
  context.strokeStyle = theme.accent;
  context.lineWidth = 2;
  context.setLineDash([6, 5]);
  context.beginPath();
  context.moveTo(...viewport.toCanvas(pose.x, pose.y));
  context.lineTo(left, top);
  context.stroke();
  if (!isPicked) context.setLineDash([]);
  context.beginPath();
  context.arc(left, top, 9, 0, FULL_TURN);
  for (const [right, down] of [[1, 0], [-1, 0], [0, 1], [0, -1]]) {
    context.moveTo(left + 4 * right, top + 4 * down);
    context.lineTo(left + 14 * right, top + 14 * down);
  }
  context.stroke();
  context.restore();
}

const SCALE_LENGTHS = [0.1, 0.2, 0.5, 1, 2, 5, 10, 20];

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
