// Asks while the reader types. One request is under way at a time and the newest question waits
// for its end, so a slow machine skips questions instead of falling behind.
import { ask } from './server.js';
import { delayed } from './dom.js';

const pause = 350;  // milliseconds without a key after which a question counts as finished
const patience = 20000;

export class Search {
  #wanted = null;
  #underWay = null;
  #answered;
  #failed;
  #settleLater = delayed(
    (text) => this.#want({ text, typing: false, isUnasked: true }), pause);

  /** `answered(text, typing, answer)` is called for the newest question only. */
  constructor(answered, failed) {
    this.#answered = answered;
    this.#failed = failed;
  }

  /** The question as far as it is typed. */
  typed(text) {
    const isFinished = /\s$/.test(text);
    this.#want({ text, typing: !isFinished });
    if (isFinished) this.#settleLater.cancel();
    else this.#settleLater(text);
  }

  /** The question as it is meant. */
  settle(text) {
    this.#settleLater.cancel();
    this.#want({ text, typing: false });
  }

  /** The answers stay as they are until the next key: the reader is choosing among them. */
  hold() {
    this.#settleLater.cancel();
    if (this.#wanted?.isUnasked) this.#wanted = null;
  }

  stop() {
    this.#settleLater.cancel();
    this.#wanted = null;
    this.#underWay?.abort();
  }

  #want(question) {
    const { text, typing } = this.#wanted ?? {};
    if (this.#underWay && text === question.text && typing === question.typing) return;
    this.#wanted = question;
    if (!this.#underWay) this.#run();
  }

  async #run() {
    const wanted = this.#wanted;
    const request = new AbortController();
    this.#underWay = request;
    const timer = setTimeout(() => request.abort(), patience);
    // While one types, what fits into the list.
    const kind = wanted.typing ? { typing: 1, count: 8 } : { count: 20 };
    const answer = await ask('search', { q: wanted.text, ...kind }, request.signal)
      .catch((error) => error);
    clearTimeout(timer);
    this.#underWay = null;
    if (wanted !== this.#wanted) {
      if (this.#wanted) this.#run();
    } else if (answer instanceof Error) {
      this.#failed(answer);
    } else {
      this.#answered(wanted.text, wanted.typing, answer);
    }
  }
}
