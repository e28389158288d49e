// Small helpers for building the interface. Texts are only ever put in as text.
import { addressOf } from './address.js';

/** The element of index.html with this name; ids have a prefix, so that no fragment of a page of
 * the book, which stands in this page's address too, names one of them. */
export const byId = (name) => document.getElementById(`v-${name}`);

/** A new element; members of `properties` are set on it, children appended. */
export function make(tag, properties, ...children) {
  const element = Object.assign(document.createElement(tag), properties);
  element.append(...children.filter((child) => child !== null));
  return element;
}

/** Lets a link lead to a place of the book. */
export function lead(link, place) {
  const { path, fragment = '' } = place;
  link.href = addressOf(place);
  Object.assign(link.dataset, { path, fragment });
  return link;
}

/** Sets the text only if it changes: a live region speaks each time that it is set. */
export function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

/** `text` with its matches in <mark>. Their ranges count code points. */
export function marked(text, matches) {
  const points = [...text];
  const fragment = document.createDocumentFragment();
  let done = 0;
  for (const { characters: [begin, end] } of matches ?? []) {
    if (begin < done || end <= begin) continue;
    fragment.append(points.slice(done, begin).join(''));
    fragment.append(make('mark', {}, points.slice(begin, end).join('')));
    done = end;
  }
  fragment.append(points.slice(done).join(''));
  return fragment;
}

/** Calls `action` with the last arguments once no call has come for `delay` milliseconds. */
export function delayed(action, delay) {
  let timer = 0;
  const later = (...values) => {
    clearTimeout(timer);
    timer = setTimeout(action, delay, ...values);
  };
  later.cancel = () => clearTimeout(timer);
  return later;
}
