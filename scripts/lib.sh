# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2034

# What the scripts share: messages, packages of Debian 12, builds. Sourced, never run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

library_packages=(g++ cmake ninja-build pkg-config qtbase5-dev libfcgi-dev libsimdjson-dev)
demo_packages=("${library_packages[@]}" libsodium-dev libsqlite3-dev lighttpd curl)
redis_packages=(libhiredis-dev libssl-dev)
postgresql_packages=(libpq-dev postgresql)
cluster_packages=("${demo_packages[@]}" "${redis_packages[@]}" "${postgresql_packages[@]}" nginx-light redis-server
    redis-sentinel redis-tools systemd python3)
test_packages=("${demo_packages[@]}" "${redis_packages[@]}" redis-server redis-sentinel
    "${postgresql_packages[@]}" openssl libgtest-dev libgmock-dev nginx-light
    apache2-bin libapache2-mod-fcgid haproxy caddy h2o make systemd wrk)
fuzz_packages=("${library_packages[@]}" libgtest-dev libgmock-dev clang-14 libclang-rt-14-dev llvm-14)
browser_packages=("${demo_packages[@]}" chromium)
package_packages=("${redis_packages[@]}" debhelper dpkg-dev lintian)
docs_packages=(doxygen doxygen-awesome-css graphviz perl-base)
musl_packages=("${test_packages[@]}" g++-arm-linux-gnueabihf qemu-user autoconf automake libtool
    dpkg-dev tcl xz-utils)
qt6_packages=(qt6-base-dev libqt6core5compat6-dev)
ci_packages=("${test_packages[@]}" "${package_packages[@]}" clang-14 clang-format-14 clang-tidy-14 shellcheck
    abigail-tools ccache locales musl libclang-rt-14-dev llvm-14 valgrind)

# With ccache, what one build has compiled is not compiled again by the next one. The settings are
# those that its manual asks for when there are precompiled headers, and several folders of builds.
if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
    export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
fi

# For CMake: compile all files of a target as one, but for test programs. That takes a quarter of the
# time, most of which goes into the headers that the files have in common.
unity=(-D CMAKE_UNITY_BUILD=ON -D CMAKE_UNITY_BUILD_BATCH_SIZE=0)

say()
{
    printf '%s: %s\n' "${0##*/}" "$*"
}

fail()
{
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# usage_error TEXT
usage_error()
{
    printf '%s\n' "$1" >&2
    exit 2
}

missing_packages()
{
    local package
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || echo "$package"
    done
}

# Prints the command with which to run another one as root; nothing when the user is root already.
as_root()
{
    [ "$(id -u)" != 0 ] || return 0
    command -v sudo >/dev/null || return 1
    if [ -t 0 ]; then sudo -v && echo sudo; else sudo -n true 2>/dev/null && echo "sudo -n"; fi
}

# Installs those of the given packages that are missing.
install_packages()
{
    local missing elevate
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -gt 0 ] || return 0
    command -v apt-get >/dev/null || fail "this needs the Debian packages ${missing[*]}"
    if ! elevate=$(as_root); then
        fail "no right to install ${missing[*]}: run this as root or with sudo at hand"
    fi
    say "installing ${missing[*]}"
    # shellcheck disable=SC2086 # no word or two words
    $elevate env DEBIAN_FRONTEND=noninteractive sh -ec '
        apt-get -q update
        apt-get -q install -y --no-install-recommends "$@"' sh "${missing[@]}" ||
        fail "apt-get could not install ${missing[*]}"
    keep_idle "$elevate" "${missing[@]}"
}

# Turns off the system services of servers that were installed just now. The scripts start servers
# themselves.
keep_idle()
{
    local elevate=$1 package
    [ -d /run/systemd/system ] || return 0
    for package in "${@:2}"; do
        case $package in
        lighttpd | nginx-light) disable_service "${package%-light}" ;;
        apache2*) disable_service apache2 ;;
        haproxy | caddy | h2o | redis-server | redis-sentinel | postgresql) disable_service "$package" ;;
        php-fpm) disable_service "$(basename -a /lib/systemd/system/php*-fpm.service)" ;;
        esac
    done
}

# Used by keep_idle, which sets $elevate. Ignores that a package has no service.
disable_service()
{
    # shellcheck disable=SC2086 # no word or two words; one name or several
    $elevate systemctl disable --now $1 || true
}

# configure CMAKE-ARGUMENT...: without ccache, which would repeat what the compiler said of its folders in
# another clone
configure()
{
    CCACHE_DISABLE=1 cmake "$@"
}

# build FOLDER CMAKE-ARGUMENT...: builds build/FOLDER; configures it first if that has not been done
build()
{
    (
        cd "$root" &&
            { [ -f "build/$1/build.ninja" ] || configure -B "build/$1" "${@:2}"; } &&
            cmake --build "build/$1"
    ) || fail "the $1 build failed"
}
