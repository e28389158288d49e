// The list of answers: a listbox whose options the reader chooses among while the cursor stays in
// the search field. Rows are used again for the same place, so that the list does not flicker.
import { lead, make, marked } from './dom.js';

export class Hits {
  #list;
  #rows = new Map();  // from its place to its <li>
  #selected = null;
  #opened = null;  // the last answer that the page was, which may have led on
  #question = '';

  constructor(list) {
    this.#list = list;
  }

  get isEmpty() { return this.#rows.size === 0; }
  get scroll() { return this.#list.parentElement.scrollTop; }
  set scroll(y) { this.#list.parentElement.scrollTop = y; }

  /** What the selected option leads to, or else the first one; undefined if there is none. */
  chosen() {
    return (this.#selected ?? this.#options[0])?.dataset;
  }

  /** Whether they show a word that begins as the question's last one. */
  holdLastWord() {
    const letter = '[\\p{L}\\p{M}\\p{N}]';
    const word = this.#question.match(new RegExp(`${letter}+`, 'gu'))?.at(-1);
    return word && new RegExp(`(?<!${letter})${word}`, 'iu').test(this.#list.innerText);
  }

  show(hits, question) {
    this.#question = question;
    const rows = new Map();
    let last = null;
    let path = '';
    for (const hit of hits) {
      const key = `${hit.path}#${hit.fragment}`;
      if (rows.has(key)) continue;
      const row = this.#rows.get(key) ?? make('li', { role: 'presentation' });
      this.#fill(row, hit, rows.size, hit.path === path);
      path = hit.path;
      const behind = last ? last.nextSibling : this.#list.firstChild;
      if (behind !== row) this.#list.insertBefore(row, behind);
      rows.set(key, row);
      last = row;
    }
    for (const [key, row] of this.#rows) {
      if (!rows.has(key)) row.remove();
    }
    this.#rows = rows;
    if (this.#selected && !this.#selected.isConnected) this.#selected = null;
  }

  /** Moves the selection; above the first option there is none. */
  move(by) {
    const options = this.#options;
    const at = options.indexOf(this.#selected ?? this.#opened);
    if (at < 0 && by < 0) return;
    this.select(options[Math.min(at + by, options.length - 1)] ?? null);
  }

  /** What the answer leads to that stands next to the one opened last, whatever its further
   * places; undefined if none does. */
  beside(by) {
    const rows = [...this.#list.children];
    const option = rows[rows.indexOf(this.#opened?.parentElement) + by]?.firstChild;
    option?.scrollIntoView({ block: 'nearest' });
    return option?.dataset;
  }

  select(option) {
    this.#selected?.setAttribute('aria-selected', 'false');
    this.#selected = option;
    option?.setAttribute('aria-selected', 'true');
    option?.scrollIntoView({ block: 'nearest' });
  }

  get selectedId() { return this.#selected?.id ?? ''; }

  /** Shows which answer the page is. */
  markOpen(path, fragment) {
    this.#opened?.removeAttribute('aria-current');
    const option = this.#options.find(
      ({ dataset }) => dataset.path === path && dataset.fragment === fragment);
    option?.setAttribute('aria-current', 'true');
    this.#opened = option ?? this.#opened;
  }

  get #options() { return [...this.#list.querySelectorAll('[role=option]')]; }

  /** `isMore`: of the page whose answer stands above. */
  #fill(row, hit, number, isMore) {
    const shown = JSON.stringify([this.#question, number, isMore, hit]);
    if (row.shown === shown) return;
    row.shown = shown;
    row.className = isMore ? 'more' : '';
    // Those of the answer above tell enough of the page.
    const places = isMore ? [] : furtherPlaces(hit);
    row.replaceChildren(
      this.#option(
        hit, hit, `v-hit-${number}`, isMore ? furtherPlace(hit, hit) : wholeHit(hit)),
      ...places.map((place, i) =>
        this.#option(hit, place, `v-hit-${number}-${i + 1}`, furtherPlace(hit, place))));
  }

  // A link, so that it can be copied and opened in a tab as any other.
  #option({ path }, { fragment, snippet, name }, id, contents) {
    const option = make('a', { id, role: 'option', tabIndex: -1, draggable: false }, ...contents);
    option.setAttribute('aria-selected', 'false');
    // To what is defined the fragment leads, unless it is that of a section around it.
    const text = snippet?.text.replace(/^…|…$/g, '') ?? '';
    option.dataset.passage = !name || text.includes(name) ? text : '';
    return lead(option, { question: this.#question, path, fragment });
  }
}

/** The places that do not lead to the same headings as one before them. */
function furtherPlaces(hit) {
  const ways = new Set([wayTo(hit, hit.headings)]);
  return hit.places.slice(1).filter((place) => {
    const way = wayTo(hit, place.headings);
    return place.fragment !== hit.fragment && !ways.has(way) && ways.add(way);
  });
}

function wholeHit(hit) {
  return [
    span('title', hit.title ? marked(hit.title, hit.titleMatches) : hit.path.slice(1)),
    span('way', wayTo(hit, hit.headings, hit.name)),
    snippetOf(hit.snippet) ?? snippetOf({ text: hit.description, matches: hit.descriptionMatches }),
    span('path', hit.title && hit.path.slice(1)),
  ];
}

function furtherPlace(hit, place) {
  return [
    span('way', wayTo(hit, place.headings, place.name) || 'Beginning of the page'),
    snippetOf(place.snippet),
  ];
}

function span(name, contents) {
  return contents ? make('span', { className: `hit-${name}` }, contents) : null;
}

/** The headings above the place, without those that only repeat the title. */
function wayTo(hit, headings, name = null) {
  const parts = headings.filter((heading) => !hit.title.startsWith(heading));
  if (name && name !== hit.title && !parts.at(-1)?.includes(name)) parts.push(name);
  return parts.join(' › ');
}

function snippetOf(snippet) {
  return snippet?.text ? span('text', marked(snippet.text, snippet.matches)) : null;
}
