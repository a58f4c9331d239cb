// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Command.h"

#include <array>
#include <memory>

// One maker per command, each defined at the end of the command's own file.
std::unique_ptr<Command> makeCompletion();
std::unique_ptr<Command> makeDecode();
std::unique_ptr<Command> makeDiscover();
std::unique_ptr<Command> makeFirmwareCheck();
std::unique_ptr<Command> makeFirmwareUpgrade();
std::unique_ptr<Command> makeFirmwareUpload();
std::unique_ptr<Command> makeIpGet();
std::unique_ptr<Command> makeIpRescue();
std::unique_ptr<Command> makeIpSet();
std::unique_ptr<Command> makeMetrics();
std::unique_ptr<Command> makeRaw();
std::unique_ptr<Command> makeReboot();
std::unique_ptr<Command> makeReport();
std::unique_ptr<Command> makeStatus();
std::unique_ptr<Command> makeTimeGet();
std::unique_ptr<Command> makeTimeSet();
std::unique_ptr<Command> makeVersions();
std::unique_ptr<Command> makeWait();

// The table of commands, in the order of the help.
inline constexpr std::array commandRows = {
    CommandRow{"discover", "find cards without knowing names or addresses (each of them logs warnings)",
               "tarvelctl discover\n"
               "tarvelctl discover -i eth0 --expect 16\n"
               "tarvelctl discover --names card[01-64]",
               makeDiscover},
    CommandRow{"versions", "show the component versions of cards",
               "tarvelctl versions card01\n"
               "tarvelctl versions --diff card[01-16]\n"
               "tarvelctl -o json versions 10.0.0.11",
               makeVersions},
    CommandRow{"time get", "show mode, NTP server and clock, and the skew against this machine",
               "tarvelctl time get card01 10.0.0.12", makeTimeGet},
    CommandRow{"time set", "set the NTP server, or the clock by hand",
               "tarvelctl time set --ntp 10.0.0.1 card[01-16]\n"
               "tarvelctl time set --manual now card01\n"
               "tarvelctl time set --manual 2026-03-04T05:06:07Z card01",
               makeTimeSet},
    CommandRow{"ip get", "show the IP configuration of cards", "tarvelctl ip get card[01-16]", makeIpGet},
    CommandRow{"ip set", "change an interface, wait for the card, roll back if it is lost",
               "tarvelctl ip set --if VemkEth1 --static 10.0.0.11/24,10.0.0.1 card01\n"
               "tarvelctl ip set --if VemkEth2 --dhcp card[01-16]\n"
               "tarvelctl --dry-run ip set --if VemkEth2 --disabled card01",
               makeIpSet},
    CommandRow{"ip rescue", "give a lost card an IP configuration, the former one if none is told",
               "tarvelctl ip rescue card01\n"
               "tarvelctl ip rescue --if VemkEth1 --static 10.0.0.11/24 card01",
               makeIpRescue},
    CommandRow{"firmware check", "look through a firmware archive before any card gets it",
               "tarvelctl firmware check firmware.tar.gz\n"
               "tarvelctl -o json firmware check firmware.tar.gz",
               makeFirmwareCheck},
    CommandRow{"firmware upload", "send an archive and unpack it on the card, without installing it",
               "tarvelctl firmware upload firmware.tar.gz card01", makeFirmwareUpload},
    CommandRow{"firmware upgrade", "send an archive, install it, and compare the versions before and after",
               "tarvelctl firmware upgrade firmware.tar.gz card[01-16]\n"
               "tarvelctl --dry-run firmware upgrade firmware.tar.gz card01",
               makeFirmwareUpgrade},
    CommandRow{"reboot", "reboot cards", "tarvelctl reboot --wait card01", makeReboot},
    CommandRow{"status", "tell whether cards are idle, busy, without daemon or out of reach",
               "tarvelctl status card[01-16]", makeStatus},
    CommandRow{"report", "write one HTML page about all cards: versions, clocks, addresses, failures",
               "tarvelctl report card[01-16] --output fleet.html\n"
               "tarvelctl -o json report card[01-16]",
               makeReport},
    CommandRow{"wait", "wait until cards are up, down, idle, or have the versions of a file",
               "tarvelctl wait --for up card[01-16]\n"
               "tarvelctl wait --for idle --wait-time 300 10.0.0.11\n"
               "tarvelctl wait --for versions=release.txt card01",
               makeWait},
    CommandRow{"metrics", "write what Prometheus wants to know of cards, without any broadcast",
               "tarvelctl metrics 10.0.0.11\n"
               "tarvelctl metrics 10.0.0.11 10.0.0.12 --output /var/lib/prometheus/node-exporter/tarvel.prom\n"
               "tarvelctl metrics -o json 10.0.0.11",
               makeMetrics},
    CommandRow{"raw", "send any command, and show the answer as it is",
               "tarvelctl raw --command 16 10.0.0.11\n"
               "tarvelctl raw --command 17 --text-file time.xml 10.0.0.11",
               makeRaw},
    CommandRow{"decode", "take the bytes of a message apart",
               "tarvelctl decode 81c39aff 01000504 01000001 2a000000 00000000\n"
               "tarvelctl -v versions card01 2>&1 | sed -n 's/.*bytes: //p' | tarvelctl decode\n"
               "xxd capture | tarvelctl decode -o json",
               makeDecode},
    CommandRow{"completion", "print a script that completes command lines in a shell",
               "source <(tarvelctl completion bash)\n"
               "tarvelctl completion zsh >~/.zfunc/_tarvelctl\n"
               "tarvelctl completion fish >~/.config/fish/completions/tarvelctl.fish",
               makeCompletion},
};
