"""A random yard of relays whose events can be distinguished: the text of a relay's event number 7 is "E7"."""

from relay_events import CELLS, MALFORMED, PASSWORD_CELL, UNKNOWN, event_toml

FIXED = """serial = {number}
name = "R{number}"
identity = {{ model = "CR{number}", serial = "{number}", plant = "Yard", description = "Feeder" }}
columns."30" = {{ locations = "uint" }}
[relay.cells]
""" + CELLS

LOGIN = {
    0: 'password = "AAAA"',
    1: 'password = "AAAA"',
    2: 'users = [{ name = "A", password = "B" }]',
    3: 'users = [{ name = "A", password = "B" }]',
}


class Relay:
    def __init__(self, random, number):
        self.number = number
        self.generation = random.randrange(4)
        self.is_open = self.generation < 2 or random.random() < 0.5  # else it requires a user name and keeps its events
        self.forgets = random.randrange(4, 30) if self.generation < 2 and random.random() < 0.5 else 0
        odd = [UNKNOWN, MALFORMED] if random.random() < 0.3 else []
        kinds = [0, 1, 2, 3, 4, 5] * 4 + odd
        self.kinds = [random.choice(kinds) for _ in range(random.choice((1, 5, 20, 60)))]
        self.shown = 0  # of its events

    @property
    def folder(self):
        return f"CR{self.number}-{self.number}"

    def can_be_recorded(self, number):
        return self.kinds[number - 1] < UNKNOWN

    def text(self, refuses):
        protect = "" if self.generation < 2 or not self.is_open else ", protect = []"
        forget = f", forget_after = {self.forgets}" if self.forgets else ""
        lines = ["[[relay]]", "event = [", *(event_toml(f"E{at + 1}", at + 1, kind) for at, kind in enumerate(self.kinds[:self.shown])),
                 "]", f"access = {{ generation = {self.generation}, {LOGIN[self.generation]}{protect}{forget} }}",
                 FIXED.format(number=self.number, generation=self.generation)]
        if refuses and self.forgets:
            lines.append(f'[[fault]]\noperation = "ChangeSetting"\nrelay = "R{self.number}"\n'
                         f'cell = "{PASSWORD_CELL[self.generation]}"\nfrom = 3\nreply = 4')
        return "\n".join(lines)


class Yard:
    def __init__(self, random):
        self.random = random
        self.relays = [Relay(random, number + 1) for number in range(random.choice((1, 1, 2, 3)))]
        self.delay = random.choice((0, 0, 1))

    def grow(self, whole=False):
        """Further events happen."""
        for relay in self.relays:
            relay.shown = len(relay.kinds) if whole else self.random.randint(relay.shown, len(relay.kinds))

    def parts(self, refuses=False):
        """Of the substation file. A password that is refused is so when it is asked for again within a visit."""
        slow = ['[[fault]]\noperation = "GetEvent"\ndelay = 1'] if self.delay else []
        return ['account = "account"\n[link]\nserial = ["COM1"]', *(relay.text(refuses) for relay in self.relays), *slow]

    def ini(self, password):
        keys = [f"RV{relay.number:03}" for relay in self.relays]
        return ["[RUVO_SERIAL]", *(f"{key}={relay.number}" for key, relay in zip(keys, self.relays)),
                "[RUVO_PASSWORDS]", *(f"{key}={password}" for key in keys)]
