// What the program is asked for.

/** There was no answer; `isGone` if the program itself did not answer. */
export class NoAnswer extends Error {
  constructor(status) {
    super(`status ${status}`);
    this.isGone = status !== 503;
  }
}

/** The answer of an endpoint, such as `ask('search', {q: 'words'})`. */
export async function ask(endpoint, parameters = {}, signal = undefined) {
  const query = new URLSearchParams(parameters).toString();
  let reply;
  try {
    reply = await fetch(query ? `${endpoint}?${query}` : endpoint, { signal, cache: 'no-store' });
  } catch (error) {
    throw error.name === 'AbortError' ? error : new NoAnswer(0);
  }
  if (!reply.ok) throw new NoAnswer(reply.status);
  return reply.json();
}
