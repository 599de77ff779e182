#pragma once

#include <QByteArray>
#include <QString>

// What one run of a sandbox stand-in tool prints and how it exits.
struct StandInResult {
    QByteArray out;
    QByteArray err;
    int status = 0;

    static StandInResult failure(const QString &errorText, int status = 1) {
        return {{}, errorText.toUtf8(), status};
    }
};
