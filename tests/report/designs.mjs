// Makes the figures of designs that were never simulated, always the same ones: a system with a
// processor to look at, and one as large as a report has room for.

// Numbers that look random and are the same on every run.
function makeRandom(seed) {
  let state = seed;
  return () => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return state / 2 ** 32;
  };
}

const sum = (values) => values.reduce((total, value) => total + value, 0);

// A module as the report's figures have it, filled from its signals and from those below.
class Module {
  constructor(name, parent) {
    Object.assign(this, { name, parent, children: [], signals: [], course: null });
    if (parent) parent.children.push(this);
  }

  all() {
    return [this, ...this.children.flatMap((child) => child.all())];
  }
}

function fill(module, observed) {
  for (const child of module.children) fill(child, observed);
  const { signals, children } = module;
  const total = (key) => sum(signals.map((s) => s[key])) + sum(children.map((c) => c.total[key]));
  module.total = Object.fromEntries(
    ['bits', 'toggles', 'glitches', 't1', 'tx', 'still'].map((key) => [key, total(key)]),
  );
  const time = module.total.bits * observed;
  module.high = time > 0 ? Number((module.total.t1 / time).toPrecision(4)) : 0;
  module.unknown = time > 0 ? Number((module.total.tx / time).toPrecision(4)) : 0;
}

// The figures as the program writes them; data_format.md says what they are.
function toFigures(root, { dump, observed, windows, tickFs, ...more }) {
  root.course = new Array(windows).fill(0);
  fill(root, observed);
  const modules = root.all();
  const depthOf = (module) => (module.parent ? depthOf(module.parent) + 1 : 0);
  const ids = new Map(modules.map((module, id) => [module, id]));
  const signals = modules.flatMap((module) => module.signals.map((signal) => ({ module, ...signal })));
  const withCourse = modules.filter(({ course }) => course);
  const ofSignals = (key) => signals.map((signal) => signal[key]);
  return {
    format: 'kesncd-report',
    version: 1,
    program: 'kesncd 1.0.0',
    dump,
    time: { tick_fs: tickFs, begin: 0, end: observed, observed },
    counts: {
      modules: modules.length - 1,
      signals: signals.length,
      still_signals: signals.filter(({ toggles }) => toggles === 0).length,
      x_signals: signals.filter(({ tx }) => tx > 0).length,
      glitch_signals: signals.filter(({ glitches }) => glitches > 0).length,
      left_out: 0,
    },
    modules: {
      name: modules.map(({ name }) => name),
      depth: modules.map(depthOf),
      signals: modules.map((module) => module.signals.length),
      bits: modules.map(({ total }) => total.bits),
      toggles: modules.map(({ total }) => total.toggles),
      glitches: modules.map(({ total }) => total.glitches),
      still: modules.map(({ total }) => total.still),
      high: modules.map(({ high }) => high),
      unknown: modules.map(({ unknown }) => unknown),
      own_bits: modules.map((module) => sum(module.signals.map(({ bits }) => bits))),
      own_toggles: modules.map((module) => sum(module.signals.map(({ toggles }) => toggles))),
    },
    activity: {
      edges: Array.from({ length: windows + 1 }, (_, at) => Math.floor((at * observed) / windows)),
      module: withCourse.map((module) => ids.get(module)),
      toggles: withCourse.map(({ course }) => course),
    },
    signals: {
      module: signals.map(({ module }) => ids.get(module)),
      name: ofSignals('name'),
      bits: ofSignals('bits'),
      toggles: ofSignals('toggles'),
      glitches: ofSignals('glitches'),
      t1: ofSignals('t1'),
      tx: ofSignals('tx'),
      tz: ofSignals('tz'),
    },
    ...more,
  };
}

const NAMES = ['data', 'valid', 'state', 'addr', 'ready', 'mask', 'tag', 'cnt', 'sel', 'req', 'gnt', 'err'];

// A module's signals and its course: toggles per window are shared out among the signals.
function addSignals(module, count, random, { observed, course }) {
  module.course = course;
  const toggles = sum(course);
  const weights = Array.from({ length: count }, () => (random() < 0.25 ? 0 : random() ** 3));
  const weight = sum(weights) || 1;
  let left = toggles;
  module.signals = weights.map((own, at) => {
    const bits = at % 3 === 0 ? 8 * (1 + Math.floor(random() * 4)) : 1;
    const isLast = at === count - 1;
    const part = isLast ? left : Math.floor((toggles * own) / weight);
    left -= part;
    const tx = random() < 0.08 ? Math.floor(random() * 0.4 * bits * observed) : 0;
    const t1 = Math.floor((bits * observed - tx) * random());
    const name = `${NAMES[at % NAMES.length]}${at < NAMES.length ? '' : `_${Math.floor(at / NAMES.length)}`}`;
    const glitches = tx > 0 && random() < 0.5 ? Math.floor(1 + random() * 40) : 0;
    return {
      name: bits > 1 ? `${name}[${bits - 1}:0]` : name,
      bits,
      toggles: part,
      glitches,
      t1,
      tx,
      tz: 0,
      still: part === 0 ? bits : 0,
    };
  });
}

