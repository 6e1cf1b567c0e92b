// Drawing of robot, people and touches: functions of (context, viewport, theme, ...).

const FULL_TURN = 2 * Math.PI;
const PERSON_RADIUS = 0.22;

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

/** Draws the robot's `outline` (in its own frame) to scale, a disc where it has none; a very small robot gets a mark around it. */
export function drawRobot(context, viewport, theme, pose, { radius, outline }) {
  const [left, top] = viewport.toCanvas(pose.x, pose.y);
  const size = robotRadius(viewport, radius);
  const isSmall = size > radius * viewport.scale + 1;
  context.save();
  context.translate(left, top);
  context.rotate(-pose.theta);
  context.fillStyle = theme.surface;
  context.strokeStyle = theme.ink;
  context.lineWidth = 2;
  if (isSmall) disc(context, size);
  else rim(context, viewport.scale, radius, outline);
  context.fill();
  context.stroke();
  if (isSmall) {
    context.lineWidth = 1;
    rim(context, viewport.scale, radius, outline);
    context.stroke();
  }
  arrowPath(context, isSmall ? size : arrowSize(viewport.scale, size, outline));
  context.fillStyle = theme.ink;
  context.fill();
  context.restore();
}

function rim(context, scale, radius, outline) {
  if (outline.length === 0) return disc(context, radius * scale);
  context.beginPath();
  for (const [x, y] of outline) context.lineTo(x * scale, -y * scale);
  context.closePath();
}

// No longer than the room ahead of the robot's middle, nor wider than the robot.
function arrowSize(scale, size, outline) {
  const reach = (along) => scale * Math.max(0, ...outline.map(along));
  if (outline.length === 0) return size;
  return Math.max(8, Math.min(size, reach(([x]) => x), 1.6 * reach(([, y]) => Math.abs(y))));
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
