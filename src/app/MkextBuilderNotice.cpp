#include "MkextBuilderNotice.h"

#include "MainWindow.h"
#include "maintenance/MkextRebuild.h"
#include "volumes/SystemPaths.h"

#include <QCoreApplication>
#include <QStatusBar>

void showMkextBuilderNotice(MainWindow &window, const SystemPaths &paths) {
    if (!mkextRebuildUsesBuiltin(paths))
        return;
    window.statusBar()->showMessage(
        QCoreApplication::translate("MkextBuilderNotice",
                                    "%1 is missing: the built-in mkext builder is used instead.")
            .arg(paths.system(QStringLiteral("/usr/sbin/kextcache"))));
}
