# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2154

# How make-sysroot makes a sysroot for ARMv7 with musl. Sourced there, never run. The compiler is Debian's
# for armhf, which can make programs for musl as well; musl itself is Debian's package. Debian has the
# other libraries for glibc only, so they are compiled from Debian's sources.
#
# Every library is compiled once, to position-independent objects that also contain what optimisation at
# link time needs. Of these objects a shared library is made in $sysroot/usr/lib, and an archive in
# $sysroot/static, which is a sysroot of its own.

triplet=arm-linux-musleabihf
musl_flags="-Os -fPIC -ffunction-sections -fdata-sections"
# Objects with machine code and, beside it, what optimisation at link time needs.
musl_lto_flags="$musl_flags -flto -ffat-lto-objects"
# Parts of QtCore that neither this project nor a device uses.
qt_features=(animation big_codecs concurrent easingcurve filesystemwatcher
    islamiccivilcalendar itemmodel jalalicalendar network settings sharedmemory sql statemachine
    systemsemaphore testlib topleveldomain xml xmlstream)

make_musl_sysroot()
{
    local PATH=$sysroot/compiler:$PATH
    # Variables that are meant for builds for this machine.
    unset CC CXX CFLAGS CXXFLAGS LDFLAGS CPATH C_INCLUDE_PATH CPLUS_INCLUDE_PATH LIBRARY_PATH
    step "download of the sources" download_sources
    step "musl" unpack_musl
    step "libstdc++" make_libstdcxx
    step "libfcgi" make_libfcgi
    step "simdjson" make_simdjson
    step "GoogleTest" make_googletest
    step "libsodium" make_libsodium
    step "SQLite" make_sqlite
    step "hiredis" make_hiredis
    step "QtCore" make_qtcore
    step "static libraries" make_static_sysroot
}

download_sources()
{
    write_apt_configuration
    mkdir "$work/packages" "$work/sources"
    cd "$work/packages"
    apt-get -q download musl musl-dev linux-libc-dev gcc-12-source
    cd "$work/sources"
    apt-get -q --only-source source \
        qtbase-opensource-src libfcgi simdjson libsodium sqlite3 hiredis
    dpkg-deb --fsys-tarfile "$work"/packages/gcc-12-source_*.deb |
        tar -xO ./usr/src/gcc-12/gcc-12.2.0-dfsg.tar.xz |
        tar -xJ gcc-12.2.0/{libstdc++-v3,libgcc,config,include,libiberty} \
            gcc-12.2.0/{config.guess,config.sub,config.rpath,config-ml.in,ltgcc.m4,ltmain.sh} \
            gcc-12.2.0/{compile,depcomp,install-sh,missing,mkinstalldirs,move-if-change} \
            gcc-12.2.0/{multilib.am,symlink-tree} \
            gcc-12.2.0/gcc/{BASE-VER,DEV-PHASE,DATESTAMP}
}

# source_of NAME: prints the folder of its sources
source_of()
{
    find "$work/sources" -mindepth 1 -maxdepth 1 -type d -name "$1-[0-9]*"
}

# Unpacks the C library and the kernel headers, and writes a compiler that finds only these.
unpack_musl()
{
    local raw=$work/raw package
    for package in musl musl-dev linux-libc-dev; do
        dpkg-deb -x "$work/packages/$package"_*.deb "$raw"
    done
    mkdir -p "$sysroot/usr/include" "$sysroot/usr/lib" "$sysroot/lib"
    cp -a "$raw/usr/include/arm-linux-musleabihf/." "$raw"/usr/include/{linux,asm-generic,mtd} \
        "$raw/usr/include/arm-linux-gnueabihf/asm" "$sysroot/usr/include"
    cp -a "$raw/usr/lib/arm-linux-musleabihf/." "$raw/lib/arm-linux-musleabihf/libc.so" "$sysroot/usr/lib"
    ln -s ../usr/lib/libc.so "$sysroot/lib/ld-musl-armhf.so.1"
    write_compiler
}

# -nostdinc: otherwise the compiler would find glibc's headers first. -static-libgcc: Debian's
# libgcc_s.so needs glibc, but the archives of libgcc do not.
write_compiler()
{
    local tool folder=$sysroot/compiler
    mkdir "$folder"
    for tool in ar as gcc-ar gcc-nm gcc-ranlib ld nm objcopy objdump ranlib readelf strip; do
        ln -s "$(command -v arm-linux-gnueabihf-$tool)" "$folder/$triplet-$tool"
    done
    cat >"$folder/$triplet-gcc" <<'WRAPPER'
#!/bin/sh
# Debian's compiler for armhf, for the files beside this folder.
sysroot=$(cd "$(dirname "$0")/.." && pwd)
case $0 in
*++)
    compiler=arm-linux-gnueabihf-g++
    headers=$sysroot/usr/include/c++/12
    cxx="-isystem $headers -isystem $headers/arm-linux-musleabihf -isystem $headers/backward"
    ;;
