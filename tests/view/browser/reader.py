"""A reader at a browser, the program that serves the book, and a host outside of it."""
import http.server
import os
import subprocess
import threading

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.support.ui import WebDriverWait

PATIENCE = 30  # seconds; the program may run with sanitizers on a busy machine


class Program:
    """quorvex-view with one book."""

    def __init__(self, path, *arguments):
        self._process = subprocess.Popen(
            [path, '--no-browser', *arguments], stdout=subprocess.PIPE, text=True)
        self.address = self._process.stdout.readline().strip()

    def end(self):
        self._process.terminate()
        self._process.stdout.close()
        return self._process.wait(PATIENCE)


class Outside(http.server.ThreadingHTTPServer):
    """A host that is not the book's; notes who connects and what is sent."""

    def __init__(self):
        super().__init__(('127.0.0.1', 0), _OutsideHandler)
        self.connections = 0
        self.requests = []
        self.address = f'http://127.0.0.1:{self.server_port}/'
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def get_request(self):
        self.connections += 1
        return super().get_request()

    def end(self):
        self.shutdown()
        self.server_close()


class _OutsideHandler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.server.requests.append((self.path, self.headers))
        self.send_response(200)
        self.send_header('Content-Length', '0')
        self.end_headers()

    def log_message(self, *_):
        pass


class Reader:
    """What a reader does and sees. Nothing sleeps: what is to come is waited for."""

    def __init__(self, browser, driver):
        options = webdriver.ChromeOptions()
        options.binary_location = browser
        for argument in ('headless=new', 'window-size=1400,900', 'disable-dev-shm-usage'):
            options.add_argument('--' + argument)
        if os.geteuid() == 0:
            options.add_argument('--no-sandbox')
        self.driver = webdriver.Chrome(service=Service(driver), options=options)

    def open(self, address):
        self.driver.get('about:blank')
        self.driver.get(address)

    def until(self, condition, what):
        return WebDriverWait(self.driver, PATIENCE, 0.05).until(
            lambda _: condition(), f'waited in vain for {what}')

    def script(self, code, *arguments):
        return self.driver.execute_script('return ' + code, *arguments)

    def in_page(self, code, *arguments):
        """Runs a script in the book's page."""
        self.driver.switch_to.frame('v-frame')
        try:
            return self.script(code, *arguments)
        finally:
            self.driver.switch_to.default_content()

    def until_page(self, code, *arguments):
        self.until(lambda: self.in_page(code, *arguments), code)

    def click_in_page(self, selector):
        self.driver.switch_to.frame('v-frame')
        self.driver.find_element('css selector', selector).click()
        self.driver.switch_to.default_content()

    def press(self, *keys):
        ActionChains(self.driver).send_keys(*keys).perform()

    def text(self, name):
        """What is seen of it."""
        return self.script("((seen) => seen.checkVisibility() ? seen.innerText : '')"
                           "(document.getElementById(arguments[0]))", 'v-' + name)

    def focus(self):
        return self.script('document.activeElement.id').removeprefix('v-')

    def until_text(self, name, part):
        self.until(lambda: part in self.text(name), f'"{part}" in {name}')

    def until_focus(self, name):
        self.until(lambda: self.focus() == name, 'the focus on ' + name)

    def until_address(self, part):
        self.until(lambda: part in self.driver.current_url, f'"{part}" in the address')

    def until_title(self, title):
        self.until(lambda: self.driver.title.startswith(title), f'the page "{title}"')

    def until_hit(self, title):
        code = "document.querySelector('.hit-title')?.textContent ?? ''"
        self.until(lambda: title in self.script(code), f'"{title}" as first answer')
