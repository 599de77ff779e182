#include "WindowState.h"

#include <QAction>
#include <QMainWindow>
#include <QSettings>
#include <QToolBar>

namespace {
const QString geometryKey = QStringLiteral("Window/Geometry");
const QString layoutKey = QStringLiteral("Window/Layout");
const QString pageKey = QStringLiteral("Window/Page");
const QString hiddenKey = QStringLiteral("Toolbar/HiddenItems");
const QString styleKey = QStringLiteral("Toolbar/Style");
} // namespace

WindowState::WindowState(std::unique_ptr<QSettings> settings)
    : m_settings(settings ? std::move(settings)
                          : std::make_unique<QSettings>(
                                QSettings::NativeFormat, QSettings::UserScope,
                                QStringLiteral("KextKeeper"), QStringLiteral("KextKeeper"))) {}

WindowState::~WindowState() = default;

void WindowState::save(const QMainWindow &window, const QToolBar &toolbar, const QStringList &items,
                       const QString &shownItem) {
    m_settings->setValue(geometryKey, window.saveGeometry());
    m_settings->setValue(layoutKey, window.saveState());
    m_settings->setValue(pageKey, shownItem);
    QStringList hidden;
    for (const QString &id : items) {
        const auto *item = window.findChild<QAction *>(id);
        if (item && !item->isVisible())
            hidden << id;
    }
    m_settings->setValue(hiddenKey, hidden);
    m_settings->setValue(styleKey, int(toolbar.toolButtonStyle()));
    m_settings->sync();
}

QString WindowState::restore(QMainWindow &window, QToolBar &toolbar,
                             const QStringList &items) const {
    if (!m_settings->contains(geometryKey))
        return {};
    window.restoreGeometry(m_settings->value(geometryKey).toByteArray());
    window.restoreState(m_settings->value(layoutKey).toByteArray());
    const QStringList hidden = m_settings->value(hiddenKey).toStringList();
    for (const QString &id : items) {
        if (auto *item = window.findChild<QAction *>(id))
            item->setVisible(!hidden.contains(id));
    }
    const int style = m_settings->value(styleKey, int(toolbar.toolButtonStyle())).toInt();
    if (style >= Qt::ToolButtonIconOnly && style <= Qt::ToolButtonFollowStyle)
        toolbar.setToolButtonStyle(Qt::ToolButtonStyle(style));
    const QString page = m_settings->value(pageKey).toString();
    return items.contains(page) ? page : QString();
}
