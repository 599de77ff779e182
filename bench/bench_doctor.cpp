// A doctor run over a volume of 3,000 kexts beside building the kext location index over
// the same folders: the doctor reads what the index reads (each Info.plist) and, for every
// kext, its files' owners and modes and its executable's Mach-O headers, and it is to
// stay within twice the index's time.

#include "KextTree.h"
#include "doctor/KextDoctor.h"
#include "volumes/KextLocationIndex.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using bench::writeFile;
using bench::writeKext;

constexpr int SleKexts = 2000;
constexpr int ExtraKexts = 900;
constexpr int PlugInsPerFamily = 1; // every tenth kext of S/L/E carries one plug-in

struct Volume {
    QTemporaryDir dir;
    QString root;
    int kexts = 0;
};

Volume &volume() {
    static Volume v = [] {
        Volume made;
        made.root = made.dir.filePath("Volumes/Mac");
        writeFile(made.root + "/System/Library/CoreServices/SystemVersion.plist",
                  "<plist version=\"1.0\"><dict><key>ProductVersion</key>"
                  "<string>10.6.8</string></dict></plist>");
        const QString base = QStringLiteral("com.example.");
        for (int i = 0; i < SleKexts; ++i) {
            const QString bundle =
                made.root + QStringLiteral("/System/Library/Extensions/K%1.kext").arg(i);
            writeKext(bundle, base + QString::number(i), base + QString::number(i / 10 * 10));
            if (i % 10 == 0) {
                for (int p = 0; p < PlugInsPerFamily; ++p)
                    writeKext(bundle + QStringLiteral("/Contents/PlugIns/P%1.kext").arg(p),
                              base + QStringLiteral("%1.p%2").arg(i).arg(p),
                              base + QString::number(i));
            }
        }
        for (int i = 0; i < ExtraKexts; ++i)
            writeKext(made.root + QStringLiteral("/Extra/Extensions/E%1.kext").arg(i),
                      QStringLiteral("org.example.%1").arg(i), base + QString::number(i));
        made.kexts = SleKexts + SleKexts / 10 * PlugInsPerFamily + ExtraKexts;
        return made;
    }();
    return v;
}

void BM_LocationIndex(benchmark::State &state) {
    Volume &v = volume();
    for (auto _ : state) {
        KextLocationIndex index{QString()};
        index.clear();
        index.addFolder(v.root + "/System/Library/Extensions");
        index.addFolder(v.root + "/Extra/Extensions");
        benchmark::DoNotOptimize(index.entries().size());
    }
    state.counters["kexts"] = v.kexts;
}
BENCHMARK(BM_LocationIndex)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

// The least the doctor's file checks can ask of the file system, without Qt or any
// bookkeeping: every item of every bundle looked at with lstat, every folder listed, the
// first page of every executable read. The doctor cannot cost less than this plus the
// index's own scan.
void walkBundle(const std::string &path, bool top) {
    DIR *dir = ::opendir(path.c_str());
    if (!dir)
        return;
    std::vector<std::string> names;
    while (const dirent *entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.emplace_back(entry->d_name);
    }
    std::vector<std::string> folders;
    for (const std::string &name : names) {
        struct stat st;
        if (::fstatat(::dirfd(dir), name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISDIR(st.st_mode) && !(name.size() > 5 && name.ends_with(".kext")))
            folders.push_back(name);
    }
    ::closedir(dir);
    for (const std::string &name : folders)
        walkBundle(path + '/' + name, false);
    if (!top)
        return;
    const std::string bundle = path.substr(path.rfind('/') + 1);
    const std::string executable =
        path + "/Contents/MacOS/" + bundle.substr(0, bundle.size() - std::strlen(".kext"));
    const int fd = ::open(executable.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return;
    struct stat st;
    char page[4096];
    if (::fstat(fd, &st) == 0 && ::pread(fd, page, sizeof page, 0) < 0)
        qFatal("can't read %s", executable.c_str());
    ::close(fd);
}

void walkFolder(const std::string &folder) {
    DIR *dir = ::opendir(folder.c_str());
    if (!dir)
        return;
    std::vector<std::string> bundles;
    while (const dirent *entry = ::readdir(dir)) {
        if (entry->d_name[0] != '.')
            bundles.push_back(folder + '/' + entry->d_name);
    }
    ::closedir(dir);
    for (const std::string &bundle : bundles) {
        struct stat st;
        if (::lstat(bundle.c_str(), &st) == 0)
            walkBundle(bundle, true);
        const std::string plugIns = bundle + "/Contents/PlugIns";
        if (::access(plugIns.c_str(), F_OK) == 0)
            walkFolder(plugIns);
    }
}

void BM_WalkFloor(benchmark::State &state) {
    Volume &v = volume();
    const std::string root = QFile::encodeName(v.root).toStdString();
    for (auto _ : state) {
        walkFolder(root + "/System/Library/Extensions");
        walkFolder(root + "/Extra/Extensions");
    }
    state.counters["kexts"] = v.kexts;
}
BENCHMARK(BM_WalkFloor)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

void BM_Doctor(benchmark::State &state) {
    Volume &v = volume();
    for (auto _ : state) {
        const KextDoctor::Result result = KextDoctor::run({v.root, QString(), {}});
        benchmark::DoNotOptimize(result.findings.size());
    }
    state.counters["kexts"] = v.kexts;
}
BENCHMARK(BM_Doctor)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

} // namespace

BENCHMARK_MAIN();
