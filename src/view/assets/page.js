// Runs in each page of the book, before the page's own scripts, and speaks for it to the interface.
// What it needs of the browser it keeps for itself, as those scripts may replace anything.
(() => {
  'use strict';
  const { parent, top, document, location, history, CSS, Highlight } = window;
  const { apply, defineProperty } = Reflect;
  const { stringify } = JSON;
  const own = (prototype, ...names) => names.map((name) => {
    const method = prototype[name];
    return (object, ...values) => apply(method, object, values);
  });
  const getter = (prototype, name) => {
    const { get } = Object.getOwnPropertyDescriptor(prototype, name);
    return (object) => apply(get, object, []);
  };
  const [slice, trim, lower, replace, startsWith, match] =
    own(String.prototype, 'slice', 'trim', 'toLowerCase', 'replace', 'startsWith', 'match');
  const [push, includes, join] = own(Array.prototype, 'push', 'includes', 'join');
  const [exec] = own(RegExp.prototype, 'exec');
  const [all, one, byId, walker, range, marksOf] = own(Document.prototype, 'querySelectorAll',
    'querySelector', 'getElementById', 'createTreeWalker', 'createRange', 'getElementsByClassName');
  const [closest, attribute, box, oneIn, reveal] = own(Element.prototype, 'closest', 'getAttribute',
    'getBoundingClientRect', 'querySelector', 'scrollIntoView');
  const [addClass, removeClass] = own(DOMTokenList.prototype, 'add', 'remove');
  const classes = getter(Element.prototype, 'classList');
  const [place] = own(Node.prototype, 'compareDocumentPosition');
  const [nextNode] = own(TreeWalker.prototype, 'nextNode');
  const [setStart, setEnd, boxOfRange] =
    own(Range.prototype, 'setStart', 'setEnd', 'getBoundingClientRect');
  const [listen, prevent, stop] = [
    EventTarget.prototype.addEventListener, Event.prototype.preventDefault,
    Event.prototype.stopImmediatePropagation,
  ].map((method) => (object, ...values) => apply(method, object, values));
  const { URL, Object: { assign }, Math: { max, min, round }, setTimeout } = window;
  const decodeUri = decodeURIComponent;
  const encodeUri = encodeURIComponent;
  const replaceState = apply.bind(null, History.prototype.replaceState, history);
  const post = parent.postMessage.bind(parent);
  const home = location.origin;
  const first = document.currentScript;

  const decode = (text) => {
    try {
      return decodeUri(text);
    } catch {
      return null;
    }
  };
  const isDirect = parent === top && parent !== window;  // else in a frame of the page's own
  const tell = (kind, data) => {
    if (isDirect) post(assign({ quorvex: kind }, data), '*');
  };

  // The page has an origin of its own that may store nothing. Scripts that want to, find a store
  // that lasts as long as the page.
  const makeStore = () => {
    const items = new Map();
    const methods = {
      getItem: (key) => items.get(`${key}`) ?? null,
      setItem: (key, value) => { items.set(`${key}`, `${value}`); },
      removeItem: (key) => { items.delete(`${key}`); },
      clear: () => items.clear(),
      key: (at) => [...items.keys()][at] ?? null,
    };
    const method = (key) => (typeof key === 'string' && Object.hasOwn(methods, key) ? methods[key] : null);
    return new Proxy({}, {
      get: (_, key) => (key === 'length' ? items.size : method(key) ?? items.get(key)),
      set: (_, key, value) => items.set(`${key}`, `${value}`) && true,
      has: (_, key) => items.has(key) || method(key) !== null,
      deleteProperty: (_, key) => { items.delete(key); return true; },
      ownKeys: () => [...items.keys()],
      getOwnPropertyDescriptor: (_, key) => (items.has(key) ?
        { value: items.get(key), enumerable: true, configurable: true, writable: true } : undefined),
    });
  };
  const cookies = new Map();
  const setCookie = (text) => {
    const [, name, value, rest] = /^\s*([^=;]*)=?([^;]*)(.*)$/s.exec(`${text}`);
    const expires = /;\s*expires=([^;]*)/i.exec(rest)?.[1];
    if (/;\s*max-age=(0|-)/i.test(rest) || Date.parse(expires) < Date.now()) cookies.delete(name.trim());
    else cookies.set(name.trim(), value.trim());
  };
  const canUse = (read) => {
    try {
      read();
      return true;
    } catch {
      return false;
    }
  };
  for (const name of ['localStorage', 'sessionStorage']) {
    if (!canUse(() => window[name])) {
      defineProperty(window, name, { value: makeStore(), configurable: true });
    }
  }
  if (!canUse(() => document.cookie)) {
    defineProperty(document, 'cookie', {
      get: () => [...cookies].map(([name, value]) => `${name}=${value}`).join('; '),
      set: setCookie, configurable: true,
    });
  }
  // The only way out that the rules sent with the page do not close everywhere.
  for (const name of ['RTCPeerConnection', 'webkitRTCPeerConnection', 'RTCDataChannel']) {
    delete window[name];
  }

  // The page's own scripts are not to see what was asked for.
  const question = /([?&])quorvex-question=[^&]*(&?)/;
  if (question.test(location.search)) {
    const rest = location.search.replace(question, (_, before, behind) => (behind ? before : ''));
    replaceState([history.state, '', location.pathname + rest + location.hash]);
  }
  first?.remove();
  if (!isDirect) return;

  const fragmentOf = (hash) => decode(slice(hash, 1)) ?? slice(hash, 1);
  const target = (fragment) => fragment && (byId(document, fragment) ??
    one(document, `a[name="${CSS.escape(fragment)}"]`));

  // ---- What the page consists of

  const signs = ['¶', '#', '§', '🔗', '\uf0c1', ''];
  const isPermalink = (link) =>
    startsWith(attribute(link, 'href') ?? '', '#') && includes(signs, trim(link.textContent));

  /** The text of a heading without its buttons and the signs that link to it. */
  const textOf = (heading) => {
    let text = '';
    const nodes = walker(document, heading, 5 /* elements and texts */, (node) => {
      if (node.nodeType === 3) return 1;
      const isNoText = includes(['BUTTON', 'SCRIPT', 'STYLE', 'TEMPLATE'], node.tagName) ||
        (node.tagName === 'A' && isPermalink(node));
      return isNoText ? 2 : 3;
    });
    while (text.length < 400 && nextNode(nodes)) text += nodes.currentNode.data;
    return slice(trim(replace(text, /\s+/g, ' ')), 0, 200);
  };

  /** The fragment that leads to a heading; empty if there is none of its own. */
  const idOf = (heading) => {
    const inside = heading.id || oneIn(heading, '[id],a[name]');
    if (inside) return inside.id || inside.name || inside;
    const before = heading.previousElementSibling;
    if (before?.tagName === 'A' && !before.textContent) return before.id || before.name || '';
    let node = heading;
    for (let i = 0; i < 3 && node.parentElement; ++i) {
      const around = node.parentElement;
      const isFirst = around.firstElementChild === node;
      if (around.id && (isFirst || around.tagName === 'SECTION')) return around.id;
      if (!isFirst) break;
      node = around;
    }
    return '';
  };

  let headings = [];  // the elements
  const readHeadings = () => {
    const within = one(document, 'main :is(h1,h2,h3,h4,h5,h6),[role=main] :is(h1,h2,h3,h4,h5,h6)') ?
      ':is(main,[role=main]) ' : '';
    const found = all(document, `${within}:is(h1,h2,h3,h4,h5,h6)`);
    headings = [];
    const told = [];
    for (let i = 0; i < found.length && told.length < 500; ++i) {
      if (closest(found[i], 'nav,aside,footer,[role=navigation],[hidden]')) continue;
      const text = textOf(found[i]);
      if (!text) continue;
      push(headings, found[i]);
      push(told, { level: +found[i].tagName[1], text, id: `${idOf(found[i])}` });
    }
    return told;
  };

  /** The path in the book of an address; null if it leads elsewhere. */
  const insidePath = (address) => {
    if (!address) return null;
    try {
      const url = new URL(address, document.baseURI);
      return url.origin === home ? decode(url.pathname) : null;
    } catch {
      return null;
    }
  };
  const neighbour = (...names) => {
    for (const tag of ['link', 'a']) {
      const link = one(document, join(names.map((name) => `${tag}[rel~=${name} i][href]`), ','));
      const path = link && insidePath(attribute(link, 'href'));
      if (path && path !== decode(location.pathname)) return path;
    }
    return null;
  };

  // ---- Marks

  const marks = marksOf(document, 'quorvex-mark');
  let mark = -1;      // the current one
  let begin = null;   // else, the element from which on the next one counts
  const open = (element) => {
    for (let node = element; (node = closest(node, 'details:not([open])')); node = node.parentElement) {
      node.open = true;
    }
  };
  const goToMark = (at) => {
    if (marks[mark]) removeClass(classes(marks[mark]), 'quorvex-current');
    mark = at;
    addClass(classes(marks[at]), 'quorvex-current');
    open(marks[at]);
    reveal(marks[at], { block: 'center', inline: 'nearest' });
    tell('mark', { at: at + 1, of: marks.length });
  };
  const moveMark = (by) => {
    const count = marks.length;
    if (count === 0) return;
    if (mark >= 0) return goToMark((mark + by + count) % count);
    let at = 0;  // the first mark behind where the page was opened
    if (begin) while (at < count && !(place(begin, marks[at]) & 4)) ++at;
    return goToMark((by > 0 ? at : at - 1 + count) % count);
  };
  const clearMarks = () => {
    for (let i = marks.length - 1; i >= 0; --i) {
      const text = marks[i].parentNode;
      marks[i].replaceWith(...marks[i].childNodes);
      text.normalize();
    }
    mark = -1;
  };

  // ---- Finding a text

  const hasHighlights = Boolean(CSS.highlights && Highlight);
  const [setHighlight, dropHighlight] =
    hasHighlights ? own(HighlightRegistry.prototype, 'set', 'delete') : [];
  let found = [];
  let foundText = '';
  let at = -1;
  const inline = ['A', 'ABBR', 'B', 'BDI', 'BDO', 'CITE', 'CODE', 'DFN', 'EM', 'I', 'INS', 'KBD', 'MARK',
    'Q', 'S', 'SAMP', 'SMALL', 'SPAN', 'STRONG', 'SUB', 'SUP', 'TT', 'U', 'VAR', 'WBR'];
  const unread = ['SCRIPT', 'STYLE', 'NOSCRIPT', 'TEMPLATE', 'TEXTAREA', 'SELECT', 'IFRAME', 'svg'];

  /** All text, with where each of its nodes begins. Between blocks there is a line's end. */
  const readText = () => {
    const parts = [];
    const nodes = [];
    const begins = [];
    let length = 0;
    const add = (text) => { push(parts, text); length += text.length; };
    const tree = walker(document, document.body, 5, (node) =>
      (node.nodeType === 1 && includes(unread, node.tagName) ? 2 : 1));
    while (nextNode(tree)) {
      const node = tree.currentNode;
      if (node.nodeType === 1) {
        if (!includes(inline, node.tagName)) add('\n');
        continue;
      }
      push(nodes, node);
      push(begins, length);
      add(node.data);
    }
    return { text: join(parts, ''), nodes, begins };
  };
  const rangesOf = (wanted) => {
    const { text, nodes, begins } = readText();
    const escaped = replace(trim(wanted), /[\\^$.*+?()[\]{}|/-]/g, '\\$&');
    const pattern = new RegExp(replace(escaped, /\s+/g, '\\s+'), 'giu');
    const ranges = [];
    let node = 0;
    for (let hit; ranges.length < 5000 && (hit = exec(pattern, text));) {
      const from = hit.index;
      const to = from + hit[0].length;
      while (node + 1 < nodes.length && begins[node + 1] <= from) ++node;
      let last = node;
      while (last + 1 < nodes.length && begins[last + 1] < to) ++last;
      const stretch = range(document);
      setStart(stretch, nodes[node], min(from - begins[node], nodes[node].length));
      setEnd(stretch, nodes[last], min(to - begins[last], nodes[last].length));
      push(ranges, stretch);
    }
    return ranges;
  };
  const show = (name, ranges) => {
    if (hasHighlights) setHighlight(CSS.highlights, name, new Highlight(...ranges));
  };
  const dropFound = () => {
    found = [];
    foundText = '';
    if (!hasHighlights) return;
    dropHighlight(CSS.highlights, 'quorvex-found');
    dropHighlight(CSS.highlights, 'quorvex-found-current');
  };
  const goToFound = (next) => {
    at = next;
    const stretch = found[at];
    const element = stretch.startContainer.parentElement;
    open(element);
    show('quorvex-found-current', [stretch]);
    if (!hasHighlights) {
      const selection = window.getSelection();
      selection.removeAllRanges();
      selection.addRange(stretch);
    }
    const { top: upper, bottom } = boxOfRange(stretch);
    if (upper < 40 || bottom > window.innerHeight - 80) {
      reveal(element, { block: 'nearest' });
      const { top: now } = boxOfRange(stretch);
      if (now < 40 || now > window.innerHeight - 80) window.scrollBy(0, now - window.innerHeight / 2);
    }
  };
  const find = (text, by) => {
    if (trim(text) === '') return dropFound();
    if (text !== foundText) {
      dropFound();
      found = rangesOf(text);
      foundText = text;
      show('quorvex-found', found);
      // From what is in view on.
      let next = 0;
      while (next < found.length && boxOfRange(found[next]).bottom < 0) ++next;
      if (found.length > 0) goToFound(next % found.length);
    } else if (found.length > 0 && by !== 0) {
      goToFound((at + by + found.length) % found.length);
    }
    return tell('found', { at: found.length > 0 ? at + 1 : 0, of: found.length });
  };

  // ---- Speaking with the interface

  let told = '';
  const tellPage = () => {
    const path = decode(location.pathname);
    if (path === null) return;
    const page = {
      path, fragment: fragmentOf(location.hash), title: slice(document.title, 0, 1000),
      headings: readHeadings(), marks: marks.length, mark: mark + 1,
      previous: neighbour('prev', 'previous'), next: neighbour('next'),
    };
    const text = stringify(page);
    if (text === told) return;
    told = text;
    tell('page', page);
    tellScroll();
  };

  /** The last heading above the upper third of the window. */
  const currentHeading = () => {
    let low = 0;
    let high = headings.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (box(headings[middle]).top < window.innerHeight / 3) low = middle + 1;
      else high = middle;
    }
    return low - 1;
  };
  let isScrolled = false;
  const tellScroll = () => {
    isScrolled = false;
    const height = document.documentElement.scrollHeight;
    tell('scroll', { y: max(0, round(window.scrollY)), height, heading: currentHeading() });
  };
  listen(window, 'scroll', () => {
    if (!isScrolled) setTimeout(tellScroll, 150);
    isScrolled = true;
  }, { passive: true, capture: true });

  const goTo = (fragment) => {
    // Not "#…" alone, which a <base> would lead elsewhere.
    const address = replace(location.href, /#.*$/s, '');
    begin = target(fragment) || null;
    if (fragmentOf(location.hash) === fragment) {
      if (begin) open(begin), reveal(begin);
      else window.scrollTo(0, 0);
    } else {
      location.replace(`${address}#${encodeUri(fragment)}`);
    }
  };
  const orders = {
    mark: ({ by }) => moveMark(by),
    find: ({ text, by }) => find(text, by),
    place({ fragment, heading }) {
      if (heading === undefined) return goTo(fragment);
      if (headings[heading]) open(headings[heading]), reveal(headings[heading]);
      return undefined;
    },
    scroll: ({ y }) => window.scrollTo(0, y),
    clearMarks,
  };
  listen(window, 'message', (event) => {
    if (event.source !== parent || typeof event.data?.quorvex !== 'string') return;
    stop(event);
    const order = Object.hasOwn(orders, event.data.quorvex) && orders[event.data.quorvex];
    if (order) order(event.data);
  });

  // ---- Links and keys

  const isPage = /(\/|\.(x?html?|php|xml)|\/[^/.]*)$/i;
  /** Sends a link's click to the interface; false if the browser does well by itself. */
  const follow = (link, apart) => {
    const href = attribute(link, 'href') ?? attribute(link, 'xlink:href');
    if (href === null || link.hasAttribute('download') || /^\s*javascript:/i.test(href)) return false;
    let url;
    try {
      url = new URL(href, document.baseURI);
    } catch {
      return false;
    }
    if (url.origin !== home) {
      if (!includes(['http:', 'https:', 'mailto:'], url.protocol)) return false;
      tell('outside', { href: url.href });
      return true;
    }
    const path = decode(url.pathname);
    const isHere = url.pathname === location.pathname && url.search === location.search;
    if (path === null || !isPage.test(path) || (url.search && !isHere && !apart)) return false;
    tell('go', { path, fragment: fragmentOf(url.hash), apart });
    return true;
  };
  const onClick = (event) => {
    if (event.defaultPrevented || event.button > 1) return;
    const from = event.target?.nodeType === 1 ? event.target : event.target?.parentElement;
    const link = from && closest(from, 'a[href],area[href],a[*|href]');
    if (!link) return;
    const apart = event.button === 1 || event.ctrlKey || event.metaKey || event.shiftKey;
    if (follow(link, apart)) prevent(event);
  };
  // Last of all listeners: what the page does itself with a click comes first.
  listen(window, 'click', (event) => listenedLast(event));
  listen(window, 'auxclick', (event) => listenedLast(event));
  const listenedLast = (event) => onClick(event);

  const keys = ['/', 'n', 'N', '?', 'Escape', 'f', '[', ']', 't'];
  listen(window, 'keydown', (event) => {
    if (event.isComposing || event.altKey) return;
    const ctrl = event.ctrlKey || event.metaKey;
    const key = ctrl ? lower(event.key) : event.key;
    if (ctrl ? key !== 'k' : !includes(keys, key)) return;
    const within = event.composedPath()[0];
    if (within?.isContentEditable || includes(['INPUT', 'TEXTAREA', 'SELECT'], within?.tagName)) return;
    if (key !== 'Escape') {
      prevent(event);
      stop(event);
    }
    tell('key', { key, ctrl });
  }, { capture: true });

  listen(window, 'hashchange', () => {
    begin = target(fragmentOf(location.hash)) || null;
    if (begin) open(begin);
    tellPage();
  });
  listen(document, 'DOMContentLoaded', () => {
    begin = target(fragmentOf(location.hash)) || null;
    if (begin) open(begin);
    else if (marks.length > 0) goToMark(0);
    tellPage();
  });
  listen(window, 'load', () => tellPage());
})();
