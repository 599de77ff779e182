// The Mach-O describer on arbitrary executables. It reads a file, so each input is
// written to one scratch file of this process first (in memory where the system offers a
// folder for it); the description must end in a line
// feed like the file tool's, and the architecture checks must take whatever it says.

#include "inspect/ArchitectureProbe.h"
#include "inspect/MachODescriber.h"

#include <fcntl.h>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const std::string path =
        std::string(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + "/kk-fuzz-macho-" +
        std::to_string(::getpid());
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        abort();
    for (size_t done = 0; done < size;) {
        const ssize_t n = ::write(fd, data + done, size - done);
        if (n <= 0)
            abort();
        done += size_t(n);
    }
    ::close(fd);
    const QString text = MachODescriber::describe(QString::fromStdString(path));
    if (!text.endsWith(QLatin1Char('\n')))
        abort();
    (void)ArchitectureProbe::checkPageMarkers(text);
    (void)ArchitectureProbe::reportCell(text);
    return 0;
}
