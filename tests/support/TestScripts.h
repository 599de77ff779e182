#pragma once

#include <QDir>
#include <QFile>
#include <QString>

// Writes an executable shell script for a test and returns its path.
inline QString writeScript(const QDir &dir, const QString &name, const QByteArray &body) {
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return {};
    file.write("#!/bin/sh\n" + body);
    file.close();
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}
