// What the map shows, by the colours of its pixels.

/** How many pixels of the map look like `[red, green, blue]`. */
export function countPixels(page, colour) {
  return page.evaluate(([red, green, blue]) => {
    const canvas = document.getElementById('map');
    const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
    let count = 0;
    for (let at = 0; at < data.length; at += 4) {
      const away = Math.abs(data[at] - red) + Math.abs(data[at + 1] - green) + Math.abs(data[at + 2] - blue);
      if (away < 60) ++count;
    }
    return count;
  }, colour);
}

/** Until `accepts` likes the count, looking once for each state that comes. */
export async function untilPixels(live, colour, accepts) {
  for (let looks = 0; looks < 100; ++looks) {
    if (accepts(await countPixels(live.page, colour))) return;
    await live.until(() => true);
  }
  throw new Error(`the map still shows ${await countPixels(live.page, colour)} pixels like ${colour}`);
}
