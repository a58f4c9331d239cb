# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# The tree, built with each of the target's toolchains. The client goes with the card's own only, and
# the tests with those for its processor.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/client.sh
. "${BASH_SOURCE[0]%/*}/client.sh"

# Where a toolchain's build goes: the card's own is the one people look for, and has the short name.
build_directory() {
    case $1 in
        powerpc-musl) printf '%s/build/target' "$root" ;;
        powerpc-gnu) printf '%s/build/target-gnu' "$root" ;;
        x86_64-musl) printf '%s/build/target-x86_64-musl' "$root" ;;
    esac
}

# build_tree TOOLCHAIN [TARGET...]
build_tree() {
    local toolchain=$1 directory roots="$cache/sysroot-$1" client=OFF tests=ON
    shift
    directory=$(build_directory "$toolchain")
    need_sysroot "$toolchain"
    case $toolchain in
        powerpc-musl)
            need_client_libraries "$toolchain"
            roots+=";$cache/client-$toolchain" client=ON
            ;;
        x86_64-musl) tests=OFF ;;
    esac
    build_in "$directory" "$toolchain" "$*" -DTARVELD_SYSROOT="$roots" -DBUILD_TESTING=$tests -DTARVELD_SIM=$tests \
        -DTARVELD_CLIENT=$client -DTARVELD_BENCH=$client
}

hardened_directory=$root/build/target-hardened

# The hardened daemon for the card, and nothing else. For tests, which need not unpack a gigabyte to meet the limit.
build_hardened() {
    need_sysroot powerpc-musl
    build_in "$hardened_directory" powerpc-musl tarveld -DTARVELD_SYSROOT="$cache/sysroot-powerpc-musl" \
        -DTARVELD_HARDENED=ON -DTARVELD_LARGEST_UNPACKED_MIB=16 -DBUILD_TESTING=OFF -DTARVELD_SIM=OFF \
        -DTARVELD_CLIENT=OFF -DTARVELD_BENCH=OFF
}

# build_in DIRECTORY TOOLCHAIN TARGETS OPTION...: with blanks between the targets, or none for all.
build_in() {
    local directory=$1 toolchain=$2 targets
    read -ra targets <<<"$3"
    shift 3
    say "building with $toolchain in ${directory#"$root"/}"
    mkdir -p "$directory"
    (
        flock 9
        [[ $toolchain != *-musl ]] || describe_zig "$toolchain"
        configure_tree "$toolchain" "$directory" "$@"
        quietly "$directory/build.log" cmake --build "$directory" -j "$(nproc)" ${targets[0]:+--target "${targets[@]}"}
    ) 9>"$directory/.lock"
}

# The programs that the card's daemon is measured beside.
build_floors() {
    build_tree powerpc-musl
    quietly "$root/build/target/floors.log" cmake --build "$root/build/target" --target bench_same bench_bare
}

# For ccache, which sees but a script of ours.
describe_zig() {
    export CCACHE_COMPILERTYPE=clang
    CCACHE_COMPILERCHECK="string:$1 $(key_of "$root/tools/target/package-lock.json" "$root/tools/target/bin/zig-tool")"
    export CCACHE_COMPILERCHECK
}

# The warnings by the environment: on the command line they would replace the flags that the toolchain file starts with.
configure_tree() {
    local toolchain=$1 directory=$2 fresh=()
    shift 2
    # CMake looks but once at the flags that a toolchain file starts with.
    [[ -z $(find "$root/cmake/toolchains" -type f -newer "$directory/CMakeCache.txt" 2>/dev/null) ]] || fresh=(--fresh)
    CXXFLAGS="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror" \
        quietly "$directory/configure.log" cmake "${fresh[@]}" -G Ninja -S "$root" -B "$directory" \
        -DCMAKE_BUILD_TYPE=MinSizeRel -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchains/$toolchain.cmake" \
        -DTARVELD_UNITY_TESTS=ON "$@"
}
