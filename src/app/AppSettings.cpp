#include "AppSettings.h"

#include "plist/PlistFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

AppSettings::AppSettings(const QString &contentsDir)
    : m_contentsDir(contentsDir), m_infoPlist(contentsDir + QStringLiteral("/Info.plist")) {}

// The shipped settings are a resource of the application library; a static link keeps
// its data only when something asks for it by name.
static void loadShippedResources() {
    Q_INIT_RESOURCE(window);
}

void AppSettings::seedDefaults() const {
    if (QFileInfo::exists(m_infoPlist))
        return;
    loadShippedResources();
    QFile shipped(QStringLiteral(":/defaults/Info.plist"));
    if (!shipped.open(QIODevice::ReadOnly))
        return;
    const auto dict = PlistFile::parseDictionary(shipped.readAll());
    if (!dict)
        return;
    QDir().mkpath(m_contentsDir);
    PlistFile::writeDictionary(m_infoPlist, dict.get());
}

bool AppSettings::boolean(const char *key) const {
    const auto dict = PlistFile::readDictionary(m_infoPlist);
    return dict && PlistFile::boolean(dict.get(), key).value_or(false);
}

QString AppSettings::string(const char *key) const {
    const auto dict = PlistFile::readDictionary(m_infoPlist);
    return dict ? PlistFile::string(dict.get(), key).value_or(QString()) : QString();
}

bool AppSettings::store(const char *key, bool value) const {
    return PlistFile::setBoolean(m_infoPlist, key, value);
}
