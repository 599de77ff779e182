#pragma once

#include "install/InstallView.h"

#include <QPointer>
#include <functional>

class TovrelAppDelegate;
class QWidget;

// Shows an installation on the installation page. The job calls it from its background
// thread; every effect on a widget is posted to the UI thread, so the effects arrive in
// the order the plan made them. The busy flag is set at once, because the page guards
// and the drop target must see it before the first posted effect runs.
class InstallWindowView final : public InstallView {
public:
    explicit InstallWindowView(TovrelAppDelegate &delegate);

    void progressPrepared(int maximum) override;
    void taskState(const QString &rootPath, const QString &backupFolder) override;
    void setControlsEnabled(bool enabled) override;
    void setWorking(bool working) override;
    void bundleStarted(int index, int count, const QString &path) override;
    void setIndeterminate(bool indeterminate) override;
    void reevaluateVolume() override;
    void commandsFailed(const QStringList &failures) override;
    void showError(const QString &message) override;
    void showInfo(const QString &message) override;
    void progressReset() override;

    // The page's controls in the order they are switched off and on again.
    static QList<QWidget *> controls(TovrelAppDelegate &delegate);

private:
    void post(std::function<void(TovrelAppDelegate &)> effect);

    QPointer<TovrelAppDelegate> m_delegate;
    int m_maximum = 0;
};
