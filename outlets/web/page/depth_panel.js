// The depth camera's last frame with its components coloured.

import { byId, setHidden, setText } from './dom.js';
import { count } from './format.js';

export class DepthPanel {
  #sensor = '';

  /** The panel shows itself as soon as there is a frame. */
  setFrame({ sensor, png, width, height, components, beyond }) {
    this.#sensor = sensor;
    const image = byId('depth');
    image.src = `data:image/png;base64,${png}`;
    image.width = width;
    image.height = height;
    image.alt = `Depth frame of ${sensor} with ${count(components, 'component')}`;
    const farOff = beyond > 0 ? `, ${count(beyond, 'pixel')} beyond 15 m` : '';
    setText(byId('depth-caption'), count(components, 'component') + farOff);
    setHidden(image, false);
    setHidden(byId('depth-empty'), true);
    this.#show();
  }

  /** Forgets the frame, as another program may show other things. */
  clear() {
    this.#sensor = '';
    setHidden(byId('depth'), true);
    setHidden(byId('depth-empty'), false);
    setText(byId('depth-caption'), '');
  }

  /** Without its sensor, the frame is an old one. */
  setState(sensors) {
    const sensor = sensors.find(({ name }) => name === this.#sensor);
    const isLive = sensor !== undefined && sensor.started;
    byId('depth').classList.toggle('old', !isLive);
    if (sensor && !isLive) setText(byId('depth-caption'), 'the last one, the camera is stopped');
  }

  /** `camera` is the sensor that gives frames. */
  expect(camera) {
    if (this.#sensor) return;
    setText(byId('depth-empty'), camera.started ? `Waiting for a frame of ${camera.name}.` : `Subscribe to ${camera.name} to see what it sees.`);
    this.#show();
  }

  #show() {
    setHidden(byId('depth-section'), false);
    document.body.classList.add('has-depth');
  }
}
