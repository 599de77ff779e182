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
    void showError(const QString &message) override { m_c.err << message << Qt::endl; }
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
    if (!VolumeList::build(c.paths.volumesDir()).contains(volume)) {
        c.err << "kextkeeper extra: no volume with an Extra or System/Library folder is called "
              << volume << Qt::endl;
        return CliTaskError;
    }
    const QString command = args.positional().first();
    // The menu's show and hide items are enabled only where Extra holds kexts; the two
    // conversions are always offered and answer for themselves.
    if (command == QLatin1String("hide") || command == QLatin1String("show")) {
        const QString refusal =
            OfferedOptions::extra(command, volume, c.paths.volumeRoot(volume), QString());
        if (!refusal.isEmpty())
            return usage(c, refusal);
    }

    TerminalExtraView view(c, volume, args.flag(QStringLiteral("--yes")));
    ExtraFolderOperations ops(c.paths, c.executor, view);
    using Outcome = ExtraFolderOperations::Outcome;
    Outcome outcome = Outcome::Done;
    if (command == QLatin1String("to-kextstore"))
        outcome = ops.MI_CreateEKS();
    else if (command == QLatin1String("to-extensions"))
        outcome = ops.BringBackEE();
    else if (command == QLatin1String("hide"))
        outcome = ops.HideExtra();
    else
        outcome = ops.ShowExtra();
    // The terminal answers at once, so the answer's outcome is known by now.
    if (outcome == Outcome::Asking)
        outcome = ops.lastAnswer();
    switch (outcome) {
    case Outcome::Done:
        return view.failed ? CliTaskError : CliOk;
    case Outcome::Declined:
        return CliOk;
    case Outcome::Refused:
        c.err << "kextkeeper extra: administrator rights were not given" << Qt::endl;
        return CliTaskError;
    default:
        return CliTaskError;
    }
}
