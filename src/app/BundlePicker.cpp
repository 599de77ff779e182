#include "BundlePicker.h"

#include "AlertBox.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileIconProvider>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
constexpr int PathRole = Qt::UserRole;

QString nameOf(const QString &path) {
    const QString clean = QDir::cleanPath(path);
    const QString name = clean.section(QLatin1Char('/'), -1);
    return name.isEmpty() ? clean : name;
}

QString quoted(const QString &text) {
    return QStringLiteral("\u201c%1\u201d").arg(text);
}

QToolButton *iconButton(QWidget *parent, QStyle::StandardPixmap pixmap, const QString &name) {
    auto *button = new QToolButton(parent);
    button->setIcon(parent->style()->standardIcon(pixmap));
    // The icon says it to the eye; the name says it to a screen reader and the tooltip.
    button->setAccessibleName(name);
    button->setToolTip(name);
    return button;
}
} // namespace

BundlePicker::BundlePicker(QWidget *parent, const QStringList &types, bool several)
    : QDialog(parent), m_types(types), m_location(new QLineEdit(this)),
      m_up(iconButton(this, QStyle::SP_FileDialogToParent, tr("Enclosing Folder"))),
      m_entries(new QTreeWidget(this)),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, this)) {
    setObjectName(QStringLiteral("BundlePicker"));
    setWindowTitle(several ? tr("Choose Bundles") : tr("Choose a Bundle"));
    resize(640, 420);

    auto *home = iconButton(this, QStyle::SP_DirHomeIcon, tr("Home Folder"));
    connect(home, &QToolButton::clicked, this, [this] { setFolder(QDir::homePath()); });
    connect(m_up, &QToolButton::clicked, this,
            [this] { setFolder(QFileInfo(m_folder).absolutePath()); });
    m_location->setObjectName(QStringLiteral("location"));
    m_location->installEventFilter(this);
    auto *where = new QLabel(tr("&Location:"), this);
    where->setBuddy(m_location);
    auto *top = new QHBoxLayout;
    top->addWidget(where);
    top->addWidget(m_location, 1);
    top->addWidget(m_up);
    top->addWidget(home);

    m_entries->setObjectName(QStringLiteral("entries"));
    m_entries->setHeaderLabels({tr("Name"), tr("Kind")});
    m_entries->setRootIsDecorated(false);
    m_entries->setAllColumnsShowFocus(true);
    m_entries->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_entries->header()->setStretchLastSection(false);
    m_entries->setSelectionMode(several ? QAbstractItemView::ExtendedSelection
                                        : QAbstractItemView::SingleSelection);
    m_entries->installEventFilter(this);
    connect(m_entries, &QTreeWidget::itemDoubleClicked, this, &BundlePicker::activate);
    connect(m_entries, &QTreeWidget::itemSelectionChanged, this, &BundlePicker::updateOpenButton);

    QStringList suffixes;
    for (const QString &type : m_types)
        suffixes << QLatin1Char('.') + type;
    auto *hint = new QLabel(tr("Folders ending in %1 are chosen; other folders open.")
                                .arg(QLocale().createSeparatedList(suffixes)),
                            this);
    hint->setWordWrap(true);

    connect(m_buttons, &QDialogButtonBox::accepted, this, &BundlePicker::chooseSelection);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_entries, 1);
    layout->addWidget(hint);
    layout->addWidget(m_buttons);
    setFolder(QDir::homePath());
}

