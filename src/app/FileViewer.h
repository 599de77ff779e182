#pragma once

#include <QString>

// Shows a file selected in the desktop's file viewer.
class FileViewer {
public:
    // macOS: Finder through "open -R". Elsewhere the freedesktop file manager's
    // ShowItems call, and when no file manager answers, the folder that holds the file.
    // The path is passed on as it is, empty or missing, and goes to no shell.
    static void reveal(const QString &path);
};
