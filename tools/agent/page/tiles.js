// SPDX-License-Identifier: MIT
//
// Hosts as tiles, in groups by status: what needs attention comes first and has names. A group of
// very many becomes a field of small tiles.
import {get, objectPath} from './api.js';
import {make, setAttribute, setText} from './dom.js';
import {Loader} from './loader.js';
import {powerText, setPowerBar} from './marks.js';
import {TILE_GROUPS, TILES, tilesQuery} from './query.js';
import {address} from './route.js';
import {count, number, STATUSES, STATUS_WORDS} from './words.js';

const REST_MS = 5000;    // between fetches of all
const MOST = 4000;      // tiles; the list has the others
const MOST_LARGE = 24;   // in a group: with numbers
const MOST_NAMED = 120;  // with names, else small ones
const MOST_SINGLE = 8;  // hosts that are fetched one by one

// What the names of all hosts end with, such as ".example.org": tiles are narrow.
function sharedDomain(hosts) {
  const [first = ''] = hosts.map(host => host.name);
  const domain = first.includes('.') ? first.slice(first.indexOf('.')) : '';
  const isShared = hosts.length > 1 && /[a-z]/i.test(domain) &&
      hosts.every(({name}) => name.endsWith(domain) && name.length > domain.length);
  return isShared ? domain : '';
}

// Those of the objects that are still there.
async function fetchObjects(path, keys) {
  const fetchOne = key => get(objectPath(path, key)).catch(problem => {
    if (problem.status === 404) return null;
    throw problem;
  });
  return (await Promise.all(keys.map(fetchOne))).filter(Boolean);
}

class Group {
  constructor(status) {
    this.status = status;
    this.number = make('span', {class: 'number'});
    this.list = make('ul', {class: 'tiles', onkeydown: event => this.#press(event)});
    this.rest = make('a', {class: 'rest', href: address('hosts', null, {status}), hidden: true});
    this.element = make('section', {class: 'group', 'data-state': status, hidden: true},
        make('h3', {}, make('a', {href: address('hosts', null, {status})},
                            make('span', {class: 'mark status', 'data-state': status},
                                 STATUS_WORDS[status]), ' ', this.number)),
        this.list, this.rest);
  }

  // Shows these hosts, of so many.
  show(hosts, total, domain) {
    this.element.hidden = total === 0;
    setText(this.number, number(total));
    this.list.classList.toggle('small', hosts.length > MOST_NAMED);
    this.list.classList.toggle('large', hosts.length <= MOST_LARGE);
    while (this.list.children.length > hosts.length) this.list.lastChild.remove();
    while (this.list.children.length < hosts.length) this.list.append(Group.#makeTile());
    hosts.forEach((host, i) => Group.#fill(this.list.children[i].firstChild, host, domain));
    const tab = this.list.querySelector('a[tabindex="0"]');
    if (!tab && this.list.firstChild) this.list.firstChild.firstChild.tabIndex = 0;
    this.rest.hidden = total <= hosts.length;
    setText(this.rest, `${count(total - hosts.length, 'more host')} in the list`);
  }

  static #makeTile() {
    return make('li', {}, make('a', {class: 'tile', tabindex: -1},
        make('span', {class: 'name'}), make('span', {class: 'power-bar'}),
        make('span', {class: 'count'})));
  }

  static #fill(tile, host, domain) {
    const shown = `${host.key} ${host.name} ${host.status} ${Object.values(host.power)} ${domain}`;
    if (tile.shown === shown) return;
    tile.shown = shown;
    const name = host.name || host.key;
    setAttribute(tile, 'href', address('hosts', host.key));
    const text = `${name}: ${STATUS_WORDS[host.status] ?? host.status}, ${powerText(host.power)}`;
    setAttribute(tile, 'title', text);
    setAttribute(tile, 'data-state', host.status);
    setText(tile.firstChild, name.slice(0, name.length - domain.length));
    setPowerBar(tile.children[1], host.power);
    setText(tile.lastChild, `${number(host.power.on)} of ${number(host.machines)} on`);
  }

  // One stop of the Tab key for all tiles; arrows move between them.
  #press(event) {
    const tiles = [...this.list.children];
    const here = tiles.indexOf(event.target.closest('li'));
    const wide = tiles.findIndex(tile => tile.offsetTop > tiles[0].offsetTop);
    const line = wide > 0 ? wide : tiles.length;
    const to = {ArrowLeft: here - 1, ArrowRight: here + 1, ArrowUp: here - line,
                ArrowDown: here + line, Home: 0, End: tiles.length - 1}[event.key];
    if (to === undefined || event.altKey || event.metaKey) return;
    event.preventDefault();
    const tile = tiles[to]?.firstChild;
    if (!tile) return;
    tiles[here].firstChild.tabIndex = -1;
    tile.tabIndex = 0;
    tile.focus();
  }
}

export class Tiles {
  #hosts = new Map();  // by key, in the order of their names
  #changed = new Set();   // keys of hosts
  #machines = new Set();  // keys of machines whose hosts have changed
  #news = new Map();      // what changes said since all hosts were asked for
  #all;
  #single;

