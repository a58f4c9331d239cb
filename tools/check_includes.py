#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Fails on an include that points against the arrows of the architecture, or on a cycle of includes.

Usage: check_includes.py [ROOT]
"""

import re
import sys
from pathlib import Path

import checking

# Who may include whom, by folder of src/. A folder may always include itself.
ARROWS: dict[str, set[str]] = {
    "core": {"services", "protocol", "util"},
    "services": {"protocol", "uci", "timesettings", "util", "hardening"},
    "protocol": {"net", "util"},
    "timesettings": {"uci", "util", "hardening"},
    "net": {"util"},
    "uci": {"util"},
    "util": {"hardening"},
    "hardening": set(),
}

# The same within the client.
CLIENT_ARROWS: dict[str, set[str]] = {
    "model": set(),
    "engine": set(),
    "xml": set(),
    "output": {"model"},
    "wire": {"engine", "model"},
    "messages": {"xml", "model"},
    "plan": {"messages", "model"},
    "firmware": {"engine", "model"},
    "card": {"firmware", "plan", "messages", "wire", "engine", "model"},
    "report": {"firmware", "messages", "output", "model"},
    "targets": {"card", "wire", "model"},
    "decode": {"wire", "xml", "model"},
    "completion": {"cli"},
    "cli": {"targets", "wire", "output", "engine", "model"},
    "commands": {
        "completion", "decode", "cli", "targets", "card", "report", "firmware", "plan", "messages", "wire", "output",
        "engine", "model",
    },
}

# The programs of the simulated card know nothing but themselves, and the fakes of the tests nothing of what they serve.
OTHER_ARROWS: dict[str, set[str]] = {
    "client": {"client/cli"},
    "sim/uci": set(),
    "sim/gate": set(),
    "sim/setlbf": set(),
    "support": set(),
}

# Where sources are, and from where an include names them.
TREES = {"src": "src", "client": ".", "sim": ".", "tests/support": "tests"}

# The one exception: the card's host name is a setting.
EXCEPTIONS = {("util/LibUtilsHost.cpp", "uci/Uci.h")}

CODEC = ("Commands", "DatagramBuffer", "Message", "MessageHeader", "TextSection", "WireOrder")

# What the client shares with the daemon: the codec, what both hold against archives and unsigned firmware, and whatever these
# themselves include.
SHARED = {f"protocol/{name}.h" for name in CODEC} | {"hardening/FirmwareSums.h", "hardening/MemberRules.h"}

# libxml2 is met in one room on each side.
XML_ROOMS = re.compile(r"(services/XmlReader|client/xml/Xml\w*)\.(h|cpp)")

# These report on standard output and standard error, never through the log.
WITHOUT_LOG = re.compile(r"util/LibUtils\w*\.(h|cpp)|uci/\w+\.(h|cpp)")

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)

Graph = dict[str, list[str]]


def read_includes(root: Path) -> tuple[Graph, Graph]:
    """The quoted and the angled includes of each source file, named as an include names it ("util/Log.h")."""
    quoted: Graph = {}
    angled: Graph = {}
    for folder, base in TREES.items():
        for path in sorted(p for p in (root / folder).rglob("*") if p.suffix in {".h", ".cpp"}):
            name = path.relative_to(root / base).as_posix()
            found = INCLUDE.findall(path.read_text(encoding="utf-8"))
            quoted[name] = [target for mark, target in found if mark == '"']
            angled[name] = [target for mark, target in found if mark == "<"]
    return quoted, angled


def reachable(quoted: Graph, starts: set[str]) -> set[str]:
    seen: set[str] = set()
    waiting = [name for name in starts if name in quoted]
    while waiting:
        name = waiting.pop()
        if name not in seen:
            seen.add(name)
            waiting += [target for target in quoted[name] if target in quoted]
    return seen


def all_arrows() -> dict[str, set[str]]:
    client = {f"client/{room}": {f"client/{other}" for other in others} for room, others in CLIENT_ARROWS.items()}
    return ARROWS | client | OTHER_ARROWS


def room_of(name: str) -> str:
    folder = name.rpartition("/")[0]
    return "/".join(folder.split("/")[:2])


def may_include(name: str, target: str, codec: set[str]) -> bool:
    room, other = room_of(name), room_of(target)
    if room.partition("/")[0] == "client" and target in codec:
        return True
    return room == other or (name, target) in EXCEPTIONS or other in all_arrows().get(room, set())


def check_rooms(quoted: Graph) -> list[str]:
    rooms = sorted({room_of(name) for name in quoted} - set(all_arrows()))
    return [f"{room or 'src'}: whom this room may include is not said in check_includes.py" for room in rooms]


def check_unused_arrows(quoted: Graph) -> list[str]:
    """An arrow that nothing goes along is an invitation."""
    used = {(room_of(name), room_of(target)) for name, targets in quoted.items() for target in targets}
    arrows = sorted((room, other) for room, others in all_arrows().items() for other in others)
    return [f"check_includes.py: nothing in {room} includes {other}" for room, other in arrows if (room, other) not in used]


def check_arrows(quoted: Graph) -> list[str]:
    sources = {name.removesuffix(".h") + ".cpp" for name in SHARED}
    shared = reachable(quoted, SHARED | sources)
    complaints = []
    for name, targets in quoted.items():
        for target in targets:
            if target not in quoted:
                complaints.append(f'{name}: "{target}" is no file of ours (write "folder/File.h")')
            elif not may_include(name, target, shared):
                complaints.append(f"{name} must not include {target}")
            elif target == "util/Log.h" and WITHOUT_LOG.fullmatch(name):
                complaints.append(f"{name} must not log: it reports on standard output and standard error")
    return complaints


def check_xml(angled: Graph) -> list[str]:
    return [
        f"{name} must not include {target}: libxml2 stays in its room"
        for name, targets in angled.items()
        for target in targets
        if target.startswith("libxml/") and not XML_ROOMS.fullmatch(name)
    ]


def check_own_header_first(quoted: Graph) -> list[str]:
    complaints = []
    for name, targets in quoted.items():
        own = name.removesuffix(".cpp") + ".h"
        if name.endswith(".cpp") and own in quoted and targets[:1] != [own]:
            complaints.append(f"{name} must include its own header first")
    return complaints


def check_cycles(quoted: Graph) -> list[str]:
    complaints: list[str] = []
    done: set[str] = set()

    def walk(name: str, path: list[str]) -> None:
        if name in path:
            complaints.append("cycle: " + " -> ".join([*path[path.index(name) :], name]))
        elif name not in done:
            for target in quoted.get(name, []):
                walk(target, [*path, name])
            done.add(name)

    for name in quoted:
        walk(name, [])
    return complaints


def check(root: Path) -> list[str]:
    quoted, angled = read_includes(root)
    if not quoted:
        return [f"no sources below {root}"]
    return check_rooms(quoted) + check_arrows(quoted) + check_xml(angled) + check_own_header_first(quoted) + check_cycles(quoted)


def check_all(root: Path) -> list[str]:
    return check(root) + check_unused_arrows(read_includes(root)[0])


if __name__ == "__main__":
    sys.exit(checking.run(check_all))
