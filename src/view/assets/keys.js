// Keys outside the fields, in the interface and, as its page tells of them, in the frame; and the
// dialog that lists them.
import { byId } from './dom.js';

const help = byId('help');

export function openHelp() {
  if (!help.open) help.showModal();
}

/** `actions` has a function for each key. Returns what does the action of a key. */
export function watchKeys(actions) {
  const act = (key, ctrl) => {
    const name = ctrl ? `ctrl+${key}` : key;
    if (!Object.hasOwn(actions, name) || help.open) return false;
    actions[name]();
    return true;
  };
  document.addEventListener('keydown', (event) => {
    if (event.defaultPrevented || event.isComposing || event.altKey) return;
    const ctrl = event.ctrlKey || event.metaKey;
    if (event.target.matches('input') && !ctrl) return;
    if (act(ctrl ? event.key.toLowerCase() : event.key, ctrl)) event.preventDefault();
  });
  byId('help-button').addEventListener('click', openHelp);
  help.addEventListener('click', ({ target }) => {
    if (target === help) help.close();  // beside it
  });
  return act;
}
