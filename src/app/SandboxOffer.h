#pragma once

#include <QString>

class QWidget;
class SystemPaths;

// On a host that is not a Mac the window finds no volume and no kextstat, so there is
// nothing to try it on. The sandbox Mac is: this offers it, made on first use in the
// user's home, and starts the program on it.
class SandboxOffer {
public:
    explicit SandboxOffer(const QString &home);

    // Worth offering: not a Mac, and not a sandbox already.
    static bool applies(const SystemPaths &paths);

    QString folder() const { return m_folder; }
    bool exists() const;
    // The button's text: "Open" when it is there, "Create" when not.
    QString actionText() const;
    // Makes the sandbox when missing, then starts this program on it. False with `error`
    // set when either failed.
    bool openOrCreate(QString &error) const;
    // The button's action: opens it and closes `window`, or says what went wrong.
    void acceptFrom(QWidget &window) const;

private:
    QString m_folder;
};
