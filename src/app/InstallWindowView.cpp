#include "InstallWindowView.h"

#include "MainWindow.h"
#include "TovrelAppDelegate.h"
#include "exec/FailedCommands.h"
#include "exec/IconAlert.h"
#include "pages/InstallPage.h"
#include "ui_InstallPage.h"

#include <QMetaObject>

namespace {
QProgressBar *bar(TovrelAppDelegate &delegate) {
    return delegate.installPage()->ui()->InstProgress;
}
} // namespace

InstallWindowView::InstallWindowView(TovrelAppDelegate &delegate) : m_delegate(&delegate) {}

QList<QWidget *> InstallWindowView::controls(TovrelAppDelegate &delegate) {
    auto *page = delegate.installPage()->ui();
    return {page->bInstButton, page->bInstBrowse, page->bInstClear,
            page->DiskSelInst, page->cbBackup,    page->inSLE,
            page->inExtra,     page->inDesktop,   page->tbkexts};
}

void InstallWindowView::post(std::function<void(TovrelAppDelegate &)> effect) {
    QPointer<TovrelAppDelegate> delegate = m_delegate;
    if (!delegate)
        return;
    QMetaObject::invokeMethod(
        delegate.data(),
        [delegate, effect = std::move(effect)] {
            if (delegate)
                effect(*delegate);
        },
        Qt::QueuedConnection);
}

void InstallWindowView::progressPrepared(int maximum) {
    // Called on the UI thread before the job starts. A single bundle gives a maximum of
    // 0, which the bar shows as busy from the start.
    m_maximum = maximum;
    if (!m_delegate)
        return;
    bar(*m_delegate)->setRange(0, maximum);
    bar(*m_delegate)->setValue(0);
}

void InstallWindowView::taskState(const QString &rootPath, const QString &backupFolder) {
    post([rootPath, backupFolder](TovrelAppDelegate &d) {
        d.rp = rootPath;
        d.datedir = backupFolder;
    });
}

void InstallWindowView::setControlsEnabled(bool enabled) {
    post([enabled](TovrelAppDelegate &d) {
        for (QWidget *control : controls(d))
            control->setEnabled(enabled);
    });
}

void InstallWindowView::setWorking(bool working) {
    if (m_delegate)
        m_delegate->workingInst = working;
}

void InstallWindowView::bundleStarted(int index, int, const QString &) {
    post([index](TovrelAppDelegate &d) {
        bar(d)->setValue(index);
        bar(d)->repaint();
    });
}

void InstallWindowView::setIndeterminate(bool indeterminate) {
    const int maximum = m_maximum;
    post([indeterminate, maximum](TovrelAppDelegate &d) {
        bar(d)->setRange(0, indeterminate ? 0 : maximum);
    });
}

void InstallWindowView::reevaluateVolume() {
    post([](TovrelAppDelegate &d) { d.DiskSelectorInstallation(nullptr); });
}

void InstallWindowView::commandsFailed(const QStringList &failures) {
    const QString text = FailedCommands::summary(failures.size()) + QStringLiteral(":\n") +
                         failures.join(QLatin1Char('\n'));
    post(
        [text](TovrelAppDelegate &d) { IconAlert::defaultinst().ShowErrorMsg(text, &d.window()); });
}

void InstallWindowView::showError(const QString &message) {
    post([message](TovrelAppDelegate &d) {
        IconAlert::defaultinst().ShowErrorMsg(message, &d.window());
    });
}

void InstallWindowView::showInfo(const QString &message) {
    post([message](TovrelAppDelegate &d) {
        IconAlert::defaultinst().ShowInfoMsg(message, &d.window());
    });
}

void InstallWindowView::progressReset() {
    post([](TovrelAppDelegate &d) {
        bar(d)->setRange(0, 1);
        bar(d)->setValue(0);
    });
}
