#!/usr/bin/env bash
# usage: consume.sh install BUILD WORK
#        consume.sh KIND WORK
#
# Installs a build into WORK and moves the tree away from where it was installed; or builds the
# consumer KIND against the moved tree and runs it. What the build was made with comes in CXX,
# CXXFLAGS, TOOLCHAIN_FILE and EMULATOR.
set -euo pipefail
here=$(dirname "$(realpath "$0")")

install_and_move() {
    local build=$1 work=$2
    rm -rf "$work/installed" "$work/moved"
    cmake --install "$build" --prefix "$work/installed" >/dev/null
    mv "$work/installed" "$work/moved"
    if grep -rIlF -e "$work/installed" -e "$build" "$work/moved"; then
        echo "The files above name the place where the tree was built or installed"
        exit 1
    fi
}

with_cmake() {
    local kind=$1 work=$2
    if ! {
        cmake -S "$here/$kind" -B "$work/$kind" -G Ninja \
            ${TOOLCHAIN_FILE:+-DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN_FILE"} \
            -DCMAKE_PREFIX_PATH="$work/moved" -DCMAKE_CXX_FLAGS="${CXXFLAGS:-}" &&
            cmake --build "$work/$kind" --target consumer
    } >"$work/$kind.log" 2>&1; then
        cat "$work/$kind.log"
        exit 1
    fi
}

# On Windows the linker finds the import library, and the program its DLL in its own folder.
with_pkg_config() {
    local work=$1 found
    found=$(find "$work/moved" -name pkgconfig)
    mkdir -p "$work/pkg_config"
    export PKG_CONFIG_PATH=$found
    local before=() behind=("-Wl,-rpath,$(pkg-config --variable=libdir veldt20)")
    if [ -e "$work/moved/bin/VELDT20.dll" ]; then
        cp "$work/moved/bin/VELDT20.dll" "$work/pkg_config"
        # All but the module is linked in: the compiler's runtime isn't on the path.
        before=(-static "-Wl,-Bdynamic") behind=("-Wl,-Bstatic")
    fi
    # shellcheck disable=SC2046,SC2086  # both give a list of options
    $CXX -std=c++20 ${CXXFLAGS:-} "$here/main.cpp" -o "$work/pkg_config/consumer" \
        "${before[@]}" $(pkg-config --cflags --libs veldt20) "${behind[@]}"
}

if [ "$1" = install ]; then
    install_and_move "$2" "$3"
    exit
fi
kind=$1 work=$2
case $kind in
    pkg_config) with_pkg_config "$work" ;;
    *) with_cmake "$kind" "$work" ;;
esac
program=$work/$kind/consumer
[ -x "$program" ] || program=$program.exe
# What was meant to use the shared module does.
if [ "$kind" != find_package_static ] && ! grep -qaF -e libVELDT20.so -e VELDT20.dll "$program"; then
    echo "$program doesn't load the module"
    exit 1
fi
said=$(${EMULATOR:-} "$program" | tr -d '\r')
[ "$said" = "a line in a handle" ] || { echo "The consumer said: $said"; exit 1; }
