#!/bin/sh
# compare.sh HEADERS DESCRIPTION LIBRARY: whether a library still has every function, interface table and type of
# the description of a release. What was added does no harm to hosts that stand. Prints what differs.
#
# The description of a release is made once, from its own build with developer settings:
#   abidw --exported-interfaces-only --drop-private-types --no-corpus-path --no-comp-dir-path --short-locs \
#         --headers-dir include build/gcc/src/libtavell.so > tests/abi/VERSION/libtavell.abi
set -eu
exec abidiff --no-added-syms --no-show-locs --headers-dir2 "$1" "$2" "$3"
