#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Fails on an include that points against the arrows of the architecture, or on a cycle of includes.

Usage: check_includes.py [ROOT]
"""

import re
import sys
from pathlib import Path

# Who may include whom, by folder of src/. A folder may always include itself.
ARROWS: dict[str, set[str]] = {
    "core": {"services", "protocol", "util"},
    "services": {"protocol", "net", "uci", "timesettings", "util"},
    "protocol": {"net", "util"},
    "timesettings": {"uci", "util"},
    "net": {"util"},
    "uci": {"util"},
    "util": set(),
}

# The same within the client. Its commands may use every room.
CLIENT_ARROWS: dict[str, set[str]] = {
    "model": set(),
    "engine": set(),
    "xml": set(),
    "output": {"model"},
    "wire": {"engine", "model", "output"},
    "messages": {"wire", "xml", "model"},
    "plan": {"messages", "model"},
    "targets": {"wire", "model"},
    "decode": {"wire", "xml", "model"},
    "completion": {"cli"},
}

# The one exception: the card's host name is a setting.
EXCEPTIONS = {("util/LibUtilsHost.cpp", "uci/Uci.h")}

# What the client shares with the daemon: the codec, and whatever the codec itself includes.
SHARED_CODEC = {f"protocol/{name}.h" for name in ("MessageHeader", "Message", "DatagramBuffer", "WireOrder")}

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
    for base, folder in ((root / "src", root / "src"), (root, root / "client")):
        for path in sorted(p for p in folder.rglob("*") if p.suffix in {".h", ".cpp"}):
            name = path.relative_to(base).as_posix()
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


def may_include_in_client(name: str, target: str) -> bool:
    room, other = name.split("/")[1], target.split("/")[1]
    return room == other or room not in CLIENT_ARROWS or other in CLIENT_ARROWS[room]


def may_include(name: str, target: str, codec: set[str]) -> bool:
    source, destination = name.split("/")[0], target.split("/")[0]
    if source == "client":
        return target in codec or destination == "client" and may_include_in_client(name, target)
    return source == destination or (name, target) in EXCEPTIONS or destination in ARROWS.get(source, set())


def check_arrows(quoted: Graph) -> list[str]:
    sources = {name.removesuffix(".h") + ".cpp" for name in SHARED_CODEC}
    codec = reachable(quoted, SHARED_CODEC | sources)
    complaints = []
    for name, targets in quoted.items():
        for target in targets:
            if target not in quoted:
                complaints.append(f'{name}: "{target}" is no file of ours (write "folder/File.h")')
            elif not may_include(name, target, codec):
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
    return check_arrows(quoted) + check_xml(angled) + check_own_header_first(quoted) + check_cycles(quoted)


def main() -> int:
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    complaints = check(root)
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
