// The frame with the book's page. Whatever a page says is a stranger's word: each message is
// checked and copied here, member by member, before anything else sees it.
import { isPath, pageUrl } from './address.js';

const isText = (value, most) => typeof value === 'string' && value.length <= most;
const isCount = (value, most = 1e7) => Number.isSafeInteger(value) && value >= 0 && value <= most;
const pathOrNull = (value) => (isPath(value) ? value : null);
const keys = new Set(['/', 'j', 'k', 'n', 'N', '?', 'Escape', 'f', '[', ']', 't']);

function heading(value) {
  const { level, text, id } = value ?? {};
  if (!isCount(level, 6) || !isText(text, 200)) return null;
  return { level, text, id: isText(id, 1000) ? id : '' };
}

function counted({ at, of }) {
  return isCount(at) && isCount(of) && at <= of ? { at, of } : null;
}

/** What each kind of message says; null if it is not as it must be. */
const readers = {
  page(message) {
    const { path, fragment, title, headings, marks, mark, previous, next } = message;
    if (!isPath(path) || !isText(fragment, 4096) || !isText(title, 4096)) return null;
    if (!Array.isArray(headings) || headings.length > 500) return null;
    if (!isCount(marks) || !isCount(mark, marks)) return null;
    return {
      path, fragment, title, marks, mark, headings: headings.map(heading),
      previous: pathOrNull(previous), next: pathOrNull(next),
    };
  },
  go: ({ path, fragment, apart }) =>
    isPath(path) && isText(fragment, 4096) ? { path, fragment, apart: apart === true } : null,
  outside({ href }) {
    const url = isText(href, 4096) ? URL.parse(href) : null;
    return ['http:', 'https:', 'mailto:'].includes(url?.protocol) ? { href: url.href } : null;
  },
  key: ({ key, ctrl }) => (keys.has(key) ? { key, ctrl: ctrl === true } : null),
  mark: counted,
  found: counted,
  scroll: ({ y, height, heading: at }) =>
    isCount(y) && isCount(height) && Number.isSafeInteger(at) ? { y, height, heading: at } : null,
};

export class Frame {
  #element;
  #origin;
  #asked = null;     // what was opened last
  #awaited = null;   // the same, until its page has said that it is there
  #isThere = false;  // a page has said so since
  #spoke = false;    // so has the one that is being loaded, which may be another
  #waiting = 0;      // for the word of one that is loaded
  #refused = null;   // where a page has tried to lead instead of the book
  #returns = 0;      // how often the page had to be led back since it was opened

  /** `handlers` has a function for each kind of message, `silent` for a page that says nothing, as
   * one that is no HTML, and `refused` for one that has tried to lead out of the book. */
  constructor(element, origin, handlers) {
    this.#element = element;
    this.#origin = origin;
    addEventListener('message', (event) => this.#receive(event, handlers));
    document.addEventListener('securitypolicyviolation', ({ effectiveDirective, blockedURI }) => {
      if (effectiveDirective === 'frame-src') this.#refused = blockedURI;
    });
    document.addEventListener('load', ({ target }) => {
      if (target !== this.#element) return;
      clearTimeout(this.#waiting);
      if (this.#refused !== null) {
        // Now the frame has the browser's words on it.
        handlers.refused(this.#refused);
        ++this.#returns;
        this.#load();
      } else if (!this.#spoke) {
        // Its message may come later than the event.
        this.#waiting = setTimeout(() => {
          handlers.silent(this.#isThere ? '' : this.#asked.path);
          this.#isThere = false;
        }, 300);
      }
      this.#spoke = false;
    }, true);
  }

  get hasFocus() { return document.activeElement === this.#element; }
  get isThere() { return this.#isThere; }
  get asked() { return this.#asked; }

  /** Opens a page. The history gets no entry: the interface makes those. */
  open({ path, fragment = '', marks = '' }, isReturn = false) {
    const isSame = this.#isThere && !this.#awaited && this.#asked.path === path &&
      this.#asked.marks === marks;
    this.#asked = { path, fragment, marks };
    if (isSame) {
      this.send('place', { fragment });
      return;
    }
    this.#returns = 0;
    if (isReturn) this.#renew();
    this.#load();
  }

  /** Going back, browsers bring the earlier page into the frame themselves, instead of what is
   * asked for: without its marks, as its address has lost the question. A new frame gets none. */
  #renew() {
    const { hasFocus } = this;
    const old = this.#element;
    this.#element = old.cloneNode();
    old.replaceWith(this.#element);
    if (hasFocus) this.focus();
  }

  #load() {
    this.#awaited = this.#asked;
    this.#isThere = this.#spoke = false;
    this.#refused = null;
    clearTimeout(this.#waiting);
    // Without scripts a page that does it each time stays what it is.
    this.#element.sandbox.toggle('allow-scripts', this.#returns < 3);
    const url = pageUrl(this.#origin, this.#asked);
    this.#element.contentWindow.location.replace(url);
  }

  /** Loads the page again that was opened last, if it has never come. */
  retry() {
    if (this.#asked && !this.#isThere) this.open(this.#asked);
  }

  send(kind, data = {}) {
    // The origin of the frame is opaque and cannot be named. Nothing secret is ever sent.
    this.#element.contentWindow.postMessage({ quorvex: kind, ...data }, '*');
  }

  focus() {
    this.#element.focus();
    this.#element.contentWindow.focus();
  }

  set height(pixels) { this.#element.style.height = pixels ? `${pixels}px` : ''; }

  #receive({ source, data }, handlers) {
    if (source !== this.#element.contentWindow) return;
    const kind = data?.quorvex;
    if (typeof kind !== 'string' || !Object.hasOwn(readers, kind)) return;
    // A page that is being left has nothing to say.
    if (!this.#isThere && kind !== 'page') return;
    const message = readers[kind](data);
    if (!message) return;
    if (kind === 'page') {
      if (message.headings.includes(null)) return;
      const { path, fragment } = message;
      const isAwaited = path === this.#awaited?.path;
      message.isNew = isAwaited || !this.#isThere;
      if (isAwaited) {
        this.#asked = this.#awaited;
        this.#awaited = null;
      } else if (path !== this.#asked?.path) {
        // The page has led on by itself, or is the one that is being left.
        this.#asked = { path, fragment, marks: '' };
      }
      this.#isThere = true;
      this.#spoke = true;
      clearTimeout(this.#waiting);
    }
    handlers[kind](message);
  }
}
