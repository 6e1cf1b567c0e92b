// Puts the page together: messages from the program go to the views, what the person does goes back as commands.

import { setFamilyColours } from './colours.js';
import { Connection } from './connection.js';
import { ConnectionView } from './connection_view.js';
import { DepthPanel } from './depth_panel.js';
import { byId, setAttribute, setHidden, setText } from './dom.js';
import { DriveKeys } from './drive_keys.js';
import { GoalPicker } from './goal_picker.js';
import { listenToKeys } from './keyboard.js';
import { LogPanel } from './log_panel.js';
import { MapGestures } from './map_gestures.js';
import { MapView } from './map_view.js';
import { notify } from './notices.js';
import { RobotView } from './robot_view.js';
import { SensorPanel } from './sensor_panel.js';
import { TimeControls } from './time_controls.js';

const ZOOM_STEP = 1.3;
const DRIVE_HELP = 'Arrow keys drive. Drag from the robot, or press g, to set a goal. Escape stops. ';
const HELP = 'Drag, or Shift and arrow keys, move the map; wheel, pinch, + and − zoom; 0 shows all of it.';

const scheme = location.protocol === 'https:' ? 'wss' : 'ws';
const connection = new Connection(`${scheme}://${location.host}/live`);
new ConnectionView(connection);

function send(command) {
  const sent = connection.send(command);
  if (!sent) notify('Not connected: that was not sent.', 'warning');
  return sent;
}

const map = new MapView(byId('map'));
const goal = new GoalPicker(map, byId('goal'), ({ x, y }) => send({ op: 'goal', x, y }));
const drive = new DriveKeys(({ forward, turn }) => send({ op: 'drive', forward, turn }));
const time = new TimeControls(send);
const sensors = new SensorPanel(send, (name) => (map.chosen = name));
const depth = new DepthPanel();
const log = new LogPanel();
const robot = new RobotView();
new MapGestures(byId('map'), map, goal);

function follow(on) {
  map.follows = on;
  setAttribute(byId('follow'), 'aria-pressed', String(on));
}

function fit() {
  follow(false);
  map.fit();
}

function stop() {
  goal.cancel();
  drive.releaseAll();
  if (drive.isPossible) send({ op: 'stop' });
}

const controls = {
  'zoom-in': () => map.zoomBy(ZOOM_STEP),
  'zoom-out': () => map.zoomBy(1 / ZOOM_STEP),
  fit,
  follow: () => follow(!map.follows),
  stop,
};
for (const [id, action] of Object.entries(controls)) byId(id).addEventListener('click', action);

listenToKeys({
  goal,
  drive,
  view: map,
  onKey: {
    '+': controls['zoom-in'],
    '=': controls['zoom-in'],
    '-': controls['zoom-out'],
    0: fit,
    f: controls.follow,
    g: () => goal.togglePicking(),
    ' ': () => time.togglePause(),
    '.': () => time.step(),
    Escape: stop,
  },
});

const receivers = {
  hello(message) {
    setText(byId('title'), message.title);
    document.title = `${message.title} · QV live view`;
    goal.isPossible = drive.isPossible = message.canDrive;
    setHidden(byId('drive-tools'), !message.canDrive);
    setText(byId('map-help'), (message.canDrive ? DRIVE_HELP : '') + HELP);
    setFamilyColours(message.colours);
    sensors.setWorld(message);
    robot.setWorld(message);
    log.clear();
    depth.clear();
    depthSensor = message.depthSensor;
    return map.setWorld(message);
  },

  state(message) {
    map.setState(message);
    robot.setState(message);
    time.setState(message);
    sensors.setState(message.sensors);
    depth.setState(message.sensors);
    const camera = message.sensors.find(({ name }) => name === depthSensor);
    if (camera) depth.expect(camera);
  },

  log: ({ lines }) => log.add(lines),
  depth: (message) => depth.setFrame(message),
  refused: ({ command, message }) => notify(`${command}: ${message}`, 'warning'),
};
let depthSensor = null;

connection.addEventListener('message', ({ detail }) => receivers[detail.op]?.(detail));
connection.connect();
