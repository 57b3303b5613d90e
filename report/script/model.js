// The figures of the report as a tree of modules with their signals, made from the arrays of
// the file. Calling order: load once, then sumsIn for each stretch of time looked at.
/* exported Model */
/* global Text */
'use strict';

const Model = (() => {
  const MODULE_COLUMNS = [
    'signals',
    'bits',
    'toggles',
    'glitches',
    'still',
    'high',
    'unknown',
    'own_bits',
    'own_toggles',
  ];
  const SIGNAL_COLUMNS = ['bits', 'toggles', 'glitches', 't1', 'tx', 'tz'];

  // Numbers beyond 2^53 are written as text.
  function toNumbers(values = []) {
    const numbers = new Float64Array(values.length);
    for (let at = 0; at < values.length; ++at) numbers[at] = Number(values[at]);
    return numbers;
  }

  function columns(from, names, length) {
    const all = {};
    for (const name of names) {
      all[name] = toNumbers(from[name]);
      if (all[name].length !== length) throw new Error(`the figures "${name}" are incomplete`);
    }
    return all;
  }

  function makeModule(data, all, id) {
    return {
      id,
      name: data.name[id],
      depth: data.depth[id],
      parent: null,
      children: [],
      end: id + 1, // the modules below are id + 1 to end - 1
      path: '',
      declared: all.signals[id], // names, here and below
      bits: all.bits[id],
      toggles: all.toggles[id],
      glitches: all.glitches[id],
      still: all.still[id],
      high: all.high[id],
      unknown: all.unknown[id],
      ownBits: all.own_bits[id],
      // What belongs to it and to the modules below.
      sums: { ownBits: all.own_bits[id], ownToggles: all.own_toggles[id] },
      hidden: 0, // modules below that the file does not list
      rest: null, // signals of its own that the file does not list
      firstSignal: 0,
      endSignal: 0, // signals of its own and of the modules below
    };
  }

  // A module follows its parent, after whatever its elder siblings hold.
  function makeTree(data) {
    const all = columns(data, MODULE_COLUMNS, data.name.length);
    const modules = data.name.map((_, id) => makeModule(data, all, id));
    const open = [];
    for (const module of modules) {
      while (open.length > 0 && open[open.length - 1].depth >= module.depth) open.pop();
      if (open.length > 0) {
        module.parent = open[open.length - 1];
        module.parent.children.push(module);
        const front = module.parent.path;
        module.path = front === '' ? module.name : `${front}.${module.name}`;
      }
      open.push(module);
    }
    for (const { parent, end, declared, sums } of [...modules].reverse()) {
      if (!parent) continue;
      parent.end = Math.max(parent.end, end);
      parent.declared += declared;
      parent.sums.ownBits += sums.ownBits;
      parent.sums.ownToggles += sums.ownToggles;
    }
    return modules;
  }

  function makeSignals(data, modules, observed) {
    const all = columns(data, SIGNAL_COLUMNS, data.name.length);
    return data.name.map((name, at) => {
      const module = modules[data.module[at]];
      const bits = all.bits[at];
      const [t1, tx, tz] = [all.t1[at], all.tx[at], all.tz[at]];
      const time = bits * observed;
      const shareOf = (ticks) => (time > 0 ? ticks / time : null);
      return {
        module,
        name,
        path: module.path === '' ? name : `${module.path}.${name}`,
        bits,
        toggles: all.toggles[at],
        glitches: all.glitches[at],
        t0: time - t1 - tx - tz,
        t1,
        tx,
        tz,
        high: shareOf(t1),
        unknown: shareOf(tx),
        floating: shareOf(tz),
      };
    });
  }

  // The signals of a module and of all below it are neighbours, as their modules are.
  function findSignals(modules, signals) {
    let at = 0;
    const firsts = modules.map((module) => {
      while (at < signals.length && signals[at].module.id < module.id) ++at;
      return at;
    });
    for (const module of modules) {
      module.firstSignal = firsts[module.id];
      module.endSignal = module.end < modules.length ? firsts[module.end] : signals.length;
    }
  }

  function noteCuts(data, modules) {
    const { rest, hidden } = data;
    (rest?.module ?? []).forEach((id, at) => {
      modules[id].rest = { signals: Number(rest.signals[at]), toggles: Number(rest.toggles[at]) };
    });
    (hidden?.module ?? []).forEach((id, at) => {
      modules[id].hidden = Number(hidden.modules[at]);
    });
  }

  // What switched over time: for each module that has a course, toggles per window.
  function makeCourses(data, modules) {
    const edges = toNumbers(data?.edges);
    const windows = Math.max(0, edges.length - 1);
    const ofModule = new Array(modules.length).fill(null);
    (data?.module ?? []).forEach((id, at) => {
      ofModule[id] = toNumbers(data.toggles[at]);
      if (ofModule[id].length !== windows) throw new Error('the activity over time is incomplete');
    });
    return { edges, windows, ofModule, gaps: data?.gaps ?? [] };
  }

  // Toggles of each module with all below it in the windows [from, to); unknown where a
  // module's toggles are in the course of a module above it.
  function sumsIn(model, from, to) {
    const { ofModule } = model.courses;
    const totals = new Array(model.modules.length).fill(null);
    for (let id = ofModule.length - 1; id >= 0; --id) {
      if (!ofModule[id]) continue;
      let sum = totals[id] ?? 0;
      for (let at = from; at < to; ++at) sum += ofModule[id][at];
      totals[id] = sum;
      const { parent } = model.modules[id];
      if (parent) totals[parent.id] = (totals[parent.id] ?? 0) + sum;
    }
    return totals;
  }

  // Toggles per window of a module with all below it.
  function course(model, module) {
    const sum = new Float64Array(model.courses.windows);
    for (let id = module.id; id < module.end; ++id) {
      const own = model.courses.ofModule[id];
      if (own) own.forEach((toggles, at) => (sum[at] += toggles));
    }
    return sum;
  }

  function load(data) {
    if (data.format !== 'kesncd-report' || data.version !== 1) {
      throw new Error('the figures are not those of an activity report that this page knows');
    }
    const modules = makeTree(data.modules);
    const time = { ...data.time };
    for (const key of ['begin', 'end', 'observed']) time[key] = Number(time[key]);
    const signals = makeSignals(data.signals, modules, time.observed);
    findSignals(modules, signals);
    noteCuts(data, modules);
    const courses = makeCourses(data.activity, modules);
    const hasTime = Text.isKnown(time.tick_fs) && time.tick_fs > 0;
    time.tick_fs = hasTime ? Number(time.tick_fs) : null;
    // Rates are per µs, or per 1000 ticks of a dump without a time scale.
    const unit = hasTime ? 1e9 / time.tick_fs : 1000;
    const rate = (toggles, bits, ticks = time.observed) =>
      bits > 0 && ticks > 0 ? toggles / bits / (ticks / unit) : null;
    return { data, modules, signals, time, courses, rate, rateUnit: hasTime ? 'µs' : '1000 ticks' };
  }

  return { course, load, sumsIn };
})();
