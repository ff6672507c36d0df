#!/bin/sh
# Builds and runs hosts with the flags that pkg-config gives for the install tree, no build system at all.
# Arguments: library folder of the install tree, C++ compiler, C compiler, folder of the hosts, folder to work in.
set -eu
libdir=$1 cxx=$2 cc=$3 sources=$4 work=$5

export PKG_CONFIG_PATH="$libdir/pkgconfig"
mkdir -p "$work"
pkg-config --atleast-version=0.1 tavell

# Unquoted: the flags are separate words.
shared="$(pkg-config --cflags --libs tavell)"
static="$(pkg-config --cflags --libs tavell-static)"
"$cxx" -std=c++17 "$sources/host.cpp" -o "$work/cpp_shared" $shared
"$cxx" -std=c++17 "$sources/host.cpp" -o "$work/cpp_static" $static
"$cc" -std=c99 "$sources/host.c" -o "$work/c_shared" $shared
"$cc" -std=c99 "$sources/host.c" -o "$work/c_static" $static

shared_hosts="cpp_shared c_shared"
static_hosts="cpp_static c_static"

if [ -e "$PKG_CONFIG_PATH/tavellkit.pc" ]; then
    "$cxx" -std=c++17 "$sources/host_kit.cpp" -o "$work/kit_shared" $(pkg-config --cflags --libs tavellkit)
    "$cxx" -std=c++17 "$sources/host_kit.cpp" -o "$work/kit_static" $(pkg-config --cflags --libs tavellkit-static)
    shared_hosts="$shared_hosts kit_shared"
    static_hosts="$static_hosts kit_static"
fi

for host in $shared_hosts; do
    LD_LIBRARY_PATH="$libdir" "$work/$host"
done
for host in $static_hosts; do
    "$work/$host"
done
