#include "exec/AdminAuthentication.h"

#include "exec/CommandJournal.h"
#include "exec/ProcessRunner.h"
#include "exec/SudoLocator.h"
#include "exec/Tr.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <memory>

namespace {
std::unique_ptr<AdminAuthentication> &sharedSlot() {
    static std::unique_ptr<AdminAuthentication> instance;
    return instance;
}
} // namespace

AdminAuthentication::AdminAuthentication(Config config, PasswordPrompt *prompt, SystemLog *log)
    : m_config(std::move(config)), m_prompt(prompt), m_log(log) {}

AdminAuthentication &AdminAuthentication::sharedInstance() {
    auto &slot = sharedSlot();
    if (!slot) {
        Config config;
        config.sudo = SudoLocator::fromEnvironment();
        slot = std::make_unique<AdminAuthentication>(config, nullptr, &SystemLog::syslog());
    }
    return *slot;
}

void AdminAuthentication::configureShared(Config config, PasswordPrompt *prompt) {
    sharedSlot() =
        std::make_unique<AdminAuthentication>(std::move(config), prompt, &SystemLog::syslog());
}

QString AdminAuthentication::sudoNotFoundMessage() {
    return kkTr("sudo was not found: root tasks need it");
}

AdminAuthentication::SudoAnswer AdminAuthentication::sudo(const QStringList &args,
                                                          const QByteArray &input) {
    if (m_config.sudo.isEmpty())
        return {};
    ProcessRunner::Request request;
    request.program = m_config.sudo;
    request.args = args;
    request.capture = ProcessRunner::Stream::Error;
    request.input = input.isNull() ? ProcessRunner::Input::Null : ProcessRunner::Input::Data;
    request.inputData = input;
    // sudo's words decide between a wrong password and a refusal, so they must not be
    // translated.
    request.environment = {QStringLiteral("LC_ALL=C")};
    request.waitForExit = true;
    const ProcessRunner::Result result = ProcessRunner::run(request);
    if (!result.launched)
        return {};
    return {result.exitStatus, QString::fromLocal8Bit(result.bytes)};
}

bool AdminAuthentication::isAuthenticated(const QString &) {
    m_session = true;
    if (m_config.direct)
        return true;
    return sudo({QStringLiteral("-n"), QStringLiteral("-v")}).status == 0;
}

PasswordPrompt::Verdict AdminAuthentication::checkPassword(const QString &password,
                                                           QString &refusal) {
    QByteArray input = password.toUtf8() + '\n';
    const SudoAnswer answer =
        sudo({QStringLiteral("-S"), QStringLiteral("-p"), QString(), QStringLiteral("-v")}, input);
    input.fill('\0');
    if (answer.status == 0)
        return PasswordPrompt::Verdict::Granted;
    // Given one line, sudo says so about a wrong password and then finds no second one.
    if (answer.text.contains(QLatin1String("Sorry, try again.")) ||
        answer.text.contains(QLatin1String("incorrect password attempt")))
        return PasswordPrompt::Verdict::WrongPassword;
    refusal = answer.text.trimmed();
    if (refusal.isEmpty())
        refusal =
            answer.status < 0 ? sudoNotFoundMessage() : kkTr("sudo refused administrator rights.");
    return PasswordPrompt::Verdict::Refused;
}

bool AdminAuthentication::askForPassword(const QString &value) {
    if (m_config.sudo.isEmpty()) {
        if (m_prompt)
            m_prompt->showError(sudoNotFoundMessage());
        return false;
    }
    if (!m_prompt)
        return false;
    QString refusal;
    const bool granted = m_prompt->askPassword(value, [this, &refusal](const QString &password) {
        return checkPassword(password, refusal);
    });
    if (!granted && !refusal.isEmpty())
        m_prompt->showError(refusal);
    return granted;
}

bool AdminAuthentication::fetchPassword(const QString &value) {
    m_session = true;
    const bool granted = m_config.direct || askForPassword(value);
    if (granted && m_delegate)
        m_delegate->authenticationDidAuthorize(this);
    return granted;
}

