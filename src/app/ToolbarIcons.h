#pragma once

#include <QIcon>
#include <QString>

class MainWindow;
class SystemPaths;

// Images of the page toolbar. Three pages borrow the system's own icons when their
// files can be read; every item otherwise shows an icon drawn by the program.
class ToolbarIcons {
public:
    // The program's own icon for a toolbar identifier ("ti_m" .. "ti_l").
    static QIcon shipped(const QString &identifier);
    // The image in a file, or a null icon when it can't be read as an image.
    static QIcon fromFile(const QString &path);

    static void applyShipped(MainWindow &window);
    // Maintenance, installation and unpacking take the system's icons where readable.
    static void applySystem(MainWindow &window, const SystemPaths &paths);
};
