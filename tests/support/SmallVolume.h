#pragma once

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <unistd.h>

// A small file system of its own at a folder (tmpfs), so a test can fill it. Only root
// can mount one; `mounted()` says whether it worked here.
class SmallVolume {
public:
    SmallVolume(const QString &folder, const QString &size) : m_folder(folder) {
        QDir().mkpath(folder);
        if (::geteuid() == 0)
            m_mounted = tool("mount", {"-t", "tmpfs", "-o", "size=" + size, "tmpfs", folder});
    }
    ~SmallVolume() {
        if (m_mounted)
            tool("umount", {m_folder});
    }
    bool mounted() const { return m_mounted; }

private:
    static bool tool(const QString &name, const QStringList &args) {
        const QString path =
            QStandardPaths::findExecutable(name, {"/usr/bin", "/bin", "/usr/sbin", "/sbin"});
        return !path.isEmpty() && QProcess::execute(path, args) == 0;
    }
    QString m_folder;
    bool m_mounted = false;
};
