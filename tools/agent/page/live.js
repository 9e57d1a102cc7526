// SPDX-License-Identifier: MIT
//
// Follows the stream of changes and tells the views of them:
//
//   summary   the new summary
//   changes   a list of changes, oldest first
//   reset     changes were missed: what is shown must be fetched again
//   link      how the stream is: {state: "connecting" | "open" | "lost" | "paused", since, reason}
//
// A page that nobody sees gives its place back soon: the agent has places for half of its connections.
import {get, pauseAfter} from './api.js';
import {Stream} from './stream.js';

const BATCH_MS = 100;
const MOST_IN_BATCH = 1000;
const HIDDEN_MS = 3000;
const SILENCE_MS = 60000;

export class Live extends EventTarget {
  #events = null;
  #batch = [];
  #batchTimer = 0;
  #retryTimer = 0;
  #hiddenTimer = 0;
  #silenceTimer = 0;
  #failures = 0;
  summary = null;
  link = {state: 'connecting', since: Date.now(), reason: ''};

  start() {
    document.addEventListener('visibilitychange', () => this.#seen());
    window.addEventListener('pagehide', () => this.#close());
    window.addEventListener('pageshow', () => this.#seen());
    this.#open();
    this.#seen();
  }

  get isPaused() {
    return this.link.state === 'paused';
  }

  pause() {
    this.#close();
    this.#say('paused');
  }

  // Also tries again at once when the agent was lost.
  resume() {
    this.#failures = 0;
    this.#open();
  }

  #seen() {
    clearTimeout(this.#hiddenTimer);
    if (document.hidden) {
      this.#hiddenTimer = setTimeout(() => this.#close(), HIDDEN_MS);
    } else if (!this.#events && !this.isPaused) {
      this.resume();
    }
  }

  #open({isAlone = false} = {}) {
    this.#close();
    if (this.isPaused) this.#say('connecting');
    const events = this.#events = new Stream({isAlone});
    events.addEventListener('open', () => this.#hasOpened());
    events.addEventListener('error', () => this.#hasFailed());
    this.#on('summary', summary => this.#tell('summary', this.summary = summary));
    this.#on('change', change => this.#collect(change));
    this.#on('reset', () => this.#reset());
    this.#expectSigns();
  }

  #on(name, use) {
    this.#events.addEventListener(name, event => {
      this.#expectSigns();
      use(event.detail);
    });
  }

  #hasOpened() {
    this.#failures = 0;
    this.#say('open');
    this.#reset();  // what happened between the views' first requests and the stream is in neither
  }

  // The browser's own attempts have no growing pauses and end for good at a refusal. An event
  // stream does not say why it ended; a request does.
  async #hasFailed() {
    this.#close();
    this.#say('lost', this.link.reason);
    this.#retryTimer = setTimeout(() => this.#open(), pauseAfter(++this.#failures));
    const reason = await this.#look().then(
        () => 'The agent has no room for another page that follows changes.',
        problem => problem.message);
    if (this.link.state === 'lost') this.#say('lost', reason);
  }

  async #look() {
    const summary = await get('summary');
    const isNews = JSON.stringify(summary) !== JSON.stringify(this.summary);
    this.#tell('summary', this.summary = summary);
    return isNews;
  }

  // A connection that died without a word looks open for ever.
  #expectSigns() {
    clearTimeout(this.#silenceTimer);
    const events = this.#events;
    this.#silenceTimer = setTimeout(async () => {
      const isDead = await this.#look().catch(() => true);
      if (events !== this.#events) return;
      if (isDead) this.#open({isAlone: true});  // the window that reads for this one may be dead
      else this.#expectSigns();
    }, SILENCE_MS);
  }

  #collect(change) {
    this.#batch.push(change);
    if (this.#batch.length > MOST_IN_BATCH) this.#reset();
    else this.#batchTimer ||= setTimeout(() => this.#tellBatch(), BATCH_MS);
  }

  #tellBatch() {
    const batch = this.#forgetBatch();
    if (batch.length > 0) this.#tell('changes', batch);
  }

  #forgetBatch() {
    clearTimeout(this.#batchTimer);
    this.#batchTimer = 0;
    const batch = this.#batch;
    this.#batch = [];
    return batch;
  }

  #reset() {
    this.#forgetBatch();
    this.#tell('reset');
  }

  #close() {
    for (const timer of [this.#retryTimer, this.#silenceTimer]) clearTimeout(timer);
    this.#tellBatch();
    this.#events?.close();
    this.#events = null;
  }

  #say(state, reason = '') {
    const since = state === this.link.state ? this.link.since : Date.now();
    this.link = {state, since, reason};
    this.#tell('link', this.link);
  }

  #tell(name, detail = null) {
    this.dispatchEvent(new CustomEvent(name, {detail}));
  }
}
