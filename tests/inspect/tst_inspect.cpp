#include "RecordingExecutor.h"
#include "TestScripts.h"
#include "exec/ProcessRunner.h"
#include "inspect/ArchitectureProbe.h"
#include "inspect/DroppedFile.h"
#include "inspect/KextTestLoad.h"
#include "inspect/MachODescriber.h"
#include "inspect/MachOWriter.h"
#include "inspect/MkextUnpackTask.h"
#include "plist/PlistFile.h"
#include "volumes/KextLocationIndex.h"

#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>
#include <sys/stat.h>

namespace {
QByteArray be32(uint32_t value) {
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

// The processor names a description mentions, whoever wrote it.
QSet<QString> architecturesIn(const QString &text) {
    static const QRegularExpression word(QStringLiteral("(x86_64|i386|ppc64|ppc)(?![0-9a-z_])"));
    QSet<QString> found;
    for (auto it = word.globalMatch(text); it.hasNext();)
        found.insert(it.next().captured(1));
    return found;
}

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

// One data row, its values in the order of the columns.
template <typename... T> void row(const char *tag, const T &...values) {
    (QTest::newRow(tag) << ... << values);
}

// Where a description names the file it describes.
const QString p = QStringLiteral("@");

void writeFile(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray plist(const QByteArray &body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + body +
           "</dict></plist>\n";
}

QByteArray infoPlist(const QString &identifier) {
    return plist("<key>CFBundleIdentifier</key><string>" + identifier.toUtf8() +
                 "</string><key>CFBundleName</key><string>x</string>");
}

// A kext bundle with its Info.plist in Contents.
void makeKext(const QString &path, const QString &identifier) {
    writeFile(path + QStringLiteral("/Contents/Info.plist"), infoPlist(identifier));
}

QByteArray customDirs(const QStringList &dirs, const QByteArray &more = {}) {
    QByteArray body = "<key>Custom Kext Directories</key><array>";
    for (const QString &dir : dirs)
        body += "<string>" + dir.toUtf8() + "</string>";
    return plist(body + "</array>" + more);
}

// A stand-in for the archive tool: records the arguments of every run and answers with
// the error text (and optionally writes a file into the unpack folder).
struct FakeTool {
    QList<QStringList> runs;
    std::optional<QString> errors = QString();
    bool writesKext = false;

    MkextUnpackTask::Tool tool() {
        return {[this](const QStringList &args) -> std::optional<QString> {
                    runs << args;
                    return QStringLiteral("Found 1 kexts:\n/S/L/E/A.kext - com.a (1.0)\n");
                },
                [this](const QStringList &args) {
                    runs << args;
                    if (writesKext)
                        QDir().mkpath(args.at(3) + QStringLiteral("/A.kext"));
                    return errors;
                }};
    }
};
} // namespace

// The inspecting pieces without a window: the Mach-O describer and the processor probe
// reading its text, the dropped-file dispatch, the mkext unpack, and the test load with the
// index of kext folders it adds to, each with stand-in tools over a temporary root.
class TestInspect : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;

    QString ext() const { return m_dir->filePath("Ext"); }
    QString settings() const { return m_dir->filePath("contents/CustomKextDirs.plist"); }
    SystemPaths paths() const {
        return SystemPaths(m_dir->filePath("root"), m_dir->filePath("home"),
                           m_dir->filePath("contents"));
    }

private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        QDir().mkpath(m_dir->filePath("home/Desktop"));
        QDir().mkpath(m_dir->filePath("contents"));
    }

