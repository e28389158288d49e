// The start, and what connects the parts.
import { Answers } from './answers.js';
import { addressOf } from './address.js';
import { byId, delayed, lead, setText } from './dom.js';
import { Contents } from './contents.js';
import { Finder, Marks } from './finding.js';
import { Frame } from './frame.js';
import { openHelp, watchKeys } from './keys.js';
import { wordsOn } from './notes.js';
import { Outside } from './outside.js';
import { Panels } from './panels.js';
import { ask } from './server.js';
import { watchState } from './state.js';
import { Visit } from './visit.js';

const panels = new Panels();
const contents = new Contents((has) => { panels.hasContents = has; });
const visit = new Visit((entry) => show(entry));
const answers = new Answers({
  open: (target, apart) => open({ ...target, marks: answers.question }, apart),
  typed(question) {
    visit.type(question);
    if (question !== visit.entry.marks) marks?.hide();
    // A search has the book looked at: it may have changed.
    lookSoon();
  },
  scrolled: (list) => visit.change({ list }),
  leave: () => read(),
  async failed() {
    await lookAtState();
    // Only what has just answered is asked again.
    if (lastState.phase === 'ready') askLater();
  },
  panels,
});
const askLater = delayed(() => answers.retry(), 1000);
let book = { title: '', start: '/', language: null };
let frame = null;
let marks = null;
let finder = null;
let outside = null;
let shown = { title: '', height: 0 };
let landing = {};  // what is to be in view when the page that was opened is there

/** Opens a page of the book as a new entry of the history. */
function open({ path, fragment = '', marks: words = '', passage = '' }, apart = false) {
  if (apart) {
    const address = addressOf({ question: visit.entry.question, path, fragment });
    window.open(address, '_blank', 'noopener');
    return;
  }
  if (!frame) return;
  const { entry } = visit;
  const isSame = entry.path === path && entry.fragment === fragment && entry.marks === words;
  if (!isSame || entry.isTyping) {
    visit.push({ question: answers.question, path, fragment, marks: words, y: 0, isTyping: false });
  }
  load({ path, fragment, marks: words }, { passage });
  read();
}

/** Follows a link of the page, or beside it; marks stay as long as the page does. */
function follow({ path, fragment, apart = false }) {
  open({ path, fragment, marks: path === frame?.asked?.path ? visit.entry.marks : '' }, apart);
}

function read() {
  panels.read();
  frame?.focus();
}

/** Shows an entry of the history again. */
function show(entry) {
  answers.restore(entry.question, entry.list);
  if (!frame) return;
  const { fragment, marks: words, y } = entry;
  const path = entry.path || book.start;
  load({ path, fragment, marks: words }, { y });
}

function load(place, where) {
  landing = where;
  outside.close();
  frame.open(place, 'y' in where);
  if (frame.isThere) land();
  answers.markOpen(place.path, place.fragment);
}

function land() {
  frame.send(landing.y > 0 ? 'scroll' : 'land', landing);
}

/** What the page says of itself. */
function onPage(page) {
  shown = { title: page.title, height: 0 };
  const { entry } = visit;
  const isStart = entry.path === '' && page.path === book.start && page.fragment === '';
  if (!isStart && (entry.path !== page.path || entry.fragment !== page.fragment)) {
    visit.change({ path: page.path, fragment: page.fragment });
  }
  nameWindow();
  contents.show(page, answers.question);
  marks.show({ at: page.mark, of: page.marks });
  if (!page.isNew) return;
  land();
  finder.again();
}

/** A file that is no page, shown by the browser itself. */
function onSilent(path) {
  shown = { title: path.slice(path.lastIndexOf('/') + 1), height: 0 };
  nameWindow();
  contents.show({ path, headings: [] }, '');
  marks.show({ at: 0, of: 0 });
}

function nameWindow() {
  const { title } = shown;
  document.title = title.includes(book.title) ? title || 'quorvex' :
    [title, book.title].filter((part) => part).join(' – ');
}

