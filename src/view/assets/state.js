// Watches the state of the index, and whether the program is still there.
import { ask } from './server.js';

const soon = 250;
const seldom = 60000;

/** Calls `changed(state, before)` when the state is another one; phase "gone" stands for no
 * answer. Returns a function that has it looked at again at once. */
export function watchState(changed) {
  let timer = 0;
  let last = { phase: 'opening' };
  let isAsking = false;

  async function look() {
    if (isAsking) return;
    isAsking = true;
    clearTimeout(timer);
    let state;
    try {
      state = await ask('state', {}, AbortSignal.timeout(10000));
    } catch {
      state = { phase: 'gone' };
    }
    isAsking = false;
    const before = last;
    last = state;
    if (JSON.stringify(before) !== JSON.stringify(state)) changed(state, before);
    // Whoever has the program's port next would learn the address, so only the reader asks again.
    if (document.hidden || state.phase === 'gone') return;
    const isBusy = state.remaking || /ing$/.test(state.phase);
    timer = setTimeout(look, isBusy ? soon : seldom);
  }

  document.addEventListener('visibilitychange', () => {
    if (document.hidden) clearTimeout(timer);
    else if (last.phase !== 'gone') look();
  });
  look();
  return look;
}
