// The head of the report: what was simulated, its clocks, what a check of the dump found and how
// much of a netlist the figures reach; and at its end, what the file leaves out.
//
// The page's scripts are joined into one, in the order that report/CMakeLists.txt says; each uses
// those before it. None of them writes HTML: texts come from a dump and go into the page as text
// only.
/* exported Facts */
/* global Table Text */
'use strict';

const Facts = (() => {
  const { make } = Table;
  // In the order in which they are read; other words rank as notes. Also the classes that
  // report.css colours them by.
  const SEVERITIES = { error: 'Error', warning: 'Warning', note: 'Note' };

  // One box of the head: a small label, the figure, and what explains it.
  function figure(label, value, detail = '') {
    return make(
      'div',
      { className: 'fact' },
      make('span', { className: 'label', textContent: label }),
      make('strong', { textContent: value }),
      make('span', { className: 'detail', textContent: detail }),
    );
  }

  // The whole dump's figures. All come from modules[0], whose sums the file has even where most
  // modules are left out.
  function drawFigures(element, { data, modules, time, rate, rateUnit }) {
    const { counts } = data;
    const whole = modules[0];
    // Ticks as a time, or as ticks where the dump has no time scale.
    const toTime = (ticks) => Text.time(ticks, time.tick_fs);
    // Counts beyond 2^53 come as strings: Number rounds them, and Text.count says that it does.
    const count = (value) => Text.count(Number(value));
    element.replaceChildren(
      figure('Observed time', toTime(time.observed), `${toTime(time.begin)} to ${toTime(time.end)}`),
      figure('Signals', count(counts.signals), `in ${count(counts.modules)} modules`),
      figure('Bits', count(whole.bits), `${Text.share(whole.still / whole.bits)} never toggle`),
      figure('Toggles', count(whole.toggles), `${count(whole.glitches)} excursions through x`),
      figure(
        'Mean toggle rate',
        Text.figure(rate(whole.toggles, whole.bits)),
        `toggles per ${rateUnit} and bit`,
      ),
      figure('Time at x', Text.share(whole.unknown), `${Text.share(whole.high)} of the time high`),
    );
  }

  // A box with a heading, such as "Dump" or "Clocks".
  function panel(title, ...content) {
    return make('div', { className: 'panel' }, make('h2', { textContent: title }), ...content);
  }

  // What the dump says of itself, and what of it has no bits or no pin. What it does not say is
  // left out.
  function dumpPanel({ data, time }) {
    const list = make('dl');
    const add = (term, text) => {
      // Nothing for a missing text.
      if (text) list.append(make('dt', { textContent: term }), make('dd', { textContent: text }));
    };
    add('File', Text.name(data.dump.name));
    add('Simulator', data.dump.simulator && Text.name(data.dump.simulator));
    add('Date', data.dump.date && Text.name(data.dump.date));
    add('Tick', time.tick_fs === null ? 'the dump has no time scale' : Text.time(1, time.tick_fs));
    // A report must not look complete where it is not.
    const { left_out: leftOut } = data.counts;
    if (leftOut > 0) add('Without bits', `${Text.count(leftOut)} variables (real, string, event, parameter)`);
    // "3847 of 3847 pins (100 %)" beside the netlist's file name.
    for (const { what, reached, total, source } of data.reached ?? []) {
      const of = `${Text.count(reached)} of ${Text.count(total)} ${Text.name(what)}`;
      add(`Reached in ${Text.name(source)}`, `${of} (${Text.share(reached / total)})`);
    }
    return panel('Dump', list);
  }

  // A row of the clocks' table; `tag` is th in the head and td below.
  function row(tag, cells) {
    const kinds = ['name', 'figure', 'text'];
    return make(
      'tr',
      {},
      ...cells.map((textContent, at) => make(tag, { className: kinds[at], textContent })),
    );
  }

  // Only clocks that a timing report or SDC names have a second frequency.
  function clockPanel({ data }) {
    // No list at all: nobody looked for clocks. An empty one: none was found.
    if (!data.clocks) return null;
    if (data.clocks.length === 0) return panel('Clocks', make('p', { textContent: 'No clock was found.' }));
    // A clock that does not run has no measured frequency.
    const mhz = (value) => (Text.isKnown(value) ? `${Text.figure(value)} MHz` : Text.UNKNOWN);
    const rows = data.clocks.map(({ name, mhz: measured, reported_mhz: reported, reported_by: by }) => {
      // More than a thousandth off: the period in the test bench is not the design's.
      const differs = Text.isKnown(reported) && Math.abs(measured - reported) > 0.001 * reported;
      const said = Text.isKnown(reported) ? `${mhz(reported)}, ${Text.name(by ?? 'given')}` : Text.UNKNOWN;
      const cells = row('td', [Text.name(name), mhz(measured), said]);
      if (differs) cells.className = 'differs';
      return cells;
    });
    const head = make('thead', {}, row('th', ['Clock', 'Measured', 'Given']));
    const table = make('table', {}, head, make('tbody', {}, ...rows));
    return panel('Clocks', make('div', { className: 'frame', tabIndex: 0 }, table));
  }

  // As `kesncd check` says them, the worst first. Without the key the file was not checked.
  function findingPanel({ data }) {
    const { findings } = data;
    if (!findings) return null;
    if (findings.length === 0) {
      return panel('Check', make('p', { textContent: 'Nothing was found in the dump.' }));
    }
    const list = make('ul', { className: 'findings' });
    for (const { severity, text } of findings) {
      // A word that this page does not know is a note.
      const known = Object.hasOwn(SEVERITIES, severity) ? severity : 'note';
      const mark = make('strong', { textContent: SEVERITIES[known] });
      list.append(make('li', { className: known }, mark, ` ${Text.name(text)}`));
    }
    return panel('Check', list);
  }

  // Once a page: none of it follows what is looked at.
  function draw(figures, panels, model) {
    drawFigures(figures, model);
    // A panel is null where there is nothing to say.
    panels.replaceChildren(...[dumpPanel(model), clockPanel(model), findingPanel(model)].filter(Boolean));
  }

  // What the file does not hold, from what it says of itself. A list of sentences for the end of
  // the page.
  function notes({ data, modules, signals, courses }) {
    // Over all modules that are listed.
    const sum = (pick) => modules.reduce((total, module) => total + pick(module), 0);
    // Modules left out, counted at the listed one above each.
    const hidden = sum((module) => module.hidden);
    // Signals of listed modules that are left out.
    const restSignals = sum(({ rest }) => rest?.signals ?? 0);
    const restToggles = sum(({ rest }) => rest?.toggles ?? 0);
    // Modules with a row of their own over time.
    const withCourse = courses.ofModule.filter(Boolean).length;
    // First what the program had to say of the dump.
    const said = (data.notes ?? []).map((note) => Text.name(note));
    if (hidden > 0) {
      said.push(
        `${Text.count(modules.length - 1)} modules are listed; ${Text.count(hidden)} with the fewest toggles ` +
          'are summed in the module above them.',
      );
    }
    if (restSignals > 0) {
      said.push(
        `${Text.count(signals.length)} signals are listed, the most active of each module and those that ` +
          `stand out; ${Text.count(restSignals)} more with ${Text.count(restToggles)} toggles are in the figures of ` +
          'their modules only.',
      );
    }
    if (withCourse < modules.length && courses.windows > 0) {
      said.push(
        `Over time ${Text.count(withCourse)} of ${Text.count(modules.length)} modules have a course of their own, ` +
          'the whole dump among them; the others are summed in the module above them.',
      );
    }
    // Without this, figures of the picture and of the tables seem to contradict each other.
    if (courses.windows > 0) {
      said.push(
        'Over time and in the picture of modules a signal is counted once, in the highest module that names it. ' +
          'The tables count for each module all signals named in it or below it.',
      );
    }
    if (hidden === 0 && restSignals === 0) said.push('Every module and signal of the dump is listed.');
    return said;
  }

  return { draw, notes };
})();
