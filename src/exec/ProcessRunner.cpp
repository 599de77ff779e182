#include "exec/ProcessRunner.h"

#include <QStringDecoder>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

// Our environment with the request's entries laid over it.
std::vector<std::string> mergedEnvironment(const QStringList &overrides) {
    std::map<std::string, std::string> entries;
    for (char **e = environ; e && *e; ++e) {
        std::string entry(*e);
        entries[entry.substr(0, entry.find('='))] = entry;
    }
    for (const QString &entry : overrides) {
        std::string text = entry.toStdString();
        entries[text.substr(0, text.find('='))] = text;
    }
    std::vector<std::string> merged;
    for (auto &[name, entry] : entries)
        merged.push_back(entry);
    return merged;
}

void closeIfOpen(int &fd) {
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}

// pipe2 is Linux's: POSIX makes the pipe first and marks both ends close-on-exec after.
// A tool spawned by another thread in between would keep an end open for its whole life
// (and a reader would wait for it), so pipes are made and tools spawned under one lock.
std::mutex &spawnLock() {
    static std::mutex lock;
    return lock;
}

bool closeOnExecPipe(int fds[2]) {
    if (::pipe(fds) != 0)
        return false;
    for (int i = 0; i < 2; ++i)
        ::fcntl(fds[i], F_SETFD, FD_CLOEXEC);
    return true;
}

void writeAll(int fd, const QByteArray &data) {
    const char *p = data.constData();
    qsizetype left = data.size();
    while (left > 0) {
        ssize_t n = ::write(fd, p, size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return;
        p += n;
        left -= n;
    }
}

} // namespace

ProcessRunner::Result ProcessRunner::run(const Request &request) {
    Result result;
    // posix_spawn takes a name without a slash from the current folder, so a bare name
    // would run whatever file of that name lies where we were started. Only absolute
    // paths are started; anything else is a launch failure, never a lookup.
    if (!request.program.startsWith(QLatin1Char('/'))) {
        result.launchError = EINVAL;
        return result;
    }
    // A reader that went away (a tool closing its stdin early) must not kill us.
    static const bool ignoredPipeSignal = [] { return ::signal(SIGPIPE, SIG_IGN) != SIG_ERR; }();
    (void)ignoredPipeSignal;

    std::unique_lock spawning(spawnLock());
    int out[2] = {-1, -1};
    int in[2] = {-1, -1};
    if (!closeOnExecPipe(out)) {
        result.launchError = errno;
        return result;
    }
    if (request.input == Input::Data && !closeOnExecPipe(in)) {
        result.launchError = errno;
        closeIfOpen(out[0]);
        closeIfOpen(out[1]);
        return result;
    }

    const bool keepError =
        request.keepErrorText && request.waitForExit && request.capture == Stream::Output;
    std::FILE *errorFile = keepError ? std::tmpfile() : nullptr;
    if (errorFile) // only the child's standard error may hold it
        ::fcntl(fileno(errorFile), F_SETFD, FD_CLOEXEC);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const int target = request.capture == Stream::Output ? STDOUT_FILENO : STDERR_FILENO;
    if (request.readOutput)
        posix_spawn_file_actions_adddup2(&actions, out[1], target);
    if (errorFile)
        posix_spawn_file_actions_adddup2(&actions, fileno(errorFile), STDERR_FILENO);
    if (request.input == Input::Data)
        posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    else if (request.input == Input::Null)
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);

    const std::string program = request.program.toStdString();
    std::vector<std::string> argStrings{program};
    for (const QString &arg : request.args)
        argStrings.push_back(arg.toStdString());
    std::vector<char *> argv;
    for (std::string &s : argStrings)
        argv.push_back(s.data());
    argv.push_back(nullptr);

    std::vector<std::string> envStrings = mergedEnvironment(request.environment);
    std::vector<char *> envp;
    for (std::string &s : envStrings)
        envp.push_back(s.data());
    envp.push_back(nullptr);

    pid_t pid = -1;
    const int rc = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    spawning.unlock();
    closeIfOpen(out[1]);
    closeIfOpen(in[0]);
    if (rc != 0) {
        result.launchError = rc;
        closeIfOpen(out[0]);
        closeIfOpen(in[1]);
        if (errorFile)
            std::fclose(errorFile);
        return result;
    }
    result.launched = true;

    if (request.input == Input::Data) {
        writeAll(in[1], request.inputData);
        closeIfOpen(in[1]);
    }

    if (!request.readOutput)
        closeIfOpen(out[0]);
    const qsizetype chunkSize = qMax<qsizetype>(1, request.chunkSize);
    QByteArray buffer(chunkSize, Qt::Uninitialized);
    while (out[0] >= 0) {
        ssize_t n = ::read(out[0], buffer.data(), size_t(chunkSize));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        const QByteArray chunk(buffer.constData(), n);
        if (request.onChunk)
            request.onChunk(chunk);
        result.bytes += chunk;
    }
    closeIfOpen(out[0]);

    if (request.waitForExit) {
        int status = 0;
        while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
        result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        if (errorFile) {
            std::rewind(errorFile);
            result.errorBytes.resize(errorLimit);
            result.errorBytes.resize(
                qsizetype(std::fread(result.errorBytes.data(), 1, size_t(errorLimit), errorFile)));
            std::fclose(errorFile);
        }
    } else {
        // The tool may outlive its output; reap it whenever it ends.
        std::thread([pid] {
            int status = 0;
            while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
            }
        }).detach();
    }
    return result;
}

std::optional<QString> ProcessRunner::decodeUtf8(const QByteArray &bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

std::optional<QString> ProcessRunner::output(const QString &program, const QStringList &args) {
    Request request;
    request.program = program;
    request.args = args;
    Result result = run(request);
    if (!result.launched)
        return std::nullopt;
    return decodeUtf8(result.bytes);
}

std::optional<QString> ProcessRunner::errorOutput(const QString &program, const QStringList &args) {
    Request request;
    request.program = program;
    request.args = args;
    request.capture = Stream::Error;
    Result result = run(request);
    if (!result.launched)
        return std::nullopt;
    return decodeUtf8(result.bytes);
}
