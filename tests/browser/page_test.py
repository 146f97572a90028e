#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Clicks through the page of a product.

    page_test.py BIN [IMAGES]     where BIN holds the programs; screenshots go to the folder IMAGES
"""
import pathlib
import sys
import unittest

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.expected_conditions import staleness_of

from browser import Page, System

BINARIES = sys.argv[1]
IMAGES = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else None
SOURCE = {"sourceName": "Aurora Television", "sourceAccountName": "TV", "status": "READY",
          "details": {"ciCode": "T2051", "deviceType": "TV"}}


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.system = System(BINARIES)
        cls.addClassCleanup(cls.system.end)
        cls.page = Page(cls.system.port)
        cls.addClassCleanup(cls.page.end)

    def tearDown(self):
        self.assertEqual(self.page.strangers(), [])

    def look(self, name):
        """Fails on a finding of axe. Takes a screenshot if a folder was given."""
        self.assertEqual(self.page.faults(), [], name)
        if IMAGES:
            self.page.driver.save_screenshot(str(IMAGES / f"{name}.png"))

    def until(self, what, condition):
        return self.page.until(what, lambda _: condition())

    def remote(self):
        self.system.ask("PUT", "/system/sources", {"sources": [SOURCE]})
        self.page.open("remote/T2051")
        self.page.says("Connected")
        return self.page.find("[data-key=volume_up]")

    def test_1_sets_a_television_up_by_clicking(self):
        page, system = self.page, self.system
        page.open()
        page.says("Connected")
        self.look("home")
        page.click("a", "Television")
        page.find(".brands button", "Aurora")
        self.look("brands")
        page.click(".brands button", "Aurora")
        before, tried = system.television(), 0
        page.click("button", "Send the first key")
        while page.find(".yes, .remote").get_attribute("class") != "remote":
            tried += 1
            self.until("no light", lambda: system.presses() == tried)
            after, question = system.television(), page.find(".yes")
            if tried == 2:
                self.look("question")
            page.click(".yes" if after != before else ".no")
            before = after
            page.until("the question stays", staleness_of(question))
        self.assertLessEqual(page.clicks, 3 + tried)
        self.assertEqual(system.ask("GET", "/system/sources")["sources"], [SOURCE])

    def test_2_sets_a_box_up_by_brand_and_model(self):
        page = self.page
        page.open()
        page.click("a", "Set-top box")
        page.find("#filter").send_keys("skyl")
        self.until("not filtered", lambda: [each.text for each in page.driver.find_elements(
            By.CSS_SELECTOR, ".brands button")] == ["Skylark"])
        page.click("a", "I know brand and model")
        page.find("#brand").send_keys("Skylark")
        page.find("#model").send_keys("nonsense", Keys.ENTER)
        page.find(".error", "Nothing is known")
        self.look("model")
        page.find("#model").clear()
        page.find("#model").send_keys("SK-2", Keys.ENTER)
        page.find(".remote")
        self.assertIn("/remote/S0456", page.driver.current_url)

    def test_3_holds_keys_by_pointer_and_keyboard_and_lets_go_when_it_dies(self):
        page, volume = self.page, lambda: self.system.television()["volume"]
        key = self.remote()
        if not self.system.television()["power"]:
            page.click("[data-key=tv_power]")
            self.until("it stays off", lambda: self.system.television()["power"])
        for press, release in ((lambda on: on.click_and_hold(key), lambda on: on.release()),
                               (lambda on: on.key_down(Keys.SPACE), lambda on: on.key_up(Keys.SPACE))):
            first = volume()
            page.driver.execute_script("arguments[0].focus()", key)
            press(ActionChains(page.driver)).perform()
            self.until("the volume stays", lambda: volume() >= first + 3)
            release(ActionChains(page.driver)).perform()
            page.find(".volume", f"Volume {self.still(volume)}")
        self.look("remote")
        key = page.find("[data-key=channel_preset_up]")
        ActionChains(page.driver).click_and_hold(key).perform()
        self.until("no light", lambda: self.system.television()["channel"] > 1)
        page.driver.get("about:blank")
        self.still(lambda: self.system.television()["channel"])

    def still(self, value):
        """Waits until the value no longer changes, and returns it."""
        seen = []
        self.until("it goes on and on", lambda: seen.append(value()) or seen[-12:] == [seen[-1]] * 12)
        return seen[-1]

    def test_4_says_what_is_missing_and_recovers(self):
        page, product = self.page, self.system.product
        self.remote()
        self.system.ask("PUT", "/network/status", {"isPrimaryUp": False})
        page.says("The cloud is not connected")
        self.look("trouble")
        page.open("brand/DEVICE_TYPE_TV")
        page.find(".error", "It needs the cloud")
        self.system.ask("PUT", "/network/status", {"isPrimaryUp": True})
        page.says("Connected")
        page.find(".brands button", "Aurora")
        product.kill("ProductController")
        page.says("controller is away")
        self.system.serve()
        page.says("Connected")
        product.kill("TrellanService")
        page.says("The service has gone")
        self.system.drain(product.start("TrellanService", ORLU_PORTICO_PORT=str(self.system.port)))
        page.says("Connected")
        product.kill("PorticoServer")
        page.says("The product does not answer")
        self.system.start_api()
        page.says("Connected")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], warnings="ignore")