    // Thin files in either byte order and width, universal ones slice by slice in file order;
    // anything cut short or not Mach-O at all is data, as the file tool calls it.
    void describe_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        using W = MachOWriter;
        QTest::newRow("thin i386 object")
            << W::thin({W::I386, W::Object}) << "Mach-O object i386\n";
        QTest::newRow("thin x86_64 kext")
            << W::thin(W::kextSlice(W::X86_64)) << "Mach-O 64-bit kext bundle x86_64\n";
        QTest::newRow("thin ppc64 object")
            << W::thin({W::PPC64, W::Object}) << "Mach-O 64-bit object ppc64\n";
        QTest::newRow("universal, one slice")
            << W::fat({W::kextSlice(W::I386)})
            << "Mach-O universal binary with 1 architecture\n" + p +
                   " (for architecture i386):\tMach-O object i386\n";
        QTest::newRow("universal, four slices in file order")
            << W::fat({{W::PPC, W::Object},
                       {W::I386, W::Object},
                       {W::PPC64, W::Object},
                       {W::X86_64, W::KextBundle}})
            << "Mach-O universal binary with 4 architectures\n" + p +
                   " (for architecture ppc):\tMach-O object ppc\n" + p +
                   " (for architecture i386):\tMach-O object i386\n" + p +
                   " (for architecture ppc64):\tMach-O 64-bit object ppc64\n" + p +
                   " (for architecture x86_64):\tMach-O 64-bit kext bundle x86_64\n";
        // The universal lines name the processor model when the slice is built for one.
        QTest::newRow("universal, ppc7400 subtype")
            << W::fat({{W::PPC, W::Bundle, 10}})
            << "Mach-O universal binary with 1 architecture\n" + p +
                   " (for architecture ppc7400):\tMach-O bundle ppc\n";

