"""A picture of a report page with an event chosen: page.py PAGE PICTURE"""

import os
import sys

from browser import browser

with browser() as page:
    page.look(1360, 1080)
    page.open(os.path.abspath(sys.argv[1]))
    page.type("#search", "oakfield fault recorded")
    page.press("#grid", "\ue015", "\ue015", "\ue015", "\ue015")
    page.click("#clear")
    page.run("document.activeElement.blur()")
    page.wait("document.querySelectorAll('.grid-row').length > 5")
    page.run("window.scrollTo(0, 0)")
    page.settle()
    page.picture(sys.argv[2])
    wrong = page.complaints()
    if wrong:
        sys.exit(f"the page complains: {wrong}")
