// Pictures of the map's tiles, fetched when they are first asked for; those that were not wanted for long are dropped.

const MOST = 96;
const AGAIN = 2000;

export class TileStore {
  #worker = new Worker(new URL('map_worker.js', import.meta.url), { type: 'module' });
  #tiles = new Map();
  #theme = null;
  #round = 0;
  #onLoad;

  /** `onLoad` is called whenever a picture has come. */
  constructor(onLoad) {
    this.#onLoad = onLoad;
    this.#worker.onmessage = ({ data }) => this.#keep(data);
  }

  /** Forgets all pictures; the next are in this theme's colours. */
  reset(theme) {
    ++this.#round;
    this.#theme = { free: theme.free, unknown: theme.unknown, occupied: theme.occupied };
    this.#tiles.clear();
  }

  /** The picture of a tile, or null until it has come. */
  find(path) {
    const tile = this.#tiles.get(path);
    // A used tile moves to the end of the queue, so it is dropped last.
    this.#tiles.delete(path);
    this.#tiles.set(path, tile ?? { picture: null });
    if (!tile) this.#worker.postMessage({ path, theme: this.#theme, round: this.#round });
    return tile?.picture ?? null;
  }

  #keep({ path, round, picture }) {
    if (round !== this.#round) return;
    if (!picture) return void setTimeout(() => this.#tiles.delete(path) && this.#onLoad(), AGAIN);
    this.#tiles.set(path, { picture });
    for (const oldest of this.#tiles.keys()) {
      if (this.#tiles.size <= MOST) break;
      this.#tiles.delete(oldest);
    }
    this.#onLoad();
  }
}
