#pragma once

#include "exec/SystemLog.h"

#include <QList>

class RecordingLog final : public SystemLog {
public:
    QList<QByteArray> entries;
    void write(const QByteArray &entry) override { entries << entry; }
};
