// SPDX-License-Identifier: MIT
//
// A table of any length: only rows in view have elements. Keys move one focus through headers and
// cells (GridKeys); a screen reader learns the number of rows and the place of each.
import {make, setAttribute, setText} from './dom.js';
import {GridKeys} from './gridkeys.js';

const SPARE = 6;                // rows above and below the view
const HIGHEST_PX = 12_000_000;  // browsers cut taller elements; a longer list scrolls in larger steps

export class Grid {
  #rows = null;
  #elements = new Map();  // rows' elements by index
  #unused = [];
  #isDue = false;
  #rowHeight = 32;
  #viewHeight = 0;

  // `columns`: see columns.js. `sort(id)` is called when a header is used.
  constructor({label, columns, sort}) {
    this.columns = columns.filter(column => !column.isHidden);
    this.heads = this.columns.map(column => this.#makeHead(column, sort));
    this.canvas = make('div', {class: 'canvas', role: 'none'});
    this.body = make('div', {class: 'body', role: 'rowgroup'}, this.canvas);
    this.headRow = make('div', {class: 'head', role: 'row', 'aria-rowindex': 1}, this.heads);
    this.element = make('div', {
      class: `grid ${columns.layout}`, role: 'grid', 'aria-label': label,
      'aria-colcount': this.columns.length,
    }, make('div', {role: 'rowgroup'}, this.headRow), this.body);
    this.keys = new GridKeys(this);
    this.body.addEventListener('scroll', () => this.draw(), {passive: true});
    this.observer = new ResizeObserver(() => this.#measure());
    this.observer.observe(this.body);
  }

  // The rows to show, and how they are sorted.
  use(rows) {
    this.#rows = rows;
    this.draw();
  }

  showSort(sort) {
    const id = sort.replace('-', '');
    this.heads.forEach((head, i) => {
      const isSorted = this.columns[i].sort === id;
      setAttribute(head, 'aria-sort',
                   isSorted ? (sort.startsWith('-') ? 'descending' : 'ascending') : null);
    });
  }

  get length() {
    return this.#rows?.total ?? 0;
  }

  // Rows that fit into the view.
  get page() {
    return Math.max(1, Math.floor(this.#viewHeight / this.#rowHeight));
  }

  // The row that is at the top of the view.
  get top() {
    return Math.round(this.#offset() / this.#rowHeight);
  }

  set top(index) {
    this.#scrollTo(index * this.#rowHeight);
  }

  // Brings a row into view and gives its element.
  reveal(index) {
    const [begin, offset] = [index * this.#rowHeight, this.#offset()];
    if (begin < offset) this.#scrollTo(begin);
    else if (begin + this.#rowHeight > offset + this.#viewHeight) {
      this.#scrollTo(begin + this.#rowHeight - this.#viewHeight);
    }
    this.#draw();
    return this.#elements.get(index);
  }

  // Draws before the browser does; many calls draw once.
  draw() {
    if (this.#isDue) return;
    this.#isDue = true;
    requestAnimationFrame(() => {
      this.#isDue = false;
      this.#draw();
    });
  }

  // Fills all cells again: something besides the rows has changed.
  redraw() {
    for (const row of this.#elements.values()) row.item = null;
    this.draw();
  }

  close() {
    this.observer.disconnect();
  }

  #makeHead(column, sort) {
    const content = column.sort
        ? make('button', {type: 'button', tabindex: -1, onclick: () => sort(column.sort)}, column.label)
        : make('span', {tabindex: -1}, column.label);
    return make('div', {class: `cell ${column.id}`, role: 'columnheader'}, content);
  }

  #measure() {
    this.#rowHeight = parseFloat(getComputedStyle(this.element).getPropertyValue('--row')) || 32;
    this.#viewHeight = this.body.clientHeight;
    const bar = this.body.offsetWidth - this.body.clientWidth;
    this.headRow.style.setProperty('--bar', `${bar}px`);
    this.draw();
  }

  // Pixels of the list above the view, also where the list is taller than its element.
  #offset() {
    const {full, height} = this.#heights();
    if (full <= height) return this.body.scrollTop;
    return this.body.scrollTop / (height - this.#viewHeight) * (full - this.#viewHeight);
  }

  #scrollTo(offset) {
    const {full, height} = this.#heights();
    this.canvas.style.height = `${height}px`;
    this.body.scrollTop = full <= height
        ? offset : offset / (full - this.#viewHeight) * (height - this.#viewHeight);
  }

  #heights() {
    const full = this.length * this.#rowHeight;
    return {full, height: Math.min(full, HIGHEST_PX)};
  }

  #draw() {
    if (!this.#rows) return;
    this.canvas.style.height = `${this.#heights().height}px`;
    setAttribute(this.element, 'aria-rowcount', this.#rows.total === null ? -1 : this.length + 1);
    setAttribute(this.element, 'aria-busy', this.#rows.isOld);
    const offset = this.#offset();
    const first = Math.max(0, Math.floor(offset / this.#rowHeight));
    const last = Math.min(this.length, Math.ceil((offset + this.#viewHeight) / this.#rowHeight));
    this.#rows.show(first, last);
    this.#place(Math.max(0, first - SPARE), Math.min(this.length, last + SPARE), offset);
    this.keys.drawn();
  }

  // The focused row keeps its element when it is scrolled away: the focus would be lost.
  #place(first, last, offset) {
    const kept = this.keys.focusedRow();
    for (const [index, element] of this.#elements) {
      if ((index >= first && index < last) || (index === kept && index < this.length)) continue;
      this.#elements.delete(index);
      element.remove();
      this.#unused.push(element);
    }
    const shift = this.body.scrollTop - offset;
    const wanted = new Set(this.#elements.keys());
    for (let index = first; index < last; ++index) wanted.add(index);
    for (const index of wanted) this.#placeRow(index, index * this.#rowHeight + shift);
  }

  #placeRow(index, y) {
    let row = this.#elements.get(index);
    if (!row) {
      row = this.#unused.pop() ?? this.#makeRow();
      row.item = null;
      this.#elements.set(index, row);
      setAttribute(row, 'aria-rowindex', index + 2);
      row.index = index;
      this.#insert(row);
    }
    const transform = `translateY(${y}px)`;
    if (row.style.transform !== transform) row.style.transform = transform;
    this.#fill(row, this.#rows.at(index));
  }

  // In the order of the list: a screen reader reads elements in their order.
  #insert(row) {
    let next = this.canvas.lastElementChild;
    while (next && next.index > row.index) next = next.previousElementSibling;
    if (next) next.after(row);
    else this.canvas.prepend(row);
  }

  #makeRow() {
    const cells = this.columns.map(column => make(
        'div', {class: `cell ${column.id}`, role: 'gridcell', tabindex: -1}, column.make?.() ?? []));
    return make('div', {class: 'row', role: 'row'}, cells);
  }

  #fill(row, item) {
    if (row.item === item && item) return;
    const isSame = row.item && item && row.item.key === item.key;
    row.item = item ?? null;
    row.classList.toggle('missing', !item);
    this.columns.forEach((column, i) => {
      const cell = row.children[i];
      const before = cell.textContent;
      if (column.fill) column.fill(cell, item);
      else setText(cell, item?.[column.id] ?? '');
      cell.classList.toggle('fresh', isSame && cell.textContent !== before);
    });
  }
}
