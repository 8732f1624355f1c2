"""Events of simulated relays that are told apart by their text, and the cells that they refer to, as TOML."""

UNKNOWN, MALFORMED = 9, 10  # kinds of events that no day file has
PASSWORD_CELL = {0: "00.02", 1: "00.E1"}  # of a generation of access control

# Follows the header [relay.cells]; {generation} is to be filled in.
CELLS = """"00.DF" = {{ uint = {generation}, size = 1 }}
"BF.03" = {{ uint = 7, size = 1, writable = true }}
"08.10" = {{ text = "Tap %d" }}
"09.01" = {{ index = 1, strings = ["Off", "On"] }}
[[relay.record]]
column = "30"
number = 1
cells."30.02" = {{ text = "A", label = "Phase %s" }}
"""

MORE_KEYS = {  # of a kind, after those that every event has
    1: ', format = "%d", values = [{ int = 5 }]',
    2: ', text_cell = "08.10", values = [{ int = 7 }]',
    3: ', record = { column = "30", number = 1 }',
    4: ", id = 4",
    5: ', id = 5, record = { column = "30", number = 1 }',
}


def event_toml(text, number, kind):
    time = f"2026-03-05T{number // 3600 % 24:02}:{number // 60 % 60:02}:{number % 60:02}"
    if kind == UNKNOWN:
        return f'{{ kind = 9, elements = [{{ menu = "09.01" }}, {{ time = {time} }}, {{ text = "{text}" }}, {{ uint = 1 }}] }},'
    if kind == MALFORMED:
        return f'{{ kind = 0, elements = [{{ menu = "09.01" }}, {{ text = "{text}" }}] }},'
    return f'{{ kind = {kind}, location = "09.01", time = {time}, text = "{text}", value = {{ index = 1 }}{MORE_KEYS.get(kind, "")} }},'
