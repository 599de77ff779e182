#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

// Spawns a tool with one pipe and reads it to its end. Unlike QProcess it returns as
// soon as the tool closes the captured stream, even when the tool itself keeps running,
// and it never kills the tool: the child is reaped by a detached waiter so no zombie is
// left behind. The program must be an absolute path: a bare or relative name is refused
// (EINVAL), as nothing is ever looked up in the current folder or PATH.
class ProcessRunner {
public:
    enum class Stream { Output, Error };
    enum class Input { Inherit, Null, Data };

    struct Request {
        QString program;
        QStringList args;
        Stream capture = Stream::Output;
        Input input = Input::Inherit;
        QByteArray inputData;        // written to standard input when input == Data
        QStringList environment;     // "NAME=value" entries added to (or replacing) ours
        qsizetype chunkSize = 65536; // largest single read
        std::function<void(const QByteArray &)> onChunk; // called for every read
        bool waitForExit = false;                        // wait and report the exit status
        bool readOutput = true; // false: launch only, output goes where ours goes
        // With capture == Output and waitForExit: standard error is kept too (in an
        // unlinked temporary file, so a chatty tool can never block on a full pipe) and
        // handed back in errorBytes, up to errorLimit bytes.
        bool keepErrorText = false;
    };
    static constexpr qsizetype errorLimit = 64 * 1024;

    struct Result {
        bool launched = false;
        int launchError = 0; // errno of a failed launch
        QByteArray bytes;
        int exitStatus = -1;   // only with waitForExit; -1 when killed by a signal
        QByteArray errorBytes; // only with keepErrorText
    };

    static Result run(const Request &request);

    // The user runs of the program: standard output or standard error as UTF-8 text;
    // absent when the tool can't be launched or its bytes are not valid UTF-8.
    static std::optional<QString> output(const QString &program, const QStringList &args);
    static std::optional<QString> errorOutput(const QString &program, const QStringList &args);

    // Strict UTF-8: absent on any invalid sequence; empty bytes give "".
    static std::optional<QString> decodeUtf8(const QByteArray &bytes);
};
