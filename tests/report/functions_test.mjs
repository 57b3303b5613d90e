// What the report's scripts compute, without a browser: texts of figures, times and names against
// tables and exact arithmetic, and the tree of random figures against a plain account.
//   REPORT_D3=/usr/share/nodejs node --test tests/report/functions_test.mjs
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import vm from 'node:vm';

const source = (name) => readFileSync(new URL(`../../report/script/${name}.js`, import.meta.url), 'utf8');
const d3Format = readFileSync(join(process.env.REPORT_D3, 'd3-format/dist/d3-format.min.js'), 'utf8');
const { Text, Model } = new vm.Script(
  `${d3Format};${source('text')};${source('model')};({ Text, Model })`,
).runInNewContext({ d3: {} });

// What a script's own realm made, as one of this realm.
const plain = (value) => JSON.parse(JSON.stringify(value));

// Numbers that are the same in every run.
function randomFrom(seed) {
  let state = seed;
  return (limit) => {
    state = (Math.imul(state, 1103515245) + 12345) >>> 0;
    return (state >>> 8) % limit;
  };
}

test('counts and figures say no more than is known', () => {
  const rows = [
    [Text.count, 0, '0'],
    [Text.count, 1234567, '1,234,567'],
    [Text.count, 2 ** 53 - 1, '9,007,199,254,740,991'],
    [Text.count, 2 ** 53, '≈9,007,199,254,740,992'],
    [Text.count, null, '–'],
    [Text.count, undefined, '–'],
    [Text.count, NaN, '–'],
    [Text.count, Infinity, '–'],
    [Text.figure, 0, '0'],
    [Text.figure, 0.12345, '0.1235'],
    [Text.figure, 0.001, '0.001'],
    [Text.figure, 0.00012345, '1.23e-4'],
    [Text.figure, 123456.7, '123,500'],
    [Text.figure, null, '–'],
    [Text.share, 0, '0 %'],
    [Text.share, 1, '100 %'],
    [Text.share, 0.5, '50.0 %'],
    [Text.share, 1e-9, '<0.01 %'],
    [Text.share, 0.00005, '<0.01 %'],
    [Text.share, 0.0001, '0.01 %'],
    [Text.share, 0.00999, '1.00 %'],
    [Text.share, 0.9994, '99.94 %'],
    [Text.share, 0.99999999, '99.99 %'], // not quite all
    [Text.share, NaN, '–'],
  ];
  for (const [write, value, text] of rows) assert.equal(write(value), text, `${write.name}(${value})`);
});

test('names show what would be invisible or turn the text around', () => {
  const rows = [
    ['top.u[3]', 'top.u[3]'],
    ['a\u0000b\nc\u007f\u009f', 'a\\u{0}b\\u{a}c\\u{7f}\\u{9f}'],
    ['\u202eabc\u2069\u200b\ufeff', '\\u{202e}abc\\u{2069}\\u{200b}\\u{feff}'],
    ['<script>&amp;"', '<script>&amp;"'], // text stays text: nothing is escaped for markup here
    ['größe €', 'größe €'],
    ['x'.repeat(240), 'x'.repeat(240)],
    [`${'a'.repeat(200)}${'z'.repeat(200)}`, `${'a'.repeat(120)}…${'z'.repeat(120)}`],
  ];
  for (const [name, shown] of rows) assert.equal(Text.name(name), shown);
});

test('times are in their natural unit', () => {
  const rows = [
    [0, 1e6, '0'],
    [1, 1, '1 fs'],
    [999, 1, '999 fs'],
    [1000, 1, '1 ps'],
    [1500, 1e6, '1.5 µs'],
    [1, 1e15, '1 s'],
    [5000, 1e15, '5,000 s'],
    [123456789, 1e6, '123.457 ms'],
    [2.5, 1000, '2.5 ps'],
    [0.25, 1, '0.25 fs'],
    [7, null, '7 ticks'],
    [1234, undefined, '1,234 ticks'],
  ];
  for (const [ticks, tick, text] of rows) assert.equal(Text.time(ticks, tick), text);
});

test('times for options of the program are exact', () => {
  const zeros = { fs: 0n, ps: 3n, ns: 6n, us: 9n, ms: 12n, s: 15n };
  const random = randomFrom(1);
  for (let round = 0; round < 5000; ++round) {
    const ticks = random(2 ** 20) * 10 ** random(9);
    const tick = 10 ** random(16);
    const [, whole, fraction = '', unit] = /^(\d+)(?:\.(\d*[1-9]))?([a-z]+)$/.exec(Text.option(ticks, tick));
    const digits = BigInt(fraction.length);
    assert.ok(digits <= zeros[unit]);
    const femtoseconds = BigInt(whole + fraction) * 10n ** (zeros[unit] - digits);
    assert.equal(femtoseconds, BigInt(ticks) * BigInt(tick), `${ticks} of ${tick}`);
    assert.ok(unit === 's' || BigInt(whole) < 1000n);
    assert.ok(unit === 'fs' || BigInt(whole) > 0n);
  }
  assert.equal(Text.option(0, 1e6), '0fs');
  assert.equal(Text.option(1, 1000), '1ps');
  assert.equal(Text.option(1000, 1e12), '1s');
  for (const [ticks, tick] of [
    [2 ** 53, 1],
    [0.5, 1],
    [NaN, 1],
    [1, null],
    [1, undefined],
  ]) {
    assert.equal(Text.option(ticks, tick), null);
  }
});

