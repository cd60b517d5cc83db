#!/bin/sh
# Installs the build tree into a scratch prefix, builds the consumer project against it with
# CMake, then a fully static C program with pkg-config --static alone, and runs them all.
#   check_consumer.sh BUILD_DIR SOURCE_DIR SCRATCH_DIR
set -eu
build=$1 source=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
cmake -S "$source" -B "$scratch/build" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/build"
"$scratch/build/consumer_c_shared"
"$scratch/build/consumer_c_static"
"$scratch/build/consumer_cpp"
export PKG_CONFIG_PATH="$scratch/prefix/lib/pkgconfig"
cc -static -std=c99 -Wall -Wextra -Werror -o "$scratch/consumer_pkgconfig_static" \
    "$source/consumer.c" $(pkg-config --static --cflags --libs veltara)
"$scratch/consumer_pkgconfig_static"