*) compiler=arm-linux-gnueabihf-gcc cxx= ;;
esac
for argument; do
    [ "$argument" != -nostdinc++ ] || cxx=
done
exec $compiler -mmusl --sysroot="$sysroot" -nostdinc "$@" $cxx \
    -isystem /usr/lib/gcc-cross/arm-linux-gnueabihf/12/include -isystem "$sysroot/usr/include" \
    -B"$sysroot/usr/lib" -L"$sysroot/usr/lib" -static-libgcc
WRAPPER
    chmod +x "$folder/$triplet-gcc"
    ln -s "$triplet-gcc" "$folder/$triplet-g++"
}

make_libstdcxx()
{
    local source
    source=$(source_of gcc)
    mkdir -p "$work/gcc/libgcc" "$work/gcc/libstdc++-v3"
    ln -s "$source/libgcc/gthr-posix.h" "$work/gcc/libgcc/gthr-default.h"
    cd "$work/gcc/libstdc++-v3"
    "$source/libstdc++-v3/configure" --build=x86_64-linux-gnu --host=$triplet --target=$triplet \
        --prefix=/usr --with-gxx-include-dir=/usr/include/c++/12 --disable-static --disable-multilib \
        --disable-nls --disable-libstdcxx-pch --disable-libstdcxx-filesystem-ts \
        CC=$triplet-gcc CXX="$triplet-g++ -nostdinc++" CFLAGS=-Os CXXFLAGS=-Os | tee configure.log
    # Without this, the library would lack std::thread, and the build would succeed all the same.
    grep -q 'gthreads library... yes' configure.log
    make -C include install DESTDIR="$sysroot"
    make -C libsupc++ -j"$(nproc)" install DESTDIR="$sysroot"
    make -C src -j"$(nproc)" install DESTDIR="$sysroot"
}

# configure_library ARGUMENT...: in the folder of sources without a configure script
configure_library()
{
    autoreconf -fi
    ./configure --build=x86_64-linux-gnu --host=$triplet --prefix=/usr --disable-dependency-tracking "$@"
}

make_libfcgi()
{
    cd "$(source_of libfcgi)"
    configure_library CFLAGS="$musl_lto_flags" CXXFLAGS="$musl_lto_flags" LDFLAGS=-fno-lto
    make -C libfcgi -j"$(nproc)" install DESTDIR="$sysroot"
    make -C include install DESTDIR="$sysroot"
    make install-pkgconfigDATA DESTDIR="$sysroot"
}

# cmake_library SOURCE FOLDER ARGUMENT...
cmake_library()
{
    cmake -S "$1" -B "$2" -G Ninja -D CMAKE_SYSTEM_NAME=Linux -D CMAKE_SYSTEM_PROCESSOR=armv7l \
        -D CMAKE_C_COMPILER=$triplet-gcc -D CMAKE_CXX_COMPILER=$triplet-g++ \
        -D CMAKE_BUILD_TYPE=MinSizeRel -D CMAKE_INSTALL_PREFIX=/usr "${@:3}"
    DESTDIR=$sysroot cmake --build "$2" --target install
}

make_simdjson()
{
    cmake_library "$(source_of simdjson)" "$work/simdjson" -D BUILD_SHARED_LIBS=ON \
        -D CMAKE_CXX_FLAGS="$musl_lto_flags" -D CMAKE_SHARED_LINKER_FLAGS=-fno-lto
}

make_googletest()
{
    cmake_library /usr/src/googletest "$work/googletest"
}

make_libsodium()
{
    cd "$(source_of libsodium)"
    configure_library --enable-minimal CFLAGS="$musl_flags"
    make -C src -j"$(nproc)" install DESTDIR="$sysroot"
    make install-pkgconfigDATA DESTDIR="$sysroot"
}

