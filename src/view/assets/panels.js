// Which columns are there. In a narrow window they lie over the page, one at a time.
import { byId } from './dom.js';

const narrow = matchMedia('(max-width: 44rem)');
const wide = matchMedia('(min-width: 70rem)');
const key = 'contents';

/** What the reader chose; `value` replaces it. Without storage the column is as by default. */
function kept(value) {
  try {
    if (value) localStorage.setItem(key, value);
    return localStorage.getItem(key);
  } catch {
    return null;
  }
}

export class Panels {
  #wantsContents = kept() !== 'no' && wide.matches;
  #hasQuestion = false;
  #isReading = false;  // narrow: the page is before the answers
  #hasContents = true;  // from the start, as the page loses its place if it is made narrower

  constructor() {
    byId('aside-button').addEventListener('click', () => this.toggleContents());
    wide.addEventListener('change', () => {
      this.#wantsContents = wide.matches && kept() !== 'no';
      this.#update();
    });
    narrow.addEventListener('change', () => this.#update());
    this.#update();
  }

  toggleContents() {
    this.#wantsContents = !this.#wantsContents;
    if (wide.matches) kept(this.#wantsContents ? 'yes' : 'no');
    this.#update();
  }

  /** Whether a question stands in the field. */
  set hasQuestion(has) {
    this.#hasQuestion = has;
    this.#update();
  }

  /** Whether the page has anything to say beside it. */
  set hasContents(has) {
    this.#hasContents = has;
    this.#update();
  }

  search() {
    this.#isReading = false;
    if (narrow.matches) this.#wantsContents = false;
    this.#update();
  }

  read() {
    this.#isReading = true;
    if (!wide.matches) this.#wantsContents = false;
    this.#update();
  }

  #update() {
    byId('answers').hidden = !this.#hasQuestion || (narrow.matches && this.#isReading);
    byId('aside').hidden = !this.#wantsContents || !this.#hasContents;
    byId('aside-button').hidden = !this.#hasContents;
    byId('aside-button').setAttribute('aria-expanded', String(!byId('aside').hidden));
  }
}
