#pragma once

#include <QString>
#include <QStringList>
#include <functional>

// What the Extra folder commands need from whoever shows them: the chosen volume, the
// "Continue?" question and a fresh look at the option boxes.
class ExtraFolderView {
public:
    // The first button's answer; every other code means no.
    static constexpr int yesCode = 1000;
    static constexpr int noCode = 1001;

    virtual ~ExtraFolderView() = default;

    // Title of the volume chosen on the maintenance page, whichever page is shown.
    virtual QString selectedVolume() const = 0;
    // The command's target root ("…/Volumes/NAME/"), kept as the program's rp.
    virtual void rootPathChosen(const QString &rootPath) = 0;
    // Asks "Continue?" with the command's own explanation and buttons "Yes" and "No";
    // the answer may come later (a sheet) or at once (a terminal).
    virtual void askToContinue(const QString &informativeText,
                               std::function<void(int returnCode)> answered) = 0;
    // Commands of the operation that failed, one line each, told when it has ended.
    virtual void commandsFailed(const QStringList &failures) = 0;
    virtual void reevaluateVolume() = 0;
};
