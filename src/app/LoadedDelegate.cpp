#include "LoadedDelegate.h"

#include "LoadedPageController.h"
#include "MainWindow.h"
#include "ReportController.h"

#include <QAction>

LoadedDelegate::LoadedDelegate(MainWindow &window, AppServices &services, TaskRunner &tasks,
                               FilePanels &panels, QObject *parent)
    : QObject(parent), m_window(window),
      m_pageController(new LoadedPageController(window, services, this)),
      m_reportController(new ReportController(window, services, tasks, panels, this)) {
    connect(window.action(QStringLiteral("ti_l")), &QAction::triggered, this,
            &LoadedDelegate::TI_Loaded);
    connect(window.action(QStringLiteral("MI_Loaded")), &QAction::triggered, this,
            &LoadedDelegate::MI_Loaded);
}

void LoadedDelegate::TI_Loaded() {
    m_pageController->TI_Loaded();
}

void LoadedDelegate::MI_Loaded() {
    TI_Loaded();
    m_window.selectToolbarItem(QStringLiteral("ti_l"));
}
