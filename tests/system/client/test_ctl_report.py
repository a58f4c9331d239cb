# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl report"""

import re
import subprocess
from pathlib import Path

import pytest
from support.ctl import Ctl
from support.fake_card import FakeTcpCard, answer
from support.page import Page, contrast
from tarvelsim import Card
from wire import Message, text_payload
from wire.numbers import Command, Format, Status

# What a card may say to be taken for something else: elements, ends of attributes and of the script, ends of lines that are
# none in HTML, control characters, a change of the direction of reading, bytes that are no UTF-8.
ATTACKS = [
    "<script>alert(1)</script>",
    "</script><img src=x onerror=alert(1)>",
    "\"'><svg onload=alert(1)>",
    "{{script}}",
    "&lt;b&gt;&#x3c;",
    "a\u2028b\u2029c",
    "\u202egnp.exe\u2066",
    "\x1b[31m\x01\x7f",
    "<!-- NO-UTF-8",
]


def write(ctl: Ctl, folder: Path, *words: str) -> tuple[int, Page]:
    place = folder / "fleet.html"
    ended = ctl("report", *words, "--output", str(place))
    assert ended.out == ""
    return ended.code, Page(place.read_text(encoding="utf-8"))


def attacker(request: Message) -> bytes:
    """Its component names and versions are attacks; a card escapes nothing, and is read all the same. It has no time."""
    if request.header.command != Command.VERSIONS:
        return answer(request, status=Status.FAILURE)
    rows = "".join(f'\t<Component Id="{text}" Version="{text}"/>\n' for text in ATTACKS)
    report = f"<Versions>\n{rows}</Versions>".encode().replace(b"NO-UTF-8", b"\xff\xc3")
    return answer(request, text_payload(report), Format.SECTION_8)


