"""What scripts/bench measured, as medians."""
import collections
import pathlib
import statistics

COLUMNS = ('wall', 'user', 'system', 'peak', 'bytes')


def lines(path):
    """The fields of each line of a table that exists and is not a comment."""
    path = pathlib.Path(path)
    text = path.read_text() if path.exists() else ''
    return [line.split('\t') for line in text.splitlines() if line and not line.startswith('#')]


class Measured:
    """The results in a folder: by book and tool, for each round its median."""

    def __init__(self, folder):
        folder = pathlib.Path(folder)
        runs = collections.defaultdict(lambda: collections.defaultdict(list))
        for book, tool, turn, *values in lines(folder / 'results.tsv'):
            runs[book, tool][turn].append(dict(zip(COLUMNS, map(float, values))))
        self.rounds = {key: {turn: self._median(of) for turn, of in turns.items()}
                       for key, turns in runs.items()}
        self.pages = {book: (int(pages), int(size))
                      for book, pages, size in lines(folder / 'books.tsv')}

    @staticmethod
    def _median(runs):
        for run in runs:
            run['cpu'] = run['user'] + run['system']
            run['peak_mb'] = run['peak'] / 1024
        return {figure: statistics.median(run[figure] for run in runs) for run in runs[:1]
                for figure in run}

    def books(self):
        return list(dict.fromkeys(book for book, _ in self.rounds))

    def tools(self, book):
        return [tool for of, tool in self.rounds if of == book]

    def figure(self, book, tool, figure):
        """The median over the rounds, None if it was not measured. Milliseconds, MB or bytes."""
        rounds = self.rounds.get((book, tool))
        return rounds and statistics.median(run[figure] for run in rounds.values())

    def ratio(self, book, tool, figure, reference):
        """The median of the ratios to what was measured in the same round."""
        rounds, others = self.rounds.get((book, tool), {}), self.rounds.get((book, reference), {})
        ratios = [run[figure] / others[turn][figure] for turn, run in rounds.items()
                  if turn in others and others[turn][figure] > 0]
        return statistics.median(ratios) if ratios else None
