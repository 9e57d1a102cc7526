// SPDX-License-Identifier: MIT
//
// A list of hosts or machines: filters, the number of what matches, and the rows.
import {COLUMNS} from './columns.js';
import {make, setText} from './dom.js';
import {Filters} from './filters.js';
import {Grid} from './grid.js';
import {queryOf} from './query.js';
import {address, go} from './route.js';
import {Rows} from './rows.js';
import {count, KINDS, number} from './words.js';

const MOST_PLACES = 20;
const places = new Map();  // where lists were scrolled to, by address: "back" leads there

function keepPlace(hash, place) {
  places.delete(hash);
  places.set(hash, place);
  if (places.size > MOST_PLACES) places.delete(places.keys().next().value);
}

// Sorts by a column, or the other way round when it does already.
export function sortBy(route, current, id) {
  const query = new URLSearchParams(route.query);
  query.set('sort', current === id ? `-${id}` : id);
  go(address(route.view, route.key, query), {replace: true});
}

export class List {
  constructor(path, route, context) {
    Object.assign(this, {path, route, context});
    this.filters = new Filters(path, route);
    this.found = make('p', {class: 'found'}, ' ');
    this.problem = make('p', {class: 'problem', role: 'alert', hidden: true});
    this.grid = new Grid({label: KINDS[path].title, columns: COLUMNS[path],
                          sort: id => sortBy(this.route, this.query.get('sort'), id)});
    this.heading = make('h1', {tabindex: -1}, KINDS[path].title);
    this.element = make('section', {class: 'list'},
        make('div', {class: 'title'}, this.heading, this.found), this.filters.element, this.problem,
        this.grid.element);
    this.query = queryOf(path, route);
    this.place = places.get(address(route.view, route.key, route.query));
    this.rows = new Rows(path, this.query, (problem, isNew) => this.#changed(problem, isNew));
    this.grid.use(this.rows);
    this.grid.showSort(this.query.get('sort'));
  }

  update(route) {
    this.#keepPlace();
    this.route = route;
    this.filters.show(route);
    const query = queryOf(this.path, route);
    if (query.toString() === this.query.toString()) return;
    this.query = query;
    this.grid.showSort(query.get('sort'));
    this.rows.ask(query);
  }

  summary() {
    if (this.rows.total !== null) this.#sayHowMany(false);
  }

  changes(changes) {
    this.rows.take(changes);
  }

  reset() {
    this.rows.refresh();
  }

  close() {
    this.#keepPlace();
    this.rows.close();
    this.grid.close();
    this.filters.close();
  }

  // "Back" restores the focus as well.
  takeFocus() {
    if (this.place?.row === undefined || this.place.row === null) return false;
    this.focusRow = this.place.row;
    return true;
  }

  #keepPlace() {
    keepPlace(address(this.route.view, this.route.key, this.route.query),
              {top: this.grid.top, row: this.grid.keys.lastRow()});
  }

  #changed(problem, isNew) {
    this.problem.hidden = !problem;
    setText(this.problem, problem?.message ?? '');
    if (isNew) {
      this.grid.top = this.place?.top ?? 0;
      this.place = null;
    }
    if (this.rows.total !== null) this.#sayHowMany(isNew);
    this.grid.draw();
    if (isNew && this.focusRow !== undefined) {
      this.grid.keys.focusRow(this.focusRow);
      this.focusRow = undefined;
    }
  }

  #sayHowMany(isNew) {
    const all = this.context.live.summary?.[this.path].total;
    const {total} = this.rows;
    const isPart = all !== undefined && all !== total;
    const kind = KINDS[this.path];
    const text = isPart ? `${number(total)} of ${number(all)}`
                        : count(total, kind.kind, kind.many);
    setText(this.found, total === 0 ? 'Nothing matches' : text);
    if (isNew) this.context.announce(total === 0 ? 'Nothing matches' : `${text} found`);
  }
}
