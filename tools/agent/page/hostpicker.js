// SPDX-License-Identifier: MIT
//
// Chooses a host by its name: a field that proposes what matches.
import {get, objectPath} from './api.js';
import {make, setText} from './dom.js';
import {Loader} from './loader.js';

const PROPOSALS = 12;

// `choose(key)` is called with a host's key, or with null for all hosts.
export function hostPicker(choose) {
  const keys = new Map();  // of the proposals, by name
  const list = make('datalist', {id: 'host-proposals'});
  const field = make('input', {
    list: list.id, placeholder: 'Any host', 'aria-label': 'Machines of the host', autocomplete: 'off',
    spellcheck: 'false', oninput: typed, onchange: () => settle(field.value.trim()),
  });
  const hint = make('span', {class: 'hint', role: 'status'});
  let shown = null;  // the key that is chosen

  const loader = new Loader({
    work: text => get('hosts', {text, limit: PROPOSALS, sort: 'name'}),
    done({items}, text) {
      for (const item of items) keys.set(item.name || item.key, item.key);
      list.replaceChildren(...items.map(item => make('option', {value: item.name || item.key})));
      if (settled === text) settle(text);
    },
    failed: problem => setText(hint, problem.message),
  });
  let settled = null;  // a text that was entered before its proposals came

  // What is picked from the proposals counts at once, what is typed when it is entered: "host1" may
  // become "host12".
  function typed(event) {
    settled = null;
    setText(hint, '');
    const text = field.value.trim();
    if (event.inputType === 'insertReplacementText' && keys.has(text)) settle(text);
    else loader.ask(text);
  }

  function settle(text) {
    if (!text) return choose(null);
    if (keys.has(text)) return choose(keys.get(text));
    setText(hint, settled === text ? 'No such host' : '');
    if (settled !== text) {
      settled = text;
      loader.ask(text);
    }
  }

  async function show(key) {
    if (key === shown) return;
    shown = key;
    setText(hint, '');
    if (!key) field.value = '';
    else if (keys.get(field.value) !== key) {
      field.value = key;
      const host = await get(objectPath('hosts', key)).catch(() => null);
      if (host && shown === key) keys.set(field.value = host.name || key, key);
    }
  }

  return {
    element: make('span', {class: 'host-picker'}, field, list, hint), show,
    close: () => loader.close(),
  };
}
