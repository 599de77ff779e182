#pragma once

#include <QList>
#include <QString>

struct CliVerb;

// kextkeeper(1) in roff (man macros), written from the verb table at build time so the
// page says what `--help` says.
class ManPage {
public:
    static QString write(const QList<CliVerb> &verbs, const QString &version);
};
