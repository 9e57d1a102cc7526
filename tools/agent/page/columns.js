// SPDX-License-Identifier: MIT
//
// The columns of each list. A column has an id (the field of its text, its class), a label, perhaps
// the field that it sorts by, and perhaps functions that make and fill its cell.
import {make, setAttribute, setText} from './dom.js';
import {setPowerBar} from './marks.js';
import {address} from './route.js';
import {number, POWER_WORDS, STATUS_WORDS} from './words.js';

// A cell whose content leads to `to(item)`; without an address it is a plain text.
const link = (id, label, sort, text, to) => ({
  id, label, sort,
  make: () => make('a'),
  fill(cell, item) {
    const anchor = cell.firstChild;
    setText(anchor, item ? text(item) : '');
    setAttribute(anchor, 'href', item ? to(item) : null);
  },
});

const text = (id, label, sort = id) => ({id, label, sort});

const figure = (id, label, sort = null) => ({
  id, label, sort,
  fill: (cell, item) => setText(cell, item ? number(item[id]) : ''),
});

// A state in words, with a mark before it.
const state = (id, label, words) => ({
  id, label, sort: id,
  make: () => make('span', {class: `mark ${id}`}),
  fill(cell, item) {
    setText(cell.firstChild, item ? words[item[id]] ?? item[id] : '');
    setAttribute(cell.firstChild, 'data-state', item ? item[id] : null);
  },
});

const nameOf = item => item.name || item.key;
const objectOf = view => item => address(view, item.key);

function withLayout(layout, ...columns) {
  return Object.assign(columns, {layout});
}

export const COLUMNS = {
  machines: withLayout('machines',
    link('name', 'Name', 'name', nameOf, objectOf('machines')),
    state('power', 'Power', POWER_WORDS),
    state('status', 'Status', STATUS_WORDS),
    link('host', 'Host', 'host', item => item.host ? item.host.name || item.host.key : '',
         item => item.host ? address('hosts', item.host.key) : null),
    text('system', 'Operating system'),
    text('address', 'Address'),
    text('key', 'Key')),
  hosts: withLayout('hosts',
    link('name', 'Name', 'name', nameOf, objectOf('hosts')),
    state('status', 'Status', STATUS_WORDS),
    link('machines', 'Machines', 'machines', item => number(item.machines),
         item => address('machines', null, {host: item.key})),
    {id: 'bar', label: 'Power', make: () => make('span', {class: 'power-bar', role: 'img'}),
     fill: (cell, item) => setPowerBar(cell.firstChild, item?.power)},
    {...text('model', 'Model', null),
     fill: (cell, item) => setText(cell, item ? `${item.vendor} ${item.model}`.trim() : '')},
    text('key', 'Key')),
  roles: withLayout('named',
    link('name', 'Role', 'name', nameOf, objectOf('roles')),
    figure('privileges', 'Privileges'), figure('identities', 'Identities')),
  privileges: withLayout('named',
    link('name', 'Privilege', 'name', nameOf, objectOf('privileges')), figure('roles', 'Roles')),
  identities: withLayout('named',
    link('name', 'Identity', 'key', item => item.key, objectOf('identities')),
    figure('roles', 'Roles')),
};

// The machines of one host: without the host.
export const MACHINES_OF_A_HOST = withLayout('machines of-a-host',
    ...COLUMNS.machines.filter(column => column.id !== 'host' && column.id !== 'key'));
