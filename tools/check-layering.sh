#!/usr/bin/env bash
# The window layer's two rules, checked by ctest:
# - a page's form (ui_<Page>.h) is included by that page's own source only;
# - the process-wide singletons are reached by start-up code only.
set -euo pipefail
src="${1:-$(dirname "$0")/../src}"
status=0
while IFS= read -r line; do
    file=${line%%:*}
    form=$(sed -n 's/.*#include "ui_\(.*\)\.h".*/\1/p' <<<"$line")
    if [ "$(basename "$file" .cpp)" != "$form" ]; then
        echo "$line: only $form.cpp may include its form" >&2
        status=1
    fi
done < <(grep -rn '#include "ui_' "$src" --include='*.cpp' --include='*.h' || true)
if grep -rnE 'defaultinst\(\)|sharedInstance\(\)|SystemPaths::current\(\)' "$src" \
    --include='*.cpp' --include='*.h' |
    grep -vE '^[^:]*/(app/AppBootstrap\.cpp|exec/AdminAuthentication\.(h|cpp)):' >&2; then
    echo "singletons are reached only at start-up (app/AppBootstrap.cpp)" >&2
    status=1
fi
exit $status
