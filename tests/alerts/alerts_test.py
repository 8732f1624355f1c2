"""Alert rules and metrics, as Prometheus' own tool sees them.
    alerts_test.py BIN      the folder of the programs
"""

import pathlib
import re
import sys
import tempfile

from checks import check, count_checks, equal, must, run
from substation import Substation

RULES = pathlib.Path("packaging/prometheus/ruvo.rules.yml")
CASES = pathlib.Path("tests/alerts/rules_cases.yml")
NAME = r"\bruvo_[a-z_]+"


def test_rules():
    must("promtool", "check", "rules", RULES)
    done = run("promtool", "test", "rules", CASES)
    check("each rule fires when it should, and not before", done.returncode == 0, done.stdout)
    alerts = set(re.findall(r"- alert: (\w+)", RULES.read_text("utf-8")))
    cases = re.findall(r"alertname: (\w+)\n +exp_alerts: *(.*)", CASES.read_text("utf-8"))
    equal("each rule has a case in which it fires", {alert for alert, wanted in cases if not wanted}, alerts)
    equal("and one in which it does not", {alert for alert, wanted in cases if wanted == "[]"}, alerts)


def metrics_of(folder):
    """Of a site that was visited, and one whose file cannot be read."""
    site = Substation(folder, sys.argv[1])
    site.describe(pathlib.Path("examples/substation/substation.toml").read_text("utf-8"))
    ini = pathlib.Path("examples/substation/ethernet.ini").read_text("utf-8")
    (folder / "sites").mkdir()
    ini = re.sub(r"(?m)^EventRootDir=.*", f"EventRootDir={site.events}", ini)
    ini = re.sub(r"(?m)^ErrorLogPathname=.*", f"ErrorLogPathname={folder}/log", ini)
    (folder / "sites/north.ini").write_text(ini, "utf-8")
    (folder / "sites/gone.ini").symlink_to("nowhere")
    must(site.bin / "ruvo", folder / "sites/north.ini", env=site.environment)
    file = folder / "ruvo.prom"
    site.ruvoctl("status", "--all", folder / "sites", "--prometheus", file)
    return file.read_text("utf-8")


def test_metrics(folder):
    text = metrics_of(folder)
    done = run("promtool", "check", "metrics", input=text)
    check("the metrics are what Prometheus wants", done.returncode == 0 and not done.stdout, done.stdout)
    names = set(re.findall(rf"(?m)^({NAME})\{{", text))
    check("there are some of a relay", "ruvo_relay_reached" in names, names)
    used = set(re.findall(NAME, "".join(re.findall(r"(?m)^ +expr: .*$", RULES.read_text("utf-8")))))
    equal("every metric that a rule asks for is written", used - names, set())
    documented = set(re.findall(NAME, pathlib.Path("docs/watching.md").read_text("utf-8")))
    equal("the metrics are those of the manual", names ^ documented, set())


def test():
    test_rules()
    with tempfile.TemporaryDirectory(prefix="ruvo-alerts-") as folder:
        test_metrics(pathlib.Path(folder))


sys.exit(count_checks(test))
