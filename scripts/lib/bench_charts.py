"""Draws the charts of docs/performance.md from what scripts/bench measured.

bench_charts.py FOLDER PEERS TARGET: writes TARGET/stages.svg and TARGET/peers.svg. The same figures
give the same bytes.
"""
import pathlib
import re
import statistics
import sys

import matplotlib

matplotlib.use('svg')
import matplotlib.pyplot as plt  # noqa: E402
from matplotlib import ticker  # noqa: E402

from bench_figures import COMPARED, measured_costs, peers_of  # noqa: E402
from bench_measured import Measured  # noqa: E402
from bench_stages import median_stages  # noqa: E402

# Ink is whatever suits the reader's background, set below. The other colours have the same contrast
# to white and to black: blue for the parser's side, orange for the indexes, grey for the rest, which
# readers who see no red or no green tell apart, too.
INK = '#123456'
BLUES = ('#2f6db3', '#5c93cf', '#8fb6e0')
ORANGES = ('#b35806', '#d9771c', '#f0a35a', '#f7c798')
GREYS = ('#6e6e6e', '#8c8c8c', '#a9a9a9', '#c4c4c4')
STYLE = ('<style>svg{color:#1f2328}'
         '@media(prefers-color-scheme:dark){svg{color:#d1d7e0}}</style>')
PEERS = ('swish-e', 'omindex', 'recollindex', 'pagefind', 'qhelpgenerator', 'zimwriterfs')

plt.rcParams.update({
    'svg.fonttype': 'none', 'svg.hashsalt': 'quorvex', 'font.family': 'sans-serif', 'font.size': 9,
    'text.color': INK, 'axes.edgecolor': INK, 'axes.labelcolor': INK, 'xtick.color': INK,
    'ytick.color': INK, 'axes.spines.top': False, 'axes.spines.right': False})


def save(figure, path):
    figure.savefig(path, transparent=True, metadata={
        'Date': None, 'Creator': None, 'Format': None, 'Type': None})
    plt.close(figure)
    text = path.read_text().replace(INK, 'currentColor')
    text = re.sub(r'<!--.*?-->\s*', '', text, flags=re.S)
    # The family is the reader's, not the one that was installed here.
    text = re.sub(r"font: ([0-9.]+px) [^;\"]*", r'font: \1 sans-serif', text)
    path.write_text(re.sub(r'(<svg [^>]*>)', lambda match: match[1] + STYLE, text, count=1))


def colours(stages):
    """Blue until the words, orange until the file, then grey."""
    words = stages.index('words') if 'words' in stages else 0
    shades = [*BLUES[:words], *ORANGES]
    return (shades + list(GREYS))[:len(stages)]


def text_on(colour):
    red, green, blue = (int(colour[at:at + 2], 16) for at in (1, 3, 5))
    return '#111111' if 0.3 * red + 0.59 * green + 0.11 * blue > 125 else '#fefefe'


def draw_stages(measured, folder, target):
    by_book = {book: stages for book, stages in median_stages(f'{folder}/stages.tsv').items()
               if book in measured.pages}
    if not by_book:
        return
    books, stages = list(by_book), list(next(iter(by_book.values())))
    figure, axes = plt.subplots(figsize=(8.2, 0.9 + 0.42 * len(books)), layout='constrained')
    per_megabyte = {book: {stage: time / (measured.pages[book][1] / 1e6)
                           for stage, time in of.items()} for book, of in by_book.items()}
    longest = max(sum(of.values()) for of in per_megabyte.values())
    begin = dict.fromkeys(books, 0.0)
    for stage, colour in zip(stages, colours(stages)):
        costs = [per_megabyte[book][stage] for book in books]
        axes.barh(books, costs, left=list(begin.values()), color=colour, label=stage, height=0.72)
        for at, (book, cost) in enumerate(zip(books, costs)):
            if cost > 0.022 * longest:
                share = 100 * cost / sum(per_megabyte[book].values())
                axes.text(begin[book] + cost / 2, at, f'{share:.0f}', ha='center', va='center',
                          fontsize=8, color=text_on(colour))
            begin[book] += cost
    axes.invert_yaxis()
    axes.set_xlabel('milliseconds of processor time per MB of pages; numbers in bars: percent')
    axes.spines['left'].set_visible(False)
    axes.tick_params(axis='y', length=0)
    axes.legend(loc='lower left', bbox_to_anchor=(-0.02, 1), ncols=6, frameon=False, fontsize=8,
                handlelength=1, columnspacing=1.2)
    save(figure, target / 'stages.svg')


def draw_peers(measured, peers, target):
    floors = {book: (measured_costs(measured, book, 'bare-floor') or [None])[0]
              for book in COMPARED}
    rows = {}
    for name, tool in (('quorvex -I lsm', 'quorvex-lsm'), ('quorvex -I beacon', 'quorvex-beacon'),
                       *((tool, tool) for tool in PEERS)):
        for book in COMPARED:
            costs, floor = measured_costs(measured, book, tool), floors[book]
            if costs is None and tool in peers:  # compared with the bare parse of that day
                costs, floor = peers[tool].get(book), peers['bare-floor'][book][0]
            if costs and floor and book in measured.pages:
                rows.setdefault(name, []).append(
                    (costs[0] / floor, 100 * costs[3] * 1e6 / measured.pages[book][1], costs[2]))
    if not rows:
        return
    names = list(rows)
    figure, panels = plt.subplots(1, 3, figsize=(8.2, 0.8 + 0.3 * len(names)), sharey=True,
                                  layout='constrained')
    labels = ('wall time / bare parse', 'index, % of the pages', 'peak memory, MB')
    for column, (axes, label) in enumerate(zip(panels, labels)):
        axes.set_xscale('log')
        for at, name in enumerate(names):
            values = [costs[column] for costs in rows[name]]
            colour = ORANGES[1] if name.startswith('quorvex') else GREYS[1]
            middle = statistics.geometric_mean(values)
            axes.plot([min(values), max(values)], [at, at], color=colour, linewidth=2.5, alpha=0.45,
                      solid_capstyle='round')
            axes.plot([middle], [at], 'o', color=colour, markersize=6)
            axes.annotate(f'{middle:.{1 if middle < 20 else 0}f}', (max(values), at), (6, 0),
                          textcoords='offset points', va='center', fontsize=8)
        axes.set_xlabel(label)
        low, high = axes.get_xlim()
        axes.set_xlim(low, high * 1.9)
        steps = (.1, .3, 1, 3, 10, 30, 100, 300, 1000, 3000)
        axes.xaxis.set_major_locator(
            ticker.FixedLocator([step for step in steps if low <= step <= high]))
        axes.xaxis.set_minor_locator(ticker.NullLocator())
        axes.xaxis.set_major_formatter('{x:g}')
        axes.spines['left'].set_visible(False)
        axes.tick_params(axis='y', length=0)
        axes.grid(axis='x', color=GREYS[1], alpha=0.3, linewidth=0.6)
    panels[0].set_yticks(range(len(names)), names)
    panels[0].invert_yaxis()
    save(figure, target / 'peers.svg')


def main(folder, peers, target):
    target = pathlib.Path(target)
    target.mkdir(parents=True, exist_ok=True)
    measured = Measured(folder)
    draw_stages(measured, folder, target)
    draw_peers(measured, peers_of(peers), target)


if __name__ == '__main__':
    main(*sys.argv[1:])