function escape() {
  if (outside?.isOpen) outside.close();
  else if (finder?.isOpen) finder.close();
  else if (answers.question) {
    marks?.clear();
    answers.clear();
  }
}

function turnTo(name) {
  const path = contents.neighbour(name);
  if (path) follow({ path, fragment: '' });
}

const actKey = watchKeys({
  '/': () => answers.focus(),
  'ctrl+k': () => answers.focus(),
  j: () => answers.turn(1),
  k: () => answers.turn(-1),
  n: () => marks?.move(1),
  N: () => marks?.move(-1),
  f: () => finder?.open(),
  t: () => panels.toggleContents(),
  '[': () => turnTo('previous'),
  ']': () => turnTo('next'),
  '?': openHelp,
  Escape: escape,
});

function makeFrame(origin) {
  frame = new Frame(byId('frame'), origin, {
    page: onPage,
    silent: onSilent,
    refused(address) {
      landing = { y: visit.entry.y };
      outside.refuse(address);
    },
    go: follow,
    outside: ({ href }) => outside.follow(href, frame.asked.path),
    // A page may not take the cursor out of the field by feigning a key.
    key: ({ key, ctrl }) => frame.hasFocus && actKey(key, ctrl),
    mark: (count) => marks.show(count),
    found: (count) => finder.show(count),
    scroll({ y, height, heading }) {
      shown.height = height;
      visit.change({ y });
      contents.markCurrent(heading);
    },
  });
  marks = new Marks(frame, () => visit.change({ marks: '' }));
  finder = new Finder(frame);
  outside = new Outside(frame);
}

/** Plain clicks on links to pages open them here; the others are the browser's. */
function onLink(event) {
  const link = event.target.closest('a[data-path]');
  if (!link || event.button !== 0) return;
  if (event.ctrlKey || event.metaKey || event.shiftKey || event.altKey) return;
  event.preventDefault();
  const { path, fragment, heading } = link.dataset;
  if (link.role === 'option') {
    open({ ...link.dataset, marks: answers.question });
  } else if (heading && !fragment) {
    frame.send('place', { heading: Number(heading) });
    read();
  } else {
    follow({ path, fragment });
  }
}

async function loadBook() {
  try {
    book = await ask('book');
  } catch {
    setTimeout(loadBook, 1000);
    return;
  }
  setText(byId('title'), book.title || 'Start');
  lead(byId('title'), { path: book.start });
  byId('hits').lang = book.language?.replaceAll('_', '-') ?? '';
  nameWindow();
  if (frame) return;
  makeFrame(book.origin);
  show(visit.entry);
  if (visit.entry.path) frame.focus();
}

const lookSoon = delayed(() => lookAtState(), 1500);
const hideNews = delayed(() => showState(lastState), 8000);
let lastState = { phase: 'opening' };
let index = null;  // the identity of the last one in use

function showState(state, words = wordsOn(state)) {
  const progress = byId('progress');
  progress.hidden = state.phase !== 'making' || !(state.all > 0);
  if (!progress.hidden) Object.assign(progress, { max: state.all, value: state.done });
  // Not each page of it is worth an announcement.
  setText(byId('state-text'), words);
  byId('state').hidden = words === '';
}

const lookAtState = watchState((state, before) => {
  lastState = state;
  showState(state);
  if (state.phase === 'gone') return;
  if (before.phase === 'gone') frame?.retry();
  if (state.phase !== 'ready') return;
  if (index !== null && state.index !== index) {
    showState(state, 'The book has changed; its index was made again.');
    hideNews();
    loadBook();
    answers.again();
  } else if (before.phase !== 'ready') {
    if (book.pages === null) loadBook();  // its title is in the index
    answers.retry();
  } else {
    return;
  }
  if (frame?.isThere) contents.showRelated();
  index = state.index;
});

document.addEventListener('click', onLink);
addEventListener('beforeprint', () => { if (frame) frame.height = shown.height; });
addEventListener('afterprint', () => { if (frame) frame.height = 0; });
if (visit.entry.path) panels.read();
else answers.focus();
answers.restore(visit.entry.question, visit.entry.list);
loadBook();
