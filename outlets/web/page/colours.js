// The families' colours, as the program tells them, and the theme's.

const OTHER = '#787878';
const GRAPHIC_CONTRAST = 3;
let families = {};

/** `colours`: #rrggbb by family. */
export function setFamilyColours(colours) {
  families = colours;
}

export function colourOfFamily(family) {
  return families[family] ?? OTHER;
}

export function channels(colour) {
  return [1, 3, 5].map((at) => parseInt(colour.slice(at, at + 2), 16));
}

function luminance(rgb) {
  const [red, green, blue] = rgb.map((value) => {
    const part = value / 255;
    return part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
}

function contrast(one, other) {
  const [low, high] = [luminance(one), luminance(other)].sort((a, b) => a - b);
  return (high + 0.05) / (low + 0.05);
}

function mixed(colour, end, share) {
  return colour.map((value) => Math.round(value + (end - value) * share));
}

/** Returns `colour`, made darker or lighter only as far as needed for contrast with `background`. */
export function readable(colour, background) {
  const ground = channels(background);
  const end = luminance(ground) > 0.18 ? 0 : 255;
  let found = channels(colour);
  for (let share = 0.05; contrast(found, ground) < GRAPHIC_CONTRAST && share <= 1; share += 0.05) {
    found = mixed(channels(colour), end, share);
  }
  return `rgb(${found.join(' ')})`;
}

const THEME_NAMES = ['free', 'unknown', 'occupied', 'ink', 'muted', 'surface', 'accent', 'bad', 'person'];

/** The style sheet's colours for the canvas, by name. */
export function readTheme() {
  const style = getComputedStyle(document.documentElement);
  return Object.fromEntries(THEME_NAMES.map((name) => [name, style.getPropertyValue(`--${name}`).trim()]));
}

/** Calls `listener` whenever the person's system turns light or dark. */
export function onThemeChange(listener) {
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', listener);
}
