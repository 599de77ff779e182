#include "LoadedPageController.h"

#include "FileViewer.h"
#include "MainWindow.h"
#include "exec/IconAlert.h"
#include "inspect/ArchitectureProbe.h"
#include "loaded/KextStatText.h"
#include "pages/LoadedPage.h"
#include "ui_LoadedPage.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QPropertyAnimation>
#include <QStringListModel>

LoadedPageController::LoadedPageController(MainWindow &window, QObject *parent)
    : QObject(parent), m_window(window), m_model(new QStringListModel(this)),
      m_animation(new QPropertyAnimation(this)),
      m_unloader([](const QString &command, const QString &argument) {
          return IconAlert::defaultinst().ExecuteRootErrorCmd(command, argument);
      }),
      m_probe([](const QString &kextPath) { return ArchitectureProbe().probeText(kextPath); }) {
    Ui::LoadedPage *form = ui();
    form->tbLoaded->setModel(m_model);
    form->tbLoaded->setEditTriggers(QAbstractItemView::NoEditTriggers);
    form->tbLoaded->verticalHeader()->setDefaultSectionSize(form->tbLoaded->fontMetrics().height() +
                                                            6);
    // The pane's height follows its maximum; the animation moves that maximum.
    m_animation->setTargetObject(form->SVBottom);
    m_animation->setPropertyName("maximumHeight");
    m_animation->setDuration(250);
    form->buttonslide->setChecked(true);
    form->SVBottom->setMaximumHeight(collapsedHeight);
    // The two boxes only report what the probe found.
    form->ka64->setAttribute(Qt::WA_TransparentForMouseEvents);
    form->ka32->setAttribute(Qt::WA_TransparentForMouseEvents);

    connect(form->tfLdedFltr, &QLineEdit::textEdited, this,
            &LoadedPageController::controlTextDidChange);
    connect(form->tbLoaded->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &LoadedPageController::KextSelected);
    connect(form->bUnload, &QPushButton::clicked, this, &LoadedPageController::bUnload);
    connect(form->bReload, &QPushButton::clicked, this, &LoadedPageController::bReload);
    connect(form->bReveal, &QPushButton::clicked, this, &LoadedPageController::Reveal);
    connect(form->buttonslide, &QToolButton::clicked, this, &LoadedPageController::UpDown);
}

Ui::LoadedPage *LoadedPageController::ui() const {
    return m_window.loadedPage()->ui();
}

bool LoadedPageController::collapsed() const {
    return ui()->buttonslide->isChecked();
}

void LoadedPageController::TI_Loaded() {
    Ui::LoadedPage *form = ui();
    form->buttonslide->setChecked(true);
    IconAlert &icon = IconAlert::defaultinst();
    const QString kextstat = icon.paths().system(QStringLiteral("/usr/sbin/kextstat"));
    m_list.refresh(icon.ExecuteCmd(kextstat, {}).value_or(QString()));
    // Entering from another page closes the pane; on the page itself it keeps its size
    // although the toggle now reads "collapsed".
    if (m_window.currentPage() != PageLoaded) {
        m_animation->stop();
        form->SVBottom->setMaximumHeight(collapsedHeight);
    }
    showRows(m_list.rows());
    m_window.showPage(PageLoaded);
    form->tfLdedFltr->setFocus();
    form->tfLdedFltr->setText(QString());
}

void LoadedPageController::controlTextDidChange() {
    showRows(m_list.filtered(ui()->tfLdedFltr->text()));
}

void LoadedPageController::showRows(const QStringList &rows) {
    ui()->lbLdedFnd->setText(LoadedKextList::foundText(rows.size()));
    m_model->setStringList(rows);
}

void LoadedPageController::KextSelected() {
    Ui::LoadedPage *form = ui();
    const QModelIndexList selected = form->tbLoaded->selectionModel()->selectedRows();
    if (selected.isEmpty() || collapsed())
        return;
    const QString identifier = kextRowIdentifier(selected.first().data().toString());
    // An empty identifier (a line the listing could not fill) names no kext.
    const QString path =
        identifier.isEmpty() ? QString() : IconAlert::defaultinst().index().FindPath(identifier);
    form->tfKPath->setText(path);
    if (path.isEmpty()) {
        form->lbKname->setText(tr("Unknown kext"));
        form->ka64->setChecked(false);
        form->ka32->setChecked(false);
        return;
    }
    form->lbKname->setText(QFileInfo(path).fileName());
    const ArchitectureProbe::Architectures found =
        ArchitectureProbe::loadedKextMarkers(m_probe(path));
    form->ka64->setChecked(found.x86_64);
    form->ka32->setChecked(found.i386);
}

void LoadedPageController::bUnload() {
    const KextUnloader::Result result = m_unloader.unload(ui()->tfKPath->text());
    if (result.outcome == KextUnloader::Outcome::Done) {
        TI_Loaded();
        clearDetails();
    } else if (result.outcome == KextUnloader::Outcome::Failed) {
        IconAlert::defaultinst().ShowErrorMsg(result.error, &m_window);
    }
}

void LoadedPageController::bReload() {
    // Deliberately neither refreshes the list nor clears the pane: the kext is back.
    const KextUnloader::Result result = m_unloader.reload(ui()->tfKPath->text());
    if (result.outcome == KextUnloader::Outcome::Failed)
        IconAlert::defaultinst().ShowErrorMsg(result.error, &m_window);
}

void LoadedPageController::Reveal() {
    FileViewer::reveal(ui()->tfKPath->text());
}

void LoadedPageController::UpDown() {
    if (collapsed()) {
        animatePane(collapsedHeight);
    } else {
        // A kext installed since the last look is found after opening the pane again.
        IconAlert &icon = IconAlert::defaultinst();
        icon.index().rebuild(icon.paths());
        animatePane(expandedHeight);
    }
    KextSelected();
}

void LoadedPageController::animatePane(int height) {
    m_animation->stop();
    m_animation->setStartValue(ui()->SVBottom->maximumHeight());
    m_animation->setEndValue(height);
    m_animation->start();
}

void LoadedPageController::clearDetails() {
    Ui::LoadedPage *form = ui();
    form->lbKname->setText(QString());
    form->tfKPath->setText(QString());
    form->ka64->setChecked(false);
    form->ka32->setChecked(false);
}
