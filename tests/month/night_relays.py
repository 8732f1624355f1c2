"""A thousand relays over many nights: what they hold, how each of them fails tonight, and what the log says of it.

The text of a relay's event number 7 is "R12E7", if the relay is number 12. A relay's list begins with the event that it has
still to hand over, so that a night's substation file stays short.
"""

import dataclasses

from relay_events import CELLS, MALFORMED, PASSWORD_CELL, UNKNOWN, event_toml

TEXT = """[[relay]]
name = "{number}"
ethernet = {{ ip = "{ip}", address = 2 }}
identity = {{ model = "NR", serial = "{number}", plant = "Yard", description = "Feeder" }}
columns."30" = {{ locations = "uint" }}
access = {{ generation = {generation}, {login} }}
event = [
{events}
]
[relay.cells]
""" + CELLS


@dataclasses.dataclass(frozen=True)
class Failure:
    """How a relay fails. `fault` is what the substation file says, of relay {relay} and its {call}th event."""

    name: str
    fault: str = ""
    link_status: int = 0       # of opening its link
    nights: int = 1            # that it lasts at most
    needs_events: bool = False
    needs_login: bool = False
    refuses: bool = False      # the password of the INI file
    is_noticed: bool = True    # whatever kinds of events the relay has: a line of the log tells of it


def fault(operation, more):
    return f'[[fault]]\noperation = "{operation}"\nrelay = "{{relay}}"\n{more}\n'


FAILURES = (
    Failure("no link", link_status=11, nights=4),
    Failure("silent", fault("GetDeviceStatus", "status = 8") + fault("GetValue", "status = 8"), nights=4),
    Failure("silent from an event on", fault("GetEvent", "from = {call}\nstatus = 8"), needs_events=True),
    Failure("server lost at an event", fault("GetEvent", "call = {call}\ncom_failure = true"), needs_events=True),
    Failure("server without a reply", fault("GetEvent", "call = {call}\nstatus = 255"), needs_events=True),
    Failure("reply of a wrong type", fault("GetEvent", "call = {call}\nwrong_type = 2"), needs_events=True),
    Failure("reply cut short", fault("GetEvent", "call = {call}\ntruncate = 1"), needs_events=True),
    Failure("busy", fault("GetEvent", "call = {call}\nreply = 10"), needs_events=True),
    Failure("aborted in mid-visit", fault("GetEvent", "call = {call}\nstatus = 18"), needs_events=True),
    Failure("command completed as aborted", fault("StartGetStrings", "completion = 18"), needs_events=True, is_noticed=False),
    Failure("strings not read", fault("StartGetStrings", "completion = 8"), needs_events=True, is_noticed=False),
    Failure("wrong password", needs_login=True, refuses=True, nights=3),
    Failure("password refused in mid-visit", "forget", needs_events=True, needs_login=True, is_noticed=False),
)


class Relay:
    def __init__(self, random, number):
        self.random = random
        self.number = number
        self.key = f"RV{number:03}"
        self.ip = f"10.{number // 250}.{number % 250}.1"
        self.folder = f"NR-{number}"
        self.generation = random.randrange(4)
        self.busy = random.choice((1, 1, 1, 2, 4))  # how much happens at its feeder
        self.taken = 0   # of its events, on nights before
        self.kinds = []  # of its events
        self.failure, self.ends, self.call = None, 0, 0

    @property
    def pending(self):
        return len(self.kinds) - self.taken

    @property
    def has_login(self):
        return self.generation < 2

    def pass_day(self, night):
        odd = [UNKNOWN, MALFORMED] if self.random.random() < 0.01 else []
        for _ in range(self.random.choice((0, 0, 1, 1, 2, 3)) * self.busy):
            self.kinds.append(self.random.choice((0, 1, 2, 3, 4, 5, *odd)))
        if self.ends <= night:
            self.failure = None
            if self.random.random() < 0.05:
                self.fail(night, self.random.choice(FAILURES))

    def fail(self, night, failure):
        if (failure.needs_events and not self.pending) or (failure.needs_login and not self.has_login):
            return
        self.failure, self.ends = failure, night + self.random.randint(1, failure.nights)
        # (A relay with a login answers the first request for an event by asking for the password.)
        self.call = self.random.randint(1, max(self.pending, 1)) + self.has_login

    def kind(self, number):
        return self.kinds[number - 1]

    def is_sound(self):
        return self.failure is None and all(kind < UNKNOWN for kind in self.kinds[self.taken:])

    def link(self):
        return f'{{ ip = "{self.ip}", status = {self.failure.link_status} }}' if self.failure and self.failure.link_status else ""

    def text(self):
        failure = self.failure
        password = "BBBB" if failure and failure.refuses else "AAAA"
        login = f'password = "{password}"' if self.has_login else 'users = [{ name = "A", password = "B" }], protect = []'
        faults = failure.fault.format(relay=self.number, call=self.call) if failure else ""
        if faults == "forget":
            login += f", forget_after = {self.random.randrange(4, 9)}"
            faults = (f'[[fault]]\noperation = "ChangeSetting"\nrelay = "{self.number}"\n'
                      f'cell = "{PASSWORD_CELL[self.generation]}"\nfrom = 3\nreply = 4\n')
        events = "\n".join(event_toml(f"R{self.number}E{at + 1}", at + 1, kind) for at, kind in enumerate(self.kinds) if at >= self.taken)
        return TEXT.format(number=self.number, ip=self.ip, generation=self.generation, login=login, events=events) + faults
