# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# What tarvelctl links, built from Debian's sources for a toolchain: it can run on a card, too. In a place of its own
# beside the sysroot, because only the card's own toolchain gets it.
# shellcheck shell=bash

# shellcheck source=scripts/target.d/sysroot.sh
. "${BASH_SOURCE[0]%/*}/sysroot.sh"

need_client_libraries() {
    local name recipe
    recipe=$(key_of "$root"/scripts/target.d/client.sh "$root"/cmake/toolchains/*)
    for name in zlib1g-dev libarchive-dev libfmt-dev libcli11-dev nlohmann-json3-dev; do
        recipe+=" $(version_of $name)"
    done
    cached "client-$1" "$recipe" build_client_libraries
}

build_client_libraries() {
    local toolchain=${1##*/client-} sources
    sources=$(mktemp -d)
    install_zlib "$toolchain" "$1" "$sources/zlib"
    install_libarchive "$toolchain" "$1" "$sources/libarchive"
    install_source "$toolchain" "$1" fmtlib "$sources/fmt" -DFMT_TEST=OFF -DFMT_DOC=OFF
    install_source "$toolchain" "$1" cli11 "$sources/cli11" -DCLI11_BUILD_TESTS=OFF -DCLI11_BUILD_EXAMPLES=OFF \
        -DCLI11_BUILD_DOCS=OFF
    install_source "$toolchain" "$1" nlohmann-json3 "$sources/json" -DJSON_BuildTests=OFF
    rm -rf "$sources"
}

install_source() {
    local toolchain=$1 prefix=$2 package=$3 source=$4
    shift 4
    debian_source "$package" "$source"
    install_project "$toolchain" "$prefix" "$package" "$source" "$@"
}

# zlib's CMake project insists on a shared library, which a static toolchain has no use for.
install_zlib() {
    debian_source zlib "$3"
    (
        cd "$3" || exit
        quietly "$cache/log/zlib-$1" env CC=powerpc-linux-musl-cc AR=powerpc-linux-musl-ar \
            RANLIB=powerpc-linux-musl-ranlib CFLAGS=-Os ./configure --static --prefix="$2"
        quietly "$cache/log/zlib-$1" make -j "$(nproc)" libz.a
        install -D -m 644 libz.a "$2/lib/libz.a"
        install -D -m 644 -t "$2/include" zlib.h zconf.h
    )
}

# Only what a firmware archive needs, and only the static library, which its own install rules do not allow. Whoever
# links it alone shall have zlib along.
install_libarchive() {
    local option options=(-DENABLE_WERROR=OFF -DZLIB_LIBRARY="$2/lib/libz.a" -DZLIB_INCLUDE_DIR="$2/include")
    for option in ACL BZip2 CAT CNG CPIO EXPAT ICONV LIBB2 LIBXML2 LZ4 LZMA LZO NETTLE OPENSSL PCRE2POSIX PCREPOSIX TAR \
        TEST UNZIP XATTR ZSTD; do
        options+=("-DENABLE_$option=OFF")
    done
    debian_source libarchive "$3"
    configure_project "$3/build" "$1" "$2" libarchive "$3" "${options[@]}"
    quietly "$cache/log/libarchive-$1" cmake --build "$3/build" -j "$(nproc)" --target archive_static
    install -D -m 644 -t "$2/include" "$3"/libarchive/archive{,_entry}.h
    printf '%s\n' "CREATE $2/lib/libarchive.a" "ADDLIB $3/build/libarchive/libarchive.a" "ADDLIB $2/lib/libz.a" SAVE END |
        powerpc-linux-gnu-ar -M
}
