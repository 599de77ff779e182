#include "TaskReporter.h"

TaskReporter::TaskReporter(std::atomic<bool> &busy, QObject *parent)
    : QObject(parent), m_busy(busy) {}
