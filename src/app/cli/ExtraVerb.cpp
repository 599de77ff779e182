// `kextkeeper extra`: the Extra menu's commands from the terminal. The conversions ask
// the window's question on the terminal unless --yes answers it beforehand.

#include "cli/CliArgs.h"
#include "cli/CliVerbs.h"
#include "cli/OfferedOptions.h"
#include "maintenance/ExtraFolderOperations.h"
#include "maintenance/ExtraFolderView.h"
#include "volumes/VolumeList.h"

namespace {

class TerminalExtraView final : public ExtraFolderView {
public:
    TerminalExtraView(CliContext &c, QString volume, bool yes)
        : m_c(c), m_volume(std::move(volume)), m_yes(yes) {}

    QString selectedVolume() const override { return m_volume; }
    void rootPathChosen(const QString &) override {}
    void askToContinue(const QString &informativeText, std::function<void(int)> answered) override {
        bool yes = m_yes;
        if (!yes) {
            m_c.note(informativeText);
            yes = m_c.confirm(QStringLiteral("Continue?"));
        }
        answered(yes ? yesCode : noCode);
    }
    void commandsFailed(const QStringList &failures) override {
        failed = true;
        m_c.tellFailures(QStringLiteral("extra"), failures);
    }
    void reevaluateVolume() override {}
    bool failed = false;

private:
    CliContext &m_c;
    QString m_volume;
    bool m_yes;
};

int usage(CliContext &c, const QString &problem) {
    c.err << "kextkeeper extra: " << problem << Qt::endl;
    return CliUsage;
}

} // namespace

int extraVerb(CliContext &c) {
    const CliArgs args(c.args, {QStringLiteral("--volume")}, {QStringLiteral("--yes")});
    if (!args.ok())
        return usage(c, args.error());
    const QStringList commands{QStringLiteral("to-kextstore"), QStringLiteral("to-extensions"),
                               QStringLiteral("hide"), QStringLiteral("show")};
    if (args.positional().size() != 1 || !commands.contains(args.positional().first()))
        return usage(c, QStringLiteral("say one of to-kextstore, to-extensions, hide, show"));
    const QString volume = args.value(QStringLiteral("--volume")).value_or(QString());
    if (volume.isEmpty())
        return usage(c, QStringLiteral("--volume NAME is needed"));
    if (!VolumeList::build(c.paths().volumesDir()).contains(volume)) {
        c.err << "kextkeeper extra: no volume with an Extra or System/Library folder is called "
              << volume << Qt::endl;
        return CliTaskError;
    }
    const QString command = args.positional().first();
    // The menu's show and hide items are enabled only where Extra holds kexts; the two
    // conversions are always offered and answer for themselves.
    if (command == QLatin1String("hide") || command == QLatin1String("show")) {
        const QString refusal =
            OfferedOptions::extra(command, volume, c.paths().volumeRoot(volume), QString());
        if (!refusal.isEmpty())
            return usage(c, refusal);
    }

    TerminalExtraView view(c, volume, args.flag(QStringLiteral("--yes")));
    const std::shared_ptr<Executor> executor = c.services.executor();
    ExtraFolderOperations ops(c.paths(), *executor, view);
    std::optional<TaskResult> result;
    if (command == QLatin1String("to-kextstore"))
        result = ops.createKextStore();
    else if (command == QLatin1String("to-extensions"))
        result = ops.restoreExtensionsFolder();
    else if (command == QLatin1String("hide"))
        result = ops.hideExtraFolder();
    else
        result = ops.showExtraFolder();
    // The terminal answers at once, so the answer's end is known by now.
    const TaskResult end = result.value_or(ops.lastAnswer());
    if (!end.ok && end.message.isEmpty())
        c.err << "kextkeeper extra: administrator rights were not given" << Qt::endl;
    const int status = c.end(QStringLiteral("extra"), end);
    return view.failed ? CliTaskError : status;
}
