// The search: its field, the answers, and the words around them.
import { byId, delayed, setText } from './dom.js';
import { Field } from './field.js';
import { Hits } from './hits.js';
import { noteOn, spokenCount } from './notes.js';
import { Search } from './search.js';

const noAnswer = { state: 'answered', suggestion: null, searched: null, hits: [] };

export class Answers {
  #on;
  #hits = new Hits(byId('hits'));
  #search;
  #field;
  #answered = null;      // the question whose answers are shown
  #settled = null;       // the question whose answers are final
  #opensNext = null;     // { apart }: the first of the answers that are awaited is to be opened
  #scrollNext = null;    // where the list is scrolled to when its answers are there
  #openPage = null;
  #speak = delayed((words) => setText(byId('live'), words), 700);

  constructor(on) {
    this.#on = on;
    this.#search = new Search(
      (text, typing, answer) => this.#show(text, typing, answer), (error) => this.#fail(error));
    this.#field = new Field({
      typed: (text) => this.#typed(text),
      move: (by) => this.#move(by),
      open: (apart) => this.#open(apart),
      leave: () => this.#leave(),
    });
    // The list is not to change under the pointer.
    byId('answers').addEventListener('pointermove', () => this.#search.hold());
    byId('answers').addEventListener('scroll', () => on.scrolled(this.#hits.scroll));
    for (const kind of ['focus', 'click']) byId('field').addEventListener(kind, () => {
      // Without a reader, the first focus of all would put it over the page.
      byId('hint').hidden = !navigator.userActivation.hasBeenActive;
      on.panels.search();
    });
  }

  get question() { return this.#field.text.trim(); }

  focus() {
    this.#on.panels.search();
    this.#field.focus();
  }

  /** Searches for what an entry of the history holds. */
  restore(question, list = 0) {
    if (question === this.question && question === this.#answered?.trim()) {
      this.#hits.scroll = list;
      return;
    }
    this.#field.text = question;
    this.#scrollNext = list;
    this.#ask(question, false);
  }

  clear() {
    this.#field.text = '';
    this.#typed('');
    this.focus();
  }

  /** Opens the answer next to the one opened last. */
  turn(by) {
    const target = this.#hits.beside(by);
    if (!target) return;
    this.#hits.select(null);
    this.#describe();
    this.#on.open(target, false);
  }

  /** There is another index. */
  again() {
    this.#scrollNext = this.#hits.scroll;
    this.#answered = this.#settled = null;
    this.retry();
  }

  /** Asks for what has not been answered. */
  retry() {
    if (this.question && this.#answered !== this.#field.text) this.#search.settle(this.#field.text);
  }

  markOpen(path, fragment) {
    this.#openPage = { path, fragment };
    this.#hits.markOpen(path, fragment);
  }

  #typed(text) {
    this.#opensNext = null;
    this.#scrollNext = 0;
    this.#hits.select(null);
    this.#describe();
    this.#on.typed(text.trim());
    this.#on.panels.search();
    this.#ask(text, true);
  }

  #ask(text, isTyped) {
    const isEmpty = text.trim() === '';
    this.#on.panels.hasQuestion = !isEmpty;
    if (isEmpty) {
      this.#search.stop();
      this.#answered = null;
      this.#put(noAnswer, []);
    } else if (isTyped) {
      this.#search.typed(text);
    } else {
      this.#search.settle(text);
    }
  }

  #show(text, typing, answer) {
    if (text !== this.#field.text) return;
    // The beginning of a word may find what the word itself, or another one in its place, does not.
    // Its answers stay: the reader may still be typing, or is about to open the first.
    const isWorse = !typing && (answer.searched || answer.hits.length === 0);
    const isKept = isWorse && this.#answered === text && this.#hits.holdLastWord();
    if (!isKept) {
      this.#put(answer, noteOn(answer, (other) => this.#instead(other)));
      this.#speak(spokenCount(answer));
    }
    this.#answered = text;
    this.#settled = typing ? null : text;
    if (this.#scrollNext !== null) this.#hits.scroll = this.#scrollNext;
    this.#scrollNext = null;
    const opens = this.#opensNext;
    this.#opensNext = null;
    if (opens) this.#open(opens.apart);
  }

  #put(answer, note) {
    byId('note').replaceChildren(...note);
    this.#hits.show(answer.hits, this.question);
    if (this.#openPage) this.#hits.markOpen(this.#openPage.path, this.#openPage.fragment);
    this.#describe();
  }

  #instead(question) {
    this.#field.text = question;
    this.#typed(question);
    this.#search.settle(question);
    this.#field.focus();
  }

  #fail(error) {
    this.#opensNext = null;
    if (error.name === 'AbortError') {
      byId('note').replaceChildren('The search took too long.');
      return;
    }
    if (this.#hits.isEmpty) {
      byId('note').replaceChildren('Answers will appear here as soon as possible.');
    }
    this.#on.failed();
  }

  #move(by) {
    this.#on.panels.search();
    this.#search.hold();
    this.#hits.move(by);
    this.#describe();
  }

  #open(apart) {
    const text = this.#field.text;
    if (this.question === '') return;
    if (text !== this.#settled && !this.#hits.selectedId) {
      this.#opensNext = { apart };
      this.#search.settle(text);
      return;
    }
    const target = this.#hits.chosen();
    if (target) this.#on.open(target, apart);
  }

  #leave() {
    if (!this.#hits.selectedId) {
      this.#on.leave();
      return;
    }
    this.#hits.select(null);
    this.#describe();
  }

  #describe() {
    this.#field.describe(!this.#hits.isEmpty, this.#hits.selectedId);
  }
}
