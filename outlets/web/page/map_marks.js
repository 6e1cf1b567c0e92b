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

/** Draws the robot's outline to scale; a very small robot gets a mark around it. */
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
