#include "sandbox/SandboxCatalog.h"

namespace {

using Binary = SandboxKext::Binary;
using Libraries = QList<QPair<QString, QString>>;

const QString vendor = QStringLiteral("com.sandboxmac.");
const QString sle = QStringLiteral("System/Library/Extensions/");
const QString extra = QStringLiteral("Extra/Extensions/");
const QString lion = QStringLiteral("Volumes/Lion Backup/");

QPair<QString, QString> lib(const QString &id, const QString &version) {
    return {vendor + id, version};
}

Libraries kpi() {
    return {lib(QStringLiteral("kpi.iokit"), QStringLiteral("8.0.0")),
            lib(QStringLiteral("kpi.libkern"), QStringLiteral("8.0.0"))};
}

Libraries kpiAnd(const QString &id, const QString &version) {
    Libraries libraries = kpi();
    libraries.append(lib(id, version));
    return libraries;
}

SandboxKext kext(const QString &path, const QString &id, const QString &version, Binary binary,
                 const Libraries &libraries, bool loaded) {
    SandboxKext k;
    k.path = path;
    k.identifier = id.startsWith(QLatin1String("org.")) ? id : vendor + id;
    k.version = version;
    k.binary = binary;
    k.libraries = libraries;
    k.loaded = loaded;
    return k;
}

void addKernelInterfaces(QList<SandboxKext> &list, const QString &base, const QString &version,
                         bool loaded) {
    const QString kernel = base + QStringLiteral("KernelInterfaces.kext");
    list << kext(kernel, QStringLiteral("kernel"), version, Binary::None, {}, false);
    for (const char *name : {"BSD", "IOKit", "Libkern", "Mach", "Unsupported"}) {
        const QString lower = QString::fromLatin1(name).toLower();
        SandboxKext k = kext(kernel + QStringLiteral("/Contents/PlugIns/%1.kext").arg(name),
                             QStringLiteral("kpi.") + lower, version, Binary::None, {}, loaded);
        k.compatibleVersion = QStringLiteral("8.0.0");
        list << k;
    }
}

SandboxKext flawed(const QString &path, const QString &id, const QString &version,
                   const Libraries &libraries, SandboxKext::Flaw flaw) {
    SandboxKext k = kext(path, id, version, Binary::Fat, libraries, false);
    k.flaw = flaw;
    return k;
}

// What the kext doctor looks for, at least once each on the started system (kexts with
// code for one processor only are among the drivers already).
void addFlawedKexts(QList<SandboxKext> &list) {
    using Flaw = SandboxKext::Flaw;
    list << flawed(sle + QStringLiteral("SandboxCardBus.kext"), QStringLiteral("driver.CardBus"),
                   QStringLiteral("1.0.4"), kpi(), Flaw::ForeignOwner);
    list << flawed(sle + QStringLiteral("SandboxATAPI.kext"), QStringLiteral("driver.ATAPI"),
                   QStringLiteral("1.7.1"),
                   kpiAnd(QStringLiteral("iokit.StorageFamily"), QStringLiteral("1.0.0")),
                   Flaw::InnerLink);
    list << flawed(sle + QStringLiteral("SandboxIrDA.kext"), QStringLiteral("driver.IrDA"),
                   QStringLiteral("1.0.0"), kpi(), Flaw::BrokenInfoPlist);
    list << flawed(sle + QStringLiteral("SandboxSmartCard.kext"),
                   QStringLiteral("driver.SmartCard"), QStringLiteral("3.1.0"), kpi(),
                   Flaw::MissingExecutable);
    // Needs a family no volume has, and a newer USB family than S/L/E's.
    Libraries webcam = kpiAnd(QStringLiteral("iokit.VideoFamily"), QStringLiteral("1.0.0"));
    webcam.append(lib(QStringLiteral("iokit.USBFamily"), QStringLiteral("5.0.0")));
    list << flawed(sle + QStringLiteral("SandboxWebcam.kext"), QStringLiteral("driver.Webcam"),
                   QStringLiteral("2.0.0"), webcam, Flaw::MissingLibrary);
    // 64-bit code linked against the kernel's pre-10.4 libraries.
    list << flawed(sle + QStringLiteral("SandboxLegacyAudio.kext"),
                   QStringLiteral("driver.LegacyAudio"), QStringLiteral("1.1.0"),
                   {{QStringLiteral("com.apple.kernel.iokit"), QStringLiteral("7.0")},
                    {QStringLiteral("com.apple.kernel.libkern"), QStringLiteral("7.0")}},
                   Flaw::None);
    // A card reader in Extra that the boot loader skips, like the S/L/E family it needs.
    SandboxKext family =
        kext(sle + QStringLiteral("SandboxSDFamily.kext"), QStringLiteral("iokit.SDFamily"),
             QStringLiteral("1.2.0"), Binary::Fat, kpi(), false);
    family.compatibleVersion = QStringLiteral("1.0.0");
    family.bootRequired = false;
    list << family;
    SandboxKext reader =
        kext(extra + QStringLiteral("ExampleCardReader.kext"),
             QStringLiteral("org.example.driver.CardReader"), QStringLiteral("1.1"), Binary::Fat,
             kpiAnd(QStringLiteral("iokit.SDFamily"), QStringLiteral("1.0.0")), false);
    reader.bootRequired = false;
    reader.addedLater = true;
    list << reader;
    // A copy of a system kext, no newer than the system's own.
    SandboxKext copy =
        kext(extra + QStringLiteral("SandboxAHCIPort.kext"), QStringLiteral("driver.AHCIPort"),
             QStringLiteral("2.1.7"), Binary::Fat,
             kpiAnd(QStringLiteral("iokit.StorageFamily"), QStringLiteral("1.0.0")), false);
    copy.addedLater = true;
    list << copy;
}

QList<SandboxKext> build() {
    QList<SandboxKext> list;
    addKernelInterfaces(list, sle, QStringLiteral("10.8.0"), true);

    auto family = [&](const QString &name, const QString &id, const QString &version, bool loaded) {
        SandboxKext k =
            kext(sle + name + QStringLiteral(".kext"), id, version, Binary::Fat, kpi(), loaded);
        k.compatibleVersion = QStringLiteral("1.0.0");
        list << k;
    };
    auto driver = [&](const QString &path, const QString &id, const QString &version, Binary binary,
                      const Libraries &libraries, bool loaded) {
        list << kext(sle + path, id, version, binary, libraries, loaded);
    };

    family(QStringLiteral("SandboxACPIFamily"), QStringLiteral("iokit.ACPIFamily"),
           QStringLiteral("1.3.6"), true);
    driver(QStringLiteral("SandboxACPIPlatform.kext"), QStringLiteral("driver.ACPIPlatform"),
           QStringLiteral("1.3.6"), Binary::Fat,
           kpiAnd(QStringLiteral("iokit.ACPIFamily"), QStringLiteral("1.0.0")), true);
    list.last().compatibleVersion = QStringLiteral("1.0.0"); // its plug-ins link against it
    driver(QStringLiteral("SandboxACPIPlatform.kext/Contents/PlugIns/SandboxACPIButtons.kext"),
           QStringLiteral("driver.ACPIButtons"), QStringLiteral("1.3.6"), Binary::Fat,
           kpiAnd(QStringLiteral("driver.ACPIPlatform"), QStringLiteral("1.0.0")), true);
    driver(QStringLiteral("SandboxACPIPlatform.kext/Contents/PlugIns/SandboxACPIThermal.kext"),
           QStringLiteral("driver.ACPIThermal"), QStringLiteral("1.0.2"), Binary::I386,
           kpiAnd(QStringLiteral("driver.ACPIPlatform"), QStringLiteral("1.0.0")), false);
    family(QStringLiteral("SandboxStorageFamily"), QStringLiteral("iokit.StorageFamily"),
           QStringLiteral("1.6.3"), true);
    driver(QStringLiteral("SandboxAHCIPort.kext"), QStringLiteral("driver.AHCIPort"),
           QStringLiteral("2.1.7"), Binary::Fat,
           kpiAnd(QStringLiteral("iokit.StorageFamily"), QStringLiteral("1.0.0")), true);
    family(QStringLiteral("SandboxUSBFamily"), QStringLiteral("iokit.USBFamily"),
           QStringLiteral("4.4.5"), true);
    driver(QStringLiteral("SandboxUSBFamily.kext/Contents/PlugIns/SandboxUSBHub.kext"),
           QStringLiteral("driver.USBHub"), QStringLiteral("4.4.5"), Binary::Fat,
           kpiAnd(QStringLiteral("iokit.USBFamily"), QStringLiteral("1.0.0")), true);
    driver(QStringLiteral("SandboxUSBFamily.kext/Contents/PlugIns/SandboxUSBComposite.kext"),
           QStringLiteral("driver.USBComposite"), QStringLiteral("4.4.5"), Binary::Fat,
           kpiAnd(QStringLiteral("iokit.USBFamily"), QStringLiteral("1.0.0")), false);
    family(QStringLiteral("SandboxAudioFamily"), QStringLiteral("iokit.AudioFamily"),
           QStringLiteral("1.8.3"), true);
    driver(QStringLiteral("SandboxHDAController.kext"), QStringLiteral("driver.HDAController"),
           QStringLiteral("1.9.9"), Binary::Fat,
           kpiAnd(QStringLiteral("iokit.AudioFamily"), QStringLiteral("1.0.0")), true);
    family(QStringLiteral("SandboxGraphicsFamily"), QStringLiteral("iokit.GraphicsFamily"),
           QStringLiteral("2.0.1"), true);
    driver(QStringLiteral("SandboxFramebuffer.kext"), QStringLiteral("driver.Framebuffer"),
           QStringLiteral("6.3.6"), Binary::X86_64,
           kpiAnd(QStringLiteral("iokit.GraphicsFamily"), QStringLiteral("1.0.0")), true);
    family(QStringLiteral("SandboxNetworkFamily"), QStringLiteral("iokit.NetworkFamily"),
           QStringLiteral("1.10.2"), true);
    driver(QStringLiteral("SandboxEthernet.kext"), QStringLiteral("driver.Ethernet"),
           QStringLiteral("2.0.4"), Binary::I386,
           kpiAnd(QStringLiteral("iokit.NetworkFamily"), QStringLiteral("1.0.0")), false);
    family(QStringLiteral("SandboxHIDFamily"), QStringLiteral("iokit.HIDFamily"),
           QStringLiteral("1.6.6"), true);
    driver(QStringLiteral("SandboxPS2Controller.kext"), QStringLiteral("driver.PS2Controller"),
           QStringLiteral("1.3.0"), Binary::Fat,
           kpiAnd(QStringLiteral("iokit.HIDFamily"), QStringLiteral("1.0.0")), true);
    list.last().compatibleVersion = QStringLiteral("1.0.0");
    driver(QStringLiteral("SandboxPS2Controller.kext/Contents/PlugIns/SandboxPS2Keyboard.kext"),
           QStringLiteral("driver.PS2Keyboard"), QStringLiteral("1.3.0"), Binary::Fat,
           kpiAnd(QStringLiteral("driver.PS2Controller"), QStringLiteral("1.0.0")), true);
    driver(QStringLiteral("SandboxPS2Controller.kext/Contents/PlugIns/SandboxPS2Mouse.kext"),
           QStringLiteral("driver.PS2Mouse"), QStringLiteral("1.3.0"), Binary::Fat,
           kpiAnd(QStringLiteral("driver.PS2Controller"), QStringLiteral("1.0.0")), true);
    driver(QStringLiteral("SandboxSMBusController.kext"), QStringLiteral("driver.SMBusController"),
           QStringLiteral("1.0.8"), Binary::I386, kpi(), false);
    driver(QStringLiteral("SandboxCPUPowerManagement.kext"),
           QStringLiteral("driver.CPUPowerManagement"), QStringLiteral("142.6.0"), Binary::Fat,
           kpiAnd(QStringLiteral("kpi.unsupported"), QStringLiteral("8.0.0")), true);
    list.last().compatibleVersion = QStringLiteral("1.0.0");
    driver(QStringLiteral("SandboxPlatformPlugin.kext"), QStringLiteral("driver.PlatformPlugin"),
           QStringLiteral("4.7.0"), Binary::Fat,
           kpiAnd(QStringLiteral("driver.CPUPowerManagement"), QStringLiteral("1.0.0")), true);
    driver(QStringLiteral("SandboxRTC.kext"), QStringLiteral("driver.RTC"), QStringLiteral("1.3"),
           Binary::Fat, kpi(), true);
    driver(QStringLiteral("SandboxNVRAM.kext"), QStringLiteral("driver.NVRAM"),
           QStringLiteral("1.1"), Binary::None, {}, false);
    driver(QStringLiteral("SandboxFireWireFamily.kext"), QStringLiteral("iokit.FireWireFamily"),
           QStringLiteral("4.2.6"), Binary::Fat, kpi(), false);
    driver(QStringLiteral("SandboxBluetoothFamily.kext"), QStringLiteral("iokit.BluetoothFamily"),
           QStringLiteral("2.4.5"), Binary::Fat, kpi(), true);
    driver(QStringLiteral("SandboxDiskImages.kext"), QStringLiteral("driver.DiskImages"),
           QStringLiteral("289.1"), Binary::Fat,
           kpiAnd(QStringLiteral("iokit.StorageFamily"), QStringLiteral("1.0.0")), true);
    driver(QStringLiteral("SandboxLegacyVideo.kext"), QStringLiteral("driver.LegacyVideo"),
           QStringLiteral("1.0.1"), Binary::Ppc,
           kpiAnd(QStringLiteral("iokit.GraphicsFamily"), QStringLiteral("1.0.0")), false);
    // An old-style bundle: no Contents folder, the plist and the binary at its top.
    SandboxKext old =
        kext(sle + QStringLiteral("SandboxOldSerial.kext"), QStringLiteral("driver.OldSerial"),
             QStringLiteral("1.0"), Binary::I386, kpi(), false);
    old.oldStyle = true;
    list << old;

    // Third-party kexts the boot loader loads from Extra.
    list << kext(extra + QStringLiteral("ExampleSensors.kext"),
                 QStringLiteral("org.example.driver.Sensors"), QStringLiteral("3.4.1"), Binary::Fat,
                 kpiAnd(QStringLiteral("driver.ACPIPlatform"), QStringLiteral("1.0.0")), true);
    list << kext(extra + QStringLiteral("ExampleSensors.kext/Contents/PlugIns/ExampleCPUTemp.kext"),
                 QStringLiteral("org.example.driver.CPUTemp"), QStringLiteral("3.4.1"), Binary::Fat,
                 kpiAnd(QStringLiteral("kpi.unsupported"), QStringLiteral("8.0.0")), true);
    list << kext(extra + QStringLiteral("ExampleEthernet.kext"),
                 QStringLiteral("org.example.driver.Ethernet"), QStringLiteral("2.0.1"),
                 Binary::I386,
                 kpiAnd(QStringLiteral("iokit.NetworkFamily"), QStringLiteral("1.0.0")), false);
    list << kext(extra + QStringLiteral("ExampleAudioPatch.kext"),
                 QStringLiteral("org.example.driver.AudioPatch"), QStringLiteral("1.2"),
                 Binary::Fat, kpiAnd(QStringLiteral("iokit.AudioFamily"), QStringLiteral("1.0.0")),
                 true);
    list << kext(extra + QStringLiteral("ExampleDiskShim.kext"),
                 QStringLiteral("org.example.driver.DiskShim"), QStringLiteral("0.9.2"),
                 Binary::Fat, kpi(), false);
    list.last().flaw = SandboxKext::Flaw::GroupWritable;
    // The same sensors kext kept for 10.6 in a version folder.
    list << kext(QStringLiteral("Extra/10.6/Extensions/ExampleSensors.kext"),
                 QStringLiteral("org.example.driver.Sensors"), QStringLiteral("3.2.0"), Binary::Fat,
                 kpiAnd(QStringLiteral("driver.ACPIPlatform"), QStringLiteral("1.0.0")), false);

    addFlawedKexts(list);

    // The backup volume: a 10.7 system with its kexts kept in KextStore.
    addKernelInterfaces(list, lion + sle, QStringLiteral("11.4.0"), false);
    list << kext(lion + sle + QStringLiteral("SandboxACPIPlatform.kext"),
                 QStringLiteral("driver.ACPIPlatform"), QStringLiteral("1.4"), Binary::Fat, kpi(),
                 false);
    list << kext(lion + QStringLiteral("Extra/KextStore/ExampleSensors.kext"),
                 QStringLiteral("org.example.driver.Sensors"), QStringLiteral("3.4.1"), Binary::Fat,
                 kpi(), false);
    list << kext(lion + QStringLiteral("Extra/KextStore/ExampleLionFix.kext"),
                 QStringLiteral("org.example.driver.LionFix"), QStringLiteral("1.0.0"),
                 Binary::X86_64, kpi(), false);
    return list;
}

} // namespace

const QList<SandboxKext> &SandboxCatalog::kexts() {
    static const QList<SandboxKext> list = build();
    return list;
}
