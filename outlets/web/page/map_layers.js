// Drawing of fields of view and points: functions of (context, viewport, theme, ...).

import { colourOfFamily, readable } from './colours.js';

const OLD = 3.0;
const LEAST_STRENGTH = 0.15;

/** Returns 1 for a fresh record, falling to 0.15 with its age (s). */
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
    // The newest points have a rim, to stand out from a wall of similar brightness.
    context.fillStyle = theme.free;
    if (isNewest) drawPointSet(context, viewport, points, size + 2);
    context.fillStyle = readable(colourOfFamily(family), theme.free);
    drawPointSet(context, viewport, points, isNewest ? size : size * 0.7);
  });
  context.restore();
}
