#include "sandbox/StandInScripts.h"

#include "exec/Command.h"
#include "sandbox/SandboxTools.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace {

const QString commonPath = QStringLiteral("/usr/libexec/kextkeeper-sandbox.sh");

// Quoting and logging shared by every stand-in. The quoting matches the program's own
// rendering of a command, so a logged line reads like the command that was planned.
// Character classes are spelled out instead of ranges, which some shells read by locale.
const char commonBody[] = R"(
kk_safe='ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_@%+=:,./-'

kk_quote() {
    case $1 in
    '' | *[!$kk_safe]*)
        kk_rest=$1
        kk_out=
        while :; do
            case $kk_rest in
            *\'*)
                kk_out=$kk_out${kk_rest%%\'*}"'\\''"
                kk_rest=${kk_rest#*\'}
                ;;
            *)
                kk_out=$kk_out$kk_rest
                break
                ;;
            esac
        done
        printf "'%s'" "$kk_out"
        ;;
    *) printf '%s' "$1" ;;
    esac
}

# Appends "$0 ARGS..." as one line; built first so that it goes out in one write.
kk_log() {
    kk_line=$(kk_quote "$0"; for kk_arg in "$@"; do printf ' '; kk_quote "$kk_arg"; done; printf x)
    kk_line=${kk_line%x}
    printf '%s\n' "$kk_line" >>"$KK_ROOT/var/log/commands.log"
}
)";

// The host's own tool for a stand-in that passes through, by name.
QString hostTool(const QString &name) {
    return QStandardPaths::findExecutable(name,
                                          {QStringLiteral("/bin"), QStringLiteral("/usr/bin"),
                                           QStringLiteral("/sbin"), QStringLiteral("/usr/sbin")});
}

QByteArray quoted(const QString &word) {
    // Always quoted: the path may hold anything, and a bare word gains nothing here.
    return shellQuote(word, true).toUtf8();
}

} // namespace

StandInScripts::StandInScripts(const QString &root, const QString &binary)
    : m_root(root), m_binary(binary) {}

QStringList StandInScripts::hostToolPaths() {
    return {QStringLiteral("/bin/chmod"), QStringLiteral("/bin/cp"), QStringLiteral("/bin/rm"),
            QStringLiteral("/bin/mv"), QStringLiteral("/usr/bin/touch")};
}

QByteArray StandInScripts::commonFile() const {
    return "# Shared by the stand-in tools of this KextKeeper sandbox.\nKK_BINARY=" +
           quoted(m_binary) + '\n' + commonBody;
}

QByteArray StandInScripts::header(const QString &systemPath) const {
    // The root is found from the script's own place, so the sandbox may be moved.
    const QByteArray up = systemPath.count(QLatin1Char('/')) == 3 ? "/../.." : "/..";
    return "#!/bin/sh\n# Stand-in for " + systemPath.toUtf8() +
           " in a KextKeeper sandbox.\nKK_ROOT=$(CDPATH= cd -- \"${0%/*}" + up +
           "\" && pwd) || exit 1\n. \"$KK_ROOT" + commonPath.toUtf8() + "\"\nkk_log \"$@\"\n";
}

bool StandInScripts::writeScript(const QString &systemPath, const QByteArray &body) {
    const QString path = m_root + systemPath;
    QDir().mkpath(path.section(QLatin1Char('/'), 0, -2));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(body) != body.size()) {
        m_error = QStringLiteral("Can't write %1: %2").arg(path, file.errorString());
        return false;
    }
    file.close();
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup |
                        QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther);
    return true;
}

bool StandInScripts::writeAll() {
    QDir().mkpath(m_root + QStringLiteral("/var/log"));
    if (!writeScript(commonPath, commonFile()))
        return false;
    for (const QString &systemPath : SandboxTools::paths()) {
        const QString name = systemPath.section(QLatin1Char('/'), -1);
        if (!writeScript(systemPath, header(systemPath) +
                                         "exec \"$KK_BINARY\" --root \"$KK_ROOT\" "
                                         "sandbox tool " +
                                         name.toUtf8() + " \"$@\"\n"))
            return false;
    }
    for (const QString &systemPath : hostToolPaths()) {
        const QString name = systemPath.section(QLatin1Char('/'), -1);
        const QString host = hostTool(name);
        if (host.isEmpty()) {
            m_error =
                QStringLiteral("The host has no %1 to stand in for %2.").arg(name, systemPath);
            return false;
        }
        if (!writeScript(systemPath, header(systemPath) + "exec " + quoted(host) + " \"$@\"\n"))
            return false;
    }
    // chflags: there is no hidden flag to set here, so it is written beside the item as
    // ".NAME.flags" holding the flags word.
    return writeScript(QStringLiteral("/usr/bin/chflags"),
                       header(QStringLiteral("/usr/bin/chflags")) + R"(flags=
for item in "$@"; do
    if [ -z "$flags" ]; then
        case $item in -*) continue ;; esac
        flags=$item
        continue
    fi
    while :; do case $item in ?*/) item=${item%/} ;; *) break ;; esac; done
    case $item in */*) dir=${item%/*} ;; *) dir=. ;; esac
    [ -e "$item" ] || { printf 'chflags: %s: No such file or directory\n' "$item" >&2; exit 1; }
    printf '%s\n' "$flags" >"${dir:-/}/.${item##*/}.flags" || exit 1
done
)");
}
