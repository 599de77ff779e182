#include "sandbox/SandboxKext.h"

QString SandboxKext::name() const {
    QString file = path.section(QLatin1Char('/'), -1);
    file.chop(5); // ".kext"
    return file;
}

QString SandboxKext::infoPlistPath() const {
    return path +
           (oldStyle ? QStringLiteral("/Info.plist") : QStringLiteral("/Contents/Info.plist"));
}

QString SandboxKext::executablePath() const {
    if (binary == Binary::None)
        return {};
    return path + (oldStyle ? QStringLiteral("/") : QStringLiteral("/Contents/MacOS/")) + name();
}
