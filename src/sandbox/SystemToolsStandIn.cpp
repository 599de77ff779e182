#include "sandbox/SystemToolsStandIn.h"

#include "inspect/MachODescriber.h"
#include "plist/PlistFile.h"
#include "sandbox/SandboxCatalog.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <pwd.h>
#include <unistd.h>

namespace {

QString canonical(const QString &path) {
    return QFileInfo(path).canonicalFilePath();
}

// diskutil's labels are padded so that every value begins at column 29.
QString field(const QString &label, const QString &value) {
    return QStringLiteral("   ") + (label + QLatin1Char(':')).leftJustified(26) + value +
           QLatin1Char('\n');
}

// "Escaped with Unicode": every character that is not a plain letter, digit or slash
// spelled as its UTF-16 bytes behind a byte-order mark.
QString escaped(const QString &text) {
    QString result;
    for (QChar c : text) {
        const ushort u = c.unicode();
        if (u < 128 && (c.isLetterOrNumber() || c == QLatin1Char('/') || c == QLatin1Char('.')))
            result += c;
        else
            result += QString::asprintf("%%FF%%FE%%%02X%%%02X", u & 0xff, u >> 8);
    }
    return result;
}

QString userName() {
    const passwd *pw = ::getpwuid(::getuid());
    if (!pw)
        return QStringLiteral("Sandbox User (sandbox)");
    const QString login = QString::fromLocal8Bit(pw->pw_name);
    QString full = QString::fromLocal8Bit(pw->pw_gecos).section(QLatin1Char(','), 0, 0);
    if (full.isEmpty())
        full = login;
    return full + QStringLiteral(" (") + login + QLatin1Char(')');
}

QString uptimeSince(const QDateTime &start) {
    const qint64 minutes = qMax<qint64>(0, start.secsTo(QDateTime::currentDateTime()) / 60);
    const qint64 days = minutes / (24 * 60);
    const QString clock = QString::asprintf("%lld:%02lld", (minutes / 60) % 24, minutes % 60);
    if (days == 0)
        return clock;
    return QStringLiteral("%1 day%2 %3").arg(days).arg(days == 1 ? "" : "s").arg(clock);
}

} // namespace

SystemToolsStandIn::SystemToolsStandIn(const QString &root) : m_root(root) {}

std::optional<SystemToolsStandIn::Volume> SystemToolsStandIn::volumeAt(const QString &path) const {
    const QString target = canonical(path);
    if (target.isEmpty())
        return std::nullopt;
    if (target == canonical(m_root))
        return Volume{SandboxCatalog::startedVolume(), QStringLiteral("/"),
                      QStringLiteral("disk0s2")};
    const QFileInfo info(target);
    const QString volumes = canonical(m_root + QStringLiteral("/Volumes"));
    if (volumes.isEmpty() || QFileInfo(info.path()).canonicalFilePath() != volumes)
        return std::nullopt;
    const QString name = info.fileName();
    QString device = QStringLiteral("disk2s1");
    if (name == SandboxCatalog::lionVolume())
        device = QStringLiteral("disk0s3");
    else if (name == SandboxCatalog::dataVolume())
        device = QStringLiteral("disk1s2");
    return Volume{name, QStringLiteral("/Volumes/") + name, device};
}

QString SystemToolsStandIn::diskInfo(const Volume &volume) const {
    const bool started = volume.mountPoint == QLatin1String("/");
    QString text;
    text += field(QStringLiteral("Device Identifier"), volume.device);
    text += field(QStringLiteral("Device Node"), QStringLiteral("/dev/") + volume.device);
    text += field(QStringLiteral("Part Of Whole"),
                  volume.device.left(volume.device.lastIndexOf(QLatin1Char('s'))));
    text += field(QStringLiteral("Device / Media Name"), QStringLiteral("Customer"));
    text += QLatin1Char('\n');
    text += field(QStringLiteral("Volume Name"), volume.name);
    text += field(QStringLiteral("Escaped with Unicode"), escaped(volume.name));
    text += QLatin1Char('\n');
    text += field(QStringLiteral("Mounted"), QStringLiteral("Yes"));
    text += field(QStringLiteral("Mount Point"), volume.mountPoint);
    text += field(QStringLiteral("Escaped with Unicode"), escaped(volume.mountPoint));
    text += QLatin1Char('\n');
    text += field(QStringLiteral("File System"), QStringLiteral("Journaled HFS+"));
    text += field(QStringLiteral("Type"), QStringLiteral("hfs"));
    text += field(QStringLiteral("Owners"), QStringLiteral("Enabled"));
    text += QLatin1Char('\n');
    text += field(QStringLiteral("Partition Type"), QStringLiteral("Apple_HFS"));
    text += field(QStringLiteral("Bootable"), QStringLiteral("Is bootable"));
    text += field(QStringLiteral("Media Type"), QStringLiteral("Generic"));
    text += field(QStringLiteral("Protocol"), QStringLiteral("SATA"));
    text += QLatin1Char('\n');
    text += field(QStringLiteral("Read-Only Media"), QStringLiteral("No"));
    text += field(QStringLiteral("Read-Only Volume"), QStringLiteral("No"));
    text += field(QStringLiteral("Ejectable"), QStringLiteral("No"));
    text += QLatin1Char('\n');
    text += field(QStringLiteral("Whole"), QStringLiteral("No"));
    text +=
        field(QStringLiteral("Internal"), started ? QStringLiteral("Yes") : QStringLiteral("No"));
    text += QLatin1Char('\n');
    return text;
}

