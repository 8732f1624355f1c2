"""Relays that never end and relays that never answer, and a night of a thousand slow ones in seconds.

Prints what was measured, too.
"""

import re
import sys
import tempfile
import time

from checks import check, count_checks, equal, wait_for
from substation import Substation

SERIAL = '[link]\nserial = ["COM1"]'
SLOW = {"OpenPort": 2000, "GetValue": 300, "GetDeviceStatus": 100, "GetEvent": 400, "StartGetStrings": 500}
RELAYS = range(1000)
LEFT = "the rest waits in the relay for the next run. Connection details - COM Port: COM1, device address: 1."


def relay(name, where, more):
    return (f'[[relay]]\nname = "{name}"\n{where}\nidentity = {{ model = "EN", serial = "{name}", plant = "Yard", '
            f'description = "Feeder" }}\n{more}')


def fault(operation, more):
    return f'[[fault]]\noperation = "{operation}"\n{more}'


def count_records(site, relay_folder="."):
    """Texts may hold line ends, but every record begins with its file."""
    text = site.ruvoctl("events", "--format", "csv", site.events / relay_folder)
    return len(re.findall(rf'(?m)^"?{re.escape(str(site.events))}/', text))


def size_of(site, name):
    return sum(file.stat().st_size for file in site.day_files(f"EN-{name}"))


def test_endless_relay(site):
    print("A relay that never runs out of events", flush=True)
    site.write_ini("[RUVO_SERIAL]", "RV001=1", "RV002=2")
    site.describe(SERIAL, relay("0001", "serial = 1", "generate = { count = 1000, kinds = [0, 1], seed = 1, endless = true }"),
                  relay("0002", "serial = 2", "generate = { count = 5 }"))
    _, seconds, peak = site.run()
    print(f"  1,000,000 events in {seconds * 1000:.0f} ms, {size_of(site, '0001')} bytes, at most {peak // 1024} MB")
    equal("the visit ends at its limit and says so", site.log(), [f"This visit has taken 1000000 events; {LEFT}"])
    equal("all events taken are stored", count_records(site, "EN-0001"), 1_000_000)
    equal("the next relay is visited", count_records(site, "EN-0002"), 5)


def test_endless_long_events(site):
    print("A relay that never runs out of events as long as can be", flush=True)
    site.start_anew()
    values = '{ text = "' + 255 * "0" + '" }, '
    site.describe(SERIAL, relay("0001", "serial = 1", f"""generate = {{ count = 0, endless = true }}
[[relay.event]]
kind = 1
location = "00.04"
time = 2026-03-05T14:07:10
text = "Long"
value = {{ uint = 1 }}
format = "%s"
values = [{250 * values}]"""), relay("0002", "serial = 2", "generate = { count = 5 }"))
    _, seconds, peak = site.run()
    log = site.log()
    taken = re.match("This visit has taken ([0-9]+)", log[0])[1]
    print(f"  {taken} events in {seconds * 1000:.0f} ms, {size_of(site, '0001')} bytes, at most {peak // 1024} MB")
    equal("the visit ends at 256 MB", size_of(site, "0001") >> 20, 256)
    equal("it says so", log, [f"This visit has taken {taken} events; {LEFT}"])
    equal("the next relay is visited", count_records(site, "EN-0002"), 5)


def test_silent_server(site):
    print("A server that stops answering", flush=True)
    site.start_anew()
    relays = (relay("0001", "serial = 1", "generate = { count = 5 }"),
              relay("0002", "serial = 2", 'cells."09.01" = { flags = 5, size = 1 }\ngenerate = { count = 5 }'))
    site.describe(SERIAL, *relays, fault("StartGetStrings", 'relay = "0002"\ncall = 3\nhang = true'))
    hanging = site.start()
    try:
        wait_for("the end of the relay before it", lambda: size_of(site, "0001") > 0, 10)
        time.sleep(0.5)
        check("the run waits: how long a relay may take is the server's to say", hanging.poll() is None)
        equal("the relay before it is on the disk", count_records(site, "EN-0001"), 5)
        site.run()
        equal("each later run says that one is still there", site.log(), ["Only one instance can be running at one time."])
    finally:
        hanging.kill()
        hanging.wait()
    site.clear_log()
    site.describe(SERIAL, *relays)
    site.run()
    said = site.log()
    check("once it is ended, the next run brings in what the first had taken",
          len(said) == 1 and " of a visit that was ended " in said[0], str(said))
    check("and stores the events", count_records(site, "EN-0002") > 5)


def ip(number):
    return f"10.{number // 250}.{number % 250}.1"


def describe_tunnels(site):
    relays = []
    for number in RELAYS:
        if number % 50 != 7:  # has no tunnel
            relays.append(relay(f"{number:04}", f'ethernet = {{ ip = "{ip(number)}", address = 2 }}',
                                'cells."09.01" = { flags = 5, size = 1, strings = ["Start", "Trip", "Close"] }\n'
                                f"generate = {{ count = 20, kinds = [0, 1, 4], seed = {number} }}"))
    # Some stop answering after ten events.
    relays += [fault("GetEvent", f'relay = "{number:04}"\ncall = 11\nstatus = 8') for number in RELAYS if number % 50 == 21]
    relays += [fault(operation, f"delay = {delay}") for operation, delay in SLOW.items()]
    site.describe('trace = "trace"', "speed = 2000", *relays)


def log_of_tunnels():
    lines = []
    for number in RELAYS:
        if number % 50 == 7:
            lines.append(f'Failed to open ethernet connection. Connection string: TNLC="RPCDll.Dll","{ip(number)}","0","2","0". '
                         "P32LS status: P32LS Error - cannot open port")
        elif number % 50 == 21:
            lines.append(f"A problem occured during events extraction. Connection details - device IP: {ip(number)}, device "
                         "address: 2, bus address: 0. P32LS status: P32LS Error - device is either not connected or not "
                         "responding")
    return lines


def test_slow_tunnels(site):
    print("A thousand relays through slow tunnels", flush=True)
    site.start_anew()
    describe_tunnels(site)
    keys = [f"RV{number:03}={ip(number)},2" for number in RELAYS]
    site.write_ini("UseEthernet=1", "[RUVO_ETHERNET]", *keys[:100])
    _, _, peak_of_100 = site.run()
    site.start_anew()
    site.write_ini("UseEthernet=1", "[RUVO_ETHERNET]", *keys)
    _, seconds, peak = site.run()
    trace = (site.folder / "trace").read_text("utf-8")
    passed = sum(len(re.findall(f"(?m)^{operation} ", trace)) * delay for operation, delay in SLOW.items()) / 1000
    print(f"  {passed / 60:.0f} minutes passed in {seconds:.0f} s; at most {peak // 1024} MB, {peak_of_100 // 1024} MB with the "
          "first 100 relays alone")
    check("several hours pass", passed > 3 * 3600, passed)
    check("memory does not grow with the relays visited", peak < peak_of_100 + 2048, (peak, peak_of_100))
    equal("the log tells of each relay in trouble, and of no other", site.log(), log_of_tunnels())
    equal("every event handed over is stored", count_records(site), 960 * 20 + 20 * 10)
    equal("each relay has its file", len(site.day_files()), 980)


def test():
    with tempfile.TemporaryDirectory() as folder:
        site = Substation(folder)
        for part in (test_endless_relay, test_endless_long_events, test_silent_server, test_slow_tunnels):
            part(site)


if __name__ == "__main__":
    sys.exit(count_checks(test))
