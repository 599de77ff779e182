#include "CliRun.h"
#include "cli/CliRegistry.h"
#include "cli/CliSyntax.h"
#include "sandbox/SandboxBuilder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

// The man page and the shell completions are written from the verb table at build time;
// these tests read what was written and ask the real shells, so a verb or an option
// missing from either, or a completion that offers the wrong words, fails here.
class TestCli : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;

    static QStringList verbNames() {
        QStringList names;
        for (const CliVerb &verb : CliRegistry::verbs())
            names << verb.name;
        return names;
    }
    // The options a verb (or one of its actions) accepts, as the table lists them.
    static QStringList optionNames(const QString &verb, const QString &action = {}) {
        QStringList names{"--help"};
        for (const CliOption &option : CliSyntax::of(verb).options)
            if (action.isEmpty() || option.actions.isEmpty() || option.actions.contains(action))
                names << option.name;
        return names;
    }
    static QStringList sorted(QStringList words) {
        words.removeDuplicates();
        words.sort();
        return words;
    }

    // What SHELL offers for the last word of `words` (the program's path first).
    static QStringList complete(const QString &shell, const QStringList &words) {
        const QString program = QStandardPaths::findExecutable(shell);
        if (program.isEmpty())
            return {"(no " + shell + ")"};
        QString script;
        QStringList args;
        if (shell == "bash") {
            script = "source \"$1\"; shift; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); "
                     "_kextkeeper; printf '%s\\n' \"${COMPREPLY[@]}\"";
            args = QStringList{"-c", script, "bash", KK_DOCS_DIR "/kextkeeper.bash"} + words;
        } else if (shell == "zsh") {
            // The completion system's own functions, standing in: print what is offered.
            script = "compadd() { local a; while [[ $1 == -* ]]; do "
                     "[[ $1 == -a ]] && { a=$2; shift; }; [[ $1 == -- ]] && { shift; break; }; "
                     "shift; done; [[ -n $a ]] && print -l -- ${(P)a} || print -l -- \"$@\"; }\n"
                     "_describe() { print -l -- ${${(P)4}%%:*}; }\n"
                     "_files() { print '(files)'; }\n_message() { }\n"
                     "local file=$1; shift; words=(\"$@\"); CURRENT=$#; PREFIX=${words[-1]}\n"
                     "source $file";
            args = QStringList{"-f", "-c", "f() {\n" + script + "\n}; f \"$@\"", "zsh",
                               KK_DOCS_DIR "/_kextkeeper"} +
                   words;
        } else {
            QStringList quoted;
            for (const QString &word : words)
                quoted << (word.contains(' ') ? "'" + word + "'" : word);
            script = "source $argv[1]; complete -C $argv[2]";
            args = QStringList{"--no-config", "-c", script, KK_DOCS_DIR "/kextkeeper.fish",
                               quoted.join(' ')};
        }
        QProcess process;
        process.start(program, args);
        process.waitForFinished(20000);
        QStringList offered;
        for (QString line : QString::fromUtf8(process.readAllStandardOutput()).split('\n')) {
            line = line.section('\t', 0, 0).remove('\\'); // fish's help, bash's escapes
            if (!line.isEmpty())
                offered << line;
        }
        return sorted(offered);
    }

