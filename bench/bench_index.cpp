// The kext location index over 3,000 bundles (2,000 kexts, every other one with a plug-in)
// beside a plain C walk doing the same work: list each folder, read each bundle's
// Contents/Info.plist, find its CFBundleIdentifier, keep path and identifier, and go
// into the bundle's plug-in folders. The index is to stay within twice the walk's time.

#include "BenchRun.h"
#include "KextTree.h"
#include "volumes/KextLocationIndex.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int Kexts = 2000;

const QString &folder() {
    static const QString made = [] {
        const QString extensions = bench::scratch() + QStringLiteral("/index/Extensions");
        for (int i = 0; i < Kexts; ++i) {
            const QString bundle = extensions + QStringLiteral("/K%1.kext").arg(i);
            bench::writeKext(bundle, QStringLiteral("com.example.%1").arg(i),
                             QStringLiteral("com.example.lib"));
            if (i % 2 == 0)
                bench::writeKext(bundle + QStringLiteral("/Contents/Plugins/P.kext"),
                                 QStringLiteral("com.example.%1.p").arg(i),
                                 QStringLiteral("com.example.%1").arg(i));
        }
        return extensions;
    }();
    return made;
}

// The identifier's string from an XML property list, found by text search; "" when none.
std::string identifierOf(const std::string &plist) {
    static const char key[] = "<key>CFBundleIdentifier</key>";
    const size_t at = plist.find(key);
    const size_t open = at == std::string::npos ? at : plist.find("<string>", at);
    const size_t close = open == std::string::npos ? open : plist.find("</string>", open);
    return close == std::string::npos ? std::string() : plist.substr(open + 8, close - open - 8);
}

void walk(const std::string &dirPath, std::vector<std::string> &paths,
          std::vector<std::string> &ids) {
    DIR *dir = opendir(dirPath.c_str());
    if (!dir)
        return;
    std::vector<std::string> names;
    while (const dirent *entry = readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") && std::strcmp(entry->d_name, ".."))
            names.emplace_back(entry->d_name);
    }
    closedir(dir);
    for (const std::string &name : names) {
        const std::string path = dirPath + "/" + name;
        paths.push_back(path);
        std::string plist;
        const int fd = open((path + "/Contents/Info.plist").c_str(), O_RDONLY);
        if (fd >= 0) {
            char buffer[8192];
            ssize_t got;
            while ((got = read(fd, buffer, sizeof buffer)) > 0)
                plist.append(buffer, size_t(got));
            close(fd);
        }
        ids.push_back(identifierOf(plist));
        for (const char *inside : {"/Contents/Plugins", "/Plugins"}) {
            struct stat status;
            const std::string plugIns = path + inside;
            if (stat(plugIns.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
                walk(plugIns, paths, ids);
        }
    }
}

void BM_LocationIndex(benchmark::State &state) {
    const QString &extensions = folder();
    for (auto _ : state) {
        KextLocationIndex index{QString()};
        index.addFolder(extensions);
        if (index.entries().size() != Kexts * 3 / 2)
            state.SkipWithError("the index missed bundles");
    }
}
BENCHMARK(BM_LocationIndex)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CWalk(benchmark::State &state) {
    const std::string top = folder().toStdString();
    for (auto _ : state) {
        std::vector<std::string> paths, ids;
        walk(top, paths, ids);
        if (paths.size() != size_t(Kexts * 3 / 2))
            state.SkipWithError("the walk missed bundles");
    }
}
BENCHMARK(BM_CWalk)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char **argv) {
    auto t = bench::run(argc, argv);
    const double ours = t["BM_LocationIndex"], walk = t["BM_CWalk"];
    if (ours > 0 && walk > 0)
        bench::row(QStringLiteral("kext location index, 3,000 bundles"), bench::ms(ours),
                   QStringLiteral("C walk ") + bench::ms(walk), ours / walk,
                   QStringLiteral("<= 2x the walk"), ours <= 2 * walk);
}
