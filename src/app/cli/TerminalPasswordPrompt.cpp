#include "cli/TerminalPasswordPrompt.h"

#include <cstdio>
#include <string>
#include <termios.h>
#include <unistd.h>

std::optional<QString> TerminalPasswordPrompt::readLine() {
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
    // The typed line feed was not echoed; a piped one was never shown.
    std::fputc('\n', stderr);
    if (!gotAny)
        return std::nullopt;
    QString password = QString::fromLocal8Bit(line.data(), qsizetype(line.size()));
    std::fill(line.begin(), line.end(), '\0');
    return password;
}

bool TerminalPasswordPrompt::askPassword(const QString &, const Check &check) {
    for (int attempt = 1; attempt <= maxTries; ++attempt) {
        std::fputs("Your password (sudo asks it for administrator rights): ", stderr);
        std::fflush(stderr);
        std::optional<QString> password = readLine();
        if (!password) {
            std::fputs("kextkeeper: no password was given\n", stderr);
            return false;
        }
        const Verdict verdict = check(*password);
        password->fill(QChar(0));
        if (verdict != Verdict::WrongPassword)
            return verdict == Verdict::Granted;
        if (attempt < maxTries)
            std::fputs("Sorry, try again.\n", stderr);
    }
    std::fprintf(stderr, "kextkeeper: %d incorrect password attempts\n", maxTries);
    return false;
}

void TerminalPasswordPrompt::showError(const QString &text) {
    std::fprintf(stderr, "kextkeeper: %s\n", text.toLocal8Bit().constData());
}
