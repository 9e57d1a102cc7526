// SPDX-License-Identifier: MIT
//
// The frame of the page: it shows the view that the address names, and hands it what is new.
import {Access} from './access.js';
import {Connection} from './connection.js';
import {make, setAttribute, setText} from './dom.js';
import {List} from './list.js';
import {Live} from './live.js';
import {ObjectPage} from './object.js';
import {Overview} from './overview.js';
import {address, parseRoute} from './route.js';
import {KINDS, number} from './words.js';

const ANNOUNCE_MS = 800;  // typing should not speak at each letter
const TITLE = 'kecpp-agent';

const by = id => document.getElementById(id);
const live = new Live();
let view = null;
let shown = '';  // which view that is

// Says something to a screen reader, the latest only.
let announceTimer = 0;
function announce(text) {
  clearTimeout(announceTimer);
  announceTimer = setTimeout(() => setText(by('announcer'), text), ANNOUNCE_MS);
}

const context = {live, announce, title: text => { document.title = `${text} – ${TITLE}`; }};

class Missing {
  constructor() {
    this.heading = make('h1', {tabindex: -1}, 'There is no such page');
    this.element = make('section', {}, this.heading,
        make('p', {}, 'The address may be mistyped. ', make('a', {href: address('')}, 'Go to the overview')));
  }
}

// The class of a view, and what tells it from another one that is shown.
function choose({view: name, key}) {
  if (name === 'overview' && key === null) return [Overview, name];
  if (!(name in KINDS)) return [Missing, name];
  if (name !== 'hosts' && name !== 'machines') return [Access, name];
  return key === null ? [List, name] : [ObjectPage, `${name}/${key}`];
}

function showRoute() {
  const route = parseRoute(location.hash);
  const [View, id] = choose(route);
  if (id === shown) return view.update?.(route);
  const isFirst = !view;
  view?.close?.();
  shown = id;
  view = new View(route.view, route, context);
  context.title(view.heading.textContent);
  by('main').replaceChildren(view.element);
  by('main').scrollTop = 0;
  window.scrollTo(0, 0);
  markNavigation(route.view);
  if (live.summary) view.summary?.(live.summary);
  if (!isFirst && !view.takeFocus?.()) view.heading.focus({preventScroll: true});
}

function markNavigation(name) {
  const isAccess = !['overview', 'hosts', 'machines'].includes(name);
  for (const link of by('navigation').querySelectorAll('a')) {
    const isHere = link.dataset.view === (isAccess && name in KINDS ? 'identities' : name);
    setAttribute(link, 'aria-current', isHere ? 'page' : null);
  }
}

function showSummary(summary) {
  for (const name of ['hosts', 'machines']) setText(by(`${name}-total`), number(summary[name].total));
  setText(by('version'), `kecpp-agent ${summary.agent.version}`);
  view?.summary?.(summary);
}

function start() {
  const connection = new Connection(live, announce);
  by('connection').append(connection.element);
  by('banner').append(connection.banner);
  by('skip').addEventListener('click', event => {
    event.preventDefault();  // the address names the view
    view.heading.focus();
  });
  live.addEventListener('summary', event => showSummary(event.detail));
  live.addEventListener('changes', event => view?.changes?.(event.detail));
  live.addEventListener('reset', () => view?.reset?.());
  window.addEventListener('hashchange', showRoute);
  showRoute();
  live.start();
}

start();
