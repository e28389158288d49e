// Speaks for a page of the book to the interface. Runs before the page's own scripts.
// What it needs of the browser it keeps for itself, as those scripts may replace anything.
(() => {
  'use strict';
  const { parent, top, document, location, CSS, Highlight, URL, Range, setTimeout } = window;
  const { requestAnimationFrame, decodeURIComponent, encodeURIComponent } = window;
  const { call } = Function.prototype;
  const own = (type, names) => names.split(' ').map((name) => call.bind(type.prototype[name]));
  const [slice, trim, replace] = own(String, 'slice trim replace');
  const [join] = own(Array, 'join');
  const [test, exec] = own(RegExp, 'test exec');
  const [all, one, byId, walk, classed, create] = own(Document,
    'querySelectorAll querySelector getElementById createTreeWalker getElementsByClassName ' +
    'createElement');
  const [closest, attribute, box, oneIn, reveal, isShown] = own(Element,
    'closest getAttribute getBoundingClientRect querySelector scrollIntoView checkVisibility');
  const [place] = own(Node, 'compareDocumentPosition');
  const [nextNode] = own(TreeWalker, 'nextNode');
  const [setStart, setEnd, boxOf] = own(Range, 'setStart setEnd getBoundingClientRect');
  const [listen] = own(EventTarget, 'addEventListener');
  const [prevent, stop, pathOf] = own(Event,
    'preventDefault stopImmediatePropagation composedPath');
  const [setHighlight, dropHighlight] = Highlight ? own(HighlightRegistry, 'set delete') : [];
  const { assign, hasOwn } = Object;
  const { stringify } = JSON;
  const post = parent.postMessage.bind(parent);
  const scrollTo = window.scrollTo.bind(window);
  const home = location.origin;
  // In a frame of the page's own there is nothing to say.
  if (parent !== top || parent === window) return;

  // ---- What the page consists of

  const tell = (kind, data) => post(assign({ quorvex: kind }, data), '*');
  const decode = (text) => {
    try {
      return decodeURIComponent(text);
    } catch {
      return null;
    }
  };
  const { parse: parseUrl } = URL;
  const parse = (address) => parseUrl(address, document.baseURI);
  const fragmentOf = (hash) => decode(slice(hash, 1)) ?? slice(hash, 1);
  const target = (fragment) => (fragment &&
    (byId(document, fragment) ?? one(document, `a[name="${CSS.escape(fragment)}"]`))) || null;

  const isPermalink = (node) => node.tagName === 'A' && test(/^#/, attribute(node, 'href') ?? '') &&
    test(/^\s*([¶#§\uf0c1]|🔗)?\s*$/u, node.textContent);

  /** The text of a heading without its buttons and the signs that link to it. */
  const textOf = (heading) => {
    let text = '';
    const tree = walk(document, heading, 5 /* elements and texts */, (node) => {
      if (node.nodeType === 3) return 1;
      return test(/^(BUTTON|SCRIPT|STYLE)$/, node.tagName) || isPermalink(node) ? 2 : 3;
    });
    while (text.length < 400 && nextNode(tree)) text += tree.currentNode.data;
    return slice(trim(replace(text, /\s+/g, ' ')), 0, 200);
  };

  /** The fragment that leads to a heading; empty if there is none of its own. */
  const idOf = (heading) => {
    const before = heading.previousElementSibling;
    const anchor = heading.id ? heading : oneIn(heading, '[id]:not(button),a[name]') ??
      (before?.tagName === 'A' && !before.textContent ? before : null);
    if (anchor) return anchor.id || anchor.name || '';
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
    const any = ':is(h1,h2,h3,h4,h5,h6)';
    // What a box with a note begins with says nothing of the page.
    const apart = `:is(.note,.tip,.important,.warning,.caution,.admonition)>${any}:first-child`;
    const inMain = all(document, `:is(main,[role=main]) ${any}`);
    const found = inMain.length > 0 ? inMain : all(document, any);
    const list = [];
    headings = [];
    for (let i = 0; i < found.length && list.length < 500; ++i) {
      if (closest(found[i], `nav,aside,footer,[role=navigation],[hidden],${apart}`)) continue;
      const text = textOf(found[i]);
      if (!text) continue;
      headings[list.length] = found[i];
      list[list.length] = { level: +found[i].tagName[1], text, id: `${idOf(found[i])}` };
    }
    return list;
  };

  /** The path of a neighbouring page in the book. */
  const neighbour = (...names) => {
    for (const tag of ['link', 'a']) {
      for (const name of names) {
        const link = one(document, `${tag}[rel~=${name} i][href]`);
        const url = link && parse(attribute(link, 'href'));
        if (url?.origin === home && url.pathname !== location.pathname) return decode(url.pathname);
      }
    }
    return null;
  };

  // ---- Marks

  const open = (element) => {
    for (let node = element; node && (node = closest(node, 'details')); node = node.parentElement) {
      node.open = true;
    }
  };
  /** Not in a menu that waits beside the window or is hidden. */
  const isSeen = (element, { width, right }) => width > 0 && right + window.scrollX > 0 &&
    isShown(element, { visibilityProperty: true, opacityProperty: true });
  const marks = classed(document, 'quorvex-mark');
  let stops = [];     // the marks that can be seen
  let mark = -1;      // the current one of these
  let begin = null;   // else, the node behind which the next one stands
  const readMarks = () => {
    const current = stops[mark];
    const seen = [];
    let last = {};
    mark = -1;
    for (let i = 0; i < marks.length; ++i) {
      const next = marks[i];
      const at = box(next);
      if (!closest(next, 'details:not([open])') && !isSeen(next, at)) continue;
      // What the page colours in pieces is one match.
      const isMore = at.left === last.right && at.top < last.bottom;
      last = at;
      if (isMore) continue;
      if (next === current) mark = seen.length;
      seen[seen.length] = next;
    }
    // In a page that is still to appear none can be seen.
    stops = seen.length > 0 ? seen : [...marks];
  };
  const goToMark = (at, isInPlace) => {
    stops[mark]?.classList.remove('quorvex-current');
    mark = at;
    stops[at].classList.add('quorvex-current');
    tell('mark', { at: at + 1, of: stops.length });
    if (isInPlace) return;
    open(stops[at]);
    reveal(stops[at], { block: 'center', inline: 'nearest' });
  };
  /** The number of the first one behind where the page was opened, or around it. */
  const firstMark = () => {
    let at = 0;
    while (begin && at < stops.length && !(place(begin, stops[at]) & 12)) ++at;
    return at;
  };
  const moveMark = (by) => {
    readMarks();
    const at = mark < 0 ? firstMark() - (by < 0) : mark + by;
    if (stops.length > 0) goToMark((at + stops.length) % stops.length);
  };
  const clearMarks = () => {
    for (let i = marks.length - 1; i >= 0; --i) {
      const around = marks[i].parentNode;
      marks[i].replaceWith(...marks[i].childNodes);
      around.normalize();
    }
    readMarks();
  };

  // ---- Finding a text

  let found = [];
  let foundText = '';
  let foundAt = 0;

  /** The text from a node on and where nodes begin in it. Between blocks there is a line's end. */
  const readText = (from, most = 1 / 0) => {
    const parts = [];
    const nodes = [];
    const begins = [];
    let length = 0;
    const add = (text) => {
      parts[parts.length] = text;
      length += text.length;
    };
    const tree = walk(document, document.body, 5, ({ tagName }) =>
      (test(/^(SCRIPT|STYLE|NOSCRIPT|TEXTAREA|SELECT|svg)$/, tagName) ? 2 : 1));
    if (from) tree.currentNode = from;
    while (length < most && nextNode(tree)) {
      const node = tree.currentNode;
      if (node.nodeType === 3) {
        nodes[nodes.length] = node;
        begins[begins.length] = length;
        add(node.data);
      } else if (test(/^(BR|D[DLT]|DIV|H[1-6R]|LI|P|PRE|SECTION|T[DHR])$/, node.tagName)) {
        add('\n');
      }
    }
    return { text: join(parts, ''), nodes, begins };
  };
  const rangesOf = (wanted, from, most) => {
    const { text, nodes, begins } = readText(from, most);
    const escaped = replace(trim(wanted), /[\\^$.*+?()[\]{}|/]/g, '\\$&');
    const pattern = new RegExp(replace(escaped, /\s+/g, '\\s+'), 'giu');
    const ranges = [];
    let node = 0;
    for (let hit; ranges.length < 5000 && (hit = exec(pattern, text));) {
      const from = hit.index;
      const to = from + hit[0].length;
      while (node + 1 < nodes.length && begins[node + 1] <= from) ++node;
      let last = node;
      while (last + 1 < nodes.length && begins[last + 1] < to) ++last;
      const stretch = new Range();
      setStart(stretch, nodes[node], from - begins[node]);
      setEnd(stretch, nodes[last], to - begins[last]);
      const { parentElement } = nodes[node];
      if (isSeen(parentElement, boxOf(stretch)) || closest(parentElement, 'details:not([open])')) {
        ranges[ranges.length] = stretch;
      }
    }
    return ranges;
  };
  const show = (name, ranges) => {
    if (ranges.length > 0) setHighlight?.(CSS.highlights, name, new Highlight(...ranges));
    else dropHighlight?.(CSS.highlights, name);
  };
  const isInView = (y) => y > 80 && y < window.innerHeight - 80;
  const goToStretch = (stretch) => {
    const { parentElement } = stretch.startContainer;
    open(parentElement);
    if (isInView(boxOf(stretch).top)) return;
    reveal(parentElement, { block: 'nearest' });  // in whatever scrolls
    const y = boxOf(stretch).top;
    if (!isInView(y)) window.scrollBy(0, y - window.innerHeight / 2);
  };
  const goToFound = (at) => {
    const stretch = found[at];
    foundAt = at;
    show('quorvex-found-current', [stretch]);
    if (!Highlight) {
      window.getSelection().removeAllRanges();
      window.getSelection().addRange(stretch);
    }
    goToStretch(stretch);
  };
  const find = (text, by) => {
    const isNew = text !== foundText;
    if (isNew) {
      foundText = text;
      found = trim(text) ? rangesOf(text) : [];
      show('quorvex-found', found);
      show('quorvex-found-current', []);
    }
    const of = found.length;
    let at = isNew ? 0 : foundAt + by;
    // The first one from what is in view on.
    while (isNew && at < of && boxOf(found[at]).top < 80) ++at;
    if (of > 0) goToFound((at + of) % of);
    tell('found', { at: of > 0 ? foundAt + 1 : 0, of });
  };

  // ---- Speaking with the interface

  let told = '';
  const tellPage = () => {
    readMarks();
    const page = {
      path: decode(location.pathname),
      fragment: fragmentOf(location.hash), title: slice(document.title, 0, 1000),
      headings: readHeadings(), marks: stops.length, mark: mark + 1,
      previous: neighbour('prev', 'previous'), next: neighbour('next'),
    };
    const text = stringify(page);
    if (text !== told) tell('page', page);
    told = text;
    tellScroll();
  };

  /** The last heading in the upper third of the window or above; where the page begins, its title
   * rather than what follows soon. */
  const currentHeading = () => {
    const { innerHeight, scrollY } = window;
    const isPassed = ({ top: y }) => y < innerHeight / 3 && y < scrollY + 120;
    let at = 0;
    while (at < headings.length && isPassed(box(headings[at]))) ++at;
    return at - 1;
  };
  let isScrolled = false;
  const tellScroll = () => {
    isScrolled = false;
    const height = document.documentElement.scrollHeight;
    const y = window.scrollY;
    tell('scroll', { y: y > 0 ? y | 0 : 0, height, heading: currentHeading() });
  };
  listen(window, 'scroll', () => {
    if (!isScrolled) setTimeout(tellScroll, 150);
    isScrolled = true;
  }, { passive: true, capture: true });

  const showTarget = () => {
    begin = target(fragmentOf(location.hash));
    open(begin);
    return begin ?? document.documentElement;
  };
  const goTo = (fragment) => {
    if (fragmentOf(location.hash) !== fragment) {
      // Not "#…" alone, which a <base> would lead elsewhere.
      location.replace(`${replace(location.href, /#.*$/s, '')}#${encodeURIComponent(fragment)}`);
    } else {
      reveal(showTarget());
    }
  };
  /** Shows what the page was opened for, unless the reader has scrolled meanwhile. */
  const land = (passage) => {
    const around = showTarget();
    // The browser may be about to do so.
    if (window.scrollY === 0) reveal(around);
    const { top } = box(around);
    if (top < -9 || top > window.innerHeight) return;
    const stretch = passage && rangesOf(passage, begin, 3e5)[0];
    if (stretch) begin = stretch.startContainer;
    const at = firstMark();
    const stop = stops[at];
    // What the fragment leads to stands at the window's upper edge.
    const isNear = ({ top: y, width }) => width > 0 && isInView(y + 90);
    if (stop && !(stretch && place(stretch.endContainer, stop) & 4)) {
      const isInPlace = isNear(box(stop));
      if (isInPlace || stretch || !begin) goToMark(at, isInPlace);
    } else if (stretch && !isNear(boxOf(stretch))) {
      goToStretch(stretch);
    }
  };
  const orders = {
    land: ({ passage }) => requestAnimationFrame(() => land(passage)),
    mark: ({ by }) => moveMark(by),
    find: ({ text, by }) => find(text, by),
    place({ fragment, heading }) {
      const element = headings[heading];
      if (element) open(element), reveal(element);
      else goTo(fragment);
    },
    scroll: ({ y }) => scrollTo(0, y),
    clearMarks,
  };
  listen(window, 'message', (event) => {
    const kind = event.source === parent && event.data?.quorvex;
    if (!kind || !hasOwn(orders, kind)) return;
    stop(event);
    orders[kind](event.data);
  });

  // ---- Links and keys

  /** Sends a link's click to the interface; false if the browser does well by itself. */
  const follow = (link, apart) => {
    const href = attribute(link, 'href') ?? attribute(link, 'xlink:href');
    const url = attribute(link, 'download') === null && parse(href);
    if (!url) return false;
    if (url.protocol === 'javascript:') {
      // Browsers do not run it in a page with an origin of its own.
      const script = create(document, 'script');
      script.text = decode(url.pathname + url.search + url.hash) ?? '';
      document.documentElement.append(script);
      script.remove();
      return true;
    }
    if (url.origin !== home) {
      if (!test(/^(https?|mailto):$/, url.protocol)) return false;
      tell('outside', { href: url.href });
      return true;
    }
    const path = decode(url.pathname);
    const isHere = url.pathname === location.pathname && url.search === location.search;
    // Other files are shown or saved by the browser, and a page's query is between it and itself.
    const isPage = path !== null && test(/(\/|\.(x?html?|php|xml)|\/[^/.]*)$/i, path);
    if (!isPage || (url.search && !isHere && !apart)) return false;
    tell('go', { path, fragment: fragmentOf(url.hash), apart });
    return true;
  };
  // The last of all listeners: what the page itself does with a click comes first.
  const onClick = (event) => {
    if (event.defaultPrevented || event.button > 1) return;
    const from = event.target.nodeType === 1 ? event.target : event.target.parentElement;
    const link = from && closest(from, 'a[href],area[href],a[*|href]');
    const apart = event.button === 1 || event.ctrlKey || event.metaKey || event.shiftKey;
    // For a frame of the page's own.
    if (link?.target && one(document, `[name="${CSS.escape(link.target)}"]`)) return;
    if (link && follow(link, apart)) prevent(event);
  };
  for (const kind of ['click', 'auxclick']) listen(window, kind, onClick);

  listen(window, 'keydown', (event) => {
    const { key, altKey, isComposing } = event;
    const ctrl = event.ctrlKey || event.metaKey;
    if (altKey || isComposing || !test(ctrl ? /^k$/ : /^([/jknN?f[\]t]|Escape)$/, key)) return;
    const within = pathOf(event)[0];
    if (within.isContentEditable || test(/^(INPUT|TEXTAREA|SELECT)$/, within.tagName)) return;
    tell('key', { key, ctrl });
    if (key === 'Escape') return;
    prevent(event);
    stop(event);
  }, true);

  for (const kind of ['DOMContentLoaded', 'load', 'hashchange']) listen(window, kind, () => {
    showTarget();
    tellPage();
  });
})();
