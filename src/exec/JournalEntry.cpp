#include "exec/JournalEntry.h"

#include <QJsonArray>

QString JournalEntry::statusText() const {
    return planned ? QStringLiteral("planned") : result.statusText();
}

QString JournalEntry::displayLine() const {
    return script.isEmpty() ? command.toShellLine() : script;
}

QJsonObject JournalEntry::toJson() const {
    QJsonObject object{
        {QStringLiteral("time"), time.toUTC().toString(Qt::ISODateWithMs)},
        {QStringLiteral("tool"), command.tool},
        {QStringLiteral("args"), QJsonArray::fromStringList(command.args)},
        {QStringLiteral("root"), command.asRoot},
        {QStringLiteral("started"), result.launched},
        {QStringLiteral("status"), result.exitStatus},
        {QStringLiteral("ms"), durationMs},
        {QStringLiteral("stderr"), result.errorText},
    };
    if (!script.isEmpty())
        object.insert(QStringLiteral("script"), script);
    return object;
}

std::optional<JournalEntry> JournalEntry::fromJson(const QJsonObject &object) {
    const QJsonValue tool = object.value(QStringLiteral("tool"));
    const QDateTime time =
        QDateTime::fromString(object.value(QStringLiteral("time")).toString(), Qt::ISODateWithMs);
    if (!tool.isString() || !time.isValid())
        return std::nullopt;
    JournalEntry entry;
    entry.time = time;
    entry.command.tool = tool.toString();
    for (const QJsonValue &arg : object.value(QStringLiteral("args")).toArray())
        entry.command.args << arg.toString();
    entry.command.asRoot = object.value(QStringLiteral("root")).toBool(true);
    entry.result.launched = object.value(QStringLiteral("started")).toBool(true);
    entry.result.exitStatus = object.value(QStringLiteral("status")).toInt(-1);
    entry.result.errorText = object.value(QStringLiteral("stderr")).toString();
    entry.durationMs = object.value(QStringLiteral("ms")).toInteger();
    entry.script = object.value(QStringLiteral("script")).toString();
    return entry;
}
