"""What people do with a book in the browser. Arguments: quorvex-view, browser, its driver."""
import pathlib
import shutil
import sys
import tempfile
import unittest

from selenium.webdriver.common.keys import Keys

from reader import Outside, Program, Reader

HERE = pathlib.Path(__file__).parent
FILLER = '<div style="height: 1500px">…</div>'
PAGES = {
    'index': ('Garden', '<p>What grows in the garden and how to care for it.</p>'),
    'watering': ('Watering', '<style>@media (max-width: 1000px) { body { padding: 2em; } '
                 'style + p + div { padding-top: 900px; } }</style>'
                 '<p>Young plants are thirsty.</p>' + FILLER +
                 '<h2 id="drought">Drought</h2><p>In a drought, mulch keeps the moisture. '
                 'Renew the <b>mul</b>ch each month.</p><div class="note"><h3>Note</h3></div>' + FILLER +
                 '<p>Straw shades the soil and feeds it.</p>' + FILLER),
    'pruning': ('Pruning', '<p>Prune apple trees in winter, when the sap rests.</p>'),
    'compost': ('Compost', '<p>Leaves, peelings and eggshells become compost within a year.</p>'),
    'tools': ('Tools', '<dl><dt id="sharpen">sharpen</dt><dd>Grinds blades.</dd></dl>'),
    'far': ('Elsewhere', '<p><a id="far" href="@outside@known">Nursery catalogue</a></p>'),
    'moved': ('Moved', '<meta http-equiv="refresh" content="0; url=@outside@moved">'),
}


def write_book(folder, outside):
    folder.mkdir()
    names = list(PAGES)
    for at, (name, (title, body)) in enumerate(PAGES.items()):
        neighbours = ''.join(
            f'<link rel="{rel}" href="{names[other]}.html">'
            for rel, other in (('prev', at - 1), ('next', at + 1)) if 0 <= other < len(names))
        page = f'<!DOCTYPE html><title>{title}</title>{neighbours}<h1>{title}</h1>{body}'
        (folder / f'{name}.html').write_text(page.replace('@outside@', outside))
    hostile = (HERE / 'hostile.html').read_text()
    (folder / 'hostile.html').write_text(hostile.replace('@outside@', outside))


