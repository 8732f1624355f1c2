"""What a person does with a report page, done by a browser: report_test.py RUVOCTL FOLDER"""

import os
import pathlib
import re
import subprocess
import sys
import time

import sites
from browser import browser
from checks import check, count_checks, equal

ROWS = "#grid-space .grid-row"


def make_page(ruvoctl, folder, name, make=None, *options, made="2026-11-22 23:30:00"):
    """A page of a site that `make` writes, as if made at that moment; its path."""
    root = os.path.join(folder, name)
    log = os.path.join(folder, f"{name}.log")
    os.makedirs(root)
    if make is not None:
        make(root, log)
    if os.path.exists(log):
        options = ("--log", log, *options)
    page = os.path.join(folder, f"{name}.html")
    done = subprocess.run([ruvoctl, "report", root, "-o", page, *options], capture_output=True, text=True)
    check(f"{name}: made", done.returncode in (0, 1) and os.path.exists(page), done.stderr)
    text = re.sub(r'"made":"[^"]*"', f'"made":"{made}"', pathlib.Path(page).read_text("utf-8"))
    pathlib.Path(page).write_text(text, "utf-8")
    return page


def number(text):
    return int(text.split()[0].replace(",", ""))


def shown(page):
    return number(page.text("#event-count"))


def check_quiet(page, what, path):
    """No complaint in the console, and nothing asked for but the page itself."""
    equal(f"{what}: console", page.complaints(), [])
    others = [url for url in page.requests() if not (url.startswith("file://") and url.endswith(os.path.basename(path)))
              and not url.startswith("data:")]
    equal(f"{what}: requests", others, [])


def coloured(page, canvas):
    """How many pixels of a canvas are painted."""
    return page.run("""const c = document.querySelector(arguments[0]);
        const d = c.getContext("2d").getImageData(0, 0, c.width, c.height).data;
        let n = 0; for (let i = 3; i < d.length; i += 4) n += d[i] > 0; return n;""", canvas)


def test_shows(page):
    tiles = dict(zip(page.texts(".tile-name"), page.texts(".tile strong")))
    equal("tiles: relays", tiles["Relays"], str(len(sites.BAYS)))
    check("tiles: events", number(tiles["Events"]) > 1000, tiles)
    equal("tiles: the relay that went silent", tiles["Silent relays"], "1")
    equal("a lane for each relay and one for problems", len(page.texts(".lane-label")), len(sites.BAYS) + 1)
    equal("the legend adds up", sum(number(text) for text in page.texts(".chip .count")), shown(page))
    for canvas in ("#plot", "#overview", "#axis"):
        check(f"{canvas} is painted", coloured(page, canvas) > 500)
    check("only the rows in sight exist", 10 < len(page.texts(ROWS)) < 60, len(page.texts(ROWS)))
    equal("problems listed", len(page.texts(".problems li")), number(tiles["Problems"]))
    check("accents survive", "\u00c9L04-D\u00e9part 7" in page.texts(".lane-label .name"))


def test_filters(page):
    everything = shown(page)
    page.type("#search", "TRIP i>")
    check("search: fewer", 0 < shown(page) < everything, shown(page))
    equal("search: all rows have it", set(page.texts(f"{ROWS} .cell-event")), {"I> trip"})
    page.type("#search", "oakfield peak")
    equal("search in cells and plant", set(page.texts(f"{ROWS} .cell-relay")), {"FD31-00001001"})
    page.type("#search", "nothing has this")
    equal("search: nothing", (shown(page), page.run("return document.getElementById('grid-empty').hidden")), (0, False))
    page.click("#clear")
    equal("cleared", shown(page), everything)
    page.type("#relay", "5")
    name = page.run("return document.getElementById('relay').selectedOptions[0].textContent")
    equal("relay: its rows only", set(page.texts(f"{ROWS} .cell-relay")), {name})
    check("relay: its lane is pressed", page.run(
        "return document.querySelector('.lane-label[aria-pressed=true] .name').textContent") == name)
    page.click("#clear")
    trips = number(page.texts(".chip .count")[0])
    page.click(".chip")
    equal("a kind switched off", shown(page), everything - trips)
    check("its rows are gone", "Trip" not in page.texts(f"{ROWS} .cell-kind"))
    page.click("#clear")
    page.click("#grid-head .cell-event button")
    order = page.texts(f"{ROWS} .cell-event")
    equal("sorted by event", (order == sorted(order), page.run(
        "return document.querySelector('#grid-head .cell-event').ariaSort")), (True, "ascending"))
    page.click("#grid-head .cell-time button")


