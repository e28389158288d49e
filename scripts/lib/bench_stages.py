"""Groups the samples of a run by what the program was doing.

bench_stages.py PERF-DATA FOLDER-OF-ARCHIVES BOOK: prints book, stage and milliseconds, by tabs.
"""
import collections
import pathlib
import re
import statistics
import subprocess
import sys

from bench_measured import lines

# By library, or by folder and object file of the program; the first that fits.
STAGES = (
    ('parsing', r'libxml2|^extract/page_parser'),
    ("the parser's tree", r'^extract/arena_page_tree'),
    ('queries, records', r'^(extract|sources|generate)/'),
    ('words', r'^text/|libicu|libstemmer|^common/unicode'),
    ('full-text index', r'^fulltext/'),
    ('semantic index', r'^semantic/'),
    ('file, compression', r'^(indexfile|cli|container)/|libzstd'),
    ('allocation', r'libmimalloc'),
    ('copying, comparing', r'libc\.so'),
    ('system', r'^\[kernel'),
    ('other', r''),
)


def archived_symbols(folder):
    """{mangled name: folder/object} of the program's own functions, if only one file has it."""
    places = collections.defaultdict(set)
    for archive in pathlib.Path(folder).rglob('*.a'):
        name = archive.stem.removeprefix('libquorvex_')
        listed = subprocess.run(['nm', '--defined-only', archive], capture_output=True, text=True,
                                check=True).stdout
        place = name
        for line in listed.splitlines():
            if line.endswith('.o:'):
                place = f'{name}/{line}'
            elif match := re.match(r'[0-9a-f]+ [tTwWuV] (\S+)$', line):
                places[plain(match[1])].add(place)
    # A template that several files of one folder have is the folder's.
    return {symbol: min(of) for symbol, of in places.items()
            if len({place.split('/')[0] for place in of}) == 1}


def plain(symbol):
    """Without what the compiler appends to parts and variants of a function."""
    return re.sub(r'\.(isra|constprop|part|cold|lto_priv|clone)\b.*', '', symbol)


def main(data, folder, book):
    places = archived_symbols(folder)
    report = subprocess.run(
        ['perf', 'report', '-i', data, '--no-demangle', '--stdio', '-F', 'period,dso,symbol',
         '-t', '\t', '-w', '0,0,0'], capture_output=True, text=True, check=True).stdout
    spent = dict.fromkeys((stage for stage, _ in STAGES), 0)
    for line in report.splitlines():
        fields = [field.strip() for field in line.split('\t')]
        if len(fields) != 3 or not fields[0].isdigit():
            continue
        library, symbol = fields[1], re.sub(r'^\[.\] ', '', fields[2])
        place = places.get(plain(symbol), '') if library.startswith('quorvex') else library
        stage = next(stage for stage, fits in STAGES if re.search(fits, place))
        spent[stage] += int(fields[0]) / 1e6
    for stage, time in spent.items():
        print(f'{book}\t{stage}\t{time:.1f}')


def median_stages(path):
    """{book: {stage: milliseconds}} of what was written over several rounds."""
    runs = collections.defaultdict(lambda: collections.defaultdict(list))
    for book, stage, time in lines(path):
        runs[book][stage].append(float(time))
    return {book: {stage: statistics.median(times) for stage, times in stages.items()}
            for book, stages in runs.items()}


if __name__ == '__main__':
    main(*sys.argv[1:])
