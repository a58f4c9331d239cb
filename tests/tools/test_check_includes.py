# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

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


def test_a_room_of_the_client_may_not_use_one_above(tree: Path) -> None:
    write(tree, "client/wire/Frame.h", '#include "client/messages/Versions.h"\n')
    write(tree, "client/messages/Versions.h", "")
    assert check_includes.check(tree) == ["client/wire/Frame.h must not include client/messages/Versions.h"]


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
