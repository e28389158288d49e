// The words around the answers: what was searched for instead, why there are none.
import { make } from './dom.js';

const reasons = {
  noWords: 'Type a word, a name such as json.dump, or a question.',
  onlyStopWords: 'These words stand on almost every page. Add one that says what it is about.',
  onlyExcluded: 'This only says what must not be there. Add a word to look for.',
};

/** What stands above the answers; `again(question)` searches for something else. */
export function noteOn(answer, again) {
  const lines = [];
  if (answer.searched) {
    lines.push(make('p', {}, 'Showing results for ', make('b', {}, answer.searched)));
  } else if (answer.suggestion) {
    const other = make('button', { type: 'button', className: 'link' }, answer.suggestion);
    other.addEventListener('click', () => again(answer.suggestion));
    lines.push(make('p', {}, 'Did you mean ', other, '?'));
  }
  if (answer.hits.length === 0) lines.push(...nothing(answer.state));
  return lines;
}

function nothing(state) {
  if (Object.hasOwn(reasons, state)) return [make('p', {}, reasons[state])];
  return [
    make('p', {}, make('b', {}, 'Nothing found.')),
    make('ul', {},
      make('li', {}, 'Check the spelling.'),
      make('li', {}, 'Use fewer words, or more general ones.'),
      make('li', {}, 'Write names as the book does, without quotation marks.')),
  ];
}

/** For those who hear the answers. */
export function spokenCount(answer) {
  const { length } = answer.hits;
  if (length === 0) return reasons[answer.state] ?? 'Nothing found.';
  return length === 1 ? '1 answer' : `${length} answers`;
}

const meanwhile = 'The book can be read meanwhile.';

/** What the state line says; empty if there is nothing to say. */
export function wordsOn(state) {
  switch (state.phase) {
    case 'gone':
      return 'quorvex-view has ended. Start it again and reload; this address stays valid.';
    case 'opening':
      return `Opening the index. ${meanwhile}`;
    case 'making':
      if (state.all === 0) return `Making the index. ${meanwhile}`;
      if (state.done === state.all) return 'Making the index: finishing.';
      return `Making the index: ${state.done} of ${state.all} pages. ${meanwhile}`;
    case 'failed':
      return `There is no index: ${state.message ?? 'it could not be made'}`;
    default:
      if (state.remaking) return 'The book has changed; its index is being made again.';
      return state.message ?? '';
  }
}
