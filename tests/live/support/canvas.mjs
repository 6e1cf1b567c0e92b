// Reads the map's picture by the colours of its pixels.

/** The pixels of the map that look like `[red, green, blue]`: {width, places}, each place counted row by row. */
function findPixels(page, colour) {
  return page.evaluate(([red, green, blue]) => {
    const canvas = document.getElementById('map');
    const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
    const places = [];
    for (let at = 0; at < data.length; at += 4) {
      const away = Math.abs(data[at] - red) + Math.abs(data[at + 1] - green) + Math.abs(data[at + 2] - blue);
      if (away < 60) places.push(at / 4);
    }
    return { width: canvas.width, height: canvas.height, places };
  }, colour);
}

/** Counts the map's pixels of a colour. */
export async function countPixels(page, colour) {
  return (await findPixels(page, colour)).places.length;
}

/** The edges of what has this colour, for findEnlargement. */
export async function findOutline(page, colour) {
  const { width, height, places } = await findPixels(page, colour);
  const filled = new Set(places);
  const pixels = places.filter((at) => ![1, -1, width, -width].every((step) => filled.has(at + step)))
    .map((at) => [at % width, Math.floor(at / width)])
    .filter(([x, y]) => x > 0 && y > 0 && x < width - 1 && y < height - 1);
  return { width, height, pixels };
}

/**
 * The factor by which `after` is `before` enlarged about [left, top] and then moved by [right, down], NaN if it is not.
 * Edges may be a pixel off; what lay outside does not count.
 */
export function findEnlargement(before, after, [left, top], [right, down] = [0, 0]) {
  const placeOf = ([x, y]) => y * before.width + x;
  const near = new Set(before.pixels.flatMap(([x, y]) => [-1, 0, 1].flatMap((i) => [-1, 0, 1].map((j) => placeOf([x + i, y + j])))));
  const some = after.pixels.filter((_, index) => index % 10 === 0);
  let best = { share: 0.9, factor: NaN };
  for (let factor = 0.25; factor < 4; factor *= 1.002) {
    const sources = some.map(([x, y]) => [Math.round(left + (x - right - left) / factor), Math.round(top + (y - down - top) / factor)])
      .filter(([x, y]) => x >= 0 && y >= 0 && x < before.width && y < before.height);
    const share = sources.filter((source) => near.has(placeOf(source))).length / Math.max(sources.length, some.length / 2);
    if (share > best.share) best = { share, factor };
  }
  return best.factor;
}

/** Waits until `accepts(count)`; counts after each state message. */
export async function untilPixels(live, colour, accepts) {
  for (let looks = 0; looks < 100; ++looks) {
    if (accepts(await countPixels(live.page, colour))) return;
    await live.until(() => true);
  }
  throw new Error(`the map still shows ${await countPixels(live.page, colour)} pixels like ${colour}`);
}

/** Takes the map as it is for findChange. */
export function keepPicture(page) {
  return page.evaluate(() => {
    const canvas = document.getElementById('map');
    globalThis.kept = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
  });
}

/** Returns the size of the map's change since the kept picture, and its centre [left, top]. */
export function findChange(page) {
  return page.evaluate(() => {
    const { data, width, height } = globalThis.kept;
    const now = document.getElementById('map').getContext('2d').getImageData(0, 0, width, height).data;
    let [amount, left, top] = [0, 0, 0];
    for (let at = 0; at < data.length; at += 4) {
      const change = Math.abs(now[at] - data[at]) + Math.abs(now[at + 1] - data[at + 1]) + Math.abs(now[at + 2] - data[at + 2]);
      amount += change;
      left += change * ((at / 4) % width);
      top += change * Math.floor(at / 4 / width);
    }
    return { amount, middle: [left / amount, top / amount] };
  });
}
