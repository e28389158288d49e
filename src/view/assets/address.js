// Addresses: of the interface ("?q=QUESTION&page=/path.html#fragment") and of the book's pages.

// Half a surrogate pair, which a page may send, cannot be encoded.
const encode = (text) => encodeURIComponent(text.replace(/\p{Surrogate}/gu, '\uFFFD'));
const encodePath = (path) => path.split('/').map(encode).join('/');

function decode(text) {
  try {
    return decodeURIComponent(text);
  } catch {
    return text;
  }
}

/** Whether it can be the path of a page in the book. */
export const isPath = (path) =>
  typeof path === 'string' && path.startsWith('/') && path.length <= 4096 &&
  !path.split('/').includes('..');

/** What an address of the interface names; parts that are missing are empty. */
export function readAddress(url = location) {
  const parameters = new URLSearchParams(url.search);
  const page = parameters.get('page') ?? '';
  return {
    question: parameters.get('q') ?? '',
    path: isPath(page) ? page : '',
    fragment: decode(url.hash.slice(1)),
  };
}

/** The interface's address, relative to itself. */
export function addressOf({ question = '', path = '', fragment = '' }) {
  const parts = [];
  if (question) parts.push(`q=${encode(question).replace(/%20/g, '+')}`);
  if (path) parts.push(`page=${encodePath(path)}`);
  const page = parts.length > 0 ? `?${parts.join('&')}` : './';
  return page + (fragment ? `#${encode(fragment)}` : '');
}

/** A page's address on the book's origin; the words of `marks` are marked in it. */
export function pageUrl(origin, { path, fragment = '', marks = '' }) {
  const question = marks ? `?quorvex-question=${encode(marks)}` : '';
  return origin + encodePath(path) + question + (fragment ? `#${encode(fragment)}` : '');
}