// Modules in modules, some with a course and some with signals, and what they say.
function randomFigures(random) {
  const depth = [0];
  for (let id = 1; id < 1 + random(20); ++id) depth.push(1 + random(depth[id - 1] + 1));
  const ids = [...depth.keys()];
  const column = (limit) => ids.map(() => random(limit));
  const edges = [...Array(1 + random(6)).keys()].map((at) => 10 * at);
  // A module that has a course is in one that has one.
  const courses = [];
  for (const id of ids) {
    const around = depth.lastIndexOf(depth[id] - 1, id);
    if (id === 0 || (courses.includes(around) && random(3) > 0)) courses.push(id);
  }
  const signalModules = ids.flatMap((id) => Array(random(4)).fill(id));
  const each = (limit) => signalModules.map(() => random(limit));
  return {
    format: 'kesncd-report',
    version: 1,
    time: { tick_fs: random(2) === 0 ? null : 1000, begin: '0', end: '100', observed: '100' },
    modules: {
      name: ids.map((id) => (id === 0 ? '' : `m${id}`)),
      depth,
      ...Object.fromEntries(
        ['signals', 'bits', 'toggles', 'glitches', 'still', 'high', 'unknown', 'own_bits', 'own_toggles'].map(
          (name) => [name, column(50)],
        ),
      ),
    },
    activity: { edges, module: courses, toggles: courses.map(() => edges.slice(1).map(() => random(9))) },
    signals: {
      module: signalModules,
      name: signalModules.map((_, at) => `s${at}`),
      ...Object.fromEntries(
        ['bits', 'toggles', 'glitches', 't1', 'tx', 'tz'].map((name) => [name, each(40)]),
      ),
    },
    rest: { module: [0], signals: ['3'], toggles: ['18446744073709551615'] },
  };
}

test('the tree of random figures adds up as a plain account does', () => {
  const random = randomFrom(2);
  for (let round = 0; round < 300; ++round) {
    const figures = randomFigures(random);
    const model = Model.load(plain(figures));
    const { depth, name } = figures.modules;
    const isBelow = (id, top) => {
      for (let at = id; ; at = depth.lastIndexOf(depth[at] - 1, at)) {
        if (at === top) return true;
        if (at <= 0) return false;
      }
    };
    const below = (top) => depth.map((_, id) => id).filter((id) => isBelow(id, top));
    for (const module of model.modules) {
      const inside = below(module.id);
      const sum = (values) => inside.reduce((total, id) => total + values[id], 0);
      assert.deepEqual([module.id, module.end - module.id], [inside[0], inside.length]);
      assert.equal(module.declared, sum(figures.modules.signals));
      assert.deepEqual(plain(module.sums), {
        ownBits: sum(figures.modules.own_bits),
        ownToggles: sum(figures.modules.own_toggles),
      });
      const around = depth.map((_, id) => id).filter((id) => id > 0 && isBelow(module.id, id));
      assert.equal(module.path, around.map((id) => name[id]).join('/'));
      const signals = model.signals.slice(module.firstSignal, module.endSignal);
      assert.deepEqual(
        plain(signals.map((signal) => signal.name)),
        figures.signals.name.filter((_, at) => inside.includes(figures.signals.module[at])),
      );
      const course = figures.activity.edges
        .slice(1)
        .map((_, window) =>
          figures.activity.module.reduce(
            (total, id, at) => total + (inside.includes(id) ? figures.activity.toggles[at][window] : 0),
            0,
          ),
        );
      assert.deepEqual([...Model.course(model, module)], course);
      const from = random(course.length + 1);
      const hasCourse = figures.activity.module.includes(module.id);
      assert.equal(
        Model.sumsIn(model, from, course.length)[module.id],
        hasCourse ? course.slice(from).reduce((total, toggles) => total + toggles, 0) : null,
      );
    }
    for (const [at, signal] of model.signals.entries()) {
      const { bits, t1, tx, tz } = figures.signals;
      assert.equal(signal.t0 + t1[at] + tx[at] + tz[at], 100 * bits[at]);
      assert.equal(signal.high, bits[at] > 0 ? t1[at] / (100 * bits[at]) : null);
    }
    assert.equal(model.rateUnit, figures.time.tick_fs === null ? '1000 ticks' : 'µs');
    assert.equal(model.rate(6, 2, 50), figures.time.tick_fs === null ? 60 : 60000);
    assert.equal(model.rate(6, 0), null);
    assert.equal(model.modules[0].rest.toggles, 2 ** 64);
  }
});

test('incomplete figures are refused, not drawn', () => {
  const rows = [
    [(data) => (data.format = 'other'), /not those of an activity report/],
    [(data) => (data.version = 2), /not those of an activity report/],
    [(data) => data.modules.bits.pop(), /the figures "bits" are incomplete/],
    [(data) => delete data.modules.own_toggles, /the figures "own_toggles" are incomplete/],
    [(data) => data.signals.tz.push(1), /the figures "tz" are incomplete/],
    [(data) => data.activity.toggles[0].push(1), /the activity over time is incomplete/],
    [(data) => data.activity.edges.push(1000), /the activity over time is incomplete/],
  ];
  for (const [spoil, message] of rows) {
    const figures = randomFigures(randomFrom(3));
    assert.ok(Model.load(plain(figures)));
    spoil(figures);
    assert.throws(
      () => Model.load(plain(figures)),
      (error) => message.test(error.message),
      String(spoil),
    );
  }
  const figures = randomFigures(randomFrom(4));
  delete figures.activity; // a dump without time
  assert.equal(Model.load(plain(figures)).courses.windows, 0);
});