StandInResult SystemToolsStandIn::diskutil(const QStringList &args) const {
    const QString verb = args.value(0);
    if (verb != QLatin1String("info") && verb != QLatin1String("repairpermissions"))
        return StandInResult::failure(QStringLiteral("Usage: diskutil <verb> <options>\n"));
    if (args.size() < 2)
        return StandInResult::failure(
            QStringLiteral("Usage:  diskutil %1 MountPoint|DiskIdentifier|DeviceNode\n").arg(verb));
    const std::optional<Volume> volume = volumeAt(args.at(1));
    if (!volume)
        return StandInResult::failure(QStringLiteral("Could not find disk: %1\n").arg(args.at(1)));
    if (verb == QLatin1String("info"))
        return {diskInfo(*volume).toUtf8(), {}, 0};
    const QString disk = volume->device + QLatin1Char(' ') + volume->name;
    const QString text = QStringLiteral("Started verify/repair permissions on ") + disk +
                         QStringLiteral("\nDetermining correct file permissions.\n") +
                         QStringLiteral("Finished verify/repair permissions on ") + disk +
                         QLatin1Char('\n');
    return {text.toUtf8(), {}, 0};
}

QString SystemToolsStandIn::systemVersion() const {
    const auto plist = PlistFile::readDictionary(
        m_root + QStringLiteral("/System/Library/CoreServices/SystemVersion.plist"));
    if (!plist)
        return QStringLiteral("Mac OS X");
    return QStringLiteral("%1 %2 (%3)")
        .arg(PlistFile::string(plist.get(), "ProductName").value_or(QStringLiteral("Mac OS X")),
             PlistFile::string(plist.get(), "ProductVersion").value_or(QString()),
             PlistFile::string(plist.get(), "ProductBuildVersion").value_or(QString()));
}

StandInResult SystemToolsStandIn::systemProfiler(const QStringList &args) const {
    const QString type = args.value(0);
    QString text;
    auto line = [&text](const QString &key, const QString &value) {
        text += QStringLiteral("      ") + key + QStringLiteral(": ") + value + QLatin1Char('\n');
    };
    if (type == QLatin1String("SPSoftwareDataType")) {
        // The sandbox "booted" when it was made, which is when its system got a version.
        const QDateTime boot =
            QFileInfo(m_root + QStringLiteral("/System/Library/CoreServices/SystemVersion.plist"))
                .lastModified();
        text = QStringLiteral("Software:\n\n    System Software Overview:\n\n");
        line(QStringLiteral("System Version"), systemVersion());
        line(QStringLiteral("Kernel Version"), QStringLiteral("Darwin 10.8.0"));
        line(QStringLiteral("Boot Volume"), SandboxCatalog::startedVolume());
        line(QStringLiteral("Boot Mode"), QStringLiteral("Normal"));
        line(QStringLiteral("Computer Name"), QStringLiteral("Sandbox Mac"));
        line(QStringLiteral("User Name"), userName());
        line(QStringLiteral("Secure Virtual Memory"), QStringLiteral("Not Enabled"));
        line(QStringLiteral("64-bit Kernel and Extensions"), QStringLiteral("Yes"));
        line(QStringLiteral("Time since boot"), uptimeSince(boot));
        text += QLatin1Char('\n');
    } else if (type == QLatin1String("SPHardwareDataType")) {
        text = QStringLiteral("Hardware:\n\n    Hardware Overview:\n\n");
        line(QStringLiteral("Model Name"), QStringLiteral("Mac Pro"));
        line(QStringLiteral("Model Identifier"), QStringLiteral("MacPro3,1"));
        line(QStringLiteral("Processor Name"), QStringLiteral("Quad-Core Intel Xeon"));
        line(QStringLiteral("Processor Speed"), QStringLiteral("2.8 GHz"));
        line(QStringLiteral("Number Of Processors"), QStringLiteral("1"));
        line(QStringLiteral("Total Number Of Cores"), QStringLiteral("4"));
        line(QStringLiteral("L2 Cache"), QStringLiteral("6 MB"));
        line(QStringLiteral("Memory"), QStringLiteral("8 GB"));
        line(QStringLiteral("Bus Speed"), QStringLiteral("1.6 GHz"));
        line(QStringLiteral("Boot ROM Version"), QStringLiteral("MP31.006C.B05"));
        line(QStringLiteral("SMC Version (system)"), QStringLiteral("1.25f4"));
        if (!args.contains(QStringLiteral("mini"))) {
            line(QStringLiteral("Serial Number (system)"), QStringLiteral("SANDBOX0001"));
            line(QStringLiteral("Hardware UUID"),
                 QStringLiteral("00000000-0000-1000-8000-0016CB000001"));
        }
        text += QLatin1Char('\n');
    }
    return {text.toUtf8(), {}, 0};
}

StandInResult SystemToolsStandIn::file(const QStringList &args) const {
    bool brief = false;
    StandInResult result;
    for (const QString &arg : args) {
        if (arg == QLatin1String("-b")) {
            brief = true;
            continue;
        }
        const QString prefix = brief ? QString() : arg + QStringLiteral(": ");
        result.out += (prefix + MachODescriber::describe(arg)).toUtf8();
    }
    return result;
}