        const QByteArray thin = W::thin(W::kextSlice(W::X86_64));
        const QByteArray fat = W::fat({W::kextSlice(W::X86_64), W::kextSlice(W::I386)});
        QTest::newRow("empty") << QByteArray() << "empty\n";
        QTest::newRow("garbage") << QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c",
                                               12)
                                 << "data\n";
        QTest::newRow("thin cut in cputype") << thin.left(6) << "data\n";
        QTest::newRow("universal cut in its table") << fat.left(30) << "data\n";
        QTest::newRow("universal without slices") << be32(0xcafebabe) + be32(0) << "data\n";
        // A Java class file: same magic, the class version where the count would be.
        QTest::newRow("java class")
            << be32(0xcafebabe) + be32(50) + QByteArray(64, '\0') << "data\n";
        // The table is intact but the slices are missing: the tool calls their bytes data.
        QTest::newRow("universal cut before its slices")
            << fat.left(4096)
            << "Mach-O universal binary with 2 architectures\n" + p +
                   " (for architecture x86_64):\tdata\n" + p + " (for architecture i386):\tdata\n";
    }

    void describe() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        const QString path =
            m_dir->filePath(QStringLiteral("Ünïcode 'quoted'.kext/Contents/MacOS/My Kext"));
        QVERIFY(MachOWriter::write(path, bytes));
        QCOMPARE(MachODescriber::describe(path), expected.replace(p, path));
        // The doctor's reading of the same headers finds the processors the lines end in.
        QStringList named;
        for (const QString &line : expected.split(QLatin1Char('\n'))) {
            const QString text = line.section(QLatin1Char('\t'), -1);
            const QString processor = text.section(QLatin1Char(' '), -1);
            if (text.startsWith("Mach-O ") && !text.startsWith("Mach-O universal") &&
                !named.contains(processor))
                named << processor;
        }
        QCOMPARE(MachODescriber::processors(path), named);
    }

    // Each slice's header is read where the table says it lies, however far into the file.
    void describesFarSlices() {
        const QString path = m_dir->filePath(QStringLiteral("far"));
        const qint64 offset = 17 * 1024 * 1024;
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(be32(0xcafebabe) + be32(1) + be32(MachOWriter::PPC) + be32(0) + be32(offset) +
                   be32(4096) + be32(12));
        QVERIFY(file.seek(offset));
        file.write(MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::PPC)));
        file.close();
        QCOMPARE(MachODescriber::describe(path),
                 "Mach-O universal binary with 1 architecture\n" + path +
                     " (for architecture ppc):\tMach-O object ppc\n");
        QCOMPARE(MachODescriber::processors(path), QStringList{"ppc"});
    }

    // What is not a file with bytes is named by its kind; a pipe is never opened (nobody
    // writes to it, so reading would wait forever).
    void describesOtherThings_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("expected");
        QTest::newRow("missing") << "missing"
                                 << "cannot open `@' (No such file or directory)\n";
        QTest::newRow("folder") << "folder"
                                << "directory\n";
        QTest::newRow("named pipe") << "fifo"
                                    << "fifo (named pipe)\n";
    }

    void describesOtherThings() {
        QFETCH(QString, kind);
        QFETCH(QString, expected);
        const QString path = m_dir->filePath(QStringLiteral("x86_64 It's.kext/Contents/MacOS/x"));
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        if (kind == QLatin1String("folder"))
            QVERIFY(QDir().mkpath(path));
        if (kind == QLatin1String("fifo"))
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        QCOMPARE(MachODescriber::describe(path), expected.replace(p, path));
    }

    // The report's cell reads the whole text: a missing executable is named by its path,
    // and so is the processor in the bundle's name.
    void missingExecutableMarksByName() {
        const QString kext = m_dir->filePath(QStringLiteral("x86_64Helper.kext"));
        QVERIFY(QDir().mkpath(kext + QStringLiteral("/Contents/MacOS")));
        QCOMPARE(ArchitectureProbe::reportCell(ArchitectureProbe().probeText(kext)),
                 QStringLiteral("x86_64 ") + QString(10, ' '));
    }

    void hostFileToolAgrees_data() {
        QTest::addColumn<QByteArray>("bytes");
        using W = MachOWriter;
        QTest::newRow("thin ppc64") << W::thin(W::kextSlice(W::PPC64));
        QTest::newRow("fat ppc i386") << W::fat({W::kextSlice(W::PPC), W::kextSlice(W::I386)});
    }

    // The host's file tool words things its own way, but it must see the same processors in
    // the files we build; otherwise our writer (or our reading of the header) is wrong.
    void hostFileToolAgrees() {
        QFETCH(QByteArray, bytes);
        const QString tool = QStandardPaths::findExecutable(QStringLiteral("file"));
        if (tool.isEmpty())
            QSKIP("no file tool on this host");
        const QString path = m_dir->filePath(QStringLiteral("exe"));
        QVERIFY(MachOWriter::write(path, bytes));
        const QString theirs =
            ProcessRunner::output(tool, {QStringLiteral("-b"), path}).value_or("");
        QVERIFY2(theirs.contains(QLatin1String("Mach-O")), qPrintable(theirs));
        QCOMPARE(architecturesIn(MachODescriber::describe(path)), architecturesIn(theirs));
    }

    // One description read three ways: the check page's four boxes, the loaded kexts page's
    // two (only the Intel processors are asked for) and the report's cell of bare words.
    void markers_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("check");
        QTest::addColumn<QString>("loaded");
        QTest::addColumn<QString>("cell");
        row("universal x86_64 i386",
            "Mach-O universal binary with 2 architectures\n"
            "/K (for architecture x86_64):\tMach-O 64-bit kext bundle x86_64\n"
            "/K (for architecture i386):\tMach-O object i386\n",
            "x86_64 i386", "x86_64 i386", "x86_64 i386      ");
        row("thin x86_64 kext", "Mach-O 64-bit kext bundle x86_64\n", "x86_64", "x86_64",
            "x86_64           ");
        row("thin i386 object", "Mach-O object i386\n", "i386", "i386", "       i386      ");
        // Any 64-bit file counts as x86_64 on the pages, whatever its processor; in the
        // report ppc64 counts as ppc, and the ppc filler is one blank wider.
        row("thin 64-bit ppc64", "Mach-O 64-bit object ppc64\n", "x86_64", "x86_64",
            "            ppc ");
        // The ppc marker is part of the ppc64 one.
        row("ppc64 object wording", "Mach-O object ppc64\n", "ppc ppc64", "", "            ppc ");
        // The closing parenthesis keeps the ppc line marker off the ppc64 slice line, but the
        // slice's own 64-bit description still says x86_64.
        row("universal ppc64 only",
            "Mach-O universal binary with 1 architecture\n"
            "/K (for architecture ppc64):\tMach-O 64-bit object ppc64\n",
            "x86_64 ppc64", "x86_64", "            ppc ");
        row("universal ppc and i386",
            "Mach-O universal binary with 2 architectures\n"
            "/K (for architecture ppc):\tMach-O object ppc\n"
            "/K (for architecture i386):\tMach-O object i386\n",
            "i386 ppc", "i386", "       i386 ppc ");
        row("case matters", "mach-o object I386 (FOR ARCHITECTURE X86_64)", "", "",
            QString(17, ' '));
    }

    void markers() {
        QFETCH(QString, text);
        QFETCH(QString, check);
        QFETCH(QString, loaded);
        QFETCH(QString, cell);
        QCOMPARE(marked(ArchitectureProbe::checkPageMarkers(text)), check);
        QCOMPARE(marked(ArchitectureProbe::loadedKextMarkers(text)), loaded);
        QCOMPARE(ArchitectureProbe::reportCell(text), cell);
    }

    // The contents executable is described when its folder exists, then the top-level one
    // when it exists; the second answer replaces the first.
    void locatesExecutable() {
        const QString kext = m_dir->filePath(QStringLiteral("It's Ünique.kext"));
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
        QVERIFY(QFile::link(m_dir->filePath(QStringLiteral("gone")), top));
        QCOMPARE(probe.probeText(kext), "text of " + contents);
    }

    void dispatchDrop_data() {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<int>("page");
        QTest::addColumn<int>("action");
        QTest::addColumn<QString>("path");
        const int none = int(DroppedFile::Action::None);
        const int list = int(DroppedFile::Action::ListMkext);
        const int check = int(DroppedFile::Action::CheckKext);
        QTest::newRow("mkext on unpack page")
            << QStringList{"/d/Extensions.mkext"} << 2 << list << "/d/Extensions.mkext";
        QTest::newRow("mkext on check page")
            << QStringList{"/d/Extensions.mkext"} << 3 << none << "/d/Extensions.mkext";
        QTest::newRow("kext on check page")
            << QStringList{"/d/It's Ä.kext"} << 3 << check << "/d/It's Ä.kext";
        QTest::newRow("kext on unpack page")
            << QStringList{"/d/A.kext"} << 2 << none << "/d/A.kext";
        QTest::newRow("first file decides")
            << QStringList{"/d/notes.txt", "/d/A.kext"} << 3 << none << "/d/notes.txt";
        QTest::newRow("upper-case extension")
            << QStringList{"/d/EXTENSIONS.MKEXT"} << 2 << none << "/d/EXTENSIONS.MKEXT";
        QTest::newRow("folder with final slash")
            << QStringList{"/d/A.kext/"} << 3 << check << "/d/A.kext";
        QTest::newRow("dot in a folder name only")
            << QStringList{"/d.kext/readme"} << 3 << none << "/d.kext/readme";
        QTest::newRow("nothing") << QStringList{} << 3 << none << QString();
    }

    void dispatchDrop() {
        QFETCH(QStringList, files);
        QFETCH(int, page);
        QFETCH(int, action);
        QFETCH(QString, path);
        const DroppedFile drop(files, page);
        QCOMPARE(int(drop.action()), action);
        QCOMPARE(drop.path(), path);
    }

    void unpackAlertText_data() {
        QTest::addColumn<QString>("errors");
        QTest::addColumn<QString>("alert");
        for (const char *arch : {"x86_64", "i386", "ppc", "ppc64"}) {
            const QString text = QStringLiteral("Architecture %1 not found in mkext.").arg(arch);
            QTest::newRow(arch) << text + '\n' << text;
        }
        // Only the tool's exact line is translated; anything else is its own wording.
        QTest::newRow("two line feeds") << "Architecture ppc not found in mkext.\n\n"
                                        << "Architecture ppc not found in mkext.\n\n";
        QTest::newRow("other architecture") << "Architecture arm not found in mkext.\n"
                                            << "Architecture arm not found in mkext.\n";
        QTest::newRow("warning and missing arch")
            << "warning: odd\nArchitecture i386 not found in mkext.\n"
            << "warning: odd\nArchitecture i386 not found in mkext.\n";
    }

    void unpackAlertText() {
        QFETCH(QString, errors);
        QFETCH(QString, alert);
        QCOMPARE(MkextUnpackTask::alertText(errors), alert);
    }

    // The message reads "error: TEXT" or "info: TEXT", as the window shows it.
    void unpack_data() {
        QTest::addColumn<QString>("mkext");
        QTest::addColumn<bool>("defaultFolder");
        QTest::addColumn<bool>("folderExists");
        QTest::addColumn<std::optional<QString>>("errors");
        QTest::addColumn<bool>("writesKext");
        QTest::addColumn<bool>("ran");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("folderAfter");
        using E = std::optional<QString>;
        const QString m = QStringLiteral("/x/It's Extensions.mkext");
        QTest::newRow("no mkext") << QString() << true << false << E("") << false << false
                                  << "error: You haven't selected any mkext." << false;
        QTest::newRow("default folder made and used")
            << m << true << false << E("") << true << true
            << "info: Mkext was unpacked to selected directory." << true;
        QTest::newRow("missing architecture removes the empty default folder")
            << m << true << false << E("Architecture ppc not found in mkext.\n") << false << true
            << "error: Architecture ppc not found in mkext." << false;
        QTest::newRow("warning after unpacking keeps the filled default folder")
            << m << true << true << E("kext A.kext is not authentic\n") << true << true
            << "error: kext A.kext is not authentic\n"
            << true;
        QTest::newRow("chosen folder missing") << m << false << false << E("") << false << false
                                               << "error: Unpack directory doesn't exist." << false;
        QTest::newRow("chosen empty folder is never removed")
            << m << false << true << E("Bad mkext magic/signature.\n") << false << true
            << "error: Bad mkext magic/signature.\n"
            << true;
        QTest::newRow("tool not run") << m << true << true << E() << false << true
                                      << "error: The mkext tool could not be run." << false;
    }

    void unpack() {
        QFETCH(QString, mkext);
        QFETCH(bool, defaultFolder);
        QFETCH(bool, folderExists);
        QFETCH(std::optional<QString>, errors);
        QFETCH(bool, writesKext);
        QFETCH(bool, ran);
        QFETCH(QString, message);
        QFETCH(bool, folderAfter);

        FakeTool fake;
        fake.errors = errors;
        fake.writesKext = writesKext;
        const MkextUnpackTask unpacker(paths(), fake.tool());
        const QString folder = defaultFolder ? unpacker.defaultFolder()
                                             : m_dir->filePath(QStringLiteral("Chosen Földer"));
        QCOMPARE(unpacker.defaultFolder(), m_dir->filePath("home/Desktop/Mkext Contents"));
        if (folderExists)
            QVERIFY(QDir().mkpath(folder));

        const TaskResult outcome = unpacker.unpack(mkext, QStringLiteral("ppc"), folder);
        QCOMPARE((outcome.ok ? "info: " : "error: ") + outcome.message, message);
        const QList<QStringList> expectedRuns =
            ran ? QList<QStringList>{{"-a", "ppc", "-d", folder, mkext}} : QList<QStringList>{};
        QCOMPARE(fake.runs, expectedRuns);
        QCOMPARE(QFileInfo::exists(folder), folderAfter);
    }

    // Apple's tool (whose arguments the end-to-end unpack compares) answers a listing on its
    // standard output and a failed unpack on its standard error.
    void unpackReadsTheToolsOwnStreams() {
        const QDir sbin(m_dir->filePath("root/usr/sbin"));
        QVERIFY(QDir().mkpath(sbin.path()));
        writeScript(sbin, QStringLiteral("mkextunpack"),
                    "if [ \"$1\" = -v ]; then echo 'Found 0 kexts:'; echo noise >&2; exit 0; fi\n"
                    "[ \"$2\" = ppc ] && { printf 'caf\\351\\n' >&2; exit 1; }\n"
                    "echo 'Architecture i386 not found in mkext.' >&2; exit 1\n");
        const MkextUnpackTask unpacker(paths(), MkextUnpackTask::systemTool(paths()));

        QCOMPARE(unpacker.listing(QStringLiteral("/E.mkext")), QStringLiteral("Found 0 kexts:\n"));
        QCOMPARE(unpacker.unpack(QStringLiteral("/E.mkext"), QStringLiteral("i386"),
                                 unpacker.defaultFolder()),
                 TaskResult::failed(QStringLiteral("Architecture i386 not found in mkext.")));
        // Error text that is not UTF-8 reads as none: the unpack counts as done.
        QCOMPARE(unpacker.unpack(QStringLiteral("/E.mkext"), QStringLiteral("ppc"),
                                 unpacker.defaultFolder()),
                 TaskResult::done(QStringLiteral("Mkext was unpacked to selected directory.")));
    }

    void indexesEveryEntry() {
        const QString folder = ext();
        makeKext(folder + "/A.kext", "com.example.a");
        writeFile(folder + "/.DS_Store", "junk");
        writeFile(folder + "/readme.txt", "hello");
        writeFile(folder + "/.hidden", "");
        writeFile(m_dir->filePath("plain"), "x");

        KextLocationIndex index(settings());
        // A folder that is missing or a file adds nothing.
        index.addFolder(m_dir->filePath("missing"));
        index.addFolder(m_dir->filePath("plain"));
        QVERIFY(index.entries().isEmpty());
        index.addFolder(folder);
        QCOMPARE(index.entries().size(), 3);
        QCOMPARE(index.identifiers().size(), 3);
        const qsizetype a = index.entries().indexOf(folder + "/A.kext");
        const qsizetype text = index.entries().indexOf(folder + "/readme.txt");
        QVERIFY(a >= 0 && text >= 0 && index.entries().contains(folder + "/.hidden"));
        QCOMPARE(index.identifiers().at(a), "com.example.a");
        QCOMPARE(index.identifiers().at(text), QString());
        // Only the whole identifier, with its case, finds the kext.
        QCOMPARE(index.findPath("com.example.a"), folder + "/A.kext");
        QCOMPARE(index.findPath("com.example.A"), QString());
        QCOMPARE(index.findPath("com.example"), QString());
    }

    void indexIdentifiers_data() {
        QTest::addColumn<QString>("contentsPlist");
        QTest::addColumn<QString>("topPlist");
        QTest::addColumn<QString>("expected");
        const QString a = QString::fromUtf8(infoPlist("com.example.contents"));
        const QString b = QString::fromUtf8(infoPlist("com.example.top"));
        QTest::newRow("old style top level") << QString() << b << "com.example.top";
        QTest::newRow("contents first") << a << b << "com.example.contents";
        // A broken Contents/Info.plist does not fall back to the top-level one.
        QTest::newRow("malformed contents") << "<plist><dict><key>" << b << QString();
        QTest::newRow("no identifier")
            << QString::fromUtf8(plist("<key>CFBundleName</key><string>x</string>")) << QString()
            << QString();
        QTest::newRow("identifier not a string")
            << QString::fromUtf8(plist("<key>CFBundleIdentifier</key><integer>4</integer>"))
            << QString() << QString();
        QTest::newRow("array instead of dictionary")
            << "<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>" << QString()
            << QString();
        QTest::newRow("non-ASCII identifier")
            << QString::fromUtf8(infoPlist(QStringLiteral("com.exämple.ünï"))) << QString()
            << QStringLiteral("com.exämple.ünï");
    }

    void indexIdentifiers() {
        QFETCH(QString, contentsPlist);
        QFETCH(QString, topPlist);
        QFETCH(QString, expected);
        const QString kext = ext() + "/It's A.kext";
        QDir().mkpath(kext);
        if (!contentsPlist.isNull())
            writeFile(kext + "/Contents/Info.plist", contentsPlist.toUtf8());
        if (!topPlist.isNull())
            writeFile(kext + "/Info.plist", topPlist.toUtf8());
        KextLocationIndex index(settings());
        index.addFolder(ext());
        QCOMPARE(index.entries(), QStringList{kext});
        QCOMPARE(index.identifiers(), QStringList{expected});
    }

    void indexPlugInsFollowTheirKext() {
        const QString folder = ext();
        const QString parent = folder + "/Parent.kext";
        makeKext(parent, "com.example.parent");
        makeKext(parent + "/Contents/Plugins/One.kext", "p.one");
        makeKext(parent + "/Contents/Plugins/Two.kext", "p.two");
        // A plug-in with plug-ins of its own, at the old top-level place.
        makeKext(parent + "/Contents/Plugins/One.kext/Plugins/Deep.kext", "p.deep");
        makeKext(folder + "/Sibling.kext", "com.example.sibling");
        makeKext(folder + "/Other.kext", "com.example.other");
        // Plug-ins that lead back to the scanned folder itself end the walk.
        QVERIFY(QFile::link(folder, folder + "/Other.kext/Contents/Plugins"));
        // The plug-in folder is Plugins: PlugIns is found only where the file system ignores case.
        makeKext(folder + "/Sibling.kext/Contents/PlugIns/Capital.kext", "p.capital");
        const bool caseIgnored = QFileInfo::exists(folder + "/Sibling.kext/Contents/Plugins");

        KextLocationIndex index(settings());
        index.addFolder(folder);
        const QStringList ids = index.identifiers();
        QCOMPARE(ids.size(), caseIgnored ? 7 : 6);
        QCOMPARE(ids.contains("p.capital"), caseIgnored);
        // Whatever order the folder lists its kexts in, a kext's plug-ins (and theirs) come
        // right after it, before the next sibling.
        const qsizetype p = ids.indexOf("com.example.parent");
        const qsizetype one = ids.indexOf("p.one");
        const qsizetype two = ids.indexOf("p.two");
        const qsizetype deep = ids.indexOf("p.deep");
        QCOMPARE(QList<qsizetype>({one, two, deep}).count(-1), 0);
        QCOMPARE(std::min(one, two), p + 1);
        QCOMPARE(deep, one + 1);
        QCOMPARE(std::max({one, two, deep}), p + 3);
        QCOMPARE(index.entries().at(deep), parent + "/Contents/Plugins/One.kext/Plugins/Deep.kext");
    }

    void indexRebuildScansSystemFirst() {
        const QString sle = paths().system("/System/Library/Extensions");
        const QString extra = paths().system("/Extra/Extensions");
        const QString store = paths().system("/Extra/KextStore");
        const QString custom = paths().desktop();
        makeKext(extra + "/Same.kext", "com.example.same");
        makeKext(sle + "/Same.kext", "com.example.same");
        makeKext(store + "/Stored.kext", "com.example.stored");
        makeKext(custom + "/Mine.kext", "com.example.mine");
        writeFile(settings(), customDirs({m_dir->filePath("gone"), custom}));

        KextLocationIndex index(settings());
        index.addFolder(paths().system("/Extra")); // stale entries from an earlier use
        index.rebuild(paths());
        QCOMPARE(index.entries(), (QStringList{sle + "/Same.kext", extra + "/Same.kext",
                                               store + "/Stored.kext", custom + "/Mine.kext"}));
        QCOMPARE(index.findPath("com.example.same"), sle + "/Same.kext");
        QCOMPARE(index.findPath("com.example.mine"), custom + "/Mine.kext");
        // A custom folder that is gone is skipped but stays in the list.
        QCOMPARE(index.customFolders().size(), 2);
    }

    void indexCustomFoldersLoadOnce() {
        KextLocationIndex index(settings());
        QCOMPARE(index.customFolderCount(), 0u); // no file yet
        writeFile(settings(), plist("<key>Other</key><string>x</string>"));
        QCOMPARE(index.customFolderCount(), 0u); // no key yet: asked again next time
        writeFile(settings(), customDirs({"/a b", "/c'd"}));
        // Nothing but customFolderCount reads the file.
        index.clear();
        QVERIFY(index.customFolders().isEmpty());
        QCOMPARE(index.customFolderCount(), 2u);
        QCOMPARE(index.customFolders(), (QStringList{"/a b", "/c'd"}));
        // Once loaded the list is not read again.
        writeFile(settings(), customDirs({"/x"}));
        QCOMPARE(index.customFolderCount(), 2u);
        writeFile(settings(), "not a property list at all");
        QCOMPARE(KextLocationIndex(settings()).customFolderCount(), 0u);
    }

    // The test load asks for the count first so that the saved folders are loaded and the
    // new one joins them instead of replacing them; other keys of the file stay, and its
    // folder is made when missing.
    void indexAddKextPathSavesParentFolder() {
        const QString file = m_dir->filePath("fresh/config/CustomKextDirs.plist");
        writeFile(file, customDirs({"/saved"}, "<key>Other</key><string>kept</string>"));
        KextLocationIndex index(file);
        QCOMPARE(index.customFolderCount(), 1u);
        const QString desktop = m_dir->filePath(QStringLiteral("Dësk top"));
        index.rememberFolderOf(desktop + "/It's.kext");
        index.rememberFolderOf(desktop + "/Second.kext/");
        index.rememberFolderOf("/saved/Y.kext");
        QCOMPARE(index.customFolders(), (QStringList{"/saved", desktop}));

        // The file was written at once; a new run finds the folders again.
        KextLocationIndex nextRun(file);
        QCOMPARE(nextRun.customFolderCount(), 2u);
        QCOMPARE(nextRun.customFolder(1), desktop);
        const auto saved = PlistFile::readDictionary(file);
        QVERIFY(saved);
        QCOMPARE(PlistFile::string(saved.get(), "Other"), std::optional<QString>("kept"));

        QDir(m_dir->filePath("fresh")).removeRecursively();
        index.rememberFolderOf("/a/B.kext");
        QCOMPARE(KextLocationIndex(file).customFolderCount(), 3u);
    }

    // A kext gone while the password was asked for stops before any command (a refused
    // authorization is the check page's test). Then the loader's text is the failure; no
    // text, or none readable, is a load.
    void testLoad() {
        RecordingExecutor executor;
        KextLocationIndex index(settings());
        QList<QStringList> rootRuns;
        auto load = [&](const QString &kext, std::optional<QString> answer) {
            const KextTestLoad testLoad(
                paths(), executor, index,
                [&rootRuns, answer](const QString &command, const QString &argument) {
                    rootRuns << QStringList{command, argument};
                    return answer;
                });
            return testLoad.run(kext);
        };

        QCOMPARE(load(m_dir->filePath("Desktop/A.kext"), "x"), TaskResult::failed());
        QCOMPARE(executor.authorizeCalls, 1);
        QVERIFY(executor.commands.isEmpty());
        QVERIFY(rootRuns.isEmpty());
        QVERIFY(!QFileInfo::exists(index.settingsFile()));

        // A folder saved by an earlier run must survive the new one being added.
        writeFile(index.settingsFile(), customDirs({"/earlier"}));
        const QString kext = m_dir->filePath("My Desk's/Bad Kext.kext");
        QDir().mkpath(kext);
        const QString loader =
            kext + QStringLiteral(" failed to load - (libkern/kext) not loadable (reason "
                                  "unspecified); check the system/kernel logs for errors or try "
                                  "kextutil(8).\n");
        QCOMPARE(load(kext, loader), TaskResult::failed(loader));
        const Command chown{m_dir->filePath("root/usr/sbin/chown"), {"-R", "0:0", kext}};
        QCOMPARE(executor.commands, QList<Command>{chown});
        QCOMPARE(rootRuns, (QList<QStringList>{{"kextload", kext}}));
        KextLocationIndex saved(index.settingsFile());
        QCOMPARE(saved.customFolderCount(), 2u);
        QCOMPARE(saved.customFolders(), (QStringList{"/earlier", m_dir->filePath("My Desk's")}));

        for (const std::optional<QString> &answer :
             {std::optional<QString>(QString()), std::optional<QString>()})
            QCOMPARE(load(kext, answer), TaskResult::done());
        QCOMPARE(executor.commands.size(), 3);
    }
};

QTEST_GUILESS_MAIN(TestInspect)
#include "tst_inspect.moc"
