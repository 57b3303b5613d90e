// The tree of modules as an icicle: a row is a level, a width is bits or toggles, a colour the
// toggle rate. Calling order: make once, then draw for each module looked at.
/* exported Icicle */
/* global d3 Text Table */
'use strict';

const Icicle = (() => {
  const ROW = 30;
  const LEVELS = 8;
  const NARROWEST = 3;
  const LETTER = 7.3; // width of a character of the names
  const DECADES = 1000; // rates below the largest by more than this look alike

  // From dark blue to yellow, lighter all the way, so that colour-blind readers see the order too.
  function makeColour(model) {
    const rates = model.modules.map(({ toggles, bits }) => model.rate(toggles, bits));
    const most = d3.max(rates) || 1;
    const least = Math.max(d3.min(rates, (rate) => rate || undefined) ?? most, most / DECADES);
    const domain = [least < most ? least : most / 10, most];
    return d3.scaleSequentialLog(d3.interpolateViridis).domain(domain).clamp(true);
  }

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

  // Siblings too narrow to be seen, put together into one box.
  function mergeNarrow(node, scale, boxes) {
    const narrow = [];
    for (const child of node.children ?? []) {
      if (child.value <= 0) continue;
      if (scale(child.x1 - child.x0) >= NARROWEST) boxes.push({ node: child });
      else narrow.push(child);
    }
    if (narrow.length === 0) return;
    const x0 = d3.min(narrow, ({ x0: left }) => left);
    const x1 = d3.max(narrow, ({ x1: right }) => right);
    if (scale(x1 - x0) >= 1) boxes.push({ node: { x0, x1, depth: node.depth + 1 }, merged: narrow });
  }

  function layOut(focus, area, width) {
    const root = d3
      .hierarchy(focus)
      .sum((module) => module[area])
      .sort((a, b) => b.value - a.value || a.data.id - b.data.id);
    d3.partition().size([width, 1])(root);
    const boxes = [{ node: root }];
    for (let at = 0; at < boxes.length; ++at) {
      const { node, merged } = boxes[at];
      if (!merged && node.depth + 1 < LEVELS) mergeNarrow(node, (x) => x, boxes);
    }
    return boxes;
  }

  const clip = (text, width) => {
    const room = Math.floor((width - 8) / LETTER);
    if (text.length <= room) return text;
    return room >= 3 ? `${text.slice(0, room - 1)}…` : '';
  };

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

  class View {
    constructor(svg, readout, model, enter) {
      Object.assign(this, { svg: d3.select(svg), readout, model, enter });
      this.colour = makeColour(model);
      this.makeHatch();
      this.boxes = this.svg.append('g');
      svg.addEventListener('keydown', (event) => this.key(event));
    }

    makeHatch() {
      const hatch = this.svg.append('defs').append('pattern').attr('id', 'hatch');
      hatch.attr('width', 6).attr('height', 6).attr('patternUnits', 'userSpaceOnUse');
      hatch.append('rect').attr('width', 6).attr('height', 6).attr('class', 'hatch-ground');
      hatch.append('path').attr('d', 'M-1,7L7,-1').attr('class', 'hatch-line');
    }

    draw(focus, area) {
      this.focus = focus;
      const width = this.svg.node().clientWidth || 900;
      this.shown = layOut(focus, area, width);
      const levels = d3.max(this.shown, ({ node }) => node.depth) + 1;
      this.svg.attr('viewBox', `0 0 ${width} ${levels * ROW}`).attr('height', levels * ROW);
      this.boxes.selectAll('g').remove();
      const group = this.boxes.selectAll('g').data(this.shown).enter().append('g');
      group.attr('transform', ({ node }) => `translate(${node.x0},${node.depth * ROW})`);
      group.attr('class', ({ merged }) => (merged ? 'box merged' : 'box'));
      this.drawBoxes(group);
      this.listen(group.filter(({ merged }) => !merged));
    }

    fill(module) {
      const rate = this.model.rate(module.toggles, module.bits);
      return rate > 0 ? this.colour(rate) : 'url(#hatch)';
    }

    drawBoxes(group) {
      const widthOf = ({ node }) => Math.max(0, node.x1 - node.x0 - 1);
      const rect = group
        .append('rect')
        .attr('width', widthOf)
        .attr('height', ROW - 1);
      rect.attr('fill', ({ node, merged }) => (merged ? null : this.fill(node.data)));
      const label = ({ node, merged }) =>
        merged ? `${merged.length} smaller` : Text.name(node.data.name || 'whole dump');
      group
        .append('text')
        .attr('aria-hidden', 'true')
        .attr('x', 5)
        .attr('y', ROW / 2 + 4)
        .attr('class', ({ node, merged }) => {
          if (merged || this.fill(node.data).startsWith('url')) return 'plain';
          return d3.lab(this.fill(node.data)).l > 55 ? 'on-light' : 'on-dark';
        })
        .text((box) => clip(label(box), widthOf(box)));
      const mergedBoxes = group.filter(({ merged }) => merged);
      mergedBoxes.append('title').text(({ merged }) => `${merged.length} smaller modules`);
    }

    listen(group) {
      group
        .attr('role', 'button')
        .attr('tabindex', ({ node }) => (node.data === this.focus ? 0 : -1))
        .attr('aria-label', ({ node }) => describe(this.model, node.data));
      const show = ({ node }) => (this.readout.textContent = describe(this.model, node.data));
      const { enter } = this;
      group.each(function listenTo(box) {
        this.addEventListener('click', () => enter(box.node.data));
        this.addEventListener('pointerenter', () => show(box));
        this.addEventListener('focus', () => show(box));
      });
      show(this.shown[0]);
    }

    key(event) {
      const box = event.target.__data__;
      if (!box?.node?.data) return;
      const { node } = box;
      if (event.key === 'Enter' || event.key === ' ') this.enter(node.data, true);
      else if (event.key === 'Backspace' || event.key === 'Escape') {
        if (this.focus.parent) this.enter(this.focus.parent, true);
      } else if (!this.move(event.key, node)) return;
      event.preventDefault();
    }

    move(key, node) {
      const visible = this.shown.filter(({ merged }) => !merged).map((box) => box.node);
      const level = visible.filter(({ depth }) => depth === node.depth);
      const at = level.indexOf(node);
      const next = {
        ArrowLeft: level[at - 1],
        ArrowRight: level[at + 1],
        ArrowUp: node.parent,
        ArrowDown: visible.find(({ parent }) => parent === node),
        Home: level[0],
        End: level[level.length - 1],
      };
      if (!(key in next)) return false;
      if (next[key]) this.moveFocus(next[key]);
      return true;
    }

    moveFocus(node) {
      this.boxes.selectAll('g[role]').attr('tabindex', (box) => (box.node === node ? 0 : -1));
      this.boxes
        .selectAll('g[role]')
        .filter((box) => box.node === node)
        .node()
        ?.focus();
    }

    // The picture as a table: the modules drawn, with the figures that it shows.
    table() {
      const head = ['Module', 'Own bits and below', 'Bits', 'Toggles', `Per ${this.model.rateUnit} and bit`];
      const rows = this.shown
        .filter(({ merged }) => !merged)
        .map(({ node }) => [
          `${'  '.repeat(node.depth)}${Text.name(node.data.path || 'whole dump')}`,
          Text.count(d3.sum(node.descendants(), ({ data }) => data.ownBits)),
          Text.count(node.data.bits),
          Text.count(node.data.toggles),
          Text.figure(this.model.rate(node.data.toggles, node.data.bits)),
        ]);
      return { head, rows };
    }
  }

  return { View, drawScale };
})();
