#pragma once

#include "cli/CliOption.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

// Small parser for a verb's own words: "--name value" (or "--name=value") options,
// "--flag" switches and positional words, in any order.
class CliArgs {
public:
    // The options of a verb's syntax (of its `action`, when it has actions); a value
    // outside an option's choices is an error.
    CliArgs(const QStringList &words, const QList<CliOption> &options, const QString &action = {});
    CliArgs(const QStringList &words, const QStringList &valueOptions,
            const QStringList &flagOptions);

    bool ok() const { return m_error.isEmpty(); }
    QString error() const { return m_error; }

    std::optional<QString> value(const QString &option) const;
    QStringList values(const QString &option) const; // every occurrence, in order
    bool flag(const QString &option) const { return m_flags.contains(option); }
    QStringList positional() const { return m_positional; }

    // A path typed on the terminal, made absolute from the current folder and without the
    // slash completion adds to a folder, before it reaches any tool: a relative word such
    // as "-rf.kext" would otherwise reach the tool as an option, and a bare name has no
    // folder to remember.
    static QString absolutePath(const QString &word);

private:
    void parse(const QStringList &words, const QList<CliOption> &options);

    QList<QPair<QString, QString>> m_values;
    QStringList m_flags;
    QStringList m_positional;
    QString m_error;
};
