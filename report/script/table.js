// A table that is sorted by a click on a column's head, searched as one types and saved as CSV. It
// writes a part of its rows at first: a page of a million rows would not scroll. Calling order: the
// constructor, then update whenever the rows have changed.
//
// An example of a column:
//
//   { key: 'toggles', title: 'Toggles', bar: true,
//     value: (row) => row.toggles, text: (row) => '1,234' }
//
// `key` is the column's name in CSV, `when` (optional) says whether it is there at present, `bar`
// shades a cell by its share of the largest value, `name` marks the row's heading, `hint` explains
// the title, `csvOnly` keeps the column off the page.
/* exported Table */
/* global Text */
'use strict';

const Table = (() => {
  // A screenful; the button below adds more.
  const FIRST_ROWS = 25;
  const MORE_ROWS = 200;

  // An element with properties and children. Children that are strings become text, never HTML.
  function make(tag, properties = {}, ...children) {
    const element = Object.assign(document.createElement(tag), properties);
    element.append(...children);
    return element;
  }

  // A spreadsheet takes a cell that begins with one of these for a formula. It would run what a
  // dump's name says, so such a text gets a quote in front. Numbers are left alone.
  function csvCell(value) {
    if (value === null || value === undefined) return '';
    if (typeof value === 'number') return String(value);
    const text = /^[=+\-@\t\r]/.test(value) ? `'${value}` : value;
    return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
  }

  // A browser saves what a link with a blob leads to; the blob is freed a little later.
  function save(fileName, text) {
    const link = make('a', {
      href: URL.createObjectURL(new Blob([text], { type: 'text/csv' })),
      download: fileName,
    });
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 1000);
  }

  // Names are found in any letter case, and by the dots of Verilog as by the slashes of their paths.
  const toSearched = (text) => text.toLowerCase().replaceAll('.', '/');

  // What is not known comes last, whichever way the rest is sorted. Numbers and texts alike; null
  // is what is not known.
  function compare(a, b, descending) {
    const unknown = (a === null) - (b === null);
    if (unknown !== 0) return unknown;
    const order = a < b ? -1 : a > b ? 1 : 0;
    return descending ? -order : order;
  }

  class View {
    // `columns` are as above; `rows()` gives all rows, `what` is the word for them, `searched(row)`
    // the text in which a search looks; `open(row)` is called for a click on a name.
    constructor(section, { what, columns, rows, searched, open, fileName, order }) {
      Object.assign(this, { what, columns, rows, searched, open, fileName, order });
      // Words of the search, in small letters; all must occur.
      this.words = [];
      // How many rows are written.
      this.limit = FIRST_ROWS;
      this.makeTools(section);
      this.makeTable(section);
    }

    // The search, the count of rows and the button that saves.
    makeTools(section) {
      const search = make('input', { type: 'search', placeholder: `Search ${this.what}`, spellcheck: false });
      search.setAttribute('aria-label', `Search ${this.what}`);
      search.addEventListener('input', () => {
        this.words = toSearched(search.value).split(/\s+/).filter(Boolean);
        // A new search begins at its first rows.
        this.limit = FIRST_ROWS;
        this.update();
      });
      const csv = make('button', { type: 'button', className: 'csv', textContent: 'Save as CSV' });
      csv.addEventListener('click', () => save(this.fileName, this.csv()));
      this.status = make('span', { className: 'status', role: 'status' });
      this.tools = make('div', { className: 'tools' }, search, this.status, csv);
      section.append(this.tools);
    }

    // Scrolls by itself, so that a wide table does not make the page scroll sideways.
    makeTable(section) {
      this.head = make('thead');
      this.body = make('tbody');
      const caption = make('caption', { className: 'unseen', textContent: this.what });
      const table = make('table', {}, caption, this.head, this.body);
      const frame = make('div', { className: 'frame', tabIndex: 0 }, table);
      frame.setAttribute('role', 'region');
      frame.setAttribute('aria-label', `Table of ${this.what}`);
      this.more = make('button', { type: 'button', className: 'more' });
      this.more.addEventListener('click', () => {
        this.limit += MORE_ROWS;
        this.update();
      });
      section.append(frame, this.more);
    }

    visibleColumns() {
      return this.columns.filter((column) => !column.csvOnly && (column.when?.() ?? true));
    }

    // Keys are those of columns; `descending` begins with the largest.
    sortBy(key, descending) {
      this.order = { key, descending };
      this.update();
    }

    // All rows that the search leaves, in order.
    found() {
      const { words, searched } = this;
      const matches = (row) => {
        const text = toSearched(searched(row));
        return words.every((word) => text.includes(word));
      };
      // Copied, as sorting would change the caller's list.
      const rows = words.length === 0 ? [...this.rows()] : this.rows().filter(matches);
      const column = this.columns.find(({ key }) => key === this.order.key);
      // Values are computed once a row, not once a comparison.
      const keyed = rows.map((row) => ({ row, key: column.value(row) }));
      keyed.sort((a, b) => compare(a.key, b.key, this.order.descending));
      return keyed.map(({ row }) => row);
    }

    // All rows that the search leaves, not only those that are shown, with every digit.
    csv() {
      const columns = this.columns.filter((column) => column.when?.() ?? true);
      const lines = [columns.map(({ key }) => key)];
      for (const row of this.found()) lines.push(columns.map((column) => column.value(row)));
      return `${lines.map((line) => line.map(csvCell).join(',')).join('\n')}\n`;
    }

    // A button sorts; another click on it turns the order around. Names rise first, figures fall.
    headCell(column) {
      const sorted = this.order.key === column.key;
      const button = make('button', { type: 'button', title: column.hint ?? '' }, column.title);
      button.addEventListener('click', () => {
        // The head is written anew by the sorting, so the focus has to follow.
        this.sortBy(column.key, sorted ? !this.order.descending : !column.name);
        this.head.querySelector(`th[data-key="${column.key}"] button`).focus();
      });
      const cell = make('th', { scope: 'col', className: column.name ? 'name' : 'figure' }, button);
      cell.dataset.key = column.key;
      if (sorted) cell.setAttribute('aria-sort', this.order.descending ? 'descending' : 'ascending');
      return cell;
    }

    // `largest` is the column's largest value, for the bar.
    cell(column, row, largest) {
      const text = column.text(row);
      if (!column.name) {
        const cell = make('td', { className: 'figure', textContent: text });
        const value = column.value(row);
        if (column.bar && largest > 0 && value > 0) {
          cell.classList.add('bar');
          cell.style.setProperty('--share', `${(100 * value) / largest}%`);
        }
        return cell;
      }
      // A name is the row's heading; where rows can be entered it is a button.
      const cell = make('th', { scope: 'row', className: 'name' });
      if (!this.open) return Object.assign(cell, { textContent: text });
      const button = make('button', { type: 'button', textContent: text });
      button.addEventListener('click', () => this.open(row));
      cell.append(button);
      return cell;
    }

    // Writes the table as search, order and limit say. Called whenever what `rows` gives has
    // changed.
    update() {
      const columns = this.visibleColumns();
      // The column of the order may have gone, as those of a stretch do.
      if (!columns.some(({ key }) => key === this.order.key)) {
        this.order = { key: 'toggles', descending: true };
      }
      const rows = this.found();
      const shown = rows.slice(0, this.limit);
      // Of all rows that were found, so that bars do not change as more are shown.
      const largest = new Map(
        columns
          .filter(({ bar }) => bar)
          .map((column) => [column, rows.reduce((most, row) => Math.max(most, column.value(row)), 0)]),
      );
      this.head.replaceChildren(make('tr', {}, ...columns.map((column) => this.headCell(column))));
      this.body.replaceChildren(
        ...shown.map((row) =>
          make('tr', {}, ...columns.map((column) => this.cell(column, row, largest.get(column)))),
        ),
      );
      this.status.textContent = `${Text.count(rows.length)} of ${Text.count(this.rows().length)} ${this.what}`;
      this.more.hidden = rows.length <= this.limit;
      // What the button says that it adds.
      const next = Math.min(MORE_ROWS, rows.length - this.limit);
      this.more.textContent = `Show ${Text.count(next)} more (${Text.count(shown.length)} shown)`;
    }
  }

  // The figures of a picture, for those who cannot see it. Filled when it is first opened.
  // `details` is the page's element; `fill` gives {head, rows} of texts. What is returned writes it
  // anew.
  function below(details, fill) {
    const write = () => {
      // The old table goes first.
      details.querySelector('.frame')?.remove();
      if (!details.open) return;
      const { head, rows } = fill();
      const line = (tag, cells) =>
        make(
          'tr',
          {},
          ...cells.map((text, at) =>
            make(at === 0 ? 'th' : tag, { className: at === 0 ? 'name' : 'figure', textContent: text }),
          ),
        );
      const table = make(
        'table',
        {},
        make('thead', {}, line('th', head)),
        make('tbody', {}, ...rows.map((cells) => line('td', cells))),
      );
      details.append(make('div', { className: 'frame', tabIndex: 0 }, table));
    };
    details.addEventListener('toggle', write);
    return write;
  }

  return { View, below, make };
})();