  // `failed(problem)` is called with null when all is well again.
  constructor(context, failed) {
    this.context = context;
    this.groups = STATUSES.map(status => new Group(status));
    this.note = make('p', {class: 'note'}, 'Loading …');
    this.element = make('div', {}, this.note, this.groups.map(group => group.element));
    this.#all = new Loader({
      work: () => this.#fetchAll(), done: hosts => { this.#take(hosts); failed(null); }, failed,
      share: 100,
      rest: REST_MS,
    });
    this.#single = new Loader({
      work: () => this.#fetchChanged(), done: hosts => this.#replace(hosts),
      failed: () => this.#all.askSoon(),
      rest: 1000,
    });
    this.#all.ask();
  }

  // Changes say what hosts show now. Where they do not, it is asked for: of a machine that comes or
  // goes there is a change of its host, too; of one that changes its power there is none, but its
  // host's bar changes.
  changes(changes) {
    const hosts = [];
    for (const change of changes) {
      const {kind, type, key, fields, item} = change;
      if (kind === 'host' && type !== 'changed') return this.reset();
      if (kind === 'host' && item) hosts.push(item);
      else if (kind === 'host') this.#changed.add(key);
      else if (change.hosts) hosts.push(...change.hosts);
      else if (kind === 'machine' && type === 'changed' &&
               (fields.length === 0 || fields.includes('power'))) this.#machines.add(key);
    }
    for (const host of hosts) this.#news.set(host.key, host);
    if (hosts.length > 0) this.#replace(hosts);
    const size = this.#changed.size + this.#machines.size;
    if (size > MOST_SINGLE) this.reset();
    else if (size > 0) this.#single.askSoon();
  }

  reset() {
    this.#changed.clear();
    this.#machines.clear();
    this.#all.askSoon();
  }

  close() {
    this.#all.close();
    this.#single.close();
  }

  async #fetchAll() {
    const hosts = [];
    this.#news.clear();
    for (const states of TILE_GROUPS) {
      let offset = 0;
      for (let more = true; more && hosts.length < MOST;) {
        const {items, next} = await get('hosts', tilesQuery(states, offset));
        hosts.push(...items);
        offset += TILES;
        more = next !== null;
      }
    }
    return hosts;
  }

  async #fetchChanged() {
    const [keys, machines] = [new Set(this.#changed), [...this.#machines]];
    this.#changed.clear();
    this.#machines.clear();
    for (const {host} of await fetchObjects('machines', machines)) if (host) keys.add(host.key);
    return fetchObjects('hosts', [...keys]);
  }

  #take(hosts) {
    this.#hosts = new Map(hosts.map(host => [host.key, this.#news.get(host.key) ?? host]));
    setText(this.note, 'No hosts.');
    this.note.hidden = hosts.length > 0;
    this.draw();
  }

  #replace(hosts) {
    for (const host of hosts) if (this.#hosts.has(host.key)) this.#hosts.set(host.key, host);
    this.draw();
  }

  // Also when the summary has other numbers.
  draw() {
    const groups = new Map(STATUSES.map(status => [status, []]));
    for (const host of this.#hosts.values()) (groups.get(host.status) ?? groups.get('unknown')).push(host);
    const domain = sharedDomain([...this.#hosts.values()]);
    const totals = this.context.live.summary?.hosts.status ?? {};
    for (const group of this.groups) {
      const shown = groups.get(group.status);
      const isCut = this.#hosts.size >= MOST;
      group.show(shown, isCut ? Math.max(totals[group.status] ?? 0, shown.length) : shown.length, domain);
    }
  }
}
