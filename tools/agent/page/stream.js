// SPDX-License-Identifier: MIT
//
// The stream of changes, as events "open", "error", "summary", "change" and "reset". All windows of a
// browser share one: a browser has six connections to an agent, and a stream takes one for good. The
// window that holds a lock reads it and passes on what comes; when it goes, another one gets the
// lock and begins, and all hear "open" again: something may have been missed. Where the browser has
// no locks, as for a page that comes without TLS from another machine, each window reads its own.
import {urlOf} from './api.js';

const NAMES = ['summary', 'change', 'reset'];
const URL_OF_IT = urlOf('changes/stream').href;
const SHARED = `${URL_OF_IT} ${import.meta.url}`;  // by windows of one version of the page

export class Stream extends EventTarget {
  #events = null;              // the agent's, in the window that has the lock
  #channel = null;
  #ending = new AbortController();
  #release = () => {};         // of the lock
  #isOpen = false;
  #summary = null;             // the last one, for windows that come later

  // `isAlone`: neither gives nor takes anything from other windows.
  constructor({isAlone}) {
    super();
    if (isAlone || !navigator.locks) this.#read();
    else this.#share();
  }

  close() {
    this.#ending.abort();
    this.#events?.close();
    this.#channel?.close();
    this.#release();
  }

  #share() {
    this.#channel = new BroadcastChannel(SHARED);
    this.#channel.addEventListener('message', ({data}) => this.#hear(data));
    navigator.locks.request(SHARED, {signal: this.#ending.signal}, () => {
      if (this.#ending.signal.aborted) return undefined;
      this.#read();
      return new Promise(resolve => { this.#release = resolve; });
    }).catch(() => {});  // it was closed before
    this.#post('join');
  }

  #read() {
    this.#isOpen = false;
    this.#events = new EventSource(URL_OF_IT);
    this.#events.addEventListener('open', () => this.#pass('open'));
    this.#events.addEventListener('error', () => this.#pass('error'));
    for (const name of NAMES) {
      this.#events.addEventListener(name, event => this.#pass(name, JSON.parse(event.data)));
    }
  }

  // From the agent: to this window and to the others.
  #pass(name, detail = null) {
    if (name === 'open') this.#isOpen = true;
    if (name === 'summary') this.#summary = detail;
    this.#post(name, detail);
    this.#tell(name, detail);
  }

  // From another window: what it has from the agent, or that it has just come.
  #hear({name, detail}) {
    if (this.#events) {
      if (name === 'join' && this.#isOpen) this.#post('welcome', this.#summary);
    } else if (name === 'welcome') {
      if (!this.#isOpen) this.#enter(detail);
    } else if (name !== 'join') {
      this.#isOpen ||= name === 'open';
      this.#tell(name, detail);
    }
  }

  #enter(summary) {
    this.#isOpen = true;
    this.#tell('open', null);
    if (summary) this.#tell('summary', summary);
  }

  #post(name, detail = null) {
    this.#channel?.postMessage({name, detail});
  }

  #tell(name, detail) {
    this.dispatchEvent(new CustomEvent(name, {detail}));
  }
}
