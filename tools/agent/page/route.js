// SPDX-License-Identifier: MIT
//
// What is shown is in the address behind "#", so that a view can be sent and "back" works:
// #/machines?power=on&sort=-name is a list, #/machines/vm-1 an object.

// {view, key, query}: the key is null for a list. An address that cannot be read has the view "".
export function parseRoute(hash) {
  const [path, query = ''] = hash.replace(/^#\/?/, '').split(/\?(.*)/s);
  const [view, ...rest] = path.split('/');
  try {
    return {
      view: decodeURIComponent(view) || 'overview',
      key: rest.length > 0 ? decodeURIComponent(rest.join('/')) : null,
      query: new URLSearchParams(query),
    };
  } catch {
    return {view: '', key: null, query: new URLSearchParams()};
  }
}

export function address(view, key = null, query = null) {
  const path = key === null ? `#/${view}` : `#/${view}/${encodeURIComponent(key)}`;
  const text = new URLSearchParams(query ?? {}).toString();
  return text ? `${path}?${text}` : path;
}

// Shows another address. What is typed replaces the entry of the history: "back" leads to what was
// there before the typing.
export function go(to, {replace = false} = {}) {
  if (to === location.hash) return;
  if (replace) history.replaceState(null, '', to);
  else history.pushState(null, '', to);
  window.dispatchEvent(new HashChangeEvent('hashchange'));
}
