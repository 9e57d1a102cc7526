// SPDX-License-Identifier: MIT
//
// Who may do what: a list of identities, privileges or roles, and beside it the answer for the one
// that is chosen. Identities get privileges through roles, so each answer says through which.
import {accessAnswer} from './accessanswer.js';
import {get, objectPath} from './api.js';
import {ChangeList} from './changelist.js';
import {COLUMNS} from './columns.js';
import {make, setAttribute, setText} from './dom.js';
import {Grid} from './grid.js';
import {sortBy} from './list.js';
import {Loader} from './loader.js';
import {queryOf} from './query.js';
import {address, go} from './route.js';
import {Rows} from './rows.js';
import {KINDS, number} from './words.js';

const QUESTIONS = {
  identities: 'What may an identity do?',
  privileges: 'Who has a privilege?',
  roles: 'What is in a role?',
};

export class Access {
  constructor(path, route, context) {
    Object.assign(this, {path, route, context});
    this.heading = make('h1', {tabindex: -1}, 'Who may do what');
    this.text = make('input', {type: 'search', placeholder: `Search ${KINDS[path].many}`,
                               'aria-label': `Search ${KINDS[path].many}`, autocomplete: 'off',
                               spellcheck: 'false', oninput: () => this.#search()});
    this.found = make('p', {class: 'found'}, ' ');
    this.problem = make('p', {class: 'problem', role: 'alert', hidden: true});
    this.grid = new Grid({label: KINDS[path].title, columns: this.#columns(),
                          sort: id => sortBy(this.route, this.query.get('sort'), id)});
    this.answer = make('section', {class: 'answer', 'aria-label': 'Answer'});
    this.element = make('section', {class: 'access'},
        make('div', {class: 'title'}, this.heading),
        make('nav', {class: 'questions', 'aria-label': 'Questions'}, Object.entries(QUESTIONS).map(
            ([kind, question]) => make('a', {href: address(kind),
                'aria-current': kind === path ? 'page' : null}, question))),
        this.problem,
        make('div', {class: 'choose'},
             make('section', {class: 'choice', 'aria-label': KINDS[path].title},
                  this.text, this.found, this.grid.element),
             this.answer));
    this.query = queryOf(path, route);
    this.rows = new Rows(path, this.query, (problem, isNew) => this.#changed(problem, isNew));
    this.grid.use(this.rows);
    this.grid.showSort(this.query.get('sort'));
    this.loader = new Loader({
      work: key => get(objectPath(path, key)), done: (item, key) => this.#show(item, key),
      failed: (problem, key) => this.#fail(problem, key),
    });
    this.update(route);
  }

  update(route) {
    const isOther = !this.shownKey || this.shownKey !== route.key;
    this.route = route;
    const text = route.query.get('text') ?? '';
    if (this.text.value.trim() !== text) this.text.value = text;
    const query = queryOf(this.path, route);
    if (query.toString() !== this.query.toString()) {
      this.query = query;
      this.grid.showSort(query.get('sort'));
      this.rows.ask(query);
    }
    this.element.classList.toggle('chosen', route.key !== null);
    if (isOther) this.#choose(route.key);
    this.grid.redraw();
  }

  summary({authorization}) {
    if (!authorization.shown) {
      this.#complain('The daemon does not show roles and privileges to the agent\'s account' +
                     (authorization.reason ? `: ${authorization.reason}` : '.'));
    } else if (this.isRefused) {
      this.#complain('');
      this.reset();
    }
    this.isRefused = !authorization.shown;
  }

  changes(changes) {
    this.rows.take(changes);
    this.list?.changes(changes);
    const isOfAccess = ({kind}) => kind !== 'host' && kind !== 'machine';
    if (this.route.key !== null && changes.some(isOfAccess)) this.loader.askSoon(this.route.key);
  }

  reset() {
    this.rows.refresh();
    this.list?.reset();
    if (this.route.key !== null) this.loader.askSoon(this.route.key);
  }

  close() {
    this.rows.close();
    this.grid.close();
    this.loader.close();
    this.list?.close();
  }

  takeFocus() {
    return false;
  }

  // The links of the list keep the search.
  #columns() {
    const to = item => address(this.path, item.key, this.route.query);
    const [name, ...others] = COLUMNS[this.path];
    const fill = (cell, item) => {
      name.fill(cell, item);
      setAttribute(cell.firstChild, 'href', item ? to(item) : null);
      setAttribute(cell.firstChild, 'aria-current', item && item.key === this.route.key ? 'true' : null);
    };
    return Object.assign([{...name, fill}, ...others], {layout: COLUMNS[this.path].layout});
  }

  #search() {
    const query = new URLSearchParams(this.route.query);
    query.delete('text');
    if (this.text.value.trim()) query.set('text', this.text.value.trim());
    go(address(this.path, this.route.key, query), {replace: true});
  }

  #choose(key) {
    this.shownKey = key;
    this.item = null;
    this.list?.close();
    this.list = null;
    this.answer.replaceChildren(make('p', {class: 'note'}, key === null
        ? `Choose one of the ${KINDS[this.path].many}.` : 'Loading …'));
    if (key === null) return;
    this.list = new ChangeList({of: {kind: KINDS[this.path].kind, key}, most: 20});
    this.loader.ask(key);
  }

  #show(item, key) {
    this.#complain('');
    if (key !== this.route.key || JSON.stringify(item) === JSON.stringify(this.item)) return;
    this.item = item;
    const back = address(this.path, null, this.route.query);
    this.answer.replaceChildren(
        make('a', {class: 'back', href: back}, `All ${KINDS[this.path].many}`),
        ...accessAnswer(this.path, item),
        make('h3', {}, 'What changed'), this.list.element);
    this.context.title(item.name || item.key);
    this.context.announce(`${KINDS[this.path].one} ${item.name || item.key}`);
  }

  #fail(problem, key) {
    if (key !== this.route.key) return;
    const isGone = problem.status === 404;
    this.#complain(isGone ? `There is no ${KINDS[this.path].kind} with the key ${key}.` : problem.message);
    if (!this.item) this.answer.replaceChildren();
  }

  #complain(text) {
    this.problem.hidden = text === '';
    setText(this.problem, text);
  }

  #changed(problem, isNew) {
    if (problem) this.#complain(problem.message);
    else if (isNew) this.grid.top = 0;
    const {total} = this.rows;
    if (total !== null) {
      setText(this.found, total === 0 ? 'Nothing matches' : `${number(total)} ${KINDS[this.path].many}`);
    }
    this.grid.draw();
  }
}
