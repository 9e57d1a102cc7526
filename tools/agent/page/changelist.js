// SPDX-License-Identifier: MIT
//
// What changed, newest first: all changes, or those of one object.
import {get} from './api.js';
import {make, setText} from './dom.js';
import {Loader} from './loader.js';
import {address} from './route.js';
import {fieldWord, KINDS, pathOf, when} from './words.js';

const DRAW_MS = 500;
const TYPES = {added: 'added', removed: 'removed', changed: 'changed'};

// What follows from the power or the status is not named beside it.
function fieldsOf({fields}) {
  const isState = fields.includes('power') || fields.includes('status');
  return isState ? fields.filter(name => name !== 'powerStateText' && name !== 'operationalStatus') : fields;
}

function row(change, isOfOne) {
  const path = pathOf(change.kind);
  const what = change.type === 'changed' && change.fields.length > 0
      ? fieldsOf(change).map(fieldWord).join(', ') : TYPES[change.type] ?? change.type;
  const name = change.name || change.key;
  const subject = isOfOne ? [] : [
    make('a', {class: 'name', href: path ? address(path, change.key) : null}, name),
    make('span', {class: 'kind'}, path ? KINDS[path].kind : change.kind),
  ];
  return make('li', {class: `change ${change.type}`},
      make('time', {datetime: change.time}, when(change.time)), subject,
      make('span', {class: 'what'}, what));
}

export class ChangeList {
  #changes = [];  // newest first
  #timer = 0;

  // `of`: {kind, key} of one object, or null for all; `most` are shown.
  constructor({of = null, most = 50} = {}) {
    Object.assign(this, {of, most});
    this.list = make('ol', {class: 'changes'});
    this.note = make('p', {class: 'note'}, 'Loading …');
    this.element = make('div', {}, this.note, this.list);
    this.loader = new Loader({
      work: () => get('changes', {...of, limit: most}),
      done: ({items}) => this.#take(items),
      failed: problem => setText(this.note, problem.message),
    });
    this.loader.ask();
  }

  // Those that came since, oldest first.
  changes(changes) {
    const ours = this.of
        ? changes.filter(({kind, key}) => kind === this.of.kind && key === this.of.key) : changes;
    if (ours.length > 0) this.#take([...ours].reverse());
  }

  reset() {
    this.loader.askSoon();
  }

  close() {
    this.loader.close();
    clearTimeout(this.#timer);
  }

  // Both lists may have the same changes: their ids say so.
  #take(changes) {
    const byId = new Map([...this.#changes, ...changes].map(change => [change.id, change]));
    this.#changes = [...byId.values()].sort((a, b) => b.id - a.id).slice(0, this.most);
    this.#timer ||= setTimeout(() => this.#draw(), this.list.children.length > 0 ? DRAW_MS : 0);
  }

  #draw() {
    this.#timer = 0;
    setText(this.note, this.#changes.length > 0 ? '' : 'Nothing since the agent started.');
    this.note.hidden = this.#changes.length > 0;
    const known = new Map([...this.list.children].map(element => [element.change.id, element]));
    this.list.replaceChildren(...this.#changes.map(change => known.get(change.id) ?? this.#make(change)));
  }

  #make(change) {
    return Object.assign(row(change, this.of !== null), {change});
  }
}