def test_zoom(page):
    everything, window = shown(page), page.text("#window")
    page.press("#plot", "d")
    check("D: one day", page.text("#window").endswith("(1 day)"), page.text("#window"))
    day = shown(page)
    check("D: fewer events", 0 < day < everything, day)
    page.press("#plot", "h")
    check("H: one hour", page.text("#window").endswith("(1 h)"), page.text("#window"))
    before = page.text("#window")
    page.press("#plot", "\ue014")  # right
    check("right: moves on", page.text("#window") != before)
    page.press("#plot", "-")
    check("minus: two hours", page.text("#window").endswith("(2 h)"), page.text("#window"))
    page.press("#plot", "0")
    equal("0: all again", (page.text("#window"), shown(page)), (window, everything))
    page.press("#plot", "\ue015", "n")  # down
    first = page.text(".details-event")
    page.press("#plot", "n")
    check("N: the next event of the lane", page.text(".details dl") is not None and first is not None)
    check("the row of the chosen event is in sight", page.text(f"{ROWS}[aria-selected=true]") is not None)
    drag(page, "#plot", 0.3, 0.5)
    check("a drag zooms", 0 < shown(page) < everything, shown(page))
    wheel(page, "#plot")
    check("the wheel zooms further", page.text("#zoom-all") == "All" and number(page.text("#event-count")) < everything)
    page.click("#zoom-all")
    equal("button: all again", shown(page), everything)
    page.click("#close-event")


def place_of(page, selector, part):
    box = page.run("""const e = document.querySelector(arguments[0]); e.scrollIntoView({block: "center"});
        const b = e.getBoundingClientRect(); return [b.left, b.top, b.width, b.height];""", selector)
    return box[0] + box[2] * part, box[1] + box[3] / 2


def mouse(page, kind, x, y, **more):
    page.driver.execute_cdp_cmd("Input.dispatchMouseEvent", {"type": kind, "x": x, "y": y, **more})
    page.settle()


def drag(page, selector, start, end):
    x, y = place_of(page, selector, start)
    to, _ = place_of(page, selector, end)
    mouse(page, "mousePressed", x, y, button="left", clickCount=1)
    mouse(page, "mouseMoved", (x + to) / 2, y, button="left", buttons=1)
    mouse(page, "mouseMoved", to, y, button="left", buttons=1)
    mouse(page, "mouseReleased", to, y, button="left", clickCount=1)


def wheel(page, selector):
    before = page.text("#window")
    x, y = place_of(page, selector, 0.5)
    mouse(page, "mouseWheel", x, y, deltaX=0, deltaY=-240)
    check("wheel: the window changes", page.wait(f"document.getElementById('window').textContent !== {before!r}"))


def test_keyboard(page):
    page.press("#grid", "\ue015", "\ue015")
    selected = page.text(f"{ROWS}[aria-selected=true] .cell-event")
    check("down: the second row is chosen", selected == page.texts(f"{ROWS} .cell-event")[1], selected)
    check("its details are shown", page.text(".details-event") == selected, page.text(".details-event"))
    page.click("#next-event")
    check("next in time: a row further up", page.run(
        f"return document.querySelector('{ROWS}[aria-selected=true]').ariaRowIndex") == "2")
    page.click("#close-event")
    page.run("document.activeElement.blur(); window.scrollTo(0, 0)")
    visited = []
    for _ in range(60):
        page.driver.switch_to.active_element.send_keys("\ue004")  # tab
        visited.append(page.run("const e = document.activeElement; return [e.id || e.className || e.tagName, "
                                "getComputedStyle(e).outlineStyle]"))
    names = [name for name, _ in visited]
    for wanted in ("skip", "zoom-in", "chip", "plot", "search", "relay", "grid", "relay-list", "problem-list"):
        check(f"tab reaches {wanted}", wanted in names or any(wanted in name for name in names), names)
    check("the focus is seen everywhere", all(style != "none" for name, style in visited if name != "BODY"), visited)
    nameless = page.run("""return Array.from(document.querySelectorAll("button, input, select, [tabindex='0']"))
        .filter((e) => !(e.ariaLabel || e.textContent.trim() || e.labels?.length || e.getAttribute("aria-labelledby")))
        .map((e) => e.outerHTML.slice(0, 80))""")
    equal("every control has a name", nameless, [])


