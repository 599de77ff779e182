#include "inspect/ArchitectureProbe.h"
#include "inspect/MachOWriter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
// The marked processors by name, so that a wrong mark reads as words.
QString marked(const ArchitectureProbe::Architectures &a) {
    QStringList on;
    for (const auto &[set, name] : {std::pair{a.x86_64, "x86_64"}, std::pair{a.i386, "i386"},
                                    std::pair{a.ppc, "ppc"}, std::pair{a.ppc64, "ppc64"}}) {
        if (set)
            on << QLatin1String(name);
    }
    return on.join(QLatin1Char(' '));
}
} // namespace

class TestArchitectureProbe : public QObject {
    Q_OBJECT
private slots:
    void checkPageMarkers_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("universal x86_64 i386")
            << "Mach-O universal binary with 2 architectures\n"
               "/K.kext/Contents/MacOS/K (for architecture x86_64):\tMach-O 64-bit kext bundle "
               "x86_64\n/K.kext/Contents/MacOS/K (for architecture i386):\tMach-O object i386\n"
            << "x86_64 i386";
        // Any 64-bit file counts as x86_64, whatever its processor.
        QTest::newRow("thin 64-bit ppc64") << "Mach-O 64-bit object ppc64\n"
                                           << "x86_64";
        // The ppc marker is part of the ppc64 one.
        QTest::newRow("ppc64 object wording") << "Mach-O object ppc64\n"
                                              << "ppc ppc64";
        // The closing parenthesis keeps the ppc line marker off the ppc64 slice line, but the
        // slice's own 64-bit description still says x86_64.
        QTest::newRow("universal ppc64 only")
            << "Mach-O universal binary with 1 architecture\n"
               "/K (for architecture ppc64):\tMach-O 64-bit object ppc64\n"
            << "x86_64 ppc64";
        QTest::newRow("universal ppc and i386")
            << "Mach-O universal binary with 2 architectures\n"
               "/K (for architecture ppc):\tMach-O object ppc\n"
               "/K (for architecture i386):\tMach-O object i386\n"
            << "i386 ppc";
        QTest::newRow("case matters") << "mach-o object I386 (FOR ARCHITECTURE X86_64)"
                                      << "";
    }

    void checkPageMarkers() {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(marked(ArchitectureProbe::checkPageMarkers(text)), expected);
    }

    void loadedKextMarkers() {
        // Only the two Intel processors are asked for; ppc never shows.
        QCOMPARE(marked(ArchitectureProbe::loadedKextMarkers(
                     "Mach-O universal binary with 3 architectures\n"
                     "/K (for architecture ppc):\tMach-O object ppc\n"
                     "/K (for architecture i386):\tMach-O object i386\n"
                     "/K (for architecture ppc64):\tMach-O object ppc64\n")),
                 "i386");
        QCOMPARE(marked(ArchitectureProbe::loadedKextMarkers("Mach-O 64-bit kext bundle x86_64\n")),
                 "x86_64");
    }

    void reportCell_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("cell");
        QTest::newRow("x86_64 and i386")
            << "Mach-O universal binary with 2 architectures\n"
               "/K (for architecture x86_64):\tMach-O 64-bit kext bundle x86_64\n"
               "/K (for architecture i386):\tMach-O object i386\n"
            << "x86_64 i386      ";
        QTest::newRow("i386 only") << "Mach-O object i386\n"
                                   << "       i386      ";
        // Bare words: ppc64 counts as ppc, and the ppc filler is one blank wider.
        QTest::newRow("ppc64") << "Mach-O 64-bit object ppc64\n"
                               << "            ppc ";
    }

    void reportCell() {
        QFETCH(QString, text);
        QFETCH(QString, cell);
        QCOMPARE(ArchitectureProbe::reportCell(text), cell);
    }

    // The contents executable is described when its folder exists, then the top-level one
    // when it exists; the second answer replaces the first.
    void locatesExecutable() {
        QTemporaryDir dir;
        const QString kext = dir.path() + QStringLiteral("/It's Ünique.kext");
        const QString contents = kext + QStringLiteral("/Contents/MacOS/It's Ünique");
        const QString top = kext + QStringLiteral("/It's Ünique");
        const ArchitectureProbe probe([](const QString &path) { return "text of " + path; });

        QDir().mkpath(kext);
        QCOMPARE(probe.probeText(kext), QString());
        // Only the folder is tested, not the file inside it.
        QDir().mkpath(kext + QStringLiteral("/Contents/MacOS"));
        QCOMPARE(probe.probeText(kext), "text of " + contents);
        QVERIFY(MachOWriter::write(top, "x"));
        QCOMPARE(probe.probeText(kext), "text of " + top);
        // A top-level link whose target is gone is not there: the contents answer stays.
        QVERIFY(QFile::remove(top));
        QVERIFY(QFile::link(dir.path() + QStringLiteral("/gone"), top));
        QCOMPARE(probe.probeText(kext), "text of " + contents);
    }
};

QTEST_GUILESS_MAIN(TestArchitectureProbe)
#include "tst_architectureprobe.moc"