class Stories(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        cls.reader = Reader(*BROWSER)
        cls.addClassCleanup(cls.reader.driver.quit)

    def setUp(self):
        self.outside = Outside()
        self.addCleanup(self.outside.end)
        self.book = pathlib.Path(tempfile.mkdtemp(dir=self.folder)) / 'book'
        write_book(self.book, self.outside.address)
        self.start(self.book)
        self.addCleanup(self.end)

    def start(self, book):
        self.program = Program(PROGRAM, str(book))
        self.address = self.program.address

    def end(self):
        self.assertEqual(0, self.program.end())

    def begin_with(self, question):
        self.reader.open(self.address)
        self.reader.until_focus('field')
        self.reader.press(question)

    def test_asks_and_reads_the_answer_at_its_place(self):
        reader = self.reader
        self.begin_with('mulch drought')
        reader.until_hit('Watering')
        reader.press(Keys.ENTER)
        reader.until_address('page=/watering.html#drought')
        reader.until_text('marks-count', '4 matches')
        reader.until_page("document.querySelector('mark.quorvex-mark').textContent.length > 0")
        for width, key in (('< 1000', 't'), ('> 1000', 't'), ('< 1000', '')):
            reader.until_page(f"innerWidth {width} && scrollY > 500 && "
                              "(({ top }) => top > -2 && top < innerHeight)"
                              "(document.getElementById('drought').getBoundingClientRect())")
            reader.press(key)
        self.assertNotIn('quorvex-question', reader.in_page('location.href'))
        self.assertEqual('Watering\nDrought', reader.text('headings'))

    def test_shows_the_line_that_answered(self):
        reader = self.reader
        self.begin_with('straw shades')
        reader.until_title('Garden')
        # Pages speak until another one is there.
        reader.in_page("setInterval(() => parent.postMessage({ quorvex: 'page', marks: 0, mark: 0, "
                       "path: '/index.html', fragment: '', title: 'Garden', headings: [] }, '*'))")
        for page in ('Garden', 'Watering'):  # in another page, then in the one that is open
            reader.until_title(page)
            reader.until_hit('Watering')
            reader.in_page('scrollTo(0, 0)')
            reader.driver.find_element('css selector', '.hits a').click()
            reader.until_page("(({ top }) => top > 80 && top < innerHeight)"
                              "(document.querySelector('.quorvex-current')"
                              "?.getBoundingClientRect() ?? {})")
        reader.until_text('marks-count', '1 of 2')

    def test_helps_when_the_words_are_not_found(self):
        for question, note, hit in (('compsot', 'compost', 'Compost'),
                                    ('xqzvwk', 'Check the spelling', '')):
            with self.subTest(question):
                self.reader.open(f'{self.address}?q={question}')
                self.reader.until_text('note', note)
                self.reader.until_hit(hit)

    def test_keeps_what_the_beginning_of_a_word_finds(self):
        reader = self.reader
        for begun, note, hit in (('compo', '', 'Compost'), ('xqzvwk', 'Check the spelling', '')):
            with self.subTest(begun):
                self.begin_with(begun)
                reader.until(lambda: reader.script(
                    "performance.getEntriesByType('resource').some("
                    "({ name }) => name.endsWith(`search?q=${arguments[0]}&count=20`))", begun),
                    'the answer to the whole word')
                reader.until_text('note', note)
                reader.until_hit(hit)
                self.assertNotIn('Showing', reader.text('note'))

    def test_needs_no_mouse(self):
        reader = self.reader
        reader.open(self.address + '?q=mulch&page=/index.html')
        reader.until_hit('Watering')
        reader.until_focus('frame')
        reader.until_title('Garden')
        reader.press('/')
        reader.until_focus('field')
        reader.press(Keys.ARROW_DOWN, Keys.ENTER)
        reader.until_text('marks-count', '1 of 2 matches')
        reader.until_focus('frame')
        for key, name, words in (('n', 'marks-count', '2 of 2'), ('N', 'marks-count', '1 of 2'),
                                 ('f', 'find-count', ''), ('moist', 'find-count', '1 of 1'),
                                 ('urex', 'find-count', 'not found')):
            reader.press(key)
            if name == 'find-count' and not words:
                reader.until_focus('find-field')
            reader.until_text(name, words)
        reader.press(Keys.ESCAPE)
        reader.until_focus('frame')
        reader.press('?')
        reader.until(lambda: reader.text('help'), 'the list of keys')
        reader.press(Keys.ESCAPE)
        reader.until(lambda: not reader.text('help'), 'the end of the list')
        for key, page in ((']', 'pruning'), ('[', 'watering')):
            reader.press(key)
            reader.until_address(f'page=/{page}.html')
            reader.until_title(page.capitalize())

    def test_keeps_the_place_in_history_and_over_a_restart(self):
        reader, driver = self.reader, self.reader.driver
        self.begin_with('apple sap eggshells')
        reader.until_hit('Pruning')
        reader.press(Keys.ENTER)
        reader.until_title('Pruning')
        reader.until_focus('frame')
        reader.press('j')
        reader.until_title('Compost')
        # Reloaded, the interface has had no key: less of what it does is let through.
        for move, title in ((driver.refresh, 'Compost'), (driver.back, 'Pruning'),
                            (driver.forward, 'Compost')):
            move()
            reader.until_title(title)
            reader.until_address(f'page=/{title.lower()}.html')
            reader.until_text('marks-count', 'match')
            reader.until_focus('frame')
        bookmark = driver.current_url
        self.end()
        self.start(self.book)
        reader.open(bookmark)
        reader.until_title('Compost')
        reader.until_hit('Pruning')

    def test_tells_of_a_change_while_the_program_was_away(self):
        reader = self.reader
        reader.open(self.address + '?q=mulch')
        reader.until_hit('Watering')
        self.end()
        shutil.rmtree(pathlib.Path.home() / '.cache/quorvex')
        (self.book / 'bark.html').write_text('<title>Bark mulch</title><p>Mulch of bark.')
        self.start(self.book)
        reader.until(lambda: reader.script("document.dispatchEvent(new Event('visibilitychange'))")
                     and 'The book has changed' in reader.text('state-text'), 'the news')
        reader.until_hit('Bark mulch')

    def test_keeps_a_hostile_page_in_its_frame(self):
        reader = self.reader
        reader.open(self.address + '?page=/hostile.html')
        reader.until_page('window.outcome')
        self.assertEqual({'reached': [], 'kept': 'here'}, reader.in_page('window.outcome'))
        reader.until_title('<img')
        self.assertIn('<img src=x onerror=alert(2)>', reader.text('headings'))
        self.assertEqual([], reader.script(
            "[...document.querySelectorAll('img, script:not([src]), a[href^=javascript]')]"
            ".map((made) => made.outerHTML)"))
        self.assertEqual(1, len(reader.driver.window_handles))
        # What a page leads its own frame to, does not come; the page does again.
        reader.in_page("setTimeout((address) => { location.href = address; }, 0, arguments[0])",
                       self.outside.address)
        reader.until_text('outside-address', self.outside.address)
        reader.until_page('window.outcome')
        # If it does so each time, it is shown without its scripts.
        reader.open(self.address + '?page=/moved.html')
        reader.until_text('outside-address', self.outside.address)
        reader.until(lambda: 'scripts' not in reader.script(
            "document.getElementById('v-frame').sandbox.value"), 'a page without scripts')
        reader.until_page("document.querySelector('h1')?.textContent === 'Moved'")
        reader.press('/', 'eggshells')
        reader.until_hit('Compost')
        reader.press(Keys.ENTER)
        reader.until_title('Compost')
        self.assertEqual((0, []), (self.outside.connections, self.outside.requests))

    def test_opens_links_to_other_hosts_apart_and_tells_them_nothing(self):
        reader, driver = self.reader, self.reader.driver
        reader.open(self.address + '?page=/far.html')
        reader.until_title('Elsewhere')
        reader.click_in_page('#far')
        reader.until(lambda: len(driver.window_handles) == 2, 'another tab')
        reader.until(lambda: self.outside.requests, 'a request')
        path, headers = self.outside.requests[0]
        self.assertEqual(('/known', None, None), (path, headers['Referer'], headers['Origin']))
        here, there = driver.window_handles
        driver.switch_to.window(there)
        self.assertIsNone(reader.script('window.opener'))
        driver.close()
        driver.switch_to.window(here)
        # An address that a script has made may tell what it has read: the reader decides.
        reader.in_page("document.getElementById('far').href += '?what-it-read'")
        reader.click_in_page('#far')
        reader.until_text('outside-address', 'what-it-read')
        reader.press(Keys.ESCAPE)
        reader.until_focus('frame')
        self.assertEqual(1, len(driver.window_handles))

    def test_answers_come_by_themselves_when_the_index_is_there(self):
        reader = self.reader
        self.end()
        for number in range(600):
            (self.book / f'plant{number}.html').write_text(
                f'<title>Plant {number}</title><p>Plant {number} grows to {number} inches.</p>')
        self.start(self.book)
        reader.open(self.address + '?q=mulch&page=/pruning.html')
        reader.script('window.isFirstLoad = true')
        reader.until_page("document.title === 'Pruning'")
        reader.until_hit('Watering')
        self.assertTrue(reader.script('window.isFirstLoad'))


if __name__ == '__main__':
    PROGRAM, *BROWSER = sys.argv[1:4]
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2)