make_sqlite()
{
    local source
    source=$(source_of sqlite3)
    mkdir "$work/sqlite"
    cd "$work/sqlite"
    "$source/configure" --disable-tcl --disable-readline
    make sqlite3.c sqlite3.h sqlite3.pc # with this machine's compiler
    $triplet-gcc $musl_flags -D SQLITE_OMIT_LOAD_EXTENSION -c sqlite3.c
    $triplet-gcc -shared -Wl,-soname,libsqlite3.so.0 -o "$sysroot/usr/lib/libsqlite3.so.0" sqlite3.o
    ln -s libsqlite3.so.0 "$sysroot/usr/lib/libsqlite3.so"
    $triplet-ar rcs "$sysroot/usr/lib/libsqlite3.a" sqlite3.o
    cp sqlite3.h "$sysroot/usr/include"
    sed 's,^prefix=.*,prefix=/usr,' sqlite3.pc >"$sysroot/usr/lib/pkgconfig/sqlite3.pc"
}

make_hiredis()
{
    make -C "$(source_of hiredis)" install PREFIX=/usr DESTDIR="$sysroot" \
        CC=$triplet-gcc AR=$triplet-ar OPTIMIZATION="$musl_flags" DEBUG_FLAGS=
}

# The qmake and moc of the building machine are used; Qt's makefiles would build a qmake that is never run.
write_make_without_qmake()
{
    cat >make <<'WRAPPER'
#!/bin/sh
case $PWD in */qmake) exit 0 ;; esac
exec /usr/bin/make "$@"
WRAPPER
    chmod +x make
}

write_mkspec()
{
    local mkspecs=$1/mkspecs
    cp -r "$mkspecs/linux-arm-gnueabi-g++" "$mkspecs/linux-musl-g++"
    sed -i -e "s/arm-linux-gnueabi-/$triplet-/" \
        -e "\$i QMAKE_CXXFLAGS += $musl_lto_flags\nQMAKE_LFLAGS += -fno-lto" \
        "$mkspecs/linux-musl-g++/qmake.conf"
}

# Without iconv, with which Qt converts text wrongly in the C locale of musl.
configure_qtcore()
{
    MAKE=$PWD/make "$1/configure" -opensource -confirm-license -release -shared -optimize-size \
        -xplatform linux-musl-g++ -prefix /usr -extprefix "$sysroot/usr" -hostprefix "$sysroot/usr" \
        -external-hostbindir /usr/lib/qt5/bin -headerdir /usr/include/qt5 -archdatadir /usr/lib/qt5 \
        -datadir /usr/share/qt5 -make libs -nomake examples -nomake tests -nomake tools \
        -no-gui -no-widgets -no-dbus -no-icu -no-iconv -no-glib -no-zstd -no-journald -no-syslog \
        -no-openssl -no-mimetype-database -no-pkg-config -qt-pcre -qt-zlib -qt-doubleconversion \
        "${qt_features[@]/#/-no-feature-}"
}

make_qtcore()
{
    local source
    source=$(source_of qtbase-opensource-src)
    mkdir "$work/qtcore"
    cd "$work/qtcore"
    write_make_without_qmake
    write_mkspec "$source"
    configure_qtcore "$source"
    make sub-src-qmake_all
    make -C src/3rdparty/pcre2 -j"$(nproc)"
    make -C src/corelib -j"$(nproc)"
    make -C src/corelib install
    # Qt's CMake package requires this folder.
    cp -r "$source/mkspecs/linux-musl-g++" "$sysroot/usr/mkspecs"
}

# archive NAME OBJECT...
archive()
{
    $triplet-ar rcs "$sysroot/static/usr/lib/$1" "${@:2}"
}

# Copies the sysroot, with archives instead of shared libraries. The libraries that are not named here
# have an archive already.
make_static_sysroot()
{
    local static=$sysroot/static objects
    mkdir "$static"
    find "$sysroot/usr/lib" -name '*.la' -delete # these contain paths of this machine
    cp -al "$sysroot/compiler" "$sysroot/usr" "$static"
    find "$static/usr/lib" -name '*.so*' -delete
    cp "$work/gcc/libstdc++-v3/src/.libs/libstdc++convenience.a" "$static/usr/lib/libstdc++.a"
    archive libsimdjson.a "$work/simdjson/CMakeFiles/simdjson.dir/src/simdjson.cpp.o"
    mkdir "$work/pcre2"
    (cd "$work/pcre2" && $triplet-ar x "$work/qtcore/lib/libqtpcre2.a")
    objects=("$work"/qtcore/src/corelib/.obj/*.o "$work"/pcre2/*.o)
    archive libQt5Core.a "${objects[@]}"
    sed -i -E 's/ SHARED IMPORTED/ STATIC IMPORTED/; s/\blib(Qt5Core|simdjson)\.so[.0-9]*/lib\1.a/' \
        "$static"/usr/lib/cmake/{Qt5Core/Qt5CoreConfig,simdjson/simdjsonTargets,simdjson/simdjsonTargets-minsizerel}.cmake
}
