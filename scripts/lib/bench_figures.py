"""Tables of what scripts/bench measured, and the comparison with the goals.

bench_figures.py table FOLDER | tables FOLDER PEERS | check FOLDER GOALS | stages FOLDER
"""
import statistics
import sys

from bench_measured import Measured, lines
from bench_stages import median_stages

# How much worse than its bound a median of some rounds may be: what repeated runs differ by.
TOLERANCE = {'cpu': 0.03, 'peak': 0.03, 'wall': 0.10}
NAMES = {'quorvex-lsm': '`-C -I lsm -a -s en`', 'quorvex-lsm-1': 'the same with `-1`',
         'quorvex-beacon': '`-C -I beacon -a`', 'floor': 'floor', 'bare-floor': 'bare floor',
         'search-lsm': '`quorvex-search`, lsm', 'search-beacon': '`quorvex-search`, beacon',
         'qhelpgenerator': 'qhelpgenerator, no full text yet'}
COMPARED = ('python3', 'postgresql', 'cppreference', 'openjdk')


def table(rows):
    header, *rest = rows
    print('| ' + ' | '.join(header) + ' |')
    print('|' + '---|' + '---:|' * (len(header) - 1))
    for row in rest:
        print('| ' + ' | '.join(row) + ' |')
    print()


def number(value, form):
    return '-' if value is None else format(value, form)


def milliseconds(value):
    if value is None:
        return '-'
    return f'{value / 1000:.2f} s' if value >= 1000 else f'{value:.{0 if value >= 100 else 1}f} ms'


def is_short(tool):
    return tool.startswith(('search', 'list', 'library', 'start'))


def everything(measured):
    rows = [('book, tool', 'wall', 'CPU', 'peak MB', 'MB written', 'CPU / floor', 'wall / start')]
    for book, tool in measured.rounds:
        def figure(name, key=(book, tool)):
            return measured.figure(*key, name)
        rows.append((f'{book} {tool}', milliseconds(figure('wall')), milliseconds(figure('cpu')),
                     f'{figure("peak_mb"):.1f}', f'{figure("bytes") / 1e6:.2f}',
                     *(number(None if is_short(tool) == (reference == 'floor') else
                              measured.ratio(book, tool, of, reference), '.2f')
                       for of, reference in (('cpu', 'floor'), ('wall', 'start')))))
    table(rows)


def title(measured, book):
    if book.isdigit():
        return f'{int(book):,} pages'
    pages = measured.pages.get(book)
    return f'{book} ({pages[0]:,} pages)' if pages else book


def peers_of(path):
    """{tool: {book: (wall s, CPU s, peak MB, MB written)}} of other days."""
    peers = {}
    for _, book, tool, *values in lines(path):
        peers.setdefault(tool, {})[book] = tuple(map(float, values))
    return peers


def costs(values):
    wall, cpu, peak, written = values
    return f'{wall:.2f} / {cpu:.2f} / {peak:.0f} / {f"{written:.1f}" if written else "-"}'


def measured_costs(measured, book, tool):
    if (book, tool) not in measured.rounds:
        return None
    wall, cpu, peak, written = (measured.figure(book, tool, figure)
                                for figure in ('wall', 'cpu', 'peak_mb', 'bytes'))
    return (wall / 1e3, cpu / 1e3, peak, written / 1e6)


def whole_runs(measured, peers):
    books = [book for book in COMPARED if book in measured.books()]
    ours = ['floor', 'bare-floor', 'quorvex-lsm', 'quorvex-lsm-1', 'quorvex-beacon']
    others = [tool for tool in peers if tool not in ours]
    rows = [['', *(title(measured, book) for book in books)]]
    for tool in ours + others:
        values = [measured_costs(measured, book, tool) for book in books]
        if tool in others and None in values:
            values = [peers[tool].get(book) for book in books]
        rows.append([NAMES.get(tool, tool), *(costs(of) if of else '-' for of in values)])
    table(rows)


