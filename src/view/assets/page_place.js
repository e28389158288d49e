// What is read in a page stays in its place when the width changes. Browsers see to that only
// while the page's styles do not change with it.
(() => {
  'use strict';
  const { document, Range, setTimeout } = window;
  const caretAt = document.caretPositionFromPoint?.bind(document);
  if (!caretAt) return;
  let reading = null;  // the line that is read, and where it stands
  let timer = 0;

  const note = () => {
    const { innerWidth, innerHeight, scrollY } = window;
    timer = 0;
    reading = null;
    // The first line of text that is not right at the top, where pages keep their menus.
    for (let y = innerHeight / 6; !reading && y < innerHeight; y += 20) {
      const { offsetNode: node, offset } = caretAt(innerWidth / 2, y) ?? {};
      if (node?.nodeType !== 3) continue;
      const line = new Range();
      line.setStart(node, offset);
      line.setEnd(node, node.length);
      const { top, height } = line.getBoundingClientRect();
      if (height > 0) reading = { line, top, scrollY };
    }
  };
  const restore = () => {
    const { innerHeight, scrollY } = window;
    const isAtEnd = scrollY + innerHeight > document.documentElement.scrollHeight - 1;
    // Else the page has been scrolled since, or the browser has seen to it.
    const isLeft = scrollY > 0 && (scrollY === reading?.scrollY || isAtEnd);
    if (reading && isLeft) scrollBy(0, reading.line.getBoundingClientRect().top - reading.top);
    note();
  };
  addEventListener('scroll', () => { timer ||= setTimeout(note, 150); }, { passive: true });
  addEventListener('load', note);
  addEventListener('resize', restore);
})();
