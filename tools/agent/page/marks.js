// SPDX-License-Identifier: MIT
//
// Small drawings: how much is on, and how much changed.
import {make, makeSvg, setAttribute} from './dom.js';
import {number, POWERS, POWER_WORDS} from './words.js';

const sum = counts => Object.values(counts).reduce((all, value) => all + value, 0);

// "48 on, 2 off"
export const powerText = power => POWERS.filter(state => power[state] > 0)
    .map(state => `${number(power[state])} ${POWER_WORDS[state].toLowerCase()}`).join(', ') ||
    'no machines';

// Fills a bar by machines' power, or empties it. The bar is a picture with a text.
export function setPowerBar(bar, power) {
  const all = power ? sum(power) : 0;
  const part = state => all > 0 ? `${100 * power[state] / all}%` : '0%';
  for (const state of ['on', 'suspended', 'unknown']) bar.style.setProperty(`--part-${state}`, part(state));
  bar.classList.toggle('empty', all === 0);
  if (bar.getAttribute('role') === 'img') {
    setAttribute(bar, 'aria-label', power ? powerText(power) : 'not known yet');
    bar.title = power ? powerText(power) : '';
  }
}

export const powerBar = power => {
  const bar = make('span', {class: 'power-bar', role: 'img'});
  setPowerBar(bar, power);
  return bar;
};

const WIDTH = 8;    // of a step, with the gap behind it
const HEIGHT = 40;

// Bars for counts, the highest as high as the picture.
export function sparkline(counts, label) {
  const most = Math.max(1, ...counts);
  const bars = counts.map((value, i) => {
    const height = value > 0 ? Math.max(2, HEIGHT * value / most) : 1;
    return makeSvg('rect', {x: i * WIDTH, y: HEIGHT - height, width: WIDTH - 2, height,
                            class: value > 0 ? 'some' : 'none'});
  });
  return makeSvg('svg', {class: 'sparkline', role: 'img', 'aria-label': label,
                         viewBox: `0 0 ${counts.length * WIDTH - 2} ${HEIGHT}`,
                         preserveAspectRatio: 'none'}, bars);
}
