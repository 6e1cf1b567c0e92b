// Fetches tiles of the map and paints them in the theme's colours, so that the page itself never waits for them.

import { channels } from './colours.js';

const OCCUPIED_BELOW = 100;
const FREE_FROM = 230;

function paint(data, theme) {
  const [free, unknown, occupied] = [theme.free, theme.unknown, theme.occupied].map(channels);
  for (let at = 0; at < data.length; at += 4) {
    const colour = data[at] < OCCUPIED_BELOW ? occupied : data[at] >= FREE_FROM ? free : unknown;
    data[at] = colour[0];
    data[at + 1] = colour[1];
    data[at + 2] = colour[2];
    data[at + 3] = 255;
  }
}

async function load(path, theme) {
  const response = await fetch(path);
  if (!response.ok) throw new Error(`${path}: ${response.status}`);
  const grey = await createImageBitmap(await response.blob());
  const canvas = new OffscreenCanvas(grey.width, grey.height);
  const context = canvas.getContext('2d', { willReadFrequently: true });
  context.drawImage(grey, 0, 0);
  const pixels = context.getImageData(0, 0, canvas.width, canvas.height);
  paint(pixels.data, theme);
  context.putImageData(pixels, 0, 0);
  return canvas.transferToImageBitmap();
}

onmessage = async ({ data: { path, theme, round } }) => {
  try {
    const picture = await load(path, theme);
    postMessage({ path, round, picture }, [picture]);
  } catch {
    postMessage({ path, round, picture: null });
  }
};