bool BundlePicker::isBundle(const QString &path) const {
    const QString name = nameOf(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 && m_types.contains(name.mid(dot + 1), Qt::CaseInsensitive);
}

void BundlePicker::setFolder(const QString &path) {
    const QDir dir(path);
    if (!dir.exists())
        return;
    m_folder = QDir::cleanPath(dir.absolutePath());
    m_location->setText(QDir::toNativeSeparators(m_folder));
    m_up->setEnabled(!dir.isRoot());

    m_entries->clear();
    const QFileIconProvider icons;
    const auto entries = dir.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot,
                                           QDir::Name | QDir::IgnoreCase | QDir::LocaleAware);
    for (const QFileInfo &entry : entries) {
        const QString entryPath = entry.absoluteFilePath();
        auto *item = new QTreeWidgetItem(m_entries, {entry.fileName(), kindText(entryPath)});
        item->setData(0, PathRole, entryPath);
        // A bundle is shown as the one thing it is, not as a folder to open.
        item->setIcon(0, icons.icon(isBundle(entryPath) ? QAbstractFileIconProvider::File
                                                        : QAbstractFileIconProvider::Folder));
    }
    m_entries->resizeColumnToContents(1);
    updateOpenButton();
}

void BundlePicker::goTo(const QString &typed) {
    const QString text = typed.trimmed();
    if (text.isEmpty())
        return;
    const QString path = QDir::cleanPath(QDir(m_folder).absoluteFilePath(text));
    const QFileInfo info(path);
    if (!info.exists()) {
        const QString message = tr("%1 does not exist.").arg(quoted(path));
        emit refused(message);
        AlertBox::warn(this, message);
    } else if (info.isDir() && isBundle(path)) {
        choose({path});
    } else if (info.isDir()) {
        setFolder(path);
    } else {
        refuse({path});
    }
}

void BundlePicker::chooseSelection() {
    QStringList paths;
    // Walked in the list's order, which is the order the bundles are added in.
    for (int row = 0; row < m_entries->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = m_entries->topLevelItem(row);
        if (item->isSelected())
            paths << item->data(0, PathRole).toString();
    }
    if (paths.isEmpty())
        return;
    if (paths.size() == 1 && !isBundle(paths.first())) {
        // Open on a lone folder goes into it, as in any file panel.
        setFolder(paths.first());
        return;
    }
    QStringList others;
    for (const QString &path : paths) {
        if (!isBundle(path))
            others << path;
    }
    if (others.isEmpty())
        choose(paths);
    else
        refuse(others);
}

bool BundlePicker::eventFilter(QObject *watched, QEvent *event) {
    // Enter belongs to the field or the list it was typed in: it must not fall through to
    // the dialog's default button as well.
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (watched == m_location)
                goTo(m_location->text());
            else if (watched == m_entries)
                activate(m_entries->currentItem());
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void BundlePicker::activate(QTreeWidgetItem *item) {
    if (!item)
        return;
    const QString path = item->data(0, PathRole).toString();
    if (!isBundle(path))
        setFolder(path);
    else if (item->isSelected())
        chooseSelection();
    else
        choose({path});
}

void BundlePicker::choose(const QStringList &paths) {
    m_chosen = paths;
    accept();
}

void BundlePicker::refuse(const QStringList &paths) {
    QStringList names;
    for (const QString &path : paths)
        names << quoted(nameOf(path));
    QStringList suffixes;
    for (const QString &type : m_types)
        suffixes << QLatin1Char('.') + type;
    const QString ending = QLocale().createSeparatedList(suffixes);
    const QString message =
        names.size() == 1
            ? tr("%1 is not a bundle and can't be chosen. Choose folders whose names end in %2.")
                  .arg(names.first(), ending)
            : tr("%1 are not bundles and can't be chosen. Choose folders whose names end in %2.")
                  .arg(QLocale().createSeparatedList(names), ending);
    emit refused(message);
    AlertBox::warn(this, message);
}

void BundlePicker::updateOpenButton() {
    m_buttons->button(QDialogButtonBox::Open)->setEnabled(!m_entries->selectedItems().isEmpty());
}

QString BundlePicker::kindText(const QString &path) const {
    if (!isBundle(path))
        return tr("Folder");
    const QString type = nameOf(path).section(QLatin1Char('.'), -1).toLower();
    if (type == QLatin1String("kext"))
        return tr("Kernel extension");
    if (type == QLatin1String("plugin"))
        return tr("Plug-in");
    if (type == QLatin1String("ppp"))
        return tr("PPP plug-in");
    return tr("Bundle");
}
