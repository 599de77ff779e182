#include "AppSettings.h"

#include "plist/PlistFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

AppSettings::AppSettings(const QString &contentsDir)
    : m_contentsDir(contentsDir), m_infoPlist(contentsDir + QStringLiteral("/Info.plist")) {}

void AppSettings::seedDefaults() const {
    if (QFileInfo::exists(m_infoPlist))
        return;
    QFile shipped(QStringLiteral(":/defaults/Info.plist"));
    if (!shipped.open(QIODevice::ReadOnly))
        return;
    const auto dict = PlistFile::parseDictionary(shipped.readAll());
    if (!dict)
        return;
    QDir().mkpath(m_contentsDir);
    PlistFile::writeDictionary(m_infoPlist, *dict);
}

bool AppSettings::boolean(const char *key) const {
    const auto dict = PlistFile::readDictionary(m_infoPlist);
    return dict && PlistFile::boolean(*dict, key).value_or(false);
}

QString AppSettings::string(const char *key) const {
    const auto dict = PlistFile::readDictionary(m_infoPlist);
    return dict ? PlistFile::string(*dict, key).value_or(QString()) : QString();
}

bool AppSettings::store(const char *key, bool value) const {
    return PlistFile::setBoolean(m_infoPlist, key, value);
}
