#include "AppBootstrap.h"

#include "AppIdentity.h"
#include "WindowLauncher.h"
#include "cli/CliHelp.h"
#include "cli/CliRegistry.h"
#include "cli/CliSyntax.h"
#include "cli/TerminalPasswordPrompt.h"
#include "exec/AdminAuthentication.h"
#include "exec/AppServices.h"
#include "exec/CommandJournal.h"
#include "exec/DryRunExecutor.h"
#include "exec/SudoLocator.h"

#include <QApplication>
#include <QCoreApplication>
#include <QFileInfo>
#include <memory>
#include <unistd.h>

namespace {

struct GlobalOptions {
    QString root = QStringLiteral("/");
    bool dryRun = false;
    bool useSudo = false;
    bool help = false;
    bool version = false;
    bool rootGiven = false;
    QStringList rest; // the verb and its words
    QString error;
};

// The start-up options of QApplication and its platform plug-ins, in the spelling Qt
// itself accepts ("-platform" or "--platform"), so that they reach the window wherever
// they stand before a verb. The first list takes the next word as its value.
bool isQtOptionWithValue(const QString &name) {
    static const QStringList names{QStringLiteral("platform"),
                                   QStringLiteral("platformpluginpath"),
                                   QStringLiteral("platformtheme"),
                                   QStringLiteral("plugin"),
                                   QStringLiteral("qwindowgeometry"),
                                   QStringLiteral("geometry"),
                                   QStringLiteral("qwindowtitle"),
                                   QStringLiteral("title"),
                                   QStringLiteral("qwindowicon"),
                                   QStringLiteral("icon"),
                                   QStringLiteral("style"),
                                   QStringLiteral("stylesheet"),
                                   QStringLiteral("session"),
                                   QStringLiteral("display"),
                                   QStringLiteral("name")};
    return names.contains(name);
}

bool isQtSwitch(const QString &name) {
    static const QStringList names{QStringLiteral("reverse"), QStringLiteral("widgetcount"),
                                   QStringLiteral("nograb"),  QStringLiteral("dograb"),
                                   QStringLiteral("sync"),    QStringLiteral("testability")};
    // "-style=fusion" and the like carry their value in the same word.
    return names.contains(name) || name.startsWith(QLatin1String("style=")) ||
           name.startsWith(QLatin1String("stylesheet=")) ||
           name.startsWith(QLatin1String("qmljsdebugger="));
}

GlobalOptions parseGlobal(int argc, char **argv) {
    GlobalOptions options;
    for (int i = 1; i < argc; ++i) {
        const QString word = QString::fromLocal8Bit(argv[i]);
        if (!options.rest.isEmpty()) {
            options.rest << word;
        } else if (word == QLatin1String("--root") || word.startsWith(QLatin1String("--root="))) {
            if (word.size() > 6) {
                options.root = word.mid(7);
            } else if (i + 1 < argc) {
                options.root = QString::fromLocal8Bit(argv[++i]);
            } else {
                options.error = QStringLiteral("--root needs a folder");
                break;
            }
            // An empty or missing folder would quietly mean the real system, or nothing.
            if (!QFileInfo(options.root).isDir()) {
                options.error = QStringLiteral("--root %1: no such folder").arg(options.root);
                break;
            }
            options.rootGiven = true;
        } else if (word == QLatin1String("--dry-run")) {
            options.dryRun = true;
        } else if (word == QLatin1String("--use-sudo")) {
            options.useSudo = true;
        } else if (word == QLatin1String("--help") || word == QLatin1String("-h")) {
            options.help = true;
        } else if (word == QLatin1String("--version")) {
            options.version = true;
        } else if (word.startsWith(QLatin1String("-"))) {
            // Qt's own window options (-platform offscreen, -style ...) are left in argv
            // for QApplication, which takes them out itself.
            const QString name = word.mid(word.startsWith(QLatin1String("--")) ? 2 : 1);
            if (isQtOptionWithValue(name)) {
                ++i;
            } else if (!isQtSwitch(name) && word.startsWith(QLatin1String("--"))) {
                options.error = QStringLiteral("unknown option %1").arg(word);
                break;
            }
        } else {
            options.rest << word;
        }
    }
    return options;
}

// "--help" or "-h" among a verb's words, before any "--". A word the verb's syntax does
// not name as an action (`sandbox tool`, which hands its words to a stand-in tool) keeps
// the rest for the verb.
bool asksForHelp(const QStringList &words, const CliSyntax &syntax) {
    const auto isHelp = [](const QString &word) {
        return word == QLatin1String("--help") || word == QLatin1String("-h");
    };
    if (!syntax.actions.isEmpty() && !words.isEmpty() && !isHelp(words.first()) &&
        !syntax.actions.contains(words.first()) && !words.first().startsWith(QLatin1Char('-')))
        return false;
    for (const QString &word : words) {
        if (word == QLatin1String("--"))
            return false;
        if (isHelp(word))
            return true;
    }
    return false;
}

// --use-sudo sends root commands through sudo even where they would run directly (as
// root, or on a sandbox), so the privileged road can be tried on a sandbox.
AdminAuthentication::Config sessionConfig(const SystemPaths &paths, bool useSudo) {
    AdminAuthentication::Config config;
    config.direct = !useSudo && (::geteuid() == 0 || paths.isSandbox());
    // Looked up once, here; every root task runs this very file.
    config.sudo = SudoLocator::fromEnvironment();
    config.environment = paths.rootEnvironment();
    return config;
}

int runVerb(int argc, char **argv, const GlobalOptions &options, const SystemPaths &paths) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const CliVerb *verb = CliRegistry::find(options.rest.first());
    if (!verb) {
        err << "kextkeeper: unknown verb " << options.rest.first() << '\n'
            << CliHelp::tryHelp(QString()) << Qt::endl;
        return CliUsage;
    }
    if (asksForHelp(options.rest.mid(1), CliSyntax::of(verb->name))) {
        out << CliHelp::verbHelp(*verb);
        return CliOk;
    }
    static TerminalPasswordPrompt prompt;
    AdminAuthentication::configureShared(sessionConfig(paths, options.useSudo), &prompt);
    // A dry run changes nothing, so it has nothing to record either.
    static CommandJournal journal(CommandJournal::defaultPath(paths.home()));
    if (!options.dryRun)
        AdminAuthentication::sharedInstance().setJournal(&journal);
    // The command line reports on its own streams: no notifications, no sheets.
    AppServices services(paths, AdminAuthentication::sharedInstance());
    if (options.dryRun) {
        auto dryRun = std::make_shared<DryRunExecutor>(
            [&out](const Command &command) { out << command.toShellLine() << Qt::endl; });
        services.setExecutorFactory([dryRun] { return dryRun; });
    }
    CliContext context{options.rest.mid(1), services, options.dryRun, out, err};
    context.verb = verb->name;
    const int status = verb->run(context);
    out.flush();
    err.flush();
    return status;
}

} // namespace

int kextkeeperMain(int argc, char **argv) {
    const GlobalOptions options = parseGlobal(argc, argv);
    QTextStream err(stderr);
    if (!options.error.isEmpty()) {
        err << "kextkeeper: " << options.error << '\n' << CliHelp::tryHelp(QString()) << Qt::endl;
        return CliUsage;
    }
    if (options.help) {
        QTextStream(stdout) << CliRegistry::helpText();
        return CliOk;
    }
    if (options.version) {
        QTextStream(stdout) << "kextkeeper " << KK_VERSION << Qt::endl;
        return CliOk;
    }
    const SystemPaths paths(options.root);
    if (!options.rest.isEmpty())
        return runVerb(argc, argv, options, paths);

    QApplication app(argc, argv);
    AppIdentity::apply(app);
    AdminAuthentication::configureShared(sessionConfig(paths, options.useSudo), nullptr);
    static CommandJournal journal(CommandJournal::defaultPath(paths.home()));
    return launchWindow(app, paths, AdminAuthentication::sharedInstance(), journal, options.dryRun);
}
