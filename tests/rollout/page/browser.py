#!/usr/bin/python3
"""A headless Chromium for one page at a time.

  tests/rollout/page/browser.py PAGE PICTURE.png DIR   takes a picture, with DIR for its own files
"""

import base64
import os
import pathlib
import sys

from selenium import webdriver
from selenium.webdriver.chrome.service import Service


def start(place):
    """What it writes stays below `place`, also what should go to /tmp."""
    os.environ.update(HOME=str(place), TMPDIR=str(place))
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for argument in ("--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     f"--user-data-dir={place}/profile"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def open_page(driver, page, width, height=800, scheme="light", scale=1):
    """A window cannot be as narrow as a phone, so the device is emulated."""
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": width, "height": height, "deviceScaleFactor": scale, "mobile": width < 600})
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
        "features": [{"name": "prefers-color-scheme", "value": scheme}]})
    driver.get(pathlib.Path(page).resolve().as_uri())


def take_picture(page, picture, place):
    """The top of the page, fine enough for a README that shows it smaller."""
    width, height = 1180, 1050
    driver = start(pathlib.Path(place).resolve())
    try:
        open_page(driver, page, width, scheme="light", scale=1.25)
        shot = driver.execute_cdp_cmd("Page.captureScreenshot", {
            "captureBeyondViewport": True,
            "clip": {"x": 0, "y": 0, "width": width, "height": height, "scale": 1}})
        pathlib.Path(picture).write_bytes(base64.b64decode(shot["data"]))
    finally:
        driver.quit()


if __name__ == "__main__":
    take_picture(*sys.argv[1:4])
