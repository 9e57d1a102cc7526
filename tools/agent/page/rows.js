// SPDX-License-Identifier: MIT
//
// The rows of a list, fetched in blocks as they come into view. Memory is bounded: at most
// MOST_BLOCKS blocks are kept, however long the list is.
import {get, objectPath} from './api.js';
import {Loader} from './loader.js';
import {blockQuery, ROWS as BLOCK} from './query.js';
import {KINDS} from './words.js';

const MOST_BLOCKS = 80;
const REST_MS = 2000;    // between fetches of rows that have changed or gone
const FAR_MS = 10000;    // when only others have, which may come before them
const MOST_SINGLE = 8;   // changed rows that are fetched one by one

// The fields that a search for a text looks at.
const SEARCHED = ['name', 'hostName', 'address', 'system'];

export class Rows {
  #blocks = new Map();  // by number, the one that came last at the end: {items, isStale}
  #first = 0;
  #last = 1;
  #age = 0;             // grows when the order may have changed
  #rest = FAR_MS;       // before stale rows are fetched
  #question = 0;        // grows with each other query
  #answered = -1;       // the question that the blocks belong to
  #changedKeys = new Set();
  #news = null;         // what changes said since the block that is out was asked for, by key
  #blockLoader;
  #rowLoader;
  total = null;  // unknown yet

