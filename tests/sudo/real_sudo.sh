#!/usr/bin/env bash
# Root tasks through the real sudo. A user of the test's own, with a password and sudo
# rights, runs the verbs on a sandbox Mac with --use-sudo, without a terminal and with
# the password on standard input:
#   - the right password: the commands run as root, and the password is asked once;
#   - wrong passwords: "Sorry, try again.", nothing runs as root, exit 1 after three;
#   - a sudo in the current folder and in a relative PATH entry is never run;
#   - no sudo at all (hidden in a mount namespace): "sudo was not found: root tasks need it";
#   - a user sudo turns down: sudo's own words;
#   - the password is in no process's arguments or environment, no file and no log.
# Making that user needs root (CI runs as root); anyone else gets a skip (status 77).
# The user, its sudo rights and its files are removed at the end.
set -euo pipefail

binary=${1:?usage: real_sudo.sh KEXTKEEPER}
if [[ $(id -u) -ne 0 ]]; then
    echo "SKIP: this test creates a user with sudo rights and must run as root (CI does)"
    exit 77
fi
[[ -x /usr/bin/sudo ]] || { echo "FAIL: sudo is not installed (tools/install-deps.sh installs it)"; exit 1; }

user=kksudo$$
password="Kk-$RANDOM$RANDOM-$$-pass"
work=$(mktemp -d /tmp/kk-real-sudo.XXXXXX)
home=$work/home
mac=$home/mac
watcher=
failures=0

cleanup() {
    set +e
    [[ -n $watcher ]] && kill "$watcher" 2>/dev/null && wait "$watcher" 2>/dev/null
    userdel -r "$user" >/dev/null 2>&1
    rm -f "/etc/sudoers.d/$user"
    rm -rf "$work"
}
trap cleanup EXIT

fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

# The user reaches the program through folders it may enter; its home holds the rest.
chmod 755 "$work"
mkdir "$work/bin"
install -m 755 "$binary" "$work/bin/kextkeeper"
useradd -m -d "$home" -s /bin/sh "$user"
printf '%s:%s\n' "$user" "$password" | chpasswd
printf '%s ALL=(ALL:ALL) ALL\n' "$user" >"/etc/sudoers.d/$user"
chmod 440 "/etc/sudoers.d/$user"
visudo -cqf "/etc/sudoers.d/$user"

as_user() { runuser -u "$user" -- "$@"; }
as_user "$work/bin/kextkeeper" sandbox create "$mac" >/dev/null
# Kexts the sandbox's loader takes: an identifier, no executable, no libraries.
for kext in Right Again Wrong Hostile Missing Refused; do
    as_user sh -c 'mkdir -p "$1/Contents" && printf "%s" "<plist><dict><key>CFBundleIdentifier</key><string>org.test.$2</string></dict></plist>" >"$1/Contents/Info.plist"' \
        sh "$home/kexts/$kext.kext" "$kext"
done

# Looks for the password in every process's arguments and environment while the verbs
# run; the pattern goes to grep through a pipe, never as an argument.
watch_processes() {
    while :; do
        grep -lsaF -f <(printf '%s\n' "$password") /proc/[0-9]*/cmdline /proc/[0-9]*/environ \
            >>"$work/seen" || true
        sleep 0.05
    done
}
watch_processes &
watcher=$!

# kk INPUT FOLDER PATH VERB ARGS...: the verb as the user, in FOLDER, with that PATH, no
# terminal (a session of its own) and INPUT on standard input.
kk() {
    local input=$1 folder=$2 path=$3
    shift 3
    set +e
    printf '%b' "$input" | (cd "$folder" && exec setsid runuser -u "$user" -- env -i HOME="$home" \
        XDG_CONFIG_HOME="$home/.config" PATH="$path" LC_ALL=C.UTF-8 \
        "$work/bin/kextkeeper" --root "$mac" --use-sudo "$@") >"$work/out" 2>"$work/err"
    status=$?
    set -e
}
prompts() { grep -o 'Your password' "$work/err" | wc -l; }
owner() { stat -c %U "$1"; }
extensions="$mac/Volumes/Macintosh HD/Extra/Extensions"
pw="$password\\n"

