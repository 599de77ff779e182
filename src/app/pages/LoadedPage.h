#pragma once

#include <QStringList>
#include <QWidget>
#include <memory>

class EmptyState;
class QPropertyAnimation;
class QStringListModel;
namespace Ui {
class LoadedPage;
}

// The loaded kexts page: the filter, the list with its count, and the detail pane of the
// selected kext (name, path, x86_64 and i386 code) that slides open and shut under it,
// with unload, reload and reveal.
class LoadedPage : public QWidget {
    Q_OBJECT
public:
    // The height the detail pane has, or is animating to.
    static constexpr int collapsedHeight = 1;
    static constexpr int expandedHeight = 72;

    explicit LoadedPage(QWidget *parent = nullptr);
    ~LoadedPage() override;

    void showRows(const QStringList &rows, const QString &foundText);
    QString filter() const;
    // Empties the filter and puts the cursor in it.
    void startFiltering();
    // The first selected row's text; empty when none is selected.
    QString selectedRow() const;

    // The toggle reads "collapsed" (the pane may still be open until it is animated).
    bool paneCollapsed() const;
    void setPaneCollapsed(bool collapsed);
    // Shuts the pane at once, stopping any animation.
    void closePaneNow();
    // Slides the pane open or shut.
    void animatePane(bool open);

    QString kextPath() const;
    // A kext that was found: its path, its name and its code.
    void showKext(const QString &path, const QString &name, bool x86_64, bool i386);
    // A row whose kext could not be found.
    void showUnknownKext(const QString &name);
    void clearDetails();

    // Why the page has nothing to show ("" when it has), and what it offers instead.
    void showEmptyState(const QString &reason, const QString &offer = {});
    QString emptyReason() const;

signals:
    void offerClicked();
    void filterEdited();
    void selectionChanged();
    void unloadClicked();
    void reloadClicked();
    void revealClicked();
    void paneToggled();

private:
    std::unique_ptr<Ui::LoadedPage> m_ui;
    EmptyState *m_empty;
    QStringListModel *m_model;
    QPropertyAnimation *m_animation;
};
