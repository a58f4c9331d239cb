# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Documents that would have the parser do more than parse."""

import pytest
from support.daemon import IS_HARDENED
from support.documents import ip_configuration, time_reference
from support.peers import TcpPeer, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Status, request

DOCTYPE = "warning Document refused: it has a document type declaration"
ENCODING = "warning Document refused: its encoding is not UTF-8"

BOMB = "<!DOCTYPE a [" + "".join(f'<!ENTITY e{n} "&e{n - 1};&e{n - 1};">' for n in range(2, 30)) + "]>"


def test_entities_that_multiply(card: Card, watch: Watch, udp: UdpPeer) -> None:
    document = BOMB + ip_configuration(to="&e29;")
    assert udp.ask(request(Command.IP_GET, document)).header.status == Status.FAILURE
    assert watch.logged(DOCTYPE) == IS_HARDENED


def test_entity_of_a_file(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    document = '<!DOCTYPE a [<!ENTITY e SYSTEM "file:///etc/passwd">]>' + time_reference(server="&e;")
    assert tcp.ask(request(Command.TIME_SET, document)).header.status == Status.FAILURE
    assert watch.logged(DOCTYPE) == IS_HARDENED
    assert not any("root:" in line for line in watch.log())


@pytest.mark.parametrize("encoding", ["ISO-8859-1", pytest.param("EUC-JP", marks=pytest.mark.needs_native)])
def test_encoding_that_the_c_library_may_load_a_module_for(
    scratch_card: Card, watch: Watch, tcp: TcpPeer, encoding: str
) -> None:
    document = f'<?xml version="1.0" encoding="{encoding}"?>' + time_reference()
    status = tcp.ask(request(Command.TIME_SET, document)).header.status
    assert status == (Status.FAILURE if IS_HARDENED else Status.SUCCESS)
    assert watch.logged(ENCODING) == IS_HARDENED


def test_encoding_that_is_usual_is_read_by_both_builds(scratch_card: Card, tcp: TcpPeer) -> None:
    document = '<?xml version="1.0" encoding="UTF-8"?>' + time_reference()
    assert tcp.ask(request(Command.TIME_SET, document)).header.status == Status.SUCCESS
