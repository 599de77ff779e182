#pragma once

#include <QObject>

// A named child of the window under test; a missing one stops the run with its name, so a
// renamed widget reads as such and not as a crash further on.
template <typename T> T *childWidget(const QObject &window, const char *name) {
    T *widget = window.findChild<T *>(QLatin1String(name));
    if (!widget)
        qFatal("no %s in the window", name);
    return widget;
}
