// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Usage.h"

const char* const usage = R"(Usage: uci [<options>] <command> [<argument>]

Commands:
    get       <config>[.<section>[.<option>]]
    set       <config>.<section>[.<option>]=<value>
    delete    <config>.<section>[.<option>]
    revert    <config>[.<section>[.<option>]]
    show      [<config>[.<section>[.<option>]]]
    changes   [<config>]
    commit    [<config>]
    add       (not simulated)
    add_list  (not simulated)
    batch     (not simulated)
    del_list  (not simulated)
    export    (not simulated)
    import    (not simulated)
    rename    (not simulated)
    reorder   (not simulated)

Options:
    -c <path>  directory of the configurations (/etc/config)
    -t <path>  directory of what is staged (/tmp/.uci)
    -P <path>  the same, and nothing is committed
    -q         no words about failures
    -C <path>  (not simulated)
    -d <str>   (not simulated)
    -f <file>  (not simulated)
    -m         (not simulated)
    -n         (not simulated)
    -N         (not simulated)
    -p <path>  (not simulated)
    -s         (not simulated)
    -S         (not simulated)
    -X         (not simulated)

)";
