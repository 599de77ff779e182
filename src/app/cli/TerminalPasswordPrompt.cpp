#include "cli/TerminalPasswordPrompt.h"

#include <cstdio>
#include <string>
#include <termios.h>
#include <unistd.h>

std::optional<QString> TerminalPasswordPrompt::askPassword(const QString &) {
    std::fputs("Administrator password: ", stderr);
    std::fflush(stderr);
    termios saved{};
    const bool tty = ::isatty(STDIN_FILENO) && ::tcgetattr(STDIN_FILENO, &saved) == 0;
    if (tty) {
        termios quiet = saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    std::string line;
    int c;
    bool gotAny = false;
    while ((c = std::fgetc(stdin)) != EOF) {
        gotAny = true;
        if (c == '\n')
            break;
        line.push_back(char(c));
    }
    if (tty)
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
    std::fputc('\n', stderr);
    if (!gotAny)
        return std::nullopt;
    QString password = QString::fromStdString(line);
    std::fill(line.begin(), line.end(), '\0');
    return password;
}