bool AdminAuthentication::authenticate(const QString &value) {
    if (!isAuthenticated(value))
        fetchPassword(value);
    return isAuthenticated(value);
}

void AdminAuthentication::deauthenticate() {
    if (!m_session.exchange(false))
        return;
    if (!m_config.direct)
        sudo({QStringLiteral("-k")});
    if (m_delegate)
        m_delegate->authenticationDidDeauthorize(this);
}

bool AdminAuthentication::authorizeRootTask() {
    const QString root = QStringLiteral("root");
    if (!isAuthenticated(root))
        authenticate(root);
    return isAuthenticated(root);
}

bool AdminAuthentication::executeCommand(const QString &tool, const QStringList &args) {
    return launch(tool, args, Launch::Detached).launched;
}

bool AdminAuthentication::executeCommandSynced(const QString &tool, const QStringList &args) {
    return launch(tool, args, Launch::Synced).launched;
}

CommandResult AdminAuthentication::runSynced(const QString &tool, const QStringList &args) {
    return launch(tool, args, Launch::Synced);
}

CommandResult AdminAuthentication::launch(const QString &tool, const QStringList &args,
                                          Launch mode) {
    const QDateTime started = QDateTime::currentDateTimeUtc();
    QElapsedTimer timer;
    timer.start();
    if (!authenticate(tool))
        return CommandResult{false, -1, QStringLiteral("not authorized")};

    ProcessRunner::Request request;
    const QStringList toolArgs = args.mid(0, maxArguments);
    if (m_config.direct) {
        request.program = tool;
        request.args = toolArgs;
    } else {
        // sudo resets the environment, so entries of our own (a sandbox's tool folders)
        // are handed over through env, by its absolute path like every other program.
        request.program = m_config.sudo;
        request.args = QStringList{QStringLiteral("-n"), QStringLiteral("--")};
        if (!m_config.environment.isEmpty())
            request.args << QStringLiteral("/usr/bin/env") << m_config.environment;
        request.args << tool << toolArgs;
    }
    request.input = ProcessRunner::Input::Null;
    request.environment = m_config.environment;
    request.chunkSize = chunkSize;
    if (mode == Launch::Synced) {
        request.onChunk = [this](const QByteArray &chunk) {
            if (m_log)
                m_log->write(chunk);
        };
    }
    // The detached form never reads: the tool's output goes where ours goes.
    request.readOutput = mode == Launch::Synced;
    // The synced form waits for the tool's end, so a task knows how each step went.
    request.waitForExit = mode == Launch::Synced;
    request.keepErrorText = mode == Launch::Synced;
    ProcessRunner::Result result = ProcessRunner::run(request);
    const CommandResult outcome{result.launched, result.exitStatus,
                                QString::fromUtf8(result.errorBytes)};
    if (mode == Launch::Synced)
        journal(Command{tool, toolArgs, true}, outcome, started, timer.elapsed());
    if (!result.launched) {
        if (m_log)
            m_log->write(QByteArray("Error ") + QByteArray::number(result.launchError) +
                         " in AuthorizationExecuteWithPrivileges");
        if (m_delegate)
            m_delegate->authenticationFailedExecute(this);
        return outcome;
    }
    if (m_delegate)
        m_delegate->authenticationDidExecute(this);
    return outcome;
}

void AdminAuthentication::journal(const Command &command, const CommandResult &result,
                                  const QDateTime &started, qint64 ms) {
    if (!m_journal)
        return;
    JournalEntry entry;
    entry.time = started;
    entry.command = command;
    entry.result = result;
    entry.durationMs = ms;
    // A root shell running a script ran what the script says; it is still there to read.
    if (command.tool.endsWith(QLatin1String("/sh")) && command.args.size() == 1 &&
        QFileInfo(command.args.first()).isFile()) {
        QFile script(command.args.first());
        if (script.open(QIODevice::ReadOnly))
            entry.script = QString::fromUtf8(script.read(4096)).trimmed();
    }
    m_journal->record(entry);
}