CONTRASTS = """const probe = document.createElement("canvas").getContext("2d", {willReadFrequently: true});
const style = getComputedStyle(document.documentElement);
function light(name) {
  probe.fillStyle = style.getPropertyValue(name); probe.fillRect(0, 0, 1, 1);
  const [r, g, b] = Array.from(probe.getImageData(0, 0, 1, 1).data, (v) => v / 255)
    .map((v) => v <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4);
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}
const low = [];
function need(least, names, grounds) {
  for (const name of names) for (const ground of grounds) {
    const [a, b] = [light(name), light(ground)].sort((x, y) => y - x);
    const ratio = (a + 0.05) / (b + 0.05);
    if (ratio < least) low.push(`${name} on ${ground}: ${ratio.toFixed(2)}`);
  }
}
need(4.5, ["--ink", "--quiet", "--accent", "--problem", "--warning"], ["--surface", "--page", "--raised"]);
need(4.5, ["--on-accent"], ["--accent"]);
need(3, ["--control-line", ...[0, 1, 2, 3, 4, 5, 6].map((kind) => `--kind-${kind}`)], ["--surface"]);
return low;"""


def test_looks(page):
    grounds = {}
    for scheme in ("light", "dark"):
        for width in (390, 900, 1440):
            page.look(width, 900, scheme)
            equal(f"{scheme}, {width} wide: nothing sticks out", page.run(
                "return document.documentElement.scrollWidth - document.documentElement.clientWidth"), 0)
            check(f"{scheme}, {width} wide: rows", len(page.texts(ROWS)) > 5)
        grounds[scheme] = page.run("return getComputedStyle(document.body).backgroundColor")
        equal(f"{scheme}: contrasts", page.run(CONTRASTS), [])
    check("two themes", grounds["light"] != grounds["dark"], grounds)


def test_prints(page):
    page.run("window.addEventListener('beforeprint', () => "
             "window.printed = document.querySelectorAll('#print-part tbody tr:not(.cells-row)').length)")
    pdf = page.pdf()
    check("a PDF of several pages", pdf.startswith(b"%PDF") and pdf.count(b"/Type /Page\n") + pdf.count(b"/Type /Page ") > 3,
          len(pdf))
    equal("the events stand on paper", page.run("return window.printed"), min(shown(page), 1000))
    check("and are gone again", page.wait("document.querySelectorAll('#print-part tr').length === 0"))


def test_hostile(page):
    equal("nothing ran", page.run("return window.hit ?? null"), None)
    equal("no element came out of a text", page.run(
        "return document.querySelectorAll('img, svg, i, b, script:not(#data):not([type=module]), iframe, object').length"), 0)
    found = page.texts(f"{ROWS} .cell-event")
    for attack in sites.HOSTILE[:5]:
        check(f"stays text: {attack}", attack in found, found)
    everything = page.run("return document.body.innerText + Array.from(document.querySelectorAll('[title]'), "
                          "(e) => e.title).join('')")
    tricks = [c for c in everything if ord(c) < 32 and c not in "\n\t" or c in "\x7f\u202e\u2066\u2028"]
    equal("no control character, no turned text", tricks, [])
    check("what would turn the text is named", "a<U+202E>txt.exe<U+2066>b<U+2028>c" in everything)
    check("an event without a time", "no time" in page.texts(f"{ROWS} .cell-time"))
    equal("damage is listed", len(page.texts("#damage-list tbody tr")), 1)
    for at in range(len(found)):
        page.press("#grid", "\ue015")
        check(f"details {at}: text", page.text(".details-event") in found, page.text(".details-event"))
    equal("still nothing ran", page.run("return window.hit ?? null"), None)


