#pragma once

#include <QList>

class MainWindow;

// Applies what a volume holds to the option boxes of both pages and to the version
// menu. Boxes are only ever switched off or enabled here, never switched on: what the
// user ticked stays ticked while it applies.
class VolumeTables {
public:
    explicit VolumeTables(MainWindow &window) : m_window(window) {}

    void applySle(bool slePresent);
    void applyExtra(bool extraPresent);
    // One flag per version folder "10.4" .. "10.7".
    void applyVersions(const QList<bool> &versionFolders);

private:
    MainWindow &m_window;
};
