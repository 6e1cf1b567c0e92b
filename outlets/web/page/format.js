// Numbers and times as the page writes them.

export function fixed(value, digits) {
  if (value === null || value === undefined) return '–';
  // A value that rounds to 0 has no minus sign.
  return value.toFixed(digits).replace(/^-(?=[0.]*$)/, '').replace('-', '−');
}

/** "1.20 m"; a dash for null. */
export function withUnit(value, digits, unit) {
  return value === null || value === undefined ? fixed(null) : `${fixed(value, digits)} ${unit}`;
}

/** Nanoseconds as hours, minutes and seconds. */
export function clockText(nanoseconds, digits = 1) {
  const tenths = Math.floor(nanoseconds / (1e9 / 10 ** digits));
  const seconds = Math.floor(tenths / 10 ** digits);
  const two = (number) => String(number).padStart(2, '0');
  return `${Math.floor(seconds / 3600)}:${two(Math.floor(seconds / 60) % 60)}:${two(seconds % 60)}.` +
    String(tenths % 10 ** digits).padStart(digits, '0');
}

/** Radians as degrees, -180 to 180. */
export function degreesText(radians) {
  return `${fixed(Math.round(Math.atan2(Math.sin(radians), Math.cos(radians)) * 180 / Math.PI), 0)}°`;
}

export function count(number, one, many = `${one}s`) {
  return `${number} ${number === 1 ? one : many}`;
}
