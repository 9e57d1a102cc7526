// SPDX-License-Identifier: MIT
//
// The answers of "who may do what", as elements: for an identity its privileges, for a privilege the
// identities that have it, for a role both.
import {make} from './dom.js';
import {address} from './route.js';
import {count} from './words.js';

const FIRST = 200;  // lines at once; a button shows more

const nameOf = item => item.name || item.key;
const by = (a, b) => a < b ? -1 : a > b ? 1 : 0;

const link = (path, item) => make('a', {href: address(path, item.key)}, nameOf(item));

const links = (path, items) => items.flatMap((item, i) => i === 0 ? [link(path, item)]
                                                                  : [', ', link(path, item)]);

// A table that grows by a button.
function table(heads, items, cellsOf) {
  const body = make('tbody');
  const more = make('button', {type: 'button', class: 'more', onclick: grow});
  function grow() {
    const begin = body.children.length;
    body.append(...items.slice(begin, begin + FIRST).map(item =>
        make('tr', {}, cellsOf(item).map(cell => make('td', {}, cell)))));
    const rest = items.length - body.children.length;
    more.hidden = rest === 0;
    more.textContent = `Show ${Math.min(rest, FIRST)} of ${rest} more`;
  }
  grow();
  if (items.length === 0) return [make('p', {class: 'note'}, 'None.')];
  return [make('table', {}, make('thead', {}, make('tr', {}, heads.map(head =>
              make('th', {scope: 'col'}, head)))), body), more];
}

// From [outer, inner] pairs: each inner one once, by its name, with all its outer ones.
function invert(outers, innersOf) {
  const found = new Map();  // by key
  for (const outer of outers) {
    for (const inner of innersOf(outer)) {
      if (!found.has(inner.key)) found.set(inner.key, {item: inner, through: []});
      found.get(inner.key).through.push(outer);
    }
  }
  return [...found.values()].sort((a, b) => by(nameOf(a.item), nameOf(b.item)));
}

const title = item => make('h2', {}, nameOf(item));
const fact = (label, value) => value ? make('p', {class: 'fact'}, make('b', {}, label), ' ', value) : null;

const ANSWERS = {
  identities(item) {
    const privileges = invert(item.roles, role => role.privileges);
    return [
      title(item),
      make('h3', {}, count(item.roles.length, 'role')),
      ...table(['Role', 'Privileges'], item.roles,
               role => [link('roles', role), String(role.privileges.length)]),
      make('h3', {}, count(privileges.length, 'privilege')),
      ...table(['Privilege', 'Through'], privileges,
               ({item: privilege, through}) => [link('privileges', privilege), links('roles', through)]),
    ];
  },
  privileges(item) {
    const identities = invert(item.roles, role => role.identities);
    return [
      title(item), fact('Key', item.key),
      make('h3', {}, `${count(identities.length, 'identity', 'identities')} have it`),
      ...table(['Identity', 'Through'], identities,
               ({item: identity, through}) => [link('identities', identity), links('roles', through)]),
      make('h3', {}, `In ${count(item.roles.length, 'role')}`),
      ...table(['Role', 'Identities'], item.roles,
               role => [link('roles', role), String(role.identities.length)]),
    ];
  },
  roles(item) {
    return [
      title(item), fact('Caption', item.caption), fact('Description', item.description),
      fact('Type', item.type), fact('Key', item.key),
      make('h3', {}, count(item.identities.length, 'identity', 'identities')),
      ...table(['Identity'], item.identities, identity => [link('identities', identity)]),
      make('h3', {}, count(item.privileges.length, 'privilege')),
      ...table(['Privilege', 'Key'], item.privileges,
               privilege => [link('privileges', privilege), privilege.key]),
    ];
  },
};

export const accessAnswer = (path, item) => ANSWERS[path](item).filter(Boolean);
