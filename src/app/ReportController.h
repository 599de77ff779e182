#pragma once

#include "loaded/SystemReport.h"

#include <QObject>
#include <functional>

class MainWindow;

// The system report from the window: a save panel named after the computer, then the
// report's jobs in the background and "Saved." (or the reason it was abandoned) on the
// window when they end.
class ReportController : public QObject {
    Q_OBJECT
public:
    explicit ReportController(MainWindow &window, QObject *parent = nullptr);

    // Asks where to save: gets the default name and answers with the panel's return code
    // (1 = saved) and the chosen file. A window-modal save panel unless a test answers.
    using SavePanel = std::function<void(const QString &defaultName,
                                         std::function<void(int, const QString &)> done)>;
    void setSavePanel(SavePanel panel) { m_panel = std::move(panel); }
    using ProbeText = LoadedKextRows::Probe;
    void setProbe(ProbeText probe) { m_probe = std::move(probe); }

public slots:
    void CreateList();
    void SaveTXT(int returnCode, const QString &file);

signals:
    // The report ended and its message was shown (tests wait for this).
    void reportEnded(const SystemReport::End &end);

private:
    void openSavePanel(const QString &defaultName, std::function<void(int, const QString &)> done);
    void showEnd(const SystemReport::End &end);

    MainWindow &m_window;
    SavePanel m_panel;
    ProbeText m_probe;
};
