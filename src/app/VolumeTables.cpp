#include "VolumeTables.h"

#include "MainWindow.h"
#include "pages/InstallPage.h"
#include "pages/MaintenancePage.h"
#include "ui_InstallPage.h"
#include "ui_MainWindow.h"
#include "ui_MaintenancePage.h"

void VolumeTables::applySle(bool present) {
    auto *main = m_window.maintenancePage()->ui();
    auto *inst = m_window.installPage()->ui();
    if (present) {
        main->cbSLERP->setEnabled(true);
        main->cbSLERC->setEnabled(true);
        main->cbSLE->setEnabled(true);
        inst->inSLE->setEnabled(true);
        inst->inSLE->setChecked(true);
        inst->inExtra->setChecked(false);
        inst->inDesktop->setChecked(false);
    } else {
        main->cbSLERC->setCheckState(Qt::Unchecked);
        main->cbSLERP->setCheckState(Qt::Unchecked);
        main->cbSLE->setCheckState(Qt::Unchecked);
        main->cbSLERP->setEnabled(false);
        main->cbSLERC->setEnabled(false);
        main->cbSLE->setEnabled(false);
        inst->inSLE->setEnabled(false);
        inst->inSLE->setChecked(false);
        inst->inDesktop->setChecked(false);
    }
}

void VolumeTables::applyExtra(bool present) {
    auto *main = m_window.maintenancePage()->ui();
    auto *inst = m_window.installPage()->ui();
    auto *menu = m_window.ui();
    if (present) {
        main->cbERP->setEnabled(true);
        main->cbERM->setEnabled(true);
        main->cbExtra->setEnabled(true);
        inst->inExtra->setEnabled(true);
        menu->MI_HideExtra->setEnabled(true);
        menu->MI_ShowExtra->setEnabled(true);
        inst->inExtra->setChecked(true);
        inst->inSLE->setChecked(false);
        inst->inDesktop->setChecked(false);
    } else {
        main->cbERM->setCheckState(Qt::Unchecked);
        main->cbERP->setCheckState(Qt::Unchecked);
        main->cbExtra->setCheckState(Qt::Unchecked);
        main->cbERP->setEnabled(false);
        main->cbERM->setEnabled(false);
        main->cbExtra->setEnabled(false);
        inst->inExtra->setEnabled(false);
        menu->MI_HideExtra->setEnabled(false);
        menu->MI_ShowExtra->setEnabled(false);
        inst->inExtra->setChecked(false);
        inst->inDesktop->setChecked(false);
    }
}

void VolumeTables::applyVersions(const QList<bool> &versionFolders) {
    auto *menu = m_window.ui();
    QAction *const items[] = {menu->MI_Ver104, menu->MI_Ver105, menu->MI_Ver106, menu->MI_Ver107};
    menu->MI_VerIndpd->setChecked(true);
    for (QAction *item : items) {
        item->setVisible(false);
        item->setChecked(false);
    }
    m_window.versionSpacer()->setVisible(false);
    for (int i = 0; i < 4 && i < versionFolders.size(); ++i) {
        if (versionFolders.at(i)) {
            m_window.versionSpacer()->setVisible(true);
            items[i]->setVisible(true);
        }
    }
}
