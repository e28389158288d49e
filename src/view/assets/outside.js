// Links that lead out of the book. One that stands in the page's file is opened at once, as its
// address tells nobody what the book did not say; any other only after the reader has seen it,
// because a page's script could put into it what it has read.
import { ask } from './server.js';
import { byId, setText } from './dom.js';

export class Outside {
  #bar = byId('outside');
  #frame;

  constructor(frame) {
    this.#frame = frame;
    for (const name of ['outside-open', 'outside-stay']) {
      byId(name).addEventListener('click', () => this.close());
    }
  }

  get isOpen() { return !this.#bar.hidden; }

  async follow(href, page) {
    let known = false;
    try {
      ({ known } = await ask('link', { page, href }));
    } catch {
      // Then the reader decides.
    }
    if (known === true && navigator.userActivation?.isActive) {
      this.close();
      window.open(href, '_blank', 'noopener,noreferrer');
    } else {
      this.#show('This link leads out of the book:', href);
      byId('outside-open').href = href;
      byId('outside-open').hidden = false;
      // Not away from what the reader is typing.
      if (this.#frame.hasFocus) byId('outside-open').focus();
    }
  }

  close() {
    if (!this.isOpen) return;
    const hadFocus = this.#bar.contains(document.activeElement);
    this.#bar.hidden = true;
    if (hadFocus) this.#frame.focus();
  }

  /** A page has tried to lead there by itself. Of the address browsers tell only the host. */
  refuse(host) {
    const where = host ? `${host}/…` : 'an unknown address';
    this.#show('This page tried to lead out of the book, to', where);
    byId('outside-open').hidden = true;
  }

  #show(words, address) {
    setText(byId('outside-words'), words);
    setText(byId('outside-address'), address);
    this.#bar.hidden = false;
  }
}
