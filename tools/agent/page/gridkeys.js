// SPDX-License-Identifier: MIT
//
// The keyboard in a grid: one stop of the Tab key; arrows, Home, End, Page Up and Page Down move
// through headers and cells, with Ctrl to the ends.

const HEADER = -1;

export class GridKeys {
  #row = HEADER;
  #column = 0;
  #stop = null;  // the element that Tab reaches

  constructor(grid) {
    this.grid = grid;
    grid.element.addEventListener('keydown', event => this.#press(event));
    grid.element.addEventListener('focusin', event => this.#follow(event.target));
  }

  // The row that has the focus, or none.
  focusedRow() {
    return this.grid.element.contains(document.activeElement) && this.#row !== HEADER
        ? this.#row : null;
  }

  // The row that had the focus last, or none.
  lastRow() {
    return this.#row === HEADER ? null : this.#row;
  }

  // Puts the focus on a row, once it is there.
  focusRow(index) {
    this.#row = index;
    this.#column = 0;
    this.#focus();
  }

  // Rows were drawn: Tab still has to reach one element.
  drawn() {
    if (this.#row >= this.grid.length) this.#row = this.grid.length - 1;
    this.#makeStop(this.#element());
  }

  #element() {
    const cells = this.#row === HEADER ? this.grid.heads
        : [...this.grid.canvas.children].find(row => row.index === this.#row)?.children;
    const cell = cells?.[this.#column];
    return cell ? GridKeys.#target(cell) : null;
  }

  // What takes the focus in a cell: its link or button, if it has one.
  static #target(cell) {
    return cell.querySelector('a[href], button, .head span') ?? cell;
  }

  #makeStop(element) {
    const stop = element ?? GridKeys.#target(this.grid.heads[0]);
    if (this.#stop === stop) return;
    if (this.#stop) this.#stop.tabIndex = -1;
    stop.tabIndex = 0;
    this.#stop = stop;
  }

  #follow(target) {
    const cell = target.closest('.cell');
    if (!cell) return;
    this.#row = cell.parentElement.index ?? HEADER;
    this.#column = [...cell.parentElement.children].indexOf(cell);
    this.#makeStop(GridKeys.#target(cell));
  }

  #press(event) {
    if (event.altKey || event.metaKey) return;
    const next = this.#next(event.key, event.ctrlKey);
    if (!next) return;
    event.preventDefault();
    this.#row = Math.max(HEADER, Math.min(next.row, this.grid.length - 1));
    this.#column = Math.max(0, Math.min(next.column, this.grid.columns.length - 1));
    this.#focus();
  }

  #next(key, isFar) {
    const [row, column, end] = [this.#row, this.#column, this.grid.columns.length - 1];
    switch (key) {
      case 'ArrowUp': return {row: isFar ? 0 : row - 1, column};
      case 'ArrowDown': return {row: isFar ? Infinity : row + 1, column};
      case 'ArrowLeft': return {row, column: isFar ? 0 : column - 1};
      case 'ArrowRight': return {row, column: isFar ? end : column + 1};
      case 'PageUp': return {row: Math.max(Math.min(row, 0), row - this.grid.page), column};
      case 'PageDown': return {row: row + this.grid.page, column};
      case 'Home': return {row: isFar ? 0 : row, column: 0};
      case 'End': return {row: isFar ? Infinity : row, column: end};
      default: return null;
    }
  }

  #focus() {
    if (this.#row !== HEADER) this.grid.reveal(this.#row);
    const element = this.#element();
    this.#makeStop(element);
    element?.focus({preventScroll: true});
  }
}
