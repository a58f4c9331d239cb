# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The metrics, the rules and the units, with the programs that they are for."""

import re
import shlex
import shutil
import subprocess
import time
from collections.abc import Iterator
from pathlib import Path

import pytest
import tarvelsim
from prometheus import families, get, node_exporter, prometheus, promtool, series
from support.ctl import Answer, Ctl
from support.daemon import COMMAND
from support.fake_card import FakeTcpCard, answer
from wire import Command, Message
from wire.message import text_payload
from wire.numbers import Format

PACKAGED = Path(__file__).parents[2] / "packaging/prometheus"
RULES = PACKAGED / "rules/tarvel.yml"
SERVICE = PACKAGED / "tarvelctl-metrics.service"
TIMER = PACKAGED / "tarvelctl-metrics.timer"

# A card escapes nothing.
HOSTILE = (
    b'<Versions>\n\t<Component Id="a"b\\" Version="1\ntarvel_up 7\n# EOF"/>\n'
    b'\t<Component Id="same" Version="1"/>\n\t<Component Id="same" Version="1"/>\n\t<Component Id="" Version=""/>\n'
    b'\t<Component Id="{},=" Version="\xff\xe2\x80\xae\xc3\xa4\x07"/>\n</Versions>'
)
TIME = b'<TimeReferenceConfiguration Mode="Ntp" NtpServer=""}\\" DateTime="2026-03-04T05:06:07"/>'


@pytest.fixture
def ctl(tmp_path: Path) -> Ctl:
    return Ctl(Path(COMMAND[-1]).resolve().parent / "tarvelctl", tmp_path)


@pytest.fixture(scope="module")
def card() -> Iterator[tarvelsim.Card]:
    with tarvelsim.Lan.current().card("card1", command=COMMAND) as card:
        yield card


def hostile(request: Message) -> bytes:
    text = HOSTILE if request.header.command == Command.VERSIONS else TIME
    return answer(request, text_payload(text), Format.SECTION_8)


@pytest.fixture
def polled(ctl: Ctl, card: tarvelsim.Card, tmp_path: Path) -> Answer:
    """A card, one that has no daemon, one without an address, and one that means no good."""
    (ctl.config / "groups").write_text(f"card1 {card.address('eth0')}\ncard2 127.0.0.99\nevil 127.0.0.77\n")
    with FakeTcpCard(hostile):
        return ctl("metrics", "card[1-3]", "evil")


def test_promtool_finds_nothing_to_complain_about(polled: Answer) -> None:
    assert promtool("check", "metrics", input=polled.out) == (0, "")


def test_what_promtool_does_not_look_at(polled: Answer) -> None:
    assert len(set(series(polled.out))) == len(series(polled.out))
    assert len(set(families(polled.out))) == len(families(polled.out))
    for line in polled.out.splitlines():
        # a value, and no time behind it
        assert line.startswith("# ") or re.fullmatch(r"tarvel_\w+({.*})? [-+.\de]+", line)


def test_promtool_does_complain(polled: Answer) -> None:
    for broken in (polled.out.rstrip("\n"), polled.out.replace("_seconds", "_minutes"), polled.out.replace("# HELP", "#")):
        assert promtool("check", "metrics", input=broken)[0] != 0


def test_the_rules_are_rules() -> None:
    code, said = promtool("check", "rules", "--lint-fatal", str(RULES))
    assert (code, "SUCCESS: 6 rules found" in said) == (0, True), said


def test_the_rules_say_when_they_should() -> None:
    code, said = promtool("test", "rules", str(RULES.with_name("tarvel_test.yml")))
    assert code == 0, said


def test_every_rule_is_tested_in_both_directions() -> None:
    tests = RULES.with_name("tarvel_test.yml").read_text()
    for alert in re.findall(r"- alert: (\w+)", RULES.read_text()):
        cases = re.findall(rf"alertname: {alert}\n +eval_time: \w+\n +exp_alerts:( \[\])?", tests)
        assert "" in cases, alert


def test_rules_use_metrics_that_there_are(polled: Answer) -> None:
    used = set(re.findall(r"tarvel_\w+", RULES.read_text()))
    assert used <= set(families(polled.out))