def ratios(measured):
    ours = ('quorvex-lsm', 'quorvex-lsm-1', 'quorvex-beacon')
    rows = [['CPU / floor', *(NAMES[tool] for tool in (*ours, 'bare-floor')),
             'peak MB, lsm', 'peak MB, beacon', 'wall, `-1` / all threads']]
    for book in measured.books():
        if (book, 'floor') in measured.rounds:
            rows.append([title(measured, book),
                         *(number(measured.ratio(book, tool, 'cpu', 'floor'), '.2f')
                           for tool in (*ours, 'bare-floor')),
                         *(number(measured.figure(book, tool, 'peak_mb'), '.0f')
                           for tool in (ours[0], ours[2])),
                         number(measured.ratio(book, ours[1], 'wall', ours[0]), '.2f')])
    table(rows)


def questions(measured):
    columns = ('search-lsm', 'search-beacon', 'list-F', 'list-A', 'list-M', 'list-S')
    rows = [['', *(NAMES.get(tool, f'`quorvex -{tool[5:]}`') for tool in columns), 'library', 'start']]
    for book in measured.books():
        if (book, 'search-lsm') not in measured.rounds:
            continue
        cells = []
        for tool in columns:
            of = {name: measured.figure(book, tool, name) for name in ('wall', 'cpu', 'peak_mb')}
            cells.append('-' if of['wall'] is None else
                         f'{of["wall"]:.1f} / {of["cpu"]:.1f} / {of["peak_mb"]:.1f}')
        medians = [number(measured.figure(book, tool, 'cpu'), '.2f')
                   for tool in ('library', 'library-99')]
        rows.append([title(measured, book), *cells, ' / '.join(medians),
                     number(measured.figure(book, 'start', 'wall'), '.1f')])
    table(rows)


def large_books(measured):
    rows = [['', 'wall s', 'CPU s', 'peak MB', 'MB written']]
    for book in filter(str.isdigit, measured.books()):
        costs = measured_costs(measured, book, 'quorvex-lsm')
        if costs:
            rows.append([f'{int(book):,} pages', *(f'{value:.1f}' for value in costs)])
    if rows[1:]:
        table(rows)


def stages(measured, folder):
    by_book = median_stages(f'{folder}/stages.tsv')
    books = list(by_book)
    if not books:
        return
    rows = [['percent of the processor time', *books]]
    for stage in next(iter(by_book.values())):
        rows.append([stage, *(f'{100 * by_book[book][stage] / sum(by_book[book].values()):.0f}'
                              for book in books)])
    table(rows)
    runs = {}
    for book, *values in lines(f'{folder}/threads.tsv'):
        runs.setdefault(book, []).append(tuple(map(float, values)))
    rows = [['', 'wall s', 'CPU s', 'one thread alone, s', 'percent', 'on 8 processors', 'on 16']]
    for book, of in runs.items():
        wall, cpu, alone = (statistics.median(column) for column in zip(*of))
        faster = [cpu / (alone + (cpu - alone) / processors) for processors in (8, 16)]
        rows.append([book, f'{wall:.2f}', f'{cpu:.2f}', f'{alone:.2f}', f'{100 * alone / cpu:.0f}',
                     *(f'{times:.1f} times as fast' for times in faster)])
    table(rows)


def check(measured, goals):
    worse = 0
    for book, tool, figure, reference, bound in lines(goals):
        if book not in measured.books():
            continue
        if reference == '-':
            value = measured.figure(book, tool, 'peak_mb' if figure == 'peak' else figure)
        else:
            value = measured.ratio(book, tool, figure, reference)
        what = f'{book}: {figure} of {tool}' + ('' if reference == '-' else f' / {reference}')
        if value is None:
            print(f'not measured: {what}')
            worse += 1
        elif value > float(bound) * (1 + TOLERANCE[figure]):
            print(f'worse than its bound: {what}: {value:.2f}, bound {bound}')
            worse += 1
        else:
            print(f'fine: {what}: {value:.2f}, bound {bound}')
    return 1 if worse else 0


def main(mode, folder, further=None):
    measured = Measured(folder)
    if mode == 'check':
        return check(measured, further)
    if mode == 'table':
        everything(measured)
    elif mode == 'tables':
        ratios(measured)
        whole_runs(measured, peers_of(further))
    if mode in ('stages', 'tables'):
        stages(measured, folder)
    if mode == 'tables':
        questions(measured)
        large_books(measured)
    return 0


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:]))
