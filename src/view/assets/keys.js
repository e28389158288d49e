// Keys outside the fields, in the interface and, as its page tells of them, in the frame.

const isField = (element) =>
  element instanceof HTMLInputElement || element instanceof HTMLTextAreaElement;

/** `actions` has a function for each key. Returns what does the action of a key. */
export function watchKeys(actions) {
  const act = (key, ctrl) => {
    const name = ctrl ? `ctrl+${key}` : key;
    if (!Object.hasOwn(actions, name) || document.querySelector('dialog[open]')) return false;
    actions[name]();
    return true;
  };
  document.addEventListener('keydown', (event) => {
    if (event.defaultPrevented || event.isComposing || event.altKey) return;
    const ctrl = event.ctrlKey || event.metaKey;
    if (isField(event.target) && !ctrl) return;
    if (act(ctrl ? event.key.toLowerCase() : event.key, ctrl)) event.preventDefault();
  });
  return act;
}
