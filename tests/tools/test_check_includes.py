# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

import re
from pathlib import Path

import check_includes
import pytest


@pytest.fixture
def tree(tmp_path: Path) -> Path:
    """The smallest tree that has nothing wrong with it."""
    write(tmp_path, "src/util/Log.h", "#include <string>\n")
    write(tmp_path, "src/uci/Uci.h", "")
    write(tmp_path, "src/net/Socket.h", '#include "util/Log.h"\n')
    write(tmp_path, "src/protocol/Message.h", '#include "protocol/MessageHeader.h"\n')
    write(tmp_path, "src/protocol/MessageHeader.h", "")
    write(tmp_path, "src/services/XmlReader.cpp", "#include <libxml/xmlreader.h>\n")
    return tmp_path


def write(root: Path, name: str, text: str) -> None:
    path = root / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")


def test_a_tree_that_follows_the_arrows_passes(tree: Path) -> None:
    assert check_includes.check(tree) == []


def test_an_empty_tree_does_not_pass(tmp_path: Path) -> None:
    assert check_includes.check(tmp_path) != []


def test_an_include_against_the_arrows_is_refused(tree: Path) -> None:
    write(tree, "src/util/File.h", '#include "net/Socket.h"\n')
    assert check_includes.check(tree) == ["util/File.h must not include net/Socket.h"]


def test_the_host_name_may_ask_the_settings(tree: Path) -> None:
    write(tree, "src/util/LibUtilsHost.cpp", '#include "uci/Uci.h"\n')
    assert check_includes.check(tree) == []


def test_nobody_else_in_util_may_ask_the_settings(tree: Path) -> None:
    write(tree, "src/util/LibUtilsFiles.cpp", '#include "uci/Uci.h"\n')
    assert check_includes.check(tree) == ["util/LibUtilsFiles.cpp must not include uci/Uci.h"]


def test_the_utilities_do_not_log(tree: Path) -> None:
    write(tree, "src/util/LibUtilsFiles.cpp", '#include "util/Log.h"\n')
    assert "must not log" in check_includes.check(tree)[0]


def test_libxml2_stays_in_its_room(tree: Path) -> None:
    write(tree, "src/services/Envelope.cpp", "#include <libxml/tree.h>\n")
    assert "libxml2 stays in its room" in check_includes.check(tree)[0]


def test_the_client_may_use_the_codec(tree: Path) -> None:
    write(tree, "client/Request.cpp", '#include "protocol/Message.h"\n')
    assert check_includes.check(tree) == []


def test_the_client_shares_the_rules_for_members_and_no_other(tree: Path) -> None:
    write(tree, "src/hardening/MemberRules.h", "")
    write(tree, "src/hardening/NtpServerRule.h", "")
    write(tree, "client/wire/Frame.h", '#include "hardening/MemberRules.h"\n#include "hardening/NtpServerRule.h"\n')
    assert check_includes.check(tree) == ["client/wire/Frame.h must not include hardening/NtpServerRule.h"]


def test_a_room_of_the_client_may_not_use_one_above(tree: Path) -> None:
    write(tree, "client/wire/Frame.h", '#include "client/messages/Versions.h"\n')
    write(tree, "client/messages/Versions.h", "")
    assert check_includes.check(tree) == ["client/wire/Frame.h must not include client/messages/Versions.h"]


@pytest.mark.parametrize(
    ("name", "target"),
    [
        ("client/cli/Cli.cpp", "client/commands/Commands.h"),
        ("client/wire/Frame.cpp", "client/cli/Cli.h"),
        ("client/completion/Scripts.cpp", "client/wire/Frame.h"),
        ("client/decode/Meanings.cpp", "client/engine/Task.h"),
        ("client/main.cpp", "client/commands/Commands.h"),
        ("client/commands/RawCommand.cpp", "client/xml/XmlText.h"),
        ("client/card/Upload.cpp", "client/cli/Context.h"),
        ("sim/uci/Key.cpp", "util/Log.h"),
        ("sim/gate/gate.cpp", "sim/uci/Key.h"),
        ("support/Sandbox.cpp", "util/Log.h"),
        ("util/File.cpp", "client/cli/Cli.h"),
    ],
)
def test_each_room_has_arrows(tree: Path, name: str, target: str) -> None:
    for file, text in ((target, ""), (name, f'#include "{target}"\n')):
        base = {"client": "", "sim": "", "support": "tests/"}.get(file.split("/")[0], "src/")
        write(tree, base + file, text)
    assert check_includes.check(tree) == [f"{name} must not include {target}"]


def test_an_arrow_that_nothing_goes_along_is_refused() -> None:
    quoted = {
        f"{room}/A.h": [f"{other}/A.h" for other in sorted(others)] for room, others in check_includes.all_arrows().items()
    }
    assert check_includes.check_unused_arrows(quoted) == []
    quoted["uci/A.h"].remove("util/A.h")
    assert check_includes.check_unused_arrows(quoted) == ["check_includes.py: nothing in uci includes util"]


@pytest.mark.parametrize("name", ["client/attic/Old.h", "src/attic/Old.h", "src/Old.h", "sim/attic/Old.h"])
def test_a_room_that_nobody_knows_is_refused(tree: Path, name: str) -> None:
    write(tree, name, "")
    assert "is not said in check_includes.py" in check_includes.check(tree)[0]


def test_the_client_may_not_use_sockets_of_the_daemon(tree: Path) -> None:
    write(tree, "client/Request.cpp", '#include "net/Socket.h"\n')
    assert check_includes.check(tree) == ["client/Request.cpp must not include net/Socket.h"]


def test_a_name_without_its_folder_is_refused(tree: Path) -> None:
    write(tree, "src/net/TcpSocket.h", '#include "Socket.h"\n')
    assert "no file of ours" in check_includes.check(tree)[0]


def test_the_own_header_comes_first(tree: Path) -> None:
    write(tree, "src/net/Socket.cpp", '#include "util/Log.h"\n#include "net/Socket.h"\n')
    assert check_includes.check(tree) == ["net/Socket.cpp must include its own header first"]


def test_a_cycle_is_found(tree: Path) -> None:
    write(tree, "src/protocol/MessageHeader.h", '#include "protocol/Message.h"\n')
    assert check_includes.check(tree) == [
        "cycle: protocol/Message.h -> protocol/MessageHeader.h -> protocol/Message.h"
    ]


def test_the_page_lists_each_room_of_the_client_below_those_that_it_uses() -> None:
    page = (Path(__file__).parents[2] / "docs/architecture.md").read_text(encoding="utf-8")
    listed = re.findall(r"^\| `(\w+)` \|", page, re.MULTILINE)
    assert sorted(listed) == sorted(check_includes.CLIENT_ARROWS)
    for place, room in enumerate(listed):
        assert check_includes.CLIENT_ARROWS[room] <= set(listed[:place]), room
