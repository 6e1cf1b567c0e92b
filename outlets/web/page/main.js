// Connects the parts of the page: messages go to the views, user actions go back as commands.

import { setFamilyColours } from './colours.js';
import { Connection } from './connection.js';
import { ConnectionView } from './connection_view.js';
import { DepthPanel } from './depth_panel.js';
import { byId, setAttribute, setHidden, setText } from './dom.js';
import { DriveKeys } from './drive_keys.js';
import { DriveStick } from './drive_stick.js';
import { GoalPicker } from './goal_picker.js';
import { listenToKeys } from './keyboard.js';
import { LogPanel } from './log_panel.js';
import { MapGestures } from './map_gestures.js';
import { MapReadout } from './map_readout.js';
import { MapView } from './map_view.js';
import { notify, notifyRefusal } from './notices.js';
import { RestartNotice } from './restart_notice.js';
import { RobotView } from './robot_view.js';
import { SensorPanel } from './sensor_panel.js';
import { SpacePanel } from './space_panel.js';
import { Tape } from './tape.js';
import { TimeControls } from './time_controls.js';
import { Tooltip } from './tooltip.js';
import { Welcome } from './welcome.js';

const ZOOM_STEP = 1.3;
const DRIVE_HELP = 'Arrow keys drive. Escape stops. ';
const GOAL_HELP = 'Drag from the robot, or press g, to set a goal. ';
const SPACE_HELP = 'Drag or Shift+arrow keys: turn the view. Wheel, + and −: zoom. 0: first view.';
const HELP = 'Click a point to see its record. Drag or Shift+arrow keys: move the map. Wheel, pinch, + and −: zoom. 0: whole map.';
// Pixels around a point: fingers are wide.
const CLICK_REACH = 14;

const scheme = location.protocol === 'https:' ? 'wss' : 'ws';
const connection = new Connection(`${scheme}://${location.host}/live`);
new ConnectionView(connection);

function send(command) {
  const sent = connection.send(command);
  if (!sent) notify('Not connected: the command was not sent.', 'warning');
  return sent;
}

const map = new MapView(byId('map'));
const goal = new GoalPicker(map, byId('goal'), ({ x, y }) => send({ op: 'goal', x, y }));
const sendDrive = ({ forward, turn }) => send({ op: 'drive', forward, turn });
const drive = new DriveKeys(sendDrive);
const stick = new DriveStick(byId('stick'), sendDrive);
const tape = new Tape(map, byId('measure'));
const time = new TimeControls(send);
const welcome = new Welcome();
const sensors = new SensorPanel(send, (name) => (map.chosen = name), (name) => {
  map.inspected = name;
  if (name) welcome.hearInspected();
});
const depth = new DepthPanel();
const log = new LogPanel();
const robot = new RobotView();
const readout = new MapReadout(byId('map'), map);
const space = new SpacePanel((on) => connection.send({ op: 'space', on }), () => {
  goal.cancel();
  tape.putAway();
  tellHelp();
});
const restart = new RestartNotice();
new Tooltip();
new MapGestures(byId('map'), map, {
  goal,
  tape,
  onClick(left, top) {
    const hit = map.findPoint(left, top, CLICK_REACH);
    if (hit) sensors.show(hit.sensor);
  },
});
map.onDraw = () => readout.refresh();

function tellHelp() {
  const ofMap = (goal.isPossible ? GOAL_HELP : '') + HELP;
  setText(byId('map-help'), (drive.isPossible ? DRIVE_HELP : '') + (space.isOn ? SPACE_HELP : ofMap));
}

function follow(on) {
  map.follows = on;
  setAttribute(byId('follow'), 'aria-pressed', String(on));
}

function fit() {
  if (space.isOn) return space.reset();
  follow(false);
  map.fit();
}

function stop() {
  goal.cancel();
  tape.putAway();
  drive.releaseAll();
  stick.release();
  if (drive.isPossible) send({ op: 'stop' });
}

const controls = {
  'zoom-in': () => (space.isOn ? space : map).zoomBy(ZOOM_STEP),
  'zoom-out': () => (space.isOn ? space : map).zoomBy(1 / ZOOM_STEP),
  fit,
  follow: () => follow(!map.follows),
  stop,
};
for (const [id, action] of Object.entries(controls)) byId(id).addEventListener('click', action);

listenToKeys({
  goal,
  tape,
  drive,
  view: map,
  onKey: {
    '+': controls['zoom-in'],
    '=': controls['zoom-in'],
    '-': controls['zoom-out'],
    0: fit,
    f: () => space.isOn || controls.follow(),
    g: () => space.isOn || goal.togglePicking(),
    m: () => space.isOn || tape.toggle(),
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
    setHidden(byId('stick'), !message.canDrive);
    tellHelp();
    setFamilyColours(message.colours);
    restart.setWorld(message, sensors.wanted);
    welcome.setWorld(message);
    sensors.setWorld(message);
    robot.setWorld(message);
    space.setWorld(message);
    log.clear();
    depth.clear();
    depthSensor = message.depthSensor;
    map.setWorld(message);
  },

  state(message) {
    map.setState(message);
    robot.setState(message);
    time.setState(message);
    sensors.setState(message);
    space.setState(message);
    welcome.setState(message);
    depth.setState(message.sensors);
    const camera = message.sensors.find(({ name }) => name === depthSensor);
    if (camera) depth.expect(camera);
  },

  log: ({ lines }) => log.add(lines),
  depth: (message) => depth.setFrame(message),
  record: (message) => sensors.setRecord(message),
  space: (message) => space.setSpace(message),
  refused: ({ message }) => notifyRefusal(message),
};
let depthSensor = null;

connection.addEventListener('message', ({ detail }) => receivers[detail.op]?.(detail));
connection.connect();
