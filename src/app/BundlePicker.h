#pragma once

#include <QDialog>
#include <QStringList>

class QDialogButtonBox;
class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;
class QToolButton;

// The open panel for bundles where a bundle is a plain folder (everywhere but macOS,
// whose own panel treats them as packages). Folders whose names end in one of the bundle
// types are shown and chosen like files; any other folder is opened on a double click or
// Enter. Plain files are not shown: nothing but a folder can be a bundle here. A choice
// that holds something that is not a bundle is refused with a message naming it, so
// nothing the user picked is dropped without a word.
class BundlePicker : public QDialog {
    Q_OBJECT
public:
    // `types` without dots ("kext", "bundle"), compared ignoring case.
    BundlePicker(QWidget *parent, const QStringList &types, bool several);

    bool isBundle(const QString &path) const;

    QString folder() const { return m_folder; }
    void setFolder(const QString &path);
    // The bundles chosen when the panel was accepted, in the order the list shows them.
    QStringList chosenBundles() const { return m_chosen; }

    // What the user typed into the location field, then Enter: a bundle is chosen, a
    // folder opened, anything else named in a message.
    void goTo(const QString &typed);
    // The selected entries taken as the answer (the Open button).
    void chooseSelection();

signals:
    // A choice was refused; the same text is shown in a message box over the panel.
    void refused(const QString &message);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void activate(QTreeWidgetItem *item);
    void choose(const QStringList &paths);
    void refuse(const QStringList &paths);
    void updateOpenButton();
    QString kindText(const QString &path) const;

    QStringList m_types;
    QString m_folder;
    QStringList m_chosen;
    QLineEdit *m_location;
    QToolButton *m_up;
    QTreeWidget *m_entries;
    QDialogButtonBox *m_buttons;
};
