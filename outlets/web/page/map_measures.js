// Drawing of the tape measure and the scale bar.

import { fixed } from './format.js';

const FULL_TURN = 2 * Math.PI;

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