def test_prometheus_reads_what_the_card_told(ctl: Ctl, card: tarvelsim.Card, polled: Answer, tmp_path: Path) -> None:
    folder = tmp_path / "textfile"
    folder.mkdir()
    with FakeTcpCard(hostile):
        assert ctl("metrics", "card[1-3]", "evil", "--output", str(folder / "tarvel.prom")).code == 8
    with node_exporter(folder, tmp_path / "node_exporter.log") as exporter:
        assert "\nnode_textfile_scrape_error 0\n" in get(f"{exporter}/metrics")
        with prometheus(exporter, RULES, tmp_path) as server:
            assert server.wait_for("tarvel_up") == {"card=card1": 1, "card=card2": 0, "card=card3": 0, "card=evil": 1}
            assert server.query("tarvel_component_info{card='evil',component='a\"b\\\\'}") == {
                'card=evil,component=a"b\\,version=1\\x0atarvel_up 7\\x0a# EOF': 1
            }
            versions = ctl.json("versions", "card1").result["components"]
            assert server.query("tarvel_component_info{card='card1'}") == {
                f"card=card1,component={row['component']},version={row['version']}": 1 for row in versions
            }
            (end,) = server.query("tarvel_poll_last_success_timestamp_seconds").values()
            assert time.time() - 3600 < end <= time.time()
            (address,) = server.query("tarvel_up{card='card1'} * on (card) group_left(address) tarvel_card_info")
            assert f"address={card.address('eth0')}" in address
            assert set(server.rules().values()) <= {"ok", "unknown"}
    assert "was collected before" not in (tmp_path / "node_exporter.log").read_text()


def setting(name: str) -> str:
    (value,) = re.findall(rf"^{name}=(.*)$", SERVICE.read_text(), re.MULTILINE)
    assert isinstance(value, str)
    return value


def test_the_service_runs_a_command_line_that_there_is(ctl: Ctl, card: tarvelsim.Card, tmp_path: Path) -> None:
    (tmp_path / "groups").write_text(f"@all card[1-2]\ncard1 {card.address('eth0')}\ncard2 127.0.0.99\n")
    words = shlex.split(setting("ExecStart").replace("$TARGETS", setting("Environment").removeprefix("TARGETS=")))
    assert words.pop(0) == "/usr/bin/tarvelctl"
    places = {"/etc/tarvelctl/groups": tmp_path / "groups", "/var/lib/prometheus/node-exporter/tarvel.prom": tmp_path / "prom"}
    told = ctl(*(str(places.pop(word, word)) for word in words))
    assert places == {}
    assert str(told.code) in setting("SuccessExitStatus").split()
    assert 'tarvel_up{card="card1"} 1\n' in (tmp_path / "prom").read_text()


systemd = pytest.mark.skipif(shutil.which("systemd-analyze") is None, reason="no systemd here")


@systemd
def test_systemd_understands_the_units(ctl: Ctl, tmp_path: Path) -> None:
    units = []
    for unit in (SERVICE, TIMER):
        units.append(tmp_path / unit.name)
        units[-1].write_text(unit.read_text().replace("/usr/bin/tarvelctl", str(ctl.program)))
    said = subprocess.run(["systemd-analyze", "verify", "--man=no", *units], capture_output=True, text=True, check=False)
    assert (said.returncode, said.stdout + said.stderr) == (0, "")


@systemd
def test_the_service_may_do_little() -> None:
    words = ["systemd-analyze", "security", "--offline=true", "--threshold=20", str(SERVICE)]
    said = subprocess.run(words, capture_output=True, text=True, check=False)
    assert said.returncode == 0, said.stdout + said.stderr


def calls_of(group: str) -> set[str]:
    """The system calls that systemd means by such a word."""
    words = ["systemd-analyze", "syscall-filter", "--no-pager", group]
    listed = subprocess.run(words, capture_output=True, text=True, check=True).stdout
    members = re.findall(r"^    ([@\w-]+)$", listed, re.MULTILINE)
    return {call for word in members for call in (calls_of(word) if word.startswith("@") else {word})}


@systemd
def test_the_service_may_do_all_that_the_program_does(ctl: Ctl, card: tarvelsim.Card, tmp_path: Path) -> None:
    traced = Ctl(Path("/usr/bin/strace"), tmp_path / "traced")
    address = card.address("eth0") or ""
    told = traced(
        *("-f", "-qq", "-o", str(tmp_path / "trace"), str(ctl.program), "--timeout", "1", "--retries", "0"),
        *("metrics", address, "127.0.0.99", "10.0.0.250", "--output", str(tmp_path / "prom")),
    )
    assert told.code == 8, told
    made = set(re.findall(r"^\d+ +(\w+)\(", (tmp_path / "trace").read_text(), re.MULTILINE))
    assert "connect" in made
    filters = re.findall(r"^SystemCallFilter=(~?)(.*)$", SERVICE.read_text(), re.MULTILINE)
    allowed: set[str] = calls_of("@default")
    for negated, groups in filters:
        for group in groups.split():
            allowed = allowed - calls_of(group) if negated else allowed | calls_of(group)
    refused = made - allowed
    assert refused == set()
    families_used = set(re.findall(r"socket\((AF_\w+)", (tmp_path / "trace").read_text()))
    assert families_used <= set(setting("RestrictAddressFamilies").split())
