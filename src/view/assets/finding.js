// The two small bars of the page: the question's matches in it, and finding a text in it.
import { byId, delayed, setText } from './dom.js';

/** Calls `act` with the value of the bar's button that is clicked. */
function onButton(bar, act) {
  bar.addEventListener('click', ({ target }) => {
    const button = target.closest('button');
    if (button) act(Number(button.value));
  });
}

export class Marks {
  #bar = byId('marks');
  #frame;
  #count = 0;

  constructor(frame, cleared) {
    this.#frame = frame;
    onButton(this.#bar, (by) => {
      if (by !== 0) return this.move(by);
      this.clear();
      return cleared();
    });
  }

  show({ at, of }) {
    this.#count = of;
    const words = of === 1 ? '1 match' : `${of} matches`;
    setText(byId('marks-count'), at > 0 ? `${at} of ${words}` : words);
    this.#bar.hidden = of === 0;
  }

  /** The reader has another question than the page. */
  hide() {
    this.#bar.hidden = true;
  }

  move(by) {
    if (this.#count > 0) this.#frame.send('mark', { by });
  }

  clear() {
    if (this.#count > 0) this.#frame.send('clearMarks');
    this.show({ at: 0, of: 0 });
  }
}

export class Finder {
  #bar = byId('find');
  #field = byId('find-field');
  #frame;

  constructor(frame) {
    this.#frame = frame;
    const findLater = delayed(() => this.#find(0), 80);
    this.#field.addEventListener('input', findLater);
    this.#bar.addEventListener('keydown', (event) => this.#key(event));
    this.#bar.addEventListener('submit', (event) => event.preventDefault());
    onButton(this.#bar, (by) => (by === 0 ? this.close() : this.#find(by)));
  }

  get isOpen() { return !this.#bar.hidden; }

  open() {
    this.#bar.hidden = false;
    this.#field.focus();
    this.#field.select();
    if (this.#field.value) this.#find(0);
  }

  close() {
    if (!this.isOpen) return;
    this.#bar.hidden = true;
    setText(byId('find-count'), '');
    this.#frame.send('find', { text: '', by: 0 });
    this.#frame.focus();
  }

  /** Another page is there: what was found is gone. */
  again() {
    if (this.isOpen && this.#field.value) this.#find(0);
  }

  show({ at, of }) {
    if (!this.isOpen) return;
    setText(byId('find-count'), of > 0 ? `${at} of ${of}` : 'not found');
  }

  #find(by) {
    const text = this.#field.value;
    if (!text) setText(byId('find-count'), '');
    this.#frame.send('find', { text, by });
  }

  #key(event) {
    const isEnter = event.key === 'Enter' && event.target === this.#field;
    if (event.key === 'Escape') this.close();
    else if (isEnter) this.#find(event.shiftKey ? -1 : 1);
    else return;
    event.preventDefault();
    event.stopPropagation();
  }
}
