// Where the reader is. Each entry of the browser's history holds what is needed to show it again:
// question, page, fragment, the question whose words are marked, and how far page and list are
// scrolled.
import { addressOf, readAddress } from './address.js';

// Browsers allow only so many changes of the address in a time.
const rest = 300;

const unknown = { question: '', path: '', fragment: '', marks: '', y: 0, list: 0, isTyping: false };

function entryOf(state) {
  if (state) return { ...unknown, ...state };
  const address = readAddress();
  return { ...unknown, ...address, marks: address.path ? address.question : '' };
}

export class Visit {
  #timer = 0;
  entry = entryOf(history.state);

  /** `returned(entry)` is called when the reader goes back or forward. */
  constructor(returned) {
    history.scrollRestoration = 'manual';
    addEventListener('popstate', ({ state }) => {
      clearTimeout(this.#timer);
      this.#timer = 0;
      this.entry = entryOf(state);
      returned(this.entry);
    });
    addEventListener('pagehide', () => this.#write());
  }

  /** A new entry. */
  push(change) {
    this.#write();
    const { isTyping, question, y, typedAt } = this.entry;
    // A question that was cleared again, with nothing done since, is nothing to go back to.
    const isNeedless = isTyping && !question && y === typedAt;
    this.entry = { ...this.entry, ...change };
    history[isNeedless ? 'replaceState' : 'pushState'](this.entry, '', addressOf(this.entry));
  }

  /** The same entry, written in a while. */
  change(change) {
    Object.assign(this.entry, change);
    this.#timer ||= setTimeout(() => this.#write(), rest);
  }

  /** A question that is typed: an entry for all of its letters. */
  type(question) {
    if (this.entry.isTyping) this.change({ question });
    else this.push({ question, isTyping: true, typedAt: this.entry.question ? -1 : this.entry.y });
  }

  #write() {
    if (!this.#timer) return;
    clearTimeout(this.#timer);
    this.#timer = 0;
    history.replaceState(this.entry, '', addressOf(this.entry));
  }
}
