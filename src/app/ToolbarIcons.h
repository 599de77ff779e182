#pragma once

#include <QIcon>
#include <QString>

class MainWindow;
class SystemImages;

// Images of the page toolbar. The checking and loaded-kexts items have images of the
// window's own; maintenance, installation and unpacking show system image files.
class ToolbarIcons {
public:
    // The window's own icon for "ti_c" or "ti_l".
    static QIcon shipped(const QString &identifier);

    static void applyShipped(MainWindow &window);
    // Maintenance, installation and unpacking take the system's icons; where a file
    // can't be read, the item has no image.
    static void applySystem(MainWindow &window, const SystemImages &images);
};
