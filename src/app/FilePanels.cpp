#include "FilePanels.h"

#include "BundlePicker.h"
#include "install/InstallList.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QFileDialog>

namespace {

QString tr(const char *text) {
    return QCoreApplication::translate("FilePanels", text);
}

bool isBundle(const QString &path) {
    const QString name = InstallList::bundleName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    // Compared like the panel's type list, which ignores case.
    return dot > 0 && InstallList::bundleTypes().contains(name.mid(dot + 1), Qt::CaseInsensitive);
}

void setUpForBundles(QFileDialog *dialog) {
    QStringList patterns;
    for (const QString &type : InstallList::bundleTypes())
        patterns << QStringLiteral("*.") + type;
    dialog->setNameFilter(tr("Kext bundles (%1)").arg(patterns.join(QLatin1Char(' '))));
    // Bundles are packages on macOS: the native panel picks them like files. Elsewhere
    // the bundle picker stands in (see FilePanels::open).
    dialog->setFileMode(QFileDialog::ExistingFiles);
}

void setUp(QFileDialog *dialog, FilePanels::Kind kind, const QString &defaultName) {
    switch (kind) {
    case FilePanels::Kind::Bundles:
        setUpForBundles(dialog);
        break;
    case FilePanels::Kind::Kext:
        // A kext is a folder outside macOS, so the panel picks folders named *.kext.
        dialog->setFileMode(QFileDialog::Directory);
        dialog->setOption(QFileDialog::DontUseNativeDialog);
        dialog->setNameFilter(tr("Kernel extensions (*.kext)"));
        break;
    case FilePanels::Kind::Mkext:
        dialog->setFileMode(QFileDialog::ExistingFile);
        dialog->setNameFilter(tr("Mkext archives (*.mkext)"));
        break;
    case FilePanels::Kind::Folder:
        // New folders may be made from the panel (the dialog offers it by default).
        dialog->setFileMode(QFileDialog::Directory);
        dialog->setOption(QFileDialog::ShowDirsOnly);
        break;
    case FilePanels::Kind::Report:
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->setNameFilter(tr("Text files (*.txt)"));
        dialog->setDefaultSuffix(QStringLiteral("txt"));
        dialog->selectFile(defaultName);
        break;
    }
}

// What the panel hands back: folder mode can't filter folders by name, so only bundles
// (or a kext) are taken from it.
QStringList chosen(FilePanels::Kind kind, const QStringList &selected) {
    if (kind == FilePanels::Kind::Bundles) {
        QStringList bundles;
        for (const QString &path : selected) {
            if (isBundle(path))
                bundles << path;
        }
        return bundles;
    }
    const QString path = selected.value(0);
    if (kind == FilePanels::Kind::Kext && !path.endsWith(QLatin1String(".kext")))
        return {};
    return {path};
}

} // namespace

void FilePanels::open(Kind kind, Done done, const QString &defaultName) {
    if (m_answer) {
        m_answer(kind, defaultName, std::move(done));
        return;
    }
#ifndef Q_OS_MACOS
    // A bundle is a plain folder here, which no file dialog picks like a file.
    if (kind == Kind::Bundles || kind == Kind::Kext) {
        const QStringList types = kind == Kind::Bundles ? InstallList::bundleTypes()
                                                        : QStringList{QStringLiteral("kext")};
        auto *picker = new BundlePicker(m_window, types, kind == Kind::Bundles);
        picker->setAttribute(Qt::WA_DeleteOnClose);
        picker->setWindowModality(Qt::WindowModal);
        if (kind == Kind::Bundles)
            picker->setWindowTitle(tr("Add Kexts"));
        QObject::connect(picker, &QDialog::finished, picker, [picker, done](int result) {
            done(result == QDialog::Accepted ? 1 : 0, picker->chosenBundles());
        });
        picker->open();
        return;
    }
#endif
    auto *dialog = new QFileDialog(m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    setUp(dialog, kind, defaultName);
    QObject::connect(dialog, &QFileDialog::finished, dialog, [dialog, kind, done](int result) {
        if (result != QDialog::Accepted) {
            done(0, {});
            return;
        }
        const QStringList paths = chosen(kind, dialog->selectedFiles());
        // A kext panel closed on anything else counts as cancelled.
        done(paths.isEmpty() && kind == Kind::Kext ? 0 : 1, paths);
    });
    dialog->open();
}
