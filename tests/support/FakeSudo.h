#pragma once

#include "TestScripts.h"

// A stand-in for sudo with a state file as its timestamp: "-n -v" succeeds while the
// file exists, "-S -p '' -v" creates it when standard input brings "secret", "-k"
// removes it, "-n -- TOOL ARGS" runs the tool while it exists. Every call's arguments
// are appended to STATE.calls so tests can check that no password was ever an argument.
inline QString writeFakeSudo(const QDir &dir) {
    return writeScript(dir, QStringLiteral("sudo"), R"(state="$FAKE_SUDO_STATE"
printf '%s\n' "$*" >> "$state.calls"
case "$1" in
  -n) shift
      if [ "$1" = "-v" ]; then [ -f "$state" ] && exit 0; exit 1; fi
      if [ "$1" = "--" ]; then
          shift
          [ -f "$state" ] || { echo "sudo: a password is required" >&2; exit 1; }
          exec "$@"
      fi ;;
  -S) [ "$2" = "-p" ] && [ -z "$3" ] && [ "$4" = "-v" ] || exit 2
      read -r pw
      [ "$pw" = "secret" ] && { : > "$state"; exit 0; }
      exit 1 ;;
  -k) rm -f "$state"; exit 0 ;;
esac
exit 1
)");
}
