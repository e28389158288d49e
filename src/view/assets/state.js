// Watches the state of the index, and whether the program is still there.
import { ask } from './server.js';

const soon = 250;
const retry = 2000;
const seldom = 60000;

/** Calls `changed(state, before)` when the state is another one; phase "gone" stands for no
 * answer. Returns a function that has it looked at again at once. */
export function watchState(changed) {
  let timer = 0;
  let last = { phase: 'opening', generation: 0 };
  let isAsking = false;

  async function look() {
    if (isAsking) return;
    isAsking = true;
    clearTimeout(timer);
    let state;
    try {
      state = await ask('state', {}, AbortSignal.timeout(10000));
    } catch {
      state = { phase: 'gone', generation: last.generation };
    }
    isAsking = false;
    const before = last;
    last = state;
    if (JSON.stringify(before) !== JSON.stringify(state)) changed(state, before);
    if (!document.hidden) timer = setTimeout(look, delayAfter(state));
  }

  document.addEventListener('visibilitychange', () => {
    if (document.hidden) clearTimeout(timer);
    else look();
  });
  look();
  return look;
}

function delayAfter({ phase, remaking }) {
  if (phase === 'gone') return retry;
  return phase === 'opening' || phase === 'making' || remaking ? soon : seldom;
}
