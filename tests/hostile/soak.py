# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Mixed requests for as long as asked, and what the daemon holds meanwhile."""

from pathlib import Path

from support.documents import ip_configuration
from support.peers import BROADCAST, TcpPeer, UdpPeer
from tarvelsim import Card
from wire import Command, golden, request

from .health import Health

_REQUESTS = 1_000_000
_SAMPLES = 50
_WARM_UP = 1000
_WIDTH, _HEIGHT, _MARGIN = 800, 300, 60


def run(card: Card, client: UdpPeer, scale: float, plot: Path | None) -> int:
    total = max(_SAMPLES, int(_REQUESTS * scale))
    _serve(card, client, _WARM_UP)
    curve = [(0, Health.of(card))]
    while curve[-1][0] < total:
        count = _serve(card, client, total // _SAMPLES)
        curve.append((curve[-1][0] + count, Health.of(card)))
    first, last = curve[0][1], curve[-1][1]
    complaints = first.complaints(last)
    if plot is not None:
        plot.write_text(_drawn(curve))
    print(*complaints, sep="\n")
    print(
        f"soak: {curve[-1][0]} requests, memory {first.memory} kB before and {last.memory} kB after, "
        f"descriptors {first.descriptors} and {last.descriptors}"
    )
    return len(complaints)


def _serve(card: Card, client: UdpPeer, wanted: int) -> int:
    """At least so many requests: most are cheap, four in a hundred run programs of the card."""
    foreign = request(Command.IP_GET, ip_configuration(to="another"))
    count = 0
    while count < wanted:
        with TcpPeer(card.planned_addresses()["eth0"]) as peer:
            for _ in range(20):
                peer.ask(request(Command.VERSIONS))
                peer.ask(request(0x42, "text"))
                peer.ask(request(Command.TIME_SET, "<no-time/>"))
                client.send(foreign, to=BROADCAST)
                client.ask(request(0x42))
            peer.ask(request(Command.TIME_GET))
            peer.ask(golden.UPLOAD.request)
        client.ask(request(Command.IP_GET, ip_configuration()))
        client.ask(golden.IP_SET.request)
        count += 20 * 5 + 4
    return count


def _drawn(curve: list[tuple[int, Health]]) -> str:
    """An SVG plot of the memory over the requests."""
    most = max(health.memory for _, health in curve) * 1.1
    right = curve[-1][0]

    def place(count: int, memory: float) -> str:
        x = _MARGIN + count / right * (_WIDTH - 2 * _MARGIN)
        y = _HEIGHT - _MARGIN - memory / most * (_HEIGHT - 2 * _MARGIN)
        return f"{x:.1f},{y:.1f}"

    line = " ".join(place(count, health.memory) for count, health in curve)
    axes = f"{place(0, most)} {place(0, 0)} {place(right, 0)}"
    text = 'font-family="sans-serif" font-size="13"'
    return (
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {_WIDTH} {_HEIGHT}">\n'
        f'<polyline points="{axes}" fill="none" stroke="gray"/>\n'
        f'<polyline points="{line}" fill="none" stroke="steelblue" stroke-width="2"/>\n'
        f'<text x="{_MARGIN}" y="{_MARGIN - 10}" {text}>private memory in kB, up to {most:.0f}</text>\n'
        f'<text x="{_WIDTH - _MARGIN}" y="{_HEIGHT - _MARGIN + 25}" {text} text-anchor="end">{right} requests</text>\n'
        "</svg>\n"
    )
