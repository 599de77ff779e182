#include "cli/CliArgs.h"

#include <QDir>
#include <QFileInfo>

namespace {
const CliOption *find(const QList<CliOption> &options, const QString &name) {
    for (const CliOption &option : options)
        if (option.name == name)
            return &option;
    return nullptr;
}
} // namespace

CliArgs::CliArgs(const QStringList &words, const QList<CliOption> &options, const QString &action) {
    QList<CliOption> accepted;
    for (const CliOption &option : options)
        if (option.actions.isEmpty() || option.actions.contains(action))
            accepted << option;
    parse(words, accepted);
}

CliArgs::CliArgs(const QStringList &words, const QStringList &valueOptions,
                 const QStringList &flagOptions) {
    QList<CliOption> options;
    for (const QString &name : valueOptions)
        options << CliOption{name, QStringLiteral("VALUE"), QString()};
    for (const QString &name : flagOptions)
        options << CliOption{name, QString(), QString()};
    parse(words, options);
}

void CliArgs::parse(const QStringList &words, const QList<CliOption> &options) {
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString &word = words[i];
        if (word == QLatin1String("--")) {
            m_positional += words.mid(i + 1);
            break;
        }
        if (!word.startsWith(QLatin1String("--"))) {
            m_positional << word;
            continue;
        }
        const qsizetype equals = word.indexOf(QLatin1Char('='));
        const QString name = equals < 0 ? word : word.left(equals);
        const CliOption *option = find(options, name);
        if (!option) {
            m_error = QStringLiteral("unknown option %1").arg(name);
            return;
        }
        if (!option->takesValue()) {
            if (equals >= 0) {
                m_error = QStringLiteral("%1 takes no value").arg(name);
                return;
            }
            m_flags << name;
            continue;
        }
        if (equals < 0 && i + 1 >= words.size()) {
            m_error = QStringLiteral("%1 needs a value").arg(name);
            return;
        }
        const QString value = equals < 0 ? words[++i] : word.mid(equals + 1);
        if (option->kind == CliValue::Choice && !option->choices.contains(value)) {
            m_error = QStringLiteral("%1 must be one of %2")
                          .arg(name, option->choices.join(QStringLiteral(", ")));
            return;
        }
        m_values.append({name, value});
    }
}

std::optional<QString> CliArgs::value(const QString &option) const {
    for (const auto &[name, value] : m_values)
        if (name == option)
            return value;
    return std::nullopt;
}

QStringList CliArgs::values(const QString &option) const {
    QStringList all;
    for (const auto &[name, value] : m_values)
        if (name == option)
            all << value;
    return all;
}

QString CliArgs::absolutePath(const QString &word) {
    return QDir::cleanPath(QFileInfo(word).absoluteFilePath());
}
