// SPDX-License-Identifier: MIT
//
// What the interface is asked for by what is in the address. It is asked in two places: early, and
// by the views.

export const ROWS = 50;     // of a table, at once
export const TILES = 1000;  // hosts of the overview, at once

export const DEFAULT_SORT = {
  machines: 'name', hosts: 'name', roles: 'name', privileges: 'name', identities: 'key',
};

export function queryOf(path, route) {
  const query = new URLSearchParams();
  for (const name of ['text', 'power', 'status', 'host']) {
    for (const value of route.query.getAll(name)) query.append(name, value);
  }
  query.set('sort', route.query.get('sort') ?? DEFAULT_SORT[path]);
  return query;
}

// A block of a table's rows.
export function blockQuery(query, number) {
  const block = new URLSearchParams(query);
  block.set('offset', number * ROWS);
  block.set('limit', ROWS);
  return block;
}

// Hosts that need attention are shown however many there are: they come first.
export const TILE_GROUPS = [['error', 'degraded', 'unknown'], ['ok']];

export function tilesQuery(states, offset) {
  return new URLSearchParams([...states.map(state => ['status', state]),
                              ['sort', 'name'], ['limit', TILES], ['offset', offset]]);
}
