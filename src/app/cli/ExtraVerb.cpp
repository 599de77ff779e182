// `kextkeeper extra`: the Extra menu's commands from the terminal. The conversions ask
// the window's question on the terminal unless --yes answers it beforehand.

#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
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
            yes = m_c.confirm(QStringLiteral("Continue on the volume \"%1\"?").arg(m_volume));
        }
        declined = !yes; // the question has said that nothing was changed
        answered(yes ? yesCode : noCode);
    }
    void commandsFailed(const QStringList &failures) override {
        failed = true;
        m_c.tellFailures(m_c.verb, failures);
    }
    void reevaluateVolume() override {}
    bool failed = false;
    bool declined = false;

private:
    CliContext &m_c;
    QString m_volume;
    bool m_yes;
};

} // namespace

int extraVerb(CliContext &c) {
    const CliSyntax &syntax = CliSyntax::of(c.verb);
    const CliArgs args(c.args, syntax.options);
    if (!args.ok())
        return c.usageError(args.error());
    if (args.positional().size() != 1 || !syntax.actions.contains(args.positional().first()))
        return c.usageError(QStringLiteral("say one of ") +
                            syntax.actions.join(QStringLiteral(", ")));
    const QString volume = args.value(QStringLiteral("--volume")).value_or(QString());
    if (volume.isEmpty())
        return c.usageError(QStringLiteral("--volume NAME is needed"));
    if (!VolumeList::build(c.paths().volumesDir()).contains(volume))
        return c.taskError(
            QStringLiteral("no volume with an Extra or System/Library folder is called ") + volume);
    const QString command = args.positional().first();
    // The menu's show and hide items are enabled only where Extra holds kexts; the two
    // conversions are always offered and answer for themselves.
    if (command == QLatin1String("hide") || command == QLatin1String("show")) {
        const QString refusal =
            OfferedOptions::extra(command, volume, c.paths().volumeRoot(volume), QString());
        if (!refusal.isEmpty())
            return c.usageError(refusal);
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
    if (view.declined)
        return CliTaskError;
    if (!end.ok && end.message.isEmpty())
        return c.taskError(QStringLiteral("administrator rights were not given"));
    const int status = c.end(QStringLiteral("extra"), end);
    return view.failed ? CliTaskError : status;
}
