#include "cli/CliArgs.h"

#include <QDir>
#include <QFileInfo>

CliArgs::CliArgs(const QStringList &words, const QStringList &valueOptions,
                 const QStringList &flagOptions) {
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString &word = words[i];
        if (word == QLatin1String("--")) {
            m_positional += words.mid(i + 1);
            break;
        }
        if (valueOptions.contains(word)) {
            if (i + 1 >= words.size()) {
                m_error = QStringLiteral("%1 needs a value").arg(word);
                return;
            }
            m_values.append({word, words[++i]});
        } else if (flagOptions.contains(word)) {
            m_flags << word;
        } else if (word.startsWith(QLatin1String("--"))) {
            m_error = QStringLiteral("unknown option %1").arg(word);
            return;
        } else {
            m_positional << word;
        }
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
