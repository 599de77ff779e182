#include "LoadedPage.h"

#include "EmptyState.h"
#include "ui_LoadedPage.h"

#include <QBoxLayout>

#include <QHeaderView>
#include <QPropertyAnimation>
#include <QStringListModel>

LoadedPage::LoadedPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::LoadedPage>()),
      m_model(new QStringListModel(this)), m_animation(new QPropertyAnimation(this)) {
    m_ui->setupUi(this);
    m_empty = new EmptyState(this);
    static_cast<QBoxLayout *>(layout())->insertWidget(0, m_empty);
    connect(m_empty, &EmptyState::offerClicked, this, &LoadedPage::offerClicked);
    // Extra height goes to the list; the detail pane keeps the height of its rows.
    m_ui->split->setStretchFactor(0, 1);
    m_ui->split->setStretchFactor(1, 0);
    m_ui->SVBottom->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);

    m_ui->tbLoaded->setModel(m_model);
    m_ui->tbLoaded->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_ui->tbLoaded->verticalHeader()->setDefaultSectionSize(m_ui->tbLoaded->fontMetrics().height() +
                                                            6);
    // The pane's height follows its maximum; the animation moves that maximum.
    m_animation->setTargetObject(m_ui->SVBottom);
    m_animation->setPropertyName("maximumHeight");
    m_animation->setDuration(250);
    m_ui->buttonslide->setChecked(true);
    m_ui->SVBottom->setMaximumHeight(collapsedHeight);
    // The two boxes only report what the probe found.
    m_ui->ka64->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_ui->ka32->setAttribute(Qt::WA_TransparentForMouseEvents);

    connect(m_ui->tfLdedFltr, &QLineEdit::textEdited, this, &LoadedPage::filterEdited);
    connect(m_ui->tbLoaded->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &LoadedPage::selectionChanged);
    connect(m_ui->bUnload, &QPushButton::clicked, this, &LoadedPage::unloadClicked);
    connect(m_ui->bReload, &QPushButton::clicked, this, &LoadedPage::reloadClicked);
    connect(m_ui->bReveal, &QPushButton::clicked, this, &LoadedPage::revealClicked);
    connect(m_ui->buttonslide, &QToolButton::clicked, this, &LoadedPage::paneToggled);
    // A disclosure arrow: it points at the details when they are shut, down when open.
    const auto pointArrow = [this](bool collapsed) {
        m_ui->buttonslide->setArrowType(collapsed ? Qt::RightArrow : Qt::DownArrow);
        m_ui->buttonslide->setAccessibleDescription(collapsed ? tr("The details are hidden")
                                                              : tr("The details are shown"));
    };
    connect(m_ui->buttonslide, &QToolButton::toggled, this, pointArrow);
    pointArrow(m_ui->buttonslide->isChecked());
}

LoadedPage::~LoadedPage() = default;

void LoadedPage::showRows(const QStringList &rows, const QString &foundText) {
    m_ui->lbLdedFnd->setText(foundText);
    m_model->setStringList(rows);
}

QString LoadedPage::filter() const {
    return m_ui->tfLdedFltr->text();
}

void LoadedPage::startFiltering() {
    m_ui->tfLdedFltr->setFocus();
    m_ui->tfLdedFltr->setText(QString());
}

QString LoadedPage::selectedRow() const {
    const QModelIndexList selected = m_ui->tbLoaded->selectionModel()->selectedRows();
    return selected.isEmpty() ? QString() : selected.first().data().toString();
}

bool LoadedPage::paneCollapsed() const {
    return m_ui->buttonslide->isChecked();
}

void LoadedPage::setPaneCollapsed(bool collapsed) {
    m_ui->buttonslide->setChecked(collapsed);
}

void LoadedPage::closePaneNow() {
    m_animation->stop();
    m_ui->SVBottom->setMaximumHeight(collapsedHeight);
}

void LoadedPage::animatePane(bool open) {
    m_animation->stop();
    m_animation->setStartValue(m_ui->SVBottom->maximumHeight());
    m_animation->setEndValue(open ? expandedHeight : collapsedHeight);
    m_animation->start();
}

QString LoadedPage::kextPath() const {
    return m_ui->tfKPath->text();
}

void LoadedPage::showKext(const QString &path, const QString &name, bool x86_64, bool i386) {
    m_ui->tfKPath->setText(path);
    m_ui->lbKname->setText(name);
    m_ui->ka64->setChecked(x86_64);
    m_ui->ka32->setChecked(i386);
}

void LoadedPage::showUnknownKext(const QString &name) {
    showKext(QString(), name, false, false);
}

void LoadedPage::clearDetails() {
    m_ui->lbKname->setText(QString());
    m_ui->tfKPath->setText(QString());
    m_ui->ka64->setChecked(false);
    m_ui->ka32->setChecked(false);
}

void LoadedPage::showEmptyState(const QString &reason, const QString &offer) {
    m_empty->show(reason, offer);
}

QString LoadedPage::emptyReason() const {
    return m_empty->isHidden() ? QString() : m_empty->reason();
}
