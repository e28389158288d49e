// Runs first in each page of the book. The page has an origin of its own, which may store nothing:
// what its scripts store lasts as long as it does.
(() => {
  'use strict';
  const { keys, hasOwn, defineProperty } = Object;
  class Store {
    get length() { return keys(this).length; }
    getItem(key) { return hasOwn(this, key) ? this[key] : null; }
    setItem(key, value) { this[key] = `${value}`; }
    removeItem(key) { delete this[key]; }
    key(at) { return keys(this)[at] ?? null; }
    clear() { for (const key of keys(this)) delete this[key]; }
  }
  const cookies = new Map();
  const cookie = {
    configurable: true,
    get: () => [...cookies].map((pair) => pair.join('=')).join('; '),
    set(text) {
      const [, name, value] = /^\s*([^=;]*)=?([^;]*)/.exec(`${text}`);
      cookies.set(name.trim(), value.trim());
    },
  };
  const replaceUnusable = (object, name, property) => {
    try {
      void object[name];
    } catch {
      defineProperty(object, name, property);
    }
  };
  for (const name of ['localStorage', 'sessionStorage']) {
    replaceUnusable(window, name, { value: new Store(), configurable: true });
  }
  replaceUnusable(document, 'cookie', cookie);
  // The only way out that the rules sent with the page leave open in some browsers.
  for (const name of ['RTCPeerConnection', 'webkitRTCPeerConnection']) delete window[name];

  // A page that looks for the cursor as it loads would take it out of the search field.
  const { focus } = HTMLElement.prototype;
  HTMLElement.prototype.focus = function (options) {
    if (document.hasFocus()) focus.call(this, options);
  };

  // The address that the page knows is to be the one that its links and scripts count on.
  const rest = location.search.replace(/([?&])quorvex-question=[^&]*(&|$)/, (_, before, behind) =>
    (behind ? before : ''));
  if (rest !== location.search) {
    history.replaceState(history.state, '', location.pathname + rest + location.hash);
  }
  document.currentScript?.remove();
})();
