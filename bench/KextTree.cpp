#include "KextTree.h"

#include "inspect/MachOWriter.h"

#include <QDir>
#include <QFile>

namespace bench {

// An Info.plist of the usual size: the keys the loaders read and one matching personality.
QByteArray infoPlist(const QString &id, const QString &name, const QString &library) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n<dict>\n"
           "\t<key>CFBundleDevelopmentRegion</key>\n\t<string>English</string>\n"
           "\t<key>CFBundleExecutable</key>\n\t<string>" +
           name.toUtf8() +
           "</string>\n"
           "\t<key>CFBundleIdentifier</key>\n\t<string>" +
           id.toUtf8() +
           "</string>\n"
           "\t<key>CFBundleInfoDictionaryVersion</key>\n\t<string>6.0</string>\n"
           "\t<key>CFBundleName</key>\n\t<string>" +
           name.toUtf8() +
           "</string>\n"
           "\t<key>CFBundlePackageType</key>\n\t<string>KEXT</string>\n"
           "\t<key>CFBundleShortVersionString</key>\n\t<string>1.2.3</string>\n"
           "\t<key>CFBundleSignature</key>\n\t<string>??\?\?</string>\n"
           "\t<key>CFBundleVersion</key>\n\t<string>1.2.3</string>\n"
           "\t<key>IOKitPersonalities</key>\n\t<dict>\n\t\t<key>" +
           name.toUtf8() +
           "</key>\n\t\t<dict>\n"
           "\t\t\t<key>CFBundleIdentifier</key>\n\t\t\t<string>" +
           id.toUtf8() +
           "</string>\n"
           "\t\t\t<key>IOClass</key>\n\t\t\t<string>" +
           name.toUtf8() +
           "</string>\n"
           "\t\t\t<key>IOMatchCategory</key>\n\t\t\t<string>IODefaultMatchCategory</string>\n"
           "\t\t\t<key>IOProviderClass</key>\n\t\t\t<string>IOPCIDevice</string>\n"
           "\t\t\t<key>IOPCIMatch</key>\n\t\t\t<string>0x10de0000&amp;0xffff0000</string>\n"
           "\t\t\t<key>IOProbeScore</key>\n\t\t\t<integer>1000</integer>\n"
           "\t\t</dict>\n\t</dict>\n"
           "\t<key>OSBundleCompatibleVersion</key>\n\t<string>1.0.0</string>\n"
           "\t<key>OSBundleLibraries</key>\n\t<dict>\n"
           "\t\t<key>com.apple.kpi.iokit</key>\n\t\t<string>9.0.0</string>\n"
           "\t\t<key>com.apple.kpi.libkern</key>\n\t\t<string>9.0.0</string>\n"
           "\t\t<key>" +
           library.toUtf8() +
           "</key>\n\t\t<string>1.0.0</string>\n\t</dict>\n"
           "\t<key>OSBundleRequired</key>\n\t<string>Root</string>\n"
           "</dict>\n</plist>\n";
}

void writeFile(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(path.section('/', 0, -2));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("can't write %s", qPrintable(path));
}

void writeKext(const QString &bundle, const QString &id, const QString &library) {
    static const QByteArray executable = MachOWriter::fat(
        {MachOWriter::kextSlice(MachOWriter::X86_64), MachOWriter::kextSlice(MachOWriter::I386)});
    const QString name = bundle.section('/', -1).section('.', 0, 0);
    writeFile(bundle + "/Contents/Info.plist", infoPlist(id, name, library));
    writeFile(bundle + "/Contents/MacOS/" + name, executable);
    writeFile(bundle + "/Contents/Resources/English.lproj/InfoPlist.strings", "\"x\" = \"y\";\n");
}

} // namespace bench
