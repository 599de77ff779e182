#pragma once

#include <QString>

// The desktop's notification service.
class Notifier {
public:
    virtual ~Notifier() = default;
    virtual bool isRunning() = 0;
    // name is the notification kind: "Task Failed" or "Task Finished".
    virtual void notify(const QString &title, const QString &description, const QString &name) = 0;
};
