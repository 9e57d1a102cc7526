// SPDX-License-Identifier: MIT
//
// The words of the page: kinds, states, numbers and times as people read them.

// The kinds of objects by the name that addresses have.
export const KINDS = {
  hosts: {kind: 'host', one: 'Host', many: 'hosts', title: 'Hosts'},
  machines: {kind: 'machine', one: 'Machine', many: 'machines', title: 'Machines'},
  identities: {kind: 'identity', one: 'Identity', many: 'identities', title: 'Identities'},
  privileges: {kind: 'privilege', one: 'Privilege', many: 'privileges', title: 'Privileges'},
  roles: {kind: 'role', one: 'Role', many: 'roles', title: 'Roles'},
};

// "machines" for "machine".
export const pathOf = kind => Object.keys(KINDS).find(path => KINDS[path].kind === kind);

export const STATUSES = ['error', 'degraded', 'unknown', 'ok'];
export const POWERS = ['on', 'suspended', 'off', 'unknown'];
export const STATUS_WORDS = {ok: 'OK', degraded: 'Degraded', error: 'Error', unknown: 'Unknown'};
export const POWER_WORDS = {on: 'On', off: 'Off', suspended: 'Suspended', unknown: 'Unknown'};

const FIELD_WORDS = {
  hostName: 'guest name', system: 'operating system', powerStateText: 'power state',
  operationalStatus: 'operational status', uuid: 'UUID',
};
export const fieldWord = field => FIELD_WORDS[field] ?? field;

const numbers = new Intl.NumberFormat();
export const number = value => numbers.format(value);

// "1 machine", "2 machines".
export const count = (value, one, many = `${one}s`) => `${number(value)} ${value === 1 ? one : many}`;

const CLOCK = {hour: '2-digit', minute: '2-digit', second: '2-digit', hourCycle: 'h23'};
const clock = new Intl.DateTimeFormat(undefined, CLOCK);
const calendar = new Intl.DateTimeFormat(undefined, {
  year: 'numeric', month: 'short', day: 'numeric', ...CLOCK,
});
const isToday = date => date.toDateString() === new Date().toDateString();

// The time of day, with the date unless it is today.
export function when(time) {
  if (!time) return 'never';
  const date = new Date(time);
  return (isToday(date) ? clock : calendar).format(date);
}

const STEPS = [[60, 's'], [60, 'min'], [24, 'h'], [Infinity, 'd']];

// "12 s", "3 min": how long ago something was, from a time or from milliseconds of the epoch.
export function age(time) {
  let value = Math.max(0, Math.round((Date.now() - new Date(time).getTime()) / 1000));
  for (const [size, unit] of STEPS) {
    if (value < size) return `${value} ${unit}`;
    value = Math.floor(value / size);
  }
  return '';
}