def test_sequence(page):
    """Differences, marks, the table as a file, and what of it reaches paper."""
    page.click("#grid-head .cell-time button")  # the oldest first
    cells = lambda name: page.texts(f"{ROWS} .cell-{name}")
    equal("differences, with their doubts", cells("delta"), ["", "+0.035?", "+0.047?", "+1d 02:00:00.918"])
    equal("marks", [time[24:] for time in cells("time")], ["s", "?", "", ""])
    for width in (1440, 1280, 1000, 700):
        page.look(width, 900)
        equal(f"{width} wide: no time is cut short", page.run(
            f"return Array.from(document.querySelectorAll('{ROWS} .cell-time'), (e) => e.scrollWidth > e.clientWidth)"),
            [False] * 4)
    page.look(1440, 900)
    check("what the marks mean", page.texts("#marks strong") == ["?", "s"], page.texts("#marks strong"))
    page.click(f"{ROWS}:nth-child(3)")
    page.click("#zero")
    equal("from a chosen event", cells("delta"), ["-0.082", "-0.047?", "+0.000", "+1d 02:00:00.918"])
    equal("which the head says", page.text("#grid-head .cell-delta"), "\u0394t from chosen")
    page.type("#search", "03.")
    page.run("""URL.createObjectURL = (blob) => {
        blob.slice(0, 3).arrayBuffer().then((mark) => (window.mark = new Uint8Array(mark).join()));
        blob.text().then((text) => (window.saved = text)); return "#"; };""")
    page.click("#csv")
    check("saved", page.wait("window.saved && window.mark"))
    equal("with the mark of UTF-8", page.run("return window.mark"), "239,187,191")
    rows = [row.partition(",03.")[0] for row in page.run("return window.saved").split("\r\n")]
    equal("the filtered table as a file", rows, [
        "time,marks,delta_ms,relay,plant,description,model,kind,event,value_text,location,cells,file,offset",
        "2026-11-16T00:00:00.000,s,-82,FD31-00001001,Feeder 1 Oakfield,Overcurrent relay,FD31A0-E,Start,I> start,900",
        "2026-11-16T00:00:00.035,?,-47,BS11-00003001,Bus section,Bus coupler relay,BS11A0-E,Start,"
        "\"'=Backup, start\",", ""])
    page.click("#clear")
    page.click("#zero")
    equal("and each from the one before again", cells("delta")[3], "+1d 02:00:00.918")
    page.run("window.dispatchEvent(new Event('beforeprint'))")
    equal("paper: the fault record's cells", page.texts("#print-part .cells-row span"),
          ["Event Value 0000000000000011  (Start, Trip)", "Peak current 932 A", "Phase <b>A"])
    equal("paper: the legend", len(page.texts("#print-part .marks strong")), 2)
    page.run("window.dispatchEvent(new Event('afterprint'))")
    equal("two logs in order of time", page.texts(".problems li > p:last-child"),
          ["Last", "Between", "and more", "First"])


def test_two_clocks(page):
    cells = lambda name: page.texts(f"{ROWS} .cell-{name}")
    page.click("#grid-head .cell-time button")
    equal("lined up: in one zone, with marks", cells("time"),
          ["2026-11-16 03:00:00.000", "2026-11-16 03:00:00.030", "2026-11-16 03:00:00.050 ~"])
    equal("lined up: the time in between", cells("delta"), ["", "+0.030", "+0.020?"])
    check("lined up: said", "zone Europe/Berlin" in page.text("footer") and "may be wrong" in page.text("#marks"), page.text("footer"))
    page.click(f"{ROWS} .cell-time")
    check("lined up: the relay's clock", "Relay's clock2026-11-16 03:00:00.000" in page.text("#details"), page.text("#details"))


def test_policy(page):
    """Were a text ever to become markup or script, the page's own policy would still stop it."""
    blocked = page.run("""try { document.body.innerHTML += "<p>"; return false; } catch (error) { return true; }""")
    check("markup out of texts is refused", blocked)
    page.run("""const s = document.createElement("script");
        try { s.textContent = "window.hit = 9"; } catch (error) {}
        document.body.append(s);
        const image = new Image(); image.src = "https://example.invalid/x.png"; document.body.append(image);""")
    page.settle()
    equal("an added script does not run", page.run("return window.hit ?? null"), None)
    check("an image from elsewhere is refused", any("img-src" in line for line in page.complaints()))


