// Puts the report together: what is looked at, a module and a stretch of time, is chosen in one
// place, and every picture and table follows it.
//
// State is in three places: `focus`, the module that is looked at; `stretch`, the windows from and
// to; and `list`, which signals are shown. enter(), select() and the list's buttons change them and
// then draw what depends on them:
//
//   focus    path, icicle, timeline, both tables
//   stretch  timeline, columns "In stretch" of the modules' table
//   list     the signals' table
/* global Facts Icicle Model Table Text Timeline */
'use strict';

(() => {
  const { make } = Table;
  // Every id is in report.html.
  const element = (id) => document.getElementById(id);
  // What a column shows: its value, for sorting and CSV, and the text of it.
  const byName = (value) => ({ name: true, value, text: (row) => Text.name(value(row)) });
  const byCount = (value) => ({ value, text: (row) => Text.count(value(row)) });
  const byShare = (value) => ({ value, text: (row) => Text.share(value(row)) });
  const byFigure = (value) => ({ value, text: (row) => Text.figure(value(row)) });

  // What a list of signals shows: all, or those that stand out. `order` is a column's key and
  // whether it falls; `count` names the whole dump's number of such signals, where the file says
  // it.
  const LISTS = {
    all: { title: 'All', order: ['toggles', true], takes: () => true },
    most: { title: 'Toggle most', order: ['toggles', true], takes: ({ toggles }) => toggles > 0 },
    never: {
      title: 'Never toggle',
      order: ['bits', true],
      takes: ({ toggles }) => toggles === 0,
      count: 'still_signals',
    },
    unknown: { title: 'x for long', order: ['x', true], takes: ({ tx }) => tx > 0, count: 'x_signals' },
    glitch: {
      title: 'Glitch',
      order: ['glitches', true],
      takes: ({ glitches }) => glitches > 0,
      count: 'glitch_signals',
    },
  };

  const LONGEST_PATH = 14; // steps that are shown of a path

  class Report {
    // Makes everything that is made once; draw() then shows it.
    constructor(model) {
      this.model = model;
      const [whole] = model.modules;
      // A dump with one top-level scope is entered at once: what is of interest is in it.
      this.focus = whole.children.length === 1 && whole.ownBits === 0 ? whole.children[0] : whole;
      // All of the span.
      this.stretch = { from: 0, to: model.courses.windows };
      // What the icicle's widths are: bits, or toggles as the page's radio buttons say.
      this.area = 'ownBits';
      this.list = LISTS.all;
      this.makeHead();
      this.makePictures();
      this.makeModuleTable();
      this.makeSignalTable();
    }

    // What does not change any more: the title, the facts and the notes.
    makeHead() {
      const { data } = this.model;
      const name = Text.name(data.dump.name);
      document.title = `Switching activity of ${name}`;
      element('dump-name').textContent = name;
      element('foot').textContent = data.program ? `Made by ${Text.name(data.program)}.` : '';
      Facts.draw(element('figures'), element('panels'), this.model);
      element('notes').replaceChildren(
        ...Facts.notes(this.model).map((textContent) => make('li', { textContent })),
      );
    }

    // After a key the focus would be lost with the old boxes, so it goes to the new picture's.
    makePictures() {
      const { model } = this;
      this.icicle = new Icicle.View(element('icicle'), element('icicle-readout'), model, (module, byKey) => {
        this.enter(module);
        if (byKey) element('icicle').querySelector('[tabindex="0"]').focus();
      });
      Icicle.drawScale(element('scale'), this.icicle.colour, model.rateUnit);
      for (const input of document.querySelectorAll('input[name="area"]')) {
        input.addEventListener('change', () => {
          this.area = input.value;
          this.drawIcicle();
        });
      }
      // The same figures as a table, written when it is opened.
      this.writeIcicleTable = Table.below(element('icicle-table'), () => this.icicle.table());
      // Without stamps there is nothing over time.
      if (model.courses.windows > 0) this.makeTimeline();
      else element('when').hidden = true;
    }

    makeTimeline() {
      const parts = {
        readout: element('timeline-readout'),
        layers: element('layers'),
        summary: element('timeline-summary'),
        from: element('from'),
        to: element('to'),
      };
      this.timeline = new Timeline.View(element('timeline'), parts, this.model, {
        enter: (module) => this.enter(module),
        select: (from, to) => this.select(from, to),
      });
      const { windows } = this.model.courses;
      element('to-whole').addEventListener('click', () => this.select(0, windows));
      // The busiest window alone.
      element('to-peak').addEventListener('click', () => {
        const { peak } = this.timeline;
        if (peak) this.select(peak.at, peak.at + 1);
      });
      this.writeTimelineTable = Table.below(element('timeline-table'), () => this.timeline.table());
    }

    // Whether less than the whole span is looked at.
    isPart() {
      return this.stretch.from > 0 || this.stretch.to < this.model.courses.windows;
    }

    // The columns of a stretch are there only while one is chosen.
    makeModuleTable() {
      const { model } = this;
      // null where the module has no course of its own.
      const inStretch = ({ id }) => this.sums[id];
      // From edge to edge, pauses included.
      const inStretchTime = () => {
        const { edges } = model.courses;
        return edges[this.stretch.to] - edges[this.stretch.from];
      };
      const when = () => this.isPart();
      const rateHint = `toggles per ${model.rateUnit} and bit`;
      // Of the whole module, not per bit.
      const stretchRate = (module) => {
        const sum = inStretch(module);
        return sum === null ? null : model.rate(sum, 1, inStretchTime());
      };
      this.modules = new Table.View(element('modules'), {
        what: 'modules',
        fileName: 'modules.csv',
        order: { key: 'toggles', descending: true },
        // The module looked at and all below it, which are neighbours in the list.
        rows: () => model.modules.slice(this.focus.id, this.focus.end),
        searched: ({ path }) => path,
        open: (module) => this.enter(module),
        columns: [
          { key: 'module', title: 'Module', ...byName(({ path }) => path || 'whole dump') },
          { key: 'toggles_in_stretch', title: 'In stretch', bar: true, when, ...byCount(inStretch) },
          { key: 'rate_in_stretch', title: `Per ${model.rateUnit}`, when, ...byFigure(stretchRate) },
          { key: 'toggles', title: 'Toggles', bar: true, ...byCount(({ toggles }) => toggles) },
          {
            key: 'rate',
            title: 'Rate',
            hint: rateHint,
            ...byFigure(({ toggles, bits }) => model.rate(toggles, bits)),
          },
          { key: 'bits', title: 'Bits', ...byCount(({ bits }) => bits) },
          {
            key: 'signals',
            title: 'Signals',
            hint: 'names in it and below',
            ...byCount(({ declared }) => declared),
          },
          { key: 'still_bits', title: 'Never toggle', ...byCount(({ still }) => still) },
          { key: 'high', title: 'High', hint: 'mean of its bits', ...byShare(({ high }) => high) },
          { key: 'x', title: 'x', hint: 'mean of its bits', ...byShare(({ unknown }) => unknown) },
          { key: 'glitches', title: 'Glitches', ...byCount(({ glitches }) => glitches) },
        ],
      });
    }

    // T0 to TZ are in the CSV only: on the page their shares say more.
    makeSignalTable() {
      const { model } = this;
      const section = element('signals');
      section.append(this.makeLists());
      // Says how many signals of the list the file leaves out.
      this.listNote = make('p', { className: 'hint' });
      section.append(this.listNote);
      this.signals = new Table.View(section, {
        what: 'signals',
        fileName: 'signals.csv',
        order: { key: 'toggles', descending: true },
        rows: () => this.listed(),
        searched: ({ path }) => path,
        columns: [
          { key: 'signal', title: 'Signal', ...byName(({ path }) => path) },
          { key: 'toggles', title: 'Toggles', bar: true, ...byCount(({ toggles }) => toggles) },
          {
            key: 'rate',
            title: 'Rate',
            hint: `toggles per ${model.rateUnit} and bit`,
            ...byFigure(({ toggles, bits }) => model.rate(toggles, bits)),
          },
          { key: 'bits', title: 'Bits', ...byCount(({ bits }) => bits) },
          { key: 'high', title: 'High', ...byShare(({ high }) => high) },
          { key: 'x', title: 'x', ...byShare(({ unknown }) => unknown) },
          { key: 'z', title: 'z', ...byShare(({ floating }) => floating) },
          { key: 'glitches', title: 'Glitches', ...byCount(({ glitches }) => glitches) },
          ...['t0', 't1', 'tx', 'tz'].map((key) => ({ key, csvOnly: true, value: (signal) => signal[key] })),
        ],
      });
    }

    // Radio buttons that look like tabs.
    makeLists() {
      const legend = make('legend', { className: 'unseen', textContent: 'List' });
      const choices = Object.entries(LISTS).map(([value, list]) => {
        const input = make('input', { type: 'radio', name: 'list', value, checked: list === this.list });
        input.addEventListener('change', () => {
          this.list = list;
          const [key, descending] = list.order;
          // The rows are to be chosen anew.
          this.listedFor = null;
          this.drawListNote();
          this.signals.sortBy(key, descending);
        });
        return make('label', {}, input, ` ${list.title}`);
      });
      return make('fieldset', { className: 'choice tabs' }, legend, ...choices);
    }

    // The signals of the list in the module looked at. Kept until the module or the list changes: a
    // search asks for them at every key.
    listed() {
      if (this.listedFor !== this.focus) {
        const { firstSignal, endSignal } = this.focus;
        this.listedRows = this.model.signals.slice(firstSignal, endSignal).filter(this.list.takes);
        this.listedFor = this.focus;
      }
      return this.listedRows;
    }

    // Of "Toggle most" nothing is said: that list is cut by nature.
    drawListNote() {
      const { counts } = this.model.data;
      // As strings beyond 2^53; here counts of signals, which never are.
      const all = Number(this.list.count ? counts[this.list.count] : counts.signals);
      const kept = this.model.signals.filter(this.list.takes).length;
      const isCut = this.list.title !== LISTS.most.title && all > kept;
      this.listNote.textContent = isCut
        ? `Of ${Text.count(all)} such signals of the dump ${Text.count(kept)} are in this file.`
        : '';
      this.listNote.hidden = !isCut;
    }

    // From the icicle, the timeline, the table or the path.
    enter(module) {
      if (module === this.focus) return;
      this.focus = module;
      this.draw();
    }

    // `from` and `to` are numbers of edges. The first stretch that is chosen sorts the modules by
    // what toggles in it.
    select(from, to) {
      const wasPart = this.isPart();
      this.stretch = { from, to };
      if (this.isPart() && !wasPart) this.modules.order = { key: 'toggles_in_stretch', descending: true };
      this.drawTime();
      this.modules.update();
    }

    // From the whole dump to the module looked at, each a button; the middle of a very long path is
    // left out.
    drawPath() {
      const steps = [];
      for (let module = this.focus; module; module = module.parent) steps.unshift(module);
      const isLong = steps.length > LONGEST_PATH;
      // The first two and the last ones; null stands for those between.
      const shown = isLong ? [...steps.slice(0, 2), null, ...steps.slice(3 - LONGEST_PATH)] : steps;
      element('path').replaceChildren(
        ...shown.map((module) => {
          if (!module) return make('li', { textContent: ' … ' });
          const name = module.parent ? Text.name(module.name) : 'Whole dump';
          const button = make('button', { type: 'button', textContent: name });
          if (module === this.focus) button.setAttribute('aria-current', 'true');
          button.addEventListener('click', () => this.enter(module));
          return make('li', {}, button);
        }),
      );
    }

    // In words, and as options that have the program look at the same window.
    drawStretch() {
      const { courses, time } = this.model;
      const [begin, end] = [courses.edges[this.stretch.from], courses.edges[this.stretch.to]];
      const place = element('stretch');
      if (!this.isPart()) {
        place.textContent = '';
        return;
      }
      const options = [begin, end].map((ticks) => Text.option(ticks, time.tick_fs));
      place.textContent = `${Text.time(begin, time.tick_fs)} to ${Text.time(end, time.tick_fs)} `;
      // Times beyond 2^53 ticks cannot be given exactly, so they are not offered.
      if (options.every(Boolean)) {
        place.append(make('code', { textContent: `--begin ${options[0]} --end ${options[1]}` }));
      }
    }

    drawIcicle() {
      this.icicle.draw(this.focus, this.area);
      this.writeIcicleTable();
    }

    // All that depends on the stretch.
    drawTime() {
      this.sums = Model.sumsIn(this.model, this.stretch.from, this.stretch.to);
      this.drawStretch();
      if (!this.timeline) return;
      const holder = this.courseHolder();
      this.timeline.draw(holder, this.stretch);
      // What is drawn must be said where it is not what was asked for.
      if (holder !== this.focus) {
        element('timeline-summary').textContent =
          `${Text.name(this.focus.path)} has no course of its own: what is drawn is that of ` +
          `${holder.path === '' ? 'the whole dump' : Text.name(holder.path)}, which its toggles are part of.`;
      }
      this.writeTimelineTable();
    }

    // The module looked at, or the nearest one above it whose toggles over time are known.
    courseHolder() {
      let module = this.focus;
      while (module.parent && !this.model.courses.ofModule[module.id]) module = module.parent;
      return module;
    }

    // After another module was entered. The order matters: tables use the sums that drawTime
    // computes.
    draw() {
      this.listedFor = null;
      this.drawPath();
      this.drawIcicle();
      this.drawTime();
      this.modules.update();
      this.drawListNote();
      this.signals.update();
    }
  }

  // The reader's own choice goes before that of the system. Until the button is used the page
  // follows the system's setting as it changes.
  function makeThemeSwitch() {
    const button = element('theme');
    const system = matchMedia('(prefers-color-scheme: dark)');
    const set = (isDark) => {
      document.documentElement.dataset.theme = isDark ? 'dark' : 'light';
      button.setAttribute('aria-pressed', String(isDark));
    };
    const follow = () => set(system.matches);
    system.addEventListener('change', follow);
    button.addEventListener('click', () => {
      system.removeEventListener('change', follow);
      set(document.documentElement.dataset.theme !== 'dark');
    });
    follow();
  }

  // Pictures are laid out for the width they have, on paper too. Only a change of width needs a
  // redraw; a phone's bars change the height while one scrolls.
  function followWidth(report) {
    let width = document.body.clientWidth;
    const redraw = () => {
      report.drawIcicle();
      report.drawTime();
    };
    addEventListener('resize', () => {
      if (document.body.clientWidth === width) return;
      width = document.body.clientWidth;
      // With the next frame, when the new width is settled.
      requestAnimationFrame(redraw);
    });
    element('print').addEventListener('click', () => print());
  }

  // The file's figures are in an element of the page.
  function start() {
    makeThemeSwitch();
    try {
      const model = Model.load(JSON.parse(element('data').textContent));
      element('report').hidden = false;
      const report = new Report(model);
      report.draw();
      followWidth(report);
    } catch (error) {
      // A file that was cut off, or one of another version: the page says so instead of staying
      // empty.
      element('report').hidden = true;
      element('failure').hidden = false;
      element('failure').textContent = `The figures of this report cannot be shown: ${error.message}`;
    }
    // For the checks of the page: set when all is drawn, to the milliseconds that it took.
    document.documentElement.dataset.drawn = String(Math.round(performance.now()));
  }

  start();
})();
