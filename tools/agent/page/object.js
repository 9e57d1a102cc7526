// SPDX-License-Identifier: MIT
//
// The page of one host or machine: all its properties, what it is linked to, what changed lately.
import {get, objectPath} from './api.js';
import {ChangeList} from './changelist.js';
import {MACHINES_OF_A_HOST} from './columns.js';
import {make, setText} from './dom.js';
import {Grid} from './grid.js';
import {Loader} from './loader.js';
import {powerBar, powerText} from './marks.js';
import {sortBy} from './list.js';
import {queryOf} from './query.js';
import {address} from './route.js';
import {Rows} from './rows.js';
import {count, KINDS, number, POWER_WORDS, STATUS_WORDS} from './words.js';

const state = (name, words) => item =>
    make('span', {class: `mark ${name}`, 'data-state': item[name]}, words[item[name]] ?? item[name]);

const hostLink = ({host}) =>
    host ? make('a', {href: address('hosts', host.key)}, host.name || host.key) : '';

// Label and content of each property; what is not named here follows as the agent gives it.
const PROPERTIES = {
  hosts: {
    status: ['Status', state('status', STATUS_WORDS)],
    machines: ['Machines', item => make('a', {href: address('machines', null, {host: item.key})},
                                        number(item.machines))],
    power: ['Power', item => [powerBar(item.power), ` ${powerText(item.power)}`]],
    vendor: ['Vendor'], model: ['Model'], description: ['Description'],
  },
  machines: {
    power: ['Power', state('power', POWER_WORDS)],
    status: ['Status', state('status', STATUS_WORDS)],
    host: ['Host', hostLink],
    system: ['Operating system'], hostName: ['Guest name'], address: ['Address'],
    description: ['Description'], path: ['Path'], powerStateText: ['Power state, as the daemon has it'],
  },
};
const LAST = {uuid: ['UUID'], operationalStatus: ['Operational status'], key: ['Key']};

// The properties of an item in their order: {name, label, content}, the content made when needed.
function properties(path, item) {
  const known = PROPERTIES[path];
  const others = Object.keys(item).filter(name => !(name in known) && !(name in LAST) && name !== 'name');
  const all = {...known, ...Object.fromEntries(others.map(name => [name, [name]])), ...LAST};
  return Object.entries(all).map(([name, [label, content = ({[name]: value}) => String(value ?? '')]]) =>
      ({name, label, content}));
}

export class ObjectPage {
  constructor(path, route, context) {
    Object.assign(this, {path, route, context, kind: KINDS[path].kind});
    this.heading = make('h1', {tabindex: -1}, route.key);
    this.problem = make('p', {class: 'problem', role: 'alert', hidden: true});
    this.values = new Map();  // elements by property
    this.facts = make('dl', {class: 'facts'});
    this.list = new ChangeList({of: {kind: this.kind, key: route.key}, most: 100});
    this.element = make('article', {class: 'object'},
        make('nav', {class: 'trail', 'aria-label': 'Up'},
             make('a', {href: address(path)}, `All ${KINDS[path].many}`)),
        this.heading, this.problem,
        make('div', {class: 'halves'},
             make('section', {'aria-label': 'Properties'}, this.facts, this.#makeMachines()),
             make('section', {class: 'latest', 'aria-labelledby': 'latest-title'},
                  make('h2', {id: 'latest-title'}, 'What changed'), this.list.element)));
    this.loader = new Loader({
      work: () => get(objectPath(path, route.key)),
      done: item => this.#show(item),
      failed: problem => this.#fail(problem),
      share: 50,
    });
    this.loader.ask();
  }

  update(route) {
    this.route = route;
    this.rows?.ask(this.#machinesQuery());
    this.grid?.showSort(this.#machinesQuery().get('sort'));
  }

  changes(changes) {
    this.list.changes(changes);
    this.rows?.take(changes);
    const isOurs = ({kind, key}) => kind === this.kind && key === this.route.key;
    // A host's numbers come from its machines. A change says whose they change, if it is known.
    const mayCount = ({kind, hosts}) => this.rows && kind === 'machine' &&
        (hosts ? hosts.some(({key}) => key === this.route.key) : true);
    if (changes.some(change => isOurs(change) || mayCount(change))) this.loader.askSoon();
  }

  reset() {
    this.list.reset();
    this.rows?.refresh();
    this.loader.askSoon();
  }

  close() {
    this.loader.close();
    this.list.close();
    this.rows?.close();
    this.grid?.close();
  }

  takeFocus() {
    return false;
  }

  #machinesQuery() {
    const query = queryOf('machines', this.route);
    query.set('host', this.route.key);
    return query;
  }

  #makeMachines() {
    if (this.path !== 'hosts') return null;
    this.grid = new Grid({label: 'Machines of this host', columns: MACHINES_OF_A_HOST,
                          sort: id => sortBy(this.route, this.#machinesQuery().get('sort'), id)});
    this.rows = new Rows('machines', this.#machinesQuery(), (problem, isNew) => {
      setText(this.machinesTitle, count(this.rows?.total ?? 0, 'machine'));
      if (isNew) this.grid.top = 0;
      this.grid.draw();
    });
    this.grid.use(this.rows);
    this.grid.showSort('name');
    this.machinesTitle = make('h2', {}, 'Machines');
    return make('section', {class: 'inner-list'}, this.machinesTitle, this.grid.element);
  }

  #show(item) {
    const name = item.name || item.key;
    setText(this.heading, name);
    this.context.title(name);
    this.problem.hidden = true;
    this.element.classList.remove('gone');
    for (const property of properties(this.path, item)) this.#showProperty(property, item);
    this.item = item;
  }

  // Touches only what differs: a selection and the focus survive.
  #showProperty({name, label, content}, item) {
    let value = this.values.get(name);
    if (!value) {
      this.values.set(name, value = make('dd'));
      this.facts.append(make('div', {}, make('dt', {}, label), value));
    } else if (JSON.stringify(item[name]) === JSON.stringify(this.item[name])) {
      return;
    }
    const made = content(item);
    value.classList.toggle('nothing', made === '');
    value.replaceChildren(...[made === '' ? 'not given' : made].flat());
  }

  #fail(problem) {
    const isGone = problem.status === 404;
    const before = this.item ? ' What is shown is last known.' : '';
    this.problem.hidden = false;
    setText(this.problem, isGone
        ? `There is no ${this.kind} with the key ${this.route.key}${this.item ? ' any more' : ''}.${before}`
        : problem.message + before);
    this.element.classList.toggle('gone', isGone);
  }
}
