#include "SandboxOffer.h"

#include "AlertBox.h"

#include "sandbox/SandboxBuilder.h"
#include "volumes/SystemPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QWidget>

SandboxOffer::SandboxOffer(const QString &home)
    : m_folder(home + QStringLiteral("/KextKeeper Sandbox")) {}

bool SandboxOffer::applies(const SystemPaths &paths) {
#ifdef Q_OS_MACOS
    Q_UNUSED(paths);
    return false;
#else
    return !paths.isSandbox();
#endif
}

bool SandboxOffer::exists() const {
    // A sandbox is known by its volumes folder; any other folder of that name is left
    // alone (the builder refuses to write into it).
    return QFileInfo(m_folder + QStringLiteral("/Volumes")).isDir();
}

QString SandboxOffer::actionText() const {
    return exists() ? QCoreApplication::translate("SandboxOffer", "Open the Sandbox Mac")
                    : QCoreApplication::translate("SandboxOffer", "Create a Sandbox Mac");
}

bool SandboxOffer::openOrCreate(QString &error) const {
    const QString binary = QCoreApplication::applicationFilePath();
    if (!exists()) {
        SandboxBuilder builder(m_folder, binary);
        if (!builder.create()) {
            error = builder.error();
            return false;
        }
    }
    if (!QProcess::startDetached(binary, {QStringLiteral("--root"), m_folder})) {
        error = QCoreApplication::translate("SandboxOffer", "KextKeeper could not be started "
                                                            "on the sandbox Mac in %1.")
                    .arg(QDir::toNativeSeparators(m_folder));
        return false;
    }
    return true;
}

void SandboxOffer::acceptFrom(QWidget &window) const {
    QString error;
    if (openOrCreate(error))
        window.close();
    else
        AlertBox::warn(&window, error);
}
