# SPDX-License-Identifier: Apache-2.0
"""A product with its page, and a Chromium that uses it."""
import collections
import http.client
import json
import pathlib
import sys
import tempfile
import threading

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

HERE = pathlib.Path(__file__).parent
SOURCE = HERE.parent.parent
sys.path.insert(0, str(SOURCE / "tests/process"))
from product import Product  # noqa: E402  the path is set here

WEB = ["--web", str(SOURCE / "web")]
TIMEOUT_SECONDS = 20
OPTIONS = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-background-networking",
           "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage",
           "--window-size=1280,1000"]


class System:
    """The product of a test: cloud, blaster and devices, local API, service, controller."""

    def __init__(self, binaries):
        self.folder = tempfile.TemporaryDirectory()
        self.product = Product(binaries, self.folder.name)
        self.port = self.product.bring_up(
            *WEB, devices=str(SOURCE / "peers/lpm/devices/living-room.json"))
        for program in self.product.programs.values():
            self.drain(program)
        self.serve()

    def serve(self):
        controller = self.product.start("ProductController", "serve", ORLU_PORTICO_PORT=str(self.port))
        self.product.wait_for(controller, "ready")
        self.drain(controller)

    def start_api(self):
        self.product.start_at_port("PorticoServer", *WEB)
        self.drain(self.product.programs["PorticoServer"])

    @staticmethod
    def drain(program):
        threading.Thread(target=lambda: collections.deque(program.stdout, 0), daemon=True).start()

    def ask(self, method, path, body=None):
        connection = http.client.HTTPConnection("localhost", self.port, timeout=TIMEOUT_SECONDS)
        connection.request(method, path, None if body is None else json.dumps(body),
                           {} if body is None else {"Content-Type": "application/json"})
        return json.loads(connection.getresponse().read())

    def television(self):
        return self.ask("GET", "/living-room/devices")["television"]

    def presses(self):
        """The number of keys that the blaster has sent completely."""
        return (self.product.root / "record").read_text().count('"on": false')

    def end(self):
        self.product.end()
        self.folder.cleanup()


class Page:
    """A browser with the product's page. Counts clicks."""

    def __init__(self, port):
        self.profile = tempfile.TemporaryDirectory()
        options = webdriver.ChromeOptions()
        for option in [*OPTIONS, f"--user-data-dir={self.profile.name}"]:
            options.add_argument(option)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        service = webdriver.chrome.service.Service("/usr/bin/chromedriver")
        self.driver = webdriver.Chrome(service=service, options=options)
        self.address = f"http://localhost:{port}"
        self.clicks = 0

    def open(self, view=""):
        self.driver.get("about:blank")
        self.driver.get(f"{self.address}/#/{view}")

    def until(self, what, condition):
        return WebDriverWait(self.driver, TIMEOUT_SECONDS, 0.05).until(condition, what)

    def find(self, css, text=""):
        """Waits for a visible element with this text and returns the first one."""
        return self.until(f"no {css} with {text!r}", lambda driver: next(
            (each for each in driver.find_elements(By.CSS_SELECTOR, css)
             if each.is_displayed() and text in each.text), None))

    def click(self, css, text=""):
        element = self.find(css, text)
        self.until(f"{css} stays off", lambda _: element.is_enabled())
        element.click()
        self.clicks += 1

    def says(self, text):
        self.find("#status", text)

    def faults(self):
        """The findings of axe on the current page, one line each."""
        self.driver.execute_script((HERE / "node_modules/axe-core/axe.min.js").read_text())
        found = self.driver.execute_async_script(
            "const done = arguments[0]; axe.run().then(r => done(r.violations), e => done([{id: `${e}`, nodes: []}]))")
        return [f"{each['id']}: {[node['html'] for node in each['nodes']]}" for each in found]

    def strangers(self):
        """Requests to other hosts since the last call, and errors of the page."""
        requests = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        hosts = [each["params"]["request"]["url"] for each in requests
                 if each["method"] == "Network.requestWillBeSent"]
        errors = [entry["message"] for entry in self.driver.get_log("browser")
                  if entry["source"] in ("javascript", "security")]
        return errors + [url for url in hosts if url.startswith(("http", "ws")) and not url.startswith(self.address)]

    def end(self):
        self.driver.quit()
        self.profile.cleanup()
