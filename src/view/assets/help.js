// The list of keys, in a dialog.
import { byId } from './dom.js';

export function openHelp() {
  const dialog = byId('help');
  if (!dialog.open) dialog.showModal();
}

export function watchHelp() {
  byId('help-button').addEventListener('click', openHelp);
  byId('help').addEventListener('click', ({ target, currentTarget }) => {
    if (target === currentTarget) currentTarget.close();  // beside it
  });
}
