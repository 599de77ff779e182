#pragma once

#include <QSettings>
#include <QStringList>
#include <memory>

class QMainWindow;
class QToolBar;

// What the window looks like between runs: its size and place, where its toolbar sits,
// which page items the toolbar shows and how, and the page shown last. Kept in the
// program's own per-user settings; the settings the tasks read stay in Info.plist.
class WindowState {
public:
    // No settings given: the per-user settings of the program.
    explicit WindowState(std::unique_ptr<QSettings> settings = nullptr);
    ~WindowState();

    // The page items by identifier ("ti_m" .. "ti_l"), found among the window's actions.
    void save(const QMainWindow &window, const QToolBar &toolbar, const QStringList &items,
              const QString &shownItem);
    // Puts size, place and toolbar back; returns the page item shown last ("" if none).
    // Call before the window is shown, so it opens where it was.
    QString restore(QMainWindow &window, QToolBar &toolbar, const QStringList &items) const;

private:
    std::unique_ptr<QSettings> m_settings;
};
