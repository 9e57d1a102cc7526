// SPDX-License-Identifier: MIT
//
// How the page is connected to the agent, and the agent to the daemon. While one of them is lost a
// line says why and since when: what is shown is last known then.
import {make, setAttribute, setText} from './dom.js';
import {age, when} from './words.js';

const SECOND_MS = 1000;

export class Connection {
  constructor(live, announce) {
    Object.assign(this, {live, announce});
    this.state = make('span', {class: 'mark link'});
    this.detail = make('span', {class: 'detail'});
    this.pause = make('button', {type: 'button', class: 'pause', onclick: () => this.#toggle()}, 'Pause');
    this.element = make('div', {class: 'connection'}, this.state, this.detail, this.pause);
    this.bannerText = make('span');
    this.retry = make('button', {type: 'button', onclick: () => live.resume()}, 'Try again now');
    this.banner = make('div', {class: 'banner', hidden: true}, this.bannerText, this.retry);
    live.addEventListener('link', () => this.#show());
    live.addEventListener('summary', () => this.#show());
    setInterval(() => document.hidden || this.#show(), SECOND_MS);
    this.#show();
  }

  #toggle() {
    if (this.live.isPaused) this.live.resume();
    else this.live.pause();
  }

  // {state: a colour, word, detail, banner}
  #judge() {
    const {link, summary} = this.live;
    const known = summary ? `What is shown is last known, ${when(summary.connection.lastUpdate)}.` : '';
    if (link.state === 'lost') {
      return {state: 'lost', word: 'Agent lost', detail: `for ${age(link.since)}`,
              banner: `${link.reason || 'The agent does not answer.'} ${known}`, canRetry: true};
    }
    if (link.state === 'paused') {
      return {state: 'waiting', word: 'Paused', detail: `for ${age(link.since)}`, banner: ''};
    }
    if (link.state === 'connecting' || !summary) {
      return {state: 'waiting', word: 'Connecting', detail: '', banner: ''};
    }
    return Connection.#judgeDaemon(summary.connection, known);
  }

  static #judgeDaemon(connection, known) {
    const {state, reason, since, lastUpdate, updates, failures, lastFailure} = connection;
    const why = reason || lastFailure;
    if (state === 'connected') {
      const news = lastUpdate ? `updated ${age(lastUpdate)} ago` : `${updates} updates`;
      const banner = failures > 0 ? `The last ${failures} updates failed: ${lastFailure}` : '';
      return {state: 'connected', word: 'Connected', detail: news, banner};
    }
    const isLost = state === 'lost';
    const what = isLost ? 'The agent lost the daemon.' : 'The agent is connecting to the daemon.';
    return {state: isLost ? 'lost' : 'waiting', word: isLost ? 'Daemon lost' : 'Daemon awaited',
            detail: since ? `for ${age(since)}` : '',
            banner: `${what} ${why}${lastUpdate ? ` ${known}` : ''}`};
  }

  #show() {
    const {state, word, detail, banner, canRetry = false} = this.#judge();
    setAttribute(this.state, 'data-state', state);
    setText(this.state, word);
    setText(this.detail, detail);
    setText(this.pause, this.live.isPaused ? 'Resume' : 'Pause');
    setText(this.bannerText, banner);
    this.banner.hidden = banner === '';
    this.retry.hidden = !canRetry;
    document.documentElement.classList.toggle('last-known', state === 'lost');
    if (word !== this.said) {
      if (this.said) this.announce(banner ? `${word}. ${banner}` : word);
      this.said = word;
    }
  }
}
