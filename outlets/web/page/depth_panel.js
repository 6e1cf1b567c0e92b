// The depth camera's last image with its components coloured.

import { byId, setHidden, setText } from './dom.js';
import { count } from './format.js';

export class DepthPanel {
  #sensor = '';

  /** Shows a depth image, and the panel with it. */
  setFrame({ sensor, png, width, height, components, beyond }) {
    this.#sensor = sensor;
    const image = byId('depth');
    image.src = `data:image/png;base64,${png}`;
    image.width = width;
    image.height = height;
    image.alt = `Depth image of ${sensor} with ${count(components, 'component')}`;
    const farOff = beyond > 0 ? `, ${count(beyond, 'pixel')} beyond range` : '';
    setText(byId('depth-caption'), count(components, 'component') + farOff);
    setHidden(image, false);
    setHidden(byId('depth-empty'), true);
    this.#show();
  }

  /** Forgets the image, because another program may show other things. */
  clear() {
    this.#sensor = '';
    setHidden(byId('depth'), true);
    setHidden(byId('depth-empty'), false);
    setText(byId('depth-caption'), '');
  }

  /** Marks the image as old while its camera is stopped. */
  setState(sensors) {
    const sensor = sensors.find(({ name }) => name === this.#sensor);
    const isLive = sensor !== undefined && sensor.started;
    byId('depth').classList.toggle('old', !isLive);
    if (sensor && !isLive) setText(byId('depth-caption'), 'last image; the camera is stopped');
  }

  /** `camera` is the sensor that gives images. */
  expect(camera) {
    if (this.#sensor) return;
    setText(byId('depth-empty'), camera.started ? `Waiting for an image of ${camera.name}.` : `Subscribe to ${camera.name} to see what it sees.`);
    this.#show();
  }

  #show() {
    setHidden(byId('depth-section'), false);
    document.body.classList.add('has-depth');
  }
}