private slots:
    void initTestCase() {
        m_root = m_dir.filePath("mac");
        QVERIFY(SandboxBuilder(m_root, KK_BINARY).create());
    }

    void completions_data() {
        QTest::addColumn<QString>("shell");
        QTest::addColumn<QStringList>("words"); // after the program
        QTest::addColumn<QStringList>("offered");
        const QStringList volumes{"Lion Backup", "Macintosh HD"};
        for (const char *shell : {"bash", "zsh", "fish"}) {
            const auto row = [shell](const QString &name) -> QTestData & {
                return QTest::addRow("%s: %s", shell, qPrintable(name)) << QString(shell);
            };
            row("verbs") << QStringList{""} << verbNames();
            row("global options") << QStringList{"--"}
                                  << QStringList{"--dry-run", "--help", "--root", "--use-sudo",
                                                 "--version"};
            for (const QString &verb : verbNames()) {
                const CliSyntax &syntax = CliSyntax::of(verb);
                if (syntax.actions.isEmpty()) {
                    row(verb + " options") << QStringList{verb, "--"} << optionNames(verb);
                    continue;
                }
                row(verb + " actions") << QStringList{verb, ""} << syntax.actions;
                for (const QString &action : syntax.actions)
                    row(verb + ' ' + action + " options")
                        << QStringList{verb, action, "--"} << optionNames(verb, action);
            }
            // Volume titles come from the program, below the line's own --root.
            row("volumes") << QStringList{"--root", m_root, "maintain", "--volume", ""} << volumes;
            row("volumes after other options")
                << QStringList{"--root", m_root, "extra", "hide", "--yes", "--volume", "Mac"}
                << volumes;
            row("choices") << QStringList{"mkext", "unpack", "--arch", ""}
                           << QStringList{"i386", "ppc", "ppc64", "x86_64"};
        }
    }
    void completions() {
        QFETCH(QString, shell);
        QFETCH(QStringList, words);
        QFETCH(QStringList, offered);
        QStringList got = complete(shell, QStringList{KK_BINARY} + words);
        // A shell may filter by what is typed; bash and fish do, so compare what matches.
        const QString typed = words.last();
        QStringList expected;
        for (const QString &word : offered)
            if (shell == "zsh" || word.startsWith(typed))
                expected << word;
        QCOMPARE(got, sorted(expected));
    }

    // Every verb answers --help with its usage and every option the table gives it, and
    // a usage error is one line naming the verb and the hint at that help.
    void verbHelpAndUsageErrors_data() {
        QTest::addColumn<QString>("verb");
        for (const QString &verb : verbNames())
            QTest::addRow("%s", qPrintable(verb)) << verb;
    }
    void verbHelpAndUsageErrors() {
        QFETCH(QString, verb);
        const QString home = m_dir.filePath("home");
        const CliRun help = runKextKeeper(m_root, home, {verb, "--help"});
        QCOMPARE(help.status, 0);
        QVERIFY2(help.out.startsWith("Usage: kextkeeper [--root DIR] [--dry-run] " + verb + ' '),
                 qPrintable(help.out));
        for (const QString &option : optionNames(verb))
            QVERIFY2(help.out.contains("\n  " + option + ' '), qPrintable(option));
        const CliRun wrong = runKextKeeper(m_root, home, {verb, "--frobnicate"});
        QCOMPARE(wrong.status, 2);
        QCOMPARE(wrong.out, QString());
        static const QRegularExpression oneLine("^kextkeeper (\\w+): [^\\n]+\\nTry 'kextkeeper "
                                                "(\\w+) --help'.\\n$");
        const QRegularExpressionMatch match = oneLine.match(wrong.err);
        QVERIFY2(match.hasMatch(), qPrintable(wrong.err));
        QCOMPARE(match.captured(1), verb);
        QCOMPARE(match.captured(2), verb);
    }

    // --json prints one document whose fields say what the text says.
    void jsonDocuments_data() {
        QTest::addColumn<QStringList>("args"); // "@" stands for the sandbox root
        QTest::addColumn<QString>("field");    // a path into the document, "a/0/b"
        QTest::addColumn<QString>("value");
        QTest::newRow("volumes") << QStringList{"volumes", "--json"} << "volumes/1/name"
                                 << "Macintosh HD";
        QTest::newRow("volumes, started system")
            << QStringList{"volumes", "--json"} << "volumes/1/startedSystem"
            << "true";
        QTest::newRow("loaded") << QStringList{"loaded", "--json", "--filter", "kpi.iokit"}
                                << "kexts/0/version"
                                << "10.8.0";
        QTest::newRow("loaded count")
            << QStringList{"loaded", "--json", "--filter", "iokit"} << "count"
            << "9";
        const QString sensors = "@/Volumes/Lion Backup/Extra/KextStore/ExampleSensors.kext";
        QTest::newRow("check") << QStringList{"check", "--json", sensors} << "architectures/x86_64"
                               << "true";
        QTest::newRow("check, libraries")
            << QStringList{"check", "--deps", "--json", sensors} << "libraries/1"
            << "com.sandboxmac.kpi.libkern = 10.8.0";
        QTest::newRow("mkext list")
            << QStringList{"mkext", "list", "--json", "@/Extra/Extensions.mkext"}
            << "kexts/0/identifier"
            << "org.example.driver.AudioPatch";
    }
    void jsonDocuments() {
        QFETCH(QStringList, args);
        QFETCH(QString, field);
        QFETCH(QString, value);
        const CliRun run =
            runKextKeeper(m_root, m_dir.filePath("home"), args.replaceInStrings("@", m_root));
        QCOMPARE(run.status, 0);
        QJsonParseError error;
        QJsonValue at = QJsonDocument::fromJson(run.out.toUtf8(), &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        for (const QString &step : field.split('/')) {
            bool index = false;
            const int i = step.toInt(&index);
            at = index ? at.toArray().at(i) : at.toObject().value(step);
        }
        QCOMPARE(at.isString() ? at.toString() : at.toVariant().toString(), value);
    }

    // Each verb has its section, naming each option the table gives it, and nothing else.
    void manPage() {
        QFile file(KK_DOCS_DIR "/kextkeeper.1");
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString page = QString::fromUtf8(file.readAll());
        QMap<QString, QStringList> sections;
        QString current;
        static const QRegularExpression option(R"(^\.TP\n\\fB(\\-\\-[a-z\\-]+)\\fR)",
                                               QRegularExpression::MultilineOption);
        for (const QString &part :
             page.split(QRegularExpression("^\\.S[SH] ", QRegularExpression::MultilineOption))) {
            const QString title = part.section('\n', 0, 0);
            auto it = option.globalMatch(part);
            QStringList names{"--help"};
            while (it.hasNext())
                names << it.next().captured(1).remove('\\');
            if (CliRegistry::find(title))
                sections[title] = sorted(names);
        }
        QCOMPARE(sections.keys(), verbNames());
        for (const QString &verb : verbNames())
            QCOMPARE(sections[verb].join(' '), sorted(optionNames(verb)).join(' '));
        // groff reads it without a warning.
        const QString groff = QStandardPaths::findExecutable("groff");
        if (!groff.isEmpty()) {
            QProcess process;
            process.start(groff, {"-man", "-ww", "-z", file.fileName()});
            QVERIFY(process.waitForFinished(20000));
            QCOMPARE(QString::fromUtf8(process.readAllStandardError()), QString());
        }
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
