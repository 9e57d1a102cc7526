// SPDX-License-Identifier: MIT
//
// Makes elements. All text becomes text nodes: whatever a machine is called, it is never read as
// markup, and the page's policy lets nothing else through.

const SVG = 'http://www.w3.org/2000/svg';

function give(element, properties, children) {
  for (const [name, value] of Object.entries(properties)) {
    if (value === undefined || value === null || value === false) continue;
    if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
    else element.setAttribute(name, value === true ? '' : value);
  }
  element.append(...children.flat().filter(child => child !== null && child !== undefined));
  return element;
}

// An element with attributes, listeners (`onclick` …) and children, which are nodes or texts. An
// attribute that is null, undefined or false is left out.
export function make(tag, properties = {}, ...children) {
  return give(document.createElement(tag), properties, children);
}

export function makeSvg(tag, properties = {}, ...children) {
  return give(document.createElementNS(SVG, tag), properties, children);
}

// Writes only what differs: a live region speaks when it is written to, and a selection survives.
export function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

// Sets an attribute, or removes it for null.
export function setAttribute(element, name, value) {
  if (value === null) element.removeAttribute(name);
  else if (element.getAttribute(name) !== String(value)) element.setAttribute(name, value);
}
