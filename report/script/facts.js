// The head of the report: what was simulated, its clocks, what a check of the dump found and how
// much of a netlist the figures reach; and at its end, what the file leaves out.
/* exported Facts */
/* global Table Text */
'use strict';

const Facts = (() => {
  const { make } = Table;
  // In the order in which they are read; other words rank as notes.
  const SEVERITIES = { error: 'Error', warning: 'Warning', note: 'Note' };

  function figure(label, value, detail = '') {
    return make(
      'div',
      { className: 'fact' },
      make('span', { className: 'label', textContent: label }),
      make('strong', { textContent: value }),
      make('span', { className: 'detail', textContent: detail }),
    );
  }

  function drawFigures(element, { data, modules, time, rate, rateUnit }) {
    const { counts } = data;
    const whole = modules[0];
    const toTime = (ticks) => Text.time(ticks, time.tick_fs);
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

  function panel(title, ...content) {
    return make('div', { className: 'panel' }, make('h2', { textContent: title }), ...content);
  }

  function dumpPanel({ data, time }) {
    const list = make('dl');
    const add = (term, text) => {
      if (text) list.append(make('dt', { textContent: term }), make('dd', { textContent: text }));
    };
    add('File', Text.name(data.dump.name));
    add('Simulator', data.dump.simulator && Text.name(data.dump.simulator));
    add('Date', data.dump.date && Text.name(data.dump.date));
    add('Tick', time.tick_fs === null ? 'the dump has no time scale' : Text.time(1, time.tick_fs));
    const { left_out: leftOut } = data.counts;
    if (leftOut > 0) add('Without bits', `${Text.count(leftOut)} variables (real, string, event, parameter)`);
    for (const { what, reached, total, source } of data.reached ?? []) {
      const of = `${Text.count(reached)} of ${Text.count(total)} ${Text.name(what)}`;
      add(`Reached in ${Text.name(source)}`, `${of} (${Text.share(reached / total)})`);
    }
    return panel('Dump', list);
  }

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
    if (!data.clocks) return null;
    if (data.clocks.length === 0) return panel('Clocks', make('p', { textContent: 'No clock was found.' }));
    const mhz = (value) => (Text.isKnown(value) ? `${Text.figure(value)} MHz` : Text.UNKNOWN);
    const rows = data.clocks.map(({ name, mhz: measured, reported_mhz: reported, reported_by: by }) => {
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

  function findingPanel({ data }) {
    const { findings } = data;
    if (!findings) return null;
    if (findings.length === 0) {
      return panel('Check', make('p', { textContent: 'Nothing was found in the dump.' }));
    }
    const list = make('ul', { className: 'findings' });
    for (const { severity, text } of findings) {
      const known = Object.hasOwn(SEVERITIES, severity) ? severity : 'note';
      const mark = make('strong', { textContent: SEVERITIES[known] });
      list.append(make('li', { className: known }, mark, ` ${Text.name(text)}`));
    }
    return panel('Check', list);
  }

  function draw(figures, panels, model) {
    drawFigures(figures, model);
    panels.replaceChildren(...[dumpPanel(model), clockPanel(model), findingPanel(model)].filter(Boolean));
  }

  // What the file does not hold, from what it says of itself.
  function notes({ data, modules, signals, courses }) {
    const sum = (pick) => modules.reduce((total, module) => total + pick(module), 0);
    const hidden = sum((module) => module.hidden);
    const restSignals = sum(({ rest }) => rest?.signals ?? 0);
    const restToggles = sum(({ rest }) => rest?.toggles ?? 0);
    const withCourse = courses.ofModule.filter(Boolean).length;
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
