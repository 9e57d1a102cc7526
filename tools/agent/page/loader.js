// SPDX-License-Identifier: MIT
//
// Loads something again and again, one request at a time: what is wished for while one is out is
// loaded afterwards, and only the last wish. A failure that may pass is tried again by itself.
import {pauseAfter} from './api.js';

export class Loader {
  #timer = 0;
  #due = 0;         // of the timer
  #wish = null;
  #hasWish = false;
  #isUrgent = false;
  #isOut = false;
  #isClosed = false;
  #restedFrom = -Infinity;  // when the last load came back
  #dear = 0;                // how long loading must rest at least, by what the last load cost
  #wishedRest = 0;
  #failures = 0;

  // `work(wish)` gives a promise. `done(result, wish)` or `failed(problem, wish)` gets its outcome;
  // a problem is a Problem. What is loaded soon takes one part in `share` of the time, with at least
  // `rest` milliseconds in between.
  constructor({work, done, failed, share = 20, rest = 250}) {
    Object.assign(this, {work, done, failed, share, rest});
  }

  // Loads now, or as soon as the request that is out has come back.
  ask(wish = null) {
    this.#isUrgent = true;
    this.#askFor(wish, 0);
  }

  // Loads soon, after a rest that is as long as loading was dear, and at least so many milliseconds.
  askSoon(wish = null, rest = this.rest) {
    this.#wishedRest = rest;
    this.#askFor(wish, this.#restLeft());
  }

  close() {
    this.#isClosed = true;
    clearTimeout(this.#timer);
  }

  #askFor(wish, pause) {
    this.#wish = wish;
    this.#hasWish = true;
    this.#plan(pause);
  }

  #restLeft() {
    return this.#restedFrom + Math.max(this.#wishedRest, this.#dear) - performance.now();
  }

  // An earlier plan stays.
  #plan(pause) {
    if (this.#isOut || this.#isClosed) return;
    const due = performance.now() + Math.max(0, pause);
    if (this.#timer && this.#due <= due) return;
    clearTimeout(this.#timer);
    this.#due = due;
    if (pause > 0) this.#timer = setTimeout(() => this.#run(), pause);
    else this.#run();
  }

  async #run() {
    this.#timer = 0;
    this.#isOut = true;
    this.#hasWish = this.#isUrgent = false;
    const wish = this.#wish;
    const begin = performance.now();
    const outcome = await this.work(wish).then(result => ({result}), problem => ({problem}));
    const end = performance.now();
    this.#isOut = false;
    if (this.#isClosed) return;
    this.#restedFrom = end;
    this.#dear = this.share * (end - begin);
    if (outcome.problem) this.#fail(outcome.problem, wish);
    else this.#succeed(outcome.result, wish);
  }

  #succeed(result, wish) {
    this.#failures = 0;
    if (this.#hasWish) this.#plan(this.#isUrgent ? 0 : this.#restLeft());
    this.done(result, wish);
  }

  #fail(problem, wish) {
    ++this.#failures;
    if (problem.isPassing) this.#hasWish = true;
    if (this.#hasWish) this.#plan(pauseAfter(this.#failures, problem));
    this.failed(problem, wish);
  }
}
