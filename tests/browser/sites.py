"""Sites to make pages of: a busy week for pictures, a hostile one for the tests, a large one for the clock."""

import datetime
import os
import random

from day_files import NO_VALUE, Relay, flags, stamp, string, unsigned, write_log

MONDAY = datetime.datetime(2026, 11, 16)
BITS = ("Start", "Trip", "Close", "Block")


def after(hours=0.0, milliseconds=0):
    return MONDAY + datetime.timedelta(hours=hours, milliseconds=milliseconds)


BAYS = [
    ("FD31-00001001", 1, "Feeder 1 Oakfield", "Overcurrent relay", "FD31A0-E"),
    ("FD31-00001002", 2, "Feeder 2 Millbrook", "Overcurrent relay", "FD31A0-E"),
    ("FD31-00001003", 3, "Feeder 3 Harbour", "Overcurrent relay", "FD31A0-E"),
    ("FD31-00001004", 4, "Feeder 4 Quarry", "Overcurrent relay", "FD31A0-E"),
    ("TR42-00002001", 11, "Transformer 1", "Differential relay", "TR42B1-E"),
    ("TR42-00002002", 12, "Transformer 2", "Differential relay", "TR42B1-E"),
    ("BS11-00003001", 21, "Bus section", "Bus coupler relay", "BS11A0-E"),
    ("BY90-00009001", 31, "Bay 1", "Bay controller", "BY90-E"),
    ("BY90-00009002", 32, "Bay 2", "Bay controller", "BY90-E"),
    ("\u00c9L04-D\u00e9part 7", 41, "D\u00e9part 7", "Relais amp\u00e8rem\u00e9trique", "\u00c9L04"),
    ("CB05-778", 51, "Capacitor bank", "Old relay", "CB05"),
    ("CY01-00001107", 61, "Feeder 7", "Feeder relay", "CY01-G"),
]


def fault(relay, time, rng, phase="A"):
    """A short circuit as a relay tells it: start, trip, breaker, record."""
    def later(milliseconds):
        return time + datetime.timedelta(milliseconds=milliseconds)
    peak = rng.randint(900, 6400)
    relay.simple(time, (3, 0x20), f"I> start phase {phase}", unsigned(peak))
    relay.extended(later(82), (9, 1), "Relay outputs", flags(3), [("Event Value ", flags(3), BITS)])
    relay.simple(later(83), (3, 0x20), "I> trip", unsigned(peak + rng.randint(0, 300)))
    relay.simple(later(141), (5, 2), "CB open", string("Open"))
    relay.extended(later(160), (0, 0x31), "Fault recorded", unsigned(rng.randint(1, 40)), [
        ("Faulted phase ", string(phase), ()), ("Peak current %u", unsigned(peak), ()),
        ("Elements ", flags(3), ("Start A", "Trip A", "Trip B")), ("Cleared after %u ms", unsigned(141), ())])
    if rng.random() < 0.7:
        relay.simple(later(1160), (5, 2), "Autoreclose CB close", string("Closed"))


def week(root, log, days=7, seed=20):
    """Seven days: tap changes and switching by day, a storm on Wednesday night, a relay that has gone silent."""
    rng = random.Random(seed)
    relays = [Relay(*bay) for bay in BAYS]
    for relay in relays:
        own_days = 2 if relay.name == "CY01-00001107" else days
        for day in range(own_days):
            routine(relay, day, rng)
    storm = MONDAY + datetime.timedelta(days=2, hours=21)
    for _ in range(46):
        relay = rng.choice([relays[at] for at in (0, 0, 1, 2, 3, 4, 6, 9)])
        fault(relay, storm + datetime.timedelta(seconds=rng.gauss(9000, 3600)), rng, rng.choice("ABC"))
    for relay in relays:
        relay.write(root)
    failing = [(1, "Invalid password. Connection details - COM Port: COM1, device address: 5."),
               (1, "Test connection failed. Unable to connect to the device or password is invalid. "
                   "Connection details - COM Port: COM1, device address: 5."),
               (2, 'Failed to open ethernet connection. Connection string: TNLC="RPCDll.Dll","10.20.0.9","0","4",'
                   '"0". P32LS status: P32LS Error - cannot open port')]
    write_log(log, [(after(24 * day + 3.02 + 0.01 * minute), line) for day in range(days)
                    for minute, line in failing if (day + minute) % 3 != 0])


def routine(relay, day, rng):
    def at(hour):
        return after(24 * day + hour, rng.randint(0, 59_999))
    kind = relay.name[:2]
    if kind == "TR":
        for _ in range(rng.randint(18, 34)):
            relay.simple(at(min(max(rng.gauss(13, 5), 0), 23.9)), (8, 0x10), "Tap changed", unsigned(rng.randint(5, 13)),
                         "Tap changer at %u of %u", (unsigned(rng.randint(5, 13)), unsigned(17)))
        if rng.random() < 0.5:
            relay.simple(at(rng.uniform(14, 19)), (4, 1), "Thermal alarm", unsigned(rng.randint(88, 99)))
    elif kind == "BY":
        for _ in range(rng.randint(24, 60)):
            closed = rng.random() < 0.5
            relay.extended(at(rng.uniform(5, 22)), (5, 2), f"Isolator Q{rng.randint(1, 9)} {'closed' if closed else 'open'}",
                           flags(1 + closed), [("Event Value ", flags(1 + closed), ("Open", "Closed")),
                                               ("Local control ", flags(1), ("Remote", "Local"))])
    else:
        for _ in range(rng.randint(1, 6)):
            relay.simple(at(rng.uniform(0, 24)), (3, 0x20), "Sensitive earth current", unsigned(rng.randint(1, 9)))
        if rng.random() < 0.35:
            fault(relay, at(rng.uniform(0, 24)), rng)
    relay.simple(at(3), (1, 2), "Self test", string("Healthy" if rng.random() < 0.95 else "Failed"))
    if rng.random() < 0.4:
        relay.simple(at(rng.uniform(0, 24)), (1, 4), "Clock synchronised", NO_VALUE)


