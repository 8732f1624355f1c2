"""A headless browser that looks at pages of files, and tells what they did wrong."""

import base64
import contextlib
import json
import time
from urllib.parse import quote

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

OPTIONS = ["--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--force-color-profile=srgb",
           "--font-render-hinting=none", "--disable-background-networking", "--lang=en"]


@contextlib.contextmanager
def browser():
    options = webdriver.ChromeOptions()
    for option in OPTIONS:
        options.add_argument(option)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
    try:
        driver.execute_cdp_cmd("Network.enable", {})
        yield Page(driver)
    finally:
        driver.quit()


class Page:
    def __init__(self, driver):
        self.driver = driver

    def look(self, width, height, scheme="light", scale=1):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": scale, "mobile": False})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.settle()

    def open(self, path):
        self.driver.get("file://" + quote(str(path)))
        self.settle()

    def settle(self):
        """Waits until what is due has been drawn."""
        self.driver.execute_async_script(
            "const done = arguments[0]; requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done, 0)));")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0])?.textContent ?? null", selector)

    def texts(self, selector):
        return self.run("return Array.from(document.querySelectorAll(arguments[0]), (e) => e.textContent)", selector)

    def press(self, selector, *keys):
        """Keys on an element that has, or gets, the focus."""
        self.run("document.querySelector(arguments[0]).focus()", selector)
        for key in keys:
            self.driver.switch_to.active_element.send_keys(key)
            self.settle()

    def type(self, selector, text):
        self.run("""const box = document.querySelector(arguments[0]); box.focus(); box.value = arguments[1];
            box.dispatchEvent(new Event("input", {bubbles: true}));
            box.dispatchEvent(new Event("change", {bubbles: true}));""", selector, text)
        self.settle()

    def click(self, selector):
        self.run("document.querySelector(arguments[0]).click()", selector)
        self.settle()

    def picture(self, path):
        image = self.driver.execute_cdp_cmd("Page.captureScreenshot", {"format": "png"})
        with open(path, "wb") as file:
            file.write(base64.b64decode(image["data"]))

    def pdf(self):
        return base64.b64decode(self.driver.execute_cdp_cmd("Page.printToPDF", {"printBackground": False})["data"])

    def complaints(self):
        """What the console said since the last call."""
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requests(self):
        """Addresses that were asked for since the last call; files and inline data are no network."""
        asked = []
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                asked.append(message["params"]["request"]["url"])
        return asked

    def wait(self, script, seconds=20):
        """True once the script's expression holds."""
        end = time.monotonic() + seconds
        while not self.run(f"return Boolean({script})"):
            if time.monotonic() > end:
                return False
            time.sleep(0.02)
        return True