  // The query has a "sort". Calls `changed(problem, isNew)` when there is something to draw. The
  // problem is null or says why rows are missing or old; `isNew`: these are the first rows of another
  // query.
  constructor(path, query, changed) {
    Object.assign(this, {path, changed, kind: KINDS[path].kind});
    this.#blockLoader = new Loader({
      work: number => this.#fetchBlock(number),
      done: answer => answer && this.#takeBlock(answer),
      failed: problem => {
        this.#news = null;
        changed(problem, false);
      },
    });
    this.#rowLoader = new Loader({
      work: () => this.#fetchRows(),
      done: items => this.#takeRows(items),
      failed: () => this.refresh(),  // one may have gone
    });
    this.ask(query);
  }

  // Asks for other rows; until they come, those there are stay.
  ask(query) {
    this.query = new URLSearchParams(query);
    ++this.#question;
    this.#first = 0;
    this.#last = 1;
    this.#blockLoader.ask(0);
  }

  // Whether the rows are the answer to an earlier query.
  get isOld() {
    return this.#answered !== this.#question;
  }

  // The row, or undefined as long as it is not there. What is stale is given until the new one comes.
  at(index) {
    return this.#blocks.get(Math.floor(index / BLOCK))?.items[index % BLOCK];
  }

  // Says which rows are in view, and fetches what is missing of them.
  show(first, last) {
    if (this.isOld) return;
    this.#first = first;
    this.#last = last;
    this.#fetchMissing();
  }

  // Everything may have changed.
  refresh(rest = REST_MS) {
    ++this.#age;
    this.#rest = Math.min(this.#rest, rest);
    this.#spoilAll();
    this.#fetchMissing();
  }

  // Takes changes in. They say what their rows show now; where they do not, rows in view are fetched
  // again.
  take(changes) {
    const ours = changes.filter(change => change.kind === this.kind);
    const hosts = this.kind === 'host' ? changes.flatMap(change => change.hosts ?? []) : [];
    this.#takeNews([...ours.map(change => change.item), ...hosts].filter(Boolean));
    const moving = changes.filter(change => this.#moves(change));
    const unknown = ours.filter(({item}) => !item);
    if (moving.length > 0) {
      const isNear = [...moving, ...unknown].some(change => this.#has(change));
      return this.refresh(isNear ? REST_MS : FAR_MS);
    }
    const seen = this.#spoil(new Set(unknown.map(({key}) => key)));
    for (const key of seen) this.#changedKeys.add(key);
    if (this.#changedKeys.size > MOST_SINGLE) this.refresh();
    else if (seen.length > 0) this.#rowLoader.askSoon();
  }

  close() {
    this.#blockLoader.close();
    this.#rowLoader.close();
  }

  // Whether a change may put rows elsewhere, in or out. Machines show the name of their host.
  #moves(change) {
    if (change.kind !== this.kind) {
      return this.kind === 'machine' && change.kind === 'host' && change.fields.includes('name');
    }
    if (change.type !== 'changed' || change.fields.length === 0) return true;  // none: not known
    const fields = ['power', 'status', 'host'].filter(field => this.query.has(field));
    if (this.query.has('text')) fields.push(...SEARCHED);
    fields.push(this.query.get('sort').replace('-', ''));
    return change.fields.some(field => fields.includes(field));
  }

  // Whether a change is of a row that is there, or may be of all.
  #has({kind, key}) {
    return kind !== this.kind ||
        [...this.#blocks.values()].some(({items}) => items.some(item => item.key === key));
  }

  // The keys among these that are in view. Blocks out of view that have one become stale.
  #spoil(keys) {
    const seen = [];
    for (const [number, block] of this.#blocks) {
      block.items.forEach((item, i) => {
        if (!keys.has(item.key)) return;
        const index = number * BLOCK + i;
        if (index >= this.#first && index < this.#last) seen.push(item.key);
        else block.isStale = true;
      });
    }
    return seen;
  }

  // What is not there at all comes at once, what is stale soon.
  #fetchMissing() {
    const end = Math.max(1, Math.min(this.#last, this.total ?? 0));  // an empty list has one, too
    let stale = null;
    for (let number = Math.floor(this.#first / BLOCK); number * BLOCK < end; ++number) {
      const block = this.#blocks.get(number);
      if (!block) return this.#blockLoader.ask(number);
      if (block.isStale) stale ??= number;
    }
    if (stale !== null) this.#blockLoader.askSoon(stale, this.#rest);
  }

  async #fetchBlock(number) {
    const [age, question] = [this.#age, this.#question];
    this.#news = new Map();
    this.#rest = FAR_MS;
    const {items, total} = await get(this.path, blockQuery(this.query, number));
    const now = items.map(item => this.#news.get(item.key) ?? item);
    this.#news = null;
    return question === this.#question ? {number, age, items: now, total} : null;
  }

  #takeBlock({number, age, items, total}) {
    const isNew = this.isOld;
    if (isNew) this.#blocks.clear();
    if (!isNew && total !== this.total) this.#spoilAll();
    this.total = total;
    this.#answered = this.#question;
    this.#blocks.delete(number);
    this.#blocks.set(number, {items, isStale: age !== this.#age});
    this.#forget();
    this.changed(null, isNew);
    this.#fetchMissing();
  }

  // The rows of one moment come together: when their number differs, so may their places.
  #spoilAll() {
    for (const block of this.#blocks.values()) block.isStale = true;
  }

  #fetchRows() {
    const keys = [...this.#changedKeys];
    this.#changedKeys.clear();
    return Promise.all(keys.map(key => get(objectPath(this.path, key))));
  }

  // A block that is out may be older.
  #takeNews(items) {
    for (const item of items) this.#news?.set(item.key, item);
    this.#takeRows(items);
  }

  // Rows that are there take their new content; of a row that comes twice, the later one counts.
  #takeRows(items) {
    const news = new Map(items.map(item => [item.key, item]));
    let isSeen = false;
    for (const block of news.size > 0 ? this.#blocks.values() : []) {
      block.items.forEach(({key}, i) => {
        if (!news.has(key)) return;
        block.items[i] = news.get(key);
        isSeen = true;
      });
    }
    if (isSeen) this.changed(null, false);
  }

  #forget() {
    const [first, last] = [this.#first, this.#last].map(index => Math.floor(index / BLOCK));
    for (const number of this.#blocks.keys()) {
      const isBeyond = number > 0 && number * BLOCK >= this.total;
      const isFar = number < first || number > last;
      if (isBeyond || (this.#blocks.size > MOST_BLOCKS && isFar)) this.#blocks.delete(number);
    }
  }
}