# The right password: install copies as root, and the later commands of the task ask
# sudo again without a prompt; load, another process, asks once for its two root tasks
# (the owner change and the loader through the root script).
kk "$pw" "$home" /usr/bin:/bin install --volume "Macintosh HD" --to extra "$home/kexts/Right.kext"
[[ $status -eq 0 ]] || fail "install with the right password ended with $status: $(cat "$work/err")"
[[ $(prompts) -eq 1 ]] || fail "install asked $(prompts) times for the password"
[[ -d $extensions/Right.kext && $(owner "$extensions/Right.kext") == root ]] ||
    fail "the installed kext is not root's: $(ls -ld "$extensions/Right.kext" 2>&1)"
kk "$pw" "$home" /usr/bin:/bin load "$home/kexts/Again.kext"
[[ $status -eq 0 ]] || fail "load with the right password ended with $status: $(cat "$work/err")"
[[ $(prompts) -eq 1 ]] || fail "load asked $(prompts) times for the password"
grep -q "kextload .*Again.kext" "$mac/var/log/commands.log" || fail "kextload did not run"
[[ $(owner "$mac/var/db/loaded-kexts.tsv") == root ]] ||
    fail "the loader's state was not written by root"

# Wrong passwords: asked three times, nothing runs as root.
logged=$(wc -l <"$mac/var/log/commands.log")
kk 'wrong one\nwrong two\nwrong three\n' "$home" /usr/bin:/bin \
    install --volume "Macintosh HD" --to extra "$home/kexts/Wrong.kext"
[[ $status -eq 1 ]] || fail "install with wrong passwords ended with $status"
[[ $(prompts) -eq 3 ]] || fail "wrong passwords were asked $(prompts) times, not 3"
grep -q 'Sorry, try again.' "$work/err" || fail "no retry message: $(cat "$work/err")"
grep -q '3 incorrect password attempts' "$work/err" || fail "no final message: $(cat "$work/err")"
[[ ! -e $extensions/Wrong.kext ]] || fail "a wrong password installed the kext"
[[ $(wc -l <"$mac/var/log/commands.log") -eq $logged ]] || fail "a wrong password ran commands"

# A sudo in the current folder and in a relative PATH entry: neither runs, the real one
# does.
as_user mkdir -p "$home/evil/bin"
for fake in "$home/evil/sudo" "$home/evil/bin/sudo"; do
    as_user sh -c 'printf "#!/bin/sh\ncat > \"$2\"\n" > "$1" && chmod 755 "$1"' sh "$fake" \
        "$home/evil/ran"
done
kk "$pw" "$home/evil" bin:.::/usr/bin:/bin load "$home/kexts/Hostile.kext"
[[ $status -eq 0 ]] || fail "load beside a fake sudo ended with $status: $(cat "$work/err")"
[[ ! -e $home/evil/ran ]] || fail "a sudo from the current folder or a relative PATH entry ran"

# No sudo to be found: /usr/bin/sudo (and /bin/sudo, the same folder on Debian) hidden
# behind a file that is not a program, in a mount namespace of this run alone.
: >"$work/not-sudo"
set +e
printf '%b' "$pw" | unshare -m sh -c 'mount --bind "$1" /usr/bin/sudo && shift && exec "$@"' sh \
    "$work/not-sudo" setsid runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin \
    LC_ALL=C.UTF-8 "$work/bin/kextkeeper" --root "$mac" --use-sudo load "$home/kexts/Missing.kext" \
    >"$work/out" 2>"$work/err"
status=$?
set -e
[[ $status -eq 1 ]] || fail "without sudo load ended with $status: $(cat "$work/err")"
grep -q 'sudo was not found: root tasks need it' "$work/err" ||
    fail "without sudo: $(cat "$work/err")"

# A user sudo turns down hears sudo's own words. The rights go, and with them the ticket.
rm -f "/etc/sudoers.d/$user"
as_user sudo -K
kk "$pw" "$home" /usr/bin:/bin load "$home/kexts/Refused.kext"
[[ $status -eq 1 ]] || fail "load without sudo rights ended with $status"
grep -q "may not run sudo\|is not in the sudoers file" "$work/err" ||
    fail "sudo's refusal was not shown: $(cat "$work/err")"

# The password nowhere: processes, files of the user, the sandbox, this run, the logs.
kill "$watcher"
wait "$watcher" 2>/dev/null || true
watcher=
[[ ! -s $work/seen ]] || fail "the password was in the arguments or environment of: $(sort -u "$work/seen")"
found=$(grep -rlsaF -f <(printf '%s\n' "$password") "$home" "$work" /var/log || true)
[[ -z $found ]] || fail "the password was written to: $found"

if [[ $failures -gt 0 ]]; then
    echo "$failures check(s) failed"
    exit 1
fi
echo "PASS: root tasks through the real sudo"