def test_large(page, path):
    start = time.monotonic()
    page.open(path)
    check("large: drawn", page.wait("document.querySelectorAll('#grid-space .grid-row').length > 5"))
    print(f"100,000 events: {os.path.getsize(path) / 1e6:.1f} MB, drawn after {time.monotonic() - start:.2f} s")
    equal("large: all are there", shown(page), 100_000)
    check("large: few rows exist", len(page.texts(ROWS)) < 60)
    check("large: a page of a few MB", os.path.getsize(path) < 6_000_000, os.path.getsize(path))
    page.press("#grid", "\ue010")  # end
    equal("large: the last row is the first event", page.run(
        f"return document.querySelector('{ROWS}[aria-selected=true]').ariaRowIndex"), "100001")
    page.press("#plot", "0", "d")
    check("large: a day", 0 < shown(page) < 20_000, shown(page))


def test_old_sites(page, old, bounded):
    """A site that nobody has visited for a month has gone silent as a whole."""
    page.open(old)
    equal("old site: every relay is silent", len(page.texts("tr.silent button")), len(sites.BAYS))
    page.open(bounded)
    equal("old week: silent in that week", page.texts("tr.silent button"), ["CY01-00001107"])
    check("old week: up to when", "no event for more than 3 days up to 2026-11-22 23:59" in page.texts(".tile .quiet"))


def run(ruvoctl, folder):
    week = make_page(ruvoctl, folder, "week", sites.week, "--title", "Northfield <33> kV", "--silent", "3")
    hostile = make_page(ruvoctl, folder, "hostile", sites.hostile)
    empty = make_page(ruvoctl, folder, "empty")
    clocks = make_page(ruvoctl, folder, "clocks", sites.failed_clocks, made="2026-11-17 03:00:00")
    old = make_page(ruvoctl, folder, "old", sites.week, made="2026-12-22 23:30:00")
    bounded = make_page(ruvoctl, folder, "bounded", sites.week, "--until", "2026-11-22", "--silent", "3",
                        made="2026-12-22 23:30:00")
    sequence = make_page(ruvoctl, folder, "sequence", sites.sequence, "--log", os.path.join(folder, "sequence.log.2"))
    clock_file = pathlib.Path(folder, "clocks.txt")
    clock_file.write_text("LO* +01:00\nUT* UTC\n", "utf-8")
    lined = make_page(ruvoctl, folder, "lined", sites.two_clocks, "--clocks", clock_file, "--zone", "Europe/Berlin")
    large = make_page(ruvoctl, folder, "large", sites.large)
    with browser() as page:
        page.look(1440, 900)
        page.open(week)
        equal("title", (page.text("h1"), page.driver.title), ("Northfield <33> kV",) * 2)
        for test in (test_shows, test_filters, test_zoom, test_keyboard, test_looks, test_prints):
            test(page)
        check_quiet(page, "week", week)
        page.look(1440, 900)
        page.open(hostile)
        test_hostile(page)
        check_quiet(page, "hostile", hostile)
        test_policy(page)
        page.open(empty)
        check("empty: says so", "no event" in page.text("#grid-empty"), page.text("#grid-empty"))
        page.requests()
        check_quiet(page, "empty", empty)
        page.open(clocks)
        equal("failed clocks: the day is in sight, not the century", (page.text("#window")[:15], shown(page)),
              ("Sun 15 Nov 2026", 48))
        equal("failed clocks: no relay is silent, whatever its clock says", page.texts("tr.silent button"), [])
        page.click("#zoom-all")
        equal("failed clocks: all can be seen", shown(page), 50)
        check_quiet(page, "failed clocks", clocks)
        page.open(sequence)
        test_sequence(page)
        check_quiet(page, "sequence", sequence)
        page.open(lined)
        test_two_clocks(page)
        check_quiet(page, "lined up", lined)
        test_old_sites(page, old, bounded)
        page.requests()
        test_large(page, large)
        check_quiet(page, "large", large)


if __name__ == "__main__":
    sys.exit(count_checks(lambda: run(*sys.argv[1:3])))
