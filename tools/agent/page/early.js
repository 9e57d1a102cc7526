// SPDX-License-Identifier: MIT
//
// Asks for what the first view shows while the browser still loads the view's modules: the agent may
// have to read all objects first.
import {getEarly, objectPath} from './api.js';
import {blockQuery, DEFAULT_SORT, queryOf, TILE_GROUPS, tilesQuery} from './query.js';
import {parseRoute} from './route.js';

const route = parseRoute(location.hash);
const {view, key} = route;
if (view in DEFAULT_SORT) {
  if (key !== null) getEarly(objectPath(view, key));
  else getEarly(view, blockQuery(queryOf(view, route), 0));
} else if (view === 'overview') {
  getEarly('hosts', tilesQuery(TILE_GROUPS[0], 0));
}