// Toggles per window: a block works in bursts, and is quiet for as long as reset holds.
function makeCourse(windows, random, level) {
  const start = 0.04 + random() * 0.3;
  const period = 8 + random() * 30;
  const duty = 0.2 + random() * 0.8;
  return Array.from({ length: windows }, (_, at) => {
    if (at / windows < start * 0.4) return 0;
    const isBusy = (at % period) / period < duty && at / windows > start;
    const burst = at > windows * 0.62 && at < windows * 0.68 ? 1.9 : 1;
    return Math.floor(level * burst * (isBusy ? 0.7 + 0.6 * random() : 0.08 * random()));
  });
}

const SYSTEM = {
  cpu: {
    fetch: { icache: {}, branch: {} },
    decode: {},
    alu: { mul: {}, div: {}, shift: {} },
    lsu: { dcache: {}, tlb: {} },
    csr: {},
  },
  noc: { router_0: {}, router_1: {}, router_2: {}, router_3: {} },
  dma: { channel_0: {}, channel_1: {}, arbiter: {} },
  dsp: { mac_0: {}, mac_1: {}, mac_2: {}, mac_3: {}, coefficients: {} },
  peripherals: { uart: { tx: {}, rx: {} }, spi: {}, timer: {}, gpio: {} },
  debug: {},
};

export function makeSystem() {
  const random = makeRandom(7);
  const [observed, windows] = [184_000_000, 200];
  const grow = (name, parent, below, size) => {
    const module = new Module(name, parent);
    const level = name === 'debug' ? 0 : size * (0.3 + 2 * random());
    addSignals(module, Math.floor(8 + random() * 40), random, {
      observed,
      course: makeCourse(windows, random, level),
    });
    for (const [child, rest] of Object.entries(below)) grow(child, module, rest, size * (0.4 + random()));
    return module;
  };
  const root = new Module('', null);
  const bench = grow('soc_tb', root, {}, 40);
  grow('soc', bench, SYSTEM, 900);
  return toFigures(root, {
    dump: { name: 'soc_boot.vcd', simulator: 'a simulator 12.0', date: 'Tue Mar 4 10:12:31 2025' },
    observed,
    windows,
    tickFs: 1000,
    clocks: [
      { name: 'soc_tb.soc.clk', mhz: 500, reported_mhz: 500, reported_by: 'timing report' },
      { name: 'soc_tb.soc.peripherals.clk_slow', mhz: 24.9, reported_mhz: 25.6, reported_by: 'SDC' },
      { name: 'soc_tb.tck', mhz: 10, reported_mhz: null },
    ],
    findings: [
      {
        severity: 'warning',
        text: '3 time stamps go back; what follows them belongs to the step that is open',
      },
      { severity: 'note', text: 'x is the only value of 41 signals' },
    ],
    reached: [{ what: 'pins', reached: 48_211, total: 51_030, source: 'soc.v' }],
    notes: ['2 variables of type real have no bits and are left out.'],
  });
}

// What is left of 1,000,000 signals: as many modules, courses and signals as a report has.
export function makeLarge() {
  const random = makeRandom(11);
  const [observed, windows] = [2_000_000_000, 200];
  const [listedModules, courses, perModule] = [40_000, 500, 20_000 / 40_000];
  const root = new Module('', null);
  const top = new Module('chip', root);
  const made = [top];
  while (made.length < listedModules) {
    const parent = made[Math.floor(made.length * random() ** 3)];
    made.push(new Module(`u_block_${made.length}`, parent));
  }
  made.forEach((module, at) => {
    const count = random() < perModule ? 1 : 0;
    const level = at < courses ? 4000 * random() : 0;
    const course = makeCourse(windows, random, level);
    addSignals(module, at < courses ? 1 : count, random, { observed, course });
    if (at >= courses) module.course = null;
  });
  const figures = toFigures(root, {
    dump: { name: 'chip.vcd', simulator: 'a simulator', date: '' },
    observed,
    windows,
    tickFs: 1000,
  });
  figures.counts.signals = 1_000_000;
  figures.rest = { module: [1], signals: [1_000_000 - figures.signals.name.length], toggles: [0] };
  return figures;
}
