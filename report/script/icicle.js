// The tree of modules as an icicle: a row is a level, a width is bits or toggles, a colour the
// toggle rate. Calling order: make once, then draw for each module looked at.
//
//   +--------------------------------------------------+
//   |                       tb                         |
//   +-----------------------------------+--------------+
//   |               soc                 |    model     |
//   +-----------------+-------+---------+--------------+
//   |       cpu       | fifo  |5 smaller|
//   +-----------------+-------+---------+
//
// What is wide is large, what is light is busy. A click on a box enters the module; arrow keys
// move, Enter enters and Backspace goes back.
/* exported Icicle */
/* global d3 Text Table */
'use strict';

const Icicle = (() => {
  // Height of a level in pixels.
  const ROW = 30;
  // More levels at once are too flat to read; entering a module shows those below.
  const LEVELS = 8;
  // Pixels: what is narrower cannot be seen, and is put together with its like.
  const NARROWEST = 3;
  const LETTER = 7.3; // width of a character of the names
  // Lighter all the way, so that colour-blind readers see the order too.
  const RATES = ['#2a1e66', '#274a83', '#23708f', '#2f9682', '#6fb962', '#c4d44c', '#fdf08f'];
  const LIGHT = 49; // from here on black is read more easily than white
  const DECADES = 1000; // rates below the largest by more than this look alike

  // Rates of designs differ by powers of ten, so the scale is logarithmic.
  function makeColour(model) {
    const rates = model.modules.map(({ toggles, bits }) => model.rate(toggles, bits));
    // A dump in which nothing toggles still needs a scale.
    const most = d3.max(rates) || 1;
    const least = Math.max(d3.min(rates, (rate) => rate || undefined) ?? most, most / DECADES);
    // Where all rates are equal the scale covers one decade below them.
    const domain = [least < most ? least : most / 10, most];
    return d3.scaleSequentialLog(d3.piecewise(d3.interpolateLab, RATES)).domain(domain).clamp(true);
  }

  // 24 swatches from the least rate to the greatest, and the hatch of what never toggles.
  function drawScale(element, colour, unit) {
    const [least, most] = colour.domain();
    const stops = d3.range(24).map((at) => least * (most / least) ** (at / 23));
    element.replaceChildren(
      `${Text.figure(least)} `,
      ...stops.map((rate) => {
        const swatch = Table.make('span', { className: 'swatch' });
        swatch.style.setProperty('background-color', colour(rate));
        return swatch;
      }),
      ` ${Text.figure(most)} toggles per ${unit} and bit `,
      Table.make('span', { className: 'swatch never' }),
      ' never',
    );
  }

  // What is drawn below a module: the children wide enough to be seen, the others as one box.
  // `least` is the smallest area that is drawn; it is in the unit of `area`, bits or toggles.
  function seenChildren(module, area, least) {
    const seen = module.children.filter((child) => child.sums[area] >= least);
    // Widest first, so that what matters is on the left.
    seen.sort((a, b) => b.sums[area] - a.sums[area]);
    const narrow = module.children.filter((child) => child.sums[area] > 0 && child.sums[area] < least);
    const sum = d3.sum(narrow, (child) => child.sums[area]);
    // Even together they may be too narrow to be seen.
    if (sum >= least / NARROWEST) seen.push({ merged: narrow.length, sums: { [area]: sum } });
    return seen;
  }

  // `focus` is the module on top, `area` a key of `sums`, `width` pixels. Gives nodes with x0, x1
  // and depth.
  function layOut(focus, area, width) {
    // A module without any area would make this 0, and every child wide enough.
    const least = Math.max((focus.sums[area] * NARROWEST) / width, Number.MIN_VALUE);
    const root = d3.hierarchy(focus, (module) => {
      const isLast = module.merged || module.depth - focus.depth + 1 >= LEVELS;
      return isLast ? null : seenChildren(module, area, least);
    });
    // Not d3's own sum: a module has more area than its children together.
    root.each((node) => (node.value = node.data.sums[area]));
    // x goes over the whole width; rows are placed by depth, so the second size does not matter.
    return d3.partition().size([width, 1])(root).descendants();
  }

  // A name that fits, one that is cut, or nothing where not even three characters fit.
  const clip = (text, width) => {
    const room = Math.floor((width - 8) / LETTER);
    if (text.length <= room) return text;
    return room >= 3 ? `${text.slice(0, room - 1)}…` : '';
  };

  // A module's figures in one line, for the line below the picture and for screen readers.
  function describe(model, module) {
    const rate = model.rate(module.toggles, module.bits);
    return [
      module.path === '' ? 'Whole dump' : Text.name(module.path),
      `${Text.count(module.bits)} bits`,
      `${Text.count(module.toggles)} toggles`,
      `${Text.figure(rate)} per ${model.rateUnit} and bit`,
      `${Text.share(module.high)} high`,
      `${Text.share(module.unknown)} x`,
    ].join(', ');
  }

  // `enter(module, byKey)` is called when a module is chosen. The svg element is the page's.
  class View {
    constructor(svg, readout, model, enter) {
      Object.assign(this, { svg: d3.select(svg), readout, model, enter });
      this.colour = makeColour(model);
      this.makeHatch();
      this.boxes = this.svg.append('g');
      svg.addEventListener('keydown', (event) => this.key(event));
    }

    // A pattern for boxes and swatches that never toggle: no colour of the scale may stand for it.
    makeHatch() {
      const hatch = this.svg.append('defs').append('pattern').attr('id', 'hatch');
      hatch.attr('width', 6).attr('height', 6).attr('patternUnits', 'userSpaceOnUse');
      hatch.append('rect').attr('width', 6).attr('height', 6).attr('class', 'hatch-ground');
      hatch.append('path').attr('d', 'M-1,7L7,-1').attr('class', 'hatch-line');
    }

    // Draws all anew: at most a few thousand boxes, and only when something was chosen.
    draw(focus, area) {
      Object.assign(this, { focus, area });
      // In a tab that was never shown the width is not known.
      const width = this.svg.node().clientWidth || 900;
      const nodes = layOut(focus, area, width);
      // What keys and clicks can reach.
      this.shown = nodes.filter(({ data }) => !data.merged);
      const levels = d3.max(nodes, ({ depth }) => depth) + 1;
      this.svg.attr('viewBox', `0 0 ${width} ${levels * ROW}`).attr('height', levels * ROW);
      this.boxes.selectAll('g').remove();
      const group = this.boxes.selectAll('g').data(nodes).enter().append('g');
      group.attr('transform', ({ x0, depth }) => `translate(${x0},${depth * ROW})`);
      group.attr('class', ({ data }) => (data.merged ? 'box merged' : 'box'));
      this.drawBoxes(group);
      this.listen(group.filter(({ data }) => !data.merged));
    }

    // A colour, the hatch, or nothing for smaller modules put together, which report.css fills.
    fill(module) {
      if (module.merged) return null;
      const rate = this.model.rate(module.toggles, module.bits);
      return rate > 0 ? this.colour(rate) : 'url(#hatch)';
    }

    // A pixel between two boxes shows where one ends.
    drawBoxes(group) {
      const widthOf = ({ x0, x1 }) => Math.max(0, x1 - x0 - 1);
      const rect = group.append('rect').attr('fill', ({ data }) => this.fill(data));
      rect.attr('width', widthOf).attr('height', ROW - 1);
      // Light on dark or dark on light; on the hatch the page's own colour.
      const ink = ({ data }) => {
        const colour = d3.lab(this.fill(data));
        if (Number.isNaN(colour.l)) return 'plain';
        return colour.l > LIGHT ? 'on-light' : 'on-dark';
      };
      const label = ({ merged, name }) => (merged ? `${merged} smaller` : Text.name(name || 'whole dump'));
      // Screen readers have the box's own label, which says more.
      const text = group.append('text').attr('class', ink).attr('aria-hidden', 'true');
      text.attr('x', 5).attr('y', ROW / 2 + 4);
      text.text((node) => clip(label(node.data), widthOf(node)));
      const merged = group.filter(({ data }) => data.merged);
      merged.append('title').text(({ data }) => `${data.merged} smaller modules`);
    }

    // Boxes are buttons. Only one of them is reached by Tab: arrow keys move from it.
    listen(group) {
      const show = ({ data }) => (this.readout.textContent = describe(this.model, data));
      const { enter } = this;
      group.attr('role', 'button').attr('tabindex', ({ depth }) => (depth === 0 ? 0 : -1));
      group.attr('aria-label', ({ data }) => describe(this.model, data));
      group.each(function listenTo(node) {
        this.addEventListener('click', () => enter(node.data));
        this.addEventListener('pointerenter', () => show(node));
        this.addEventListener('focus', () => show(node));
      });
      show(this.shown[0]);
    }

    // Keys while a box has the focus. What is handled here must not scroll the page.
    key(event) {
      const node = this.shown.find((one) => one === d3.select(event.target).datum());
      if (!node) return;
      if (event.key === 'Enter' || event.key === ' ') this.enter(node.data, true);
      else if (event.key === 'Backspace' || event.key === 'Escape') {
        if (this.focus.parent) this.enter(this.focus.parent, true);
      } else if (!this.move(event.key, node)) return;
      event.preventDefault();
    }

    // Left and right stay on a level, up and down follow the tree. False for any other key.
    move(key, node) {
      const level = this.shown.filter(({ depth }) => depth === node.depth);
      const at = level.indexOf(node);
      const next = {
        ArrowLeft: level[at - 1],
        ArrowRight: level[at + 1],
        ArrowUp: node.parent,
        ArrowDown: this.shown.find(({ parent }) => parent === node),
        Home: level[0],
        End: level[level.length - 1],
      };
      if (!Object.hasOwn(next, key)) return false;
      if (next[key]) this.moveFocus(next[key]);
      return true;
    }

    // The box that has the focus is the one that Tab comes back to.
    moveFocus(node) {
      const boxes = this.boxes.selectAll('g[role]');
      boxes.attr('tabindex', (one) => (one === node ? 0 : -1));
      boxes
        .filter((one) => one === node)
        .node()
        .focus();
    }

    // The picture as a table: the modules drawn, each with those below it, and their figures.
    table() {
      const { model, area } = this;
      const what = area === 'ownBits' ? 'bits' : 'toggles';
      const head = ['Module', `Area (${what})`, 'Bits', 'Toggles', `Per ${model.rateUnit} and bit`];
      const rows = [];
      this.shown[0].eachBefore(({ depth, data: module }) => {
        if (module.merged) return;
        rows.push([
          `${'\u00a0\u00a0'.repeat(depth)}${Text.name(module.path || 'whole dump')}`,
          Text.count(module.sums[area]),
          Text.count(module.bits),
          Text.count(module.toggles),
          Text.figure(model.rate(module.toggles, module.bits)),
        ]);
      });
      return { head, rows };
    }
  }

  return { View, drawScale };
})();
