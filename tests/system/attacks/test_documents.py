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


def test_document_of_as_many_attributes_as_fit(card: Card, udp: UdpPeer) -> None:
    many = "".join(f' a{number}=""' for number in range(515))
    document = ip_configuration().replace("/>", f"{many}/>")
    assert 4000 < len(document) < 4072
    assert udp.ask(request(Command.IP_GET, document)).header.status == Status.SUCCESS


def test_elements_in_each_other_without_end(scratch_card: Card, udp: UdpPeer) -> None:
    document = ip_configuration("<a>" * 1300)
    assert udp.ask(request(Command.IP_SET, document)).header.status == Status.FAILURE
    assert scratch_card.inside.uci("changes") == ""


def test_document_behind_the_nul_that_ends_another(scratch_card: Card, tcp: TcpPeer) -> None:
    both = time_reference(server="10.9.9.9") + "\0" + time_reference(server="x; touch /tmp/ran")
    assert tcp.ask(request(Command.TIME_SET, both)).header.status == Status.SUCCESS
    assert scratch_card.inside.uci("get", "system.ntp.server") == "10.9.9.9"
    assert not scratch_card.inside.exists("/tmp/ran")


def test_nul_in_the_middle_of_an_attribute(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    cut = time_reference(server="10.9.9.9\0")
    assert tcp.ask(request(Command.TIME_SET, cut)).header.status == Status.FAILURE
    assert not any("uci" in command for command in watch.commands())


def test_markup_in_the_name_of_who_asks(card: Card, udp: UdpPeer) -> None:
    """The card tells everybody what that client has made up, as its own words."""
    forged = 'x"><Interface Name="VemkEth1" Mode="Dhcp'
    escaped = forged.replace('"', "&quot;").replace("<", "&lt;")
    answer = udp.ask(request(Command.IP_GET, ip_configuration(sender=escaped)))
    assert answer.text.startswith(f'<IpConfiguration From="card1" To="{forged}">')
