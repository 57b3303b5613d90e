// Activity over time: the modules below the one looked at, stacked, with the peak marked and a
// stretch that can be brushed with a pointer or set with two sliders. Calling order: make once,
// then draw for each module and stretch looked at.
//
// A layer is a module, its height toggles per unit of time. Layers add up to the module looked at:
// what no layer shows is in the last one, "own signals and all else". Windows are the steps of the
// curve; a stretch is always a number of whole windows.
/* exported Timeline */
/* global d3 Model Table Text */
'use strict';

const Timeline = (() => {
  // Pixels; the width is the page's.
  const HEIGHT = 240;
  // Room for the marks of the axes and for the peak's label.
  const MARGIN = { top: 26, right: 12, bottom: 26, left: 58 };
  const COLOURS = 7; // classes layer-0 to layer-6; the rest is grey

  // Toggles in the windows from..to, the second not included.
  function sumOf(course, from, to) {
    let sum = 0;
    for (let at = from; at < to; ++at) sum += course[at];
    return sum;
  }

  // The window with most toggles per tick, null where nothing toggles.
  function peakOf(course, edges) {
    let peak = null;
    course.forEach((toggles, at) => {
      const rate = toggles / (edges[at + 1] - edges[at]);
      if (toggles > 0 && (peak === null || rate > peak.rate)) peak = { at, rate, toggles };
    });
    return peak;
  }

  // The children that toggle most. One that has most of the toggles hides what is to be seen, as a
  // design does in its test bench: its own children take its place. Done again and again, until no
  // single child has most or there are as many as colours.
  function rankBelow(focus, sums) {
    const childrenOf = ({ children }) => children.filter(({ id }) => sums[id] > 0);
    let ranked = childrenOf(focus);
    for (;;) {
      ranked.sort((a, b) => sums[b.id] - sums[a.id]);
      const [first] = ranked;
      // More than half of all: look into it instead.
      const below = first && sums[first.id] > sums[focus.id] / 2 ? childrenOf(first) : [];
      if (below.length === 0 || ranked.length >= COLOURS) return ranked.slice(0, COLOURS);
      ranked = [...ranked.slice(1), ...below];
    }
  }

  class View {
    // `parts` are elements of the page, `actions` {enter(module), select(from, to)}. Makes what
    // stays; draw shows.
    constructor(svg, parts, model, actions) {
      Object.assign(this, { svg: d3.select(svg), parts, model, actions });
      this.colours = new Map(); // which module has which colour, kept while it is shown
      this.plot = this.svg.append('g');
      this.brushed = this.svg.append('g').attr('class', 'brush');
      this.setSliders();
      // The line below the picture says what is under the pointer.
      svg.addEventListener('pointermove', (event) => this.point(event));
      svg.addEventListener('pointerleave', () => (this.parts.readout.textContent = '\u00a0'));
    }

    // For keys, and for readers who cannot brush. Their values are numbers of edges.
    setSliders() {
      const { from, to } = this.parts;
      const { windows } = this.model.courses;
      Object.assign(from, { min: 0, max: windows - 1, step: 1, value: 0 });
      Object.assign(to, { min: 1, max: windows, step: 1, value: windows });
      // A slider pushed past the other takes it along.
      from.addEventListener('input', () => {
        this.actions.select(Number(from.value), Math.max(Number(from.value) + 1, Number(to.value)));
      });
      to.addEventListener('input', () => {
        this.actions.select(Math.min(Number(from.value), Number(to.value) - 1), Number(to.value));
      });
    }

    // The modules below that switch most in the stretch, then all else of the module. Colours are
    // given before layers are made, as each layer's class is its colour.
    makeLayers(focus, { from, to }) {
      const { model } = this;
      const whole = Model.course(model, focus);
      const ranked = rankBelow(focus, Model.sumsIn(model, from, to));
      this.giveColours(ranked);
      // Names are paths from the module looked at on.
      const front = focus.path === '' ? 0 : focus.path.length + 1;
      const layers = ranked.map((module) => ({
        module,
        name: Text.name(module.path.slice(front)),
        colour: `layer-${this.colours.get(module)}`,
        course: Model.course(model, module),
      }));
      // What no layer has: the module's own signals and smaller modules.
      const rest = whole.map((sum, at) => sum - d3.sum(layers, ({ course }) => course[at]));
      // A picture without any layer would be empty, so then there is this one.
      if (d3.sum(rest) > 0 || layers.length === 0) {
        const name = focus.children.length > 0 ? 'own signals and all else' : 'own signals';
        layers.push({ module: null, name, colour: 'layer-rest', course: rest });
      }
      // Of the stretch only, for the legend's shares.
      for (const layer of layers) layer.toggles = sumOf(layer.course, from, to);
      return { layers, whole };
    }

    // A module that is shown again keeps its colour, so that an eye can follow it from stretch to
    // stretch.
    giveColours(ranked) {
      const kept = new Map(ranked.filter((m) => this.colours.has(m)).map((m) => [m, this.colours.get(m)]));
      const free = d3.range(COLOURS).filter((colour) => ![...kept.values()].includes(colour));
      for (const module of ranked) if (!kept.has(module)) kept.set(module, free.shift());
      this.colours = kept;
    }

    // Draws all anew, except for the brush, which is moved.
    draw(focus, stretch) {
      this.focus = focus;
      const { courses } = this.model;
      const { layers, whole } = this.makeLayers(focus, stretch);
      // The peak is that of the whole span, not of the stretch.
      Object.assign(this, { layers, whole, peak: peakOf(whole, courses.edges), stretch });
      this.width = this.svg.node().clientWidth || 900;
      this.svg.attr('viewBox', `0 0 ${this.width} ${HEIGHT}`).attr('height', HEIGHT);
      this.makeScales();
      this.plot.selectAll('*').remove();
      this.drawAxes();
      this.drawLayers();
      this.drawPeak();
      this.drawBrush();
      this.drawLegend();
      this.summarise();
    }

    // Toggles per unit of time: windows need not be equally long.
    rateAt(toggles, at) {
      const { edges } = this.model.courses;
      return this.model.rate(toggles, 1, edges[at + 1] - edges[at]) ?? 0;
    }

    // X is time, y toggles per unit of time; both begin anew with each module.
    makeScales() {
      const { edges, windows } = this.model.courses;
      const most = d3.max(this.whole, (toggles, at) => this.rateAt(toggles, at)) || 1;
      this.x = d3
        .scaleLinear()
        .domain([edges[0], edges[windows]])
        .range([MARGIN.left, this.width - MARGIN.right]);
      this.y = d3
        .scaleLinear()
        .domain([0, most])
        .nice(5)
        .range([HEIGHT - MARGIN.bottom, MARGIN.top]);
    }

    // Marks at round times, all in the unit that suits the last of them. The axis is in
    // femtoseconds, or in ticks where their length is not known.
    drawAxes() {
      const tickFs = this.model.time.tick_fs;
      const [begin, end] = this.x.domain().map((ticks) => ticks * (tickFs ?? 1));
      const inTime = d3.scaleLinear().domain([begin, end]).range(this.x.range());
      // A mark each 140 pixels has room for its text.
      const marks = Math.max(2, Math.floor(this.width / 140));
      const times = d3
        .axisBottom(inTime)
        .ticks(marks)
        .tickFormat((time) => Text.time(time / (tickFs ?? 1), tickFs))
        .tickSizeOuter(0);
      const rates = d3.axisLeft(this.y).ticks(5).tickFormat(Text.short);
      rates.tickSizeInner(-(this.width - MARGIN.left - MARGIN.right)).tickSizeOuter(0);
      const bottom = this.plot.append('g').attr('class', 'axis').call(times);
      bottom.attr('transform', `translate(0,${HEIGHT - MARGIN.bottom})`);
      const left = this.plot.append('g').attr('class', 'axis grid').call(rates);
      left.attr('transform', `translate(${MARGIN.left},0)`);
      const unit = this.plot.append('text').attr('class', 'unit').attr('x', 4).attr('y', 12);
      unit.text(`toggles per ${this.model.rateUnit}`);
    }

    // One path a layer, from the lower to the upper edge of its windows.
    drawLayers() {
      const { edges, windows, gaps } = this.model.courses;
      const stacked = d3
        .stack()
        .keys(d3.range(this.layers.length))
        .value((at, layer) => this.rateAt(this.layers[layer].course[at], at))(d3.range(windows));
      // Two points a window make its steps, where its end is drawn too.
      const steps = (layer) =>
        layer.flatMap(([low, high], at) => [edges[at], edges[at + 1]].map((t) => [t, low, high]));
      const area = d3
        .area()
        .x(([time]) => this.x(time))
        .y0(([, low]) => this.y(low))
        .y1(([, , high]) => this.y(high));
      const layers = this.plot.selectAll('path.layer').data(stacked).enter().append('path');
      layers
        .attr('class', (_, at) => `layer ${this.layers[at].colour}`)
        .attr('d', (layer) => area(steps(layer)));
      // Lines between steps narrower than this would be all that is seen.
      const isFine = (this.width - MARGIN.left - MARGIN.right) / windows < 3;
      layers
        .attr('stroke-width', isFine ? 0 : 0.8)
        .append('title')
        .text((_, at) => this.layers[at].name);
      // Stretches without dumping are hatched: 0 toggles there would be a guess.
      for (const [begin, end] of gaps) {
        const gap = this.plot.append('rect').attr('class', 'gap').attr('fill', 'url(#hatch)');
        gap.attr('x', this.x(begin)).attr('width', Math.max(1, this.x(end) - this.x(begin)));
        gap.attr('y', MARGIN.top).attr('height', HEIGHT - MARGIN.top - MARGIN.bottom);
        gap.append('title').text('not dumped');
      }
    }

    // A small triangle above the window, with the time beside it.
    drawPeak() {
      if (!this.peak) return;
      const { edges } = this.model.courses;
      const { at, toggles } = this.peak;
      const x = this.x((edges[at] + edges[at + 1]) / 2);
      const y = this.y(this.rateAt(toggles, at));
      const mark = this.plot.append('g').attr('class', 'peak');
      mark.append('path').attr('d', `M${x},${y - 2}l-5,-8h10z`);
      // To the left of the mark where there is no room to the right.
      const toLeft = x > this.width * 0.6;
      const label = mark
        .append('text')
        .attr('x', x + (toLeft ? -9 : 9))
        .attr('y', Math.max(12, y - 4));
      label.attr('text-anchor', toLeft ? 'end' : 'start').text(`peak ${this.timeText(edges[at])}`);
    }

    timeText(ticks) {
      return Text.time(ticks, this.model.time.tick_fs);
    }

    // The brush takes whole windows, since toggles are known per window.
    drawBrush() {
      const { edges, windows } = this.model.courses;
      // d3 calls back with `this` set to its own element.
      const view = this;
      this.brush = d3.brushX().extent([
        [MARGIN.left, MARGIN.top],
        [this.width - MARGIN.right, HEIGHT - MARGIN.bottom],
      ]);
      const { from, to } = this.stretch;
      this.brushed.call(this.brush);
      const isPart = from > 0 || to < windows;
      this.brushed.call(this.brush.move, isPart ? [this.x(edges[from]), this.x(edges[to])] : null);
      this.brush.on('end', function brushEnded(passed) {
        const event = d3.event ?? passed;
        if (!event.sourceEvent) return; // moved by draw itself
        if (!event.selection) view.actions.select(0, windows);
        else view.actions.select(...view.toWindows(event.selection));
      });
    }

    // Windows that the brush touches, at least one.
    toWindows([left, right]) {
      const { edges, windows } = this.model.courses;
      const from = Math.max(0, d3.bisectRight(edges, this.x.invert(left)) - 1);
      const to = Math.min(windows, d3.bisectLeft(edges, this.x.invert(right)));
      return [Math.min(from, windows - 1), Math.max(to, from + 1)];
    }

    // Swatch, name and share of the toggles in the stretch; a click enters the module.
    drawLegend() {
      const { edges } = this.model.courses;
      const total = d3.sum(this.layers, ({ toggles }) => toggles);
      this.parts.layers.replaceChildren(
        ...this.layers.map(({ module, name, colour, toggles }) => {
          const swatch = Table.make('span', { className: `swatch ${colour}` });
          const text = Table.make('span', { className: module ? 'name' : '', textContent: name });
          const part = Table.make('span', { className: 'part', textContent: Text.share(toggles / total) });
          if (!module) return Table.make('li', {}, swatch, text, part);
          const button = Table.make('button', { type: 'button', title: `Enter ${name}` }, swatch, text, part);
          button.addEventListener('click', () => this.actions.enter(module));
          return Table.make('li', {}, button);
        }),
      );
      // The sliders follow the stretch, however it was chosen, and say times instead of numbers.
      const { from, to } = this.parts;
      Object.assign(from, { value: this.stretch.from });
      Object.assign(to, { value: this.stretch.to });
      from.setAttribute('aria-valuetext', this.timeText(edges[this.stretch.from]));
      to.setAttribute('aria-valuetext', this.timeText(edges[this.stretch.to]));
    }

    // For readers who cannot see the picture: the peak and how it stands out.
    summarise() {
      const { edges, windows } = this.model.courses;
      const sum = d3.sum(this.whole);
      if (!this.peak) {
        this.parts.summary.textContent = 'Nothing of what is shown toggles.';
        return;
      }
      const { at, toggles, rate } = this.peak;
      // Toggles per tick over the whole span, as peak.rate is.
      const mean = sum / (edges[windows] - edges[0]);
      this.parts.summary.textContent =
        `Peak from ${this.timeText(edges[at])} to ${this.timeText(edges[at + 1])}: ${Text.count(toggles)} toggles, ` +
        `${Text.figure(rate / mean)} times the mean of ${Text.count(sum)} toggles in ${Text.count(windows)} windows.`;
    }

    // The window under the pointer and the four layers that toggle most in it.
    point(event) {
      const { edges, windows } = this.model.courses;
      const box = this.svg.node().getBoundingClientRect();
      // The svg may be scaled, so the place in the window is brought to its own width.
      const time = this.x.invert(((event.clientX - box.left) / box.width) * this.width);
      const at = Math.min(windows - 1, Math.max(0, d3.bisectRight(edges, time) - 1));
      const parts = this.layers
        .filter(({ course }) => course[at] > 0)
        .sort((a, b) => b.course[at] - a.course[at])
        .slice(0, 4)
        .map(({ name, course }) => `${name} ${Text.count(course[at])}`);
      this.parts.readout.textContent =
        `${this.timeText(edges[at])} to ${this.timeText(edges[at + 1])}: ` +
        `${Text.count(this.whole[at])} toggles${parts.length > 0 ? ` (${parts.join(', ')})` : ''}`;
    }

    // All windows, whatever the stretch.
    table() {
      const { edges, windows } = this.model.courses;
      const head = ['From', 'To', 'Toggles', ...this.layers.map(({ name }) => name)];
      const rows = d3
        .range(windows)
        .map((at) => [
          this.timeText(edges[at]),
          this.timeText(edges[at + 1]),
          Text.count(this.whole[at]),
          ...this.layers.map(({ course }) => Text.count(course[at])),
        ]);
      return { head, rows };
    }
  }

  return { View };
})();
