"""What the simulated relay of these tests is, and an event that it has."""

SUBSTATION = """[link]
serial = ["COM1"]
[[relay]]
serial = 5
[relay.identity]
model = "AB12-X"
serial = "0001"
plant = "Plant"
"""
EVENT = """[[relay.event]]
kind = 1
location = "01.12"
time = 2026-02-16T13:07:09.029
text = "Trip"
value = { uint = 7, size = 1 }
format = "%d"
values = [{ int = 5, size = 1 }]
"""
