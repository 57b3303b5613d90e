// The figures of the report as a tree of modules with their signals, made from the arrays of the
// file. Calling order: load once, then sumsIn for each stretch of time looked at.
//
// The file has a list for each figure (see report/data_format.md); here they become objects:
//
//   module {id, name, path, depth, parent, children, end, bits, toggles, ..., sums, rest, hidden}
//   signal {module, name, path, bits, toggles, t0, t1, tx, tz, high, unknown, floating}
//
// Modules stay in the file's order, depth first: those below module id are id + 1 to end - 1, so a
// subtree is a slice of the list. The same holds for signals.
/* exported Model */
/* global Text */
'use strict';

const Model = (() => {
  // Lists in the file that must all be as long as the list of names.
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

  // Numbers beyond 2^53 are written as text. A missing list is an empty one here, and found out by
  // its length.
  function toNumbers(values = []) {
    // Doubles: a page of 20,000 signals needs no more exact ones.
    const numbers = new Float64Array(values.length);
    for (let at = 0; at < values.length; ++at) numbers[at] = Number(values[at]);
    return numbers;
  }

  // Throws where the file is incomplete, so that no figure is undefined later.
  function columns(from, names, length) {
    const all = {};
    for (const name of names) {
      all[name] = toNumbers(from[name]);
      if (all[name].length !== length) throw new Error(`the figures "${name}" are incomplete`);
    }
    return all;
  }

  // What only the tree knows (parent, path, end) is filled in by makeTree.
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

  // A module follows its parent, after whatever its elder siblings hold. `depth` alone says which
  // module is in which, as in an outline.
  function makeTree(data) {
    const all = columns(data, MODULE_COLUMNS, data.name.length);
    const modules = data.name.map((_, id) => makeModule(data, all, id));
    // The modules around the one that comes next, outermost first.
    const open = [];
    for (const module of modules) {
      // Those that are not around it are complete.
      while (open.length > 0 && open[open.length - 1].depth >= module.depth) open.pop();
      if (open.length > 0) {
        module.parent = open[open.length - 1];
        module.parent.children.push(module);
        // The whole dump has no name, so its children's paths begin with their own.
        const front = module.parent.path;
        module.path = front === '' ? module.name : `${front}/${module.name}`;
      }
      open.push(module);
    }
    // Backwards, so that a module is complete before it is added to its parent.
    for (const { parent, end, declared, sums } of [...modules].reverse()) {
      if (!parent) continue;
      parent.end = Math.max(parent.end, end);
      parent.declared += declared;
      parent.sums.ownBits += sums.ownBits;
      parent.sums.ownToggles += sums.ownToggles;
    }
    return modules;
  }

  // `observed` is the time in ticks; a signal's times are sums over its bits.
  function makeSignals(data, modules, observed) {
    const all = columns(data, SIGNAL_COLUMNS, data.name.length);
    return data.name.map((name, at) => {
      const module = modules[data.module[at]];
      const bits = all.bits[at];
      const [t1, tx, tz] = [all.t1[at], all.tx[at], all.tz[at]];
      // All bits' time together, of which shares are taken.
      const time = bits * observed;
      const shareOf = (ticks) => (time > 0 ? ticks / time : null);
      return {
        module,
        name,
        path: module.path === '' ? name : `${module.path}/${name}`,
        bits,
        toggles: all.toggles[at],
        glitches: all.glitches[at],
        // The file leaves T0 out, as the four times add up.
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

  // The signals of a module and of all below it are neighbours, as their modules are. Both lists
  // are in the order of modules, so one walk is enough.
  function findSignals(modules, signals) {
    let at = 0;
    // By module, where its signals begin, or would begin if it had any.
    const firsts = modules.map((module) => {
      while (at < signals.length && signals[at].module.id < module.id) ++at;
      return at;
    });
    for (const module of modules) {
      module.firstSignal = firsts[module.id];
      // The end of a subtree's signals is where the next module's begin.
      module.endSignal = module.end < modules.length ? firsts[module.end] : signals.length;
    }
  }

  // Both lists are short: most modules have nothing left out.
  function noteCuts(data, modules) {
    const { rest, hidden } = data;
    (rest?.module ?? []).forEach((id, at) => {
      modules[id].rest = { signals: Number(rest.signals[at]), toggles: Number(rest.toggles[at]) };
    });
    (hidden?.module ?? []).forEach((id, at) => {
      modules[id].hidden = Number(hidden.modules[at]);
    });
  }

  // What switched over time: for each module that has a course, toggles per window. Module 0 has a
  // course whenever there are windows.
  function makeCourses(data, modules) {
    // Without activity over time there are no edges and no windows.
    const edges = toNumbers(data?.edges);
    const windows = Math.max(0, edges.length - 1);
    const ofModule = new Array(modules.length).fill(null);
    (data?.module ?? []).forEach((id, at) => {
      ofModule[id] = toNumbers(data.toggles[at]);
      if (ofModule[id].length !== windows) throw new Error('the activity over time is incomplete');
    });
    return { edges, windows, ofModule, gaps: data?.gaps ?? [] };
  }

  // Toggles of each module with all below it in the windows [from, to); unknown where a module's
  // toggles are in the course of a module above it. From the last module to the first: those below
  // are complete before their parent.
  function sumsIn(model, from, to) {
    const { ofModule } = model.courses;
    const totals = new Array(model.modules.length).fill(null);
    for (let id = ofModule.length - 1; id >= 0; --id) {
      // Its toggles are in the course of a module above, where nobody can tell them apart.
      if (!ofModule[id]) continue;
      let sum = totals[id] ?? 0;
      for (let at = from; at < to; ++at) sum += ofModule[id][at];
      totals[id] = sum;
      const { parent } = model.modules[id];
      if (parent) totals[parent.id] = (totals[parent.id] ?? 0) + sum;
    }
    return totals;
  }

  // Toggles per window of a module with all below it. Courses hold what no module below with a
  // course of its own holds, so this is their sum.
  function course(model, module) {
    const sum = new Float64Array(model.courses.windows);
    for (let id = module.id; id < module.end; ++id) {
      const own = model.courses.ofModule[id];
      if (own) own.forEach((toggles, at) => (sum[at] += toggles));
    }
    return sum;
  }

  // `data` is the object of the file. Throws an Error with a sentence for the reader where it is
  // not usable.
  function load(data) {
    if (data.format !== 'kesncd-report' || data.version !== 1) {
      throw new Error('the figures are not those of an activity report that this page knows');
    }
    const modules = makeTree(data.modules);
    const time = { ...data.time };
    // 64 bits may come as strings.
    for (const key of ['begin', 'end', 'observed']) time[key] = Number(time[key]);
    const signals = makeSignals(data.signals, modules, time.observed);
    findSignals(modules, signals);
    noteCuts(data, modules);
    // Optional: a dump without time has none.
    const courses = makeCourses(data.activity, modules);
    const hasTime = Text.isKnown(time.tick_fs) && time.tick_fs > 0;
    time.tick_fs = hasTime ? Number(time.tick_fs) : null;
    // Rates are per µs, or per 1000 ticks of a dump without a time scale.
    const unit = hasTime ? 1e9 / time.tick_fs : 1000;
    // Per bit, so that modules of any size can be compared; null where nothing was observed.
    const rate = (toggles, bits, ticks = time.observed) =>
      bits > 0 && ticks > 0 ? toggles / bits / (ticks / unit) : null;
    return { data, modules, signals, time, courses, rate, rateUnit: hasTime ? 'µs' : '1000 ticks' };
  }

  return { course, load, sumsIn };
})();
