// Drawing of the planned path, the goal, and a goal that is being dragged.

const FULL_TURN = 2 * Math.PI;

/** Draws the rest of the path. `route` begins at the planned place of the robot. */
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

/** Draws a goal that is being dragged; no path is known yet. */
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
