// How the report writes numbers, times and names: names come from a dump and may hold any
// characters, so what would be invisible or turn the text around is spelled out.
//
// Examples:
//
//   count(1234567)       "1,234,567"        time(1500, 1e6)     "1.5 µs"
//   figure(0.12345)      "0.1235"           option(1500, 1e6)   "1.5us"
//   share(0.5)           "50.0 %"           name("a\u202eb")    "a\u{202e}b"
/* exported Text */
/* global d3 */
'use strict';

const Text = (() => {
  // What nobody knows, wherever a figure would stand.
  const UNKNOWN = '–';
  const LONGEST = 240; // characters of a name; what is saved as CSV has all
  // Each a thousand of the one before.
  const UNITS = ['fs', 'ps', 'ns', 'µs', 'ms', 's'];
  // Whole numbers, four digits with an SI prefix, four digits.
  const group = d3.format(',d');
  const short = d3.format('.4~s');
  const digits = d3.format(',.4~r');
  // Control characters, marks of direction, and what breaks lines or has no width.
  // eslint-disable-next-line no-control-regex
  const UNSEEN = /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff]/g;

  // Neither missing nor infinite, as a rate of no time would be.
  const isKnown = (value) => value !== null && value !== undefined && Number.isFinite(value);

  // The middle of a long name is left out: its beginning and its end tell most.
  function name(text) {
    const shown = text.length > LONGEST ? `${text.slice(0, LONGEST / 2)}…${text.slice(-LONGEST / 2)}` : text;
    return shown.replace(UNSEEN, (c) => `\\u{${c.codePointAt(0).toString(16)}}`);
  }

  // Counters are 64 bits wide; a number of the page has 53. "≈" says that the last digits are not
  // exact.
  function count(value) {
    if (!isKnown(value)) return UNKNOWN;
    return Number.isSafeInteger(value) ? group(value) : `≈${group(value)}`;
  }

  // Four digits; small ones as 1.23e-4.
  function figure(value) {
    if (!isKnown(value)) return UNKNOWN;
    return value !== 0 && Math.abs(value) < 0.001 ? value.toExponential(2) : digits(value);
  }

  // A share from 0 to 1 as a percentage. What is not quite nothing must not read as nothing.
  function share(value) {
    if (!isKnown(value)) return UNKNOWN;
    if (value === 0 || value === 1) return `${100 * value} %`;
    if (value < 0.0001) return '<0.01 %';
    // What is not quite all must not read as all.
    const percent = value > 0.9995 ? Math.min(99.99, 100 * value) : 100 * value;
    return `${percent.toFixed(percent < 1 || percent > 99.9 ? 2 : 1)} %`;
  }

  // A time in its natural unit, to six digits; ticks where the dump has no time scale. `ticks` may
  // be a fraction, at the marks of an axis.
  function time(ticks, tickFs) {
    if (!isKnown(tickFs)) return `${count(ticks)} ticks`;
    const fs = ticks * tickFs;
    if (fs === 0) return '0';
    // 1e-9 keeps 1000 fs from reading "1,000 fs" by an error of the logarithm.
    const step = Math.floor(Math.log10(Math.abs(fs)) / 3 + 1e-9);
    const unit = Math.max(0, Math.min(step, UNITS.length - 1));
    return `${d3.format(',.6~r')(fs / 1000 ** unit)} ${UNITS[unit]}`;
  }

  // The same time to the last digit, as options of the program take it. Exact by BigInt: the
  // program cuts the same window. null where a number of the page is not exact.
  function option(ticks, tickFs) {
    if (!isKnown(tickFs) || !Number.isSafeInteger(ticks)) return null;
    const fs = BigInt(ticks) * BigInt(tickFs);
    let unit = 0;
    // The largest unit that leaves a whole number before the point.
    while (unit < UNITS.length - 1 && fs >= 1000n ** BigInt(unit + 1)) ++unit;
    const scale = 1000n ** BigInt(unit);
    // The digits after the point, without zeros at the end.
    const rest = (fs % scale)
      .toString()
      .padStart(3 * unit, '0')
      .replace(/0+$/, '');
    return `${fs / scale}${unit > 0 && rest ? `.${rest}` : ''}${UNITS[unit].replace('µ', 'u')}`;
  }

  return { UNKNOWN, count, figure, isKnown, name, option, share, short, time };
})();
