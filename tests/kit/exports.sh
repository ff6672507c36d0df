#!/bin/sh
# exports.sh NM LIBRARY HEADER: the dynamic symbols that a library defines are the functions that a header declares.
set -eu
exported=$("$1" --dynamic --defined-only --extern-only "$2" | awk '{print $3}' | sort)
declared=$(grep -o '\btvk[A-Za-z]*(' "$3" | tr -d '(' | sort -u)
if [ "$exported" = "$declared" ]; then
    exit 0
fi
echo "exported:"
echo "$exported"
echo "declared:"
echo "$declared"
exit 1
