// SPDX-License-Identifier: MIT
//
// Everything at a glance: totals, hosts as tiles, what changed.
import {ChangeList} from './changelist.js';
import {make, setText} from './dom.js';
import {powerBar, setPowerBar, sparkline} from './marks.js';
import {address} from './route.js';
import {Tiles} from './tiles.js';
import {number, POWERS, POWER_WORDS, STATUSES, STATUS_WORDS} from './words.js';

// A number in large, with what it consists of below.
function figure(label, to, ...below) {
  const value = make('span', {class: 'value'}, '–');
  const element = make('section', {class: 'figure'},
      make('h2', {}, to ? make('a', {href: to}, label) : label), value, below);
  return {element, value};
}

// Numbers by state, each leading to its list.
function legend(view, name, states, words) {
  const values = new Map();
  const items = states.map(state => {
    const value = make('span', {class: 'number'}, '–');
    values.set(state, value);
    return make('li', {}, make('a', {href: address(view, null, {[name]: state})},
        make('span', {class: `mark ${name}`, 'data-state': state}, words[state]), ' ', value));
  });
  return {
    element: make('ul', {class: 'legend'}, items),
    show: counts => values.forEach((value, state) => {
      setText(value, number(counts[state] ?? 0));
      value.closest('li').classList.toggle('zero', !counts[state]);
    }),
  };
}

export class Overview {
  constructor(path, route, context) {
    this.context = context;
    this.heading = make('h1', {tabindex: -1, class: 'unseen'}, 'Overview');
    this.power = powerBar(null);
    this.powers = legend('machines', 'power', POWERS, POWER_WORDS);
    this.statuses = legend('hosts', 'status', STATUSES, STATUS_WORDS);
    this.machines = figure('Machines', address('machines'), this.power, this.powers.element);
    this.hosts = figure('Hosts', address('hosts'), this.statuses.element);
    this.spark = make('div', {class: 'spark'});
    this.activity = figure('Changes in five minutes', null, this.spark);
    this.access = ['identities', 'roles', 'privileges'].map(kind => ({kind, value: make('span', {class: 'number'}, '–')}));
    this.problem = make('p', {class: 'problem', role: 'alert', hidden: true});
    this.tiles = new Tiles(context, problem => this.#fail(problem));
    this.list = new ChangeList();
    this.element = make('div', {class: 'overview'}, this.heading,
        make('div', {class: 'figures'}, this.machines.element, this.hosts.element,
             this.activity.element, this.#accessFigure()),
        this.problem,
        make('div', {class: 'halves'},
             make('section', {'aria-labelledby': 'hosts-title'},
                  make('h2', {id: 'hosts-title'}, 'Hosts by status'), this.tiles.element),
             make('section', {class: 'latest', 'aria-labelledby': 'latest-title'},
                  make('h2', {id: 'latest-title'}, 'What changed'), this.list.element)));
    if (context.live.summary) this.summary(context.live.summary);
  }

  update() {}

  summary(summary) {
    setText(this.machines.value, number(summary.machines.total));
    setText(this.hosts.value, number(summary.hosts.total));
    setPowerBar(this.power, summary.machines.power);
    this.powers.show(summary.machines.power);
    this.statuses.show(summary.hosts.status);
    for (const {kind, value} of this.access) setText(value, number(summary[kind].total));
    this.#showActivity(summary.activity);
    this.tiles.draw();
  }

  changes(changes) {
    this.tiles.changes(changes);
    this.list.changes(changes);
  }

  reset() {
    this.tiles.reset();
    this.list.reset();
  }

  close() {
    this.tiles.close();
    this.list.close();
  }

  takeFocus() {
    return false;
  }

  #accessFigure() {
    const words = {identities: 'Identities', roles: 'Roles', privileges: 'Privileges'};
    return make('section', {class: 'figure'},
        make('h2', {}, make('a', {href: address('identities')}, 'Who may do what')),
        make('ul', {class: 'legend tall'}, this.access.map(({kind, value}) =>
            make('li', {}, make('a', {href: address(kind)}, words[kind], ' ', value)))));
  }

  #showActivity({seconds, counts}) {
    const all = counts.reduce((sum, value) => sum + value, 0);
    setText(this.activity.value, number(all));
    const most = Math.max(...counts);
    const label = `Changes in the last ${counts.length} times ${seconds} seconds: ` +
        `${number(all)}, at most ${number(most)} in ${seconds} seconds, ` +
        `${number(counts.at(-1) ?? 0)} in the latest`;
    this.spark.replaceChildren(sparkline(counts, label));
  }

  #fail(problem) {
    this.problem.hidden = !problem;
    setText(this.problem, problem?.message ?? '');
  }
}
