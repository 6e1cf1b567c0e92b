// Pose, speed and touches of the robot, above the map.

import { byId, setAttribute, setHidden, setText } from './dom.js';
import { count, degreesText, fixed } from './format.js';

export class RobotView {
  setWorld({ hasPeople }) {
    setHidden(byId('people'), !hasPeople);
  }

  setState({ pose, velocity, goal, people, touches }) {
    setText(byId('pose-x'), `${fixed(pose.x, 2)} m`);
    setText(byId('pose-y'), `${fixed(pose.y, 2)} m`);
    setText(byId('pose-theta'), degreesText(pose.theta));
    setText(byId('pose-speed'), `${fixed(Math.hypot(velocity.x, velocity.y), 2)} m/s`);
    setText(byId('people-count'), String(people.length));
    setText(byId('touch'), touches.length > 0 ? `Touched: ${touches.map(({ name }) => name).join(', ')}` : '');
    setAttribute(byId('map'), 'aria-label', this.#describe(pose, goal, people));
  }

  // The label has whole metres, so that a screen reader does not read every small move.
  #describe(pose, goal, people) {
    const place = ({ x, y }) => `${fixed(x, 0)}, ${fixed(y, 0)} metres`;
    const parts = [`Map: robot near ${place(pose)}`];
    if (goal) parts.push(`going to ${place(goal)}`);
    if (people.length > 0) parts.push(count(people.length, 'person', 'people'));
    return parts.join(', ');
  }
}
