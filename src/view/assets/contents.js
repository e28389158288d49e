// The right column: neighbouring pages, the page's headings, related pages.
import { ask } from './server.js';
import { byId, lead, make } from './dom.js';

const related = 6;

export class Contents {
  #place = { question: '', path: '' };
  #links = [];  // by the heading's number
  #current = null;
  #changed;

  /** `changed(has)` is told whether there is anything to show. */
  constructor(changed) {
    this.#changed = changed;
  }

  /** The page that is shown. */
  show(page, question) {
    const isNew = page.path !== this.#place.path;
    this.#place = { question, path: page.path };
    turn(byId('previous'), page.previous, question);
    turn(byId('next'), page.next, question);
    byId('turn').hidden = !page.previous && !page.next;
    this.#showHeadings(page.headings);
    this.#tell(!isNew);
    if (isNew) this.showRelated();
  }

  /** The path of a neighbour, for "[" and "]"; empty if there is none. */
  neighbour(name) {
    return byId(name).dataset.path;
  }

  /** Marks the heading above what is being read; -1: none. */
  markCurrent(number) {
    const link = this.#links[number] ?? null;
    if (link === this.#current) return;
    this.#current?.removeAttribute('aria-current');
    this.#current = link;
    link?.setAttribute('aria-current', 'true');
    if (link && !byId('aside').contains(document.activeElement)) {
      link.scrollIntoView({ block: 'nearest' });
    }
  }

  #showHeadings(headings) {
    this.#current = null;
    this.#links = headings.map((heading, i) => {
      const link = make('a', {}, heading.text || '…');
      link.dataset.heading = i;
      return lead(link, { ...this.#place, fragment: heading.id });
    });
    byId('headings').replaceChildren(nested(headings, this.#links));
    byId('contents').hidden = headings.length < 2;
  }

  /** Also once an index is there that can tell them. */
  async showRelated() {
    const { path, question } = this.#place;
    // The page is as good without them.
    const { hits } = await ask('related', { page: path, count: related })
      .catch(() => ({ hits: [] }));
    if (path !== this.#place.path) return;
    byId('related-list').replaceChildren(...hits.map((hit) => {
      const link = make('a', {}, hit.title || hit.path);
      return make('li', {}, lead(link, { question, path: hit.path }));
    }));
    byId('related').hidden = hits.length === 0;
    this.#tell(true);
  }

  /** `isSure`: also that there is nothing. */
  #tell(isSure) {
    const has = ['turn', 'contents', 'related'].some((name) => !byId(name).hidden);
    if (has || isSure) this.#changed(has);
  }
}

function turn(link, path, question) {
  link.hidden = !path;
  lead(link, { question, path: path ?? '' });
}

/** Lists in lists, by the levels; a level that is left out counts as the next one. */
function nested(headings, links) {
  const top = make('ul');
  const open = [{ level: 0, list: top }];
  headings.forEach(({ level }, i) => {
    while (open.length > 1 && open.at(-1).level >= level) open.pop();
    let { list } = open.at(-1);
    if (open.length > 1) {
      const above = list.lastChild;
      list = above.querySelector('ul') ?? above.appendChild(make('ul'));
    }
    list.append(make('li', {}, links[i]));
    open.push({ level, list });
  });
  return top;
}
