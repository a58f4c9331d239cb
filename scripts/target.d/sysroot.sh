# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# The libraries a build for the card links: libxml2 from Debian's source with only what the daemon calls, and GoogleTest.
# One sysroot for each toolchain.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/compiler.sh
. "${BASH_SOURCE[0]%/*}/compiler.sh"

libxml2_wanted=(TREE PATTERN PUSH READER)
libxml2_left_out=(C14N CATALOG DEBUG DOCB FTP HTML HTTP ICONV ICU ISO8859X LEGACY LZMA MEM_DEBUG MODULES OUTPUT PROGRAMS
    PYTHON REGEXPS RUN_DEBUG SAX1 SCHEMAS SCHEMATRON TESTS THREADS THREAD_ALLOC VALID WRITER XINCLUDE XPATH XPTR ZLIB)

need_sysroot() {
    local toolchain=$1 recipe
    recipe="$(version_of libxml2-dev) $(version_of googletest)"
    recipe+=" $(key_of "$root"/scripts/target.d/sysroot.sh "$root"/cmake/toolchains/* "$root"/tools/target/package-lock.json)"
    cached libxml2-source "$(version_of libxml2-dev)" fetch_libxml2
    cached "sysroot-$toolchain" "$recipe" build_sysroot
}

fetch_libxml2() { debian_source libxml2 "$1"; }

build_sysroot() {
    local toolchain=${1##*/sysroot-} option options=()
    for option in "${libxml2_wanted[@]}"; do options+=("-DLIBXML2_WITH_$option=ON"); done
    for option in "${libxml2_left_out[@]}"; do options+=("-DLIBXML2_WITH_$option=OFF"); done
    # Without threads its threads.c compiles only if there are no pthreads to be found.
    options+=(-DHAVE_PTHREAD_H=0)
    install_library "$toolchain" libxml2 "$cache/libxml2-source" "${options[@]}"
    install_library "$toolchain" googletest /usr/src/googletest
}

install_library() {
    local toolchain=$1
    shift
    install_project "$toolchain" "$cache/sysroot-$toolchain" "$@"
}

# install_project TOOLCHAIN PREFIX NAME SOURCE OPTION...: configures, builds and installs one CMake project.
install_project() {
    local toolchain=$1 name=$3 work
    work=$(mktemp -d)
    configure_project "$work" "$@"
    quietly "$cache/log/$name-$toolchain" cmake --build "$work" -j "$(nproc)" --target install
    rm -rf "$work"
}

configure_project() {
    local work=$1 toolchain=$2 prefix=$3 name=$4 source=$5
    shift 5
    quietly "$cache/log/$name-$toolchain" cmake -G Ninja -S "$source" -B "$work" \
        -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchains/$toolchain.cmake" -DTARVELD_SYSROOT="$prefix" \
        -DCMAKE_BUILD_TYPE=MinSizeRel -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF "$@"
}
