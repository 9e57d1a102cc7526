// SPDX-License-Identifier: MIT
//
// The filters above a list. They are in the address; this shows them and changes them there.
import {make, setAttribute, setText} from './dom.js';
import {hostPicker} from './hostpicker.js';
import {address, go} from './route.js';
import {POWERS, POWER_WORDS, STATUSES, STATUS_WORDS} from './words.js';

const CHOICES = {
  machines: {power: [POWERS, POWER_WORDS, 'Power'], status: [STATUSES, STATUS_WORDS, 'Status']},
  hosts: {status: [STATUSES, STATUS_WORDS, 'Status']},
};

export class Filters {
  #boxes = [];

  // For the list `path`, in the route that it is shown by.
  constructor(path, route) {
    this.route = route;
    this.text = make('input', {
      type: 'search', placeholder: 'Search', 'aria-label': `Search ${path}`, autocomplete: 'off',
      spellcheck: 'false', oninput: () => this.#set('text', [this.text.value.trim()], true),
    });
    const groups = Object.entries(CHOICES[path] ?? {})
        .map(([name, [values, words, label]]) => this.#group(name, values, words, label));
    this.host = path === 'machines' ? hostPicker(key => this.#set('host', [key])) : null;
    this.toggle = make('button', {type: 'button', class: 'toggle', 'aria-expanded': 'false',
                                  onclick: () => this.#toggle()}, 'Filters');
    this.clear = make('button', {type: 'button', class: 'clear', onclick: () => this.#clear()}, 'Clear');
    this.element = make('form', {class: 'filters', role: 'search', onsubmit: e => e.preventDefault()},
                        this.text, this.toggle,
                        make('div', {class: 'choices'}, groups, this.host?.element), this.clear);
    this.show(route);
  }

  show(route) {
    this.route = route;
    const text = route.query.get('text') ?? '';
    if (this.text.value.trim() !== text) this.text.value = text;
    for (const box of this.#boxes) box.checked = route.query.getAll(box.name).includes(box.value);
    this.host?.show(route.query.get('host'));
    const active = ['power', 'status', 'host'].filter(name => route.query.has(name)).length;
    this.clear.hidden = active === 0 && text === '';
    setText(this.toggle, active > 0 ? `Filters (${active})` : 'Filters');
  }

  close() {
    this.host?.close();
  }

  #clear() {
    const query = new URLSearchParams(this.route.query);
    for (const name of ['text', 'power', 'status', 'host']) query.delete(name);
    this.text.focus();  // the button goes
    go(address(this.route.view, this.route.key, query));
  }

  // Where there is little room they are folded away.
  #toggle() {
    const isOpen = this.element.classList.toggle('open');
    setAttribute(this.toggle, 'aria-expanded', isOpen);
  }

  #group(name, values, words, label) {
    const choices = values.map(value => {
      const box = make('input', {type: 'checkbox', name, value,
                                 onchange: () => this.#set(name, this.#chosen(name))});
      this.#boxes.push(box);
      return make('label', {}, box, make('span', {class: `mark ${name}`, 'data-state': value}, words[value]));
    });
    return make('fieldset', {}, make('legend', {}, label), choices);
  }

  #chosen(name) {
    return this.#boxes.filter(box => box.name === name && box.checked).map(box => box.value);
  }

  #set(name, values, replace = false) {
    const query = new URLSearchParams(this.route.query);
    query.delete(name);
    for (const value of values.filter(Boolean)) query.append(name, value);
    go(address(this.route.view, this.route.key, query), {replace});
  }
}
