// The search field: what is typed, and the keys that move in the list while the cursor stays here.
import { byId } from './dom.js';

export class Field {
  #input = byId('field');

  /** `on.typed(text)`, `on.move(by)`, `on.open(apart)` and `on.leave()`, for Escape. */
  constructor(on) {
    const typed = () => on.typed(this.text);
    this.#input.addEventListener('input', (event) => {
      // What an input method is still composing is not a word yet.
      if (!event.isComposing) typed();
    });
    this.#input.addEventListener('compositionend', typed);
    this.#input.addEventListener('keydown', (event) => this.#key(event, on));
    byId('form').addEventListener('submit', (event) => event.preventDefault());
  }

  get text() { return this.#input.value; }
  set text(text) {
    if (this.#input.value !== text) this.#input.value = text;
  }

  focus() {
    this.#input.focus();
    this.#input.select();
  }

  /** Tells assistive technology of the list and of what is selected in it. */
  describe(hasAnswers, selectedId) {
    this.#input.setAttribute('aria-expanded', String(hasAnswers));
    if (selectedId) this.#input.setAttribute('aria-activedescendant', selectedId);
    else this.#input.removeAttribute('aria-activedescendant');
  }

  #key(event, on) {
    if (event.isComposing || event.altKey) return;
    switch (event.key) {
      case 'ArrowDown': on.move(1); break;
      case 'ArrowUp': on.move(-1); break;
      case 'Enter': on.open(event.ctrlKey || event.metaKey); break;
      case 'Escape': on.leave(); break;
      default: return;
    }
    event.preventDefault();
    event.stopPropagation();
  }
}