HOSTILE = [
    "</script><script>window.hit=1</script>",
    "<img src=x onerror=window.hit=2>",
    "\"'><svg onload=window.hit=3>",
    "<!--<script>",
    "&lt;b&gt; &amp; {{7*7}} ${7*7}",
    "bell\x07 escape\x1b[31m nul\x00 delete\x7f",
]
# Relay texts have no such characters; names of files and lines of the log may.
TURNED = "a\u202etxt.exe\u2066b\u2028c"


def hostile(root, log):
    relay = Relay("AB12-<b>1", 7, HOSTILE[1], HOSTILE[2], HOSTILE[0])
    for at, attack in enumerate(HOSTILE):
        relay.simple(after(at), (3, at), attack.encode("latin-1"), string("v" + HOSTILE[at % 3]), attack.encode("latin-1"))
        relay.extended(after(at, 500), (9, at), "Cells", flags(3), [("Event Value ", flags(3), HOSTILE[:2]),
                                                                  (HOSTILE[0], string(HOSTILE[1]), ())])
    relay.simple(stamp(MONDAY)[:4] + bytes([31, 11, 26]), (3, 1), "Trip at no time", day=MONDAY.date())
    relay.raw(MONDAY.date(), b"\x55\x55 not a record")
    relay.write(root)
    quiet = Relay(f"CD34-{TURNED}", 8, "Plant", "Description", "CD34")
    quiet.simple(after(-24 * 20), (1, 1), "Start long ago")
    quiet.write(root)
    write_log(log, [(after(2), HOSTILE[0]), (after(3), f"{TURNED} Connection details - COM Port: <i>1, device address: 5."),
                    (None, HOSTILE[1])])


def two_clocks(root, log):
    """One event, seen by a relay in local time, one in UTC, and one of which nobody knows."""
    for name, hour, milliseconds in (("LO01-1", 3, 0), ("UT01-2", 2, 30), ("XX01-3", 2, 50)):
        relay = Relay(name, 1, f"Bay {name[:2]}", "", "")
        relay.simple(after(hour, milliseconds), (3, 0x20), "I> trip")
        relay.write(root)


def failed_clocks(root, log):
    """A day of events; one relay believes that it is 1998, another 2079."""
    relays = [Relay(*bay) for bay in BAYS[:4]]
    for hour in range(24):
        for relay in relays[:2]:
            relay.simple(after(hour), (3, 1), "I> start", unsigned(hour))
    relays[2].simple(datetime.datetime(1998, 1, 1), (3, 1), "I> start", day=MONDAY.date())
    relays[3].simple(datetime.datetime(2079, 1, 1), (3, 1), "I> start", day=MONDAY.date())
    for relay in relays:
        relay.write(root)


def sequence(root, log):
    """A fault as two relays tell it, one with a clock that it does not trust; and two logs."""
    feeder, bus = Relay(*BAYS[0]), Relay(*BAYS[6])
    feeder.simple(stamp(after(0, 0), summer=True), (3, 0x20), "I> start", unsigned(900), day=MONDAY.date())
    bus.simple(stamp(after(0, 35), trusted=False), (3, 1), "=Backup, start", day=MONDAY.date())
    feeder.extended(after(0, 82), (9, 1), "I> trip", flags(3), [
        ("Event Value ", flags(3), BITS), ("Peak current %u A", unsigned(932), ()), ("Phase ", string("<b>A"), ())])
    feeder.simple(after(26, 1000), (5, 2), "CB open", string("Open"), day=MONDAY.date())
    for relay in (feeder, bus):
        relay.write(root)
    write_log(log, [(after(1), "First"), (None, "and more"), (after(5), "Last")])
    write_log(log + ".2", [(after(3), "Between")])


WORDS = ("I> start", "I> trip", "CB open", "Thermal alarm", "Self test", "Earth fault", "Power swing")


def large(root, log, count=100_000, relays=50, days=30):
    """`count` records of every kind, in day files of many relays."""
    rng = random.Random(1)
    made = [Relay(f"LG{at % 90 + 10}-{at:08d}", at % 250 + 1, f"Bay {at}", "Feeder relay", f"LG{at % 90 + 10}A0")
            for at in range(relays)]
    for at in range(count):
        relay = made[at % relays]
        day = min(int(rng.betavariate(2, 3) * days), days - 1)
        time = after(24 * day + rng.triangular(0, 24, 14), rng.randint(0, 999))
        word = rng.choices(WORDS, (9, 5, 12, 2, 6, 2, 14))[0]
        if rng.random() < 0.2:
            relay.extended(time, (0, 0x31), "Fault recorded", unsigned(at % 60_000), [
                ("Faulted phase ", string("Phase A"), ()), ("Peak current %u", unsigned(rng.randint(1, 60_000)), ()),
                ("Elements ", flags(at % 4), ("Start A", "Trip A"))])
        else:
            relay.simple(time, (3, at % 64), word, unsigned(rng.randint(0, 60_000)), "Took %u ms", (unsigned(at % 500),))
    for relay in made:
        relay.write(root)


if __name__ == "__main__":
    import sys
    what, folder = sys.argv[1:3]
    os.makedirs(os.path.join(folder, "events"), exist_ok=True)
    make = {"week": week, "hostile": hostile, "large": large}[what]
    make(os.path.join(folder, "events"), os.path.join(folder, "RUVO_Errors.log"))