def test_the_cards_that_answered_are_rows(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    code, page = write(ctl, tmp_path, "rack[1-3]")
    assert code == 0
    assert page.row_heads("versions") == ["Most have", "rack1", "rack2", "rack3"]
    assert page.row_heads("clocks") == page.row_heads("addresses") == ["rack1", "rack2", "rack3"]
    assert "APPL-2.5.1" in page.rows("versions")["rack2"]


def test_addresses_of_both_interfaces_are_told(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    _, page = write(ctl, tmp_path, "rack1")
    cells = page.rows("addresses")["rack1"]
    assert len(cells) == 3
    assert (rack[0].address("eth0") or "") in cells[0]


def test_a_target_that_is_an_address_is_not_asked_for_its_settings(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    address = rack[0].address("eth0") or ""
    code, page = write(ctl, tmp_path, address)
    assert code == 0
    assert page.rows("addresses")[address] == [address, "not asked: only a name can be asked for settings"]


def test_a_name_with_a_noted_address_is_asked_for_its_settings(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    address = rack[0].address("eth0") or ""
    (ctl.config / "groups").write_text(f"rack1 {address}\nnobody {address}\n")
    code, page = write(ctl, tmp_path, "rack1", "nobody", "--retries", "0")
    assert code == 0
    assert address in page.rows("addresses")["rack1"][1]
    assert page.rows("addresses")["nobody"] == [address, "did not tell its settings"]


def test_who_did_not_answer_is_there_with_the_sentence(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    code, page = write(ctl, tmp_path, "rack1", "127.0.0.98", "127.0.0.99")
    assert code == 8
    (reason,) = page.reasons
    assert reason.startswith("refused while connecting")
    assert "127.0.0.98" in reason and "127.0.0.99" in reason
    assert page.row_heads("versions") == ["Most have", "rack1"]


@pytest.mark.usefixtures("rack", "twin")
def test_a_name_of_two_cards_is_told_on_the_page(ctl: Ctl, tmp_path: Path) -> None:
    """The second answer may come late; a name of nobody keeps this run waiting for it."""
    _, page = write(ctl, tmp_path, "rack1", "nobody")
    assert any("rack1: two cards have this name" in reason for reason in page.reasons)


def test_what_a_card_cannot_tell_costs_nothing_else(ctl: Ctl, tmp_path: Path) -> None:
    with FakeTcpCard(attacker) as card:
        code, page = write(ctl, tmp_path, card.address)
    assert code == 3
    assert page.row_heads("versions") == ["Most have", card.address]
    assert "system.ntp.server" in page.reasons[0]


def test_an_odd_version_is_marked(ctl: Ctl, scratch: Card, rack: list[Card], tmp_path: Path) -> None:
    scratch.inside.write("/etc/pnr/kernel", "KERN-5.0.0\n")
    _, page = write(ctl, tmp_path, "rack[1-3]")
    assert [cell for cells in page.rows("versions").values() for cell in cells if "differs" in cell] == [
        "\u2260 differs: KERN-5.0.0"
    ]


def test_the_page_needs_nothing_else(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    _, page = write(ctl, tmp_path, "rack[1-3]")
    page.check()
    for tag, attributes in page.elements:
        assert tag not in {"link", "img", "iframe", "object", "embed", "base"}
        assert not {"src", "action", "style", "srcset"} & set(attributes)
        assert not [name for name in attributes if name.startswith("on")]
        assert attributes.get("href", "#").startswith("#")
    assert "url(" not in page.style and "@import" not in page.style


def test_only_the_pages_own_style_and_script_are_admitted(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    _, page = write(ctl, tmp_path, "rack1")
    assert page.policy == (
        f"default-src 'none'; style-src {page.hash_of(page.style)}; script-src {page.hash_of(page.script)}; "
        "base-uri 'none'; form-action 'none'"
    )


def test_no_text_of_a_card_is_markup(ctl: Ctl, tmp_path: Path) -> None:
    with FakeTcpCard(attacker) as card:
        _, page = write(ctl, tmp_path, card.address)
    page.check()
    text = page.text
    assert "<script>alert(1)</script>" in text
    assert "{{script}}" in text
    assert r"\xe2\x80\xae" in text and r"\xff\xc3" in text and r"\x1b[31m" in text
    assert not re.search("[\x00-\x09\x0b-\x1f\x7f-\x9f\u2028-\u202e\u2066-\u2069\ufffd]", page.source)
    assert [tag for tag, _ in page.elements].count("script") == 1


def test_colours_are_legible(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    _, page = write(ctl, tmp_path, "rack1")
    schemes = [dict(re.findall(r"--([\w-]+): (#\w{6})", block)) for block in re.findall(r":root \{(.*?)\}", page.style, re.S)]
    assert len(schemes) == 3  # light, dark, on paper
    for colours in schemes:
        for ink, paper in (("text", "page"), ("text", "raised"), ("quiet", "page"), ("quiet", "raised"), ("link", "page")):
            assert contrast(colours[ink], colours[paper]) >= 4.5, (ink, paper)
        assert contrast(colours["odd-text"], colours["odd"]) >= 4.5
        assert contrast(colours["dot"], colours["page"]) >= 3


def test_an_earlier_file_is_replaced_as_a_whole(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    (tmp_path / "fleet.html").write_text("earlier")
    _, page = write(ctl, tmp_path, "rack1")
    page.check()
    assert [path.name for path in tmp_path.iterdir() if path.is_file()] == ["fleet.html"]


def test_a_place_where_nothing_can_be_written_is_exit_10(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    assert ctl("report", "rack1", "--output", str(tmp_path / "nowhere" / "fleet.html")).code == 10


def test_without_a_file_the_page_is_the_output(ctl: Ctl, rack: list[Card]) -> None:
    answered = ctl("report", "rack1")
    assert answered.code == 0
    Page(answered.out).check()


def test_as_json_it_tells_the_same(ctl: Ctl, rack: list[Card]) -> None:
    result = ctl.json("report", "rack1").result
    assert result["asked_at"] == result["heard_from"] == rack[0].address("eth0")
    assert {"component": "kernel", "version": "KERN-6.1.0"} in result["components"]


def in_browser(place: Path, wish: str, fragment: str = "") -> str:
    """The browser's complaints would be lines of its log."""
    browser = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--enable-logging=stderr", wish]
    profile = f"--user-data-dir={place.parent / 'profile'}"
    ended = subprocess.run(
        [*browser, profile, f"file://{place}{fragment}"], capture_output=True, text=True, timeout=300, check=True
    )
    assert "CONSOLE" not in ended.stderr
    return ended.stdout


def shown_in_browser(place: Path, fragment: str = "") -> Page:
    """The page after its script."""
    return Page(in_browser(place, "--dump-dom", fragment))


def printed(place: Path, margins: str) -> list[str]:
    """The text of each sheet. The margins are part of the style, which the page's policy fixes."""
    source = place.read_text(encoding="utf-8").replace("@page { margin: 14mm; }", f"@page {{ margin: {margins}; }}")
    place.write_text(re.sub('<meta http-equiv="Content-Security-Policy".*', "", source), encoding="utf-8")
    document = place.with_suffix(".pdf")
    in_browser(place, f"--print-to-pdf={document}")
    text = subprocess.run(["pdftotext", "-layout", str(document), "-"], capture_output=True, text=True, check=True).stdout
    return text.split("\f")


@pytest.mark.long
def test_a_browser_sorts_and_filters(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    write(ctl, tmp_path, "rack[1-3]", "127.0.0.99")
    place = tmp_path / "fleet.html"
    page = shown_in_browser(place)
    assert ("html", {"lang": "en", "data-script": "ran"}) in page.elements
    page = shown_in_browser(place, "#?versions-table=0-&show=&words=rack")
    assert page.row_heads("versions") == ["Most have", "rack3", "rack2", "rack1"]
    assert [attributes["aria-sort"] for _, attributes in page.elements if "aria-sort" in attributes] == ["descending"]
    assert "3 of 4 cards" in page.text


@pytest.mark.long
def test_on_paper_each_sheet_of_a_table_has_its_heading(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    write(ctl, tmp_path, "rack[1-8]")
    with_versions = [sheet for sheet in printed(tmp_path / "fleet.html", "110mm 14mm") if "DRAV-2001-03" in sheet]
    assert len(with_versions) > 1
    assert all("BootLoader" in sheet for sheet in with_versions)


@pytest.mark.long
def test_a_browser_runs_nothing_that_a_card_says(ctl: Ctl, tmp_path: Path) -> None:
    with FakeTcpCard(attacker) as card:
        write(ctl, tmp_path, card.address)
    page = shown_in_browser(tmp_path / "fleet.html")
    assert ("html", {"lang": "en", "data-script": "ran"}) in page.elements
    assert [tag for tag, _ in page.elements].count("script") == 1
