// What the program is asked for.

/** The answer of an endpoint, as of `ask('search', { q: 'words' })`. Throws if there is none. */
export async function ask(endpoint, parameters = {}, signal = undefined) {
  const query = new URLSearchParams(parameters);
  const reply = await fetch(`${endpoint}?${query}`, { signal, cache: 'no-store' });
  if (!reply.ok) throw new Error(`${endpoint}: ${reply.status}`);
  return reply.json();
}
